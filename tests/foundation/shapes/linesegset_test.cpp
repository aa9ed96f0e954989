#include "foundation/shapes/linesegset.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

kcLineSegSet twoApart() { return kcLineSegSet({kcLineSeg(V(0, 0), V(2, 0)), kcLineSeg(V(5, 1), V(5, 4))}); }

TEST(LineSegSet, EmptySet) {
  kcLineSegSet s;
  EXPECT_TRUE(s.isEmpty());
  EXPECT_TRUE(s.encloseRect().isEmpty());
  EXPECT_THROW((void)s.nearestPoint(V()), kcShapesError::EmptyShape);
  expectArchiveBasics(s, "foundation/shapes/linesegset");
}

TEST(LineSegSet, GeometryOfDisjointSegments) {
  kcLineSegSet s = twoApart();
  EXPECT_EQ(s.encloseRect(), kcRect(V(0, 0), V(5, 4)));
  EXPECT_EQ(s.nearestPoint(V(4, 3)), V(5, 3));
  EXPECT_EQ(s.nearestPoint(V(1, -1)), V(1, 0));
  EXPECT_FALSE(s.isOpenContour());
  std::vector<V> pts = samples(s, 10.0);
  EXPECT_EQ(pts, (std::vector<V>{V(0, 0), V(2, 0), V(5, 1), V(5, 4)}));
  std::vector<kcShapePtr> pieces = s.decompose();
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(*pieces[1], kcLineSeg(V(5, 1), V(5, 4)));
  kcXform<2> x(kcMatrix<2>(0.5, 1, -1, 2), V(1, 2));
  kcLineSegSet m = s.map(x);
  ASSERT_EQ(m.size(), 2u);
  EXPECT_EQ(m.segments()[1], s.segments()[1].map(x));
  kcShapePtr mapped = s.mapShape(x);
  for (const V& p : samples(s, 0.1)) EXPECT_LT(mapped->distanceToPoint(x * p), 1e-12);
}

TEST(LineSegSet, ArchiveHoldsPlainEndPoints) {
  kcLineSegSet s = twoApart();
  expectArchiveBasics(s, "foundation/shapes/linesegset");
  EXPECT_EQ(storeByHandle(s).size(), bodyOffset(s) + 4 + 64);
  expectNaNCorrupt(s, bodyOffset(s) + 4 + 40);
  Bytes bytes = storeByHandle(s);
  patchDouble(bytes, bodyOffset(s) + 4 + 16, 0.0);  // second end on the first: (0, 0) to (0, 0)
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
  bytes = storeByHandle(s);
  bytes.at(bodyOffset(s)) = 3;  // three segments claimed, two present
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
