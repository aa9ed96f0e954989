#include "dispc/wrfm/arc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <sstream>
#include <type_traits>
#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using V = kcVector<2>;
using L = kc2SegmentLine;
using A = kc2SegmentArc;
using dispc_test::Bytes;

constexpr double kPi = std::numbers::pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

kcDegree deg(double d) { return kcDegree(d); }

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << b.x() << "," << b.y();
}

// The two angles name the same direction.
void expectSameDirection(const kcDegree& a, double b, double tol = 1e-11) {
  EXPECT_NEAR(std::remainder(a.toDouble() - b, 360.0), 0.0, tol) << a.toDouble() << " vs " << b;
}

V polar(const V& c, double r, double degrees) {
  return c + r * V(std::cos(degrees * kPi / 180), std::sin(degrees * kPi / 180));
}

std::vector<V> samples(const A& a, int n = 4000) {
  std::vector<V> out;
  for (int i = 0; i <= n; ++i) out.push_back(a.segPoint(static_cast<double>(i) / n));
  return out;
}

// --- construction ---

TEST(SegmentArc, ArcThroughTwoPointsWorkedExamples) {
  const double r2 = std::sqrt(2.0);
  // From (0, 0) to (2, 0): {span, centre y, start angle, y of the middle point}; the centre x is 1.
  const double rows[][4] = {{90, 1, -135, 1 - r2},
                            {-90, -1, 135, -1 + r2},
                            {270, -1, 135, -1 - r2},
                            {-270, 1, -135, 1 + r2},
                            {180, 0, 180, -1}};
  for (const auto& r : rows) {
    SCOPED_TRACE(r[0]);
    A a(V(0, 0), V(2, 0), deg(r[0]));
    expectNear(a.center(), V(1, r[1]));
    EXPECT_NEAR(a.radius_(), std::hypot(1.0, r[1]), 1e-15);
    expectSameDirection(a.startAngle_(), r[2], 1e-12);
    EXPECT_EQ(a.angleSpan().toDouble(), r[0]);
    EXPECT_TRUE(a.xform().isIdentity());
    expectNear(a.p1(), V(0, 0));
    expectNear(a.p2(), V(2, 0));
    expectNear(a.midPoint(), V(1, r[3]));
  }
}

TEST(SegmentArc, DegenerateConstructionIsRejected) {
  // Zero span, at the zero tolerance, beyond a turn, not a number; then coincident points.
  for (double span : {0.0, -1e-15, 360.0, -360.0, 360.000001, kNaN})
    EXPECT_THROW(A(V(0, 0), V(2, 0), deg(span)), kcShapesError::DegenerateShape) << span;
  EXPECT_THROW(A(V(0, 0), V(0, 0), deg(90)), kcShapesError::DegenerateShape);
  for (double span : {2e-15, 359.9, -359.9}) EXPECT_NO_THROW(A(V(0, 0), V(2, 0), deg(span))) << span;
  for (double r : {0.0, -1.0, kNaN})
    EXPECT_THROW(A(V(), r, deg(0), deg(90)), kcShapesError::DegenerateShape) << r;
  A unit;  // the unit circle
  EXPECT_TRUE(unit.center_() == V() && unit.radius_() == 1 && unit.angleSpan_().toDouble() == 360);
}

// --- client-space queries ---

