#include "foundation/shapes/line.h"

#include <gtest/gtest.h>

#include "foundation/shapes/fline.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(Line, DirectionAsGivenAndMapped) {
  kcLine l(V(1, 1), V(3, 4));
  EXPECT_EQ(l.direction(), V(3, 4));  // not normalised
  EXPECT_EQ(l.closestPoint(V(1, 1) + V(-4, 3)), V(1, 1));
  EXPECT_DOUBLE_EQ(l.distanceToPoint(V(5, -2)), 5.0);
  EXPECT_LT(l.toFLine().distanceToPoint(V(4, 5)), 1e-15);
  EXPECT_EQ(l.map(kcXform<2>(kcMatrix<2>(1, 2, 0, 1), V(-1, 0))), kcLine(V(2, 1), V(11, 4)));
  // A singular map that kills the direction leaves no line.
  EXPECT_THROW((void)l.map(kcXform<2>(kcMatrix<2>(4, -3, 8, -6), V())), kcShapesError::DegenerateShape);
  EXPECT_THROW(l.direction(V()), kcShapesError::DegenerateShape);
  EXPECT_EQ(l.direction(), V(3, 4));
}

}  // namespace
