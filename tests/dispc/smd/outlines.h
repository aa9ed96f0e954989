// Random outlines for the SMD poly tests.
#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "dispc/smd/vertex.h"

namespace dispc_test {

// A wobbly ring of n points, some corners rounded and some segments bent:
// the calm ones valid, the wild ones folding over themselves.
inline std::vector<kcSMDGDPolyVertex> wobblyRing(std::mt19937& rng, int n) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const double wobble = unit(rng);
  std::vector<kcSMDGDPolyVertex> vs;
  for (int i = 0; i < n; ++i) {
    const double a = 2 * std::numbers::pi * (i + wobble * (unit(rng) - 0.5) * 3) / n;
    const double r = 10 * (1 - 0.5 * wobble * unit(rng));
    const double radius = unit(rng) < 0.3 ? unit(rng) * 0.3 : 0.0;
    const double span = unit(rng) < 0.1 ? (unit(rng) - 0.5) * 40 : 0.0;
    vs.emplace_back(kcVector<2>(r * std::cos(a), r * std::sin(a)), radius, kcDegree(span), 0.5, 0.5, -1,
                    kcDimTol(-1, -1, -1, kcDimTol::eOffsets));
  }
  return vs;
}

}  // namespace dispc_test
