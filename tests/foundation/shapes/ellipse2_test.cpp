#include "foundation/shapes/ellipse2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <string>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

struct EllipseCase {
  std::string why;
  double rx, ry, rotation;
  V center;
};

class Ellipse2Geometry : public ::testing::TestWithParam<EllipseCase> {
 protected:
  kcEllipse2 ellipse() const {
    const EllipseCase& c = GetParam();
    return kcEllipse2(c.rx, c.ry, kcRadian(c.rotation), c.center);
  }
};

TEST_P(Ellipse2Geometry, DistancesMatchBruteForce) {
  const EllipseCase& c = GetParam();
  kcEllipse2 e = ellipse();
  auto curve = ellipse_testing::ellipseCurve(c.center, c.rx, c.ry, c.rotation);
  double size = std::max(c.rx, c.ry);
  for (V p : ellipse_testing::probes(c.center, 1.5 * size)) {
    double brute = ellipse_testing::bruteDistance(curve, 0.0, 2 * kPi, p);
    double d = e.distanceToPoint(p);
    EXPECT_NEAR(d, brute, 1e-9 * size) << c.why << " probe " << p.x() << "," << p.y();
    // The nearest point lies on the curve (rho = 1 in the ellipse's axes).
    V q = kcMatrix<2>::rotation(kcRadian(-c.rotation)) * (e.nearestPoint(p) - c.center);
    EXPECT_NEAR(std::hypot(q.x() / c.rx, q.y() / c.ry), 1.0, 1e-12) << c.why;
  }
}

TEST_P(Ellipse2Geometry, BoxWithinAndSamplesAgreeWithTheCurve) {
  const EllipseCase& c = GetParam();
  kcEllipse2 e = ellipse();
  // The tight box from the definition: half widths |(rx cos a, ry sin a)|.
  double hx = std::hypot(c.rx * std::cos(c.rotation), c.ry * std::sin(c.rotation));
  double hy = std::hypot(c.rx * std::sin(c.rotation), c.ry * std::cos(c.rotation));
  kcRect box = e.encloseRect();
  double tol = 1e-12 * std::max(c.rx, c.ry);
  EXPECT_NEAR(box.xMin(), c.center.x() - hx, tol) << c.why;
  EXPECT_NEAR(box.xMax(), c.center.x() + hx, tol) << c.why;
  EXPECT_NEAR(box.yMin(), c.center.y() - hy, tol) << c.why;
  EXPECT_NEAR(box.yMax(), c.center.y() + hy, tol) << c.why;
  auto curve = ellipse_testing::ellipseCurve(c.center, c.rx, c.ry, c.rotation);
  for (double t = 0.05; t < 2 * kPi; t += 0.5) {
    V on = curve(t);
    EXPECT_LT(e.point(kcRadian(t)).distance(on), tol) << c.why;
    EXPECT_TRUE(e.within(c.center + (on - c.center) * 0.999)) << c.why;
    EXPECT_FALSE(e.within(c.center + (on - c.center) * 1.001)) << c.why;
  }
  double spacing = 0.01 * std::max(c.rx, c.ry);
  expectSampleSpacing(e, spacing);
  std::vector<V> pts = samples(e, spacing);
  EXPECT_EQ(pts.front(), pts.back());
  EXPECT_LT(pts.front().distance(curve(0.0)), tol);
}

TEST_P(Ellipse2Geometry, MapsMatchMappedSamples) {
  kcEllipse2 e = ellipse();
  double size = std::max(GetParam().rx, GetParam().ry);
  for (kcXform<2> x :
       {kcXform<2>(kcMatrix<2>(2, 1, -0.5, 1.5), V(3, -1)), kcXform<2>(kcMatrix<2>(0, 2, 2, 0), V(1, 1)),
        kcXform<2>(kcMatrix<2>::rotation(kcRadian(0.7)), V(-2, 5))}) {
    expectMapMatchesSamples(e, x, 0.02 * size, 1e-9 * size);
    EXPECT_NE(dynamic_cast<kcEllipse2*>(e.mapShape(x).get()), nullptr);
  }
}

