// The graphic base, makeShapeGraphic, groups and lists.
#include "dispc/glist.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "dispc/glist_p.h"
#include "foundation/archive.h"
#include "foundation/shapes/shapetree.h"

KC_DEFINE_EXCEPTION(kcGraphic::BadParams, 0x10009600, kcGraphic::Errors);
KC_DEFINE_EXCEPTION(kcGraphic::NoGraphicForShape, 0x10009601, kcGraphic::Errors);

// --- the base ---

kcGraphic::kcGraphic(const kcColor& color) : props_(kfGraphicPen(color)) {}

kcGraphic::~kcGraphic() = default;

void kcGraphic::props(const kcGraphicProps& p) {
  props_ = p;
  setProps_(props_);
}

void kcGraphic::color(const kcColor& c) {
  props_.penColor(c);
  setProps_(props_);
}

void kcGraphic::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGraphic::serialize_(kcArchive& ar, unsigned char version) {
  if (version > kVersion) throw kcArchive::UnknownVersion(kGlistSource, kGraphicVersionLine);
  // The persistent base carries no bytes.
  if (version == 0) {
    // Older archives kept the colour alone.
    kcColor color = props_.penColor();
    ar || color;
    if (ar.isLoading()) props_ = kfGraphicPen(color);
    return;
  }
  kcGraphicProps props = props_;
  ar || props;
  if (ar.isLoading()) props_ = props;
}

// --- shapes to graphics ---

namespace {

// Tries the classes in order; the first the shape is (or derives from) wins.
template <class T, class G>
bool makeAs(const kcShape& shape, const kcGraphicProps& props, kcGraphicPtr& out) {
  const auto* s = dynamic_cast<const T*>(&shape);
  if (!s) return false;
  out = kfMakeHandle<G>(*s, props);
  return true;
}

kcGraphicPtr makeGraphic(const kcShape& shape, const kcGraphicProps& props, int depth);

// A tree as a group of its children's graphics.
kcGraphicPtr makeGroup(const kcShapeTree& tree, const kcGraphicProps& props, int depth) {
  // Trees nest without bound in memory; graphics made of them recurse, so
  // the nesting is bounded as an archive bounds a group's.
  if (depth >= kcGraphicGroup::kMaxLoadDepth) throw kcGraphic::BadParams(L"Shape tree nested too deeply");
  kcPtrHandle<kcGraphicGroup> group = kfMakeHandle<kcGraphicGroup>();
  group->props(props);
  std::vector<kcGraphicPtr> items;
  items.reserve(tree.children().size());
  for (const kcShapePtr& child : tree.children()) items.push_back(makeGraphic(*child, props, depth + 1));
  group->items(items);
  return group;
}

kcGraphicPtr makeGraphic(const kcShape& shape, const kcGraphicProps& props, int depth) {
  if (const auto* tree = dynamic_cast<const kcShapeTree*>(&shape)) return makeGroup(*tree, props, depth);
  kcGraphicPtr g;
  // The order counts where classes derive from one another (a wireframe is a
  // general polygon, and is made as one).
  if (makeAs<kc2Point, kcGraphicSimple<kc2Point>>(shape, props, g) ||
      makeAs<kcLineSeg, kcGraphicSimple<kcLineSeg>>(shape, props, g) ||
      makeAs<kcLine, kcGraphicSimple<kcLine>>(shape, props, g) ||
      makeAs<kcFLine, kcGraphicSimple<kcFLine>>(shape, props, g) ||
      makeAs<kcRect, kcGraphicWithFill<kcRect, kcGenRect>>(shape, props, g) ||
      makeAs<kcCircle, kcGraphicWithFill<kcCircle, kcEllipse2>>(shape, props, g) ||
      makeAs<kcAnnulus, kcGraphicWithFill<kcAnnulus, kcGenAnnulus>>(shape, props, g) ||
      makeAs<kcEllipseArc2, kcGraphicSimple<kcEllipseArc2>>(shape, props, g) ||
      makeAs<kcEllipse2, kcGraphicWithFill<kcEllipse2, kcEllipse2>>(shape, props, g) ||
      makeAs<kcGenRect, kcGraphicWithFill<kcGenRect, kcGenRect>>(shape, props, g) ||
      makeAs<kcGenAnnulus, kcGraphicSimple<kcGenAnnulus>>(shape, props, g) ||
      makeAs<kcPolyline, kcGraphicSimple<kcPolyline>>(shape, props, g) ||
      makeAs<kcGenPoly, kcGraphicSimple<kcGenPoly>>(shape, props, g) ||
      makeAs<kc2Wireframe, kcGraphicSimple<kc2Wireframe>>(shape, props, g) ||
      makeAs<kcAffineRectangle, kcGraphicSimple<kcAffineRectangle>>(shape, props, g) ||
      makeAs<kcBezierCurve, kcGraphicSimple<kcBezierCurve>>(shape, props, g) ||
      makeAs<kcDeBoorSpline, kcGraphicSimple<kcDeBoorSpline>>(shape, props, g) ||
      makeAs<kcInterpSpline, kcGraphicSimple<kcInterpSpline>>(shape, props, g) ||
      makeAs<kcHermiteSpline, kcGraphicSimple<kcHermiteSpline>>(shape, props, g) ||
      makeAs<kcEllipseAnnulus, kcGraphicWithFill<kcEllipseAnnulus, kcEllipseAnnulus>>(shape, props, g) ||
      makeAs<kcEllipseAnnulusSection, kcGraphicEllipseAnnulusSection>(shape, props, g) ||
      makeAs<kcLineSegSet, kcGraphicSimple<kcLineSegSet>>(shape, props, g))
    return g;
  throw kcGraphic::NoGraphicForShape(L"");
}

}  // namespace

