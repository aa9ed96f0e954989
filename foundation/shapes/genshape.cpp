#include "foundation/shapes/genshape.h"

#include "foundation/archive.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shapetree.h"
#include "foundation/shapes/shapetree_p.h"

KC_DEFINE_PERSISTENT(kcGenShape);

// --- construction ---

kcGenShape::kcGenShape(kcShapePtr shape) : shape_(std::move(shape)) {}

kcGenShape::kcGenShape(const kcShape& shape) : shape_(shape.clone()) {}

void kcGenShape::shape(kcShapePtr shape) {
  if (shape && kcShapeTree::contains(*shape, *this)) throw kcShapesError::BadParams();
  mutating_();
  shape_ = std::move(shape);
}

kcGenShape kcGenShape::map(const kcXform<2>& x) const {
  return kcGenShape(shape_ ? shape_->mapShape(x) : kcShapePtr());
}

// --- kcShape, forwarded ---

kcShapePtr kcGenShape::clone() const {
  std::unordered_map<const kcShape*, kcShapePtr> copies;
  return kfCloneComposite_(*this, copies);
}

kcShapePtr kcGenShape::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcGenShape>(map(x)); }

kcShapePtr kcGenShape::reverse() const {
  if (!shape_) throwNotOpenContour_();
  return kfMakeHandle<kcGenShape>(shape_->reverse());
}

std::vector<kcShapePtr> kcGenShape::decompose() const {
  return shape_ ? shape_->decompose() : std::vector<kcShapePtr>();
}

bool kcGenShape::isOpenContour() const { return shape_ && shape_->isOpenContour(); }
bool kcGenShape::isRegion() const { return shape_ && shape_->isRegion(); }
bool kcGenShape::isFinite() const { return !shape_ || shape_->isFinite(); }
bool kcGenShape::isEmpty() const { return !shape_ || shape_->isEmpty(); }
bool kcGenShape::hasTangent() const { return shape_ && shape_->hasTangent(); }

kcRect kcGenShape::encloseRect() const { return shape_ ? shape_->encloseRect() : kcRect(); }
kcRect kcGenShape::boundingBox() const { return shape_ ? shape_->boundingBox() : kcRect(); }

kcVector<2> kcGenShape::nearestPoint(const kcVector<2>& p) const {
  if (!shape_) throw kcShapesError::EmptyShape();
  return shape_->nearestPoint(p);
}

double kcGenShape::distanceToPoint(const kcVector<2>& p) const {
  if (!shape_) throw kcShapesError::EmptyShape();
  return shape_->distanceToPoint(p);
}

bool kcGenShape::within(const kcVector<2>& p) const {
  if (!shape_) throwNotRegion_();
  return shape_->within(p);
}

kcVector<2> kcGenShape::startPoint() const {
  if (!shape_) throwNotOpenContour_();
  return shape_->startPoint();
}

kcVector<2> kcGenShape::endPoint() const {
  if (!shape_) throwNotOpenContour_();
  return shape_->endPoint();
}

kcRadian kcGenShape::startAngle() const {
  if (!shape_) throwNotOpenContour_();
  return shape_->startAngle();
}

kcRadian kcGenShape::endAngle() const {
  if (!shape_) throwNotOpenContour_();
  return shape_->endAngle();
}

void kcGenShape::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  if (shape_) shape_->sample(spacing, out);
}

void kcGenShape::remapAndThrowError_(kcException& e) const {
  if (shape_) shape_->remapAndThrowError_(e);
  kcShape::remapAndThrowError_(e);
}

bool kcGenShape::equal_(const kcShape& other) const {
  const kcShapePtr& s = static_cast<const kcGenShape&>(other).shape_;
  if (!shape_ || !s) return !shape_ && !s;
  return *shape_ == *s;
}

// --- archive ---

void kcGenShape::dispatchSerialize(kcArchive& ar) {
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
