#include "foundation/shapes/shapetree.h"

#include <functional>
#include <limits>
#include <memory>
#include <typeinfo>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/archive.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shapetree_p.h"

KC_DEFINE_PERSISTENT(kcShapeTree);

// --- walks over the nesting ---

namespace {

// A value for every shape below root, each shape once, parts before the
// composites that hold them (the nesting is acyclic, so that order exists):
// leaf(shape) for a shape that is neither a tree nor a general shape,
// tree(tree, valueOf) and gen(genShape, valueOf) for composites, where
// valueOf(part) gives the value already made for a part.
template <class T, class Leaf, class Tree, class Gen>
T foldNesting(const kcShape& root, Leaf leaf, Tree tree, Gen gen) {
  std::unordered_map<const kcShape*, T> done;  // node-based: values stay put
  auto valueOf = [&done](const kcShape& s) -> const T& { return done.find(&s)->second; };
  // A composite is met twice: first to queue its parts, then, with them all
  // done, to be done itself.
  std::vector<std::pair<const kcShape*, bool>> todo{{&root, false}};
  while (!todo.empty()) {
    const auto [s, partsDone] = todo.back();
    todo.pop_back();
    if (done.contains(s)) continue;  // a shared part, queued again along another path
    const auto* t = dynamic_cast<const kcShapeTree*>(s);
    const auto* g = t ? nullptr : dynamic_cast<const kcGenShape*>(s);
    if (!t && !g) {
      done.emplace(s, leaf(*s));
    } else if (partsDone) {
      done.emplace(s, t ? tree(*t, valueOf) : gen(*g, valueOf));
    } else {
      todo.emplace_back(s, true);
      auto queue = [&](const kcShapePtr& part) {
        if (part && !done.contains(part.get())) todo.emplace_back(part.get(), false);
      };
      if (t) {
        for (const kcShapePtr& c : t->children()) queue(c);
      } else {
        queue(g->shape());
      }
    }
  }
  return done.find(&root)->second;
}

// Calls f for every shape below root that is neither a tree nor a general
// shape, in order, until f returns false; returns whether it ran to the end.
// perPath: a shape reached along several paths is met once per path (sample
// and decompose show every occurrence); otherwise once, which keeps a walk
// over heavily shared parts linear.
template <class F>
bool forEachLeaf(const kcShapeTree& root, bool perPath, F f) {
  std::vector<const kcShape*> todo;
  std::unordered_set<const kcShape*> seen;
  // Reversed onto the stack, so the first child comes off first.
  auto queueChildren = [&todo](const kcShapeTree& t) {
    for (auto c = t.children().rbegin(); c != t.children().rend(); ++c) todo.push_back(c->get());
  };
  queueChildren(root);
  while (!todo.empty()) {
    const kcShape* s = todo.back();
    todo.pop_back();
    if (!perPath && !seen.insert(s).second) continue;
    if (const auto* t = dynamic_cast<const kcShapeTree*>(s)) {
      queueChildren(*t);
    } else if (const kcShape* held = kcShapeNesting_::unwrap(*s); held != s) {
      if (held) todo.push_back(held);
    } else if (!f(*s)) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool kcShapeNesting_::isComposite(const kcShape& s) noexcept {
  return dynamic_cast<const kcShapeTree*>(&s) || dynamic_cast<const kcGenShape*>(&s);
}

const kcShape* kcShapeNesting_::unwrap(const kcShape& s) noexcept {
  const kcShape* at = &s;
  while (const auto* g = dynamic_cast<const kcGenShape*>(at)) at = g->shape().get();
  return at;
}

kcShapePtr kcShapeNesting_::copy(const kcShape& s, const std::function<kcShapePtr(const kcShape&)>& leaf) {
  return foldNesting<kcShapePtr>(
      s, leaf,
      [](const kcShapeTree& t, const auto& valueOf) {
        std::vector<kcShapePtr> children;
        children.reserve(t.children().size());
        for (const kcShapePtr& c : t.children()) children.push_back(valueOf(*c));
        return kcShapePtr(kfMakeHandle<kcShapeTree>(std::move(children)));
      },
      [](const kcGenShape& g, const auto& valueOf) {
        return kcShapePtr(kfMakeHandle<kcGenShape>(g.shape() ? valueOf(*g.shape()) : kcShapePtr()));
      });
}

bool kcShapeNesting_::equal(const kcShape& a, const kcShape& b) {
  using Pair = std::pair<const kcShape*, const kcShape*>;
  struct PairHash {
    std::size_t operator()(const Pair& p) const noexcept {
      const std::hash<const void*> h;
      return h(p.first) * 31 + h(p.second);
    }
  };
  std::vector<Pair> todo{{&a, &b}};
  // Equality is the conjunction over all pairs met, so a pair met again along
  // another path (shared parts) need not be compared again.
  std::unordered_set<Pair, PairHash> seen{{&a, &b}};
  auto queue = [&](const kcShape* x, const kcShape* y) {
    if (seen.insert({x, y}).second) todo.emplace_back(x, y);
  };
  while (!todo.empty()) {
    const auto [x, y] = todo.back();
    todo.pop_back();
    if (x == y) continue;  // one shape, shared by both sides
    if (typeid(*x) != typeid(*y)) return false;
    if (const auto* tx = dynamic_cast<const kcShapeTree*>(x)) {
      const std::vector<kcShapePtr>& cx = tx->children();
      const std::vector<kcShapePtr>& cy = static_cast<const kcShapeTree*>(y)->children();
      if (cx.size() != cy.size()) return false;
      for (std::size_t i = 0; i < cx.size(); ++i) queue(cx[i].get(), cy[i].get());
    } else if (const auto* gx = dynamic_cast<const kcGenShape*>(x)) {
      const kcShapePtr& hx = gx->shape();
      const kcShapePtr& hy = static_cast<const kcGenShape*>(y)->shape();
      if (hx && hy)
        queue(hx.get(), hy.get());
      else if (hx || hy)
        return false;
    } else if (!(*x == *y)) {
      return false;
    }
  }
  return true;
}

void kcShapeNesting_::release(std::vector<kcShapePtr> parts) noexcept {
  while (!parts.empty()) {
    kcShapePtr h = std::move(parts.back());
    parts.pop_back();
    // With the last handle in hand nobody else can see h, so its parts may be
    // taken; those still held elsewhere are merely let go in their turn.
    if (!h || h->refCount() != 1) continue;
    if (auto* t = dynamic_cast<kcShapeTree*>(h.get())) {
      for (kcShapePtr& c : t->children_) parts.push_back(std::move(c));
      t->children_.clear();
    } else if (auto* g = dynamic_cast<kcGenShape*>(h.get())) {
      parts.push_back(std::move(g->shape_));
    }
  }
}

// --- archive depth ---

namespace {
thread_local int gLoadDepth = 0;
}  // namespace

kcShapeLoadDepth_::kcShapeLoadDepth_() {
  if (gLoadDepth >= kcShapeTree::kMaxLoadDepth) throw kcArchive::Corrupt(L"shapes nested too deeply");
  ++gLoadDepth;
}

kcShapeLoadDepth_::~kcShapeLoadDepth_() { --gLoadDepth; }

// The composites open in the store of one archive on this thread.
struct kcShapeStoreDepth_::State {
  const kcArchive* archive = nullptr;
  int depth = 0;
  // The level (the depth counting the composite itself) at which each
  // composite below an already checked one is due to be written; what it
  // holds was checked from there.
  std::unordered_map<const kcShape*, int> planned;
};

namespace {
thread_local kcShapeStoreDepth_::State gStore;

// Plans the store of root at level as the archive will write it: what a
// composite holds in order, one level further in, and a shape met again as
// the back-reference it will be, adding no nesting. ValueOutOfRange when a
// composite would land deeper than loading accepts.
void planStore(const kcShape& root, int level, std::unordered_map<const kcShape*, int>& planned) {
  std::vector<std::pair<const kcShape*, int>> todo{{&root, level}};
  std::vector<const kcShape*> held;
  while (!todo.empty()) {
    const auto [s, at] = todo.back();
    todo.pop_back();
    if (!planned.emplace(s, at).second) continue;
    if (at > kcShapeTree::kMaxLoadDepth) throw kcArchive::ValueOutOfRange();
    held.clear();
    if (const auto* t = dynamic_cast<const kcShapeTree*>(s)) {
      for (const kcShapePtr& c : t->children()) held.push_back(c.get());
    } else if (const auto* g = dynamic_cast<const kcGenShape*>(s); g && g->shape()) {
      held.push_back(g->shape().get());
    }
    // Reversed onto the stack, so the parts are planned in the order they are written.
    for (auto c = held.rbegin(); c != held.rend(); ++c)
      if (kcShapeNesting_::isComposite(**c)) todo.emplace_back(*c, at + 1);
  }
}
}  // namespace

kcShapeStoreDepth_::kcShapeStoreDepth_(const kcArchive& ar, const kcShape& s) {
  if (!ar.isStoring()) return;
  // Another archive storing on this thread keeps its count aside meanwhile.
  const bool interrupts = gStore.archive != &ar && gStore.depth > 0;
  const int level = (interrupts ? 0 : gStore.depth) + 1;
  // The first composite of a store plans everything below it. One met again
  // at the level planned for it was checked then, with all it holds; one met
  // elsewhere (reached through a shape of another kind, or written earlier
  // than planned) plans again from where it is.
  std::unordered_map<const kcShape*, int> plan;
  const auto known = interrupts ? gStore.planned.end() : gStore.planned.find(&s);
  if (known == gStore.planned.end() || known->second != level) planStore(s, level, plan);
  if (interrupts) outer_ = std::make_unique<State>(std::exchange(gStore, State()));
  gStore.archive = &ar;
  for (const auto& [shape, at] : plan) gStore.planned.insert_or_assign(shape, at);
  ++gStore.depth;
  counted_ = true;
}

kcShapeStoreDepth_::~kcShapeStoreDepth_() {
  if (!counted_) return;
  if (--gStore.depth == 0) gStore = State();
  if (outer_) gStore = std::move(*outer_);
}

// --- construction ---

kcShapeTree::kcShapeTree(std::vector<kcShapePtr> children) {
  for (const kcShapePtr& c : children)
    if (c.isNull()) throw kcShapesError::BadParams();
  children_ = std::move(children);
}

kcShapeTree& kcShapeTree::operator=(const kcShapeTree& other) {
  if (this != &other) children(other.children_);
  return *this;
}

kcShapeTree& kcShapeTree::operator=(kcShapeTree&& other) {
  if (this == &other) return *this;
  for (const kcShapePtr& c : other.children_) checkChild_(c);
  mutating_();
  children_ = std::move(other.children_);
  other.children_.clear();
  return *this;
}

kcShapeTree::~kcShapeTree() { kcShapeNesting_::release(std::move(children_)); }

void kcShapeTree::checkChild_(const kcShapePtr& child) const {
  if (child.isNull() || contains(*child, *this)) throw kcShapesError::BadParams();
}

void kcShapeTree::children(std::vector<kcShapePtr> children) {
  for (const kcShapePtr& c : children) checkChild_(c);
  mutating_();
  children_ = std::move(children);
}

const kcShapePtr& kcShapeTree::child(long i) const {
  if (i < 0 || i >= numChildren()) throw kcShapesError::BadParams();
  return children_[static_cast<std::size_t>(i)];
}

void kcShapeTree::append(kcShapePtr child) {
  checkChild_(child);
  mutating_();
  children_.push_back(std::move(child));
}

bool kcShapeTree::contains(const kcShape& root, const kcShape& target) {
  // Depth first without recursion, each shape once: shared subtrees would
  // otherwise be walked once per path to them.
  std::vector<const kcShape*> todo{&root};
  std::unordered_set<const kcShape*> seen{&root};
  while (!todo.empty()) {
    const kcShape* s = todo.back();
    todo.pop_back();
    if (s == &target) return true;
    auto visit = [&](const kcShapePtr& h) {
      if (h && seen.insert(h.get()).second) todo.push_back(h.get());
    };
    if (const auto* tree = dynamic_cast<const kcShapeTree*>(s)) {
      for (const kcShapePtr& c : tree->children_) visit(c);
    } else if (const auto* gen = dynamic_cast<const kcGenShape*>(s)) {
      visit(gen->shape());
    }
  }
  return false;
}

kcShapeTree kcShapeTree::map(const kcXform<2>& x) const {
  const kcShapePtr image = mapShape(x);
  return kcShapeTree(static_cast<const kcShapeTree&>(*image).children_);
}

// --- kcShape ---

kcShapePtr kcShapeTree::clone() const {
  return kcShapeNesting_::copy(*this, [](const kcShape& s) { return s.clone(); });
}

kcShapePtr kcShapeTree::mapShape(const kcXform<2>& x) const {
  return kcShapeNesting_::copy(*this, [&x](const kcShape& s) { return s.mapShape(x); });
}

// The queries below walk the shapes at the ends of the nesting in order: a
// tree's answer is the same combination of its children's answers at every
// level, so the flat walk gives what a walk level by level would.

std::vector<kcShapePtr> kcShapeTree::decompose() const {
  std::vector<kcShapePtr> pieces;
  forEachLeaf(*this, true, [&pieces](const kcShape& s) {
    std::vector<kcShapePtr> part = s.decompose();
    pieces.insert(pieces.end(), part.begin(), part.end());
    return true;
  });
  return pieces;
}

bool kcShapeTree::isFinite() const {
  return forEachLeaf(*this, false, [](const kcShape& s) { return s.isFinite(); });
}

bool kcShapeTree::isEmpty() const {
  return forEachLeaf(*this, false, [](const kcShape& s) { return s.isEmpty(); });
}

kcRect kcShapeTree::encloseRect() const {
  kcRect box;
  forEachLeaf(*this, false, [&box](const kcShape& s) {
    box.enclose(s.encloseRect());
    return true;
  });
  return box;
}

kcVector<2> kcShapeTree::nearestPoint(const kcVector<2>& p) const {
  bool found = false;
  kcVector<2> best;
  double bestDistance = std::numeric_limits<double>::infinity();
  // A shape met again along another path cannot be strictly nearer.
  forEachLeaf(*this, false, [&](const kcShape& s) {
    if (s.isEmpty()) return true;
    const kcVector<2> q = s.nearestPoint(p);
    const double d = p.distance(q);
    // Strictly nearer only, so ties stay with the earlier shape.
    if (!found || d < bestDistance) {
      found = true;
      best = q;
      bestDistance = d;
    }
    return true;
  });
  if (!found) throw kcShapesError::EmptyShape();
  return best;
}

void kcShapeTree::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  forEachLeaf(*this, true, [&](const kcShape& s) {
    s.sample(spacing, out);
    return true;
  });
}

bool kcShapeTree::equal_(const kcShape& other) const { return kcShapeNesting_::equal(*this, other); }

// --- archive ---

void kcShapeTree::dispatchSerialize(kcArchive& ar) {
  const kcShapeStoreDepth_ depth(ar, *this);
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcShapeTree::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/shapetree", __LINE__);
  kcShape::serialize_(ar, version);
  if (ar.isStoring()) {
    ar || children_;
    return;
  }
  kcShapeLoadDepth_ depth;
  std::vector<kcShapePtr> loaded;
  ar || loaded;
  for (const kcShapePtr& c : loaded)
    if (c.isNull() || contains(*c, *this))
      throw kcArchive::Corrupt(L"shape tree with a null child or itself");
  mutating_();
  children_ = std::move(loaded);
}
