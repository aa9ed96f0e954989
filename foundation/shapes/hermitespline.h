// kcHermiteSpline: a cubic spline through points with given tangents.
//
// Parametrisation: points q0 ... qn and tangents T0 ... Tn (n >= 1, one
// tangent per point). Piece i runs from q_i to q(i+1) over a parameter u in
// [0, 1], leaving q_i with derivative T_i and arriving at q(i+1) with
// derivative T(i+1) (derivatives by u); its Bezier points are q_i,
// q_i + T_i / 3, q(i+1) - T(i+1) / 3, q(i+1). The curve is continuously
// differentiable in that parameter. Points map as points and tangents as
// vectors (the linear part only), so map() is exact; reverse() reverses
// both lists and negates the tangents.
//
// Degenerate: fewer than two points, or tangent and point counts that
// differ, is BadParams; all points coincident with all tangents zero is
// DegenerateShape. The default spline runs from (0, 0) to (1, 0) with both
// tangents (1, 0): the straight segment at even speed.
//
// Archive form: version byte 0, then the points and then the tangents (each
// a 32-bit count and the vectors). The Bezier form is rebuilt on loading.
#pragma once

#include <vector>

#include "foundation/shapes/spline.h"

class kcHermiteSpline : public kcCubicSpline {
 public:
  KC_DECLARE_PERSISTENT(kcHermiteSpline);

  kcHermiteSpline();
  // BadParams for fewer than two points, counts that differ or a coordinate
  // that is not finite; DegenerateShape for a single point without tangents.
  kcHermiteSpline(std::vector<kcVector<2>> points, std::vector<kcVector<2>> tangents);

  [[nodiscard]] const std::vector<kcVector<2>>& points() const noexcept { return points_; }
  [[nodiscard]] const std::vector<kcVector<2>>& tangents() const noexcept { return tangents_; }
  // Replaces both lists at once (they must keep the same length).
  void pointsAndTangents(std::vector<kcVector<2>> points, std::vector<kcVector<2>> tangents);

  [[nodiscard]] kcHermiteSpline map(const kcXform<2>& x) const;

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

  static std::vector<kcVector<2>> bezierFrom_(const std::vector<kcVector<2>>& points,
                                              const std::vector<kcVector<2>>& tangents);

  std::vector<kcVector<2>> points_;
  std::vector<kcVector<2>> tangents_;
};
