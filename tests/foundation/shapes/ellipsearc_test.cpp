#include "foundation/shapes/ellipsearc.h"

#include <gtest/gtest.h>

#include "foundation/shapes/ellipsearc2.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

struct ArcCase {
  const char* why;
  X x;
  double start, span;
};
const ArcCase kArcs[] = {
    {"clockwise across zero", X(kcMatrix<2>::scale(3, 1), V(1, 1)), 0.5, -1.5},
    {"sheared, across pi", X(kcMatrix<2>(2, 1.5, 0, 1), V(0, 2)), 2.5, 1.5},
    {"mirrored", X(kcMatrix<2>(-3, 0, 0, 1), V(0, 2)), 1.0, 2.0},
    {"mirrored, clockwise", X(kcMatrix<2>(1, 2, 3, 1), V(-2, 0)), -1.0, -4.0},
    {"full turn backwards", X(kcMatrix<2>(0, 1, 1, 0), V()), 0.0, -2 * kPi},
    {"start beyond a turn", X(kcMatrix<2>::scale(2, 1), V()), 13.0, -2.0},
};

// Both forms name the same points in the same order, whatever the mirror.
TEST(EllipseArc, ConvertsToTheSecondFormAndBackAndMapsExactly) {
  for (const ArcCase& c : kArcs) {
    kcEllipseArc a(kcEllipse(c.x), kcRadian(c.start), kcRadian(c.span));
    kcEllipseArc2 second(a);
    for (double f : {0.0, 0.25, 0.5, 0.75, 1.0}) {
      V theirs = second.point(second.angleStart() + second.angleSpan() * f);
      EXPECT_LT(ellipseCurve(c.x)(c.start + f * c.span).distance(theirs), 1e-12) << c.why << " at " << f;
    }
    EXPECT_EQ(std::fabs(second.angleSpan().toDouble()), std::fabs(c.span)) << c.why;
    EXPECT_EQ(second.angleSpan().toDouble() * c.span < 0, c.x.matrix().determinant() < 0) << c.why;
    EXPECT_GE(second.ellipse().radiusX(), second.ellipse().radiusY()) << c.why;
    kcEllipseArc back(second);  // keeps the second form's angles
    EXPECT_EQ(back.angleStart(), second.angleStart());
    EXPECT_EQ(back.angleSpan(), second.angleSpan());
    EXPECT_LT(back.endPoint().distance(a.endPoint()), 1e-12) << c.why;
    // map() is exact: it composes the transform and keeps the parameters.
    kcEllipseArc image = a.map(X(kcMatrix<2>(1, 2, -1, 0.5), V(3, 4)));
    EXPECT_EQ(image.ellipse().xform(), X(kcMatrix<2>(1, 2, -1, 0.5), V(3, 4)) * c.x);
    EXPECT_TRUE(image.angleStart() == a.angleStart() && image.angleSpan() == a.angleSpan());
  }
}

TEST(EllipseArc, NearestPointTiesGoToTheStart) {
  // The right half of the unit circle, probed from the left: both ends are nearest.
  kcEllipseArc right(kcEllipse(), kcRadian(-kPi / 2), kcRadian(kPi));
  EXPECT_LT(right.nearestPoint(V(-1, 0)).distance(V(0, -1)), 1e-15);
  EXPECT_LT(right.reversed().nearestPoint(V(-1, 0)).distance(V(0, 1)), 1e-15);
  // The centre of a circular arc: every point is nearest, the start wins.
  kcEllipseArc quarter(kcEllipse(X::scale(2, 2)), kcRadian(1.0), kcRadian(0.5));
  EXPECT_EQ(quarter.nearestPoint(V()), quarter.startPoint());
  EXPECT_EQ(quarter.reversed().nearestPoint(V()), quarter.endPoint());
}

TEST(EllipseArc, LowerHalfProbedJustAboveTheAxis) {
  // The foot on the lower branch, mirror of the global one, is the nearest
  // point of this arc; it must be found also for probes a hair off the axis.
  kcEllipseArc lower(kcEllipse(X::scale(2, 1)), kcRadian(kPi), kcRadian(kPi));
  for (double y : {1e-3, 1e-10, 1e-14, 1e-17, 1e-20, 1e-40, 1e-150}) {
    V p(0.5, y);
    EXPECT_NEAR(lower.distanceToPoint(p), bruteDistance(ellipseCurve(X::scale(2, 1)), kPi, kPi, p), 1e-12)
        << y;
    EXPECT_LT(lower.nearestPoint(p).y(), -0.5) << y;
  }
}

// A clockwise circular arc as the wireframe arcs express it: the circle with
// reversed sense, both angles negated, then mapped.
TEST(EllipseArc, ClockwiseCircleArcByReversedSense) {
  V center(1, 2);
  double radius = 3, start = 0.4, span = -2.0;
  X outer(kcMatrix<2>(1, 0.5, 0, 2), V(5, 0));
  kcEllipse reversed(X(kcMatrix<2>::scale(radius, -radius), center));
  kcEllipseArc arc = kcEllipseArc(reversed, kcRadian(-start), kcRadian(-span)).map(outer);
  auto circle = [&](double t) { return outer * (center + V(std::cos(t), std::sin(t)) * radius); };
  EXPECT_LT(arc.startPoint().distance(circle(start)), 1e-14);
  EXPECT_LT(arc.endPoint().distance(circle(start + span)), 1e-14);
  EXPECT_LT(arc.point(kcRadian(-start - 0.5 * span)).distance(circle(start + 0.5 * span)), 1e-14);
  EXPECT_GT(arc.angleSpan().toDouble(), 0.0);
}

TEST(EllipseArc, RefusedEditAndNestedVersion) {
  kcEllipseArc a(kcEllipse(X(kcMatrix<2>(1, 2, 3, 1), V(-2, 0))), kcRadian(-1), kcRadian(-4));
  EXPECT_THROW(a.angleSpan(kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(a.angleSpan().toDouble(), -4.0);
  Bytes bytes = storeByHandle(a);
  bytes.at(bodyOffset(a)) = 1;  // the nested ellipse's version
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::UnknownVersion);
}

}  // namespace
