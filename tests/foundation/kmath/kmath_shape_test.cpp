#include "foundation/kmath/kmath_shape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/exception.h"
#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/ellipse2.h"

namespace {

using V = kcVector<2>;

// How far p is off the ellipse, measured in its own unit-circle terms:
// | |(rotated back p) / radii| - 1 |.
double offEllipse(const kmath_ellipse& e, const V& p) {
  double c = std::cos(e.rotation), s = std::sin(e.rotation);
  double dx = p.x() - e.centreX, dy = p.y() - e.centreY;
  double u = (c * dx + s * dy) / e.radiusX, v = (-s * dx + c * dy) / e.radiusY;
  return std::fabs(std::hypot(u, v) - 1.0);
}

V ellipsePoint(const kmath_ellipse& e, double t) {
  double c = std::cos(e.rotation), s = std::sin(e.rotation);
  double x = e.radiusX * std::cos(t), y = e.radiusY * std::sin(t);
  return {e.centreX + c * x - s * y, e.centreY + s * x + c * y};
}

TEST(KmathAffineRect, CornersInBoundaryOrder) {
  kcXform<2> x(kcMatrix<2>(2, 1, -1, 3), V(5, 7));
  kmath_shapeAffineRect r{};
  ASSERT_EQ(kmath_shapeAffineRect_initPoints(&r, x), KMATH_OK);
  const V expected[4] = {V(5, 7), V(7, 6), V(8, 9), V(6, 10)};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(r.corners[i].x, expected[i].x());
    EXPECT_EQ(r.corners[i].y, expected[i].y());
  }
  kcAffineRectangle shape(x);
  kmath_shapeAffineRect fromShape{};
  ASSERT_EQ(kmath_shapeAffineRect_initPoints(&fromShape, shape), KMATH_OK);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(V(fromShape.corners[i].x, fromShape.corners[i].y), shape.corner(i));
}

TEST(KmathAffineRect, Errors) {
  EXPECT_EQ(kmath_shapeAffineRect_initPoints(nullptr, kcXform<2>()), KMATH_ERR_NULL);
  kmath_shapeAffineRect r{};
  r.corners[0] = {42, 42};
  kcXform<2> huge(kcMatrix<2>(1e308, 0, 0, 1), V(1e308, 0));
  EXPECT_EQ(kmath_shapeAffineRect_initPoints(&r, huge), KMATH_ERR_NOT_FINITE);
  EXPECT_EQ(r.corners[0].x, 42);  // untouched on failure
}

TEST(KmathEllipse, ImageLiesOnTheMappedEllipse) {
  const kmath_ellipse inputs[] = {{1, 2, 3, 1, 0.4}, {-5, 0, 0.5, 2, -2.0}, {0, 0, 1, 1, 0}};
  const kcXform<2> maps[] = {
      kcXform<2>(kcMatrix<2>(2, 1, 0, 1), V(3, 4)),
      kcXform<2>(kcMatrix<2>(-1, 0, 0, 3), V(0, -1)),
      kcXform<2>::rotation(kcRadian(1.1)) * kcXform<2>::scale(4, 0.5),
      kcXform<2>::translation(V(7, 7)),
  };
  for (const kmath_ellipse& e : inputs) {
    for (const kcXform<2>& x : maps) {
      kmath_ellipse image{};
      ASSERT_EQ(kmath_ellipse_transform(&image, &e, x), KMATH_OK);
      EXPECT_GE(image.radiusX, image.radiusY);
      EXPECT_GE(image.rotation, -std::numbers::pi / 2);
      EXPECT_LT(image.rotation, std::numbers::pi / 2);
      // Mapped points of the input lie on the image, and the image's points map
      // back onto the input.
      for (int i = 0; i < 24; ++i) {
        double t = 2 * std::numbers::pi * i / 24;
        EXPECT_LE(offEllipse(image, x * ellipsePoint(e, t)), 1e-12);
        EXPECT_LE(offEllipse(e, x.inverse() * ellipsePoint(image, t)), 1e-12);
      }
    }
  }
}

