#include "foundation/shapes/ellipseannulus.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(EllipseAnnulus, InnerIsTheScaledEllipseAndMapsKeepTheScale) {
  kcEllipseAnnulus a(kcEllipse2(3, 1.5, kcRadian(0.5), V(1, 2)), 0.4);
  EXPECT_EQ(a.inner(), kcEllipse2(3 * 0.4, 1.5 * 0.4, kcRadian(0.5), V(1, 2)));
  EXPECT_EQ(samples(a, 0.05).back(), a.inner().point(kcRadian(0)));  // outer, then inner, each closed
  for (kcXform<2> x : {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>::scale(-1, 1)})
    EXPECT_EQ(a.map(x).innerScale(), 0.4);
  EXPECT_THROW((void)a.map(kcXform<2>::scale(0, 1)), kcMathError::Singular);
  EXPECT_THROW(a.innerScale(0.0), kcShapesError::DegenerateShape);
  EXPECT_EQ(a.innerScale(), 0.4);
}

}  // namespace
