#include "foundation/shapes/spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"
#include "tests/foundation/shapes/spline_testing.h"

namespace {

using namespace shape_testing;
using spline_testing::bruteDistance;
using spline_testing::splinePoint;
using V = kcVector<2>;

// Three pieces: an arch, a wave back under it and a hook; the second join
// has a corner.
const std::vector<V> kWavy{V(0, 0),  V(1, 3),  V(4, 3), V(5, 0), V(6, -3),
                           V(2, -4), V(1, -1), V(3, 2), V(7, 2), V(6, -2)};

TEST(CubicSpline, CountsMustBeThreeKPlusOne) {
  struct Row {
    std::size_t count;
    bool ok;
  } rows[] = {{0, false}, {1, false}, {3, false}, {4, true}, {5, false}, {6, false}, {7, true}, {10, true}};
  for (const Row& r : rows) {
    std::vector<V> pts;
    for (std::size_t i = 0; i < r.count; ++i) pts.emplace_back(double(i), double(i * i % 5));
    if (r.ok) {
      EXPECT_EQ(kcCubicSpline(pts).numPieces(), long((r.count - 1) / 3)) << r.count;
    } else {
      EXPECT_THROW(kcCubicSpline{pts}, kcShapesError::BadParams) << r.count;
    }
  }
}

TEST(CubicSpline, ConstructionRejectsBadPoints) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(kcCubicSpline(std::vector<V>(7, V(2, 3))), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcCubicSpline({V(0, 0), V(1, nan), V(2, 0), V(3, 0)}), kcShapesError::BadParams);
  // A piece that is a single point inside a spline is allowed.
  kcCubicSpline s({V(0, 0), V(1, 1), V(2, 1), V(3, 0), V(3, 0), V(3, 0), V(3, 0)});
  EXPECT_EQ(s.numPieces(), 2);
  EXPECT_EQ(s.decompose().size(), 1u);
  EXPECT_THROW((void)s.piece(1), kcShapesError::DegenerateShape);
  EXPECT_THROW((void)s.piece(2), kcShapesError::BadParams);
  EXPECT_THROW((void)s.piece(-1), kcShapesError::BadParams);
  EXPECT_NEAR(s.endAngle().toDouble(), -std::numbers::pi / 4, 1e-15);  // from the last moving leg
}

TEST(CubicSpline, DefaultIsTheUnitSegment) {
  kcCubicSpline s;
  EXPECT_EQ(s.numPieces(), 1);
  EXPECT_EQ(s.startPoint(), V(0, 0));
  EXPECT_EQ(s.endPoint(), V(1, 0));
  EXPECT_TRUE(s.isOpenContour());
  const kcBezierCurve b;
  EXPECT_EQ(s.bezierPoints(), std::vector<V>(b.controlPoints().begin(), b.controlPoints().end()));
}

TEST(CubicSpline, PointAtWalksThePieces) {
  kcCubicSpline s(kWavy);
  for (int i = 0; i <= 30; ++i) {
    double t = i / 10.0;
    EXPECT_LE(s.pointAt(t).distance(splinePoint(kWavy, t)), 1e-13) << t;
  }
  EXPECT_EQ(s.pointAt(1.0), kWavy[3]);
  EXPECT_EQ(s.pointAt(-5.0), kWavy.front());
  EXPECT_EQ(s.pointAt(9.0), kWavy.back());
  EXPECT_THROW((void)s.pointAt(std::numeric_limits<double>::quiet_NaN()), kcShapesError::BadParams);
}

TEST(CubicSpline, NearestPointMatchesBruteForce) {
  kcCubicSpline s(kWavy);
  for (const V& p : probeGrid(s.encloseRect(), 3.0, 14)) {
    double ref = bruteDistance(kWavy, p);
    EXPECT_NEAR(s.distanceToPoint(p), ref, 1e-9 * (10 + ref)) << p.x() << "," << p.y();
    EXPECT_NEAR(p.distance(s.nearestPoint(p)), ref, 1e-9 * (10 + ref));
  }
}

TEST(CubicSpline, NearestPointTiesGoToTheEarlierPiece) {
  // Two mirrored arches meeting at (0, 0): a point on the mirror axis above is
  // equally near both apexes.
  kcCubicSpline s({V(-2, 0), V(-2, 2), V(-1, 2), V(0, 0), V(1, 2), V(2, 2), V(2, 0)});
  V q = s.nearestPoint(V(0, 10));
  EXPECT_LT(q.x(), 0.0);
}

