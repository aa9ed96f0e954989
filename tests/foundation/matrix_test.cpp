#include "foundation/matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <tuple>

namespace {

TEST(Matrix, RowMajorAlgebra) {
  const kcMatrix<2> a(1, 2, 3, 4), b(0, -1, 5, 2);
  EXPECT_EQ(a.element(0, 1), 2);
  EXPECT_EQ(a * kcVector<2>(1, 1), kcVector<2>(3, 7));
  EXPECT_EQ(a * b, kcMatrix<2>(10, 3, 20, 5));
  EXPECT_EQ(a.transpose(), kcMatrix<2>(1, 3, 2, 4));
  EXPECT_EQ(a.determinant(), -2);
  EXPECT_THROW((void)a.element(2, 0), kcShapesError::BadParams);
  const kcMatrix<2> product = a * a.inverse();
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) EXPECT_NEAR(product.element(r, c), r == c, 1e-15);
  // Only an exactly zero determinant is singular.
  EXPECT_THROW((void)kcMatrix<2>(1, 2, 2, 4).inverse(), kcMathError::Singular);
  EXPECT_NO_THROW((void)kcMatrix<2>(1, 2, 2, 4 + 1e-12).inverse());
}

// xRot and yRot are where the axes turn to, the scales how far they stretch.
TEST(Matrix, AxisRotationsAndScales) {
  const double pi = std::numbers::pi, q = std::atan(0.5), h = std::hypot(1, 0.5);
  const std::tuple<kcMatrix<2>, double, double, double, double> rows[] = {
      {kcMatrix<2>::rotation(kcDegree(-135)) * kcMatrix<2>::scale(2, 3), -0.75 * pi, -0.75 * pi, 2, 3},
      {kcMatrix<2>(1, 0.5, 0, 1), 0, -q, 1, h},  // a shear along x tilts only the y axis
      {kcMatrix<2>(1, 0, 0.5, 1), q, 0, h, 1},
      {kcMatrix<2>::scale(-1, 1), pi, 0, 1, 1},  // a mirror
      {kcMatrix<2>(2, -1, 3, 0.5), std::atan2(3, 2), pi / 2 - q, std::hypot(2, 3), h},
  };
  for (const auto& [m, xRot, yRot, xScale, yScale] : rows) {
    EXPECT_NEAR((m.xRot() - kcRadian(xRot)).signedNorm().toDouble(), 0, 1e-15);
    EXPECT_NEAR((m.yRot() - kcRadian(yRot)).signedNorm().toDouble(), 0, 1e-15);
    EXPECT_NEAR(m.xScale(), xScale, 1e-14);
    EXPECT_NEAR(m.yScale(), yScale, 1e-14);
  }
}

}  // namespace