kcGraphicPtr kcGraphic::makeShapeGraphic(const kcShape* shape, const kcGraphicProps& props) {
  return shape ? makeGraphic(*shape, props, 0) : kcGraphicPtr();
}

kcGraphicPtr kcGraphic::makeShapeGraphic(const kcShape& shape, const kcGraphicProps& props) {
  return makeShapeGraphic(&shape, props);
}

kcGraphicPtr kcGraphic::makeShapeGraphic(kcPtrHandle_const<kcShape> shape, const kcGraphicProps& props) {
  return makeShapeGraphic(shape.get(), props);
}

// --- groups ---

KC_DEFINE_PERSISTENT(kcGraphicGroup);

kcGraphicGroup& kcGraphicGroup::operator=(const kcGraphicGroup& other) {
  if (this != &other) assign_(other);
  return *this;
}

void kcGraphicGroup::assign_(const kcGraphicGroup& other) {
  kcGraphic::operator=(other);
  items_ = other.items_;
  isNull_ = other.isNull_;
}

bool kcGraphicGroup::holds_(const kcGraphic* g) const {
  // Walks the groups below with a stack of its own: members nest deeply.
  std::vector<const kcGraphicGroup*> todo{this};
  std::vector<const kcGraphicGroup*> seen;
  while (!todo.empty()) {
    const kcGraphicGroup* group = todo.back();
    todo.pop_back();
    if (std::find(seen.begin(), seen.end(), group) != seen.end()) continue;
    seen.push_back(group);
    for (const kcGraphicPtr& item : group->items_) {
      if (item.get() == g) return true;
      if (const auto* inner = dynamic_cast<const kcGraphicGroup*>(item.get())) todo.push_back(inner);
    }
  }
  return false;
}

void kcGraphicGroup::items(const std::vector<kcGraphicPtr>& items) {
  for (const kcGraphicPtr& item : items) {
    const auto* inner = dynamic_cast<const kcGraphicGroup*>(item.get());
    if (item.get() == this || (inner && inner->holds_(this)))
      throw BadParams(L"A group cannot contain itself");
  }
  items_ = items;
  itemsChanged_();
}

void kcGraphicGroup::items(const std::vector<kcGraphicConstPtr>& items) {
  std::vector<kcGraphicPtr> held;
  held.reserve(items.size());
  // A group shares its members and hands them its props.
  for (const kcGraphicConstPtr& item : items) held.emplace_back(const_cast<kcGraphic*>(item.get()));
  this->items(held);
}