TEST(KmathEllipse, CanonicalForms) {
  // A circle under a rotation and a uniform scale stays a circle, rotation 0.
  kmath_ellipse circle{1, 1, 2, 2, 0.3}, image{};
  ASSERT_EQ(
      kmath_ellipse_transform(&image, &circle, kcXform<2>::rotation(kcRadian(0.9)) * kcXform<2>::scale(3, 3)),
      KMATH_OK);
  EXPECT_NEAR(image.radiusX, 6, 1e-14);
  EXPECT_EQ(image.radiusX, image.radiusY);
  EXPECT_EQ(image.rotation, 0.0);
  // The larger radius comes first: a tall ellipse is turned a quarter.
  kmath_ellipse tall{0, 0, 1, 4, 0};
  ASSERT_EQ(kmath_ellipse_transform(&tall, &tall, kcXform<2>()), KMATH_OK);  // in place
  EXPECT_DOUBLE_EQ(tall.radiusX, 4);
  EXPECT_DOUBLE_EQ(tall.radiusY, 1);
  EXPECT_NEAR(std::fabs(tall.rotation), std::numbers::pi / 2, 1e-15);
  // Agreement with kcEllipse2::map under a general map.
  kcXform<2> shear(kcMatrix<2>(1, 0.7, 0.2, 1.5), V(-2, 3));
  kcEllipse2 e(3, 1, kcRadian(0.25), V(1, 2));
  kcEllipse2 m = e.map(shear);
  kmath_ellipse k{1, 2, 3, 1, 0.25}, km{};
  ASSERT_EQ(kmath_ellipse_transform(&km, &k, shear), KMATH_OK);
  EXPECT_NEAR(km.radiusX, m.radiusX(), 1e-13);
  EXPECT_NEAR(km.radiusY, m.radiusY(), 1e-13);
  EXPECT_NEAR(km.rotation, m.rotation().toDouble(), 1e-13);
  EXPECT_EQ(V(km.centreX, km.centreY), m.center());
}

TEST(KmathEllipse, XformFormRoundTrip) {
  kmath_ellipse e{3, -1, 5, 2, 0.6}, back{};
  kcXform<2> x;
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
  const kmath_ellipse good{0, 0, 2, 1, 0};
  kmath_ellipse out{9, 9, 9, 9, 9};
  struct Row {
    kmath_ellipse in;
    kcXform<2> x;
    long code;
  } rows[] = {
      {{0, 0, 0, 1, 0}, kcXform<2>(), KMATH_ERR_DEGENERATE},                       // zero radius
      {{0, 0, -1, 1, 0}, kcXform<2>(), KMATH_ERR_DEGENERATE},                      // negative radius
      {good, kcXform<2>::scale(1, 0), KMATH_ERR_DEGENERATE},                       // collapses
      {good, kcXform<2>(kcMatrix<2>(1, 2, 2, 4), V(0, 0)), KMATH_ERR_DEGENERATE},  // singular
      {{nan, 0, 1, 1, 0}, kcXform<2>(), KMATH_ERR_NOT_FINITE},
      {good, kcXform<2>(kcMatrix<2>(1e308, 0, 0, 1e308), V(0, 0)), KMATH_ERR_NOT_FINITE},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(kmath_ellipse_transform(&out, &r.in, r.x), r.code);
    EXPECT_EQ(out.radiusX, 9);
  }
  EXPECT_EQ(kmath_ellipse_transform(nullptr, &good, kcXform<2>()), KMATH_ERR_NULL);
  EXPECT_EQ(kmath_ellipse_transform(&out, nullptr, kcXform<2>()), KMATH_ERR_NULL);
  EXPECT_EQ(kmath_ellipse_fromXform(&out, kcXform<2>::scale(0, 1)), KMATH_ERR_DEGENERATE);
  kcXform<2> x;
  EXPECT_EQ(kmath_ellipse_toXform(&x, &rows[0].in), KMATH_ERR_DEGENERATE);
  EXPECT_TRUE(x.isIdentity());
  // The foundation's exception for a failed call carries the code.
  try {
    kfThrowExceptionOnFailure(kmath_ellipse_transform(&out, &rows[0].in, kcXform<2>()));
    FAIL() << "no exception";
  } catch (const kcFoundationError::LibraryFailure& e) {
    EXPECT_EQ(e.code(), KMATH_ERR_DEGENERATE);
    EXPECT_EQ(e.errorNumber(), 0x10000401);
  }
}

}  // namespace
