#include "foundation/shapes/genrect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

// A sheared, rotated, mirrored and plain set of rectangles, rounded and not.
std::vector<kcGenRect> sampleRects() {
  kcXform<2> shear(kcMatrix<2>(3, 1, 0.5, 2), V(1, -2));
  kcXform<2> mirror(kcMatrix<2>(-2, 0, 0, 1), V(0, 0));
  return {
      kcGenRect(),
      kcGenRect(V(1, 1), V(4, 2), kcRadian(0.3)),
      kcGenRect(V(1, 1), V(4, 2), kcRadian(0.3), 0.5, 0.8),
      kcGenRect(shear, 0.3, 0.6),
      kcGenRect(shear, 1.0, 1.0),  // one whole ellipse
      kcGenRect(mirror, 1.0, 0.2),
      kcGenRect(kcXform<2>(kcMatrix<2>::scale(10, 0.1), V()), 0.9, 0.9),  // thin
  };
}

TEST(GenRect, DefaultIsTheUnitSquare) {
  kcGenRect g;
  EXPECT_EQ(g.corner(2), V(1, 1));
  EXPECT_EQ(g.centre(), V(0.5, 0.5));
  EXPECT_FALSE(g.isRounded());
  EXPECT_EQ(g.encloseRect(), kcRect(V(0, 0), V(1, 1)));
}

TEST(GenRect, ConstructorChecks) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  kcXform<2> ok(kcMatrix<2>::scale(2, 3), V(1, 1));
  struct Case {
    const char* why;
    std::function<void()> make;
    long error;
  } cases[] = {
      {"NaN in the matrix", [&] { kcGenRect(kcXform<2>(kcMatrix<2>(nan, 0, 0, 1), V())); }, 0x10000209},
      {"infinite translation",
       [&] { kcGenRect(kcXform<2>({}, V(0, std::numeric_limits<double>::infinity()))); }, 0x10000209},
      {"rounding above 1", [&] { kcGenRect(ok, 1.5, 0.5); }, 0x10000209},
      {"negative rounding", [&] { kcGenRect(ok, 0.5, -0.1); }, 0x10000209},
      {"NaN rounding", [&] { kcGenRect(ok, nan, 0.5); }, 0x10000209},
      {"singular transform", [&] { kcGenRect(kcXform<2>(kcMatrix<2>(1, 2, 2, 4), V())); }, 0x10000204},
      {"zero width", [&] { kcGenRect(V(), V(0, 1), kcRadian(0)); }, 0x10000204},
      {"empty rect", [&] { kcGenRect{kcRect()}; }, 0x10000204},
      {"flat rect", [&] { kcGenRect(kcRect(V(), V(1, 0))); }, 0x10000204},
  };
  for (const Case& c : cases) {
    try {
      c.make();
      ADD_FAILURE() << c.why;
    } catch (const kcException& e) {
      EXPECT_EQ(e.errorNumber(), c.error) << c.why;
    }
  }
  kcGenRect g(ok, 0.5, 0.5);
  EXPECT_THROW(g.roundX(2.0), kcShapesError::BadParams);
  EXPECT_THROW(g.xform(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcShapesError::DegenerateShape);
  EXPECT_EQ(g.roundX(), 0.5);
  EXPECT_EQ(g.xform(), ok);
}

TEST(GenRect, CentreSizeAngleConstructor) {
  kcGenRect g(V(2, 3), V(4, 2), kcRadian(std::numbers::pi / 6));
  EXPECT_LT(g.centre().distance(V(2, 3)), 1e-15);
  EXPECT_NEAR(g.sideX(), 4.0, 1e-15);
  EXPECT_NEAR(g.sideY(), 2.0, 1e-15);
  V side = g.corner(1) - g.corner(0);
  EXPECT_NEAR(side.angle().toDouble(), std::numbers::pi / 6, 1e-15);
}

TEST(GenRect, WithinFollowsTheRoundedCorners) {
  kcGenRect g(kcXform<2>(kcMatrix<2>::scale(4, 2), V()), 1.0, 1.0);  // ellipse, radii 2 and 1, centre (2, 1)
  EXPECT_TRUE(g.within(V(2, 1)));
  EXPECT_TRUE(g.within(V(0.1, 1)));
  EXPECT_FALSE(g.within(V(0.1, 0.1)));  // cut off by the rounding
  EXPECT_TRUE(g.within(V(2 + 2 * std::cos(0.7) * 0.999, 1 + std::sin(0.7) * 0.999)));
  EXPECT_FALSE(g.within(V(2 + 2 * std::cos(0.7) * 1.001, 1 + std::sin(0.7) * 1.001)));
  kcGenRect sharp(kcXform<2>(kcMatrix<2>::scale(4, 2), V()));
  EXPECT_TRUE(sharp.within(V(0.1, 0.1)));
  EXPECT_TRUE(sharp.within(V(4, 2)));  // the boundary belongs to the region
  EXPECT_FALSE(sharp.within(V(4.001, 1)));
}