void kcGraphicGroup::getItems(std::vector<kcGraphicConstPtr>& out) const {
  out.assign(items_.begin(), items_.end());
}

kcGraphicConstPtr kcGraphicGroup::item(long i) const {
  if (i < 0 || i >= numItems()) throw BadParams(L"Item index out of range");
  return items_[static_cast<std::size_t>(i)];
}

void kcGraphicGroup::itemsChanged_() {
  isNull_ = true;
  bool first = true;
  for (const kcGraphicPtr& item : items_) {
    if (!item) continue;
    if (first || !item->isNull()) kcGraphic::props() = item->props();
    first = false;
    if (!item->isNull()) {
      isNull_ = false;
      return;
    }
  }
}

void kcGraphicGroup::setProps_(const kcGraphicProps& p) {
  for (const kcGraphicPtr& item : items_)
    if (item) item->props(p);
}

kcGraphicPtr kcGraphicGroup::map(const kcXform<2>& x) const {
  kcPtrHandle<kcGraphicGroup> image = kfMakeHandle<kcGraphicGroup>(*this);
  for (kcGraphicPtr& item : image->items_)
    if (item) item = item->map(x);
  return image;
}

kcGraphicPtr kcGraphicGroup::clone() const { return kfMakeHandle<kcGraphicGroup>(*this); }

kcRect kcGraphicGroup::encloseRect() const {
  kcRect box;
  if (isNull_) return box;
  for (const kcGraphicPtr& item : items_)
    if (item) box.enclose(item->encloseRect());
  return box;
}

double kcGraphicGroup::distToPoint(const kcVector<2>& p) const {
  double best = std::numeric_limits<double>::infinity();
  if (isNull_) return best;
  for (const kcGraphicPtr& item : items_)
    if (item) best = std::min(best, item->distToPoint(p));
  return best;
}

void kcGraphicGroup::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  if (isNull_) return;
  for (const kcGraphicPtr& item : items_)
    if (item) item->draw(t, layer);
}

void kcGraphicGroup::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

namespace {
// Groups being loaded on this thread, one inside the other.
thread_local int gGroupLoadDepth = 0;
}  // namespace

void kcGraphicGroup::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(kGlistSource, kGroupVersionLine);
  // Each group loads the ones it holds through the archive, one stack frame
  // chain per level; a stored group never nests deeper than a load accepts.
  if (gGroupLoadDepth >= kMaxLoadDepth) {
    if (ar.isLoading()) throw kcArchive::Corrupt(L"graphic groups nested too deeply");
    throw kcArchive::ValueOutOfRange();
  }
  ++gGroupLoadDepth;
  struct Leave {
    ~Leave() { --gGroupLoadDepth; }
  } leave;
  const kcGraphicProps saved = props();
  try {
    kcGraphic::dispatchSerialize(ar);
    std::vector<kcGraphicPtr> items = items_;
    bool isNull = isNull_;
    ar || items || isNull;
    if (ar.isLoading()) {
      items_ = std::move(items);
      isNull_ = isNull;
    }
  } catch (...) {
    if (ar.isLoading()) kcGraphic::props() = saved;
    throw;
  }
}

// --- lists ---

void kcGraphicList::append(kcGraphicList& other, bool keep) {
  if (&other == this) {
    // Without keep the handles would move to where they are.
    if (keep) {
      const std::vector<kcGraphicPtr> copy = items_;
      items_.insert(items_.end(), copy.begin(), copy.end());
    }
    return;
  }
  items_.insert(items_.end(), other.items_.begin(), other.items_.end());
  if (!keep) other.items_.clear();
}

void kcGraphicList::append(const kcGraphicList& other) { append(const_cast<kcGraphicList&>(other), true); }

void kcGraphicList::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  for (const kcGraphicPtr& item : items_) {
    if (!item) throw kcBadPointer();
    item->draw(t, layer);
  }
}

kcUISketch kcGraphicList::sketch(kcUITablet::Layers layer) const {
  kcUITablet recorder;
  recorder.recordOn() = true;
  draw(recorder, layer);
  return recorder.sketch();
}

kcArchive& operator||(kcArchive& ar, kcGraphicList& list) { return ar || list.items(); }
