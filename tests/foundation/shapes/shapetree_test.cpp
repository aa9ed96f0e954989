#include "foundation/shapes/shapetree.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/pointset.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;

kcShapePtr circle() { return new kcCircle(V(0, 0), 1.0); }
kcShapePtr segment() { return new kcLineSeg(V(5, 0), V(7, 0)); }
kcShapePtr curve() { return new kcBezierCurve(V(0, 4), V(1, 6), V(3, 6), V(4, 4)); }

void putU32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
// The start of a new shared object of a class in an archive: tag 1 and the name.
void putNewObject(Bytes& b, const std::string& name) {
  b.push_back(1);
  putU32(b, static_cast<std::uint32_t>(name.size()));
  b.insert(b.end(), name.begin(), name.end());
}
// Trees nested depth deep, the innermost one empty, as stored bytes.
Bytes nestedTrees(int depth) {
  Bytes b;
  for (int i = 0; i < depth; ++i) {
    putNewObject(b, "kcShapeTree");
    b.push_back(0);                    // version
    putU32(b, i + 1 < depth ? 1 : 0);  // children
  }
  return b;
}

TEST(ShapeTree, ChildrenAndErrors) {
  kcShapeTree empty;
  EXPECT_EQ(empty.numChildren(), 0);
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_TRUE(empty.encloseRect().isEmpty());
  EXPECT_THROW((void)empty.nearestPoint(V(0, 0)), kcShapesError::EmptyShape);
  EXPECT_THROW(kcShapeTree({circle(), kcShapePtr()}), kcShapesError::BadParams);
  kcShapeTree t({circle(), segment()});
  EXPECT_EQ(t.numChildren(), 2);
  EXPECT_THROW((void)t.child(2), kcShapesError::BadParams);
  EXPECT_THROW((void)t.child(-1), kcShapesError::BadParams);
  EXPECT_THROW(t.append(kcShapePtr()), kcShapesError::BadParams);
  EXPECT_FALSE(t.isOpenContour());
  EXPECT_FALSE(t.isRegion());
  EXPECT_THROW((void)t.within(V(0, 0)), kcShapesError::NotRegion);
  EXPECT_THROW((void)t.startPoint(), kcShapesError::NotOpenContour);
  // A tree whose only child has no geometry is empty too.
  kcShapeTree hollow({kcShapePtr(new kcPointSet())});
  EXPECT_TRUE(hollow.isEmpty());
  EXPECT_THROW((void)hollow.nearestPoint(V(0, 0)), kcShapesError::EmptyShape);
}

TEST(ShapeTree, RefusesToContainItself) {
  kcPtrHandle<kcShapeTree> a(new kcShapeTree({circle()}));
  kcPtrHandle<kcShapeTree> b(new kcShapeTree({segment()}));
  EXPECT_THROW(a->append(a), kcShapesError::BadParams);
  a->append(b);
  EXPECT_THROW(b->append(a), kcShapesError::BadParams);  // a holds b
  EXPECT_THROW(b->children({segment(), a}), kcShapesError::BadParams);
  EXPECT_EQ(b->numChildren(), 1);  // unchanged
  // Through a general shape.
  kcPtrHandle<kcGenShape> g(new kcGenShape(kcShapePtr(a)));
  EXPECT_THROW(b->append(g), kcShapesError::BadParams);
  EXPECT_THROW(g->shape(g), kcShapesError::BadParams);
  kcPtrHandle<kcGenShape> outer(new kcGenShape(kcShapePtr(g)));
  EXPECT_THROW(g->shape(outer), kcShapesError::BadParams);
  EXPECT_TRUE(kcShapeTree::contains(*outer, *b));
  EXPECT_FALSE(kcShapeTree::contains(*b, *a));
  // The same child twice is sharing, not a cycle.
  EXPECT_NO_THROW(b->append(b->child(0)));
}

TEST(ShapeTree, GeometryIsThatOfTheNearestChild) {
  kcShapeTree t({circle(), segment(), kcShapePtr(new kcShapeTree({curve()}))});
  EXPECT_DOUBLE_EQ(t.distanceToPoint(V(6, 1)), 1.0);
  EXPECT_EQ(t.nearestPoint(V(6, 1)), V(6, 0));
  EXPECT_DOUBLE_EQ(t.distanceToPoint(V(-3, 0)), 2.0);
  EXPECT_NEAR(t.distanceToPoint(V(2, 8)), 8.0 - 5.5, 1e-12);  // the curve's apex is (2, 5.5)
  kcRect box = t.encloseRect();
  EXPECT_DOUBLE_EQ(box.xMin(), -1.0);
  EXPECT_DOUBLE_EQ(box.xMax(), 7.0);
  EXPECT_DOUBLE_EQ(box.yMin(), -1.0);
  EXPECT_NEAR(box.yMax(), 5.5, 1e-12);
  expectDistancesMatchSampling(t, probeGrid(box, 2.0, 8), 0.001, 1e-5);
  // Samples are the children's, in order.
  std::vector<V> expected = samples(*circle(), 0.1);
  for (const V& p : samples(*segment(), 0.1)) expected.push_back(p);
  for (const V& p : samples(*curve(), 0.1)) expected.push_back(p);
  EXPECT_EQ(samples(t, 0.1), expected);
  // Decomposition flattens nested trees.
  std::vector<kcShapePtr> pieces = t.decompose();
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_TRUE(*pieces[2] == *curve());
}

