#include "foundation/shapes/polyline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Polyline, OpenChain) {
  kcPolyline p({V(0, 0), V(0, 0), V(3, 0), V(3, 4), V(3, 4)});
  EXPECT_TRUE(p.isOpenContour());
  EXPECT_FALSE(p.isRegion());
  EXPECT_EQ(p.length(), 7.0);
  EXPECT_EQ(p.startPoint(), V(0, 0));
  EXPECT_EQ(p.endPoint(), V(3, 4));
  // The end angles skip the repeated vertices.
  EXPECT_EQ(p.startAngle().toDouble(), 0.0);
  EXPECT_DOUBLE_EQ(p.endAngle().toDouble(), std::numbers::pi / 2);
  kcShapePtr r = p.reverse();
  EXPECT_EQ(r->startPoint(), V(3, 4));
  EXPECT_DOUBLE_EQ(r->startAngle().toDouble(), -std::numbers::pi / 2);
  EXPECT_THROW((void)p.within(V()), kcShapesError::NotRegion);
  EXPECT_EQ(p.nearestPoint(V(5, 2)), V(3, 2));
  std::vector<V> pts = samples(p, 10);
  EXPECT_EQ(pts.back(), V(3, 4));
}

TEST(Polyline, ClosedChainIsARegion) {
  kcPolyline p({V(0, 0), V(3, 0), V(3, 4)}, true);
  EXPECT_FALSE(p.isOpenContour());
  EXPECT_TRUE(p.isRegion());
  EXPECT_EQ(p.length(), 12.0);
  EXPECT_TRUE(p.within(V(2, 1)));
  EXPECT_FALSE(p.within(V(1, 2)));
  EXPECT_THROW((void)p.startPoint(), kcShapesError::NotOpenContour);
  EXPECT_THROW((void)p.reverse(), kcShapesError::NotOpenContour);
  EXPECT_EQ(p.nearestPoint(V(1, 1.5)).distance(V(1, 1.5)), p.distanceToPoint(V(1, 1.5)));
  std::vector<V> pts = samples(p, 10);
  EXPECT_EQ(pts.back(), V(0, 0));
}

TEST(Polyline, ValidityOfOpenAndClosed) {
  EXPECT_NO_THROW(kcPolyline({V(0, 0), V(1, 0)}));
  EXPECT_THROW(kcPolyline({V(0, 0), V(1, 0)}, true), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcPolyline({V(1, 1), V(1, 1)}), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcPolyline({V(1, 1)}), kcShapesError::DegenerateShape);
  kcPolyline p({V(0, 0), V(1, 0)});
  EXPECT_THROW(p.closed(true), kcShapesError::DegenerateShape);
  EXPECT_FALSE(p.closed());
  kcPolyline empty;
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_FALSE(empty.isOpenContour());
  EXPECT_THROW((void)empty.nearestPoint(V()), kcShapesError::EmptyShape);
}

TEST(Polyline, GeometryMapAndArchive) {
  kcXform<2> x(kcMatrix<2>(2, 1, 0, -1), V(3, 3));
  for (bool closed : {false, true}) {
    kcPolyline p({V(0, 0), V(2, 1), V(1, 3), V(-1, 2)}, closed);
    expectGeometryMatchesSampling(p, x);
    EXPECT_EQ(p.map(x).closed(), closed);
    expectArchiveBasics(p, "foundation/shapes/polyline");
    EXPECT_EQ(storeByHandle(p).size(), bodyOffset(p) + 4 + 4 * 16 + 1);
    expectNaNCorrupt(p, bodyOffset(p) + 4 + 16);
  }
  kcPolyline tri({V(0, 0), V(2, 1), V(1, 3)}, true);
  Bytes bytes = storeByHandle(tri);
  bytes.back() = 2;  // the closed flag is a bool
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
