#include "foundation/shapes/affinerect.h"

#include <gtest/gtest.h>

#include "foundation/shapes/genrect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(AffineRectangle, CornersFollowTheUnitSquare) {
  kcAffineRectangle a(V(1, 1), V(3, 1), V(-1, 2));
  EXPECT_EQ(a.corners(), (std::array<V, 4>{V(1, 1), V(4, 2), V(3, 4), V(0, 3)}));
  EXPECT_THROW((void)a.corner(-1), kcShapesError::BadParams);
  EXPECT_EQ(a.centre(), V(2, 2.5));
  EXPECT_EQ(a.area(), 7.0);
  EXPECT_EQ(kcAffineRectangle(kcXform<2>(kcMatrix<2>(-2, 0, 0, 1), V())).area(), -2.0);  // mirrored
  EXPECT_TRUE(a.within(V(4, 2)));                                                        // a corner
  EXPECT_FALSE(a.within(V(0, 1)));
  kcXform<2> x(kcMatrix<2>(1, -2, 0.5, 1), V(2, 2));
  EXPECT_EQ(a.map(x).xform(), x * a.xform());
  EXPECT_THROW(a.xform(kcXform<2>(kcMatrix<2>(1, 0, 0, 0), V())), kcShapesError::DegenerateShape);
  EXPECT_EQ(a, kcAffineRectangle(V(1, 1), V(3, 1), V(-1, 2)));
  // The general rectangle of the same transform is the same outline.
  kcGenRect g = a.toGenRect();
  for (const V& p : probeGrid(a.encloseRect(), 1.0, 5))
    EXPECT_NEAR(g.distanceToPoint(p), a.distanceToPoint(p), 1e-12);
}

}  // namespace
