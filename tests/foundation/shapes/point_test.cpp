#include "foundation/shapes/point.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Point, GeometryOfOnePoint) {
  kcPoint p(3, 4);
  EXPECT_EQ(p.x(), 3.0);
  EXPECT_EQ(p.distToPoint(V(0, 0)), 5.0);
  EXPECT_EQ(p.distanceToPoint(V(3, 5)), 1.0);
  EXPECT_EQ(p.nearestPoint(V(-7, 1)), V(3, 4));
  EXPECT_EQ(p.encloseRect(), kcRect(V(3, 4), V(0, 0)));
  EXPECT_FALSE(p.encloseRect().isEmpty());
  EXPECT_FALSE(p.isOpenContour());
  EXPECT_FALSE(p.isRegion());
  EXPECT_THROW((void)p.startPoint(), kcShapesError::NotOpenContour);
  EXPECT_THROW((void)p.within(V()), kcShapesError::NotRegion);
  EXPECT_EQ(samples(p, 0.1), std::vector<V>{V(3, 4)});
  std::vector<V> out;
  EXPECT_THROW(p.sample(0.0, out), kcShapesError::BadParams);
}

TEST(Point, RejectsNonFinite) {
  EXPECT_THROW(kcPoint(std::numeric_limits<double>::quiet_NaN(), 0), kcShapesError::BadParams);
  EXPECT_THROW(kc2Point(V(0, std::numeric_limits<double>::infinity())), kcShapesError::BadParams);
  kc2Point q(1, 2);
  EXPECT_THROW(q.point(V(std::numeric_limits<double>::quiet_NaN(), 0)), kcShapesError::BadParams);
  EXPECT_EQ(q.point(), V(1, 2));
}

TEST(Point, TwoClassesKeepTheirTypesThroughMapAndArchive) {
  kcXform<2> x(kcMatrix<2>(2, 1, 0, 3), V(1, 1));
  kcShapePtr a = kcPoint(1, 2).mapShape(x);
  kcShapePtr b = kc2Point(1, 2).mapShape(x);
  ASSERT_TRUE(kfDynamicCast<kcPoint>(a));
  EXPECT_FALSE(kfDynamicCast<kc2Point>(a));
  ASSERT_TRUE(kfDynamicCast<kc2Point>(b));
  EXPECT_FALSE(kfDynamicCast<kcPoint>(b));
  EXPECT_EQ(kfDynamicCast<kcPoint>(a)->point(), V(5, 7));
  EXPECT_FALSE(*a == *b);  // same place, different classes
  EXPECT_EQ(kc2Point(1, 2).map(x), kc2Point(5, 7));
  expectArchiveBasics(kcPoint(1.25, -3), "foundation/shapes/point");
  expectArchiveBasics(kc2Point(0, 9), "foundation/shapes/point");
  EXPECT_EQ(storeByHandle(kcPoint()).size(), bodyOffset(kcPoint()) + 16);
  expectNaNCorrupt(kcPoint(1, 1), bodyOffset(kcPoint()));
  expectNaNCorrupt(kc2Point(1, 1), bodyOffset(kc2Point()) + 8);
}

}  // namespace
