// kcCoordAxes: a pair of coordinate axes, the images of the unit x and y axes.
//
// Parametrisation: xform() maps the unit frame: origin() = xform() * (0, 0),
// the x axis is the segment from origin() to xEnd() = xform() * (1, 0), the y
// axis the segment from origin() to yEnd() = xform() * (0, 1). The shape is
// the two segments (x axis first): neither an open contour nor a region.
// The transform must be invertible, so the axes are not parallel
// (DegenerateShape otherwise). decompose() gives the two axes as kcLineSeg.
//
// Archive form: version byte 0, the transform (six doubles).
#pragma once

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcCoordAxes : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcCoordAxes);

  // The unit axes at the origin.
  kcCoordAxes() = default;
  // BadParams for non-finite values; DegenerateShape for a singular transform.
  explicit kcCoordAxes(const kcXform<2>& xform);

  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  void xform(const kcXform<2>& x);

  [[nodiscard]] kcVector<2> origin() const noexcept { return xform_.trans(); }
  [[nodiscard]] kcVector<2> xEnd() const noexcept { return xform_ * kcVector<2>(1.0, 0.0); }
  [[nodiscard]] kcVector<2> yEnd() const noexcept { return xform_ * kcVector<2>(0.0, 1.0); }

  // DegenerateShape for a singular x.
  [[nodiscard]] kcCoordAxes map(const kcXform<2>& x) const;

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

  static void check_(const kcXform<2>& x);

  kcXform<2> xform_;
};
