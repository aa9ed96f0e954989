#include "foundation/shapes/genshape.h"

#include <gtest/gtest.h>

#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

const kcBezierCurve kCurve(V(0, 0), V(1, 3), V(4, 3), V(5, 0));
const kcCircle kCircle(V(2, 2), 3.0);

TEST(GenShape, ForwardsTheProtocol) {
  kcGenShape g(kCurve);
  EXPECT_TRUE(g.isOpenContour());
  EXPECT_FALSE(g.isRegion());
  EXPECT_TRUE(g.hasTangent());
  EXPECT_EQ(g.startPoint(), kCurve.startPoint());
  EXPECT_EQ(g.endPoint(), kCurve.endPoint());
  EXPECT_EQ(g.startAngle(), kCurve.startAngle());
  EXPECT_EQ(g.endAngle(), kCurve.endAngle());
  EXPECT_EQ(g.encloseRect(), kCurve.encloseRect());
  for (const V& p : {V(2, 5), V(-1, -1), V(9, 1)}) {
    EXPECT_EQ(g.nearestPoint(p), kCurve.nearestPoint(p));
    EXPECT_EQ(g.distanceToPoint(p), kCurve.distanceToPoint(p));
  }
  EXPECT_EQ(samples(g, 0.2), samples(kCurve, 0.2));
  EXPECT_THROW((void)g.within(V(0, 0)), kcShapesError::NotRegion);

  kcGenShape disc(kCircle);
  EXPECT_TRUE(disc.isRegion());
  EXPECT_TRUE(disc.within(V(2, 4)));
  EXPECT_FALSE(disc.within(V(2, 6)));
  EXPECT_THROW((void)disc.startPoint(), kcShapesError::NotOpenContour);
  ASSERT_EQ(disc.decompose().size(), 1u);
  EXPECT_TRUE(*disc.decompose()[0] == kCircle);
}

TEST(GenShape, WithoutAShapeItIsEmpty) {
  kcGenShape g;
  EXPECT_TRUE(g.isEmpty());
  EXPECT_TRUE(g.isFinite());
  EXPECT_FALSE(g.isOpenContour());
  EXPECT_TRUE(g.encloseRect().isEmpty());
  EXPECT_THROW((void)g.nearestPoint(V(0, 0)), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.distanceToPoint(V(0, 0)), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.within(V(0, 0)), kcShapesError::NotRegion);
  EXPECT_THROW((void)g.startAngle(), kcShapesError::NotOpenContour);
  EXPECT_THROW((void)g.reverse(), kcShapesError::NotOpenContour);
  EXPECT_TRUE(g.decompose().empty());
  std::vector<V> out;
  g.sample(1.0, out);
  EXPECT_TRUE(out.empty());
  EXPECT_THROW(g.sample(0.0, out), kcShapesError::BadParams);
  EXPECT_TRUE(g == kcGenShape(kcShapePtr()));
  EXPECT_FALSE(g == kcGenShape(kCircle));
}

TEST(GenShape, ImagesStayGeneralShapes) {
  kcGenShape g(kCircle);
  kcGenShape stretched = g.map(kcXform<2>::scale(1, 3));
  EXPECT_NE(dynamic_cast<kcEllipse2*>(stretched.shape().get()), nullptr);
  kcShapePtr moved = g.mapShape(kcXform<2>::translation(V(1, 0)));
  auto* mg = dynamic_cast<kcGenShape*>(moved.get());
  ASSERT_NE(mg, nullptr);
  EXPECT_TRUE(*mg->shape() == kcCircle(V(3, 2), 3.0));
  kcShapePtr r = kcGenShape(kCurve).reverse();
  auto* rg = dynamic_cast<kcGenShape*>(r.get());
  ASSERT_NE(rg, nullptr);
  EXPECT_EQ(rg->startPoint(), kCurve.endPoint());
  expectMapMatchesSamples(kcGenShape(kCurve), kcXform<2>(kcMatrix<2>(2, 1, 0, 1), V(0, 5)), 0.01, 1e-3);
}

TEST(GenShape, CopiesShareClonesDoNot) {
  kcGenShape g(kCurve);
  kcGenShape copy = g;
  EXPECT_EQ(copy.shape(), g.shape());
  kcShapePtr c = g.clone();
  auto* cg = dynamic_cast<kcGenShape*>(c.get());
  ASSERT_NE(cg, nullptr);
  EXPECT_FALSE(cg->shape() == g.shape());
  EXPECT_TRUE(*cg == g);
}

TEST(GenShape, ArchiveRoundTrip) {
  expectRoundTrip(kcGenShape(kCurve));
  expectRoundTrip(kcGenShape(kCircle));
  expectRoundTrip(kcGenShape());
  expectUnknownVersion(kcGenShape(kCurve), "foundation/shapes/genshape");
  expectTruncationCorrupt(kcGenShape(kCircle));
  // The held shape keeps its class through the archive.
  kcShapePtr loaded = loadByHandle(storeByHandle(kcGenShape(kCircle)));
  auto* lg = dynamic_cast<kcGenShape*>(loaded.get());
  ASSERT_NE(lg, nullptr);
  EXPECT_NE(dynamic_cast<kcCircle*>(lg->shape().get()), nullptr);
}

}  // namespace
