#include "foundation/shapes/pointset.h"

#include <gtest/gtest.h>

#include "foundation/shapes/point.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(PointSet, NearestMemberFirstOnTies) {
  kcPointSet s({V(0, 0), V(4, 0), V(2, 3), V(4, 0)});
  EXPECT_EQ(s.nearestPoint(V(2, 0)), V(0, 0));  // tie between (0,0) and (4,0)
  EXPECT_EQ(samples(s, 0.01), s.points());
  std::vector<kcShapePtr> pieces = s.decompose();
  ASSERT_EQ(pieces.size(), 4u);
  EXPECT_EQ(*pieces[2], kcPoint(2, 3));
  EXPECT_THROW(s.append(V(0, kInf)), kcShapesError::BadParams);
  EXPECT_EQ(s.size(), 4u);
}

}  // namespace
