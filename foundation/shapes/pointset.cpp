#include "foundation/shapes/pointset.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/point.h"

KC_DEFINE_PERSISTENT(kcPointSet);

// --- construction and fields ---

kcPointSet::kcPointSet(std::vector<kcVector<2>> points) : points_(std::move(points)) {
  for (const kcVector<2>& p : points_) kfCheckFinite(p);
}

void kcPointSet::points(std::vector<kcVector<2>> points) {
  for (const kcVector<2>& p : points) kfCheckFinite(p);
  mutating_();
  points_ = std::move(points);
}

void kcPointSet::append(const kcVector<2>& p) {
  kfCheckFinite(p);
  mutating_();
  points_.push_back(p);
}

// --- images and pieces ---

kcPointSet kcPointSet::map(const kcXform<2>& x) const { return kcPointSet(kfMapPoints_(x, points_)); }

kcShapePtr kcPointSet::clone() const { return kfMakeHandle<kcPointSet>(*this); }

kcShapePtr kcPointSet::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcPointSet>(map(x)); }

std::vector<kcShapePtr> kcPointSet::decompose() const {
  std::vector<kcShapePtr> pieces;
  for (const kcVector<2>& p : points_) pieces.push_back(kfMakeHandle<kcPoint>(p));
  return pieces;
}

// --- measures ---

kcRect kcPointSet::encloseRect() const { return kfBoxOf_(points_); }

kcVector<2> kcPointSet::nearestPoint(const kcVector<2>& p) const {
  if (points_.empty()) throw kcShapesError::EmptyShape();
  const kcVector<2>* best = &points_.front();
  for (const kcVector<2>& q : points_) {
    if (q.distance(p) < best->distance(p)) best = &q;
  }
  return *best;
}

void kcPointSet::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  out.insert(out.end(), points_.begin(), points_.end());
}

bool kcPointSet::equal_(const kcShape& other) const {
  return points_ == static_cast<const kcPointSet&>(other).points_;
}

// --- archive ---

void kcPointSet::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcPointSet::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/pointset", __LINE__);
  kcShape::serialize_(ar, version);
  std::vector<kcVector<2>> points = points_;
  kfTransferPoints_(ar, points);
  if (ar.isLoading()) {
    mutating_();
    points_ = std::move(points);
  }
}
