#include "foundation/shapes/rect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/shapes/genrect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(Rect, DefaultAndNegativeSizesAreTheOneEmptyRect) {
  kcRect empty;
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_TRUE(kcRect(V(3, 4), V(-1, 5)).isEmpty());
  EXPECT_TRUE(kcRect(V(3, 4), V(2, -0.5)) == empty);
  EXPECT_EQ(empty.area(), 0.0);
  // Zero extent is a box, not nothing: the tight box of a point.
  EXPECT_FALSE(kcRect(V(1, 1), V(0, 0)).isEmpty());
  EXPECT_FALSE(kcRect(V(1, 1), V(0, 0)) == empty);
}

TEST(Rect, RejectsNonFiniteInput) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  double inf = std::numeric_limits<double>::infinity();
  EXPECT_THROW(kcRect(V(nan, 0), V(1, 1)), kcShapesError::BadParams);
  EXPECT_THROW(kcRect(V(0, 0), V(1, inf)), kcShapesError::BadParams);
  EXPECT_THROW((void)kcRect::fromCorners(V(0, 0), V(-inf, 1)), kcShapesError::BadParams);
  kcRect r(V(0, 0), V(1, 1));
  EXPECT_THROW(r.size(V(nan, 1)), kcShapesError::BadParams);
  EXPECT_EQ(r.size(), V(1, 1));
}

TEST(Rect, FieldsCornersAndMembership) {
  kcRect r = kcRect::fromCorners(V(5, 1), V(2, 4));
  EXPECT_EQ(r.origin(), V(2, 1));
  EXPECT_EQ(r.size(), V(3, 3));
  EXPECT_EQ(r.xMax(), 5.0);
  EXPECT_EQ(r.corner(1), V(5, 1));
  EXPECT_EQ(r.corner(3), V(2, 4));
  EXPECT_EQ(r.center(), V(3.5, 2.5));
  EXPECT_THROW((void)r.corner(4), kcShapesError::BadParams);
  // Half-open for contains(), closed for the region's within().
  struct Case {
    V p;
    bool contains, within;
  } cases[] = {{V(2, 1), true, true},       {V(5, 2), false, true},     {V(3, 4), false, true},
               {V(4.99, 3.99), true, true}, {V(1.99, 2), false, false}, {V(3, 4.01), false, false}};
  for (const Case& c : cases) {
    EXPECT_EQ(r.contains(c.p), c.contains) << c.p.x() << "," << c.p.y();
    EXPECT_EQ(r.within(c.p), c.within) << c.p.x() << "," << c.p.y();
  }
  EXPECT_FALSE(kcRect().within(V(0, 0)));
}

TEST(Rect, EncloseTreatsEmptyAsNeutral) {
  kcRect a(V(0, 0), V(2, 1));
  kcRect b(V(-1, 3), V(1, 1));
  kcRect u = a;
  u.enclose(b);
  EXPECT_EQ(u, kcRect::fromCorners(V(-1, 0), V(2, 4)));
  kcRect e;
  e.enclose(a);
  EXPECT_EQ(e, a);
  kcRect a2 = a;
  a2.enclose(kcRect());
  EXPECT_EQ(a2, a);
  kcRect pts;
  pts.enclose(V(3, 3)).enclose(V(1, 5));
  EXPECT_EQ(pts, kcRect(V(1, 3), V(2, 2)));
}

TEST(Rect, IntersectionOfClosedRects) {
  kcRect a(V(0, 0), V(2, 2));
  EXPECT_EQ(a.intersection(kcRect(V(1, 1), V(5, 5))), kcRect(V(1, 1), V(1, 1)));
  EXPECT_EQ(a.intersection(kcRect(V(2, 0), V(1, 1))), kcRect(V(2, 0), V(0, 1)));  // touching edge
  EXPECT_TRUE(a.intersection(kcRect(V(3, 0), V(1, 1))).isEmpty());
  EXPECT_FALSE(a.intersects(kcRect()));
}

