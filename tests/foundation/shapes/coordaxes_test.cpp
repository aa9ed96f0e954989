#include "foundation/shapes/coordaxes.h"

#include <gtest/gtest.h>

#include <numbers>

#include "foundation/shapes/lineseg.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(CoordAxes, TwoSegmentsFromTheOrigin) {
  kcCoordAxes a(kcXform<2>(kcMatrix<2>(2, 0, 0, 3), V(1, 1)));
  EXPECT_EQ(a.origin(), V(1, 1));
  EXPECT_EQ(a.xEnd(), V(3, 1));
  EXPECT_EQ(a.yEnd(), V(1, 4));
  EXPECT_EQ(a.encloseRect(), kcRect(V(1, 1), V(2, 3)));
  EXPECT_EQ(a.nearestPoint(V(2, 3)), V(1, 3));
  EXPECT_EQ(a.nearestPoint(V(2, 2)), V(2, 1));  // tie: the x axis
  EXPECT_EQ(a.nearestPoint(V(0, 0)), V(1, 1));
  std::vector<kcShapePtr> pieces = a.decompose();
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(*pieces[0], kcLineSeg(V(1, 1), V(3, 1)));
  EXPECT_EQ(*pieces[1], kcLineSeg(V(1, 1), V(1, 4)));
  EXPECT_FALSE(a.isRegion());
  EXPECT_FALSE(a.isOpenContour());
}

TEST(CoordAxes, MapAndChecks) {
  kcCoordAxes a(kcXform<2>(kcMatrix<2>::rotation(kcRadian(0.4)), V(-1, 2)));
  kcXform<2> x(kcMatrix<2>(1, 3, -1, 1), V(0, 5));
  expectGeometryMatchesSampling(a, x);
  EXPECT_EQ(a.map(x).xform(), x * a.xform());
  EXPECT_THROW(kcCoordAxes(kcXform<2>(kcMatrix<2>(1, 2, 2, 4), V())), kcShapesError::DegenerateShape);
  EXPECT_THROW((void)a.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcShapesError::DegenerateShape);
}

TEST(CoordAxes, Archive) {
  kcCoordAxes a(kcXform<2>(kcMatrix<2>(1, 0.5, 0, 2), V(3, 4)));
  expectArchiveBasics(a, "foundation/shapes/coordaxes");
  EXPECT_EQ(storeByHandle(a).size(), bodyOffset(a) + 48);
  expectNaNCorrupt(a, bodyOffset(a) + 40);
  Bytes bytes = storeByHandle(a);
  for (int i = 0; i < 4; ++i) patchDouble(bytes, bodyOffset(a) + 8 * i, 1.0);  // parallel axes
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
