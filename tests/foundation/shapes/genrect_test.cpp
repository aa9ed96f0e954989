#include "foundation/shapes/genrect.h"

#include <gtest/gtest.h>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

TEST(GenRect, CentreSizeAngleConstructorAndRefusedEdits) {
  kcGenRect g(V(2, 3), V(4, 2), kcRadian(kPi / 6));
  EXPECT_LT(g.centre().distance(V(2, 3)), 1e-15);
  EXPECT_NEAR(g.sideX(), 4.0, 1e-15);
  EXPECT_NEAR(g.sideY(), 2.0, 1e-15);
  EXPECT_NEAR((g.corner(1) - g.corner(0)).angle().toDouble(), kPi / 6, 1e-15);
  EXPECT_EQ(kcGenRect().encloseRect(), kcRect(V(0, 0), V(1, 1)));
  kcGenRect r(X::scale(2, 3), 0.5, 0.5);
  EXPECT_THROW(r.roundX(2.0), kcShapesError::BadParams);
  EXPECT_THROW(r.xform(X(kcMatrix<2>(0, 0, 0, 0), V())), kcShapesError::DegenerateShape);
  EXPECT_EQ(r, kcGenRect(X::scale(2, 3), 0.5, 0.5));
  EXPECT_FALSE(r == kcGenRect(X::scale(2, 3), 0.5, 0.4));
}

TEST(GenRect, WithinFollowsTheRoundedCorners) {
  kcGenRect g(X::scale(4, 2), 1.0, 1.0);  // the ellipse of radii 2 and 1 about (2, 1)
  EXPECT_TRUE(g.within(V(0.1, 1)));
  EXPECT_FALSE(g.within(V(0.1, 0.1)));  // cut off by the rounding
  EXPECT_TRUE(g.within(V(2 + 2 * std::cos(0.7) * 0.999, 1 + std::sin(0.7) * 0.999)));
  EXPECT_FALSE(g.within(V(2 + 2 * std::cos(0.7) * 1.001, 1 + std::sin(0.7) * 1.001)));
  kcGenRect sharp(X::scale(4, 2));
  EXPECT_TRUE(sharp.within(V(0.1, 0.1)));
  EXPECT_FALSE(sharp.within(V(4.001, 1)));
  // Boundary points test inside; a step of 1e-9 of the size outwards does not.
  kcGenRect sheared(X(kcMatrix<2>(3, 1, 0.5, 2), V(1, -2)), 0.3, 0.6);
  for (const V& p : samples(sheared, 0.1)) {
    EXPECT_TRUE(sheared.within(p));
    EXPECT_FALSE(sheared.within(p + (p - sheared.centre()).unit() * 4e-9)) << p.x() << "," << p.y();
  }
}

TEST(GenRect, MapComposesTheTransformAndKeepsTheRounding) {
  kcGenRect g(X(kcMatrix<2>(3, 1, 0.5, 2), V(1, -2)), 0.3, 0.6);
  X x(kcMatrix<2>(0.5, -1.5, 2, 0.3), V(7, 1));
  EXPECT_EQ(g.map(x), kcGenRect(x * g.xform(), 0.3, 0.6));
  EXPECT_THROW((void)g.map(X(kcMatrix<2>(1, 1, 1, 1), V())), kcShapesError::DegenerateShape);
  // The boundary starts at the rounding's end on the first side.
  EXPECT_LT(samples(g, 0.1).front().distance(g.xform() * V(0.15, 0)), 1e-12);
}

TEST(GenRect, NearestPointTiesGoToTheFirstSide) {
  kcGenRect g(X::scale(2, 2));
  EXPECT_EQ(g.nearestPoint(V(1, 1)), V(1, 0));  // centre: the bottom side comes first
  EXPECT_EQ(g.nearestPoint(V(3, 3)), V(2, 2));
}

TEST(GenRect, SingularTransformInTheArchiveIsCorrupt) {
  kcGenRect g(X(kcMatrix<2>(3, 1, 0.5, 2), V(1, -2)), 0.3, 0.6);
  Bytes bytes = storeByHandle(g);
  for (int i = 0; i < 4; ++i) patchDouble(bytes, bodyOffset(g) + 8 * i, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
