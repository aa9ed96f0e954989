#include "foundation/shapes/coordaxes.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(CoordAxes, TwoSegmentsFromTheOrigin) {
  kcCoordAxes a(kcXform<2>(kcMatrix<2>(2, 0, 0, 3), V(1, 1)));
  EXPECT_EQ(a.xEnd(), V(3, 1));
  EXPECT_EQ(a.yEnd(), V(1, 4));
  EXPECT_EQ(a.nearestPoint(V(2, 2)), V(2, 1));  // tie: the x axis
  kcXform<2> x(kcMatrix<2>(1, 3, -1, 1), V(0, 5));
  EXPECT_EQ(a.map(x).xform(), x * a.xform());
  EXPECT_THROW((void)a.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcShapesError::DegenerateShape);
}

}  // namespace
