#include "foundation/shapes/affinerect.h"

#include <gtest/gtest.h>

#include <limits>

#include "foundation/shapes/genrect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

TEST(AffineRectangle, CornersFollowTheUnitSquare) {
  kcAffineRectangle a(V(1, 1), V(3, 1), V(-1, 2));
  std::array<V, 4> c = a.corners();
  EXPECT_EQ(c[0], V(1, 1));
  EXPECT_EQ(c[1], V(4, 2));
  EXPECT_EQ(c[2], V(3, 4));
  EXPECT_EQ(c[3], V(0, 3));
  EXPECT_EQ(a.corner(2), c[2]);
  EXPECT_THROW((void)a.corner(-1), kcShapesError::BadParams);
  EXPECT_EQ(a.centre(), V(2, 2.5));
  EXPECT_EQ(a.area(), 7.0);
  EXPECT_EQ(a.encloseRect(), kcRect::fromCorners(V(0, 1), V(4, 4)));
  EXPECT_EQ(kcAffineRectangle().encloseRect(), kcRect(V(0, 0), V(1, 1)));
}

TEST(AffineRectangle, RejectsBadTransforms) {
  EXPECT_THROW(kcAffineRectangle(V(0, 0), V(1, 1), V(2, 2)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcAffineRectangle(kcXform<2>({}, V(std::numeric_limits<double>::quiet_NaN(), 0))),
               kcShapesError::BadParams);
  kcAffineRectangle a;
  EXPECT_THROW(a.xform(kcXform<2>(kcMatrix<2>(1, 0, 0, 0), V())), kcShapesError::DegenerateShape);
  EXPECT_TRUE(a.xform().isIdentity());
}

TEST(AffineRectangle, RegionGeometry) {
  kcAffineRectangle a(V(1, 1), V(3, 1), V(-1, 2));
  EXPECT_TRUE(a.within(V(2, 2.5)));
  EXPECT_TRUE(a.within(V(4, 2)));  // a corner
  EXPECT_FALSE(a.within(V(0, 1)));
  EXPECT_TRUE(a.within(V(1, 3)));
  EXPECT_EQ(a.nearestPoint(V(5, 1)), V(4, 2));
  kcXform<2> x(kcMatrix<2>(1, -2, 0.5, 1), V(2, 2));
  expectGeometryMatchesSampling(a, x);
  kcAffineRectangle mirrored(kcXform<2>(kcMatrix<2>(-2, 0, 0, 1), V()));
  EXPECT_EQ(mirrored.area(), -2.0);
  expectGeometryMatchesSampling(mirrored, x);
  EXPECT_EQ(a.map(x).xform(), x * a.xform());
  EXPECT_TRUE(kfDynamicCast<kcAffineRectangle>(a.mapShape(x)));
  EXPECT_THROW((void)a.map(kcXform<2>(kcMatrix<2>(1, 1, 1, 1), V())), kcShapesError::DegenerateShape);
  // The general rectangle of the same transform is the same outline.
  kcGenRect g = a.toGenRect();
  for (const V& p : probeGrid(a.encloseRect(), 1.0, 5)) {
    EXPECT_NEAR(g.distanceToPoint(p), a.distanceToPoint(p), 1e-12);
  }
}

TEST(AffineRectangle, Archive) {
  kcAffineRectangle a(V(1, 1), V(3, 1), V(-1, 2));
  expectArchiveBasics(a, "foundation/shapes/affinerect");
  EXPECT_EQ(storeByHandle(a).size(), bodyOffset(a) + 48);
  for (int i = 0; i < 6; ++i) expectNaNCorrupt(a, bodyOffset(a) + 8 * i);
  Bytes bytes = storeByHandle(a);
  patchDouble(bytes, bodyOffset(a) + 8, 0.0);
  patchDouble(bytes, bodyOffset(a) + 24, 0.0);  // second column zero: singular
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
