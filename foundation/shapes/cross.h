// kcCross: a cross-shaped marker, two perpendicular bars of equal length
// crossing at their midpoints.
//
// Parametrisation: centre(), armLength() (> 0: the distance from the centre
// to each of the four bar ends) and rotation() (a kcRadian, counter-clockwise
// from the x axis): the first bar runs from centre - armLength * d to
// centre + armLength * d with d = (cos rotation, sin rotation), the second
// likewise along d turned by +90 degrees. The shape is the two bars (first
// bar first): neither an open contour nor a region.
//
// Images: a cross stays a cross, as a marker should: the centre maps as a
// point, the rotation through kcXform::mapAngle, and the arm length scales by
// sqrt(|det|) of the linear part. Under a similarity (rotation, uniform scale,
// mirror, translation) this is the exact image; under other transforms it is
// the cross of the same area-scale at the mapped place, not the sheared
// figure. A singular transform throws kcMathError::Singular or
// DegenerateShape.
//
// Archive form: version byte 0, centre (two doubles), arm length, rotation.
#pragma once

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcCross : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcCross);

  // At the origin, arm length 1, unrotated.
  kcCross() = default;
  // BadParams for non-finite values; DegenerateShape for an arm length <= 0.
  kcCross(const kcVector<2>& centre, double armLength, const kcRadian& rotation = kcRadian(0.0));

  [[nodiscard]] const kcVector<2>& centre() const noexcept { return centre_; }
  [[nodiscard]] double armLength() const noexcept { return armLength_; }
  [[nodiscard]] const kcRadian& rotation() const noexcept { return rotation_; }
  void centre(const kcVector<2>& c);
  void armLength(double a);
  void rotation(const kcRadian& r);

  // Bar ends: 0 and 1 the first bar's (centre - arm, centre + arm), 2 and 3
  // the second's; BadParams for another index.
  [[nodiscard]] kcVector<2> end(int i) const;

  [[nodiscard]] kcCross map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  static void check_(const kcVector<2>& centre, double armLength, const kcRadian& rotation);

  kcVector<2> centre_;
  double armLength_ = 1.0;
  kcRadian rotation_;
};
