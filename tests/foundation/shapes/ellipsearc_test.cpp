#include "foundation/shapes/ellipsearc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <string>

#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

struct ArcCase {
  std::string why;
  kcXform<2> x;
  double start, span;
};

class EllipseArcGeometry : public ::testing::TestWithParam<ArcCase> {
 protected:
  kcEllipseArc arc() const {
    const ArcCase& c = GetParam();
    return kcEllipseArc(kcEllipse(c.x), kcRadian(c.start), kcRadian(c.span));
  }
  ellipse_testing::Curve curve() const {
    return ellipse_testing::matrixCurve(GetParam().x.trans(), GetParam().x.matrix());
  }
  double size() const {
    kcRect box = kcEllipse(GetParam().x).encloseRect();
    return std::max(box.width(), box.height());
  }
};

TEST_P(EllipseArcGeometry, EndsAndDirections) {
  const ArcCase& c = GetParam();
  kcEllipseArc a = arc();
  EXPECT_TRUE(a.isOpenContour());
  EXPECT_FALSE(a.isRegion());
  EXPECT_THROW((void)a.within(V()), kcShapesError::NotRegion);
  EXPECT_LT(a.startPoint().distance(curve()(c.start)), 1e-15 * size());
  EXPECT_LT(a.endPoint().distance(curve()(c.start + c.span)), 1e-15 * size());
  // Travel directions against a difference quotient along the arc.
  double h = 1e-7 * (c.span > 0 ? 1 : -1);
  V ds = curve()(c.start + h) - curve()(c.start);
  V de = curve()(c.start + c.span) - curve()(c.start + c.span - h);
  EXPECT_NEAR(kcRadian(a.startAngle() - ds.angle()).signedNorm().toDouble(), 0.0, 1e-6) << c.why;
  EXPECT_NEAR(kcRadian(a.endAngle() - de.angle()).signedNorm().toDouble(), 0.0, 1e-6) << c.why;
  // The reversed arc runs through the same points the other way.
  kcEllipseArc r = a.reversed();
  EXPECT_EQ(r.startPoint(), a.endPoint());
  EXPECT_LT(r.endPoint().distance(a.startPoint()), 1e-13 * size());
  EXPECT_NEAR(kcRadian(r.startAngle() - a.endAngle() - kcRadian(kPi)).signedNorm().toDouble(), 0.0, 1e-12);
  EXPECT_NE(dynamic_cast<kcEllipseArc*>(a.reverse().get()), nullptr);
}

TEST_P(EllipseArcGeometry, DistancesMatchBruteForceOnTheArc) {
  const ArcCase& c = GetParam();
  kcEllipseArc a = arc();
  double s = size();
  for (V p : ellipse_testing::probes(c.x.trans(), s)) {
    double brute = ellipse_testing::bruteDistance(curve(), c.start, c.span, p);
    EXPECT_NEAR(a.distanceToPoint(p), brute, 1e-9 * s) << c.why << " probe " << p.x() << "," << p.y();
    // The nearest point is on the arc.
    EXPECT_LT(ellipse_testing::bruteDistance(curve(), c.start, c.span, a.nearestPoint(p)), 1e-9 * s) << c.why;
  }
}