TEST(SegmentArc, ClientQueriesUnderASimilarityDescribeTheMappedCircle) {
  // Scale 3, turn 40 degrees, shift: the image is the arc of radius 6 from 70 over 120 degrees.
  kcXform<2> sim = kcXform<2>(kcMatrix<2>::rotation(deg(40)), V(5, -3)) * kcXform<2>::scale(3, 3);
  A a = sim * A(V(1, 2), 2.0, deg(30), deg(120));
  V c = sim * V(1, 2);
  A same(c, 6.0, deg(70), deg(120));
  expectNear(a.center(), c);
  EXPECT_NEAR(a.radius(deg(200)), 6.0, 1e-12);
  expectSameDirection(a.endAngle(), 190);
  expectSameDirection(a.angle(0.25), 100);
  EXPECT_NEAR(a.angleSpan().toDouble(), 120.0, 1e-12);
  expectNear(a.arcPoint(deg(-10)), polar(c, 6, -10));
  expectNear(a.segPoint(1.5), polar(c, 6, 250));  // not clamped
  expectSameDirection(a.midDirection(), 220);
  EXPECT_NEAR(a.length(), 4 * kPi, 1e-12);
  EXPECT_NEAR(a.segmentLength(), 6 * std::sqrt(3.0), 1e-12);
  for (V pt : {V(0, 0), V(9, 9), polar(c, 2, 250), polar(c, 0.5, 75)})
    expectNear(a.closestPoint(pt), same.closestPoint_(pt), 1e-11);
  expectNear(a.centerOfMass(), same.centerOfMass_(), 1e-11);
}

TEST(SegmentArc, MappedSweep) {
  A a(V(1, 1), 2.0, deg(30), deg(60));
  A m = kcXform<2>::scale(1, -1) * a;  // a mirror reverses the sweep
  EXPECT_NEAR(m.angleSpan().toDouble(), -60.0, 1e-12);
  expectSameDirection(m.startAngle(), -30);
  expectSameDirection(m.startDirection(), -120);
  EXPECT_TRUE(m.validAngle(deg(-45), false) && !m.validAngle(deg(45), true));
  kcXform<2> swap(kcMatrix<2>(0, 1, 1, 0), V());
  EXPECT_NEAR((swap * A(V(), 1, deg(10), deg(-250))).angleSpan().toDouble(), 250.0, 1e-12);
  kcXform<2> halfTurn(kcMatrix<2>(-1, 1e-17, 1e-17, -1), V());  // rounding noise, no mirror
  EXPECT_NEAR((halfTurn * a).angleSpan().toDouble(), 60.0, 1e-12);
  // Under a stretch the exact value comes from the mapped ends, the turns from the stored span.
  auto mapped = [](double t) {
    return std::atan2(std::sin(t * kPi / 180), 2 * std::cos(t * kPi / 180)) * 180 / kPi;
  };
  const double rows[][3] = {
      {30, 60, 90 - mapped(30)}, {0, -270, -270}, {-40, -100, mapped(-140) - mapped(-40)}};
  for (const auto& r : rows)
    EXPECT_NEAR((kcXform<2>::scale(2, 1) * A(V(), 1, deg(r[0]), deg(r[1]))).angleSpan().toDouble(), r[2],
                1e-11);
}

TEST(SegmentArc, DirectionsAndTangentsFollowTheCurve) {
  kcXform<2> shear(kcMatrix<2>(2.0, 0.7, -0.3, 1.2), V(4, 1));
  for (double span : {100.0, -100.0})
    for (double t : {0.0, 0.3, 1.0}) {
      A a = shear * A(V(1, 0), 1.5, deg(20), deg(span));
      V step = a.segPoint(t + 1e-7) - a.segPoint(t);
      expectSameDirection(a.direction(t), kcDegree(step.angle()).toDouble(), 1e-5);
      expectNear(a.tangent(t).point(), a.segPoint(t));
      EXPECT_NEAR(a.tangent(a.angle(t)).direction().cross(step.unit()), 0.0, 1e-6);
    }
}

