// kc2SegmentArc: a circular wireframe segment that carries its own transform.
//
// The arc is a circle in its own, unmapped space (centre, radius > 0), a start
// angle and a signed sweep in degrees (positive counter-clockwise, |sweep| up
// to 360; neither is normalised), and a kcXform<2> that maps the unmapped
// space into client space. Because the transform is kept rather than folded
// into the circle, a mapped arc stays exact also under a non-uniform scale, a
// shear or a mirror: operator* only composes transforms, nothing is re-fitted.
//
// Two sets of queries. The public ones without a trailing underscore answer in
// client space: they inverse-map their argument into the unmapped space, work
// there and map the result back. The ones ending in an underscore answer in
// the unmapped space from the stored fields alone; the poly code and the
// rasterisers call them on arcs that carry the identity transform, where both
// sets agree. validPoint_ is the exception: it inverse-maps its argument once
// more (so validPoint maps twice), which is exact for the identity.
//
// Angle tests (validAngle_) allow kAngleTol * |sweep| at either end; an arc of
// a whole turn or more takes every angle. Closest points are found in the
// unmapped space (for a transform that is not a similarity the mapped result
// is the image of the unmapped closest point, not the nearest point of the
// mapped curve); they prefer the start point when both ends are equally near,
// and the centre itself gets the circle point at angle 0. inRange is false at
// the stored centre (exact comparison, as established) and at the mapped
// centre, where there is no direction. Queries of an arc whose transform is
// singular throw kcMathError::Singular.
//
// The mapped sweep angleSpan() takes its sign and number of turns from the
// stored sweep (negated when the transform reverses orientation, so a mirror
// reverses it) and its exact value from the mapped end points. The skew test
// for orientation is signed-normalised, and a transform whose matrix is the
// identity returns the stored sweep unrounded.
//
// Intersections (with arcs, lines and infinite lines) return 0, 1 or 2 points
// (up to four against an arc whose transform differs by more than a
// similarity). End points the two segments share come first, whatever the
// angle between them: exactly equal, or within the crossing tolerance, 64
// units in the last place of the largest coordinate involved (the rounding of
// points computed from angles). They count with flag false and are dropped
// with flag true, as every meeting at an end point of either segment is; a
// candidate within the tolerance of an end is at that end. A line or circle
// closer to tangency than kTangentTol times the radius touches in one point.
// Two points come in the order of travel along the line, or, for two circles,
// the one to the right of the line from this centre to the other's first;
// the crossing of two circles is computed from the smaller one, so its error
// stays relative to the smaller radius. Away from tangency every computed
// crossing lies within 16 units in the last place of the largest coordinate
// involved from both curves. Two arcs on the same circle (the same
// centre and radius within kTangentTol of the larger radius) meet only in end
// points: the end points of either that lie on the other, and none with flag
// true; overlaps() tells whether they share more than a point. When the two
// arcs' transforms differ by more than a similarity, the other circle is an
// ellipse in this arc's space: its crossings are found numerically and come
// in the order of the other arc's angle from 0.

// Equality compares client-space values with kEqualTol: the start angle (a
// whole turn apart counts as equal), the sweep, the centre, and the radius in
// three directions of this arc; two arcs with different fields but the same
// mapped figure are equal.
//
// Conversions. From a kcEllipseArc (or a kcEllipseArc2, through the
// foundation's conversion to kcEllipseArc): when the ellipse's matrix is
// exactly a positive multiple r of the identity, the arc is that circle
// (centre, r) with the same angles and the identity transform; when it is
// exactly diag(r, -r), the circle travelled the other way, both angles
// negated; otherwise the unit circle at the origin with the ellipse's whole
// transform. No arithmetic touches the transform, so ellipseArc() gives back
// the same ellipse, and the same angles up to the degree conversion.
// ellipseArc() itself needs a sweep that kcEllipseArc accepts (not zero, not
// beyond a turn); boundingBox() does not.
//
// Archive form: an unsigned version byte (1), the centre (two doubles),
// radius, start angle and sweep (doubles, degrees), then the transform (six
// doubles). Version 0 has no transform and loads with the identity; a version
// above 1 is kcArchive::UnknownVersion ("dispc/wrfm/arc", line 147); a radius
// that is not > 0 is kcArchive::Corrupt. A failed load leaves the target
// unchanged.
#pragma once

#include <iosfwd>
#include <vector>

