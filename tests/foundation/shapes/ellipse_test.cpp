#include "foundation/shapes/ellipse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <string>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

struct XformCase {
  std::string why;
  kcXform<2> x;
};

class EllipseGeometry : public ::testing::TestWithParam<XformCase> {};

TEST_P(EllipseGeometry, DistancesMatchBruteForce) {
  const XformCase& c = GetParam();
  kcEllipse e(c.x);
  auto curve = ellipse_testing::matrixCurve(c.x.trans(), c.x.matrix());
  kcRect box = e.encloseRect();
  double size = std::max(box.width(), box.height());
  for (V p : ellipse_testing::probes(c.x.trans(), size)) {
    EXPECT_NEAR(e.distanceToPoint(p), ellipse_testing::bruteDistance(curve, 0.0, 2 * kPi, p), 1e-9 * size)
        << c.why << " probe " << p.x() << "," << p.y();
    EXPECT_NEAR(c.x.invMapPoint(e.nearestPoint(p)).len(), 1.0, 1e-12) << c.why;
  }
}

TEST_P(EllipseGeometry, BoxWithinSamplesAndMap) {
  const XformCase& c = GetParam();
  kcEllipse e(c.x);
  const kcMatrix<2>& m = c.x.matrix();
  // The box from the definition: x(t) = cx + a cos t + b sin t swings by |(a, b)|.
  double hx = std::hypot(m.element(0, 0), m.element(0, 1));
  double hy = std::hypot(m.element(1, 0), m.element(1, 1));
  kcRect box = e.encloseRect();
  double tol = 1e-13 * std::max(hx, hy);
  EXPECT_NEAR(box.xMin(), c.x.trans().x() - hx, tol) << c.why;
  EXPECT_NEAR(box.yMax(), c.x.trans().y() + hy, tol) << c.why;
  EXPECT_NEAR(box.width(), 2 * hx, tol) << c.why;
  EXPECT_NEAR(box.height(), 2 * hy, tol) << c.why;
  for (double t = 0.1; t < 2 * kPi; t += 0.4) {
    V on = c.x * V(std::cos(t), std::sin(t));
    EXPECT_LT(e.point(kcRadian(t)).distance(on), tol);
    EXPECT_TRUE(e.within(c.x * V(0.999 * std::cos(t), 0.999 * std::sin(t)))) << c.why;
    EXPECT_FALSE(e.within(c.x * V(1.001 * std::cos(t), 1.001 * std::sin(t)))) << c.why;
  }
  double spacing = 0.01 * std::max(hx, hy);
  expectSampleSpacing(e, spacing);
  std::vector<V> pts = samples(e, spacing);
  EXPECT_EQ(pts.front(), c.x * V(1, 0));
  EXPECT_EQ(pts.back(), pts.front());
  // map() composes transforms, so the parameter keeps naming the same point.
  kcXform<2> y(kcMatrix<2>(1, 2, -1, 0.5), V(3, 4));
  kcEllipse image = e.map(y);
  for (double t : {0.0, 1.0, 3.0})
    EXPECT_LT(image.point(kcRadian(t)).distance(y * e.point(kcRadian(t))), 1e-13);
  expectMapMatchesSamples(e, y, spacing, 1e-9 * std::max(hx, hy) * 4);
}

