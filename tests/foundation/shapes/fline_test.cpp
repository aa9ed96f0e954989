#include "foundation/shapes/fline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

TEST(FLine, ClosestPointAndSignedDistance) {
  kcFLine l(V(1, 1), kcRadian(kPi / 4));
  V q = l.closestPoint(V(3, 1));
  EXPECT_NEAR(q.x(), 2.0, 1e-15);
  EXPECT_NEAR(q.y(), 2.0, 1e-15);
  EXPECT_EQ(l.nearestPoint(V(3, 1)), q);
  EXPECT_NEAR(l.signedDistance(V(3, 1)), -std::sqrt(2.0), 1e-15);  // right of travel
  EXPECT_NEAR(l.signedDistance(V(1, 3)), std::sqrt(2.0), 1e-15);
  EXPECT_NEAR(l.distanceToPoint(V(1, 3)), std::sqrt(2.0), 1e-15);
  EXPECT_LT(l.pointAt(std::sqrt(8.0)).distance(V(3, 3)), 1e-15);
}

TEST(FLine, Intersections) {
  struct Case {
    const char* why;
    kcFLine a, b;
    bool meets;
    V at;
  } cases[] = {
      {"axes", kcFLine(V(5, 0), kcRadian(0)), kcFLine(V(0, 7), kcRadian(kPi / 2)), true, V(0, 0)},
      {"diagonals", kcFLine::through(V(0, 0), V(2, 2)), kcFLine::through(V(0, 2), V(2, 0)), true, V(1, 1)},
      {"steep and flat", kcFLine(V(3, -10), kcRadian(kPi / 2)), kcFLine::through(V(0, 1), V(1, 1.5)), true,
       V(3, 2.5)},
      {"parallel", kcFLine(V(0, 0), kcRadian(0.3)), kcFLine(V(0, 1), kcRadian(0.3)), false, V()},
      {"coincident", kcFLine(V(0, 0), kcRadian(0)), kcFLine(V(5, 0), kcRadian(0)), false, V()},
  };
  for (const Case& c : cases) {
    std::optional<V> p = c.a.intersect(c.b);
    ASSERT_EQ(p.has_value(), c.meets) << c.why;
    if (!p) continue;
    EXPECT_LT(p->distance(c.at), 1e-14) << c.why;
    EXPECT_LT(c.b.distanceToPoint(*p), 1e-14) << c.why;
  }
}

TEST(FLine, ConstructionEqualityAndMap) {
  EXPECT_THROW(kcFLine(V(), kcRadian(std::numeric_limits<double>::quiet_NaN())), kcShapesError::BadParams);
  EXPECT_THROW((void)kcFLine::through(V(1, 1), V(1, 1)), kcShapesError::DegenerateShape);
  // Angles naming the same direction are equal; the opposite direction is not.
  EXPECT_EQ(kcFLine(V(1, 2), kcRadian(0.5)), kcFLine(V(1, 2), kcRadian(0.5 + 2 * kPi)));
  EXPECT_FALSE(kcFLine(V(1, 2), kcRadian(0.5)) == kcFLine(V(1, 2), kcRadian(0.5 + kPi)));
  kcFLine l(V(1, 2), kcRadian(0.5));
  kcXform<2> x(kcMatrix<2>(2, 1, -1, 3), V(4, 0));
  kcFLine m = l.map(x);
  for (double s : {-3.0, 0.0, 2.5}) EXPECT_LT(m.distanceToPoint(x * l.pointAt(s)), 1e-13);
  // Direction of travel survives the map.
  EXPECT_GT((x * l.pointAt(1) - x * l.point()).dot(m.direction()), 0.0);
  EXPECT_TRUE(kfDynamicCast<kcFLine>(l.mapShape(x)));
  EXPECT_THROW((void)l.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcMathError::Singular);
}

TEST(FLine, InfiniteShapeProtocol) {
  kcFLine l(V(1, 2), kcRadian(0.5));
  EXPECT_FALSE(l.isFinite());
  EXPECT_TRUE(l.encloseRect().isEmpty());
  std::vector<V> out;
  EXPECT_THROW(l.sample(0.1, out), kcShapesError::BadGeom);
  EXPECT_THROW((void)l.startPoint(), kcShapesError::NotOpenContour);
  expectArchiveBasics(l, "foundation/shapes/fline");
  EXPECT_EQ(storeByHandle(l).size(), bodyOffset(l) + 24);
  for (int i = 0; i < 3; ++i) expectNaNCorrupt(l, bodyOffset(l) + 8 * i);
}

}  // namespace
