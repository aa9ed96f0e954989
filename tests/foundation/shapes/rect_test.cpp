#include "foundation/shapes/rect.h"

#include <gtest/gtest.h>

#include "foundation/shapes/genrect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(Rect, NegativeSizesAreTheOneEmptyRect) {
  EXPECT_TRUE(kcRect(V(3, 4), V(-1, 5)).isEmpty());
  EXPECT_TRUE(kcRect(V(3, 4), V(2, -0.5)) == kcRect());
  EXPECT_EQ(kcRect().area(), 0.0);
  // Zero extent is a box, not nothing: the tight box of a point.
  EXPECT_FALSE(kcRect(V(1, 1), V(0, 0)).isEmpty());
  EXPECT_FALSE(kcRect(V(1, 1), V(0, 0)) == kcRect());
  // A stored negative size loads as the empty rectangle.
  kcRect r(V(1.5, -2), V(3, 0.25));
  Bytes bytes = storeByHandle(r);
  patchDouble(bytes, bodyOffset(r) + 16, -3.0);
  EXPECT_TRUE(loadByHandle(bytes)->isEmpty());
}

TEST(Rect, CornersAndHalfOpenContainsAgainstClosedWithin) {
  kcRect r = kcRect::fromCorners(V(5, 1), V(2, 4));
  EXPECT_EQ(r.origin(), V(2, 1));
  EXPECT_EQ(r.size(), V(3, 3));
  EXPECT_EQ(r.corner(1), V(5, 1));
  EXPECT_EQ(r.corner(3), V(2, 4));
  EXPECT_THROW((void)r.corner(4), kcShapesError::BadParams);
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
  EXPECT_THROW(r.size(V(kNaN, 1)), kcShapesError::BadParams);
  EXPECT_EQ(r.size(), V(3, 3));
}

TEST(Rect, EncloseAndIntersectTreatEmptyAsNeutral) {
  const kcRect a(V(0, 0), V(2, 1));
  EXPECT_EQ(kcRect(a).enclose(kcRect(V(-1, 3), V(1, 1))), kcRect::fromCorners(V(-1, 0), V(2, 4)));
  EXPECT_EQ(kcRect().enclose(a), a);
  EXPECT_EQ(kcRect(a).enclose(kcRect()), a);
  EXPECT_EQ(kcRect().enclose(V(3, 3)).enclose(V(1, 5)), kcRect(V(1, 3), V(2, 2)));
  kcRect sq(V(0, 0), V(2, 2));
  EXPECT_EQ(sq.intersection(kcRect(V(1, 1), V(5, 5))), kcRect(V(1, 1), V(1, 1)));
  EXPECT_EQ(sq.intersection(kcRect(V(2, 0), V(1, 1))), kcRect(V(2, 0), V(0, 1)));  // touching edge
  EXPECT_TRUE(sq.intersection(kcRect(V(3, 0), V(1, 1))).isEmpty());
  EXPECT_FALSE(sq.intersects(kcRect()));
}

TEST(Rect, NearestPointTiesGoToTheBottomSide) {
  kcRect r(V(0, 0), V(4, 2));
  EXPECT_EQ(r.nearestPoint(V(3.5, 1)), V(4, 1));  // inside, right side nearest
  EXPECT_EQ(r.nearestPoint(V(1, 1)), V(1, 0));    // bottom, top and left tie
  EXPECT_EQ(samples(r, 0.5).back(), r.origin());  // the outline closes at the origin
}

TEST(Rect, MapStaysARectOnlyWhileTheAxesStay) {
  kcRect r(V(1, 2), V(3, 4));
  // Mirror and scale: the image is normalised to a positive size.
  EXPECT_EQ(r.map(kcXform<2>(kcMatrix<2>::scale(-2, 0.5), V(10, 0))), kcRect::fromCorners(V(8, 1), V(2, 3)));
  kcShapePtr turned = r.mapShape(kcXform<2>(kcMatrix<2>(0, -1, 1, 0), V()));
  ASSERT_TRUE(kfDynamicCast<kcRect>(turned));
  EXPECT_EQ(*turned, kcRect::fromCorners(V(-2, 1), V(-6, 4)));
  kcXform<2> rot(kcMatrix<2>::rotation(kcRadian(0.4)), V(2, -1));
  EXPECT_THROW((void)r.map(rot), kcShapesError::BadGeom);
  EXPECT_EQ(kfDynamicCast<kcGenRect>(r.mapShape(rot))->corner(0),
            rot * r.corner(0));  // corners keep their roles
  // A rect of no area has no general-rectangle image; an empty one stays empty.
  EXPECT_THROW((void)kcRect(V(0, 0), V(2, 0)).mapShape(rot), kcShapesError::DegenerateShape);
  EXPECT_TRUE(kcRect().mapShape(rot)->isEmpty());
}

TEST(Rect, SettersTrackChanges) {
  kcRect r(V(0, 0), V(1, 1));
  r.track(true);
  r.origin(V(2, 2));
  EXPECT_TRUE(r.changed() && r.xMax() == 3.0);
  r.clearChanged();
  r.size(V(-1, 1));
  EXPECT_TRUE(r.changed() && r.isEmpty());
}

}  // namespace
