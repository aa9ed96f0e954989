// kcDeBoorSpline: a B-spline given by its de Boor (control) points.
//
// Parametrisation: n + 1 de Boor points (n >= 1) define a clamped uniform
// B-spline of degree p = min(3, n): the knot vector is p + 1 zeros, then
// 1, 2, ..., m - 1, then p + 1 times m, with m = n - p + 1 spans. Clamping
// makes the curve start at the first de Boor point and end at the last,
// tangent to the first and last legs of the control polygon; the interior
// knots are uniform, so the curve depends on the points only through affine
// combinations and maps exactly. Four points give one cubic Bezier curve
// with those very control points; three a parabola, two a straight segment
// (both raised to cubic pieces). The curve runs from the first point towards
// the last; its Bezier form (see kcCubicSpline) has one piece per span, found
// by inserting every interior knot until it has multiplicity p.
//
// Degenerate: fewer than two points is BadParams; all points coincident is
// DegenerateShape. The default spline has the de Boor points (0, 0) and
// (1, 0): the straight segment between them.
//
// Archive form: version byte 0, then the de Boor points (a 32-bit count and
// the points). The Bezier form is rebuilt on loading, not stored.
#pragma once

#include <vector>

#include "foundation/shapes/spline.h"

class kcDeBoorSpline : public kcCubicSpline {
 public:
  KC_DECLARE_PERSISTENT(kcDeBoorSpline);

  kcDeBoorSpline();
  // BadParams for fewer than two points or a coordinate that is not finite;
  // DegenerateShape when all points coincide.
  explicit kcDeBoorSpline(std::vector<kcVector<2>> deBoorPoints);

  [[nodiscard]] const std::vector<kcVector<2>>& deBoorPoints() const noexcept { return deBoor_; }
  void deBoorPoints(std::vector<kcVector<2>> points);
  // The degree of the B-spline: min(3, number of points - 1).
  [[nodiscard]] long degree() const noexcept {
    return static_cast<long>(deBoor_.size() < 4 ? deBoor_.size() - 1 : 3);
  }

  [[nodiscard]] kcDeBoorSpline map(const kcXform<2>& x) const;

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

  // The Bezier points of the spline (BadParams for fewer than two points or
  // a coordinate that is not finite).
  static std::vector<kcVector<2>> bezierFrom_(const std::vector<kcVector<2>>& deBoor);

  std::vector<kcVector<2>> deBoor_;
};
