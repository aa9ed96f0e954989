#include "foundation/shapes/bezier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/shape_testing.h"
#include "tests/foundation/shapes/spline_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

V casteljau(const kcBezierCurve::ControlPoints& c, double t) {
  return spline_testing::casteljau(c.data(), t);
}

double bruteDistance(const kcBezierCurve::ControlPoints& c, const V& p) {
  return spline_testing::bruteDistance(std::vector<V>(c.begin(), c.end()), p, 4000);
}

struct CurveCase {
  const char* name;
  kcBezierCurve::ControlPoints points;
};

const CurveCase kCurves[] = {
    {"arch", {V(0, 0), V(1, 3), V(4, 3), V(5, 0)}},
    {"s-curve", {V(-2, 1), V(3, 5), V(-1, -4), V(4, 2)}},
    {"loop", {V(0, 0), V(6, 4), V(-2, 4), V(4, 0)}},
    {"cusp", {V(0, 0), V(4, 3), V(0, 3), V(4, 0)}},
    {"closed", {V(1, 1), V(5, 6), V(-3, 6), V(1, 1)}},
    {"straight", {V(0, 0), V(1, 1), V(2, 2), V(3, 3)}},
    {"doubled-back", {V(0, 0), V(3, 0), V(-1, 0), V(2, 0)}},
    {"first-legs-zero", {V(2, 2), V(2, 2), V(2, 2), V(5, -1)}},
    {"tiny-far", {V(1e6, 1e6), V(1e6 + 1e-3, 1e6 + 2e-3), V(1e6 + 3e-3, 1e6), V(1e6 + 4e-3, 1e6 + 1e-3)}},
};

class BezierGeometry : public ::testing::TestWithParam<CurveCase> {};

TEST_P(BezierGeometry, PointsFollowDeCasteljau) {
  kcBezierCurve b(GetParam().points);
  for (int i = 0; i <= 20; ++i) {
    double t = i / 20.0;
    V expected = casteljau(GetParam().points, t);
    EXPECT_NEAR(b.pointAt(t).x(), expected.x(), 1e-12 * (1 + std::fabs(expected.x())));
    EXPECT_NEAR(b.pointAt(t).y(), expected.y(), 1e-12 * (1 + std::fabs(expected.y())));
  }
  EXPECT_EQ(b.startPoint(), GetParam().points[0]);
  EXPECT_EQ(b.endPoint(), GetParam().points[3]);
}

TEST_P(BezierGeometry, NearestPointMatchesBruteForce) {
  const auto& c = GetParam().points;
  kcBezierCurve b(c);
  kcRect box = b.encloseRect();
  double size = std::max(box.width(), box.height());
  for (const V& p : probeGrid(box, 0.5 * size, 12)) {
    double ref = bruteDistance(c, p);
    double d = b.distanceToPoint(p);
    // The control points themselves carry the rounding of their coordinates.
    double ulps = 1e-15 * (std::fabs(c[0].x()) + std::fabs(c[0].y()));
    EXPECT_NEAR(d, ref, 1e-9 * (size + ref) + ulps) << GetParam().name << " probe " << p.x() << "," << p.y();
    // The nearest point lies on the curve: at its own parameter.
    V q = b.nearestPoint(p);
    EXPECT_LE(q.distance(b.pointAt(b.nearestParam(p))), 1e-12 * size + 2 * ulps);
    EXPECT_NEAR(p.distance(q), d, 1e-12 * (size + d) + 2 * ulps);
  }
}

TEST_P(BezierGeometry, EncloseRectIsTheSampledBox) {
  const auto& c = GetParam().points;
  kcBezierCurve b(c);
  kcRect box;
  for (int i = 0; i <= 100000; ++i) box.enclose(casteljau(c, i / 100000.0));
  kcRect r = b.encloseRect();
  double tol = 1e-8 * (1 + std::max(box.width(), box.height())) + 1e-9 * std::fabs(c[0].x());
  EXPECT_NEAR(r.xMin(), box.xMin(), tol);
  EXPECT_NEAR(r.yMin(), box.yMin(), tol);
  EXPECT_NEAR(r.xMax(), box.xMax(), tol);
  EXPECT_NEAR(r.yMax(), box.yMax(), tol);
}

TEST_P(BezierGeometry, SamplesAreCloseAndOnTheCurve) {
  kcBezierCurve b(GetParam().points);
  double spacing = 0.05 * std::max(b.encloseRect().width(), b.encloseRect().height());
  expectSampleSpacing(b, spacing);
  std::vector<V> pts = samples(b, spacing);
  EXPECT_EQ(pts.front(), b.startPoint());
  EXPECT_EQ(pts.back(), b.endPoint());
  for (const V& p : pts) EXPECT_LE(b.distanceToPoint(p), 1e-9 * (1 + spacing));
}

