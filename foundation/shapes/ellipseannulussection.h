// kcEllipseAnnulusSection: the part of a kcEllipseAnnulus between two rays of
// its parameter, from a start parameter over a signed span.
//
// Parametrisation: the region is the set of points
//   center + R(rotation) (rho radiusX cos t, rho radiusY sin t)
// of annulus().outer() with innerScale <= rho <= 1 and t on the arc from
// angleStart() over angleSpan() (t being the kcEllipse2's parameter; the
// span is signed, at most a full turn, and not 0). Its boundary, in order:
// the outer arc from start to end (outerArc()), the straight end edge from
// the outer to the inner ellipse, the inner arc back from end to start, and
// the straight start edge out to the outer ellipse again. A section of a full
// turn (|span| >= 2 pi) is the whole ring: its boundary is the outer ellipse
// from the start parameter, then the inner one, with no edges. sample()
// follows that order and closes the outline (the full ring: each ellipse
// closed on its own).
//
// As a shape it is a region. within() includes the boundary, widened by
// 1e-12 in rho and in parameter so that computed boundary points test
// inside. Distances are to the boundary; a tie (within 1e-13 of the larger
// radius) goes to the piece that comes first along the boundary.
//
// Images: closed under invertible affine maps; the ring is mapped as
// kcEllipseAnnulus::map does and the angles follow the ellipse's parameter
// (both change sign where the map mirrors it), so every boundary point maps
// onto the image's boundary point of the same role. Singular maps throw
// kcMathError::Singular.
//
// Default: the whole default ring (start 0, span 2 pi). Equality compares the
// fields exactly. Archive form: version byte 0, the kcEllipseAnnulus (its own
// version byte and fields), start, span (radians).
#pragma once

#include "foundation/shapes/ellipseannulus.h"
#include "foundation/shapes/ellipsearc2.h"

class kcEllipseAnnulusSection : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipseAnnulusSection);

  kcEllipseAnnulusSection();
  // BadParams for a non-finite value or a span beyond a full turn,
  // DegenerateShape for a zero span.
  kcEllipseAnnulusSection(const kcEllipseAnnulus& annulus, const kcRadian& start, const kcRadian& span);

  [[nodiscard]] const kcEllipseAnnulus& annulus() const noexcept { return annulus_; }
  [[nodiscard]] const kcRadian& angleStart() const noexcept { return start_; }
  [[nodiscard]] const kcRadian& angleSpan() const noexcept { return span_; }
  // The parameter of the end edge: angleStart() + angleSpan().
  [[nodiscard]] kcRadian angleEnd() const noexcept { return start_ + span_; }
  void annulus(const kcEllipseAnnulus& a);
  void angleStart(const kcRadian& a);
  void angleSpan(const kcRadian& a);

  // True for a span of a full turn: the whole ring.
  [[nodiscard]] bool isFullTurn() const noexcept;
  // The outer and the inner boundary arcs, both from start to end.
  [[nodiscard]] kcEllipseArc2 outerArc() const;
  [[nodiscard]] kcEllipseArc2 innerArc() const;

  [[nodiscard]] kcEllipseAnnulusSection map(const kcXform<2>& x) const;
  // The same as distanceToPoint.
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const { return distanceToPoint(p); }

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  // The boundary's pieces in order: kcEllipseArc2 and kcLineSeg shapes.
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcEllipseAnnulusSection& a, const kcEllipseAnnulusSection& b) noexcept {
    return a.annulus_ == b.annulus_ && a.start_ == b.start_ && a.span_ == b.span_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcEllipseAnnulus annulus_;
  kcRadian start_;
  kcRadian span_;
};
