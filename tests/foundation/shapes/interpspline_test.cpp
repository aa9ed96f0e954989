#include "foundation/shapes/interpspline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/foundation/shapes/shape_testing.h"
#include "tests/foundation/shapes/spline_testing.h"

namespace {

using namespace shape_testing;
using spline_testing::maxGap;
using V = kcVector<2>;

// Second derivatives of a Bezier piece at its ends.
V secondAtStart(const V* c) { return 6.0 * (c[0] - 2.0 * c[1] + c[2]); }
V secondAtEnd(const V* c) { return 6.0 * (c[1] - 2.0 * c[2] + c[3]); }

struct PointsCase {
  const char* name;
  std::vector<V> points;
};

const PointsCase kCases[] = {
    {"two", {V(0, 0), V(3, 4)}},
    {"three", {V(0, 0), V(2, 3), V(5, -1)}},
    {"zigzag", {V(0, 0), V(1, 2), V(2, -1), V(3, 3), V(4, 0), V(5, 1)}},
    {"repeat", {V(0, 0), V(1, 1), V(1, 1), V(3, 0)}},
    {"closed", {V(0, 0), V(4, 0), V(4, 4), V(0, 4), V(0, 0)}},
};

class InterpCases : public ::testing::TestWithParam<PointsCase> {};

TEST_P(InterpCases, PassesThroughThePointsTwiceSmooth) {
  const std::vector<V>& q = GetParam().points;
  kcInterpSpline s(q);
  const std::vector<V>& b = s.bezierPoints();
  ASSERT_EQ(s.numPieces(), static_cast<long>(q.size() - 1));
  for (std::size_t i = 0; i < q.size(); ++i) EXPECT_EQ(s.pointAt(double(i)), q[i]);
  for (std::size_t i = 1; i + 1 < q.size(); ++i) {
    const V* left = &b[3 * (i - 1)];
    const V* right = &b[3 * i];
    // C1 and C2 at the join.
    EXPECT_LE((3.0 * (left[3] - left[2])).distance(3.0 * (right[1] - right[0])), 1e-12);
    EXPECT_LE(secondAtEnd(left).distance(secondAtStart(right)), 1e-11);
  }
  // Natural ends: no curvature at the first and last point.
  EXPECT_LE(secondAtStart(&b[0]).len(), 1e-11);
  EXPECT_LE(secondAtEnd(&b[b.size() - 4]).len(), 1e-11);
  for (long i = 0; i < static_cast<long>(q.size()); ++i) {
    V expected = i + 1 < static_cast<long>(q.size())
                     ? 3.0 * (b[3 * std::size_t(i) + 1] - b[3 * std::size_t(i)])
                     : 3.0 * (b.back() - b[b.size() - 2]);
    EXPECT_LE(s.tangent(i).distance(expected), 1e-12);
  }
}

TEST_P(InterpCases, MapAndReverseAreTheSameCurve) {
  const std::vector<V>& q = GetParam().points;
  kcInterpSpline s(q);
  kcXform<2> x(kcMatrix<2>(2, 0.3, -1, 0.5), V(-6, 2));
  kcShapePtr h = s.mapShape(x);
  auto* m = dynamic_cast<kcInterpSpline*>(h.get());
  ASSERT_NE(m, nullptr);
  std::vector<V> mapped;
  for (const V& p : s.bezierPoints()) mapped.push_back(x * p);
  EXPECT_LE(maxGap(m->bezierPoints(), mapped), 1e-12);
  kcShapePtr r = s.reverse();
  auto* rs = dynamic_cast<kcInterpSpline*>(r.get());
  ASSERT_NE(rs, nullptr);
  std::vector<V> back(s.bezierPoints().rbegin(), s.bezierPoints().rend());
  EXPECT_LE(maxGap(rs->bezierPoints(), back), 1e-12);
}

INSTANTIATE_TEST_SUITE_P(Points, InterpCases, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(InterpSpline, TwoPointsGiveTheEvenSegment) {
  kcInterpSpline s({V(1, 1), V(4, 7)});
  EXPECT_EQ(s.bezierPoints(), (std::vector<V>{V(1, 1), V(2, 3), V(3, 5), V(4, 7)}));
  EXPECT_LE(maxGap(kcInterpSpline().bezierPoints(), kcCubicSpline().bezierPoints()), 1e-15);
}

TEST(InterpSpline, TangentsSolveTheNaturalSystem) {
  std::vector<V> q{V(0, 0), V(1, 2), V(3, 3), V(4, 1), V(6, 2)};
  kcInterpSpline s(q);
  const std::size_t n = q.size() - 1;
  auto D = [&](std::size_t i) { return s.tangent(static_cast<long>(i)); };
  EXPECT_LE((2.0 * D(0) + D(1)).distance(3.0 * (q[1] - q[0])), 1e-12);
  for (std::size_t i = 1; i < n; ++i)
    EXPECT_LE((D(i - 1) + 4.0 * D(i) + D(i + 1)).distance(3.0 * (q[i + 1] - q[i - 1])), 1e-12);
  EXPECT_LE((D(n - 1) + 2.0 * D(n)).distance(3.0 * (q[n] - q[n - 1])), 1e-12);
  EXPECT_THROW((void)s.tangent(5), kcShapesError::BadParams);
}

TEST(InterpSpline, BadInputAndFailedEdits) {
  EXPECT_THROW(kcInterpSpline(std::vector<V>{}), kcShapesError::BadParams);
  EXPECT_THROW(kcInterpSpline({V(1, 2)}), kcShapesError::BadParams);
  EXPECT_THROW(kcInterpSpline({V(1, 2), V(std::numeric_limits<double>::quiet_NaN(), 0)}),
               kcShapesError::BadParams);
  EXPECT_THROW(kcInterpSpline({V(1, 2), V(1, 2), V(1, 2)}), kcShapesError::DegenerateShape);
  kcInterpSpline s({V(0, 0), V(1, 1), V(2, 0)});
  EXPECT_THROW(s.points({V(5, 5), V(5, 5)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(s, kcInterpSpline({V(0, 0), V(1, 1), V(2, 0)}));
}

TEST(InterpSpline, DistancesAgainstSampling) {
  kcInterpSpline s(kCases[2].points);
  expectDistancesMatchSampling(s, probeGrid(s.encloseRect(), 1.5, 8), 0.001, 1e-5);
  expectEncloseRectMatchesSampling(s, 0.001, 1e-6);
}

TEST(InterpSpline, ArchiveRoundTripAndErrors) {
  kcInterpSpline s(kCases[2].points);
  expectRoundTrip(s);
  expectUnknownVersion(s, "foundation/shapes/interpspline");
  expectTruncationCorrupt(s);
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 8);
  kcMemArchive ar;
  ar || s;
  EXPECT_EQ(ar.bytes().size(), 1 + 4 + 16 * kCases[2].points.size());
}

}  // namespace