TEST_P(EllipseArcGeometry, BoxSamplesAndMaps) {
  const ArcCase& c = GetParam();
  kcEllipseArc a = arc();
  double s = size();
  // The box of a dense parameter scan, ends included.
  kcRect scan;
  for (int i = 0; i <= 200000; ++i) scan.enclose(curve()(c.start + c.span * i / 200000.0));
  kcRect box = a.encloseRect();
  EXPECT_NEAR(box.xMin(), scan.xMin(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.xMax(), scan.xMax(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.yMin(), scan.yMin(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.yMax(), scan.yMax(), 1e-8 * s) << c.why;
  EXPECT_LE(box.xMin(), scan.xMin());
  EXPECT_GE(box.xMax(), scan.xMax());
  std::vector<V> pts = samples(a, 0.01 * s);
  EXPECT_EQ(pts.front(), a.startPoint());
  EXPECT_EQ(pts.back(), a.endPoint());
  expectSampleSpacing(a, 0.01 * s);
  for (kcXform<2> x :
       {kcXform<2>(kcMatrix<2>(1, 2, -1, 0.5), V(3, 4)), kcXform<2>(kcMatrix<2>(-1, 0, 0, 2), V())}) {
    kcEllipseArc image = a.map(x);
    // Exact: the same parameters on the composed transform.
    EXPECT_EQ(image.angleStart().toDouble(), c.start);
    EXPECT_EQ(image.angleSpan().toDouble(), c.span);
    EXPECT_LT(image.startPoint().distance(x * a.startPoint()), 1e-13 * s);
    EXPECT_LT(image.endPoint().distance(x * a.endPoint()), 1e-13 * s);
    expectMapMatchesSamples(a, x, 0.01 * s, 1e-8 * s);
  }
}

// Both forms name the same points in the same order, whatever the mirror.
TEST_P(EllipseArcGeometry, ConvertsToTheSecondFormAndBack) {
  const ArcCase& c = GetParam();
  kcEllipseArc a = arc();
  kcEllipseArc2 second(a);
  double tol = 1e-13 * size();
  EXPECT_LT(second.startPoint().distance(a.startPoint()), tol) << c.why;
  EXPECT_LT(second.endPoint().distance(a.endPoint()), tol) << c.why;
  for (double f : {0.25, 0.5, 0.75}) {
    V mine = curve()(c.start + f * c.span);
    V theirs = second.point(second.angleStart() + second.angleSpan() * f);
    EXPECT_LT(mine.distance(theirs), tol) << c.why << " at " << f;
  }
  EXPECT_EQ(std::fabs(second.angleSpan().toDouble()), std::fabs(c.span));
  EXPECT_EQ(second.angleSpan().toDouble() * c.span < 0, c.x.matrix().determinant() < 0) << c.why;
  EXPECT_GE(second.ellipse().radiusX(), second.ellipse().radiusY());
  // And back: kcEllipseArc(kcEllipseArc2) keeps the second form's angles.
  kcEllipseArc back(second);
  EXPECT_EQ(back.angleStart(), second.angleStart());
  EXPECT_EQ(back.angleSpan(), second.angleSpan());
  EXPECT_LT(back.startPoint().distance(a.startPoint()), tol);
  EXPECT_LT(back.endPoint().distance(a.endPoint()), tol);
}

INSTANTIATE_TEST_SUITE_P(
    Arcs, EllipseArcGeometry,
    ::testing::Values(
        ArcCase{"quarter circle", kcXform<2>(), 0.0, kPi / 2},
        ArcCase{"clockwise across zero", kcXform<2>(kcMatrix<2>::scale(3, 1), V(1, 1)), 0.5, -1.5},
        ArcCase{"sheared, across pi", kcXform<2>(kcMatrix<2>(2, 1.5, 0, 1), V(0, 2)), 2.5, 1.5},
        ArcCase{"mirrored", kcXform<2>(kcMatrix<2>(-3, 0, 0, 1), V(0, 2)), 1.0, 2.0},
        ArcCase{"mirrored, clockwise", kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(-2, 0)), -1.0, -4.0},
        ArcCase{"full turn", kcXform<2>(kcMatrix<2>::scale(2, 1), V()), 1.0, 2 * kPi},
        ArcCase{"full turn backwards", kcXform<2>(kcMatrix<2>(0, 1, 1, 0), V()), 0.0, -2 * kPi},
        ArcCase{"nearly a full turn", kcXform<2>(kcMatrix<2>::scale(2, 1), V()), 0.0, 2 * kPi - 1e-3},
        ArcCase{"lower half", kcXform<2>(kcMatrix<2>::scale(2, 1), V()), kPi, kPi},
        ArcCase{"tiny span", kcXform<2>(kcMatrix<2>::scale(2, 1), V()), 0.3, 1e-6},
        ArcCase{"nearly circular", kcXform<2>(kcMatrix<2>::scale(1, 1 + 1e-11), V()), -2.0, 3.0},
        ArcCase{"thin", kcXform<2>(kcMatrix<2>(50, 0, 50, 0.05), V(1, 1)), 0.2, 2.0},
        ArcCase{"start beyond a turn", kcXform<2>(kcMatrix<2>::scale(2, 1), V()), 13.0, -2.0}),
    [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(EllipseArc, ConstructorRejectsBadAngles) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  kcEllipse e;
  struct Case {
    const char* why;
    std::function<void()> make;
    long error;
  } cases[] = {
      {"zero span", [&] { kcEllipseArc(e, kcRadian(1), kcRadian(0)); }, 0x10000204},
      {"NaN span", [&] { kcEllipseArc(e, kcRadian(1), kcRadian(nan)); }, 0x10000209},
      {"NaN start", [&] { kcEllipseArc(e, kcRadian(nan), kcRadian(1)); }, 0x10000209},
      {"infinite start", [&] { kcEllipseArc(e, kcRadian(HUGE_VAL), kcRadian(1)); }, 0x10000209},
      {"more than a turn", [&] { kcEllipseArc(e, kcRadian(0), kcRadian(7)); }, 0x10000209},
      {"less than minus a turn", [&] { kcEllipseArc(e, kcRadian(0), kcRadian(-7)); }, 0x10000209},
  };
  for (const Case& c : cases) {
    try {
      c.make();
      ADD_FAILURE() << c.why;
    } catch (const kcException& ex) {
      EXPECT_EQ(ex.errorNumber(), c.error) << c.why;
    }
  }
  // 360 degrees converted to radians is a full turn, whatever its rounding.
  EXPECT_NO_THROW(kcEllipseArc(e, kcRadian(0), kcDegree(360.0)));
  kcEllipseArc a(e, kcRadian(0), kcRadian(1));
  EXPECT_THROW(a.angleSpan(kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(a.angleSpan().toDouble(), 1.0);
  kcEllipseArc d;
  EXPECT_EQ(d, kcEllipseArc(kcEllipse(), kcRadian(0), kcRadian(2 * kPi)));
}

TEST(EllipseArc, NearestPointTiesGoToTheStart) {
  // The right half of the unit circle, probed from the left: both ends are
  // nearest.
  kcEllipseArc right(kcEllipse(), kcRadian(-kPi / 2), kcRadian(kPi));
  EXPECT_LT(right.nearestPoint(V(-1, 0)).distance(V(0, -1)), 1e-15);
  EXPECT_LT(right.reversed().nearestPoint(V(-1, 0)).distance(V(0, 1)), 1e-15);
  // The centre of a circular arc: every point is nearest, the start wins.
  kcEllipseArc quarter(kcEllipse(kcXform<2>::scale(2, 2)), kcRadian(1.0), kcRadian(0.5));
  EXPECT_EQ(quarter.nearestPoint(V()), quarter.startPoint());
  EXPECT_EQ(quarter.reversed().nearestPoint(V()), quarter.endPoint());
}

TEST(EllipseArc, LowerHalfProbedJustAboveTheAxis) {
  // The foot on the lower branch, mirror of the global one, is the nearest
  // point of this arc; it must be found also for probes a hair off the axis.
  kcEllipseArc lower(kcEllipse(kcXform<2>::scale(2, 1)), kcRadian(kPi), kcRadian(kPi));
  for (double y : {1e-3, 1e-10, 1e-14, 1e-17, 1e-20, 1e-40, 1e-150}) {
    V p(0.5, y);
    double brute = ellipse_testing::bruteDistance(ellipse_testing::matrixCurve(V(), kcMatrix<2>::scale(2, 1)),
                                                  kPi, kPi, p);
    EXPECT_NEAR(lower.distanceToPoint(p), brute, 1e-12) << y;
    EXPECT_LT(lower.nearestPoint(p).y(), -0.5) << y;
  }
}

// A clockwise circular arc as the wireframe arcs express it: the circle with
// reversed sense, both angles negated, then mapped.
TEST(EllipseArc, ClockwiseCircleArcByReversedSense) {
  V center(1, 2);
  double radius = 3, start = 0.4, span = -2.0;
  kcXform<2> outer(kcMatrix<2>(1, 0.5, 0, 2), V(5, 0));
  kcEllipse reversed(kcXform<2>(kcMatrix<2>::scale(radius, -radius), center));
  kcEllipseArc arc = kcEllipseArc(reversed, kcRadian(-start), kcRadian(-span)).map(outer);
  auto circle = [&](double t) { return outer * (center + V(std::cos(t), std::sin(t)) * radius); };
  EXPECT_LT(arc.startPoint().distance(circle(start)), 1e-14);
  EXPECT_LT(arc.endPoint().distance(circle(start + span)), 1e-14);
  EXPECT_LT(arc.point(kcRadian(-start - 0.5 * span)).distance(circle(start + 0.5 * span)), 1e-14);
  EXPECT_GT(arc.angleSpan().toDouble(), 0.0);
}

TEST(EllipseArc, Archive) {
  kcEllipseArc a(kcEllipse(kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(-2, 0))), kcRadian(-1), kcRadian(-4));
  expectRoundTrip(a);
  expectUnknownVersion(a, "foundation/shapes/ellipsearc");
  expectTruncationCorrupt(a);
  // Body: version 0, the ellipse (version 0, six doubles), start, span.
  Bytes bytes = storeByHandle(a);
  ASSERT_EQ(bytes.size(), bodyOffset(a) + 1 + 48 + 16);
  EXPECT_EQ(bytes[bodyOffset(a)], 0);
  std::size_t angles = bodyOffset(a) + 1 + 48;
  expectNaNCorrupt(a, angles);
  expectNaNCorrupt(a, angles + 8);
  expectNaNCorrupt(a, bodyOffset(a) + 1);
  bytes[bodyOffset(a)] = 1;  // the nested ellipse's version
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::UnknownVersion);
  for (double bad : {0.0, 7.0}) {
    Bytes b = storeByHandle(a);
    patchDouble(b, angles + 8, bad);
    EXPECT_THROW((void)loadByHandle(b), kcArchive::Corrupt) << bad;
  }
}

}  // namespace