TEST(GenRect, FullyRoundedIsTheInscribedEllipse) {
  // Distances against the ellipse (2 cos t, sin t) about (2, 1), sampled finely.
  kcGenRect g(kcXform<2>(kcMatrix<2>::scale(4, 2), V()), 1.0, 1.0);
  for (V p : {V(2, 1), V(2.5, 1.2), V(5, 3), V(-1, 1), V(2, 1.5)}) {
    double best = INFINITY;
    for (int i = 0; i < 200000; ++i) {
      double t = 2 * std::numbers::pi * i / 200000;
      best = std::min(best, p.distance(V(2 + 2 * std::cos(t), 1 + std::sin(t))));
    }
    EXPECT_NEAR(g.distanceToPoint(p), best, 1e-9) << p.x() << "," << p.y();
  }
  EXPECT_EQ(g.encloseRect(), kcRect(V(0, 0), V(4, 2)));
}

TEST(GenRect, GeometryAgreesWithDenseSampling) {
  for (const kcGenRect& g : sampleRects()) {
    kcRect box = g.encloseRect();
    double size = std::max(box.width(), box.height());
    expectSampleSpacing(g, size / 37);
    expectEncloseRectMatchesSampling(g, size * 1e-4, size * 1e-8);
    expectDistancesMatchSampling(g, probeGrid(box, size * 0.3, 6), size * 5e-4, size * 2e-6);
    std::vector<V> pts = samples(g, size / 10);
    EXPECT_EQ(pts.front(), pts.back());
    EXPECT_LT(pts.front().distance(g.xform() * V(g.isRounded() ? g.roundX() / 2 : 0, 0)), 1e-12);
  }
}

TEST(GenRect, BoundaryPointsTestInside) {
  for (const kcGenRect& g : sampleRects()) {
    double size = std::max(g.encloseRect().width(), g.encloseRect().height());
    for (const V& p : samples(g, size / 50)) {
      EXPECT_TRUE(g.within(p)) << p.x() << "," << p.y();
      // A step of 1e-9 of the size away from the centre leaves the region.
      V out = p + (p - g.centre()).unit() * (1e-9 * size);
      EXPECT_FALSE(g.within(out)) << p.x() << "," << p.y();
    }
  }
}

TEST(GenRect, MapIsTheImage) {
  kcXform<2> x(kcMatrix<2>(0.5, -1.5, 2, 0.3), V(7, 1));
  for (const kcGenRect& g : sampleRects()) {
    kcGenRect m = g.map(x);
    EXPECT_EQ(m.roundX(), g.roundX());
    EXPECT_EQ(m.xform(), x * g.xform());
    EXPECT_TRUE(kfDynamicCast<kcGenRect>(g.mapShape(x)));
    expectMapMatchesSamples(g, x, 0.05, 1e-9);
  }
  EXPECT_THROW((void)kcGenRect().map(kcXform<2>(kcMatrix<2>(1, 1, 1, 1), V())),
               kcShapesError::DegenerateShape);
}

TEST(GenRect, NearestPointTiesGoToTheFirstPiece) {
  kcGenRect g(kcXform<2>(kcMatrix<2>::scale(2, 2), V()));
  EXPECT_EQ(g.nearestPoint(V(1, 1)), V(1, 0));  // centre: the bottom side comes first
  EXPECT_EQ(g.nearestPoint(V(3, 3)), V(2, 2));
}

TEST(GenRect, EqualityAndArchive) {
  for (const kcGenRect& g : sampleRects()) expectRoundTrip(g);
  kcGenRect g = sampleRects()[3];
  EXPECT_FALSE(g == kcGenRect(g.xform(), 0.3, 0.5));
  EXPECT_EQ(storeByHandle(g).size(), bodyOffset(g) + 64);
  expectUnknownVersion(g, "foundation/shapes/genrect");
  expectTruncationCorrupt(g);
  for (int i = 0; i < 8; ++i) expectNaNCorrupt(g, bodyOffset(g) + 8 * i);
  // A loaded singular transform or bad rounding is corrupt too.
  Bytes bytes = storeByHandle(g);
  for (int i = 0; i < 4; ++i) patchDouble(bytes, bodyOffset(g) + 8 * i, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  bytes = storeByHandle(g);
  patchDouble(bytes, bodyOffset(g) + 56, 1.5);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
