#include "foundation/shapes/polygon.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

// An L shape, counter-clockwise, area 3.
kcPolygon ell() { return kcPolygon({V(0, 0), V(2, 0), V(2, 1), V(1, 1), V(1, 2), V(0, 2)}); }

TEST(Polygon, ConstructionChecks) {
  struct Case {
    const char* why;
    std::vector<V> vertices;
  } degenerate[] = {
      {"one vertex", {V(1, 1)}},
      {"two vertices", {V(0, 0), V(1, 0)}},
      {"all coincident", {V(1, 1), V(1, 1), V(1, 1)}},
  };
  for (const Case& c : degenerate)
    EXPECT_THROW(kcPolygon{c.vertices}, kcShapesError::DegenerateShape) << c.why;
  EXPECT_THROW(kcPolygon({V(0, 0), V(1, 0), V(0, std::numeric_limits<double>::quiet_NaN())}),
               kcShapesError::BadParams);
  EXPECT_NO_THROW(kcPolygon({V(0, 0), V(1, 0), V(2, 0)}));  // zero area is allowed
  kcPolygon p;
  EXPECT_TRUE(p.isEmpty());
  EXPECT_FALSE(p.within(V()));
  EXPECT_THROW((void)p.nearestPoint(V()), kcShapesError::EmptyShape);
  EXPECT_THROW(p.vertices({V(0, 0), V(1, 1)}), kcShapesError::DegenerateShape);
  EXPECT_TRUE(p.isEmpty());
}

TEST(Polygon, AreaPerimeterAndWithin) {
  kcPolygon p = ell();
  EXPECT_EQ(p.area(), 3.0);
  EXPECT_EQ(p.perimeter(), 8.0);
  kcPolygon cw({V(0, 0), V(0, 1), V(1, 0)});
  EXPECT_EQ(cw.area(), -0.5);
  struct Case {
    V p;
    bool inside;
  } cases[] = {{V(0.5, 0.5), true}, {V(1.5, 1.5), false}, {V(1.5, 0.5), true}, {V(1, 1.5), true},
               {V(2, 1), true},     {V(-0.1, 1), false},  {V(0.5, 2), true},   {V(0.5, 1), true}};
  for (const Case& c : cases) EXPECT_EQ(p.within(c.p), c.inside) << c.p.x() << "," << c.p.y();
  // Even-odd: the middle of a pentagram is outside.
  kcPolygon star({V(0, 3), V(1.8, -2.4), V(-2.9, 0.9), V(2.9, 0.9), V(-1.8, -2.4)});
  EXPECT_FALSE(star.within(V(0, 0)));
  EXPECT_TRUE(star.within(V(0, 2)));
}

TEST(Polygon, GeometryAndMap) {
  kcPolygon p = ell();
  EXPECT_EQ(p.nearestPoint(V(1.5, 1.5)), V(1.5, 1));  // tie between two edges: the first
  kcXform<2> x(kcMatrix<2>(1, 0.5, -0.3, 2), V(1, 1));
  expectGeometryMatchesSampling(p, x);
  std::vector<V> pts = samples(p, 0.5);
  EXPECT_EQ(pts.front(), V(0, 0));
  EXPECT_EQ(pts.back(), V(0, 0));
  EXPECT_EQ(p.map(x).vertices()[1], x * V(2, 0));
  // Points computed on the mapped boundary test inside it.
  kcPolygon m = p.map(x);
  for (const V& q : samples(m, 0.1)) EXPECT_TRUE(m.within(q)) << q.x() << "," << q.y();
}

TEST(Polygon, Archive) {
  kcPolygon p = ell();
  expectArchiveBasics(p, "foundation/shapes/polygon");
  expectArchiveBasics(kcPolygon(), "foundation/shapes/polygon");
  EXPECT_EQ(storeByHandle(p).size(), bodyOffset(p) + 4 + 6 * 16);
  expectNaNCorrupt(p, bodyOffset(p) + 4 + 8);
  Bytes bytes = storeByHandle(kcPolygon({V(0, 0), V(1, 0), V(0, 1)}));
  bytes.resize(bytes.size() - 16);
  bytes.at(bodyOffset(p)) = 2;  // a consistent list of two vertices
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
