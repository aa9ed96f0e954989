#include "foundation/shapes/genannulus.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

kcGenAnnulus sheared() {
  return kcGenAnnulus(kcGenRect(kcXform<2>(kcMatrix<2>(4, 1, 0.5, 2), V(1, -2)), 0.4, 0.6), 0.5);
}

TEST(GenAnnulus, ConstructorRejectsBadScales) {
  kcGenRect r;
  EXPECT_THROW(kcGenAnnulus(r, 0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcGenAnnulus(r, 1.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcGenAnnulus(r, -0.5), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcGenAnnulus(r, std::nan("")), kcShapesError::BadParams);
  kcGenAnnulus g(r, 0.25);
  EXPECT_THROW(g.innerScale(1.5), kcShapesError::DegenerateShape);
  EXPECT_EQ(g.innerScale(), 0.25);
  EXPECT_EQ(kcGenAnnulus(), kcGenAnnulus(kcGenRect(), 0.5));
}

TEST(GenAnnulus, InnerIsTheOuterScaledAboutItsCentre) {
  kcGenAnnulus g = sheared();
  kcGenRect inner = g.inner();
  V c = g.outer().centre();
  for (int i = 0; i < 4; ++i) {
    V want = c + (g.outer().corner(i) - c) * 0.5;
    EXPECT_LT(inner.corner(i).distance(want), 1e-14) << i;
  }
  EXPECT_EQ(inner.roundX(), 0.4);
  EXPECT_EQ(inner.roundY(), 0.6);
  EXPECT_LT(inner.centre().distance(c), 1e-14);
}

TEST(GenAnnulus, RegionAndDistances) {
  kcGenAnnulus g = sheared();
  V c = g.outer().centre();
  EXPECT_FALSE(g.within(c));                               // in the hole
  EXPECT_TRUE(g.within(g.outer().xform() * V(0.5, 0.1)));  // between, near the outer bottom side
  EXPECT_TRUE(g.within(g.inner().xform() * V(0.5, 0.0)));  // on the inner boundary
  EXPECT_FALSE(g.within(g.outer().xform() * V(0.5, -0.01)));
  EXPECT_EQ(g.encloseRect(), g.outer().encloseRect());
  expectDistancesMatchSampling(g, probeGrid(g.encloseRect(), 1.0, 12), 0.005, 2e-5);
  // Samples: the outer boundary, then the inner one.
  std::vector<V> pts = samples(g, 0.1);
  std::vector<V> outer = samples(g.outer(), 0.1);
  std::vector<V> inner = samples(g.inner(), 0.1);
  ASSERT_EQ(pts.size(), outer.size() + inner.size());
  EXPECT_TRUE(std::equal(inner.begin(), inner.end(), pts.begin() + static_cast<long>(outer.size())));
  std::vector<kcShapePtr> parts = g.decompose();
  ASSERT_EQ(parts.size(), 2u);
  EXPECT_EQ(*parts[1], g.inner());
}

TEST(GenAnnulus, MapsExactly) {
  kcGenAnnulus g = sheared();
  for (kcXform<2> x : {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>::rotation(kcRadian(1.0))}) {
    kcGenAnnulus image = g.map(x);
    EXPECT_EQ(image.innerScale(), 0.5);
    // Scaling about the centre commutes with the map.
    EXPECT_TRUE(image.inner() == g.inner().map(x));
    expectMapMatchesSamples(g, x, 0.02, 1e-9);
    EXPECT_NE(dynamic_cast<kcGenAnnulus*>(g.mapShape(x).get()), nullptr);
  }
  EXPECT_THROW((void)g.map(kcXform<2>::scale(0, 1)), kcShapesError::DegenerateShape);
}

TEST(GenAnnulus, Archive) {
  kcGenAnnulus g = sheared();
  expectRoundTrip(g);
  expectUnknownVersion(g, "foundation/shapes/genannulus");
  expectTruncationCorrupt(g);
  // Body: version 0, the kcGenRect (version 0, transform, two roundings), scale.
  Bytes bytes = storeByHandle(g);
  ASSERT_EQ(bytes.size(), bodyOffset(g) + 1 + 64 + 8);
  std::size_t scale = bodyOffset(g) + 1 + 64;
  expectNaNCorrupt(g, scale);
  patchDouble(bytes, scale, 1.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  patchDouble(bytes, scale, 0.75);
  EXPECT_EQ(kfDynamicCast<kcGenAnnulus>(loadByHandle(bytes))->innerScale(), 0.75);
}

}  // namespace
