#include "foundation/shapes/cross.h"

#include <gtest/gtest.h>

#include "foundation/shapes/lineseg.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(Cross, BarsAndTies) {
  kcCross c(V(1, 2), 3);
  EXPECT_EQ(c.end(0), V(-2, 2));
  EXPECT_EQ(c.end(3), V(1, 5));
  EXPECT_THROW((void)c.end(4), kcShapesError::BadParams);
  EXPECT_EQ(c.nearestPoint(V(2, 3)), V(2, 2));  // tie: the first bar
  ASSERT_EQ(c.decompose().size(), 2u);
  EXPECT_EQ(*c.decompose()[1], kcLineSeg(V(1, -1), V(1, 5)));
  EXPECT_THROW(c.armLength(0), kcShapesError::DegenerateShape);
  EXPECT_EQ(c.armLength(), 3.0);
}

// A cross is a marker: under other maps than similarities only its centre
// moves exactly, the arms keep the area scale.
TEST(Cross, MapOutsideSimilarities) {
  kcCross c(V(1, 2), 3, kcRadian(0.3));
  kcCross m = c.map(kcXform<2>(kcMatrix<2>::scale(4, 1), V()));
  EXPECT_EQ(m.centre(), V(4, 2));
  EXPECT_DOUBLE_EQ(m.armLength(), 6.0);
  auto turned = kfDynamicCast<kcCross>(
      c.mapShape(kcXform<2>(kcMatrix<2>::rotation(kcRadian(1.1)) * kcMatrix<2>::scale(2, 2), V())));
  ASSERT_TRUE(turned);
  EXPECT_DOUBLE_EQ(turned->armLength(), 6.0);
  EXPECT_THROW((void)c.map(kcXform<2>(kcMatrix<2>(1, 0, 0, 0), V())), kcShapesError::DegenerateShape);
}

}  // namespace
