// kcEllipse: an ellipse given as the image of the unit circle under an
// affine transform (the first of the two ellipse forms; kcEllipse2 is the
// second).
//
// Parametrisation: the boundary is xform() * (cos t, sin t), t in [0, 2 pi):
// the parameter is the angle in the unit circle's space. The transform must
// be invertible (DegenerateShape otherwise); a shear is fine (any invertible
// affine image of a circle is an ellipse), and a mirror makes t run clockwise
// in the plane. Because the transform is kept whole, map() is exact: the
// image of a kcEllipse under x is the kcEllipse of x * xform(), with every
// parameter still naming the same point. As a shape it is a region: within()
// includes the boundary, and points within 1e-12 of it (relative to the
// size, measured in the unit circle's space) count as on it; distances are
// to the boundary.
//
// Nearest points: where several boundary points are nearest (the centre, or
// a point on the longer axis close to the centre) the first one along the
// boundary from t = 0 is taken; for a circle's centre that is t = 0 itself.
//
// Conversion: kcEllipse(kcEllipse2) keeps the parameter (the transform is
// translation(center) R(rotation) scale(radiusX, radiusY)); the way back,
// kcEllipse2(kcEllipse), factorises the transform (see ellipse2.h).
//
// Default: the unit circle (identity transform). Equality compares the
// transforms with kcXform<2>'s == (1e-15 per element). Archive form: version
// byte 0, the transform (six doubles).
#pragma once

#include "foundation/shapes/shape.h"

class kcCircle;
class kcEllipse2;

class kcEllipse : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipse);

  kcEllipse() = default;
  // BadParams for non-finite values, DegenerateShape for a singular transform.
  explicit kcEllipse(const kcXform<2>& xform);
  explicit kcEllipse(const kcEllipse2& e);
  // The circle's transform: translation(center) scale(r, r).
  explicit kcEllipse(const kcCircle& c);

  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  void xform(const kcXform<2>& x);
  [[nodiscard]] const kcVector<2>& center() const noexcept { return xform_.trans(); }

  // The boundary point of parameter t.
  [[nodiscard]] kcVector<2> point(const kcRadian& t) const noexcept;

  // Exact: the kcEllipse of x * xform(); kcMathError::Singular for a singular x.
  [[nodiscard]] kcEllipse map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcEllipse& a, const kcEllipse& b) noexcept { return a.xform_ == b.xform_; }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for a transform an ellipse cannot have.
  static void check_(const kcXform<2>& x);

  kcXform<2> xform_;
};
