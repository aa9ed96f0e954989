// kcEllipseAnnulus: the ring between a kcEllipse2 and the same ellipse shrunk
// about its centre by an inner scale in (0, 1).
//
// Parametrisation: outer() is the kcEllipse2; inner() has the same centre and
// rotation and the radii times innerScale(), so both boundaries share the
// parameter t of kcEllipse2 (a point of the region is center + R(rotation)
// (rho radiusX cos t, rho radiusY sin t) with innerScale <= rho <= 1). The
// boundary is the outer ellipse followed by the inner one, each from t = 0
// counter-clockwise; sample() gives the outer one and then the inner one,
// each closed. As a shape it is a region: within() is true for
// innerScale <= rho <= 1, each bound widened by 1e-12 so that computed
// boundary points test inside. Distances are to the nearer boundary, a tie
// (within 1e-13 of the larger radius) going to the outer one.
//
// Images: closed under invertible affine maps: the outer ellipse is mapped as
// kcEllipse2::map does and the inner scale is kept (scaling about the centre
// commutes with affine maps). Singular maps throw kcMathError::Singular.
//
// Default: the unit circle with inner scale 0.5. Equality compares the fields
// exactly. Archive form: version byte 0, the kcEllipse2 (its own version byte
// and fields), the inner scale.
#pragma once

#include "foundation/shapes/ellipse2.h"

class kcEllipseAnnulus : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipseAnnulus);

  kcEllipseAnnulus() = default;
  // BadParams for a non-finite scale, DegenerateShape unless 0 < innerScale < 1.
  kcEllipseAnnulus(const kcEllipse2& outer, double innerScale);

  [[nodiscard]] const kcEllipse2& outer() const noexcept { return outer_; }
  [[nodiscard]] double innerScale() const noexcept { return scale_; }
  void outer(const kcEllipse2& e);
  void innerScale(double s);
  // The inner boundary: the outer ellipse with both radii times innerScale().
  [[nodiscard]] kcEllipse2 inner() const;

  [[nodiscard]] kcEllipseAnnulus map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  // The outer and the inner ellipse.
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcEllipseAnnulus& a, const kcEllipseAnnulus& b) noexcept {
    return a.outer_ == b.outer_ && a.scale_ == b.scale_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for a scale a ring cannot have.
  static void check_(double innerScale);

  kcEllipse2 outer_;
  double scale_ = 0.5;
};
