#include "foundation/shapes/lineseg.h"

#include <gtest/gtest.h>

#include "foundation/shapes/fline.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(LineSeg, Measures) {
  kcLineSeg s(V(1, 1), V(4, 5));
  EXPECT_EQ(s.length(), 5.0);
  EXPECT_EQ(s.midpoint(), V(2.5, 3));
  EXPECT_EQ(s.pointAt(2), V(7, 9));
  EXPECT_DOUBLE_EQ(s.angle().toDouble(), std::atan2(4.0, 3.0));
  EXPECT_LT(s.line().closestPoint(V(4, 5)).distance(V(4, 5)), 1e-15);
  EXPECT_EQ(samples(kcLineSeg(V(2, 0), V(0, 2)), 1.0).size(), 4u);  // length 2.83: three pieces
  EXPECT_THROW(s.p1(V(4, 5)), kcShapesError::DegenerateShape);
  EXPECT_EQ(s.p1(), V(1, 1));
  // A transform that collapses the segment to a point leaves nothing to draw.
  EXPECT_THROW((void)s.map(kcXform<2>(kcMatrix<2>(4, -3, 4, -3), V())), kcShapesError::DegenerateShape);
}

}  // namespace
