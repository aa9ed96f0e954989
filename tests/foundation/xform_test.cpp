#include "foundation/xform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "foundation/archive.h"

namespace {

using X = kcXform<2>;
using V = kcVector<2>;

// Every kind of linear part: a turn, a mirror, a shear, a general matrix, a
// non-uniform scale.
const X kCases[] = {
    X::rotation(kcDegree(30)) * X::translation({1, -2}),
    X(kcMatrix<2>::scale(-1, 1), {0.5, 0.25}),
    X(kcMatrix<2>(1, 0.75, 0, 1), {-3, 1}),
    X(kcMatrix<2>(2, -1, 3, 0.5), {1, 1}),
    X::scale(0.5, 4),
};

void expectNear(const V& a, const V& b, double tol = 1e-14) {
  EXPECT_NEAR(a.x(), b.x(), tol);
  EXPECT_NEAR(a.y(), b.y(), tol);
}

TEST(Xform, ComposesRightFirst) {
  const X shift = X::translation({1, 0}), turn = X::rotation(kcDegree(90));
  expectNear((shift * turn) * V(1, 0), V(1, 1));  // turned to (0, 1), then shifted
  expectNear((turn * shift) * V(1, 0), V(0, 2));  // shifted to (2, 0), then turned
  EXPECT_EQ(X(kcMatrix<2>(1, 2, 3, 4), {10, 20}).mapVector({1, 1}), V(3, 7));
  for (const X& a : kCases)
    for (const X& b : kCases) expectNear((a * b) * V(0.3, -1.7), a * (b * V(0.3, -1.7)), 1e-13);
}

TEST(Xform, InverseUndoesTheMap) {
  for (const X& x : kCases) {
    EXPECT_EQ(x * x.inverse(), X());
    EXPECT_EQ(x.inverse() * x, X());
    expectNear(x.invMapPoint(x * V(-1, 3)), V(-1, 3));
  }
  EXPECT_THROW((void)X::scale(1, 0).inverse(), kcMathError::Singular);
  EXPECT_THROW((void)X::scale(0, 1).invMapPoint({1, 1}), kcMathError::Singular);
}

// The mapped angle is the direction of the mapped unit vector, worked out
// here by hand.
TEST(Xform, MapAngleFollowsTheMappedDirection) {
  for (const X& x : kCases) {
    for (double deg : {0.0, 45.0, 100.0, -170.0}) {
      const double a = deg * kcRadian::kPerDegree, ux = std::cos(a), uy = std::sin(a);
      const kcMatrix<2>& m = x.matrix();
      const double expected = std::atan2(m.element(1, 0) * ux + m.element(1, 1) * uy,
                                         m.element(0, 0) * ux + m.element(0, 1) * uy);
      EXPECT_NEAR(x.mapAngle(kcRadian(a)).toDouble(), expected, 1e-15);
      EXPECT_NEAR(x.mapAngle(kcDegree(deg)).toDouble(), expected * kcDegree::kPerRadian, 1e-12);
      const kcDegree back = x.invMapAngle(x.mapAngle(kcDegree(deg)));
      EXPECT_NEAR((back - kcDegree(deg)).signedNorm().toDouble(), 0, 1e-12);
      const kcRadian backRad = x.invMapAngle(x.mapAngle(kcRadian(a)));
      EXPECT_NEAR((backRad - kcRadian(a)).signedNorm().toDouble(), 0, 1e-14);
    }
  }
  // A mirror in x reflects angles about the y axis; a translation plays no part.
  EXPECT_NEAR(X(kcMatrix<2>::scale(-1, 1), {5, 5}).mapAngle(kcDegree(30)).toDouble(), 150, 1e-12);
  EXPECT_NEAR(X::scale(2, 1).mapAngle(kcDegree(45)).toDouble(), std::atan(0.5) * kcDegree::kPerRadian, 1e-12);
  // A collapsed direction has no angle; the others keep theirs.
  EXPECT_THROW((void)X::scale(0, 1).mapAngle(kcRadian(0)), kcMathError::Singular);
  EXPECT_NEAR(X::scale(0, 1).mapAngle(kcDegree(90)).toDouble(), 90, 1e-12);
}

TEST(Xform, IdentityIsExactEqualityHasTolerance) {
  EXPECT_FALSE(X::translation({0, 1e-300}).isIdentity());
  EXPECT_EQ(X::translation({0, 1e-300}), X());
  EXPECT_EQ(X(kcMatrix<2>(1 + 5e-16, 0, 0, 1), {}), X());
  EXPECT_NE(X(kcMatrix<2>(1 + 4e-15, 0, 0, 1), {}), X());
  EXPECT_NE(X::translation({0, 2e-15}), X());
}

// The matrix row by row, then the translation.
TEST(Xform, ArchiveIsMatrixThenTranslation) {
  kcMemArchive out;
  out << X(kcMatrix<2>(1, 2, 3, 4), {5, 6});
  kcMemArchive in(out.bytes());
  for (double expected : {1, 2, 3, 4, 5, 6}) {
    double value = 0;
    in >> value;
    EXPECT_EQ(value, expected);
  }
  EXPECT_TRUE(in.atEnd());
  kcMemArchive again(out.bytes());
  X loaded;
  again >> loaded;
  EXPECT_EQ(loaded.mapPoint({1, 1}), V(8, 13));
}

TEST(XformLinear, TravelsByHandle) {
  kcPtrHandle_const<kc2XformBase> held(new kc2XformLinear(kCases[3]));
  EXPECT_EQ(held->mapPoint({1, 2}), kCases[3] * V(1, 2));
  kcMemArchive out;
  out << held;
  // Tag, class name, version 0, the transform.
  const std::string name = "kc2XformLinear";
  ASSERT_EQ(out.bytes().size(), 1 + 4 + name.size() + 1 + 48);
  EXPECT_EQ(std::string(out.bytes().begin() + 5, out.bytes().begin() + 5 + name.size()), name);
  EXPECT_EQ(out.bytes()[5 + name.size()], 0);
  kcMemArchive in(out.bytes());
  kcPtrHandle_const<kc2XformBase> loaded;
  in >> loaded;
  ASSERT_NE(dynamic_cast<const kc2XformLinear*>(loaded.get()), nullptr);
  EXPECT_TRUE(loaded->linearXform().matrix() == kCases[3].matrix() &&
              loaded->linearXform().trans() == kCases[3].trans());

  std::vector<std::uint8_t> bytes = out.bytes();
  bytes[5 + name.size()] = 1;  // a version from the future
  kcMemArchive future(bytes);
  try {
    future >> loaded;
    FAIL() << "version 1 loaded";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "foundation/xform");
    EXPECT_GT(e.line(), 0);
  }
}

}  // namespace
