#include "foundation/shapes/polygon.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(Polygon, AreaPerimeterAndEvenOddInside) {
  kcPolygon p({V(0, 0), V(2, 0), V(2, 1), V(1, 1), V(1, 2), V(0, 2)});  // an L
  EXPECT_EQ(p.area(), 3.0);
  EXPECT_EQ(p.perimeter(), 8.0);
  EXPECT_EQ(kcPolygon({V(0, 0), V(0, 1), V(1, 0)}).area(), -0.5);  // clockwise
  struct Case {
    V p;
    bool inside;
  } cases[] = {{V(0.5, 0.5), true}, {V(1.5, 1.5), false}, {V(1.5, 0.5), true}, {V(1, 1.5), true},
               {V(2, 1), true},     {V(-0.1, 1), false},  {V(0.5, 2), true},   {V(0.5, 1), true}};
  for (const Case& c : cases) EXPECT_EQ(p.within(c.p), c.inside) << c.p.x() << "," << c.p.y();
  EXPECT_EQ(p.nearestPoint(V(1.5, 1.5)), V(1.5, 1));  // two edges tie: the first
  // Even-odd: the middle of a pentagram is outside.
  kcPolygon star({V(0, 3), V(1.8, -2.4), V(-2.9, 0.9), V(2.9, 0.9), V(-1.8, -2.4)});
  EXPECT_FALSE(star.within(V(0, 0)));
  EXPECT_TRUE(star.within(V(0, 2)));
}

TEST(Polygon, EmptyPolygonAndRefusedData) {
  kcPolygon p;
  EXPECT_FALSE(p.within(V()));
  EXPECT_THROW(p.vertices({V(0, 0), V(1, 1)}), kcShapesError::DegenerateShape);
  EXPECT_TRUE(p.isEmpty());
  // A consistent archive of two vertices.
  kcPolygon tri({V(0, 0), V(1, 0), V(0, 1)});
  Bytes bytes = storeByHandle(tri);
  bytes.resize(bytes.size() - 16);
  bytes.at(bodyOffset(tri)) = 2;
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
