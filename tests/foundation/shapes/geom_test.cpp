// The private elliptical-arc geometry against brute force.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "foundation/shapes/geom_p.h"

namespace {

using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

V arcPoint(const V& c, const V& u, const V& v, double t) { return c + u * std::cos(t) + v * std::sin(t); }

// Nearest distance by dense sampling of the parameter, refined by golden
// section around the best sample.
double bruteDistance(const V& c, const V& u, const V& v, double t0, double span, const V& p) {
  const int n = 20000;
  int best = 0;
  double bestD = INFINITY;
  for (int i = 0; i <= n; ++i) {
    double d = arcPoint(c, u, v, t0 + span * i / n).distance(p);
    if (d < bestD) {
      bestD = d;
      best = i;
    }
  }
  double lo = std::max(0.0, (best - 1.0) / n), hi = std::min(1.0, (best + 1.0) / n);
  for (int k = 0; k < 100; ++k) {
    double m1 = lo + (hi - lo) * 0.381966, m2 = hi - (hi - lo) * 0.381966;
    if (arcPoint(c, u, v, t0 + span * m1).distance(p) < arcPoint(c, u, v, t0 + span * m2).distance(p))
      hi = m2;
    else
      lo = m1;
  }
  return std::min(bestD, arcPoint(c, u, v, t0 + span * 0.5 * (lo + hi)).distance(p));
}

TEST(ArcFootGeometry, NearestPointMatchesBruteForce) {
  std::mt19937 rng(12345);
  std::uniform_real_distribution<double> coord(-3, 3);
  std::uniform_real_distribution<double> spanDist(-2 * kPi, 2 * kPi);
  for (int trial = 0; trial < 60; ++trial) {
    V c(coord(rng), coord(rng));
    V u(coord(rng), coord(rng));
    V v(coord(rng), coord(rng));
    if (std::abs(u.cross(v)) < 0.3) continue;
    double t0 = spanDist(rng);
    double span = trial % 5 == 0 ? 2 * kPi : spanDist(rng);
    for (int k = 0; k < 8; ++k) {
      V p = c + V(coord(rng), coord(rng)) * (k < 4 ? 0.5 : 2.0);
      kcArcFoot_ f = kfNearestOnEllipseArc_(c, u, v, t0, span, p);
      double brute = bruteDistance(c, u, v, t0, span, p);
      ASSERT_NEAR(f.distance, brute, 1e-9 * (1 + brute)) << "trial " << trial << " probe " << k;
      EXPECT_LT(f.point.distance(arcPoint(c, u, v, f.t)), 1e-12);
      EXPECT_NEAR(f.point.distance(p), f.distance, 1e-12);
      double off = span >= 0 ? f.t - t0 : t0 - f.t;
      EXPECT_GE(off, -1e-12);
      EXPECT_LE(off, std::abs(span) + 1e-12);
    }
  }
}

TEST(ArcFootGeometry, HardCases) {
  struct Case {
    const char* why;
    V c, u, v;
    double t0, span;
    V p;
  } cases[] = {
      {"centre of a circle", V(0, 0), V(1, 0), V(0, 1), 0.3, 2 * kPi, V(0, 0)},
      {"centre of an ellipse", V(1, 1), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(1, 1)},
      {"on the major axis inside", V(0, 0), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(1, 0)},
      {"on the minor axis inside", V(0, 0), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(0, 0.5)},
      {"just off the major axis", V(0, 0), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(1, 1e-150)},
      {"thin ellipse", V(0, 0), V(100, 0), V(0, 0.01), -1.0, 2.0, V(50, 3)},
      {"mirrored parametrisation", V(0, 0), V(0, 2), V(1, 0), 0.5, -2.5, V(1.5, -1)},
      {"sheared", V(2, -1), V(2, 1), V(1, 1.5), 4.0, 1.0, V(0, 0)},
      {"far away", V(0, 0), V(2, 0), V(0, 1), 1.0, 1.0, V(1e6, -2e6)},
      // The lower half seen from just above the major axis: its nearest point
      // is the foot across the axis, which lies a hair from the axis end.
      {"lower half, 1e-17 above", V(0, 0), V(2, 0), V(0, 1), kPi, kPi, V(0.5, 1e-17)},
      {"lower half, 1e-150 above", V(0, 0), V(2, 0), V(0, 1), kPi, kPi, V(0.5, 1e-150)},
      {"upper half, 1e-40 below", V(0, 0), V(0, 1), V(-2, 0), 0.0, kPi, V(-1e-40, 0.5)},
  };
  for (const Case& c : cases) {
    kcArcFoot_ f = kfNearestOnEllipseArc_(c.c, c.u, c.v, c.t0, c.span, c.p);
    double brute = bruteDistance(c.c, c.u, c.v, c.t0, c.span, c.p);
    EXPECT_NEAR(f.distance, brute, 1e-9 * (1 + brute)) << c.why;
  }
  // At the centre of a full circle every point ties: the start wins.
  kcArcFoot_ f = kfNearestOnEllipseArc_(V(0, 0), V(1, 0), V(0, 1), 0.3, 2 * kPi, V(0, 0));
  EXPECT_LT(f.point.distance(V(std::cos(0.3), std::sin(0.3))), 1e-15);
}

TEST(ArcFootGeometry, BoxAndSamples) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(-3, 3);
  for (int trial = 0; trial < 30; ++trial) {
    V c(coord(rng), coord(rng)), u(coord(rng), coord(rng)), v(coord(rng), coord(rng));
    double t0 = coord(rng), span = trial % 3 == 0 ? 7.0 : coord(rng) * 2;
    if (std::abs(u.cross(v)) < 0.1) continue;
    kcRect box = kfEllipseArcBox_(c, u, v, t0, span);
    kcRect dense;
    double s = std::min(std::abs(span), 2 * kPi);
    for (int i = 0; i <= 20000; ++i) dense.enclose(arcPoint(c, u, v, t0 + (span < 0 ? -s : s) * i / 20000));
    EXPECT_NEAR(box.xMin(), dense.xMin(), 1e-6);
    EXPECT_NEAR(box.yMin(), dense.yMin(), 1e-6);
    EXPECT_NEAR(box.xMax(), dense.xMax(), 1e-6);
    EXPECT_NEAR(box.yMax(), dense.yMax(), 1e-6);
    std::vector<V> pts;
    kfSampleEllipseArc_(c, u, v, t0, span, 0.05, true, pts);
    for (std::size_t i = 1; i < pts.size(); ++i) EXPECT_LE(pts[i].distance(pts[i - 1]), 0.05 * (1 + 1e-12));
    EXPECT_LT(pts.back().distance(arcPoint(c, u, v, t0 + span)), 1e-15);
  }
}

}  // namespace
