#include "foundation/shapes/hermitespline.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/foundation/shapes/shape_testing.h"
#include "tests/foundation/shapes/spline_testing.h"

namespace {

using namespace shape_testing;
using spline_testing::maxGap;
using V = kcVector<2>;

const std::vector<V> kPoints{V(0, 0), V(3, 1), V(5, -2), V(8, 0)};
const std::vector<V> kTangents{V(0, 6), V(4, 0), V(0, -3), V(2, 5)};

TEST(HermiteSpline, PiecesLeaveAndArriveWithTheTangents) {
  kcHermiteSpline s(kPoints, kTangents);
  ASSERT_EQ(s.numPieces(), 3);
  for (long i = 0; i < 3; ++i) {
    kcBezierCurve piece = s.piece(i);
    auto k = static_cast<std::size_t>(i);
    EXPECT_EQ(piece.startPoint(), kPoints[k]);
    EXPECT_EQ(piece.endPoint(), kPoints[k + 1]);
    EXPECT_LE(piece.derivativeAt(0).distance(kTangents[k]), 1e-14);
    EXPECT_LE(piece.derivativeAt(1).distance(kTangents[k + 1]), 1e-14);
  }
  EXPECT_LE(maxGap(kcHermiteSpline().bezierPoints(), kcCubicSpline().bezierPoints()), 1e-15);
}

TEST(HermiteSpline, MapMovesPointsAndTurnsTangents) {
  kcHermiteSpline s(kPoints, kTangents);
  kcXform<2> x(kcMatrix<2>(0, -2, 1, 0), V(100, -50));
  kcShapePtr h = s.mapShape(x);
  auto* m = dynamic_cast<kcHermiteSpline*>(h.get());
  ASSERT_NE(m, nullptr);
  for (std::size_t i = 0; i < kPoints.size(); ++i) {
    EXPECT_EQ(m->points()[i], x * kPoints[i]);
    EXPECT_EQ(m->tangents()[i], x.mapVector(kTangents[i]));  // no translation
  }
  std::vector<V> mapped;
  for (const V& p : s.bezierPoints()) mapped.push_back(x * p);
  EXPECT_LE(maxGap(m->bezierPoints(), mapped), 1e-12);
  expectMapMatchesSamples(s, x, 0.05, 1e-3);
}

TEST(HermiteSpline, ReverseNegatesTheTangents) {
  kcHermiteSpline s(kPoints, kTangents);
  kcShapePtr r = s.reverse();
  auto* rs = dynamic_cast<kcHermiteSpline*>(r.get());
  ASSERT_NE(rs, nullptr);
  EXPECT_EQ(rs->tangents().front(), -kTangents.back());
  std::vector<V> back(s.bezierPoints().rbegin(), s.bezierPoints().rend());
  EXPECT_LE(maxGap(rs->bezierPoints(), back), 1e-14);
}

TEST(HermiteSpline, BadInputAndFailedEdits) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Row {
    std::vector<V> points, tangents;
  } badParams[] = {
      {{V(0, 0)}, {V(1, 0)}},                             // one point
      {{V(0, 0), V(1, 0)}, {V(1, 0)}},                    // counts differ
      {{V(0, 0), V(1, 0)}, {V(1, 0), V(1, 0), V(1, 0)}},  // counts differ
      {{V(0, 0), V(1, nan)}, {V(1, 0), V(1, 0)}},         // not finite
      {{V(0, 0), V(1, 0)}, {V(nan, 0), V(1, 0)}},
  };
  for (const Row& r : badParams)
    EXPECT_THROW(kcHermiteSpline(r.points, r.tangents), kcShapesError::BadParams);
  EXPECT_THROW(kcHermiteSpline({V(2, 2), V(2, 2)}, {V(0, 0), V(0, 0)}), kcShapesError::DegenerateShape);
  // One place with tangents is a loop, not a point.
  kcHermiteSpline loop({V(2, 2), V(2, 2)}, {V(3, 0), V(0, 3)});
  EXPECT_GT(loop.encloseRect().width(), 0.0);
  kcHermiteSpline s(kPoints, kTangents);
  EXPECT_THROW(s.pointsAndTangents(kPoints, {V(1, 1)}), kcShapesError::BadParams);
  EXPECT_EQ(s, kcHermiteSpline(kPoints, kTangents));
  std::vector<V> t2 = kTangents;
  t2[1] = V(0, 0);
  s.pointsAndTangents(kPoints, t2);
  EXPECT_NE(s, kcHermiteSpline(kPoints, kTangents));
}

TEST(HermiteSpline, DistancesAgainstSampling) {
  kcHermiteSpline s(kPoints, kTangents);
  expectDistancesMatchSampling(s, probeGrid(s.encloseRect(), 2.0, 8), 0.001, 1e-5);
  expectEncloseRectMatchesSampling(s, 0.001, 1e-6);
}

TEST(HermiteSpline, ArchiveRoundTripAndErrors) {
  kcHermiteSpline s(kPoints, kTangents);
  expectRoundTrip(s);
  expectUnknownVersion(s, "foundation/shapes/hermitespline");
  expectTruncationCorrupt(s);
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 16 * 4 + 4 + 8);  // a tangent
  kcMemArchive ar;
  ar || s;
  EXPECT_EQ(ar.bytes().size(), 1 + 4 + 16 * 4 + 4 + 16 * 4u);
  // Tangent count that differs from the point count.
  Bytes bytes = storeByHandle(s);
  std::size_t tangentCount = bodyOffset(s) + 4 + 16 * 4;
  bytes[tangentCount] = 3;
  bytes.resize(bytes.size() - 16);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