#include "dispc/wrfm/lineseg.h"
#include "foundation/angle.h"
#include "foundation/archive.h"
#include "foundation/rigid.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/rect.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kc2SegmentArc {
 public:
  // Largest difference of client-space values that == still calls equal.
  static constexpr double kEqualTol = 1e-15;
  // Smallest |sweep| (degrees) the two-point constructor accepts.
  static constexpr double kMinSpan = 1e-15;
  // Angle tests: tolerance at the ends as a fraction of |sweep|.
  static constexpr double kAngleTol = 1e-13;
  // validPoint: largest distance as a fraction of the unmapped radius.
  static constexpr double kValidPointTol = 1e-15;
  // Intersections: a gap below this fraction of the radius is a tangency.
  static constexpr double kTangentTol = 1e-12;

  // Where a point of a segment's circle or line lies on the segment.
  enum class Place { off, inside, atEnd };

  // The unit circle, from 0 over 360 degrees, identity transform.
  kc2SegmentArc() noexcept = default;
  // The arc from p1 to p2 sweeping span degrees (signed). DegenerateShape, in
  // this order, for |span| <= kMinSpan, |span| >= 360 and p1 == p2.
  kc2SegmentArc(const kcVector<2>& p1, const kcVector<2>& p2, const kcDegree& span);
  // DegenerateShape unless radius > 0; the span is not checked.
  kc2SegmentArc(const kcVector<2>& center, double radius, const kcDegree& startAngle,
                const kcDegree& angleSpan);
  // Exact factorisations; see the class comment.
  explicit kc2SegmentArc(const kcEllipseArc& arc);
  explicit kc2SegmentArc(const kcEllipseArc2& arc);

  // --- client space ---

  [[nodiscard]] kcVector<2> center() const noexcept { return xform_ * circleCenter_; }
  // Distance from the mapped centre to the arc's circle point in the client
  // direction angle.
  [[nodiscard]] double radius(const kcDegree& angle) const;
  [[nodiscard]] kcDegree startAngle() const;
  [[nodiscard]] kcDegree endAngle() const;
  [[nodiscard]] kcDegree midAngle() const;
  // The mapped sweep (see the class comment).
  [[nodiscard]] kcDegree angleSpan() const;
  // The mapped angle of the point at fraction t (0 start, 1 end; not clamped).
  [[nodiscard]] kcDegree angle(double t) const;
  // The circle point in the client direction angle.
  [[nodiscard]] kcVector<2> arcPoint(const kcDegree& angle) const;
  [[nodiscard]] kcVector<2> p1() const noexcept { return xform_ * p1_(); }
  [[nodiscard]] kcVector<2> p2() const noexcept { return xform_ * p2_(); }
  [[nodiscard]] kcVector<2> midPoint() const noexcept { return xform_ * midPoint_(); }
  [[nodiscard]] kcVector<2> segPoint(double t) const noexcept { return xform_ * segPoint_(t); }
  // Direction of travel at fraction t.
  [[nodiscard]] kcDegree direction(double t) const;
  [[nodiscard]] kcDegree startDirection() const { return direction(0.0); }
  [[nodiscard]] kcDegree midDirection() const { return direction(0.5); }
  [[nodiscard]] kcDegree endDirection() const { return direction(1.0); }
  // The tangent line at the circle point in the client direction angle, or
  // at fraction t.
  [[nodiscard]] kcFLine tangent(const kcDegree& angle) const;
  [[nodiscard]] kcFLine tangent(double t) const;
  // |radius(0) * angleSpan()|, the sweep in radians.
  [[nodiscard]] double length() const;
  // Chord length.
  [[nodiscard]] double segmentLength() const noexcept { return p1().distance(p2()); }
  // Centre of mass of the curve (not of the sector).
  [[nodiscard]] kcVector<2> centerOfMass() const noexcept { return xform_ * centerOfMass_(); }
  // The enclosing box of ellipseArc(); beyond a turn that of the whole mapped
  // circle, for a zero sweep the start point.
  [[nodiscard]] kcRect boundingBox() const;
  [[nodiscard]] kcVector<2> closestPoint(const kcVector<2>& pt) const;
  [[nodiscard]] double distToPoint(const kcVector<2>& pt) const;
  [[nodiscard]] bool validAngle(const kcDegree& angle, bool inclusive) const;
  // Whether pt lies on the arc; flag is ignored.
  [[nodiscard]] bool validPoint(const kcVector<2>& pt, bool flag) const;
  // Whether the direction from the centre to pt lies within the sweep; false
  // at the centre (the stored centre, and the mapped one).
  [[nodiscard]] bool inRange(const kcVector<2>& pt, bool inclusive) const;

  [[nodiscard]] std::vector<kcVector<2>> intersection(const kc2SegmentArc& other, bool flag) const;
  [[nodiscard]] std::vector<kcVector<2>> intersection(const kc2SegmentLine& other, bool flag) const;
  [[nodiscard]] std::vector<kcVector<2>> intersection(const kcFLine& other, bool flag) const;
  // True when both arcs lie on one circle and share more than a point.
  [[nodiscard]] bool overlaps(const kc2SegmentArc& other) const;

  // The arc as an elliptical arc in client space: the circle as a kcEllipse
  // (travelled clockwise, with negated angles, for a negative sweep), mapped
  // by the transform. DegenerateShape for a zero sweep, BadParams beyond a turn.
  [[nodiscard]] kcEllipseArc ellipseArc() const;
  [[nodiscard]] kcEllipseArc2 ellipseArc2() const;

  // --- unmapped space: the stored fields and the queries answered from them ---

  [[nodiscard]] const kcVector<2>& center_() const noexcept { return circleCenter_; }
  [[nodiscard]] double radius_() const noexcept { return circleRadius_; }
  [[nodiscard]] kcDegree startAngle_() const noexcept { return kcDegree(start_); }
  [[nodiscard]] kcDegree angleSpan_() const noexcept { return kcDegree(span_); }
  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }

  [[nodiscard]] kcDegree endAngle_() const noexcept { return kcDegree(start_ + span_); }
  [[nodiscard]] kcDegree midAngle_() const noexcept { return kcDegree(start_ + span_ / 2.0); }
  [[nodiscard]] kcDegree angle_(double t) const noexcept { return kcDegree(start_ + t * span_); }
  [[nodiscard]] kcVector<2> arcPoint_(const kcDegree& angle) const noexcept;
  [[nodiscard]] kcVector<2> p1_() const noexcept { return arcPoint_(startAngle_()); }
  [[nodiscard]] kcVector<2> p2_() const noexcept { return arcPoint_(endAngle_()); }
  [[nodiscard]] kcVector<2> midPoint_() const noexcept { return arcPoint_(midAngle_()); }
  [[nodiscard]] kcVector<2> segPoint_(double t) const noexcept { return arcPoint_(angle_(t)); }
  [[nodiscard]] kcDegree direction_(double t) const noexcept;
  [[nodiscard]] kcDegree startDirection_() const noexcept { return direction_(0.0); }
  [[nodiscard]] kcDegree midDirection_() const noexcept { return direction_(0.5); }
  [[nodiscard]] kcDegree endDirection_() const noexcept { return direction_(1.0); }
  [[nodiscard]] kcFLine tangent_(const kcDegree& angle) const;
  [[nodiscard]] kcFLine tangent_(double t) const { return tangent_(angle_(t)); }
  [[nodiscard]] double length_() const noexcept;
  [[nodiscard]] double segmentLength_() const noexcept { return p1_().distance(p2_()); }
  [[nodiscard]] kcVector<2> centerOfMass_() const noexcept;
  // The tight box of the unmapped arc (any sweep).
  [[nodiscard]] kcRect boundingBox_() const;
  [[nodiscard]] kcVector<2> closestPoint_(const kcVector<2>& pt) const noexcept;
  [[nodiscard]] double distToPoint_(const kcVector<2>& pt) const noexcept {
    return pt.distance(closestPoint_(pt));
  }
  [[nodiscard]] bool validAngle_(const kcDegree& angle, bool inclusive) const noexcept;
  [[nodiscard]] bool validPoint_(const kcVector<2>& pt, bool flag) const;

  friend bool operator==(const kc2SegmentArc& a, const kc2SegmentArc& b);
  friend bool operator!=(const kc2SegmentArc& a, const kc2SegmentArc& b) { return !(a == b); }

  // The same arc seen through x first: the fields stay, the transform
  // becomes x * xform().
  friend kc2SegmentArc operator*(const kcXform<2>& x, const kc2SegmentArc& a) noexcept;
  friend kc2SegmentArc operator*(const kc2Rigid& r, const kc2SegmentArc& a) noexcept;

  friend kcArchive& operator||(kcArchive& ar, kc2SegmentArc& a);
  friend std::wostream& operator<<(std::wostream& out, const kc2SegmentArc& a);

 private:
  void print_(std::wostream& out) const;
  // The crossings (0 to 2) of the unmapped circle with the unmapped line
  // through q in the unit direction e, in the order of travel along e; no
  // range test. Returns how many were written to out.
  int circleLine_(const kcVector<2>& q, const kcVector<2>& e, kcVector<2> out[2]) const noexcept;
  // The client-space line through point in the unit direction dir, as a point
  // and unit direction in the unmapped space.
  void unmapLine_(const kcVector<2>& point, const kcVector<2>& dir, kcVector<2>& q, kcVector<2>& e) const;
  // Where the unmapped point p of the circle lies on the arc: at an end when
  // within tol of it along the circle. A whole turn has no ends.
  [[nodiscard]] Place place_(const kcVector<2>& p, double tol) const noexcept;
  // The crossing tolerance of the unmapped circle's coordinates.
  [[nodiscard]] double crossingTol_() const noexcept;

  kcVector<2> circleCenter_;
  double circleRadius_ = 1.0;
  double start_ = 0.0;   // degrees
  double span_ = 360.0;  // degrees
  kcXform<2> xform_;
};

kc2SegmentArc operator*(const kcXform<2>& x, const kc2SegmentArc& a) noexcept;
kc2SegmentArc operator*(const kc2Rigid& r, const kc2SegmentArc& a) noexcept;

kcArchive& operator||(kcArchive& ar, kc2SegmentArc& a);
inline kcArchive& operator<<(kcArchive& ar, const kc2SegmentArc& a) {
  return ar || const_cast<kc2SegmentArc&>(a);
}
inline kcArchive& operator>>(kcArchive& ar, kc2SegmentArc& a) { return ar || a; }
std::wostream& operator<<(std::wostream& out, const kc2SegmentArc& a);
