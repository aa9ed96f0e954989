#include "foundation/shapes/genshape.h"

#include "foundation/archive.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shapetree.h"
#include "foundation/shapes/shapetree_p.h"

KC_DEFINE_PERSISTENT(kcGenShape);

namespace {
// The shape a general shape stands for: the end of its chain of general
// shapes, never itself a general shape; null for none. Forwarding there
// straight away keeps a long chain from forwarding once per link.
const kcShape* endOf(const kcGenShape& g) noexcept { return kcShapeNesting_::unwrap(g); }
}  // namespace

// --- construction ---

kcGenShape::kcGenShape(kcShapePtr shape) : shape_(std::move(shape)) {}

kcGenShape::kcGenShape(const kcShape& shape) : shape_(shape.clone()) {}

kcGenShape& kcGenShape::operator=(const kcGenShape& other) {
  if (this != &other) shape(other.shape_);
  return *this;
}

kcGenShape& kcGenShape::operator=(kcGenShape&& other) {
  if (this == &other) return *this;
  if (other.shape_ && kcShapeTree::contains(*other.shape_, *this)) throw kcShapesError::BadParams();
  mutating_();
  shape_ = std::move(other.shape_);
  return *this;
}

kcGenShape::~kcGenShape() {
  // Only a composite held by this handle alone could start a chain of deletions.
  if (!shape_ || shape_->refCount() != 1 || !kcShapeNesting_::isComposite(*shape_)) return;
  std::vector<kcShapePtr> parts;
  parts.push_back(std::move(shape_));
  kcShapeNesting_::release(std::move(parts));
}

void kcGenShape::shape(kcShapePtr shape) {
  if (shape && kcShapeTree::contains(*shape, *this)) throw kcShapesError::BadParams();
  mutating_();
  shape_ = std::move(shape);
}

kcGenShape kcGenShape::map(const kcXform<2>& x) const {
  const kcShapePtr image = mapShape(x);
  return static_cast<const kcGenShape&>(*image);
}

// --- kcShape, forwarded ---

kcShapePtr kcGenShape::clone() const {
  return kcShapeNesting_::copy(*this, [](const kcShape& s) { return s.clone(); });
}

kcShapePtr kcGenShape::mapShape(const kcXform<2>& x) const {
  return kcShapeNesting_::copy(*this, [&x](const kcShape& s) { return s.mapShape(x); });
}

kcShapePtr kcGenShape::reverse() const {
  // The reverse of the end of the chain, wrapped in as many general shapes.
  long links = 0;
  const kcShape* at = this;
  while (const auto* g = dynamic_cast<const kcGenShape*>(at)) {
    at = g->shape_.get();
    ++links;
  }
  if (!at) throwNotOpenContour_();
  kcShapePtr image = at->reverse();
  for (long i = 0; i < links; ++i) image = kfMakeHandle<kcGenShape>(std::move(image));
  return image;
}

std::vector<kcShapePtr> kcGenShape::decompose() const {
  const kcShape* s = endOf(*this);
  return s ? s->decompose() : std::vector<kcShapePtr>();
}

bool kcGenShape::isOpenContour() const {
  const kcShape* s = endOf(*this);
  return s && s->isOpenContour();
}
bool kcGenShape::isRegion() const {
  const kcShape* s = endOf(*this);
  return s && s->isRegion();
}
bool kcGenShape::isFinite() const {
  const kcShape* s = endOf(*this);
  return !s || s->isFinite();
}
bool kcGenShape::isEmpty() const {
  const kcShape* s = endOf(*this);
  return !s || s->isEmpty();
}
bool kcGenShape::hasTangent() const {
  const kcShape* s = endOf(*this);
  return s && s->hasTangent();
}

kcRect kcGenShape::encloseRect() const {
  const kcShape* s = endOf(*this);
  return s ? s->encloseRect() : kcRect();
}
kcRect kcGenShape::boundingBox() const {
  const kcShape* s = endOf(*this);
  return s ? s->boundingBox() : kcRect();
}

kcVector<2> kcGenShape::nearestPoint(const kcVector<2>& p) const {
  const kcShape* s = endOf(*this);
  if (!s) throw kcShapesError::EmptyShape();
  return s->nearestPoint(p);
}

double kcGenShape::distanceToPoint(const kcVector<2>& p) const {
  const kcShape* s = endOf(*this);
  if (!s) throw kcShapesError::EmptyShape();
  return s->distanceToPoint(p);
}

bool kcGenShape::within(const kcVector<2>& p) const {
  const kcShape* s = endOf(*this);
  if (!s) throwNotRegion_();
  return s->within(p);
}

kcVector<2> kcGenShape::startPoint() const {
  const kcShape* s = endOf(*this);
  if (!s) throwNotOpenContour_();
  return s->startPoint();
}

kcVector<2> kcGenShape::endPoint() const {
  const kcShape* s = endOf(*this);
  if (!s) throwNotOpenContour_();
  return s->endPoint();
}

kcRadian kcGenShape::startAngle() const {
  const kcShape* s = endOf(*this);
  if (!s) throwNotOpenContour_();
  return s->startAngle();
}

kcRadian kcGenShape::endAngle() const {
  const kcShape* s = endOf(*this);
  if (!s) throwNotOpenContour_();
  return s->endAngle();
}

void kcGenShape::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  if (const kcShape* s = endOf(*this)) s->sample(spacing, out);
}

void kcGenShape::remapAndThrowError_(kcException& e) const {
  if (const kcShape* s = endOf(*this)) s->remapAndThrowError_(e);
  kcShape::remapAndThrowError_(e);
}

bool kcGenShape::equal_(const kcShape& other) const { return kcShapeNesting_::equal(*this, other); }

// --- archive ---

void kcGenShape::dispatchSerialize(kcArchive& ar) {
  const kcShapeStoreDepth_ depth(ar, *this);
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGenShape::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/genshape", __LINE__);
  kcShape::serialize_(ar, version);
  if (ar.isStoring()) {
    ar || shape_;
    return;
  }
  kcShapeLoadDepth_ depth;
  kcShapePtr loaded;
  ar || loaded;
  if (loaded && kcShapeTree::contains(*loaded, *this))
    throw kcArchive::Corrupt(L"general shape holding itself");
  mutating_();
  shape_ = std::move(loaded);
}