INSTANTIATE_TEST_SUITE_P(Ellipses, Ellipse2Geometry,
                         ::testing::Values(EllipseCase{"circle", 2, 2, 0, V(1, 1)},
                                           EllipseCase{"wide, rotated", 3, 1, 0.6, V(-1, 2)},
                                           EllipseCase{"tall", 1, 3, -0.3, V(0, 0)},
                                           EllipseCase{"nearly circular", 1 + 1e-10, 1, 0.2, V(5, 5)},
                                           EllipseCase{"thin", 100, 0.1, 1.1, V(3, -3)},
                                           EllipseCase{"rotation beyond a turn", 2, 1, 9.0, V(0, 1)}),
                         [](const auto& info) { return "case" + std::to_string(info.index); });

TEST(Ellipse2, ConstructorRejectsBadValues) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    const char* why;
    std::function<void()> make;
    long error;
  } cases[] = {
      {"NaN radius", [&] { kcEllipse2(nan, 1, kcRadian(0), V()); }, 0x10000209},
      {"NaN rotation", [&] { kcEllipse2(1, 1, kcRadian(nan), V()); }, 0x10000209},
      {"infinite centre", [&] { kcEllipse2(1, 1, kcRadian(0), V(HUGE_VAL, 0)); }, 0x10000209},
      {"zero radius", [&] { kcEllipse2(1, 0, kcRadian(0), V()); }, 0x10000204},
      {"negative radius", [&] { kcEllipse2(-1, 1, kcRadian(0), V()); }, 0x10000204},
  };
  for (const Case& c : cases) {
    try {
      c.make();
      ADD_FAILURE() << c.why;
    } catch (const kcException& e) {
      EXPECT_EQ(e.errorNumber(), c.error) << c.why;
    }
  }
  kcEllipse2 e(2, 1, kcRadian(0.5), V(1, 1));
  EXPECT_THROW(e.radiusY(-1), kcShapesError::DegenerateShape);
  EXPECT_THROW(e.rotation(kcRadian(nan)), kcShapesError::BadParams);
  EXPECT_EQ(e, kcEllipse2(2, 1, kcRadian(0.5), V(1, 1)));
  EXPECT_EQ(kcEllipse2(), kcEllipse2(1, 1, kcRadian(0), V()));
}

// Where the nearest point is not unique, the first one along the boundary
// from t = 0 is taken.
TEST(Ellipse2, NearestPointTiesGoToTheFirstAlongTheBoundary) {
  kcEllipse2 wide(3, 1, kcRadian(0), V());
  EXPECT_LT(wide.nearestPoint(V()).distance(V(0, 1)), 1e-15);  // t = pi/2, not 3 pi/2
  kcEllipse2 tall(1, 3, kcRadian(0), V());
  EXPECT_LT(tall.nearestPoint(V()).distance(V(1, 0)), 1e-15);  // t = 0, not pi
  kcEllipse2 circle(2, 2, kcRadian(0.4), V(1, 1));
  EXPECT_LT(circle.nearestPoint(V(1, 1)).distance(circle.point(kcRadian(0))), 1e-15);
  // On the long axis near the centre: two feet, mirror images; t and -t, or
  // pi - t and pi + t: the upper one either way.
  for (double x : {1.0, -1.0}) {
    V q = wide.nearestPoint(V(x, 0));
    EXPECT_GT(q.y(), 0.5) << x;
    EXPECT_NEAR(wide.distanceToPoint(V(x, 0)), std::sqrt(1.0 - 1.0 / 8.0), 1e-12);  // (x/3 * 9/8, ...)
  }
  // Rotated: the same in the ellipse's own axes.
  kcEllipse2 turned(3, 1, kcRadian(kPi / 2), V(1, 1));
  EXPECT_LT(turned.nearestPoint(V(1, 1)).distance(V(0, 1)), 1e-15);
}

