#include "foundation/shapes/shapetree.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <exception>
#include <functional>
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

// Runs f on a thread with a small stack and waits for it; f's exception is
// rethrown here. Walks that recurse once per level of nesting overflow it.
void onSmallStack(const std::function<void()>& f) {
  constexpr std::size_t kStack = std::size_t{1} << 20;
  struct Job {
    const std::function<void()>* f;
    std::exception_ptr error;
  } job{&f, nullptr};
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, kStack), 0);
  pthread_t thread;
  auto run = [](void* arg) -> void* {
    auto* j = static_cast<Job*>(arg);
    try {
      (*j->f)();
    } catch (...) {
      j->error = std::current_exception();
    }
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, run, &job), 0);
  pthread_attr_destroy(&attr);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  if (job.error) std::rethrow_exception(job.error);
}

// depth trees and general shapes, alternately, around inner; the outermost is a tree.
kcShapePtr nest(kcShapePtr inner, int depth) {
  for (int i = depth; i > 0; --i)
    inner = i % 2 ? kcShapePtr(kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{inner}))
                  : kcShapePtr(kfMakeHandle<kcGenShape>(inner));
  return inner;
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
  // Assignment takes the other's parts through the same check.
  EXPECT_THROW(*b = kcShapeTree({segment(), a}), kcShapesError::BadParams);
  EXPECT_THROW(*b = kcShapeTree({g}), kcShapesError::BadParams);
  EXPECT_EQ(b->numChildren(), 2);
  EXPECT_THROW(*g = kcGenShape(kcShapePtr(outer)), kcShapesError::BadParams);
  EXPECT_EQ(g->shape(), kcShapePtr(a));
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

// Far deeper than the stack of a small thread would take if any of these
// walks recursed once per level.
TEST(ShapeTree, DeepNestingIsWalkedWithoutRecursion) {
  constexpr int kDepth = 8000;
  onSmallStack([] {
    kcShapePtr seg = segment();
    auto bottom = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{seg});
    kcShapePtr top = nest(bottom, kDepth);
    EXPECT_TRUE(kcShapeTree::contains(*top, *seg));
    EXPECT_THROW(bottom->append(top), kcShapesError::BadParams);
    EXPECT_EQ(bottom->numChildren(), 1);
    // Queries answer as for the segment alone.
    EXPECT_FALSE(top->isEmpty());
    EXPECT_TRUE(top->isFinite());
    EXPECT_EQ(top->encloseRect(), seg->encloseRect());
    EXPECT_EQ(top->nearestPoint(V(6, 3)), V(6, 0));
    EXPECT_EQ(top->distanceToPoint(V(6, 3)), 3.0);
    EXPECT_EQ(samples(*top, 0.5), samples(*seg, 0.5));
    std::vector<kcShapePtr> pieces = top->decompose();
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_TRUE(*pieces[0] == *seg);
    // Copies and images keep the nesting, and compare equal (or not) level by level.
    kcShapePtr copy = top->clone();
    EXPECT_TRUE(*copy == *top);
    EXPECT_FALSE(kcShapeTree::contains(*copy, *seg));
    kcShapePtr moved = top->mapShape(kcXform<2>::translation(V(0, 1)));
    EXPECT_FALSE(*moved == *top);
    EXPECT_EQ(moved->nearestPoint(V(6, 3)), V(6, 1));
    EXPECT_TRUE(*moved == *nest(kfMakeHandle<kcShapeTree>(
                                    std::vector<kcShapePtr>{kfMakeHandle<kcLineSeg>(V(5, 1), V(7, 1))}),
                                kDepth));
    // A chain of general shapes alone answers as the shape at its end.
    kcShapePtr gens = kfMakeHandle<kcGenShape>(curve());
    for (int i = 1; i < kDepth; ++i) gens = kfMakeHandle<kcGenShape>(gens);
    EXPECT_TRUE(gens->isOpenContour());
    EXPECT_EQ(gens->startPoint(), V(0, 4));
    EXPECT_EQ(gens->reverse()->startPoint(), V(4, 4));
    EXPECT_THROW((void)gens->within(V(2, 5)), kcShapesError::NotRegion);
    kcShapePtr disc = kfMakeHandle<kcGenShape>(circle());
    for (int i = 1; i < kDepth; ++i) disc = kfMakeHandle<kcGenShape>(disc);
    EXPECT_TRUE(disc->within(V(0.5, 0)));
    EXPECT_EQ(disc->boundingBox(), circle()->boundingBox());
    // Storing refuses the nesting at once, instead of writing it level by level.
    kcMemArchive ar;
    EXPECT_THROW(ar || top, kcArchive::ValueOutOfRange);
    EXPECT_TRUE(ar.bytes().empty());
    // Destruction: the last handles go while still on the small stack.
    top = moved = copy = gens = disc = kcShapePtr();
    EXPECT_EQ(bottom->refCount(), 1);
  });
}

