#include "foundation/shapes/pointset.h"

#include <gtest/gtest.h>

#include <limits>

#include "foundation/shapes/point.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(PointSet, EmptySetHasNoGeometry) {
  kcPointSet s;
  EXPECT_TRUE(s.isEmpty());
  EXPECT_TRUE(s.encloseRect().isEmpty());
  EXPECT_THROW((void)s.nearestPoint(V()), kcShapesError::EmptyShape);
  EXPECT_THROW((void)s.distanceToPoint(V()), kcShapesError::EmptyShape);
  EXPECT_TRUE(samples(s, 1.0).empty());
  EXPECT_TRUE(s.decompose().empty());
  expectArchiveBasics(s, "foundation/shapes/pointset");
}

TEST(PointSet, NearestMemberFirstOnTies) {
  kcPointSet s({V(0, 0), V(4, 0), V(2, 3), V(4, 0)});
  EXPECT_EQ(s.nearestPoint(V(3.9, 0.2)), V(4, 0));
  EXPECT_EQ(s.nearestPoint(V(2, 0)), V(0, 0));  // tie between (0,0) and (4,0)
  EXPECT_DOUBLE_EQ(s.distanceToPoint(V(2, 4)), 1.0);
  EXPECT_EQ(s.encloseRect(), kcRect(V(0, 0), V(4, 3)));
  EXPECT_EQ(samples(s, 0.01), s.points());
  std::vector<kcShapePtr> pieces = s.decompose();
  ASSERT_EQ(pieces.size(), 4u);
  EXPECT_EQ(*pieces[2], kcPoint(2, 3));
}

TEST(PointSet, MapArchiveAndBadInput) {
  kcPointSet s({V(1, 2), V(-3, 0.5)});
  kcXform<2> x(kcMatrix<2>(0, 2, 1, 1), V(1, 0));
  EXPECT_EQ(s.map(x), kcPointSet({V(5, 3), V(2, -2.5)}));
  EXPECT_TRUE(kfDynamicCast<kcPointSet>(s.mapShape(x)));
  EXPECT_THROW(kcPointSet({V(std::numeric_limits<double>::quiet_NaN(), 0)}), kcShapesError::BadParams);
  EXPECT_THROW(s.append(V(0, std::numeric_limits<double>::infinity())), kcShapesError::BadParams);
  EXPECT_EQ(s.size(), 2u);
  expectArchiveBasics(s, "foundation/shapes/pointset");
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 24);
  // A count larger than the data is refused before anything is allocated.
  Bytes bytes = storeByHandle(s);
  bytes.at(bodyOffset(s) + 3) = 0x7f;
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
