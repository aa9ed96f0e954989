// kc2SegmentLine: a straight wireframe segment from p1 to p2, the straight
// piece of wireframes and SMD poly outlines (kc2SegmentArc is the curved one).
//
// A plain value of two points. A constructed segment has p1 != p2 (exact
// comparison, kcShapesError::DegenerateShape otherwise); the default segment
// is all zero, a placeholder only: its length is 0 and its direction is
// undefined.
//
// Directions are kcDegree values: every direction query answers the angle of
// p2 - p1 (atan2, in (-180, 180]). Range tests work on the projection onto
// the unit direction u = (cos a, sin a), a being that angle, and count a
// point within kRangeTol * length() of an end as being at that end.
//
// Two segments meet where an exact orientation test of their end points says
// they do, whatever their angle and length: a meeting at an end point of
// either (a shared vertex, a T) is that end point exactly; it counts with
// flag false and is dropped with flag true (adjacent segments of an outline
// share a vertex without crossing). A proper crossing always counts with flag
// false; with flag true it is dropped when it lies within the range tolerance
// of an end, as inRange(point, false) decides. Parallel segments never cross;
// collinear ones meet only when they touch end to end, in that one point,
// and segments that share more than a point have no crossing point:
// overlaps() tells that case. A computed crossing lies on this segment and
// within 8 units in the last place of the largest coordinate of the four end
// points from the other one. With an infinite line the crossing passes this
// segment's inRange(point, !flag) alone; a line parallel to the segment by
// its direction angle has none.
//
// Equality allows kEqualTol per coordinate. Printing writes the two
// coordinates of each point with no separator between them ("p1_=12" for
// (1, 2)); that is the established output and is kept.
//
// Archive form: an unsigned version byte (0), then p1 and p2 (two doubles
// each). Another version is kcArchive::UnknownVersion ("dispc/wrfm/lineseg",
// line 105); a failed load leaves the target unchanged. The image of a
// segment under a transform goes through the checking constructor, so a
// transform that collapses the segment throws DegenerateShape.
#pragma once

#include <iosfwd>
#include <optional>
#include <vector>

#include "foundation/angle.h"
#include "foundation/archive.h"
#include "foundation/rigid.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/rect.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kc2SegmentLine {
 public:
  // Largest difference per coordinate that == still calls equal.
  static constexpr double kEqualTol = 1e-15;
  // Range tests: a point within this fraction of the length of an end is at it.
  static constexpr double kRangeTol = 1e-14;
  // validPoint: largest distance from the segment, as a fraction of the length.
  static constexpr double kValidPointTol = 1e-14;

  // All zero: a degenerate placeholder.
  constexpr kc2SegmentLine() noexcept = default;
  // DegenerateShape when p1 == p2.
  kc2SegmentLine(const kcVector<2>& p1, const kcVector<2>& p2);
  explicit kc2SegmentLine(const kcLineSeg& seg);

  [[nodiscard]] const kcVector<2>& p1() const noexcept { return p1_; }
  [[nodiscard]] const kcVector<2>& p2() const noexcept { return p2_; }

  [[nodiscard]] double length() const noexcept { return p1_.distance(p2_); }
  // The angle of p2 - p1; all direction queries answer it, t is ignored.
  [[nodiscard]] kcDegree angle() const noexcept { return kcDegree((p2_ - p1_).angle()); }
  [[nodiscard]] kcDegree direction(double /*t*/) const noexcept { return angle(); }
  [[nodiscard]] kcDegree startDirection() const noexcept { return angle(); }
  [[nodiscard]] kcDegree midDirection() const noexcept { return angle(); }
  [[nodiscard]] kcDegree endDirection() const noexcept { return angle(); }
  [[nodiscard]] kcVector<2> midPoint() const noexcept { return (p1_ + p2_) / 2.0; }
  // p1 + t (p2 - p1), not clamped: 0 is p1, 1 is p2.
  [[nodiscard]] kcVector<2> segPoint(double t) const noexcept { return p1_ + t * (p2_ - p1_); }
  // The infinite line through p1 in the direction of p2.
  [[nodiscard]] kcFLine line() const;
  [[nodiscard]] kcLineSeg lineSeg() const;
  // The box spanned by the two points.
  [[nodiscard]] kcRect boundingBox() const;

  // The point of the segment nearest to pt; of two equally near end points, p2.
  [[nodiscard]] kcVector<2> closestPoint(const kcVector<2>& pt) const noexcept;
  [[nodiscard]] double distToPoint(const kcVector<2>& pt) const noexcept;
  // Whether pt projects onto the segment (see the class comment); exclusive
  // tests reject the end points and points within the tolerance of them.
  [[nodiscard]] bool inRange(const kcVector<2>& pt, bool inclusive) const noexcept;
  // Whether pt lies on the segment, within kValidPointTol * length(); flag is ignored.
  [[nodiscard]] bool validPoint(const kcVector<2>& pt, bool flag) const noexcept;

  // Crossing points (0 or 1) of the two segments, or of this segment and an
  // infinite line (only this segment's range is tested then).
  [[nodiscard]] std::vector<kcVector<2>> intersection(const kc2SegmentLine& other, bool flag) const;
  [[nodiscard]] std::vector<kcVector<2>> intersection(const kcFLine& other, bool flag) const;
  // True when the two segments are collinear and share more than a point.
  [[nodiscard]] bool overlaps(const kc2SegmentLine& other) const noexcept;

  friend bool operator==(const kc2SegmentLine& a, const kc2SegmentLine& b) noexcept;
  friend bool operator!=(const kc2SegmentLine& a, const kc2SegmentLine& b) noexcept { return !(a == b); }

  friend kcArchive& operator||(kcArchive& ar, kc2SegmentLine& s);
  friend std::wostream& operator<<(std::wostream& out, const kc2SegmentLine& s);

 private:
  // Arc-line intersections test candidates with inRange_.
  friend class kc2SegmentArc;

  // The unit vector (cos a, sin a) of the direction angle a.
  [[nodiscard]] kcVector<2> unit_() const noexcept;
  // inRange with the unit direction already at hand.
  [[nodiscard]] bool inRange_(const kcVector<2>& pt, bool inclusive, const kcVector<2>& u) const noexcept;
  // The crossing of the infinite line through this segment with the line
  // through q in the unit direction e; none when they are parallel.
  [[nodiscard]] std::optional<kcVector<2>> intersection_(const kcVector<2>& u, const kcVector<2>& q,
                                                         const kcVector<2>& e) const noexcept;
  [[nodiscard]] std::optional<kcVector<2>> intersection_(const kcFLine& other) const noexcept;
  // For a collinear other segment: the one point they share when they touch end to end.
  [[nodiscard]] std::optional<kcVector<2>> collinearTouch_(const kc2SegmentLine& other) const noexcept;
  void print_(std::wostream& out) const;

  kcVector<2> p1_;
  kcVector<2> p2_;
};

// Both end points mapped.
[[nodiscard]] kc2SegmentLine operator*(const kcXform<2>& x, const kc2SegmentLine& s);
[[nodiscard]] kc2SegmentLine operator*(const kc2Rigid& r, const kc2SegmentLine& s);

kcArchive& operator||(kcArchive& ar, kc2SegmentLine& s);
inline kcArchive& operator<<(kcArchive& ar, const kc2SegmentLine& s) {
  return ar || const_cast<kc2SegmentLine&>(s);
}
inline kcArchive& operator>>(kcArchive& ar, kc2SegmentLine& s) { return ar || s; }
std::wostream& operator<<(std::wostream& out, const kc2SegmentLine& s);
