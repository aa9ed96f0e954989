#include "foundation/shapes/deboorspline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

// The clamped uniform B-spline of the points at u in [0, spans], by de Boor's
// algorithm on its knot vector: an evaluation that never forms Bezier pieces.
V deBoorEval(const std::vector<V>& pts, double u) {
  const int n = int(pts.size()) - 1, p = std::min(3, n), spans = n - p + 1;
  std::vector<double> knots(std::size_t(p + 1), 0.0);
  for (int i = 1; i < spans; ++i) knots.push_back(i);
  knots.insert(knots.end(), std::size_t(p + 1), double(spans));
  int k = p;
  while (k < n && u >= knots[std::size_t(k + 1)]) ++k;
  std::vector<V> d(pts.begin() + (k - p), pts.begin() + (k + 1));
  for (int r = 1; r <= p; ++r) {
    for (int j = p; j >= r; --j) {
      double lo = knots[std::size_t(j + k - p)], hi = knots[std::size_t(j + 1 + k - r)];
      double a = (u - lo) / (hi - lo);
      d[std::size_t(j)] = (1 - a) * d[std::size_t(j - 1)] + a * d[std::size_t(j)];
    }
  }
  return d[std::size_t(p)];
}

std::vector<V> controlPolygon(std::size_t count) {
  std::vector<V> pts;
  for (double i = 0; i < double(count); ++i)
    pts.emplace_back(2 * i + std::sin(i), 3 * std::cos(1.7 * i) + 0.5 * i);
  return pts;
}

TEST(DeBoorSpline, CurveFollowsDeBoorsAlgorithmForEveryCount) {
  kcXform<2> x(kcMatrix<2>(0.5, 2, -1, 1.5), V(10, -4));
  for (std::size_t count : {2, 3, 4, 5, 6, 9}) {
    std::vector<V> pts = controlPolygon(count);
    kcDeBoorSpline s(pts);
    const long spans = long(count) - s.degree();
    EXPECT_EQ(s.degree(), std::min<long>(3, long(count) - 1));
    EXPECT_EQ(s.numPieces(), spans);
    for (int i = 0; i <= 40; ++i)
      EXPECT_LE(s.pointAt(spans * i / 40.0).distance(deBoorEval(pts, spans * i / 40.0)), 1e-12);
    // Clamped: tangent to the end legs.
    EXPECT_NEAR(s.startAngle().toDouble(), (pts[1] - pts[0]).angle().toDouble(), 1e-12);
    EXPECT_NEAR(s.endAngle().toDouble(), (pts.back() - pts[count - 2]).angle().toDouble(), 1e-12);
    // The image holds the mapped de Boor points.
    kcDeBoorSpline m = s.map(x);
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(m.deBoorPoints()[i], x * pts[i]);
  }
}

TEST(DeBoorSpline, RefusedEditsAndLoads) {
  kcDeBoorSpline s(controlPolygon(5));
  const kcDeBoorSpline before = s;
  EXPECT_THROW(s.deBoorPoints({V(2, 2), V(2, 2)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(s, before);
  EXPECT_EQ(s.bezierPoints(), before.bezierPoints());
  s.deBoorPoints(controlPolygon(7));
  EXPECT_EQ(s, kcDeBoorSpline(controlPolygon(7)));
  EXPECT_EQ(kcDeBoorSpline().bezierForm(), kcCubicSpline());  // both default to the unit segment
  // One stored point, or all at one place, is Corrupt.
  Bytes one = storeByHandle(kcDeBoorSpline());
  one.at(bodyOffset(s)) = 1;
  one.resize(one.size() - 16);
  EXPECT_THROW((void)loadByHandle(one), kcArchive::Corrupt);
  Bytes same = storeByHandle(kcDeBoorSpline());
  patchDouble(same, bodyOffset(s) + 4 + 16, 0.0);
  EXPECT_THROW((void)loadByHandle(same), kcArchive::Corrupt);
  // Loaded through a cubic spline handle it keeps its class.
  kcMemArchive in(storeByHandle(before));
  kcPtrHandle<kcCubicSpline> h;
  in || h;
  ASSERT_TRUE(kfDynamicCast<kcDeBoorSpline>(h));
  EXPECT_EQ(h->bezierPoints(), before.bezierPoints());
}

}  // namespace
