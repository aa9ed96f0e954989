#include "foundation/shapes/ellipse2.h"

#include <gtest/gtest.h>

#include "foundation/shapes/ellipse.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

// Where the nearest point is not unique, the first one along the boundary
// from t = 0 is taken.
TEST(Ellipse2, NearestPointTiesGoToTheFirstAlongTheBoundary) {
  kcEllipse2 wide(3, 1, kcRadian(0), V());
  EXPECT_LT(wide.nearestPoint(V()).distance(V(0, 1)), 1e-15);  // t = pi/2, not 3 pi/2
  EXPECT_LT(kcEllipse2(1, 3, kcRadian(0), V()).nearestPoint(V()).distance(V(1, 0)), 1e-15);
  EXPECT_LT(kcEllipse2(3, 1, kcRadian(kPi / 2), V(1, 1)).nearestPoint(V(1, 1)).distance(V(0, 1)), 1e-15);
  kcEllipse2 circle(2, 2, kcRadian(0.4), V(1, 1));
  EXPECT_LT(circle.nearestPoint(V(1, 1)).distance(circle.point(kcRadian(0))), 1e-15);
  // On the long axis near the centre two feet mirror each other: the upper one,
  // at distance sqrt(1 - x^2 / 8) for x^2/9 + y^2 = 1.
  for (double x : {1.0, -1.0}) {
    EXPECT_GT(wide.nearestPoint(V(x, 0)).y(), 0.5) << x;
    EXPECT_NEAR(wide.distanceToPoint(V(x, 0)), std::sqrt(1.0 - 1.0 / 8.0), 1e-12);
  }
}

// The factorisation of the first form's matrix, also where it is hard: the
// radii come out ordered, the rotation in [-pi/2, pi/2), circles unturned.
TEST(Ellipse2, ConversionFromTheFirstFormOrdersTheRadii) {
  auto rot = [](double a) { return kcMatrix<2>::rotation(kcRadian(a)); };
  const double big = std::sqrt((39 + std::sqrt(365.0)) / 2), small = std::sqrt((39 - std::sqrt(365.0)) / 2);
  struct Row {
    const char* why;
    kcMatrix<2> m;
    double rx, ry;
  } rows[] = {
      {"tall", kcMatrix<2>::scale(1, 3), 3, 1},
      {"mirrored", kcMatrix<2>::scale(-2, 1), 2, 1},
      {"sheared", kcMatrix<2>(1, 1, 0, 1), (1 + std::sqrt(5.0)) / 2, (std::sqrt(5.0) - 1) / 2},
      {"turned circle", rot(2.0), 1, 1},
      {"mirrored circle, turned", rot(1.1) * kcMatrix<2>::scale(4, -4), 4, 4},
      {"rotation near -pi/2", rot(-kPi / 2 - 1e-9) * kcMatrix<2>::scale(5, 1), 5, 1},
      {"nearly circular", rot(0.3) * kcMatrix<2>::scale(1 + 1e-9, 1), 1 + 1e-9, 1},
      {"thin: |det| / radiusX keeps the digits", rot(0.7) * kcMatrix<2>::scale(1e3, 1e-9), 1e3, 1e-9},
      {"large values", kcMatrix<2>(3e200, 1e200, -2e200, 5e200), big * 1e200, small * 1e200},
  };
  for (const Row& r : rows) {
    kcEllipse first(X(r.m, V(1, 2)));
    kcEllipse2 e(first);
    EXPECT_NEAR(e.radiusX(), r.rx, 1e-14 * r.rx) << r.why;
    EXPECT_NEAR(e.radiusY(), r.ry, 1e-13 * r.ry) << r.why;
    EXPECT_GE(e.rotation().toDouble(), -kPi / 2) << r.why;
    EXPECT_LT(e.rotation().toDouble(), kPi / 2) << r.why;
    EXPECT_TRUE(r.rx != r.ry || e.rotation().toDouble() == 0.0) << r.why;
    if (r.rx > 1e150) continue;  // radii only: such distances are beyond the nearest-point search
    for (double t : {0.0, 1.0, 2.5, 4.0})
      EXPECT_LE(e.distanceToPoint(first.point(kcRadian(t))), 1e-13 * r.rx) << r.why;
  }
}

TEST(Ellipse2, SimilaritiesKeepTheFieldsExactly) {
  kcEllipse2 e(1, 2, kcRadian(0.3), V(1, 1));
  EXPECT_EQ(e.map(X()), e);
  EXPECT_EQ(e.map(X::translation(V(1, 2))), kcEllipse2(1, 2, kcRadian(0.3), V(2, 3)));
  kcEllipse2 turned = e.map(X(kcMatrix<2>::rotation(kcRadian(1.0)), V()));
  EXPECT_EQ(turned.radiusX(), 1.0);
  EXPECT_EQ(turned.radiusY(), 2.0);
  EXPECT_NEAR(turned.rotation().toDouble(), 1.3, 1e-15);
  EXPECT_EQ(e.map(X::scale(1, -1)), kcEllipse2(1, 2, kcRadian(-0.3), V(1, -1)));
  EXPECT_THROW((void)e.map(X::scale(0, 1)), kcMathError::Singular);
  EXPECT_THROW(e.radiusY(-1), kcShapesError::DegenerateShape);
  EXPECT_THROW(e.rotation(kcRadian(kNaN)), kcShapesError::BadParams);
  EXPECT_EQ(e, kcEllipse2(1, 2, kcRadian(0.3), V(1, 1)));
}

}  // namespace
