#include "foundation/matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

TEST(Matrix, RowMajorAlgebra) {
  const kcMatrix<2> a(1, 2, 3, 4), b(0, -1, 5, 2);
  EXPECT_EQ(a.element(0, 1), 2);
  EXPECT_EQ(a * kcVector<2>(1, 1), kcVector<2>(3, 7));
  EXPECT_EQ(a * b, kcMatrix<2>(10, 3, 20, 5));
  EXPECT_EQ(a.transpose(), kcMatrix<2>(1, 3, 2, 4));
  EXPECT_EQ(a.determinant(), -2);
  EXPECT_TRUE(kcMatrix<2>().isIdentity());
  EXPECT_THROW((void)a.element(2, 0), kcShapesError::BadParams);
  const kcMatrix<2> product = a * a.inverse();
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) EXPECT_NEAR(product.element(r, c), r == c, 1e-15);
}

TEST(Matrix, OnlyAnExactlyZeroDeterminantIsSingular) {
  EXPECT_THROW((void)kcMatrix<2>(1, 2, 2, 4).inverse(), kcMathError::Singular);
  EXPECT_THROW((void)kcMatrix<2>(0, 0, 0, 0).inverse(), kcMathError::Singular);
  EXPECT_NO_THROW((void)kcMatrix<2>(1, 2, 2, 4 + 1e-12).inverse());
}

// xRot, yRot and the scales against the images of the axes computed by hand.
TEST(Matrix, AxisRotationsAndScales) {
  const kcMatrix<2> cases[] = {
      kcMatrix<2>::rotation(kcDegree(-135)) * kcMatrix<2>::scale(2, 3),
      kcMatrix<2>(1, 0.5, 0, 1),  // shears
      kcMatrix<2>(1, 0, 0.5, 1),
      kcMatrix<2>::scale(-1, 1),  // a mirror
      kcMatrix<2>(2, -1, 3, 0.5),
  };
  for (const auto& m : cases) {
    kcVector<2> xImage = m * kcVector<2>(1, 0), yImage = m * kcVector<2>(0, 1);
    EXPECT_NEAR(m.xRot().toDouble(), xImage.angle().toDouble(), 1e-15);
    kcRadian yTurn = yImage.angle() - kcRadian(std::numbers::pi / 2);
    EXPECT_NEAR((m.yRot() - yTurn).signedNorm().toDouble(), 0, 1e-15);
    EXPECT_NEAR(m.xScale(), xImage.len(), 1e-15);
    EXPECT_NEAR(m.yScale(), yImage.len(), 1e-15);
  }
  // A rotation gives its angle twice; a shear along x tilts only the y axis.
  for (double deg : {0.0, 30.0, 90.0, 179.0, -135.0}) {
    const kcMatrix<2> m = kcMatrix<2>::rotation(kcDegree(deg));
    EXPECT_NEAR(m.xRot().toDouble(), kcRadian(kcDegree(deg)).toDouble(), 1e-15) << deg;
    EXPECT_NEAR(m.yRot().toDouble(), kcRadian(kcDegree(deg)).toDouble(), 1e-15) << deg;
  }
  EXPECT_EQ(kcMatrix<2>(1, 0.5, 0, 1).xRot(), kcRadian(0));
  EXPECT_EQ(kcMatrix<2>(1, 0.5, 0, 1).yRot(), kcRadian(-std::atan(0.5)));
}

}  // namespace