TEST(ShapeTree, StoresOnlyWhatLoadingAccepts) {
  // Exactly at the limit: stored, and loaded back equal.
  kcShapePtr deepest = nest(circle(), kcShapeTree::kMaxLoadDepth);
  Bytes bytes;
  {
    kcMemArchive ar;
    ar || deepest;
    bytes = ar.bytes();
  }
  kcShapePtr back = loadByHandle(bytes);
  ASSERT_TRUE(back);
  EXPECT_TRUE(*back == *deepest);
  // The form is the one loading was always given.
  kcShapePtr trees = kfMakeHandle<kcShapeTree>();
  for (int i = 1; i < kcShapeTree::kMaxLoadDepth; ++i)
    trees = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{trees});
  EXPECT_EQ(storeByHandle(*trees), nestedTrees(kcShapeTree::kMaxLoadDepth));
  // One more level, by handle or as a value: refused before anything is
  // written, so the archive holds what it held.
  for (kcShapePtr tooDeep : {nest(circle(), kcShapeTree::kMaxLoadDepth + 1),
                             kcShapePtr(kfMakeHandle<kcGenShape>(deepest)), nest(deepest, 3)}) {
    kcMemArchive ar;
    int first = 7;
    ar || first;
    const Bytes before = ar.bytes();
    EXPECT_THROW(ar || tooDeep, kcArchive::ValueOutOfRange);
    EXPECT_EQ(ar.bytes(), before);
    auto* tree = dynamic_cast<kcShapeTree*>(tooDeep.get());
    if (tree) {
      EXPECT_THROW(ar || *tree, kcArchive::ValueOutOfRange);
      EXPECT_EQ(ar.bytes(), before);
    }
    // The refused store leaves no nesting open behind: the deepest tree
    // that fits still stores after it.
    EXPECT_NO_THROW(ar || deepest);
  }
  // A part written once already goes again as a back-reference, which adds
  // no nesting, however deep it is held the second time.
  kcShapePtr shared = nest(circle(), kcShapeTree::kMaxLoadDepth - 1);
  kcShapePtr twice = kfMakeHandle<kcShapeTree>(std::vector<kcShapePtr>{shared, nest(shared, 3)});
  auto loaded = kfDynamicCast<kcShapeTree>(loadByHandle(storeByHandle(*twice)));
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(*loaded == *twice);
  EXPECT_TRUE(kcShapeTree::contains(*loaded->child(1), *loaded->child(0)));
}

// A shape of another kind holding a shape, as a library built on this one may
// define; it stores the held shape as its whole body.
class Holder final : public kcShape {
 public:
  explicit Holder(kcShapePtr held) : held_(std::move(held)) {}
  const char* className() const override { return "Holder"; }
  kcShapePtr clone() const override { return kfMakeHandle<Holder>(held_); }
  kcShapePtr mapShape(const kcXform<2>&) const override { return clone(); }
  kcRect encloseRect() const override { return held_->encloseRect(); }
  V nearestPoint(const V& p) const override { return held_->nearestPoint(p); }
  void sample(double spacing, std::vector<V>& out) const override { held_->sample(spacing, out); }
  void dispatchSerialize(kcArchive& ar) override { ar || held_; }

 protected:
  bool equal_(const kcShape&) const override { return false; }

 private:
  kcShapePtr held_;
};

TEST(ShapeTree, StoringCountsTheNestingAlreadyOpen) {
  // The outer tree cannot see through the holder; the inner nesting is
  // checked when it starts, with the outer tree's level counted.
  for (int inner : {kcShapeTree::kMaxLoadDepth - 1, kcShapeTree::kMaxLoadDepth}) {
    SCOPED_TRACE(inner);
    kcShapeTree root({kcShapePtr(kfMakeHandle<Holder>(nest(circle(), inner)))});
    kcMemArchive ar;
    if (inner < kcShapeTree::kMaxLoadDepth) {
      EXPECT_NO_THROW(ar || root);
    } else {
      EXPECT_THROW(ar || root, kcArchive::ValueOutOfRange);
      EXPECT_TRUE(ar.bytes().empty());
    }
  }
}

}  // namespace
