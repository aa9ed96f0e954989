#include "foundation/shapes/genshape.h"

#include <gtest/gtest.h>

#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

const kcBezierCurve kCurve(V(0, 0), V(1, 3), V(4, 3), V(5, 0));
const kcCircle kCircle(V(2, 2), 3.0);

TEST(GenShape, AnswersAsTheShapeItHolds) {
  kcGenShape g(kCurve);
  EXPECT_EQ(g.startAngle(), kCurve.startAngle());
  EXPECT_EQ(samples(g, 0.2), samples(kCurve, 0.2));
  kcGenShape disc(kCircle);
  ASSERT_EQ(disc.decompose().size(), 1u);
  EXPECT_TRUE(*disc.decompose()[0] == kCircle);
  // Without a shape: no geometry, and none of the kinds.
  kcGenShape empty;
  EXPECT_THROW((void)empty.within(V()), kcShapesError::NotRegion);
  EXPECT_THROW((void)empty.reverse(), kcShapesError::NotOpenContour);
  EXPECT_TRUE(empty == kcGenShape(kcShapePtr()));
  EXPECT_FALSE(empty == disc);
}

TEST(GenShape, ImagesStayGeneralShapesAroundTheHeldImage) {
  kcGenShape g(kCircle);
  EXPECT_TRUE(kfDynamicCast<kcEllipse2>(g.map(kcXform<2>::scale(1, 3)).shape()));
  auto moved = kfDynamicCast<kcGenShape>(g.mapShape(kcXform<2>::translation(V(1, 0))));
  ASSERT_TRUE(moved);
  EXPECT_TRUE(*moved->shape() == kcCircle(V(3, 2), 3.0));
  // The held shape keeps its class through the archive.
  auto loaded = kfDynamicCast<kcGenShape>(loadByHandle(storeByHandle(g)));
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(kfDynamicCast<kcCircle>(loaded->shape()));
}

TEST(GenShape, CopiesShareClonesDoNot) {
  kcGenShape g(kCurve);
  EXPECT_EQ(kcGenShape(g).shape(), g.shape());
  auto c = kfDynamicCast<kcGenShape>(g.clone());
  ASSERT_TRUE(c);
  EXPECT_FALSE(c->shape() == g.shape());
  EXPECT_TRUE(*c == g);
}

}  // namespace