TEST(Rect, NearestPointOnBoundary) {
  kcRect r(V(0, 0), V(4, 2));
  struct Case {
    V p, nearest;
  } cases[] = {
      {V(-1, -1), V(0, 0)},  // outside a corner
      {V(2, 5), V(2, 2)},    // above the top
      {V(3.5, 1), V(4, 1)},  // inside, right side nearest
      {V(1, 0.5), V(1, 0)},  // inside, bottom nearest
      {V(1, 1), V(1, 0)},    // tie bottom / top / left: bottom comes first
      {V(2, 2), V(2, 2)},    // on the boundary
  };
  for (const Case& c : cases) EXPECT_EQ(r.nearestPoint(c.p), c.nearest) << c.p.x() << "," << c.p.y();
  EXPECT_DOUBLE_EQ(r.distanceToPoint(V(-3, -4)), 5.0);
  EXPECT_THROW((void)kcRect().nearestPoint(V()), kcShapesError::EmptyShape);
  EXPECT_THROW((void)kcRect().distanceToPoint(V()), kcShapesError::EmptyShape);
}

TEST(Rect, SamplingAndDistancesAgree) {
  kcRect r(V(-1, 2), V(3, 1.5));
  expectSampleSpacing(r, 0.07);
  std::vector<V> pts = samples(r, 0.5);
  EXPECT_EQ(pts.front(), r.origin());
  EXPECT_EQ(pts.back(), r.origin());
  expectDistancesMatchSampling(r, probeGrid(r, 1.0, 12), 0.01, 1e-12);
  expectEncloseRectMatchesSampling(r, 0.1, 1e-12);
  std::vector<V> none;
  kcRect().sample(0.1, none);
  EXPECT_TRUE(none.empty());
  EXPECT_THROW(kcRect().sample(0.0, none), kcShapesError::BadParams);
  EXPECT_THROW(r.sample(-1.0, none), kcShapesError::BadParams);
  EXPECT_THROW(r.sample(1e-300, none), kcShapesError::BadParams);  // far too many points
}

TEST(Rect, MapKeepsRectUnderAxisPreservingTransforms) {
  kcRect r(V(1, 2), V(3, 4));
  // Mirror and scale: the image is normalised to a positive size.
  kcXform<2> mirror(kcMatrix<2>::scale(-2, 0.5), V(10, 0));
  EXPECT_EQ(r.map(mirror), kcRect::fromCorners(V(8, 1), V(2, 3)));
  kcShapePtr turned = r.mapShape(kcXform<2>(kcMatrix<2>(0, -1, 1, 0), V()));
  ASSERT_TRUE(kfDynamicCast<kcRect>(turned));
  EXPECT_EQ(*turned, kcRect::fromCorners(V(-2, 1), V(-6, 4)));
  EXPECT_THROW((void)r.map(kcXform<2>::rotation(kcRadian(0.3))), kcShapesError::BadGeom);
}

TEST(Rect, MapBecomesGenRectUnderRotation) {
  kcRect r(V(1, 2), V(3, 4));
  kcXform<2> rot(kcMatrix<2>::rotation(kcRadian(0.4)), V(2, -1));
  kcShapePtr m = r.mapShape(rot);
  auto g = kfDynamicCast<kcGenRect>(m);
  ASSERT_TRUE(g);
  for (int i = 0; i < 4; ++i) EXPECT_LT(g->corner(i).distance(rot * r.corner(i)), 1e-12);
  expectMapMatchesSamples(r, rot, 0.05, 1e-12);
  // A rect of no area has no general-rectangle image; an empty one stays empty.
  EXPECT_THROW((void)kcRect(V(0, 0), V(2, 0)).mapShape(rot), kcShapesError::DegenerateShape);
  EXPECT_TRUE(kcRect().mapShape(rot)->isEmpty());
}

TEST(Rect, ArchiveRoundTripAndBadData) {
  kcRect r(V(1.5, -2), V(3, 0.25));
  expectRoundTrip(r);
  expectRoundTrip(kcRect());
  Bytes bytes = storeByHandle(r);
  EXPECT_EQ(bytes.size(), bodyOffset(r) + 32);
  expectUnknownVersion(r, "foundation/shapes/rect");
  expectTruncationCorrupt(r);
  for (int i = 0; i < 4; ++i) expectNaNCorrupt(r, bodyOffset(r) + 8 * i);
  // A stored negative size loads as the empty rectangle.
  patchDouble(bytes, bodyOffset(r) + 16, -3.0);
  EXPECT_TRUE(loadByHandle(bytes)->isEmpty());
}

TEST(Rect, SettersTrackChanges) {
  kcRect r(V(0, 0), V(1, 1));
  r.track(true);
  r.origin(V(2, 2));
  EXPECT_TRUE(r.changed());
  EXPECT_EQ(r.xMax(), 3.0);
  r.clearChanged();
  r.size(V(-1, 1));
  EXPECT_TRUE(r.changed());
  EXPECT_TRUE(r.isEmpty());
}

}  // namespace