TEST_P(BezierGeometry, MapIsTheCurveOfMappedControlPoints) {
  const auto& c = GetParam().points;
  kcBezierCurve b(c);
  const kcXform<2> xforms[] = {
      kcXform<2>(kcMatrix<2>(2, 1, -0.5, 3), V(4, -7)),  // shear and scale
      kcXform<2>(kcMatrix<2>(-1, 0, 0, 1), V(0, 0)),     // mirror
      kcXform<2>::rotation(kcRadian(0.7)) * kcXform<2>::scale(1, 4),
  };
  for (const kcXform<2>& x : xforms) {
    kcBezierCurve m = b.map(x);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(m.controlPoint(i), x * c[static_cast<std::size_t>(i)]);
    for (int i = 0; i <= 10; ++i) {
      V expected = x * casteljau(c, i / 10.0);
      EXPECT_LE(m.pointAt(i / 10.0).distance(expected), 1e-9 * (1 + expected.len()));
    }
    kcShapePtr shape = b.mapShape(x);
    ASSERT_NE(dynamic_cast<kcBezierCurve*>(shape.get()), nullptr);
    EXPECT_TRUE(*shape == m);
  }
}

INSTANTIATE_TEST_SUITE_P(Curves, BezierGeometry, ::testing::ValuesIn(kCurves), [](const auto& info) {
  std::string n = info.param.name;
  for (char& ch : n)
    if (ch == '-') ch = '_';
  return n;
});

TEST(BezierCurve, DefaultIsTheUnitSegment) {
  kcBezierCurve b;
  EXPECT_EQ(b.startPoint(), V(0, 0));
  EXPECT_EQ(b.endPoint(), V(1, 0));
  EXPECT_DOUBLE_EQ(b.distanceToPoint(V(0.5, 2)), 2.0);
  EXPECT_TRUE(b.isOpenContour());
  EXPECT_FALSE(b.isRegion());
  EXPECT_THROW((void)b.within(V(0, 0)), kcShapesError::NotRegion);
}