INSTANTIATE_TEST_SUITE_P(
    Transforms, EllipseGeometry,
    ::testing::Values(XformCase{"unit circle", kcXform<2>()},
                      XformCase{"shear", kcXform<2>(kcMatrix<2>(2, 1.5, 0, 1), V(1, -1))},
                      XformCase{"mirror", kcXform<2>(kcMatrix<2>(-3, 0, 0, 1), V(0, 2))},
                      XformCase{"mirroring shear", kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(-2, 0))},
                      XformCase{"turned circle", kcXform<2>(kcMatrix<2>(0, -2, 2, 0), V(4, 4))},
                      XformCase{"nearly circular", kcXform<2>(kcMatrix<2>::rotation(kcRadian(0.3)) *
                                                                  kcMatrix<2>::scale(1, 1 + 1e-12),
                                                              V())},
                      XformCase{"thin", kcXform<2>(kcMatrix<2>(50, 0, 50, 0.05), V(1, 1))}),
    [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(Ellipse, ConstructorRejectsBadTransforms) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(kcEllipse(kcXform<2>(kcMatrix<2>(nan, 0, 0, 1), V())), kcShapesError::BadParams);
  EXPECT_THROW(kcEllipse(kcXform<2>(kcMatrix<2>(), V(0, HUGE_VAL))), kcShapesError::BadParams);
  EXPECT_THROW(kcEllipse(kcXform<2>(kcMatrix<2>(1, 2, 2, 4), V())), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcEllipse(kcXform<2>::scale(0, 1)), kcShapesError::DegenerateShape);
  kcEllipse e(kcXform<2>::scale(2, 1));
  EXPECT_THROW(e.xform(kcXform<2>::scale(1, 0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(e, kcEllipse(kcXform<2>::scale(2, 1)));
  EXPECT_EQ(kcEllipse(), kcEllipse(kcXform<2>()));
  EXPECT_THROW((void)e.map(kcXform<2>::scale(1, 0)), kcMathError::Singular);
}

// The first point along the boundary from t = 0 wins a tie; a mirror in the
// transform changes which point that is.
TEST(Ellipse, NearestPointTiesFollowTheParameter) {
  kcEllipse plain(kcXform<2>::scale(3, 1));
  kcEllipse mirrored(kcXform<2>::scale(3, -1));
  EXPECT_LT(plain.nearestPoint(V()).distance(V(0, 1)), 1e-15);
  EXPECT_LT(mirrored.nearestPoint(V()).distance(V(0, -1)), 1e-15);
  EXPECT_LT(plain.nearestPoint(V(1, 0)).y(), 0.0 + 1.0);
  EXPECT_GT(plain.nearestPoint(V(1, 0)).y(), 0.0);
  EXPECT_LT(mirrored.nearestPoint(V(1, 0)).y(), 0.0);
  kcEllipse circle(kcXform<2>(kcMatrix<2>::rotation(kcRadian(1.0)), V(2, 2)));
  EXPECT_LT(circle.nearestPoint(V(2, 2)).distance(circle.point(kcRadian(0))), 1e-15);
}

TEST(Ellipse, PointsAHairOffTheAxis) {
  // Bisection must reach brackets far below 1: the foot of a point 1e-150
  // above the long axis is still on the upper branch at the exact distance.
  kcEllipse e(kcXform<2>::scale(2, 1));
  V p(0.5, 1e-150);
  V q = e.nearestPoint(p);
  double brute = ellipse_testing::bruteDistance(ellipse_testing::matrixCurve(V(), kcMatrix<2>::scale(2, 1)),
                                                0.0, 2 * kPi, p);
  EXPECT_NEAR(p.distance(q), brute, 1e-12);
  EXPECT_NEAR(kcXform<2>::scale(2, 1).invMapPoint(q).len(), 1.0, 1e-14);
}

TEST(Ellipse, ConversionsBetweenTheForms) {
  kcCircle c(V(1, 2), 3);
  kcEllipse fromCircle(c);
  EXPECT_EQ(fromCircle.xform(), kcXform<2>(kcMatrix<2>::scale(3, 3), V(1, 2)));
  for (double t : {0.0, 2.0}) EXPECT_LT(fromCircle.point(kcRadian(t)).distance(c.point(kcRadian(t))), 1e-15);
  kcEllipse2 e2(1, 3, kcRadian(2.0), V(-1, 0));
  kcEllipse first(e2);
  EXPECT_EQ(first.xform(), e2.xform());
  EXPECT_EQ(first.center(), V(-1, 0));
  for (double t : {0.0, 1.0, 5.0}) EXPECT_LT(first.point(kcRadian(t)).distance(e2.point(kcRadian(t))), 1e-15);
}

TEST(Ellipse, Archive) {
  kcEllipse e(kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(-2, 0)));
  expectRoundTrip(e);
  expectUnknownVersion(e, "foundation/shapes/ellipse");
  expectTruncationCorrupt(e);
  Bytes bytes = storeByHandle(e);
  ASSERT_EQ(bytes.size(), bodyOffset(e) + 48);  // the transform: matrix then translation
  for (std::size_t field = 0; field < 6; ++field) expectNaNCorrupt(e, bodyOffset(e) + 8 * field);
  // A singular transform: 1 2 / 0.5 1.
  patchDouble(bytes, bodyOffset(e) + 16, 0.5);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
