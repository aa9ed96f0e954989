#include "foundation/shapes/hermitespline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

const std::vector<V> kPoints{V(0, 0), V(3, 1), V(5, -2), V(8, 0)};
const std::vector<V> kTangents{V(0, 6), V(4, 0), V(0, -3), V(2, 5)};

TEST(HermiteSpline, PiecesLeaveAndArriveWithTheTangents) {
  kcHermiteSpline s(kPoints, kTangents);
  ASSERT_EQ(s.numPieces(), 3);
  for (long i = 0; i < 3; ++i) {
    kcBezierCurve piece = s.piece(i);
    auto k = std::size_t(i);
    EXPECT_EQ(piece.startPoint(), kPoints[k]);
    EXPECT_EQ(piece.endPoint(), kPoints[k + 1]);
    EXPECT_LE(piece.derivativeAt(0).distance(kTangents[k]), 1e-14);
    EXPECT_LE(piece.derivativeAt(1).distance(kTangents[k + 1]), 1e-14);
  }
}

TEST(HermiteSpline, MapTurnsTangentsAndReverseNegatesThem) {
  kcHermiteSpline s(kPoints, kTangents);
  kcXform<2> x(kcMatrix<2>(0, -2, 1, 0), V(100, -50));
  kcHermiteSpline m = s.map(x);
  for (std::size_t i = 0; i < kPoints.size(); ++i) {
    EXPECT_EQ(m.points()[i], x * kPoints[i]);
    EXPECT_EQ(m.tangents()[i], x.mapVector(kTangents[i]));  // no translation
  }
  auto r = kfDynamicCast<kcHermiteSpline>(s.reverse());
  ASSERT_TRUE(r);
  EXPECT_EQ(r->points().front(), kPoints.back());
  EXPECT_EQ(r->tangents().front(), -kTangents.back());
}

TEST(HermiteSpline, RefusedEditsAndLoads) {
  kcHermiteSpline s(kPoints, kTangents);
  EXPECT_THROW(s.pointsAndTangents(kPoints, {V(1, 1)}), kcShapesError::BadParams);
  EXPECT_EQ(s, kcHermiteSpline(kPoints, kTangents));
  // A tangent count that differs from the point count.
  Bytes bytes = storeByHandle(s);
  bytes.at(bodyOffset(s) + 4 + 16 * 4) = 3;
  bytes.resize(bytes.size() - 16);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
