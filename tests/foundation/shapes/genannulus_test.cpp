#include "foundation/shapes/genannulus.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(GenAnnulus, InnerIsTheOuterScaledAboutItsCentreUnderEveryMap) {
  kcGenAnnulus g(kcGenRect(kcXform<2>(kcMatrix<2>(4, 1, 0.5, 2), V(1, -2)), 0.4, 0.6), 0.5);
  V c = g.outer().centre();
  for (int i = 0; i < 4; ++i)
    EXPECT_LT(g.inner().corner(i).distance(c + (g.outer().corner(i) - c) * 0.5), 1e-14);
  EXPECT_EQ(g.inner().roundY(), 0.6);
  EXPECT_FALSE(g.within(c));  // in the hole
  for (kcXform<2> x : {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>::rotation(kcRadian(1.0))}) {
    kcGenAnnulus image = g.map(x);
    EXPECT_EQ(image.innerScale(), 0.5);
    EXPECT_TRUE(image.inner() == g.inner().map(x));
  }
  EXPECT_THROW((void)g.map(kcXform<2>::scale(0, 1)), kcShapesError::DegenerateShape);
  EXPECT_THROW(g.innerScale(1.5), kcShapesError::DegenerateShape);
  EXPECT_EQ(g.innerScale(), 0.5);
}

}  // namespace
