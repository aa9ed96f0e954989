// kcBezierCurve: one cubic Bezier curve, given by its four control points.
//
// Parametrisation: B(t) = (1 - t)^3 P0 + 3 (1 - t)^2 t P1 + 3 (1 - t) t^2 P2
// + t^3 P3 for t in [0, 1]; the curve starts at P0 (t = 0) travelling towards
// P1 and ends at P3 (t = 1) arriving from P2. It is an open contour even when
// P3 == P0. The direction of travel at an end is that of the first control
// leg that does not vanish (P1 - P0, else P2 - P0, else P3 - P0), so every
// curve has end angles.
//
// Degenerate: four coincident control points (DegenerateShape); any other
// placement, a loop or a cusp included, is a curve. The default curve is the
// straight one from (0, 0) to (1, 0) with its inner points at thirds.
//
// Images: an affine map of a Bezier curve is the Bezier curve of the mapped
// control points, exactly, so map() maps P0 to P3. A singular map is allowed
// as long as the image is not a single point (DegenerateShape then).
//
// Queries: encloseRect is the tight box (the ends and the roots of each
// coordinate's derivative); nearestPoint is exact up to rounding (the ends
// and the roots of the quintic (B(t) - p) . B'(t), isolated by subdividing its
// Bernstein form, then polished by bracketed Newton steps); ties go to the
// smaller t. sample() steps t evenly, enough steps that no arc between
// neighbours is longer than the spacing.
//
// Archive form: version byte 0, then P0, P1, P2, P3 (two doubles each).
#pragma once

#include <array>
#include <utility>

#include "foundation/shapes/shape.h"

class kcBezierCurve : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcBezierCurve);

  using ControlPoints = std::array<kcVector<2>, 4>;

  kcBezierCurve();
  // BadParams for a coordinate that is not finite; DegenerateShape when all
  // four points coincide.
  kcBezierCurve(const kcVector<2>& p0, const kcVector<2>& p1, const kcVector<2>& p2, const kcVector<2>& p3);
  explicit kcBezierCurve(const ControlPoints& points);

  [[nodiscard]] const ControlPoints& controlPoints() const noexcept { return points_; }
  void controlPoints(const ControlPoints& points);
  // Control point i, 0 to 3 (BadParams for another index).
  [[nodiscard]] const kcVector<2>& controlPoint(int i) const;

  // B(t) and dB/dt; t outside [0, 1] extends the polynomial.
  [[nodiscard]] kcVector<2> pointAt(double t) const noexcept;
  [[nodiscard]] kcVector<2> derivativeAt(double t) const noexcept;
  // The parameter of nearestPoint(p).
  [[nodiscard]] double nearestParam(const kcVector<2>& p) const;
  // The pieces before and after t, each a Bezier curve of its own
  // (BadParams unless 0 < t < 1; DegenerateShape if a piece is a point).
  [[nodiscard]] std::pair<kcBezierCurve, kcBezierCurve> split(double t) const;

  [[nodiscard]] kcBezierCurve map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] bool isOpenContour() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override { return points_[0]; }
  [[nodiscard]] kcVector<2> endPoint() const override { return points_[3]; }
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams for non-finite points, DegenerateShape for a single point.
  static void check_(const ControlPoints& points);

  ControlPoints points_;
};
