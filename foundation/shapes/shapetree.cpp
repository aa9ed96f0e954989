#include "foundation/shapes/shapetree.h"

#include <limits>
#include <unordered_set>

#include "foundation/archive.h"
#include "foundation/shapes/genshape.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shapetree_p.h"

KC_DEFINE_PERSISTENT(kcShapeTree);

// --- load depth ---

namespace {
thread_local int gLoadDepth = 0;
}  // namespace

kcShapeLoadDepth_::kcShapeLoadDepth_() {
  if (gLoadDepth >= kcShapeTree::kMaxLoadDepth) throw kcArchive::Corrupt(L"shapes nested too deeply");
  ++gLoadDepth;
}

kcShapeLoadDepth_::~kcShapeLoadDepth_() { --gLoadDepth; }

// --- deep copy ---

kcShapePtr kfCloneComposite_(const kcShape& s, std::unordered_map<const kcShape*, kcShapePtr>& copies) {
  if (auto it = copies.find(&s); it != copies.end()) return it->second;
  kcShapePtr copy;
  if (const auto* tree = dynamic_cast<const kcShapeTree*>(&s)) {
    std::vector<kcShapePtr> children;
    children.reserve(tree->children().size());
    for (const kcShapePtr& c : tree->children()) children.push_back(kfCloneComposite_(*c, copies));
    copy = kfMakeHandle<kcShapeTree>(std::move(children));
  } else if (const auto* gen = dynamic_cast<const kcGenShape*>(&s)) {
    copy = kfMakeHandle<kcGenShape>(gen->shape() ? kfCloneComposite_(*gen->shape(), copies) : kcShapePtr());
  } else {
    copy = s.clone();
  }
  copies.emplace(&s, copy);
  return copy;
}

// --- construction ---

kcShapeTree::kcShapeTree(std::vector<kcShapePtr> children) {
  for (const kcShapePtr& c : children)
    if (c.isNull()) throw kcShapesError::BadParams();
  children_ = std::move(children);
}

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
  std::vector<kcShapePtr> mapped;
  mapped.reserve(children_.size());
  for (const kcShapePtr& c : children_) mapped.push_back(c->mapShape(x));
  return kcShapeTree(std::move(mapped));
}

// --- kcShape ---

kcShapePtr kcShapeTree::clone() const {
  std::unordered_map<const kcShape*, kcShapePtr> copies;
  return kfCloneComposite_(*this, copies);
}

kcShapePtr kcShapeTree::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcShapeTree>(map(x)); }

std::vector<kcShapePtr> kcShapeTree::decompose() const {
  std::vector<kcShapePtr> pieces;
  for (const kcShapePtr& c : children_) {
    std::vector<kcShapePtr> part = c->decompose();
    pieces.insert(pieces.end(), part.begin(), part.end());
  }
  return pieces;
}

bool kcShapeTree::isFinite() const {
  for (const kcShapePtr& c : children_)
    if (!c->isFinite()) return false;
  return true;
}

bool kcShapeTree::isEmpty() const {
  for (const kcShapePtr& c : children_)
    if (!c->isEmpty()) return false;
  return true;
}

kcRect kcShapeTree::encloseRect() const {
  kcRect box;
  for (const kcShapePtr& c : children_) box.enclose(c->encloseRect());
  return box;
}

kcVector<2> kcShapeTree::nearestPoint(const kcVector<2>& p) const {
  bool found = false;
  kcVector<2> best;
  double bestDistance = std::numeric_limits<double>::infinity();
  for (const kcShapePtr& c : children_) {
    if (c->isEmpty()) continue;
    const kcVector<2> q = c->nearestPoint(p);
    const double d = p.distance(q);
    if (!found || d < bestDistance) {
      found = true;
      best = q;
      bestDistance = d;
    }
  }
  if (!found) throw kcShapesError::EmptyShape();
  return best;
}

void kcShapeTree::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  for (const kcShapePtr& c : children_) c->sample(spacing, out);
}

bool kcShapeTree::equal_(const kcShape& other) const {
  const auto& t = static_cast<const kcShapeTree&>(other);
  if (children_.size() != t.children_.size()) return false;
  for (std::size_t i = 0; i < children_.size(); ++i)
    if (!(*children_[i] == *t.children_[i])) return false;
  return true;
}

// --- archive ---

void kcShapeTree::dispatchSerialize(kcArchive& ar) {
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
