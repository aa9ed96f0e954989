// Independent reference computations for the Bezier and spline tests: curve
// points by de Casteljau's construction and distances by brute force.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "foundation/vector.h"

namespace spline_testing {

using V = kcVector<2>;

// The point at t of the cubic with control points c[0..3], by repeated
// interpolation (not the Bernstein sum the library evaluates).
inline V casteljau(const V* c, double t) {
  V a = c[0] + t * (c[1] - c[0]), b = c[1] + t * (c[2] - c[1]), d = c[2] + t * (c[3] - c[2]);
  V ab = a + t * (b - a), bd = b + t * (d - b);
  return ab + t * (bd - ab);
}

// The point at spline parameter t in [0, pieces] of a Bezier point list.
inline V splinePoint(const std::vector<V>& bezier, double t) {
  const std::size_t pieces = bezier.size() / 3;
  std::size_t i = std::min(static_cast<std::size_t>(std::floor(t)), pieces - 1);
  return casteljau(&bezier[3 * i], t - static_cast<double>(i));
}

// The distance from p to the curve of a Bezier point list: the best of dense
// samples of every piece, then a ternary search around it.
inline double bruteDistance(const std::vector<V>& bezier, const V& p, int stepsPerPiece = 2000) {
  const std::size_t pieces = bezier.size() / 3;
  double best = std::numeric_limits<double>::infinity();
  for (std::size_t k = 0; k < pieces; ++k) {
    const V* c = &bezier[3 * k];
    int at = 0;
    double bestHere = std::numeric_limits<double>::infinity();
    for (int i = 0; i <= stepsPerPiece; ++i) {
      double d = p.distance(casteljau(c, double(i) / stepsPerPiece));
      if (d < bestHere) bestHere = d, at = i;
    }
    double lo = std::max(0.0, (at - 1.0) / stepsPerPiece), hi = std::min(1.0, (at + 1.0) / stepsPerPiece);
    for (int r = 0; r < 200; ++r) {
      double m1 = lo + (hi - lo) / 3, m2 = hi - (hi - lo) / 3;
      if (p.distance(casteljau(c, m1)) < p.distance(casteljau(c, m2)))
        hi = m2;
      else
        lo = m1;
    }
    best = std::min({best, bestHere, p.distance(casteljau(c, 0.5 * (lo + hi)))});
  }
  return best;
}

// Largest distance between corresponding points of two equally long lists.
inline double maxGap(const std::vector<V>& a, const std::vector<V>& b) {
  if (a.size() != b.size()) return std::numeric_limits<double>::infinity();
  double gap = 0;
  for (std::size_t i = 0; i < a.size(); ++i) gap = std::max(gap, a[i].distance(b[i]));
  return gap;
}

}  // namespace spline_testing
