#include "foundation/shapes/polyline.h"

#include <algorithm>

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcPolyline);

// --- construction and fields ---

bool kcPolyline::valid_(const std::vector<kcVector<2>>& vertices, bool closed) {
  return vertices.empty() || (vertices.size() >= (closed ? 3u : 2u) && !kfAllCoincide_(vertices));
}

kcPolyline::kcPolyline(std::vector<kcVector<2>> vertices, bool closed)
    : vertices_(std::move(vertices)), closed_(closed) {
  for (const kcVector<2>& v : vertices_) kfCheckFinite(v);
  if (!valid_(vertices_, closed_)) throw kcShapesError::DegenerateShape();
}

void kcPolyline::vertices(std::vector<kcVector<2>> vertices) {
  for (const kcVector<2>& v : vertices) kfCheckFinite(v);
  if (!valid_(vertices, closed_)) throw kcShapesError::DegenerateShape();
  mutating_();
  vertices_ = std::move(vertices);
}

void kcPolyline::closed(bool c) {
  if (!valid_(vertices_, c)) throw kcShapesError::DegenerateShape();
  mutating_();
  closed_ = c;
}

double kcPolyline::length() const noexcept {
  double sum = 0.0;
  for (std::size_t i = 1; i < vertices_.size(); ++i) sum += vertices_[i - 1].distance(vertices_[i]);
  if (closed_ && !vertices_.empty()) sum += vertices_.back().distance(vertices_.front());
  return sum;
}

// --- images ---

kcPolyline kcPolyline::map(const kcXform<2>& x) const {
  return kcPolyline(kfMapPoints_(x, vertices_), closed_);
}

kcShapePtr kcPolyline::clone() const { return kfMakeHandle<kcPolyline>(*this); }

kcShapePtr kcPolyline::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcPolyline>(map(x)); }

kcShapePtr kcPolyline::reverse() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return kfMakeHandle<kcPolyline>(std::vector<kcVector<2>>(vertices_.rbegin(), vertices_.rend()), false);
}

// --- measures ---

kcRect kcPolyline::encloseRect() const { return kfBoxOf_(vertices_); }

kcVector<2> kcPolyline::nearestPoint(const kcVector<2>& p) const {
  if (vertices_.empty()) throw kcShapesError::EmptyShape();
  return kfNearestOnChain_(vertices_, closed_, p);
}

bool kcPolyline::within(const kcVector<2>& p) const {
  if (!closed_) throwNotRegion_();
  return kfWithinChain_(vertices_, p);
}

kcVector<2> kcPolyline::startPoint() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return vertices_.front();
}

kcVector<2> kcPolyline::endPoint() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return vertices_.back();
}

kcRadian kcPolyline::startAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  // Vertices do not all coincide, so some edge has a direction.
  auto it = std::adjacent_find(vertices_.begin(), vertices_.end(), std::not_equal_to<>());
  return (*(it + 1) - *it).angle();
}

kcRadian kcPolyline::endAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  auto it = std::adjacent_find(vertices_.rbegin(), vertices_.rend(), std::not_equal_to<>());
  return (*it - *(it + 1)).angle();
}

void kcPolyline::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleChain_(vertices_, closed_, spacing, out);
}

bool kcPolyline::equal_(const kcShape& other) const {
  const auto& o = static_cast<const kcPolyline&>(other);
  return closed_ == o.closed_ && vertices_ == o.vertices_;
}

// --- archive ---

void kcPolyline::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcPolyline::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/polyline", __LINE__);
  kcShape::serialize_(ar, version);
  if (ar.isStoring()) {
    kfTransferPoints_(ar, vertices_);
    ar || closed_;
    return;
  }
  std::vector<kcVector<2>> vertices;
  bool closed = false;
  kfTransferPoints_(ar, vertices);
  ar || closed;
  if (!valid_(vertices, closed)) throw kcArchive::Corrupt(L"polyline with too few distinct vertices");
  mutating_();
  vertices_ = std::move(vertices);
  closed_ = closed;
}
