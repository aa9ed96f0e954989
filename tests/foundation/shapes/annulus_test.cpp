#include "foundation/shapes/annulus.h"

#include <gtest/gtest.h>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/genannulus.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

TEST(Annulus, TiesGoToTheOuterCircleThenToTheStart) {
  kcAnnulus a(V(1, -1), 1, 3);
  EXPECT_EQ(a.nearestPoint(V(3, -1)), V(4, -1));  // halfway between the circles
  EXPECT_EQ(a.nearestPoint(V(1, -1)), V(2, -1));  // the centre: the inner circle's start
  EXPECT_TRUE(a.within(V(2, -1)));                // on the inner circle
  EXPECT_FALSE(a.within(V(1.5, -1)));
  std::vector<kcShapePtr> parts = a.decompose();  // the outer circle first
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(*parts[0], a.outerCircle());
  EXPECT_EQ(*parts[1], a.innerCircle());
}

TEST(Annulus, MapsToAnAnnulusOrAGeneralAnnulus) {
  kcAnnulus a(V(1, -1), 1, 3);
  auto ring = kfDynamicCast<kcAnnulus>(
      a.mapShape(X(kcMatrix<2>::rotation(kcRadian(0.7)) * kcMatrix<2>::scale(2, 2), V(1, 1))));
  ASSERT_TRUE(ring);
  EXPECT_NEAR(ring->innerRadius(), 2.0, 1e-15);
  EXPECT_NEAR(ring->outerRadius(), 6.0, 1e-15);
  EXPECT_TRUE(kfDynamicCast<kcAnnulus>(a.mapShape(X::scale(-1, 1))));
  EXPECT_THROW((void)a.map(X::scale(2, 1)), kcShapesError::BadGeom);
  EXPECT_THROW((void)a.mapShape(X::scale(1, 0)), kcMathError::Singular);
  // The general form of the same ring: the same outline.
  kcGenAnnulus g = a.toGenAnnulus();
  EXPECT_DOUBLE_EQ(g.innerScale(), 1.0 / 3.0);
  for (const V& p : samples(a, 0.05)) EXPECT_LT(g.distanceToPoint(p), 1e-12);
  for (const V& p : samples(g, 0.05)) EXPECT_LT(a.distanceToPoint(p), 1e-12);
}

TEST(Annulus, RefusedEditsLeaveItAsItWas) {
  kcAnnulus a(V(1, 1), 1, 2);
  EXPECT_THROW(a.innerRadius(2), kcShapesError::DegenerateShape);
  EXPECT_THROW(a.outerRadius(0.5), kcShapesError::DegenerateShape);
  EXPECT_EQ(a, kcAnnulus(V(1, 1), 1, 2));
}

}  // namespace
