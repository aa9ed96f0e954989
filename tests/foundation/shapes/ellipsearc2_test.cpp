#include "foundation/shapes/ellipsearc2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

struct Arc2Case {
  std::string why;
  double rx, ry, rotation;
  V center;
  double start, span;
};

class EllipseArc2Geometry : public ::testing::TestWithParam<Arc2Case> {
 protected:
  kcEllipseArc2 arc() const {
    const Arc2Case& c = GetParam();
    return kcEllipseArc2(kcEllipse2(c.rx, c.ry, kcRadian(c.rotation), c.center), kcRadian(c.start),
                         kcRadian(c.span));
  }
  ellipse_testing::Curve curve() const {
    const Arc2Case& c = GetParam();
    return ellipse_testing::ellipseCurve(c.center, c.rx, c.ry, c.rotation);
  }
  double size() const { return std::max(GetParam().rx, GetParam().ry); }
};

TEST_P(EllipseArc2Geometry, PointsDistancesAndBox) {
  const Arc2Case& c = GetParam();
  kcEllipseArc2 a = arc();
  double s = size();
  EXPECT_LT(a.startPoint().distance(curve()(c.start)), 1e-15 * s);
  EXPECT_LT(a.endPoint().distance(curve()(c.start + c.span)), 1e-15 * s);
  for (V p : ellipse_testing::probes(c.center, 2 * s)) {
    EXPECT_NEAR(a.distanceToPoint(p), ellipse_testing::bruteDistance(curve(), c.start, c.span, p), 1e-9 * s)
        << c.why << " probe " << p.x() << "," << p.y();
  }
  kcRect scan;
  for (int i = 0; i <= 200000; ++i) scan.enclose(curve()(c.start + c.span * i / 200000.0));
  kcRect box = a.encloseRect();
  EXPECT_NEAR(box.xMin(), scan.xMin(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.yMax(), scan.yMax(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.width(), scan.width(), 1e-8 * s) << c.why;
  EXPECT_NEAR(box.height(), scan.height(), 1e-8 * s) << c.why;
  std::vector<V> pts = samples(a, 0.01 * s);
  EXPECT_EQ(pts.front(), a.startPoint());
  EXPECT_EQ(pts.back(), a.endPoint());
  expectSampleSpacing(a, 0.01 * s);
}

// Mapping re-factorises the ellipse and carries the angles along, so every
// point of the arc maps onto the image's point of the same fraction.
TEST_P(EllipseArc2Geometry, MapsKeepEveryPointsRole) {
  kcEllipseArc2 a = arc();
  double s = size();
  for (kcXform<2> x :
       {kcXform<2>::translation(V(1, 2)), kcXform<2>(kcMatrix<2>::rotation(kcRadian(2.0)), V(1, 0)),
        kcXform<2>(kcMatrix<2>::scale(-1, 2), V()), kcXform<2>(kcMatrix<2>(0, 3, 3, 0), V(1, 1)),
        kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(-2, 0)), kcXform<2>(kcMatrix<2>(2, 1, 0.5, 1.5), V())}) {
    kcEllipseArc2 image = a.map(x);
    for (double f : {0.0, 0.3, 0.7, 1.0}) {
      V want = x * a.point(a.angleStart() + a.angleSpan() * f);
      V got = image.point(image.angleStart() + image.angleSpan() * f);
      EXPECT_LT(got.distance(want), 1e-12 * s * 4) << GetParam().why << " fraction " << f;
    }
    EXPECT_EQ(image.angleSpan().toDouble() * a.angleSpan().toDouble() < 0, x.matrix().determinant() < 0);
    expectMapMatchesSamples(a, x, 0.01 * s, 1e-8 * s);
  }
}

INSTANTIATE_TEST_SUITE_P(Arcs, EllipseArc2Geometry,
                         ::testing::Values(Arc2Case{"quarter", 3, 1, 0.4, V(1, 1), 0.0, kPi / 2},
                                           Arc2Case{"tall, backwards", 1, 3, -0.2, V(), 2.0, -3.0},
                                           Arc2Case{"full turn", 2, 1, 1.0, V(0, 1), -1.0, 2 * kPi},
                                           Arc2Case{"circle, across zero", 2, 2, 0.0, V(), -0.5, 1.0},
                                           Arc2Case{"thin", 40, 0.2, 0.3, V(2, 2), 3.0, 2.0}),
                         [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(EllipseArc2, ConstructorAndSetters) {
  kcEllipse2 e(2, 1, kcRadian(0), V());
  EXPECT_THROW(kcEllipseArc2(e, kcRadian(0), kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcEllipseArc2(e, kcRadian(0), kcRadian(6.3)), kcShapesError::BadParams);
  EXPECT_THROW(kcEllipseArc2(e, kcRadian(std::nan("")), kcRadian(1)), kcShapesError::BadParams);
  kcEllipseArc2 a(e, kcRadian(0.5), kcRadian(1));
  EXPECT_THROW(a.angleStart(kcRadian(HUGE_VAL)), kcShapesError::BadParams);
  EXPECT_EQ(a.angleStart().toDouble(), 0.5);
  EXPECT_EQ(a.angleEnd().toDouble(), 1.5);
  EXPECT_EQ(kcEllipseArc2(), kcEllipseArc2(kcEllipse2(), kcRadian(0), kcRadian(2 * kPi)));
}

TEST(EllipseArc2, DirectionsAndReverse) {
  kcEllipseArc2 ccw(kcEllipse2(2, 1, kcRadian(0), V()), kcRadian(0), kcRadian(kPi / 2));
  EXPECT_NEAR(ccw.startAngle().toDouble(), kPi / 2, 1e-15);       // up at (2, 0)
  EXPECT_NEAR(std::fabs(ccw.endAngle().toDouble()), kPi, 1e-15);  // left at (0, 1)
  kcEllipseArc2 cw = ccw.reversed();
  EXPECT_EQ(cw.startPoint(), ccw.endPoint());
  EXPECT_NEAR(cw.startAngle().toDouble(), 0.0, 1e-15);
  EXPECT_NEAR(cw.endAngle().toDouble(), -kPi / 2, 1e-15);
  EXPECT_EQ(*kfDynamicCast<kcEllipseArc2>(ccw.reverse()), cw);
  // Ties go to the start: the centre of the full circle arc.
  kcEllipseArc2 circle(kcEllipse2(1, 1, kcRadian(0), V()), kcRadian(2.0), kcRadian(-2 * kPi));
  EXPECT_EQ(circle.nearestPoint(V()), circle.startPoint());
}

TEST(EllipseArc2, RoundTripThroughTheFirstForm) {
  // A canonical arc (radiusX >= radiusY, rotation in [-pi/2, pi/2)) comes back
  // as itself, up to rounding.
  kcEllipseArc2 a(kcEllipse2(3, 1, kcRadian(0.4), V(1, 2)), kcRadian(5.0), kcRadian(-2.0));
  kcEllipseArc2 back{kcEllipseArc(a)};
  EXPECT_NEAR(back.ellipse().radiusX(), 3.0, 1e-15);
  EXPECT_NEAR(back.ellipse().radiusY(), 1.0, 1e-15);
  EXPECT_NEAR(back.ellipse().rotation().toDouble(), 0.4, 1e-15);
  EXPECT_NEAR(back.angleStart().toDouble(), 5.0, 1e-14);
  EXPECT_EQ(back.angleSpan().toDouble(), -2.0);
  // Radii in the other order come back swapped, on the same points.
  kcEllipseArc2 tall(kcEllipse2(1, 3, kcRadian(0.4), V(1, 2)), kcRadian(5.0), kcRadian(-2.0));
  kcEllipseArc2 swapped{kcEllipseArc(tall)};
  EXPECT_NEAR(swapped.ellipse().radiusX(), 3.0, 1e-15);
  EXPECT_LT(swapped.startPoint().distance(tall.startPoint()), 1e-14);
  EXPECT_LT(swapped.endPoint().distance(tall.endPoint()), 1e-14);
}

TEST(EllipseArc2, Archive) {
  kcEllipseArc2 a(kcEllipse2(3, 1, kcRadian(0.4), V(1, 2)), kcRadian(5.0), kcRadian(-2.0));
  expectRoundTrip(a);
  expectUnknownVersion(a, "foundation/shapes/ellipsearc2");
  expectTruncationCorrupt(a);
  Bytes bytes = storeByHandle(a);
  ASSERT_EQ(bytes.size(), bodyOffset(a) + 1 + 40 + 16);
  std::size_t angles = bodyOffset(a) + 1 + 40;
  expectNaNCorrupt(a, angles);
  expectNaNCorrupt(a, angles + 8);
  patchDouble(bytes, bodyOffset(a) + 1, 0.0);  // the ellipse's radiusX
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  Bytes zero = storeByHandle(a);
  patchDouble(zero, angles + 8, 0.0);
  EXPECT_THROW((void)loadByHandle(zero), kcArchive::Corrupt);
}

}  // namespace
