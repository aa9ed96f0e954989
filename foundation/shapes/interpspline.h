// kcInterpSpline: the cubic spline through a sequence of points.
//
// Parametrisation: points q0 ... qn (n >= 1) are passed in order, q_i at
// spline parameter i (uniform parametrisation); between neighbours the curve
// is one cubic piece, and the whole curve is twice continuously
// differentiable. End conditions: natural, the second derivative is zero at
// q0 and at qn. The tangents D_i at the points solve the tridiagonal system
//   2 D0 + D1 = 3 (q1 - q0),
//   D(i-1) + 4 D_i + D(i+1) = 3 (q(i+1) - q(i-1)),
//   D(n-1) + 2 Dn = 3 (qn - q(n-1)),
// and piece i has the Bezier points q_i, q_i + D_i / 3, q(i+1) - D(i+1) / 3,
// q(i+1). Uniform parameters (rather than chord lengths) keep the
// construction affine: the spline through mapped points is the mapped
// spline, so map() is exact. Two points give the straight segment; repeated
// neighbouring points are allowed (the curve stops there for a moment).
//
// Degenerate: fewer than two points is BadParams; all points coincident is
// DegenerateShape. The default spline passes through (0, 0) and (1, 0).
//
// Archive form: version byte 0, then the points (a 32-bit count and the
// points). The Bezier form is rebuilt on loading, not stored.
#pragma once

#include <vector>

#include "foundation/shapes/spline.h"

class kcInterpSpline : public kcCubicSpline {
 public:
  KC_DECLARE_PERSISTENT(kcInterpSpline);

  kcInterpSpline();
  // BadParams for fewer than two points or a coordinate that is not finite;
  // DegenerateShape when all points coincide.
  explicit kcInterpSpline(std::vector<kcVector<2>> points);

  // The points the curve passes through, in order.
  [[nodiscard]] const std::vector<kcVector<2>>& points() const noexcept { return points_; }
  void points(std::vector<kcVector<2>> points);
  // The tangent (derivative by the spline parameter) at point i.
  [[nodiscard]] kcVector<2> tangent(long i) const;

  [[nodiscard]] kcInterpSpline map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  static std::vector<kcVector<2>> bezierFrom_(const std::vector<kcVector<2>>& points);

  std::vector<kcVector<2>> points_;
};
