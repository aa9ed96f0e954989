// kcAffineRectangle: the image of the unit square [0, 1] × [0, 1] under an
// affine transform, a parallelogram.
//
// Parametrisation: xform() maps the unit square onto the shape: corner(0) =
// xform() * (0, 0) is the corner the boundary starts from, the matrix columns
// are the two sides, corner(1), corner(2), corner(3) are the images of
// (1, 0), (1, 1), (0, 1), and the boundary visits them in that order
// (counter-clockwise in the unit square; a mirror reverses it). The
// transform must be invertible (DegenerateShape otherwise). The same unit
// square as kcGenRect's, so kcGenRect(a.xform()) is the same outline.
//
// within() counts the boundary as inside, widened by 1e-12 in the unit
// square against rounding.
//
// Archive form: version byte 0, the transform (six doubles).
#pragma once

#include <array>

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcGenRect;

class kcAffineRectangle : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcAffineRectangle);

  // The unit square.
  kcAffineRectangle() = default;
  // BadParams for non-finite values; DegenerateShape for a singular transform.
  explicit kcAffineRectangle(const kcXform<2>& xform);
  // The parallelogram with corners origin, origin + side1, origin + side1 +
  // side2, origin + side2.
  kcAffineRectangle(const kcVector<2>& origin, const kcVector<2>& side1, const kcVector<2>& side2);

  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  void xform(const kcXform<2>& x);

  // Corner i (0 to 3, BadParams otherwise), in boundary order.
  [[nodiscard]] kcVector<2> corner(int i) const;
  [[nodiscard]] std::array<kcVector<2>, 4> corners() const noexcept;
  [[nodiscard]] kcVector<2> centre() const noexcept { return xform_ * kcVector<2>(0.5, 0.5); }
  // Signed area: negative when the transform mirrors.
  [[nodiscard]] double area() const noexcept { return xform_.matrix().determinant(); }
  // The same outline as a kcGenRect without rounding.
  [[nodiscard]] kcGenRect toGenRect() const;

  // DegenerateShape for a singular x.
  [[nodiscard]] kcAffineRectangle map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams for non-finite values, DegenerateShape for a singular matrix.
  static void check_(const kcXform<2>& x);
  [[nodiscard]] std::vector<kcVector<2>> cornerList_() const;

  kcXform<2> xform_;
};