TEST(BezierCurve, ConstructionRejectsBadInput) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  EXPECT_THROW(kcBezierCurve(V(1, 1), V(1, 1), V(1, 1), V(1, 1)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcBezierCurve(V(nan, 0), V(1, 1), V(2, 1), V(3, 0)), kcShapesError::BadParams);
  EXPECT_THROW(kcBezierCurve(V(0, 0), V(1, inf), V(2, 1), V(3, 0)), kcShapesError::BadParams);
  // A curve that returns to its start, or whose inner points sit on its ends, is fine.
  EXPECT_NO_THROW(kcBezierCurve(V(1, 1), V(1, 1), V(1, 1), V(2, 1)));
  kcBezierCurve b;
  EXPECT_THROW(b.controlPoints({V(3, 3), V(3, 3), V(3, 3), V(3, 3)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(b, kcBezierCurve());  // unchanged after the refused edit
  EXPECT_THROW((void)b.controlPoint(4), kcShapesError::BadParams);
  EXPECT_THROW((void)b.controlPoint(-1), kcShapesError::BadParams);
  EXPECT_THROW((void)b.split(0.0), kcShapesError::BadParams);
  EXPECT_THROW((void)b.split(1.0), kcShapesError::BadParams);
  // A map that collapses the curve to a point.
  EXPECT_THROW((void)b.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V(1, 1))), kcShapesError::DegenerateShape);
  // A singular map onto a line still leaves a curve.
  EXPECT_NO_THROW((void)kcBezierCurve(V(0, 0), V(1, 3), V(4, 3), V(5, 0)).map(kcXform<2>::scale(1, 0)));
}

TEST(BezierCurve, EndAnglesFollowTheFirstLegThatMoves) {
  struct Row {
    kcBezierCurve curve;
    double start, end;  // radians
  } rows[] = {
      {kcBezierCurve(V(0, 0), V(0, 1), V(1, 1), V(1, 0)), std::numbers::pi / 2, -std::numbers::pi / 2},
      {kcBezierCurve(V(0, 0), V(0, 0), V(1, 1), V(2, 1)), std::numbers::pi / 4, 0.0},
      {kcBezierCurve(V(0, 0), V(0, 0), V(0, 0), V(-1, 0)), std::numbers::pi, std::numbers::pi},
      {kcBezierCurve(V(0, 0), V(2, 0), V(3, -1), V(3, -1)), 0.0, -std::numbers::pi / 4},
  };
  for (const Row& r : rows) {
    EXPECT_NEAR(r.curve.startAngle().toDouble(), r.start, 1e-15);
    EXPECT_NEAR(r.curve.endAngle().toDouble(), r.end, 1e-15);
  }
}

TEST(BezierCurve, SplitHalvesRejoinTheCurve) {
  kcBezierCurve b(V(0, 0), V(1, 3), V(4, 3), V(5, 0));
  auto [left, right] = b.split(0.3);
  EXPECT_EQ(left.startPoint(), b.startPoint());
  EXPECT_EQ(right.endPoint(), b.endPoint());
  EXPECT_EQ(left.endPoint(), right.startPoint());
  for (int i = 0; i <= 10; ++i) {
    double u = i / 10.0;
    EXPECT_LE(left.pointAt(u).distance(b.pointAt(0.3 * u)), 1e-13);
    EXPECT_LE(right.pointAt(u).distance(b.pointAt(0.3 + 0.7 * u)), 1e-13);
  }
}

TEST(BezierCurve, ReverseRunsBackwards) {
  kcBezierCurve b(V(0, 0), V(1, 3), V(4, 3), V(5, 1));
  kcShapePtr r = b.reverse();
  auto* rb = dynamic_cast<kcBezierCurve*>(r.get());
  ASSERT_NE(rb, nullptr);
  EXPECT_EQ(rb->startPoint(), b.endPoint());
  for (int i = 0; i <= 10; ++i) EXPECT_LE(rb->pointAt(i / 10.0).distance(b.pointAt(1 - i / 10.0)), 1e-13);
  EXPECT_NEAR(rb->startAngle().toDouble(),
              (b.endAngle() + kcRadian(std::numbers::pi)).signedNorm().toDouble(), 1e-15);
}

TEST(BezierCurve, NearestPointTiesGoToTheStart) {
  // A symmetric arch: a point on its axis far below is equally near both ends.
  kcBezierCurve b(V(-1, 0), V(-1, 2), V(1, 2), V(1, 0));
  EXPECT_EQ(b.nearestPoint(V(0, -10)), V(-1, 0));
  // The foot of the normal at the apex.
  EXPECT_LE(b.nearestPoint(V(0, 5)).distance(V(0, 1.5)), 1e-12);
}

TEST(BezierCurve, SampleRejectsBadSpacing) {
  kcBezierCurve b;
  std::vector<V> out;
  EXPECT_THROW(b.sample(0.0, out), kcShapesError::BadParams);
  EXPECT_THROW(b.sample(-1.0, out), kcShapesError::BadParams);
  EXPECT_THROW(b.sample(std::numeric_limits<double>::quiet_NaN(), out), kcShapesError::BadParams);
  EXPECT_THROW(b.sample(1e-12, out), kcShapesError::BadParams);  // beyond kMaxSamples
  EXPECT_TRUE(out.empty());
}

TEST(BezierCurve, ArchiveFormIsVersionThenFourPoints) {
  kcBezierCurve b(V(1, 2), V(3, 4), V(5, 6), V(7, 8.5));
  kcMemArchive ar;
  ar || b;
  Bytes expected{0};
  for (double v : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.5}) {
    std::uint64_t bits;
    std::memcpy(&bits, &v, 8);
    for (int i = 0; i < 8; ++i) expected.push_back(static_cast<std::uint8_t>(bits >> (8 * i)));
  }
  EXPECT_EQ(ar.bytes(), expected);
}

TEST(BezierCurve, ArchiveRoundTripAndErrors) {
  kcBezierCurve b(V(1, 2), V(3, -4), V(5, 6), V(-7, 8));
  expectRoundTrip(b);
  expectUnknownVersion(b, "foundation/shapes/bezier");
  expectTruncationCorrupt(b);
  for (std::size_t i = 0; i < 8; ++i) expectNaNCorrupt(b, bodyOffset(b) + 8 * i);
  // Four coincident points in the archive.
  Bytes bytes = storeByHandle(b);
  for (std::size_t i = 0; i < 8; ++i) patchDouble(bytes, bodyOffset(b) + 8 * i, 1.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  // A refused load leaves the target as it was.
  kcBezierCurve target(V(0, 0), V(1, 1), V(2, 1), V(3, 0));
  kcMemArchive ar(Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(versionOffset(b)), bytes.end()));
  EXPECT_THROW(ar || target, kcArchive::Corrupt);
  EXPECT_EQ(target, kcBezierCurve(V(0, 0), V(1, 1), V(2, 1), V(3, 0)));
}

}  // namespace
