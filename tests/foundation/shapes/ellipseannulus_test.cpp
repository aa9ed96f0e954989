#include "foundation/shapes/ellipseannulus.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

kcEllipseAnnulus ring() { return kcEllipseAnnulus(kcEllipse2(3, 1.5, kcRadian(0.5), V(1, 2)), 0.4); }

TEST(EllipseAnnulus, ConstructorRejectsBadScales) {
  kcEllipse2 e;
  EXPECT_THROW(kcEllipseAnnulus(e, 0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcEllipseAnnulus(e, 1.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcEllipseAnnulus(e, HUGE_VAL), kcShapesError::BadParams);
  kcEllipseAnnulus a(e, 0.3);
  EXPECT_THROW(a.innerScale(0.0), kcShapesError::DegenerateShape);
  EXPECT_EQ(a.innerScale(), 0.3);
  EXPECT_EQ(kcEllipseAnnulus(), kcEllipseAnnulus(kcEllipse2(), 0.5));
  EXPECT_EQ(ring().inner(), kcEllipse2(3 * 0.4, 1.5 * 0.4, kcRadian(0.5), V(1, 2)));
}

TEST(EllipseAnnulus, RegionAndDistances) {
  kcEllipseAnnulus a = ring();
  auto outer = ellipse_testing::ellipseCurve(V(1, 2), 3, 1.5, 0.5);
  auto inner = ellipse_testing::ellipseCurve(V(1, 2), 1.2, 0.6, 0.5);
  for (V p : ellipse_testing::probes(V(1, 2), 4.0)) {
    double brute = std::min(ellipse_testing::bruteDistance(outer, 0, 2 * kPi, p),
                            ellipse_testing::bruteDistance(inner, 0, 2 * kPi, p));
    EXPECT_NEAR(a.distanceToPoint(p), brute, 1e-9) << p.x() << "," << p.y();
    EXPECT_NEAR(a.nearestPoint(p).distance(p), brute, 1e-9);
  }
  // Rays from the centre: in the hole, in the ring, beyond it.
  for (double t = 0.0; t < 2 * kPi; t += 0.7) {
    V dir = outer(t) - V(1, 2);
    EXPECT_FALSE(a.within(V(1, 2) + dir * 0.39));
    EXPECT_TRUE(a.within(V(1, 2) + dir * 0.41));
    EXPECT_TRUE(a.within(V(1, 2) + dir * 0.99));
    EXPECT_FALSE(a.within(V(1, 2) + dir * 1.01));
  }
  EXPECT_FALSE(a.within(V(1, 2)));
  EXPECT_EQ(a.encloseRect(), a.outer().encloseRect());
  std::vector<V> pts = samples(a, 0.05);
  std::vector<V> o = samples(a.outer(), 0.05);
  ASSERT_EQ(pts.size(), o.size() + samples(a.inner(), 0.05).size());
  EXPECT_EQ(pts.back(), a.inner().point(kcRadian(0)));
  std::vector<kcShapePtr> parts = a.decompose();
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(*parts[0], a.outer());
  EXPECT_EQ(*parts[1], a.inner());
}

TEST(EllipseAnnulus, MapsKeepTheScale) {
  kcEllipseAnnulus a = ring();
  for (kcXform<2> x : {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>::scale(-1, 1)}) {
    kcEllipseAnnulus image = a.map(x);
    EXPECT_EQ(image.innerScale(), 0.4);
    expectMapMatchesSamples(a, x, 0.02, 1e-9);
    for (V p : probeGrid(a.encloseRect(), 0.5, 10)) {
      if (a.distanceToPoint(p) > 1e-9) {
        EXPECT_EQ(image.within(x * p), a.within(p));
      }
    }
  }
  EXPECT_THROW((void)a.map(kcXform<2>::scale(0, 1)), kcMathError::Singular);
}

TEST(EllipseAnnulus, Archive) {
  kcEllipseAnnulus a = ring();
  expectRoundTrip(a);
  expectUnknownVersion(a, "foundation/shapes/ellipseannulus");
  expectTruncationCorrupt(a);
  Bytes bytes = storeByHandle(a);
  ASSERT_EQ(bytes.size(), bodyOffset(a) + 1 + 40 + 8);
  expectNaNCorrupt(a, bodyOffset(a) + 41);
  expectNaNCorrupt(a, bodyOffset(a) + 1);
  patchDouble(bytes, bodyOffset(a) + 41, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
