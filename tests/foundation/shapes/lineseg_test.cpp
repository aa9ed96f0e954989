#include "foundation/shapes/lineseg.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>

#include "foundation/shapes/fline.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(LineSeg, ConstructionAndFields) {
  kcLineSeg d;
  EXPECT_EQ(d.p1(), V(0, 0));
  EXPECT_EQ(d.p2(), V(1, 0));
  EXPECT_THROW(kcLineSeg(V(1, 1), V(1, 1)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcLineSeg(V(std::numeric_limits<double>::quiet_NaN(), 1), V(1, 1)), kcShapesError::BadParams);
  kcLineSeg s(V(1, 1), V(4, 5));
  EXPECT_THROW(s.p1(V(4, 5)), kcShapesError::DegenerateShape);
  EXPECT_EQ(s.p1(), V(1, 1));
  EXPECT_EQ(s.length(), 5.0);
  EXPECT_EQ(s.midpoint(), V(2.5, 3));
  EXPECT_EQ(s.pointAt(2), V(7, 9));
  EXPECT_DOUBLE_EQ(s.angle().toDouble(), std::atan2(4.0, 3.0));
}

TEST(LineSeg, OpenContourProtocol) {
  kcLineSeg s(V(2, 0), V(0, 2));
  EXPECT_TRUE(s.isOpenContour());
  EXPECT_EQ(s.startPoint(), V(2, 0));
  EXPECT_EQ(s.endPoint(), V(0, 2));
  EXPECT_DOUBLE_EQ(s.startAngle().toDouble(), 0.75 * std::numbers::pi);
  EXPECT_EQ(s.endAngle(), s.startAngle());
  kcShapePtr r = s.reverse();
  EXPECT_EQ(*r, kcLineSeg(V(0, 2), V(2, 0)));
  EXPECT_THROW((void)s.within(V()), kcShapesError::NotRegion);
  std::vector<V> pts = samples(s, 1.0);
  ASSERT_EQ(pts.size(), 4u);  // length 2.83: three pieces
  EXPECT_EQ(pts.front(), s.p1());
  EXPECT_EQ(pts.back(), s.p2());
}

TEST(LineSeg, NearestPoint) {
  kcLineSeg s(V(0, 0), V(4, 0));
  struct Case {
    V p, nearest;
  } cases[] = {{V(-1, 1), V(0, 0)}, {V(5, -2), V(4, 0)}, {V(1.5, 3), V(1.5, 0)}, {V(2, 0), V(2, 0)}};
  for (const Case& c : cases) EXPECT_EQ(s.nearestPoint(c.p), c.nearest);
  expectGeometryMatchesSampling(kcLineSeg(V(-1, 2), V(3, -0.5)),
                                kcXform<2>(kcMatrix<2>(1, 2, -1, 0.5), V(3, 3)));
}

TEST(LineSeg, LineAndMap) {
  kcLineSeg s(V(1, 1), V(2, 3));
  kcFLine l = s.line();
  EXPECT_EQ(l.point(), V(1, 1));
  EXPECT_LT(l.closestPoint(V(2, 3)).distance(V(2, 3)), 1e-15);
  kcXform<2> x(kcMatrix<2>(2, 0, 1, 1), V(0, 1));
  EXPECT_EQ(s.map(x), kcLineSeg(V(2, 3), V(4, 6)));
  // A transform that collapses the segment to a point leaves nothing to draw.
  EXPECT_THROW((void)s.map(kcXform<2>(kcMatrix<2>(2, -1, 4, -2), V())), kcShapesError::DegenerateShape);
}

TEST(LineSeg, Archive) {
  kcLineSeg s(V(1, -1), V(0.5, 7));
  expectArchiveBasics(s, "foundation/shapes/lineseg");
  EXPECT_EQ(storeByHandle(s).size(), bodyOffset(s) + 32);
  for (int i = 0; i < 4; ++i) expectNaNCorrupt(s, bodyOffset(s) + 8 * i);
  Bytes bytes = storeByHandle(s);
  patchDouble(bytes, bodyOffset(s) + 16, 1.0);
  patchDouble(bytes, bodyOffset(s) + 24, -1.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);  // coincident ends
}

}  // namespace
