#include "foundation/shapes/shapetree.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/shapes/bezier.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/lineseg.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

kcShapePtr circle() { return kfMakeHandle<kcCircle>(V(0, 0), 1.0); }
kcShapePtr segment() { return kfMakeHandle<kcLineSeg>(V(5, 0), V(7, 0)); }
kcShapePtr curve() { return kfMakeHandle<kcBezierCurve>(V(0, 4), V(1, 6), V(3, 6), V(4, 4)); }

void putU32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
// A new shared object of a class in an archive: tag 1, the name, version 0.
void putNewObject(Bytes& b, const std::string& name) {
  b.push_back(1);
  putU32(b, static_cast<std::uint32_t>(name.size()));
  b.insert(b.end(), name.begin(), name.end());
  b.push_back(0);
}
// Trees nested depth deep, the innermost one empty, as stored bytes.
Bytes nestedTrees(int depth) {
  Bytes b;
  for (int i = 0; i < depth; ++i) {
    putNewObject(b, "kcShapeTree");
    putU32(b, i + 1 < depth ? 1 : 0);  // children
  }
  return b;
}

TEST(ShapeTree, ChildrenAreNeverNull) {
  EXPECT_THROW(kcShapeTree({circle(), kcShapePtr()}), kcShapesError::BadParams);
  kcShapeTree t({circle(), segment()});
  EXPECT_EQ(t.numChildren(), 2);
  EXPECT_THROW((void)t.child(2), kcShapesError::BadParams);
  EXPECT_THROW((void)t.child(-1), kcShapesError::BadParams);
  EXPECT_THROW(t.append(kcShapePtr()), kcShapesError::BadParams);
  EXPECT_EQ(t.numChildren(), 2);
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

TEST(ShapeTree, SamplesPiecesAndImagesFollowTheChildren) {
  kcShapeTree t({circle(), segment(), kcShapePtr(new kcShapeTree({curve()}))});
  std::vector<V> expected = samples(*circle(), 0.1);
  for (const kcShapePtr& c : {segment(), curve()})
    for (const V& p : samples(*c, 0.1)) expected.push_back(p);
  EXPECT_EQ(samples(t, 0.1), expected);
  std::vector<kcShapePtr> pieces = t.decompose();  // nested trees flattened
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_TRUE(*pieces[2] == *curve());
  kcShapeTree m = t.map(kcXform<2>::scale(2, 1));
  EXPECT_TRUE(kfDynamicCast<kcEllipse2>(m.child(0)));
  EXPECT_TRUE(*m.child(1) == kcLineSeg(V(10, 0), V(14, 0)));
  EXPECT_FALSE(kcShapeTree({segment(), circle()}) == kcShapeTree({circle(), segment()}));  // order counts
}

TEST(ShapeTree, SharingSurvivesClonesAndArchives) {
  kcShapePtr shared = curve();
  kcShapeTree t({circle(), shared, kcShapePtr(new kcShapeTree({shared, segment()}))});
  EXPECT_EQ(kcShapeTree(t).child(0), t.child(0));  // copies share the children
  for (kcShapePtr h : {t.clone(), loadByHandle(storeByHandle(t))}) {
    auto c = kfDynamicCast<kcShapeTree>(h);
    ASSERT_TRUE(c);
    EXPECT_TRUE(*c == t);
    EXPECT_FALSE(c->child(1) == shared);
    EXPECT_EQ(kfDynamicCast<kcShapeTree>(c->child(2))->child(0), c->child(1));  // still one object
  }
}

TEST(ShapeTree, LoadingRejectsNullChildrenAndSelfReference) {
  Bytes nullChild;
  putNewObject(nullChild, "kcShapeTree");
  putU32(nullChild, 1);
  nullChild.push_back(0);  // a null handle
  EXPECT_THROW((void)loadByHandle(nullChild), kcArchive::Corrupt);
  Bytes self;
  putNewObject(self, "kcShapeTree");
  putU32(self, 1);
  self.push_back(2);  // a back-reference to object 1, the tree itself
  putU32(self, 1);
  EXPECT_THROW((void)loadByHandle(self), kcArchive::Corrupt);
  Bytes viaGen;
  putNewObject(viaGen, "kcShapeTree");
  putU32(viaGen, 1);
  putNewObject(viaGen, "kcGenShape");
  viaGen.push_back(2);
  putU32(viaGen, 1);
  EXPECT_THROW((void)loadByHandle(viaGen), kcArchive::Corrupt);
}

TEST(ShapeTree, LoadingBoundsTheNesting) {
  EXPECT_TRUE(kfDynamicCast<kcShapeTree>(loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth))));
  EXPECT_THROW((void)loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth + 1)), kcArchive::Corrupt);
  // Far deeper than any stack would take: refused early, not a crash.
  EXPECT_THROW((void)loadByHandle(nestedTrees(200000)), kcArchive::Corrupt);
  // The count of a refused load is released: a normal load works afterwards.
  EXPECT_NO_THROW((void)loadByHandle(nestedTrees(kcShapeTree::kMaxLoadDepth)));
}

}  // namespace