TEST(SegmentArc, CentreOfMassAndBoundingBoxAgainstSampling) {
  expectNear(A(V(1, 1), 3, deg(180), deg(-180)).centerOfMass_(), V(1, 1 + 6 / kPi));
  kcXform<2> x(kcMatrix<2>(1.5, -0.4, 0.8, 0.6), V(-3, 2));
  for (const A& arc : {A(V(-2, 0.5), 1.7, deg(-60), deg(135)), A(V(2, 1), 2, deg(170), deg(-200)),
                       A(V(-1, 4), 0.5, deg(45), deg(360))}) {
    V sum;
    const int n = 20000;
    for (int i = 0; i < n; ++i) sum += arc.segPoint_((i + 0.5) / n);
    expectNear(arc.centerOfMass_(), sum / n, 1e-8);
    expectNear((x * arc).centerOfMass(), x * arc.centerOfMass_());
    for (const A& a : {arc, x * arc}) {
      kcRect box, got = a.boundingBox();
      for (const V& p : samples(a)) box.enclose(p);
      expectNear(got.origin(), box.origin(), 1e-6);
      expectNear(got.size(), box.size(), 1e-6);
    }
  }
}

// --- angle and point tests ---

TEST(SegmentArc, ValidAngleToleratesAFractionOfTheSweepAtTheEnds) {
  // {start, span, angle, inclusive, exclusive}; the tolerance is 1e-13 of the sweep.
  const double rows[][5] = {{0, 90, 45, 1, 1},         {0, 90, 450, 1, 0},   {0, 90, 90 + 5e-12, 1, 0},
                            {0, 90, 90 + 2e-11, 0, 0}, {0, 90, 2e-11, 1, 1}, {10, -90, -45, 1, 1},
                            {10, -90, 45, 0, 0},       {370, 90, 50, 1, 1},  {0, -400, 17, 1, 1}};
  for (const auto& r : rows) {
    A a(V(), 1.0, deg(r[0]), deg(r[1]));
    EXPECT_EQ(a.validAngle_(deg(r[2]), true), r[3] != 0) << r[0] << " " << r[1] << " " << r[2];
    EXPECT_EQ(a.validAngle_(deg(r[2]), false), r[4] != 0) << r[0] << " " << r[1] << " " << r[2];
  }
}

TEST(SegmentArc, ClosestPointAgainstDenseSampling) {
  A a(V(0, 0), 1.0, deg(0), deg(90));
  EXPECT_EQ(A(V(0, 0), 1, deg(100), deg(90)).closestPoint_(V(0, 0)), V(1, 0));  // the centre
  EXPECT_EQ(a.closestPoint_(V(-1, -1)), a.p1_());                               // a tie: the start point
  A b(V(1, -1), 2.0, deg(200), deg(-130));
  for (V pt : {V(0, 0), V(5, 5), V(-4, 1), V(1, -3.5), V(1, -1.1), V(3, -1)}) {
    double best = 1e300;
    for (const V& p : samples(b)) best = std::min(best, pt.distance(p));
    EXPECT_LE(b.distToPoint(pt), best + 1e-12);
    EXPECT_NEAR(b.distToPoint(pt), best, 1e-5);
  }
  // validPoint inverse-maps twice: a point of the shifted arc fails, one shifted twice passes.
  V on = a.arcPoint_(deg(30));
  EXPECT_TRUE(a.validPoint(on, false) && !a.validPoint(on * (1 + 1e-12), false));
  A shifted = kcXform<2>::translation(V(0.25, 0)) * a;
  EXPECT_TRUE(!shifted.validPoint(on + V(0.25, 0), false) && shifted.validPoint(on + V(0.5, 0), false));
  // inRange tests only the direction from the centre.
  EXPECT_TRUE(a.inRange(V(0.1, 0.1), false) && a.inRange(V(9, 0), true) && !a.inRange(V(9, 0), false));
  EXPECT_FALSE(a.inRange(V(0, 0), true));
}

// --- intersections ---

// Checks the count and that every crossing lies on both curves.
template <class Other>
void expectCrossings(const A& a, const Other& other, bool flag, std::size_t n) {
  auto points = a.intersection(other, flag);
  ASSERT_EQ(points.size(), n);
  for (const V& p : points) {
    EXPECT_NEAR(a.distToPoint(p), 0.0, 1e-9);
    if constexpr (std::is_same_v<Other, kcFLine>)
      EXPECT_NEAR(other.signedDistance(p), 0.0, 1e-9);
    else
      EXPECT_NEAR(other.distToPoint(p), 0.0, 1e-9);
  }
}

