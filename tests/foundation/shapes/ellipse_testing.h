// Independent geometry for the ellipse tests: nearest distances to a
// parametric curve found by brute force (dense scan, then golden-section
// refinement), sharing no code with the shapes under test.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

#include "foundation/matrix.h"
#include "foundation/vector.h"

namespace ellipse_testing {

constexpr double kPi = std::numbers::pi;

using Curve = std::function<kcVector<2>(double)>;

// c + R(rotation) (rx cos t, ry sin t), written out from the definition.
inline Curve ellipseCurve(kcVector<2> c, double rx, double ry, double rotation) {
  return [=](double t) {
    double x = rx * std::cos(t);
    double y = ry * std::sin(t);
    return c + kcVector<2>(x * std::cos(rotation) - y * std::sin(rotation),
                           x * std::sin(rotation) + y * std::cos(rotation));
  };
}

// c + M (cos t, sin t).
inline Curve matrixCurve(kcVector<2> c, kcMatrix<2> m) {
  return [=](double t) { return c + m * kcVector<2>(std::cos(t), std::sin(t)); };
}

// The smallest distance from p to the curve for t between t0 and t0 + span:
// a dense scan, then golden-section refinement around every local minimum
// of the scan (several basins can come close in value).
inline double bruteDistance(const Curve& curve, double t0, double span, const kcVector<2>& p) {
  constexpr int kSteps = 2000;
  std::vector<double> d(kSteps + 1);
  for (int i = 0; i <= kSteps; ++i) d[i] = curve(t0 + span * i / kSteps).distance(p);
  double best = *std::min_element(d.begin(), d.end());
  const double g = (std::sqrt(5.0) - 1.0) / 2.0;
  for (int i = 0; i <= kSteps; ++i) {
    if ((i > 0 && d[i] > d[i - 1]) || (i < kSteps && d[i] > d[i + 1])) continue;
    // Between the neighbouring steps, in fractions of the span.
    double lo = std::max(0.0, (i - 1.0) / kSteps);
    double hi = std::min(1.0, (i + 1.0) / kSteps);
    auto at = [&](double f) { return curve(t0 + span * f).distance(p); };
    for (int k = 0; k < 200 && hi - lo > 1e-17; ++k) {
      double a = hi - g * (hi - lo);
      double b = lo + g * (hi - lo);
      if (at(a) < at(b))
        hi = b;
      else
        lo = a;
    }
    best = std::min(best, at(0.5 * (lo + hi)));
  }
  return best;
}

// Probe points around and inside a box of the given centre and half size,
// including the centre and points on the axes.
inline std::vector<kcVector<2>> probes(kcVector<2> c, double half) {
  std::vector<kcVector<2>> out{c};
  for (int i = -5; i <= 5; ++i) {
    for (int j = -5; j <= 5; ++j) out.push_back(c + kcVector<2>(half * i / 4.0, half * j / 4.0));
  }
  out.push_back(c + kcVector<2>(half * 0.013, half * 1e-9));
  out.push_back(c + kcVector<2>(-half * 1e-12, half * 0.31));
  return out;
}

}  // namespace ellipse_testing
