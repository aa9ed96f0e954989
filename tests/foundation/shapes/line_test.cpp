#include "foundation/shapes/line.h"

#include <gtest/gtest.h>

#include <limits>

#include "foundation/shapes/fline.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Line, PointAndDirectionAsGiven) {
  kcLine l(V(1, 1), V(3, 4));
  EXPECT_EQ(l.direction(), V(3, 4));  // not normalised
  EXPECT_EQ(l.closestPoint(V(1, 1) + V(-4, 3)), V(1, 1));
  V q = l.nearestPoint(V(7, 9));
  EXPECT_LT(q.distance(V(7, 9)), 1e-14);
  EXPECT_DOUBLE_EQ(l.distanceToPoint(V(5, -2)), 5.0);
  EXPECT_THROW(kcLine(V(), V(0, 0)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcLine(V(std::numeric_limits<double>::infinity(), 0), V(1, 0)), kcShapesError::BadParams);
  EXPECT_THROW(l.direction(V()), kcShapesError::DegenerateShape);
  EXPECT_EQ(l.direction(), V(3, 4));
  kcFLine f = l.toFLine();
  EXPECT_LT(f.distanceToPoint(V(4, 5)), 1e-15);
}

TEST(Line, MapAndInfiniteProtocol) {
  kcLine l(V(1, 1), V(3, 4));
  kcXform<2> x(kcMatrix<2>(1, 2, 0, 1), V(-1, 0));
  EXPECT_EQ(l.map(x), kcLine(V(2, 1), V(11, 4)));
  EXPECT_TRUE(kfDynamicCast<kcLine>(l.mapShape(x)));
  // A singular map that kills the direction leaves no line.
  EXPECT_THROW((void)l.map(kcXform<2>(kcMatrix<2>(4, -3, 8, -6), V())), kcShapesError::DegenerateShape);
  EXPECT_FALSE(l.isFinite());
  EXPECT_TRUE(l.encloseRect().isEmpty());
  std::vector<V> out;
  EXPECT_THROW(l.sample(1.0, out), kcShapesError::BadGeom);
}

TEST(Line, Archive) {
  kcLine l(V(-2, 0.5), V(0, 3));
  expectArchiveBasics(l, "foundation/shapes/line");
  for (int i = 0; i < 4; ++i) expectNaNCorrupt(l, bodyOffset(l) + 8 * i);
  Bytes bytes = storeByHandle(l);
  patchDouble(bytes, bodyOffset(l) + 24, 0.0);  // direction (0, 0)
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
