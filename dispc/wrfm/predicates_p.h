// Exact geometric predicates for the segment classes, and the rounding scale
// of computed points.
#pragma once

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

#include "foundation/vector.h"

// The sign of cross(b - a, c - a): +1 when c lies left of the directed line
// a -> b, -1 right of it, 0 on it. Exact for every input whose products do
// not underflow (coordinates above about 1e-150 in magnitude, or zero): a
// floating-point filter decides almost every case, and the rest are summed
// exactly as expansions.
[[nodiscard]] int kfOrientation(const kcVector<2>& a, const kcVector<2>& b, const kcVector<2>& c) noexcept;

// Computed crossing points are trusted to kCrossingUlps units in the last
// place of the largest coordinate involved: two points this close are one,
// and a point this close to an end point is at that end point.
inline constexpr double kCrossingUlps = 64.0;

// kCrossingUlps units in the last place of the largest magnitude among the
// given coordinates and lengths.
[[nodiscard]] inline double kfCrossingTol(std::initializer_list<double> magnitudes) noexcept {
  double m = 0.0;
  for (double v : magnitudes) m = std::max(m, std::fabs(v));
  return kCrossingUlps * std::numeric_limits<double>::epsilon() * m;
}

[[nodiscard]] inline double kfMagnitude(const kcVector<2>& p) noexcept {
  return std::max(std::fabs(p.x()), std::fabs(p.y()));
}