TEST(CubicSpline, EncloseRectIsTheSampledBox) {
  kcCubicSpline s(kWavy);
  kcRect box;
  for (int i = 0; i <= 300000; ++i) box.enclose(splinePoint(kWavy, i / 100000.0));
  kcRect r = s.encloseRect();
  EXPECT_NEAR(r.xMin(), box.xMin(), 1e-8);
  EXPECT_NEAR(r.yMin(), box.yMin(), 1e-8);
  EXPECT_NEAR(r.xMax(), box.xMax(), 1e-8);
  EXPECT_NEAR(r.yMax(), box.yMax(), 1e-8);
  expectEncloseRectMatchesSampling(s, 0.01, 1e-4);
}

TEST(CubicSpline, SamplesKeepTheSpacingAndEachJoinOnce) {
  kcCubicSpline s(kWavy);
  expectSampleSpacing(s, 0.3);
  std::vector<V> pts = samples(s, 0.3);
  EXPECT_EQ(pts.front(), kWavy.front());
  EXPECT_EQ(pts.back(), kWavy.back());
  EXPECT_EQ(std::count(pts.begin(), pts.end(), kWavy[3]), 1);
  EXPECT_EQ(std::count(pts.begin(), pts.end(), kWavy[6]), 1);
  for (const V& p : pts) EXPECT_LE(bruteDistance(kWavy, p, 200), 1e-9);
  std::vector<V> out;
  EXPECT_THROW(s.sample(1e-9, out), kcShapesError::BadParams);  // too many points
  EXPECT_TRUE(out.empty());
}

TEST(CubicSpline, MapIsExactAndKeepsTheClass) {
  kcCubicSpline s(kWavy);
  kcXform<2> x(kcMatrix<2>(1.5, -0.5, 2, 0.25), V(-3, 8));
  kcCubicSpline m = s.map(x);
  for (std::size_t i = 0; i < kWavy.size(); ++i) EXPECT_EQ(m.bezierPoints()[i], x * kWavy[i]);
  kcShapePtr h = s.mapShape(x);
  ASSERT_NE(dynamic_cast<kcCubicSpline*>(h.get()), nullptr);
  EXPECT_TRUE(*h == m);
  expectMapMatchesSamples(s, x, 0.05, 1e-3);
}

TEST(CubicSpline, ReverseAndEndAngles) {
  kcCubicSpline s({V(0, 0), V(0, 0), V(1, 1), V(2, 1), V(3, 1), V(3, 2), V(3, 2)});
  EXPECT_NEAR(s.startAngle().toDouble(), std::numbers::pi / 4, 1e-15);  // first leg is zero
  EXPECT_NEAR(s.endAngle().toDouble(), std::numbers::pi / 2, 1e-15);
  kcShapePtr r = s.reverse();
  auto* rs = dynamic_cast<kcCubicSpline*>(r.get());
  ASSERT_NE(rs, nullptr);
  for (int i = 0; i <= 20; ++i) EXPECT_LE(rs->pointAt(i / 10.0).distance(s.pointAt(2 - i / 10.0)), 1e-13);
  std::vector<kcShapePtr> pieces = s.decompose();
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_TRUE(*pieces[1] == s.piece(1));
}

TEST(CubicSpline, ArchiveRoundTripAndErrors) {
  kcCubicSpline s(kWavy);
  expectRoundTrip(s);
  expectUnknownVersion(s, "foundation/shapes/spline");
  expectTruncationCorrupt(s);
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 8 * 5);
  // The form: version, count, points.
  kcMemArchive ar;
  ar || s;
  EXPECT_EQ(ar.bytes().size(), 1 + 4 + 16 * kWavy.size());
  // A count that is not 3k + 1, and one larger than the data could hold.
  Bytes bytes = storeByHandle(kcCubicSpline({V(0, 0), V(1, 1), V(2, 1), V(3, 0)}));
  Bytes five = bytes;
  five[bodyOffset(s)] = 5;
  for (int i = 0; i < 16; ++i) five.push_back(0);
  EXPECT_THROW((void)loadByHandle(five), kcArchive::Corrupt);
  Bytes huge = bytes;
  huge[bodyOffset(s) + 3] = 0x7F;
  EXPECT_THROW((void)loadByHandle(huge), kcArchive::Corrupt);
  // Coincident points.
  Bytes same = bytes;
  for (int i = 0; i < 8; ++i) patchDouble(same, bodyOffset(s) + 4 + 8 * static_cast<std::size_t>(i), 2.0);
  EXPECT_THROW((void)loadByHandle(same), kcArchive::Corrupt);
}

}  // namespace