TEST(Ellipse2, ConversionToTheFirstFormKeepsTheParameter) {
  kcEllipse2 e(3, 1, kcRadian(0.4), V(1, 2));
  kcEllipse first(e);
  for (double t : {0.0, 1.0, 2.0, 4.0})
    EXPECT_LT(first.point(kcRadian(t)).distance(e.point(kcRadian(t))), 1e-15);
  // Back: the canonical form of an ellipse already canonical is itself.
  kcEllipse2 back(first);
  EXPECT_NEAR(back.radiusX(), 3.0, 1e-15);
  EXPECT_NEAR(back.radiusY(), 1.0, 1e-15);
  EXPECT_NEAR(back.rotation().toDouble(), 0.4, 1e-15);
  EXPECT_EQ(back.center(), V(1, 2));
}

TEST(Ellipse2, ConversionFromTheFirstFormOrdersTheRadii) {
  struct Row {
    const char* why;
    kcXform<2> x;
    double rx, ry;
  } rows[] = {
      {"tall", kcXform<2>(kcMatrix<2>::scale(1, 3), V(1, 0)), 3, 1},
      {"mirrored", kcXform<2>(kcMatrix<2>::scale(-2, 1), V()), 2, 1},
      {"sheared", kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V()), (1 + std::sqrt(5.0)) / 2,
       (std::sqrt(5.0) - 1) / 2},
      {"turned circle", kcXform<2>(kcMatrix<2>::rotation(kcRadian(2.0)), V()), 1, 1},
  };
  for (const Row& r : rows) {
    kcEllipse first(r.x);
    kcEllipse2 e(first);
    EXPECT_NEAR(e.radiusX(), r.rx, 1e-14) << r.why;
    EXPECT_NEAR(e.radiusY(), r.ry, 1e-14) << r.why;
    EXPECT_GE(e.rotation().toDouble(), -kPi / 2) << r.why;
    EXPECT_LT(e.rotation().toDouble(), kPi / 2) << r.why;
    // Same curve: every sample of one lies on the other.
    for (const V& p : samples(first, 0.05)) EXPECT_LT(e.distanceToPoint(p), 1e-13) << r.why;
    for (const V& p : samples(e, 0.05)) EXPECT_LT(first.distanceToPoint(p), 1e-13) << r.why;
  }
  EXPECT_EQ(kcEllipse2(kcEllipse(kcXform<2>::rotation(kcRadian(2.0)))).rotation().toDouble(), 0.0);
}

TEST(Ellipse2, MapUnderSimilaritiesKeepsTheFields) {
  kcEllipse2 e(1, 2, kcRadian(0.3), V(1, 1));
  EXPECT_EQ(e.map(kcXform<2>()), e);
  EXPECT_EQ(e.map(kcXform<2>::translation(V(1, 2))), kcEllipse2(1, 2, kcRadian(0.3), V(2, 3)));
  kcEllipse2 turned = e.map(kcXform<2>(kcMatrix<2>::rotation(kcRadian(1.0)), V()));
  EXPECT_EQ(turned.radiusX(), 1.0);
  EXPECT_EQ(turned.radiusY(), 2.0);
  EXPECT_NEAR(turned.rotation().toDouble(), 1.3, 1e-15);
  kcEllipse2 mirrored = e.map(kcXform<2>::scale(1, -1));
  EXPECT_EQ(mirrored, kcEllipse2(1, 2, kcRadian(-0.3), V(1, -1)));
  EXPECT_THROW((void)e.map(kcXform<2>::scale(0, 1)), kcMathError::Singular);
}

TEST(Ellipse2, Archive) {
  kcEllipse2 e(3, 1, kcRadian(0.4), V(1, 2));
  expectRoundTrip(e);
  expectUnknownVersion(e, "foundation/shapes/ellipse2");
  expectTruncationCorrupt(e);
  Bytes bytes = storeByHandle(e);
  ASSERT_EQ(bytes.size(), bodyOffset(e) + 40);  // rx, ry, rotation, centre
  for (std::size_t field = 0; field < 5; ++field) expectNaNCorrupt(e, bodyOffset(e) + 8 * field);
  patchDouble(bytes, bodyOffset(e) + 8, -1.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  patchDouble(bytes, bodyOffset(e) + 8, 0.5);
  EXPECT_EQ(*kfDynamicCast<kcEllipse2>(loadByHandle(bytes)), kcEllipse2(3, 0.5, kcRadian(0.4), V(1, 2)));
}

}  // namespace
