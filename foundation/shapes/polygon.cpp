#include "foundation/shapes/polygon.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcPolygon);

// --- construction and fields ---

bool kcPolygon::valid_(const std::vector<kcVector<2>>& vertices) {
  return vertices.empty() || (vertices.size() >= 3 && !kfAllCoincide_(vertices));
}

kcPolygon::kcPolygon(std::vector<kcVector<2>> vertices) : vertices_(std::move(vertices)) {
  for (const kcVector<2>& v : vertices_) kfCheckFinite(v);
  if (!valid_(vertices_)) throw kcShapesError::DegenerateShape();
}

void kcPolygon::vertices(std::vector<kcVector<2>> vertices) {
  for (const kcVector<2>& v : vertices) kfCheckFinite(v);
  if (!valid_(vertices)) throw kcShapesError::DegenerateShape();
  mutating_();
  vertices_ = std::move(vertices);
}

double kcPolygon::area() const noexcept {
  double twice = 0.0;
  for (std::size_t i = 0, n = vertices_.size(); i < n; ++i) {
    // Relative to vertex 0, which keeps the sum accurate far from the origin.
    twice += (vertices_[i] - vertices_[0]).cross(vertices_[(i + 1) % n] - vertices_[0]);
  }
  return 0.5 * twice;
}

double kcPolygon::perimeter() const noexcept {
  double sum = 0.0;
  for (std::size_t i = 0, n = vertices_.size(); i < n; ++i)
    sum += vertices_[i].distance(vertices_[(i + 1) % n]);
  return sum;
}

// --- images ---

kcPolygon kcPolygon::map(const kcXform<2>& x) const { return kcPolygon(kfMapPoints_(x, vertices_)); }

kcShapePtr kcPolygon::clone() const { return kfMakeHandle<kcPolygon>(*this); }

kcShapePtr kcPolygon::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcPolygon>(map(x)); }

// --- measures ---

kcRect kcPolygon::encloseRect() const { return kfBoxOf_(vertices_); }

kcVector<2> kcPolygon::nearestPoint(const kcVector<2>& p) const {
  if (vertices_.empty()) throw kcShapesError::EmptyShape();
  return kfNearestOnChain_(vertices_, true, p);
}

bool kcPolygon::within(const kcVector<2>& p) const {
  return !vertices_.empty() && kfWithinChain_(vertices_, p);
}

void kcPolygon::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleChain_(vertices_, true, spacing, out);
}

bool kcPolygon::equal_(const kcShape& other) const {
  return vertices_ == static_cast<const kcPolygon&>(other).vertices_;
}

// --- archive ---

void kcPolygon::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcPolygon::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/polygon", __LINE__);
  kcShape::serialize_(ar, version);
  if (ar.isStoring()) {
    kfTransferPoints_(ar, vertices_);
    return;
  }
  std::vector<kcVector<2>> vertices;
  kfTransferPoints_(ar, vertices);
  if (!valid_(vertices)) throw kcArchive::Corrupt(L"polygon with fewer than three distinct vertices");
  mutating_();
  vertices_ = std::move(vertices);
}
