#include "foundation/kmath/kmath_shape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>

namespace {

using V = kcVector<2>;
using X = kcXform<2>;
constexpr double kPi = std::numbers::pi;

// How far p is off the ellipse: | |(p rotated back) / radii| - 1 |.
double offEllipse(const kmath_ellipse& e, const V& p) {
  double c = std::cos(e.rotation), s = std::sin(e.rotation);
  double dx = p.x() - e.centreX, dy = p.y() - e.centreY;
  return std::fabs(std::hypot((c * dx + s * dy) / e.radiusX, (-s * dx + c * dy) / e.radiusY) - 1.0);
}

V ellipsePoint(const kmath_ellipse& e, double t) {
  double c = std::cos(e.rotation), s = std::sin(e.rotation);
  double x = e.radiusX * std::cos(t), y = e.radiusY * std::sin(t);
  return {e.centreX + c * x - s * y, e.centreY + s * x + c * y};
}

TEST(KmathAffineRect, CornersInBoundaryOrder) {
  const X x(kcMatrix<2>(2, 1, -1, 3), V(5, 7));
  kmath_shapeAffineRect r{};
  ASSERT_EQ(kmath_shapeAffineRect_initPoints(&r, x), KMATH_OK);
  const V expected[4] = {V(5, 7), V(7, 6), V(8, 9), V(6, 10)};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(V(r.corners[i].x, r.corners[i].y), expected[i]) << i;
  EXPECT_EQ(kmath_shapeAffineRect_initPoints(nullptr, x), KMATH_ERR_NULL);
  const X huge(kcMatrix<2>(1e308, 0, 0, 1), V(1e308, 0));
  EXPECT_EQ(kmath_shapeAffineRect_initPoints(&r, huge), KMATH_ERR_NOT_FINITE);
  EXPECT_TRUE(r.corners[0].x == 5 && r.corners[1].x == 7);  // untouched on failure
}

// Mapped points of the input lie on the image, and the image's points map
// back onto the input; the image is in canonical form.
TEST(KmathEllipse, ImageLiesOnTheMappedEllipse) {
  const kmath_ellipse inputs[] = {{1, 2, 3, 1, 0.4}, {-5, 0, 0.5, 2, -2.0}, {0, 0, 1, 1, 0}};
  const X maps[] = {X(kcMatrix<2>(2, 1, 0, 1), V(3, 4)), X(kcMatrix<2>(-1, 0, 0, 3), V(0, -1)),
                    X::rotation(kcRadian(1.1)) * X::scale(4, 0.5)};
  for (const kmath_ellipse& e : inputs) {
    for (const X& x : maps) {
      kmath_ellipse image{};
      ASSERT_EQ(kmath_ellipse_transform(&image, &e, x), KMATH_OK);
      EXPECT_TRUE(image.radiusX >= image.radiusY && image.rotation >= -kPi / 2 && image.rotation < kPi / 2);
      for (double t = 0; t < 2 * kPi; t += kPi / 12) {
        EXPECT_LE(offEllipse(image, x * ellipsePoint(e, t)), 1e-12);
        EXPECT_LE(offEllipse(e, x.inverse() * ellipsePoint(image, t)), 1e-12);
      }
    }
  }
}

TEST(KmathEllipse, CanonicalForms) {
  // A circle under a rotation and a uniform scale stays a circle, rotation 0.
  const kmath_ellipse circle{1, 1, 2, 2, 0.3};
  kmath_ellipse image{};
  ASSERT_EQ(kmath_ellipse_transform(&image, &circle, X::rotation(kcRadian(0.9)) * X::scale(3, 3)), KMATH_OK);
  EXPECT_NEAR(image.radiusX, 6, 1e-14);
  EXPECT_TRUE(image.radiusX == image.radiusY && image.rotation == 0.0);
  // The larger radius comes first: a tall ellipse is turned a quarter.
  kmath_ellipse tall{0, 0, 1, 4, 0};
  ASSERT_EQ(kmath_ellipse_transform(&tall, &tall, X()), KMATH_OK);  // in place
  EXPECT_TRUE(tall.radiusX == 4 && tall.radiusY == 1);
  EXPECT_NEAR(std::fabs(tall.rotation), kPi / 2, 1e-15);
}

TEST(KmathEllipse, XformFormRoundTrip) {
  const kmath_ellipse e{3, -1, 5, 2, 0.6};
  kmath_ellipse back{};
  X x;
  ASSERT_EQ(kmath_ellipse_toXform(&x, &e), KMATH_OK);
  EXPECT_EQ(x * V(0, 0), V(3, -1));
  EXPECT_LE((x * V(1, 0)).distance(V(3 + 5 * std::cos(0.6), -1 + 5 * std::sin(0.6))), 1e-14);
  ASSERT_EQ(kmath_ellipse_fromXform(&back, x), KMATH_OK);
  EXPECT_NEAR(back.radiusX, 5, 1e-14);
  EXPECT_NEAR(back.radiusY, 2, 1e-14);
  EXPECT_NEAR(back.rotation, 0.6, 1e-14);
}

TEST(KmathEllipse, ErrorsLeaveTheOutputAlone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const kmath_ellipse good{0, 0, 2, 1, 0}, flat{0, 0, 0, 1, 0};
  kmath_ellipse out{9, 9, 9, 9, 9};
  const std::tuple<kmath_ellipse, X, long> rows[] = {
      {flat, X(), KMATH_ERR_DEGENERATE},
      {good, X(kcMatrix<2>(1, 2, 2, 4), V(0, 0)), KMATH_ERR_DEGENERATE},  // singular
      {{nan, 0, 1, 1, 0}, X(), KMATH_ERR_NOT_FINITE},
      {good, X(kcMatrix<2>(1e308, 0, 0, 1e308), V(0, 0)), KMATH_ERR_NOT_FINITE},  // overflows
  };
  for (const auto& [in, x, code] : rows) EXPECT_EQ(kmath_ellipse_transform(&out, &in, x), code);
  EXPECT_EQ(kmath_ellipse_transform(nullptr, &good, X()), KMATH_ERR_NULL);
  EXPECT_EQ(kmath_ellipse_transform(&out, nullptr, X()), KMATH_ERR_NULL);
  EXPECT_EQ(kmath_ellipse_fromXform(&out, X::scale(0, 1)), KMATH_ERR_DEGENERATE);
  X unchanged;
  EXPECT_EQ(kmath_ellipse_toXform(&unchanged, &flat), KMATH_ERR_DEGENERATE);
  EXPECT_TRUE(out.radiusX == 9 && unchanged.isIdentity());
}

}  // namespace
