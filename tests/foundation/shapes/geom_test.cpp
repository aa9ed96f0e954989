// The private elliptical-arc geometry against brute force.
#include <gtest/gtest.h>

#include <random>

#include "foundation/shapes/geom_p.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(ArcFootGeometry, NearestPointBoxAndSamplesOfRandomArcs) {
  std::mt19937 rng(12345);
  std::uniform_real_distribution<double> coord(-3, 3), spans(-2 * kPi, 2 * kPi);
  for (int trial = 0; trial < 60; ++trial) {
    V c(coord(rng), coord(rng)), u(coord(rng), coord(rng)), v(coord(rng), coord(rng));
    if (std::abs(u.cross(v)) < 0.3) continue;
    double t0 = spans(rng), span = trial % 5 == 0 ? 2 * kPi : spans(rng);
    for (int k = 0; k < 8; ++k) {
      V p = c + V(coord(rng), coord(rng)) * (k < 4 ? 0.5 : 2.0);
      kcArcFoot_ f = kfNearestOnEllipseArc_(c, u, v, t0, span, p);
      double brute = bruteDistance(ellipseCurve(c, u, v), t0, span, p);
      ASSERT_NEAR(f.distance, brute, 1e-9 * (1 + brute)) << "trial " << trial << " probe " << k;
      EXPECT_LT(f.point.distance(ellipseCurve(c, u, v)(f.t)), 1e-12);
      EXPECT_NEAR(f.point.distance(p), f.distance, 1e-12);
      double off = span >= 0 ? f.t - t0 : t0 - f.t;  // the foot's parameter lies on the arc
      EXPECT_GE(off, -1e-12);
      EXPECT_LE(off, std::abs(span) + 1e-12);
    }
    // The box against a dense scan; samples close enough and ending on the end.
    kcRect box = kfEllipseArcBox_(c, u, v, t0, span), dense;
    for (int i = 0; i <= 20000; ++i) dense.enclose(ellipseCurve(c, u, v)(t0 + span * i / 20000));
    EXPECT_NEAR(box.xMin(), dense.xMin(), 1e-6);
    EXPECT_NEAR(box.yMin(), dense.yMin(), 1e-6);
    EXPECT_NEAR(box.xMax(), dense.xMax(), 1e-6);
    EXPECT_NEAR(box.yMax(), dense.yMax(), 1e-6);
    std::vector<V> pts;
    kfSampleEllipseArc_(c, u, v, t0, span, 0.05, true, pts);
    for (std::size_t i = 1; i < pts.size(); ++i) EXPECT_LE(pts[i].distance(pts[i - 1]), 0.05 * (1 + 1e-12));
    EXPECT_LT(pts.back().distance(ellipseCurve(c, u, v)(t0 + span)), 1e-15);
  }
  // A span beyond a turn boxes the whole ellipse.
  kcRect whole = kfEllipseArcBox_(V(0, 0), V(2, 0), V(0, 1), 0.3, 7.0);
  EXPECT_NEAR(whole.width(), 4.0, 1e-15);
  EXPECT_NEAR(whole.height(), 2.0, 1e-15);
}

TEST(ArcFootGeometry, HardCases) {
  struct Case {
    const char* why;
    V c, u, v;
    double t0, span;
    V p;
  } cases[] = {
      {"on the major axis inside", V(0, 0), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(1, 0)},
      {"on the minor axis inside", V(0, 0), V(3, 0), V(0, 1), 0.0, 2 * kPi, V(0, 0.5)},
      {"mirrored parametrisation", V(0, 0), V(0, 2), V(1, 0), 0.5, -2.5, V(1.5, -1)},
      {"far away", V(0, 0), V(2, 0), V(0, 1), 1.0, 1.0, V(1e6, -2e6)},
      // The lower half seen from just above the major axis: its nearest point
      // is the foot across the axis, which lies a hair from the axis end.
      {"lower half, 1e-150 above", V(0, 0), V(2, 0), V(0, 1), kPi, kPi, V(0.5, 1e-150)},
      {"upper half, 1e-40 below", V(0, 0), V(0, 1), V(-2, 0), 0.0, kPi, V(-1e-40, 0.5)},
  };
  for (const Case& c : cases) {
    kcArcFoot_ f = kfNearestOnEllipseArc_(c.c, c.u, c.v, c.t0, c.span, c.p);
    double brute = bruteDistance(ellipseCurve(c.c, c.u, c.v), c.t0, c.span, c.p);
    EXPECT_NEAR(f.distance, brute, 1e-9 * (1 + brute)) << c.why;
  }
  // At the centre of a full circle every point ties: the start wins.
  kcArcFoot_ f = kfNearestOnEllipseArc_(V(0, 0), V(1, 0), V(0, 1), 0.3, 2 * kPi, V(0, 0));
  EXPECT_LT(f.point.distance(V(std::cos(0.3), std::sin(0.3))), 1e-15);
}

}  // namespace
