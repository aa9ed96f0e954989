#include "foundation/shapes/cross.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/shapes/lineseg.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Cross, BarsAndBox) {
  kcCross c(V(1, 2), 3);
  EXPECT_EQ(c.end(0), V(-2, 2));
  EXPECT_EQ(c.end(1), V(4, 2));
  EXPECT_EQ(c.end(2), V(1, -1));
  EXPECT_EQ(c.end(3), V(1, 5));
  EXPECT_THROW((void)c.end(4), kcShapesError::BadParams);
  EXPECT_EQ(c.encloseRect(), kcRect(V(-2, -1), V(6, 6)));
  EXPECT_EQ(c.nearestPoint(V(3, 3)), V(3, 2));
  EXPECT_EQ(c.nearestPoint(V(2, 3)), V(2, 2));  // tie: the first bar
  std::vector<kcShapePtr> bars = c.decompose();
  ASSERT_EQ(bars.size(), 2u);
  EXPECT_EQ(*bars[1], kcLineSeg(V(1, -1), V(1, 5)));
  kcCross turned(V(0, 0), 1, kcRadian(std::numbers::pi / 4));
  EXPECT_NEAR(turned.encloseRect().width(), std::sqrt(2.0), 1e-15);
}

TEST(Cross, ConstructionChecks) {
  EXPECT_THROW(kcCross(V(), 0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcCross(V(), -1), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcCross(V(), std::numeric_limits<double>::quiet_NaN()), kcShapesError::BadParams);
  kcCross c;
  EXPECT_THROW(c.armLength(0), kcShapesError::DegenerateShape);
  EXPECT_EQ(c.armLength(), 1.0);
}

TEST(Cross, MapIsExactForSimilaritiesAndStaysACross) {
  kcCross c(V(1, 2), 3, kcRadian(0.3));
  kcXform<2> similarity(kcMatrix<2>::rotation(kcRadian(1.1)) * kcMatrix<2>::scale(2, -2), V(5, -1));
  expectGeometryMatchesSampling(c, similarity);
  // A non-uniform scale: the centre moves exactly, the arms keep the area scale.
  kcCross m = c.map(kcXform<2>(kcMatrix<2>::scale(4, 1), V()));
  EXPECT_EQ(m.centre(), V(4, 2));
  EXPECT_DOUBLE_EQ(m.armLength(), 6.0);
  EXPECT_THROW((void)c.map(kcXform<2>(kcMatrix<2>(1, 0, 0, 0), V())), kcShapesError::DegenerateShape);
}

TEST(Cross, Archive) {
  kcCross c(V(1, 2), 3, kcRadian(0.3));
  expectArchiveBasics(c, "foundation/shapes/cross");
  EXPECT_EQ(storeByHandle(c).size(), bodyOffset(c) + 32);
  for (int i = 0; i < 4; ++i) expectNaNCorrupt(c, bodyOffset(c) + 8 * i);
  Bytes bytes = storeByHandle(c);
  patchDouble(bytes, bodyOffset(c) + 16, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
