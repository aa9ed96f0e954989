// kcSMDGDPolyVertex: one corner of an SMD poly, and through it of every
// general polygon and wireframe.
//
// Besides its position a vertex holds how the corner is rounded, how the
// segment that ends at it bends, how much of the two neighbouring segments the
// rounding may use, the length tolerance of the segment that ends here and the
// sub-model label. It checks only its two percentages (each in [0.01, 1]);
// everything that depends on the neighbours is the poly's to check. The two
// extension percentages (the forward extension of the segment ending here and
// the backward extension of the one starting here) are kept for the poly: not
// archived, carried unchanged by scaling, part of the comparison.
//
// A vertex has an empty name and draws nothing by itself: a lone corner has
// neither outline nor area; polys draw their vertices.
//
// Archive form: an unsigned version byte (2), the description prefix, point,
// radius, span (degrees), the two percentages, the label (32-bit), then the
// length tolerance. Version 1 has instead the lower and upper offsets and an
// unused 32-bit word; version 0 has no tolerance. Loading checks the
// percentages like the setters do, refuses a point, radius or span that is
// not finite (kcArchive::Corrupt), and the vertex's own fields change only
// once the whole record has been read.
#pragma once

#include <iosfwd>

#include "dispc/dimtol.h"
#include "dispc/smd/gdbase.h"
#include "foundation/angle.h"
#include "foundation/exception.h"
#include "foundation/rigid.h"
#include "foundation/vector.h"

class kcSMDGDPolyVertex : public kcSMDGeometricDescription {
 public:
  KC_DECLARE_PERSISTENT(kcSMDGDPolyVertex);

  class Errors : public kcException {
   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcException::serialize_(ar, version); }
  };
  // A segment percentage outside [0.01, 1].
  class invalidSegmentLength : public Errors {
   public:
    KC_DECLARE_EXCEPTION(invalidSegmentLength);
    void message_(std::wostream& out) const override;
  };

  // Smallest and largest share of a neighbouring segment a rounding may use.
  static constexpr double kMinPercent = 0.01;
  static constexpr double kMaxPercent = 1.0;
  // Absolute tolerance of operator==.
  static constexpr double kEqualTol = 1e-11;

  // At the origin, sharp, straight, percentages 0.5, no label, no tolerance.
  kcSMDGDPolyVertex() = default;
  // Checks percentPrev, then percentNext (invalidSegmentLength).
  kcSMDGDPolyVertex(const kcVector<2>& point, double vertexRadius, const kcDegree& segmentAngleSpan,
                    double percentPrev, double percentNext, long subModelLabel,
                    const kcDimTol& segmentLengthTol);
  // These two give the length tolerance (-1, -1, -1) of kind offsets, unlike
  // the default constructor's kind limits.
  kcSMDGDPolyVertex(const kcVector<2>& point, double percentPrev, double percentNext, long subModelLabel);
  kcSMDGDPolyVertex(const kcVector<2>& point, double vertexRadius, double percentPrev, double percentNext,
                    long subModelLabel);
  kcSMDGDPolyVertex(const kcSMDGDPolyVertex&) = default;
  kcSMDGDPolyVertex& operator=(const kcSMDGDPolyVertex&) = default;
  ~kcSMDGDPolyVertex() override;

  [[nodiscard]] const kcVector<2>& point() const noexcept { return point_; }
  void point(const kcVector<2>& p);
  // Rounding radius of the corner; 0 is sharp.
  [[nodiscard]] double vertexRadius() const noexcept { return vertexRadius_; }
  void vertexRadius(double r);
  // Signed sweep of the segment that ends here; 0 is a straight segment.
  [[nodiscard]] kcDegree segmentAngleSpan() const noexcept { return segmentAngleSpan_; }
  void segmentAngleSpan(const kcDegree& span);
  // Largest share of the previous / next segment the rounding may use; the
  // setters throw invalidSegmentLength outside [0.01, 1] and change nothing.
  [[nodiscard]] double percentPrevSegment() const noexcept { return percentPrevSegment_; }
  void percentPrevSegment(double p);
  [[nodiscard]] double percentNextSegment() const noexcept { return percentNextSegment_; }
  void percentNextSegment(double p);
  // -1 when the vertex belongs to no sub-model.
  [[nodiscard]] long subModelLabel() const noexcept { return subModelLabel_; }
  void subModelLabel(long label);
  // Length tolerance of the segment that ends here.
  [[nodiscard]] const kcDimTol& segmentLengthTol() const noexcept { return segmentLengthTol_; }
  void segmentLengthTol(const kcDimTol& tol);
  // Extension percentages, kept for the poly.
  [[nodiscard]] double forwardPercExtension() const noexcept { return forwardPercExtension_; }
  void forwardPercExtension(double p);
  [[nodiscard]] double backwardPercExtension() const noexcept { return backwardPercExtension_; }
  void backwardPercExtension(double p);

  // 1 when every field matches within kEqualTol (spans by sine and cosine, so
  // 0 and 360 degrees are equal; label exactly; tolerance by its own ==).
  [[nodiscard]] int operator==(const kcSMDGDPolyVertex& o) const;
  [[nodiscard]] int operator!=(const kcSMDGDPolyVertex& o) const { return !(*this == o); }

  // A vertex is a single corner: there is nothing to draw.
  using kcSMDGeometricDescription::drawSynthetic;
  void drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const override;
  void drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const override;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  friend bool kfRealEq(const kcSMDGDPolyVertex& a, const kcSMDGDPolyVertex& b, double tol);
  friend kcSMDGDPolyVertex operator*(double s, const kcSMDGDPolyVertex& v);
  static void checkPercent_(double p);

  kcVector<2> point_;
  double vertexRadius_ = 0;
  kcDegree segmentAngleSpan_;
  double percentPrevSegment_ = 0.5;
  double percentNextSegment_ = 0.5;
  long subModelLabel_ = -1;
  kcDimTol segmentLengthTol_;
  double forwardPercExtension_ = 0;
  double backwardPercExtension_ = 0;
};

// The comparison of operator== with the caller's tolerance.
[[nodiscard]] bool kfRealEq(const kcSMDGDPolyVertex& a, const kcSMDGDPolyVertex& b, double tol);

// A copy whose point is mapped; nothing else changes.
[[nodiscard]] kcSMDGDPolyVertex operator*(const kc2Rigid& r, const kcSMDGDPolyVertex& v);
// Point, radius and the tolerance's nominal scaled by s; span, percentages,
// label and extensions kept. The percentages are checked again.
[[nodiscard]] kcSMDGDPolyVertex operator*(double s, const kcSMDGDPolyVertex& v);
