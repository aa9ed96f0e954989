// kcLineSeg: the straight segment from p1 to p2.
//
// Parametrisation: the two end points, p1 the start. An open contour: it
// runs from p1 to p2, both ends have the direction angle of p2 - p1
// (atan2, in (-pi, pi]), and reverse() swaps the ends. The default segment
// runs from (0, 0) to (1, 0). Coincident end points are DegenerateShape,
// also for the image under a transform that collapses the segment.
//
// Archive form: version byte 0, p1, p2 (four doubles).
#pragma once

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcFLine;

class kcLineSeg : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcLineSeg);

  kcLineSeg() = default;
  // BadParams for coordinates that are not finite; DegenerateShape for p1 == p2.
  kcLineSeg(const kcVector<2>& p1, const kcVector<2>& p2);

  [[nodiscard]] const kcVector<2>& p1() const noexcept { return p1_; }
  [[nodiscard]] const kcVector<2>& p2() const noexcept { return p2_; }
  void p1(const kcVector<2>& p);
  void p2(const kcVector<2>& p);

  [[nodiscard]] double length() const noexcept { return p1_.distance(p2_); }
  // Unit vector from p1 towards p2.
  [[nodiscard]] kcVector<2> direction() const { return (p2_ - p1_).unit(); }
  [[nodiscard]] kcRadian angle() const noexcept { return (p2_ - p1_).angle(); }
  [[nodiscard]] kcVector<2> midpoint() const noexcept { return (p1_ + p2_) * 0.5; }
  // p1 + t (p2 - p1): t = 0 is p1, t = 1 is p2.
  [[nodiscard]] kcVector<2> pointAt(double t) const noexcept { return p1_ + (p2_ - p1_) * t; }
  // The infinite line through p1 in the direction of p2.
  [[nodiscard]] kcFLine line() const;

  [[nodiscard]] kcLineSeg map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] bool isOpenContour() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override { return p1_; }
  [[nodiscard]] kcVector<2> endPoint() const override { return p2_; }
  [[nodiscard]] kcRadian startAngle() const override { return angle(); }
  [[nodiscard]] kcRadian endAngle() const override { return angle(); }
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcVector<2> p1_;
  kcVector<2> p2_{1.0, 0.0};
};
