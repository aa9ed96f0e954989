#include "foundation/shapes/annulus.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Annulus, ConstructorRejectsBadRadii) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    const char* why;
    std::function<void()> make;
    long error;
  } cases[] = {
      {"NaN inner", [&] { kcAnnulus(V(), nan, 1); }, 0x10000209},
      {"infinite outer", [&] { kcAnnulus(V(), 1, HUGE_VAL); }, 0x10000209},
      {"NaN centre", [&] { kcAnnulus(V(0, nan), 1, 2); }, 0x10000209},
      {"zero inner", [&] { kcAnnulus(V(), 0, 1); }, 0x10000204},
      {"negative inner", [&] { kcAnnulus(V(), -1, 1); }, 0x10000204},
      {"equal radii", [&] { kcAnnulus(V(), 1, 1); }, 0x10000204},
      {"inner beyond outer", [&] { kcAnnulus(V(), 2, 1); }, 0x10000204},
  };
  for (const Case& c : cases) {
    try {
      c.make();
      ADD_FAILURE() << c.why;
    } catch (const kcException& e) {
      EXPECT_EQ(e.errorNumber(), c.error) << c.why;
    }
  }
  kcAnnulus a(V(1, 1), 1, 2);
  EXPECT_THROW(a.innerRadius(2), kcShapesError::DegenerateShape);
  EXPECT_THROW(a.outerRadius(0.5), kcShapesError::DegenerateShape);
  EXPECT_EQ(a, kcAnnulus(V(1, 1), 1, 2));
  a.outerRadius(3);
  EXPECT_EQ(a.outerRadius(), 3.0);
  EXPECT_EQ(kcAnnulus(), kcAnnulus(V(), 0.5, 1));
}

TEST(Annulus, Measures) {
  kcAnnulus a(V(1, -1), 1, 3);
  EXPECT_EQ(a.encloseRect(), kcRect(V(-2, -4), V(6, 6)));
  EXPECT_TRUE(a.within(V(3, -1)));
  EXPECT_TRUE(a.within(V(2, -1)));  // on the inner circle
  EXPECT_TRUE(a.within(V(4, -1)));  // on the outer circle
  EXPECT_FALSE(a.within(V(1.5, -1)));
  EXPECT_FALSE(a.within(V(4.01, -1)));
  // The nearer circle; halfway between them the outer one wins.
  EXPECT_EQ(a.nearestPoint(V(1, 0.2)), V(1, 0));
  EXPECT_EQ(a.nearestPoint(V(1, 3)), V(1, 2));
  EXPECT_EQ(a.nearestPoint(V(3, -1)), V(4, -1));
  EXPECT_DOUBLE_EQ(a.distanceToPoint(V(3, -1)), 1.0);
  // The centre: the inner circle's start point.
  EXPECT_EQ(a.nearestPoint(V(1, -1)), V(2, -1));
  EXPECT_DOUBLE_EQ(a.distanceToPoint(V(1, -1)), 1.0);
  expectDistancesMatchSampling(a, probeGrid(a.encloseRect(), 1.0, 10), 0.005, 1e-5);
  expectEncloseRectMatchesSampling(a, 0.01, 1e-5);
  // Samples: the outer circle closed, then the inner one closed.
  std::vector<V> pts = samples(a, 0.1);
  std::vector<V> outer = samples(a.outerCircle(), 0.1);
  std::vector<V> inner = samples(a.innerCircle(), 0.1);
  ASSERT_EQ(pts.size(), outer.size() + inner.size());
  EXPECT_TRUE(std::equal(outer.begin(), outer.end(), pts.begin()));
  EXPECT_EQ(pts.back(), V(2, -1));
  std::vector<kcShapePtr> parts = a.decompose();
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(*parts[0], a.outerCircle());
  EXPECT_EQ(*parts[1], a.innerCircle());
}

TEST(Annulus, MapsToAnAnnulusOrAGeneralAnnulus) {
  kcAnnulus a(V(1, -1), 1, 3);
  kcShapePtr rotated =
      a.mapShape(kcXform<2>(kcMatrix<2>::rotation(kcRadian(0.7)) * kcMatrix<2>::scale(2, 2), V(1, 1)));
  auto* ring = dynamic_cast<kcAnnulus*>(rotated.get());
  ASSERT_NE(ring, nullptr);
  EXPECT_NEAR(ring->innerRadius(), 2.0, 1e-15);
  EXPECT_NEAR(ring->outerRadius(), 6.0, 1e-15);
  EXPECT_EQ(a.map(kcXform<2>::translation(V(1, 1))), kcAnnulus(V(2, 0), 1, 3));
  EXPECT_NE(dynamic_cast<kcAnnulus*>(a.mapShape(kcXform<2>::scale(-1, 1)).get()), nullptr);
  for (kcXform<2> x : {kcXform<2>::scale(2, 1), kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V(2, 0)),
                       kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V())}) {
    kcShapePtr image = a.mapShape(x);
    ASSERT_NE(dynamic_cast<kcGenAnnulus*>(image.get()), nullptr);
    EXPECT_THROW((void)a.map(x), kcShapesError::BadGeom);
    expectMapMatchesSamples(a, x, 0.02, 1e-9);
  }
  EXPECT_THROW((void)a.mapShape(kcXform<2>::scale(1, 0)), kcMathError::Singular);
  // The general form of the same ring: the same region.
  kcGenAnnulus g = a.toGenAnnulus();
  EXPECT_DOUBLE_EQ(g.innerScale(), 1.0 / 3.0);
  for (const V& p : samples(a, 0.05)) EXPECT_LT(g.distanceToPoint(p), 1e-12);
  for (const V& p : samples(g, 0.05)) EXPECT_LT(a.distanceToPoint(p), 1e-12);
  for (V p : probeGrid(a.encloseRect(), 0.5, 12)) {
    if (std::fabs(a.distanceToPoint(p)) > 1e-9) {
      EXPECT_EQ(g.within(p), a.within(p)) << p.x() << "," << p.y();
    }
  }
}

TEST(Annulus, Archive) {
  kcAnnulus a(V(1, -1), 1, 3);
  expectRoundTrip(a);
  expectUnknownVersion(a, "foundation/shapes/annulus");
  expectTruncationCorrupt(a);
  Bytes bytes = storeByHandle(a);
  ASSERT_EQ(bytes.size(), bodyOffset(a) + 32);
  for (std::size_t field = 0; field < 4; ++field) expectNaNCorrupt(a, bodyOffset(a) + 8 * field);
  patchDouble(bytes, bodyOffset(a) + 16, 3.0);  // inner == outer
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
