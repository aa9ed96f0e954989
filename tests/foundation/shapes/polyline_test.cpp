#include "foundation/shapes/polyline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(Polyline, EndAnglesSkipRepeatedVertices) {
  kcPolyline p({V(0, 0), V(0, 0), V(3, 0), V(3, 4), V(3, 4)});
  EXPECT_EQ(p.length(), 7.0);
  EXPECT_EQ(p.startAngle().toDouble(), 0.0);
  EXPECT_DOUBLE_EQ(p.endAngle().toDouble(), kPi / 2);
  EXPECT_DOUBLE_EQ(p.reverse()->startAngle().toDouble(), -kPi / 2);
  EXPECT_EQ(p.nearestPoint(V(5, 2)), V(3, 2));
}

TEST(Polyline, ClosedChainIsARegion) {
  kcPolyline p({V(0, 0), V(3, 0), V(3, 4)}, true);
  EXPECT_TRUE(p.isRegion());
  EXPECT_EQ(p.length(), 12.0);
  EXPECT_TRUE(p.within(V(2, 1)));
  EXPECT_FALSE(p.within(V(1, 2)));
  EXPECT_EQ(samples(p, 10).back(), V(0, 0));
  kcPolyline open({V(0, 0), V(1, 0)});
  EXPECT_THROW(open.closed(true), kcShapesError::DegenerateShape);
  EXPECT_FALSE(open.closed());
  // The stored closed flag is a bool.
  Bytes bytes = storeByHandle(p);
  bytes.back() = 2;
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