TEST(ShapeTree, MapMapsEveryChildPolymorphically) {
  kcShapeTree t({circle(), segment()});
  kcXform<2> stretch = kcXform<2>::scale(2, 1);
  kcShapeTree m = t.map(stretch);
  ASSERT_EQ(m.numChildren(), 2);
  EXPECT_NE(dynamic_cast<kcEllipse2*>(m.child(0).get()), nullptr);
  EXPECT_TRUE(*m.child(1) == kcLineSeg(V(10, 0), V(14, 0)));
  kcShapePtr h = t.mapShape(kcXform<2>::translation(V(1, 1)));
  auto* moved = dynamic_cast<kcShapeTree*>(h.get());
  ASSERT_NE(moved, nullptr);
  EXPECT_NE(dynamic_cast<kcCircle*>(moved->child(0).get()), nullptr);
  expectMapMatchesSamples(t, kcXform<2>(kcMatrix<2>(1, 0.5, 0, 2), V(3, -1)), 0.01, 1e-3);
}

TEST(ShapeTree, CopiesShareChildrenClonesDoNot) {
  kcShapeTree t({circle(), segment()});
  kcShapeTree copy = t;
  EXPECT_EQ(copy.child(0), t.child(0));
  kcShapePtr c = t.clone();
  auto* ct = dynamic_cast<kcShapeTree*>(c.get());
  ASSERT_NE(ct, nullptr);
  EXPECT_FALSE(ct->child(0) == t.child(0));
  EXPECT_TRUE(*ct == t);
  // Equality is by value and by order.
  EXPECT_TRUE(kcShapeTree({circle(), segment()}) == t);
  EXPECT_FALSE(kcShapeTree({segment(), circle()}) == t);
  EXPECT_FALSE(kcShapeTree({circle()}) == t);
  // A child held twice, also inside a nested tree, stays one object in the clone.
  kcShapePtr shared = curve();
  kcShapeTree s({shared, kcShapePtr(new kcShapeTree({shared}))});
  kcShapePtr sc = s.clone();
  const auto& st = static_cast<const kcShapeTree&>(*sc);
  EXPECT_EQ(static_cast<const kcShapeTree&>(*st.child(1)).child(0), st.child(0));
  EXPECT_FALSE(st.child(0) == shared);
}

TEST(ShapeTree, ArchiveKeepsClassesOrderAndSharing) {
  kcShapePtr shared = curve();
  kcShapeTree t({circle(), shared, kcShapePtr(new kcShapeTree({shared, segment()}))});
  expectRoundTrip(t);
  expectUnknownVersion(t, "foundation/shapes/shapetree");
  expectTruncationCorrupt(t);
  kcShapePtr h = new kcShapeTree(t);
  kcMemArchive out;
  out || h;
  kcShapePtr loaded = loadByHandle(out.bytes());
  auto* lt = dynamic_cast<kcShapeTree*>(loaded.get());
  ASSERT_NE(lt, nullptr);
  auto* inner = dynamic_cast<kcShapeTree*>(lt->child(2).get());
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->child(0), lt->child(1));  // still one object
  EXPECT_NE(dynamic_cast<kcCircle*>(lt->child(0).get()), nullptr);
}

TEST(ShapeTree, LoadingRejectsNullChildrenAndSelfReference) {
  Bytes nullChild;
  putNewObject(nullChild, "kcShapeTree");
  nullChild.push_back(0);
  putU32(nullChild, 1);
  nullChild.push_back(0);  // a null handle
  EXPECT_THROW((void)loadByHandle(nullChild), kcArchive::Corrupt);

  Bytes self;
  putNewObject(self, "kcShapeTree");
  self.push_back(0);
  putU32(self, 1);
  self.push_back(2);  // a back-reference to object 1, the tree itself
  putU32(self, 1);
  EXPECT_THROW((void)loadByHandle(self), kcArchive::Corrupt);

  Bytes viaGen;
  putNewObject(viaGen, "kcShapeTree");
  viaGen.push_back(0);
  putU32(viaGen, 1);
  putNewObject(viaGen, "kcGenShape");
  viaGen.push_back(0);
  viaGen.push_back(2);
  putU32(viaGen, 1);
  EXPECT_THROW((void)loadByHandle(viaGen), kcArchive::Corrupt);
}

TEST(ShapeTree, LoadingBoundsTheNesting) {
  kcShapePtr deepest = loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth));
  EXPECT_NE(dynamic_cast<kcShapeTree*>(deepest.get()), nullptr);
  EXPECT_THROW((void)loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth + 1)), kcArchive::Corrupt);
  // Far deeper than any stack would take: refused early, not a crash.
  EXPECT_THROW((void)loadByHandle(nestedTrees(200000)), kcArchive::Corrupt);
  // The count of a refused load is released: a normal load works afterwards.
  EXPECT_NO_THROW((void)loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth)));
}

}  // namespace
