#include "foundation/shapes/deboorspline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/foundation/shapes/shape_testing.h"
#include "tests/foundation/shapes/spline_testing.h"

namespace {

using namespace shape_testing;
using spline_testing::maxGap;
using V = kcVector<2>;

// The clamped uniform B-spline of the points at u in [0, spans], by de Boor's
// algorithm on its knot vector: an evaluation that never forms Bezier pieces.
V deBoorEval(const std::vector<V>& pts, double u) {
  const int n = static_cast<int>(pts.size()) - 1, p = std::min(3, n), spans = n - p + 1;
  std::vector<double> knots(static_cast<std::size_t>(p + 1), 0.0);
  for (int i = 1; i < spans; ++i) knots.push_back(i);
  knots.insert(knots.end(), static_cast<std::size_t>(p + 1), double(spans));
  int k = p;
  while (k < n && u >= knots[static_cast<std::size_t>(k + 1)]) ++k;
  std::vector<V> d(static_cast<std::size_t>(p + 1));
  for (int j = 0; j <= p; ++j) d[static_cast<std::size_t>(j)] = pts[static_cast<std::size_t>(j + k - p)];
  for (int r = 1; r <= p; ++r) {
    for (int j = p; j >= r; --j) {
      double lo = knots[static_cast<std::size_t>(j + k - p)],
             hi = knots[static_cast<std::size_t>(j + 1 + k - r)];
      double a = (u - lo) / (hi - lo);
      d[static_cast<std::size_t>(j)] =
          (1 - a) * d[static_cast<std::size_t>(j - 1)] + a * d[static_cast<std::size_t>(j)];
    }
  }
  return d[static_cast<std::size_t>(p)];
}

std::vector<V> controlPolygon(std::size_t count) {
  std::vector<V> pts;
  for (std::size_t i = 0; i < count; ++i)
    pts.emplace_back(2.0 * double(i) + std::sin(double(i)),
                     3.0 * std::cos(1.7 * double(i)) + 0.5 * double(i));
  return pts;
}

class DeBoorByCount : public ::testing::TestWithParam<std::size_t> {};

TEST_P(DeBoorByCount, CurveFollowsDeBoorsAlgorithm) {
  std::vector<V> pts = controlPolygon(GetParam());
  kcDeBoorSpline s(pts);
  const long spans = static_cast<long>(GetParam()) - 1 - s.degree() + 1;
  EXPECT_EQ(s.degree(), std::min<long>(3, static_cast<long>(GetParam()) - 1));
  EXPECT_EQ(s.numPieces(), spans);
  for (int i = 0; i <= 40; ++i) {
    double u = spans * i / 40.0;
    EXPECT_LE(s.pointAt(u).distance(deBoorEval(pts, u)), 1e-12) << "u = " << u;
  }
  // Clamped: the curve starts and ends on the end points, tangent to the end legs.
  EXPECT_EQ(s.startPoint(), pts.front());
  EXPECT_EQ(s.endPoint(), pts.back());
  EXPECT_NEAR(s.startAngle().toDouble(), (pts[1] - pts[0]).angle().toDouble(), 1e-12);
  EXPECT_NEAR(s.endAngle().toDouble(), (pts.back() - pts[pts.size() - 2]).angle().toDouble(), 1e-12);
}

TEST_P(DeBoorByCount, MapAndReverseAreTheSameCurve) {
  std::vector<V> pts = controlPolygon(GetParam());
  kcDeBoorSpline s(pts);
  kcXform<2> x(kcMatrix<2>(0.5, 2, -1, 1.5), V(10, -4));
  kcShapePtr h = s.mapShape(x);
  auto* m = dynamic_cast<kcDeBoorSpline*>(h.get());
  ASSERT_NE(m, nullptr);
  std::vector<V> mapped;
  for (const V& b : s.bezierPoints()) mapped.push_back(x * b);
  EXPECT_LE(maxGap(m->bezierPoints(), mapped), 1e-12);
  for (std::size_t i = 0; i < pts.size(); ++i) EXPECT_EQ(m->deBoorPoints()[i], x * pts[i]);

  kcShapePtr r = s.reverse();
  auto* rs = dynamic_cast<kcDeBoorSpline*>(r.get());
  ASSERT_NE(rs, nullptr);
  double k = static_cast<double>(s.numPieces());
  for (int i = 0; i <= 20; ++i)
    EXPECT_LE(rs->pointAt(k * i / 20.0).distance(s.pointAt(k - k * i / 20.0)), 1e-12);
}

INSTANTIATE_TEST_SUITE_P(Counts, DeBoorByCount, ::testing::Values(2, 3, 4, 5, 6, 9));

TEST(DeBoorSpline, FourPointsAreOneBezierCurve) {
  std::vector<V> pts{V(0, 0), V(1, 4), V(5, 4), V(6, 1)};
  EXPECT_EQ(kcDeBoorSpline(pts).bezierPoints(), pts);
  // The default is the unit segment, the same curve as the default cubic spline.
  EXPECT_EQ(kcDeBoorSpline().bezierPoints(), kcCubicSpline().bezierPoints());
  EXPECT_EQ(kcDeBoorSpline().bezierForm(), kcCubicSpline());
}

TEST(DeBoorSpline, BadInputAndFailedEdits) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_THROW(kcDeBoorSpline(std::vector<V>{}), kcShapesError::BadParams);
  EXPECT_THROW(kcDeBoorSpline({V(1, 1)}), kcShapesError::BadParams);
  EXPECT_THROW(kcDeBoorSpline({V(1, 1), V(inf, 1)}), kcShapesError::BadParams);
  EXPECT_THROW(kcDeBoorSpline({V(1, 1), V(1, 1), V(1, 1), V(1, 1), V(1, 1)}), kcShapesError::DegenerateShape);
  // Finite points whose Bezier form overflows.
  EXPECT_THROW(kcDeBoorSpline({V(-1.7e308, 0), V(1.7e308, 0), V(-1.7e308, 0)}), kcShapesError::BadParams);
  kcDeBoorSpline s(controlPolygon(5));
  const kcDeBoorSpline before = s;
  EXPECT_THROW(s.deBoorPoints({V(2, 2), V(2, 2)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(s, before);
  EXPECT_EQ(s.bezierPoints(), before.bezierPoints());
  s.deBoorPoints(controlPolygon(7));
  EXPECT_EQ(s, kcDeBoorSpline(controlPolygon(7)));
  EXPECT_NE(s, before);
}

TEST(DeBoorSpline, DistancesAgainstSampling) {
  kcDeBoorSpline s(controlPolygon(7));
  expectDistancesMatchSampling(s, probeGrid(s.encloseRect(), 2.0, 8), 0.001, 1e-5);
  expectEncloseRectMatchesSampling(s, 0.001, 1e-6);
}

TEST(DeBoorSpline, ArchiveHoldsOnlyTheDeBoorPoints) {
  kcDeBoorSpline s(controlPolygon(6));
  expectRoundTrip(s);
  expectUnknownVersion(s, "foundation/shapes/deboorspline");
  expectTruncationCorrupt(s);
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 16 * 2);
  kcMemArchive ar;
  ar || s;
  EXPECT_EQ(ar.bytes().size(), 1 + 4 + 16 * 6u);
  // One point, or all points the same, is Corrupt.
  Bytes one = storeByHandle(kcDeBoorSpline());
  one[bodyOffset(s)] = 1;
  one.resize(one.size() - 16);
  EXPECT_THROW((void)loadByHandle(one), kcArchive::Corrupt);
  Bytes same = storeByHandle(kcDeBoorSpline());
  patchDouble(same, bodyOffset(s) + 4 + 16, 0.0);
  EXPECT_THROW((void)loadByHandle(same), kcArchive::Corrupt);
  // Loaded as a cubic spline handle it keeps its class and curve.
  kcMemArchive in(storeByHandle(s));
  kcPtrHandle<kcCubicSpline> h;
  in || h;
  ASSERT_NE(dynamic_cast<kcDeBoorSpline*>(h.get()), nullptr);
  EXPECT_EQ(h->bezierPoints(), s.bezierPoints());
}

}  // namespace