TEST(SegmentArc, Crossings) {
  A upper(V(0, 0), 1.0, deg(0), deg(180)), circle;
  expectCrossings(upper, L(V(2, 0.5), V(-2, 0.5)), false, 2);
  expectCrossings(upper, L(V(0, 0.5), V(-2, 0.5)), false, 1);  // the line's own range
  expectCrossings(upper, L(V(-2, 1), V(2, 1)), true, 1);       // tangent
  expectCrossings(upper, L(V(-2, 0), V(2, 0)), false, 2);      // end points count only without the flag
  expectCrossings(upper, L(V(-2, 0), V(2, 0)), true, 0);
  expectCrossings(upper, kcFLine(V(0, 2), kcDegree(90)), false, 1);
  A quadrant = kcXform<2>::scale(2, 1) * A(V(), 1, deg(0), deg(90));
  expectCrossings(quadrant, kcFLine(V(-7, 0.5), kcDegree(0)), false, 1);
  expectCrossings(quadrant, L(V(0, 0), V(3, 3)), false, 1);
  // Circles crossing, touching outside and inside, apart; arcs sharing end points of one circle.
  expectCrossings(circle, A(V(1, 0), 1, deg(0), deg(360)), false, 2);
  expectCrossings(circle, A(V(2, 0), 1, deg(0), deg(360)), true, 1);
  expectCrossings(A(V(), 2, deg(0), deg(360)), A(V(1, 0), 1, deg(0), deg(360)), false, 1);
  expectCrossings(upper, A(V(1, 0), 1, deg(-90), deg(-90)), false, 0);
  A first(V(1, 1), 2.0, deg(0), deg(90));
  expectCrossings(first, A(V(1, 1), 2, deg(90), deg(90)), false, 1);
  expectCrossings(first, A(V(1, 1), 2, deg(90), deg(90)), true, 0);
  expectCrossings(first, A(V(1, 1), 2, deg(135), deg(-90)), false, 2);
  // x^2 + y^2 = 1 meets x^2/4 + 4y^2 = 1 four times, also when both are mapped alike.
  kcXform<2> x(kcMatrix<2>(2.0, 0.5, -0.3, 0.8), V(1, 2));
  expectCrossings(circle, kcXform<2>::scale(2, 0.5) * circle, false, 4);
  expectCrossings(x * circle, x * (kcXform<2>::scale(2, 0.5) * circle), false, 4);
  expectCrossings(circle, kcXform<2>::scale(1, 0.5) * circle, false, 2);  // touching
}

// --- equality, conversions, transforms ---

TEST(SegmentArc, EqualityComparesTheMappedFigure) {
  A a(V(1, 2), 2.0, deg(30), deg(60));
  EXPECT_TRUE(a == kcXform<2>::scale(2, 2) * A(V(0.5, 1), 1, deg(30), deg(60)));
  EXPECT_TRUE(A(V(), 1, deg(180), deg(90)) == A(V(), 1, deg(-180), deg(90)));
  for (const A& other : {A(V(1, 2), 2, deg(30 + 1e-13), deg(60)), A(V(1, 2), 2, deg(30), deg(420)),
                         A(V(1, 2 - 1e-14), 2, deg(30), deg(60)), A(V(1, 2), 2 + 1e-14, deg(30), deg(60))})
    EXPECT_TRUE(a != other && !(a == other));
  A quarter(V(), 1.0, deg(0), deg(90));  // only the end radius differs
  EXPECT_FALSE(quarter == kcXform<2>::scale(1, 1.5) * quarter);
}

