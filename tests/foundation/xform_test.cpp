#include "foundation/xform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

#include "foundation/archive.h"

namespace {

using X = kcXform<2>;
using V = kcVector<2>;

// Every kind of linear part: a turn, a mirror, a shear, a general matrix, a
// non-uniform scale.
const X kCases[] = {X::rotation(kcDegree(30)) * X::translation({1, -2}),
                    X(kcMatrix<2>::scale(-1, 1), {0.5, 0.25}), X(kcMatrix<2>(1, 0.75, 0, 1), {-3, 1}),
                    X(kcMatrix<2>(2, -1, 3, 0.5), {1, 1}), X::scale(0.5, 4)};

TEST(Xform, ComposesRightFirst) {
  const X shift = X::translation({1, 0}), turn = X::rotation(kcDegree(90));
  EXPECT_LE(((shift * turn) * V(1, 0)).distance(V(1, 1)), 1e-14);  // turned to (0, 1), then shifted
  EXPECT_LE(((turn * shift) * V(1, 0)).distance(V(0, 2)), 1e-14);  // shifted to (2, 0), then turned
  EXPECT_EQ(X(kcMatrix<2>(1, 2, 3, 4), {10, 20}).mapVector({1, 1}), V(3, 7));
  for (const X& a : kCases)
    for (const X& b : kCases) EXPECT_LE(((a * b) * V(0.3, -1.7)).distance(a * (b * V(0.3, -1.7))), 1e-13);
}

TEST(Xform, InverseUndoesTheMap) {
  for (const X& x : kCases) {
    EXPECT_EQ(x * x.inverse(), X());
    EXPECT_LE(x.invMapPoint(x * V(-1, 3)).distance(V(-1, 3)), 1e-14);
  }
  EXPECT_THROW((void)X::scale(1, 0).inverse(), kcMathError::Singular);
  EXPECT_THROW((void)X::scale(0, 1).invMapPoint({1, 1}), kcMathError::Singular);
}

// A mirror reflects angles, a non-uniform scale or a shear bends them, a
// translation plays no part; a collapsed direction has no angle.
TEST(Xform, MapAngleFollowsTheMappedDirection) {
  const double perRadian = kcDegree::kPerRadian;
  const std::tuple<X, double, double> rows[] = {
      {X(kcMatrix<2>::scale(-1, 1), {5, 5}), 30, 150},
      {X::scale(2, 1), 45, std::atan(0.5) * perRadian},
      {X(kcMatrix<2>(1, 0.75, 0, 1), {-3, 1}), 90, std::atan2(1, 0.75) * perRadian},
      {kCases[0], 100, 130},
      {X::scale(0, 1), 90, 90},
  };
  for (const auto& [x, in, out] : rows) {
    EXPECT_NEAR(x.mapAngle(kcDegree(in)).toDouble(), out, 1e-12) << in;
    EXPECT_NEAR(x.mapAngle(kcRadian(kcDegree(in))).toDouble(), out / perRadian, 1e-15) << in;
  }
  EXPECT_THROW((void)X::scale(0, 1).mapAngle(kcRadian(0)), kcMathError::Singular);
  for (const X& x : kCases) {
    for (double deg : {0.0, 45.0, 100.0, -170.0}) {
      const kcDegree back = x.invMapAngle(x.mapAngle(kcDegree(deg)));
      EXPECT_NEAR((back - kcDegree(deg)).signedNorm().toDouble(), 0, 1e-12);
    }
  }
}

TEST(Xform, IdentityIsExactEqualityHasTolerance) {
  EXPECT_FALSE(X::translation({0, 1e-300}).isIdentity());
  EXPECT_EQ(X::translation({0, 1e-300}), X());
  EXPECT_EQ(X(kcMatrix<2>(1 + 5e-16, 0, 0, 1), {}), X());
  EXPECT_NE(X(kcMatrix<2>(1 + 4e-15, 0, 0, 1), {}), X());
}

// The matrix row by row, then the translation; as a handle, tag, class name,
// version 0, then the transform.
TEST(Xform, ArchiveForms) {
  kcMemArchive out, doubles;
  out << X(kcMatrix<2>(1, 2, 3, 4), {5, 6});
  for (double d : {1, 2, 3, 4, 5, 6}) doubles << d;
  EXPECT_EQ(out.bytes(), doubles.bytes());

  kcMemArchive byHandle;
  byHandle << kcPtrHandle_const<kc2XformBase>(new kc2XformLinear(kCases[3]));
  std::vector<std::uint8_t> bytes = byHandle.bytes();
  const std::string name = "kc2XformLinear";
  ASSERT_EQ(bytes.size(), 1 + 4 + name.size() + 1 + 48);
  EXPECT_EQ(std::string(bytes.begin() + 5, bytes.begin() + 5 + name.size()), name);
  EXPECT_EQ(bytes[5 + name.size()], 0);
  kcMemArchive back(bytes);
  kcPtrHandle_const<kc2XformBase> loaded;
  back >> loaded;
  ASSERT_NE(dynamic_cast<const kc2XformLinear*>(loaded.get()), nullptr);
  EXPECT_TRUE(loaded->linearXform().matrix() == kCases[3].matrix() &&
              loaded->linearXform().trans() == kCases[3].trans());
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
