// Private geometry of cubic Bezier pieces, shared by kcBezierCurve and the
// splines: evaluation, subdivision, the tight box, the nearest point and
// sampling.
//
// A piece is B(t) = sum over i of C(3, i) (1 - t)^(3 - i) t^i P_i, t in [0, 1].
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "foundation/shapes/rect.h"
#include "foundation/vector.h"

using kcCubic_ = std::array<kcVector<2>, 4>;

[[nodiscard]] kcVector<2> kfCubicPoint_(const kcCubic_& c, double t) noexcept;
// dB/dt.
[[nodiscard]] kcVector<2> kfCubicDerivative_(const kcCubic_& c, double t) noexcept;
// The two halves of c cut at t (de Casteljau).
void kfCubicSplit_(const kcCubic_& c, double t, kcCubic_& left, kcCubic_& right) noexcept;

// The tight box of the piece: its ends and the points where a coordinate's
// derivative vanishes.
[[nodiscard]] kcRect kfCubicBox_(const kcCubic_& c);

struct kcCubicFoot_ {
  kcVector<2> point;  // B(t)
  double t = 0.0;
  double distance = 0.0;
};

// The point of the piece nearest to p: the ends and the roots of the quintic
// (B(t) - p) . B'(t), isolated by subdivision of its Bernstein form and
// polished by bracketed Newton steps. Ties resolve to the smaller t.
[[nodiscard]] kcCubicFoot_ kfNearestOnCubic_(const kcCubic_& c, const kcVector<2>& p);

// A lower bound of the distance from p to the piece: the distance to the box
// of its control points, which holds the whole piece.
[[nodiscard]] double kfCubicDistanceBound_(const kcCubic_& c, const kcVector<2>& p) noexcept;

// Direction of travel where the piece starts (atEnd false) or ends: the first
// control point that differs from the end point, read inwards. False when all
// four coincide.
bool kfCubicEndDirection_(const kcCubic_& c, bool atEnd, kcVector<2>& direction) noexcept;

// Appends B(t) at equal steps of t, starting with B(0), ending with B(1) when
// withEnd is set; the step count keeps every arc between samples within
// spacing, since |B'| never exceeds three times the longest control leg.
void kfSampleCubic_(const kcCubic_& c, double spacing, bool withEnd, std::vector<kcVector<2>>& out);
// How many samples kfSampleCubic_ takes (without the end), for checking a
// whole spline's count before sampling it.
[[nodiscard]] double kfCubicSampleSteps_(const kcCubic_& c, double spacing) noexcept;