TEST(SegmentArc, EllipseArcConversionsRoundTrip) {
  for (double span : {75.0, -75.0, 360.0}) {
    A a(V(2, -1), 1.5, deg(20), deg(span));
    expectNear(a.ellipseArc().startPoint(), a.p1());
    expectNear(a.ellipseArc2().endPoint(), a.p2());
    EXPECT_TRUE(A(a.ellipseArc()) == a && A(a.ellipseArc()).xform().isIdentity()) << span;
  }
  // A general elliptic arc, either way round, and the second form.
  kcEllipse general(kcXform<2>(kcMatrix<2>(2.0, 0.5, -0.3, 0.7), V(4, 5)));
  for (double span : {2.5, -2.5}) {
    kcEllipseArc e(general, kcRadian(0.4), kcRadian(span));
    expectNear(A(e).p1(), e.startPoint());
    expectNear(A(e).segPoint(0.5), e.point(kcRadian(0.4 + span / 2)));
    expectNear(A(e).ellipseArc().endPoint(), e.endPoint());
  }
  kcEllipseArc2 e2(kcEllipse2(3.0, 1.0, kcRadian(0.3), V(1, 1)), kcRadian(-1.0), kcRadian(2.0));
  expectNear(A(e2).segPoint(0.5), e2.point(kcRadian(0.0)));
  expectNear(A(e2).ellipseArc2().endPoint(), e2.endPoint());
}

TEST(SegmentArc, TransformsComposeAndKeepTheFields) {
  A a = kcXform<2>::translation(V(1, 0)) * A(V(1, 2), 2.0, deg(30), deg(-60));
  kc2Rigid r(kcDegree(-20), V(-1, 2));
  EXPECT_TRUE((r * a).center_() == a.center_() && (r * a).angleSpan_() == a.angleSpan_());
  EXPECT_TRUE((r * a).xform() == r.xform() * a.xform());
}

// --- printing and archive ---

TEST(SegmentArc, PrintWritesClientSpaceValues) {
  std::wostringstream out;
  out << A(V(0, 0), V(2, 0), deg(90));
  EXPECT_EQ(out.str(), L"center=1 1\nradius=1.41421\nstartAngle=-135\nangleSpan=90\n\n");
  std::wostringstream mirrored;
  mirrored << kcXform<2>(kcMatrix<2>(-2, 0, 0, 2), V(1, 0)) * A(V(1, 1), 1, deg(0), deg(45));
  EXPECT_EQ(mirrored.str(), L"center=-1 2\nradius=2\nstartAngle=180\nangleSpan=-45\n\n");
}

TEST(SegmentArcArchive, FormsRoundTripAndBadData) {
  using dispc_test::doubles;
  using dispc_test::stored;
  kcXform<2> x(kcMatrix<2>(1, 2, 3, 4), V(5, 6));
  const Bytes v1 = doubles(1, {-1, 0.5, 2.5, 370, -45, 1, 2, 3, 4, 5, 6});
  EXPECT_EQ(stored(x * A(V(-1, 0.5), 2.5, deg(370), deg(-45))), v1);
  EXPECT_EQ(stored(dispc_test::loaded(v1, A())), v1);
  // Version 0 loads with the identity.
  EXPECT_EQ(stored(dispc_test::loaded(doubles(0, {3, 4, 1.5, 10, 20}), kcXform<2>::scale(3, 3) * A())),
            doubles(1, {3, 4, 1.5, 10, 20, 1, 0, 0, 1, 0, 0}));
  const A keep(V(7, 7), 3.0, deg(1), deg(2));
  dispc_test::expectUnknownVersion(doubles(2, {0, 0, 1, 0, 90}), keep, "dispc/wrfm/arc", 147);
  for (double radius : {0.0, -2.0, kNaN})
    dispc_test::expectRefused<kcArchive::Corrupt>(doubles(1, {0, 0, radius, 0, 90, 1, 0, 0, 1, 0, 0}), keep);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(v1.begin(), v1.end() - 3), keep);
}

}  // namespace
