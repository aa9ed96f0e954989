#include "foundation/shapes/spline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

// Three pieces: an arch, a wave back under it and a hook; the second join
// has a corner.
const std::vector<V> kWavy{V(0, 0),  V(1, 3),  V(4, 3), V(5, 0), V(6, -3),
                           V(2, -4), V(1, -1), V(3, 2), V(7, 2), V(6, -2)};

TEST(CubicSpline, PointAtWalksThePiecesAndClamps) {
  kcCubicSpline s(kWavy);
  EXPECT_EQ(s.numPieces(), 3);
  for (int i = 0; i <= 30; ++i) {
    std::size_t k = std::min<std::size_t>(i / 10, 2);
    EXPECT_LE(s.pointAt(i / 10.0).distance(casteljau(&kWavy[3 * k], i / 10.0 - double(k))), 1e-13) << i;
  }
  EXPECT_EQ(s.pointAt(1.0), kWavy[3]);
  EXPECT_EQ(s.pointAt(-5.0), kWavy.front());
  EXPECT_EQ(s.pointAt(9.0), kWavy.back());
  EXPECT_THROW((void)s.pointAt(kNaN), kcShapesError::BadParams);
  // Samples hold every join once.
  std::vector<V> pts = samples(s, 0.3);
  EXPECT_EQ(std::count(pts.begin(), pts.end(), kWavy[3]), 1);
  EXPECT_EQ(std::count(pts.begin(), pts.end(), kWavy[6]), 1);
}

TEST(CubicSpline, PiecesAtOnePlace) {
  // A piece that is a single point inside a spline is allowed, and skipped.
  kcCubicSpline s({V(0, 0), V(1, 1), V(2, 1), V(3, 0), V(3, 0), V(3, 0), V(3, 0)});
  EXPECT_EQ(s.decompose().size(), 1u);
  EXPECT_THROW((void)s.piece(1), kcShapesError::DegenerateShape);
  EXPECT_THROW((void)s.piece(2), kcShapesError::BadParams);
  EXPECT_NEAR(s.endAngle().toDouble(), -kPi / 4, 1e-15);  // from the last moving leg
  kcCubicSpline t({V(0, 0), V(0, 0), V(1, 1), V(2, 1), V(3, 1), V(3, 2), V(3, 2)});
  EXPECT_NEAR(t.startAngle().toDouble(), kPi / 4, 1e-15);
  EXPECT_NEAR(t.endAngle().toDouble(), kPi / 2, 1e-15);
}

TEST(CubicSpline, NearestPointTiesGoToTheEarlierPiece) {
  // Two mirrored arches meeting at (0, 0): a point on the mirror axis above is
  // equally near both apexes.
  kcCubicSpline s({V(-2, 0), V(-2, 2), V(-1, 2), V(0, 0), V(1, 2), V(2, 2), V(2, 0)});
  EXPECT_LT(s.nearestPoint(V(0, 10)).x(), 0.0);
}

TEST(CubicSpline, ArchivedCountMustBeThreeKPlusOne) {
  kcCubicSpline s({V(0, 0), V(1, 1), V(2, 1), V(3, 0)});
  Bytes five = storeByHandle(s);
  five.at(bodyOffset(s)) = 5;
  five.resize(five.size() + 16);
  EXPECT_THROW((void)loadByHandle(five), kcArchive::Corrupt);
}

}  // namespace
