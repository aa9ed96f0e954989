#include "foundation/shapes/bezier.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

const kcBezierCurve kArch(V(0, 0), V(1, 3), V(4, 3), V(5, 0));

TEST(BezierCurve, PointsFollowDeCasteljauAndMapsMapTheControlPoints) {
  const std::vector<V> c{V(-2, 1), V(3, 5), V(-1, -4), V(4, 2)};
  kcBezierCurve b(c[0], c[1], c[2], c[3]);
  kcXform<2> x(kcMatrix<2>(-1, 0.5, 2, 3), V(4, -7));
  kcBezierCurve m = b.map(x);
  for (int i = 0; i <= 20; ++i) {
    EXPECT_LT(b.pointAt(i / 20.0).distance(casteljau(c.data(), i / 20.0)), 1e-13);
    EXPECT_LT(m.pointAt(i / 20.0).distance(x * casteljau(c.data(), i / 20.0)), 1e-12);
  }
  for (int i = 0; i < 4; ++i) EXPECT_EQ(m.controlPoint(i), x * c[std::size_t(i)]);
  EXPECT_THROW((void)b.controlPoint(4), kcShapesError::BadParams);
  EXPECT_THROW((void)b.controlPoint(-1), kcShapesError::BadParams);
  // A map onto a line still leaves a curve; one onto a point does not.
  EXPECT_NO_THROW((void)kArch.map(kcXform<2>::scale(1, 0)));
  EXPECT_THROW((void)b.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V(1, 1))), kcShapesError::DegenerateShape);
}

TEST(BezierCurve, SplitHalvesRejoinTheCurve) {
  auto [left, right] = kArch.split(0.3);
  EXPECT_EQ(left.startPoint(), kArch.startPoint());
  EXPECT_EQ(right.endPoint(), kArch.endPoint());
  EXPECT_EQ(left.endPoint(), right.startPoint());
  for (int i = 0; i <= 10; ++i) {
    EXPECT_LE(left.pointAt(i / 10.0).distance(kArch.pointAt(0.03 * i)), 1e-13);
    EXPECT_LE(right.pointAt(i / 10.0).distance(kArch.pointAt(0.3 + 0.07 * i)), 1e-13);
  }
  for (double bad : {0.0, 1.0}) EXPECT_THROW((void)kArch.split(bad), kcShapesError::BadParams);
  auto back = kfDynamicCast<kcBezierCurve>(kArch.reverse());
  ASSERT_TRUE(back);
  for (int i = 0; i <= 10; ++i)
    EXPECT_LE(back->pointAt(i / 10.0).distance(kArch.pointAt(1 - i / 10.0)), 1e-13);
}

TEST(BezierCurve, NearestPointTiesGoToTheStart) {
  // A symmetric arch: a point on its axis far below is equally near both ends.
  kcBezierCurve b(V(-1, 0), V(-1, 2), V(1, 2), V(1, 0));
  EXPECT_EQ(b.nearestPoint(V(0, -10)), V(-1, 0));
  EXPECT_LE(b.nearestPoint(V(0, 5)).distance(V(0, 1.5)), 1e-12);  // the foot at the apex
  EXPECT_LE(b.pointAt(b.nearestParam(V(0, 5))).distance(V(0, 1.5)), 1e-12);
}

TEST(BezierCurve, ArchiveFormAndRefusedLoad) {
  kcBezierCurve b(V(1, 2), V(3, 4), V(5, 6), V(7, 8.5));
  kcMemArchive ar;
  ar || b;
  Bytes want{0};  // version, then the four points
  for (double v : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.5}) {
    want.resize(want.size() + 8);
    patchDouble(want, want.size() - 8, v);
  }
  EXPECT_EQ(ar.bytes(), want);
  // A refused load (four coincident points) leaves the target as it was.
  for (std::size_t i = 2; i < 8; ++i) patchDouble(want, 1 + 8 * i, i % 2 ? 2.0 : 1.0);
  kcBezierCurve target = kArch;
  kcMemArchive in(want);
  EXPECT_THROW(in || target, kcArchive::Corrupt);
  EXPECT_EQ(target, kArch);
  EXPECT_THROW(target.controlPoints({V(3, 3), V(3, 3), V(3, 3), V(3, 3)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(target, kArch);
}

}  // namespace
