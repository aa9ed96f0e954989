#include "foundation/shapes/rect.h"

#include <algorithm>
#include <cmath>

#include "foundation/archive.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/geom_p.h"

namespace {
constexpr kcVector<2> kEmptySize{-1.0, -1.0};
}  // namespace

KC_DEFINE_PERSISTENT(kcRect);

// --- construction and fields ---

kcRect::kcRect(const kcVector<2>& origin, const kcVector<2>& size) : origin_(origin), size_(size) {
  kfCheckFinite(origin);
  kfCheckFinite(size);
  canonicalize_();
}

kcRect kcRect::fromCorners(const kcVector<2>& a, const kcVector<2>& b) {
  kfCheckFinite(a);
  kfCheckFinite(b);
  kcVector<2> lo(std::min(a.x(), b.x()), std::min(a.y(), b.y()));
  kcVector<2> hi(std::max(a.x(), b.x()), std::max(a.y(), b.y()));
  return kcRect(lo, hi - lo);
}

void kcRect::origin(const kcVector<2>& origin) {
  kfCheckFinite(origin);
  mutating_();
  origin_ = origin;
  canonicalize_();
}

void kcRect::size(const kcVector<2>& size) {
  kfCheckFinite(size);
  mutating_();
  size_ = size;
  canonicalize_();
}

void kcRect::canonicalize_() noexcept {
  if (isEmpty()) {
    origin_ = kcVector<2>();
    size_ = kEmptySize;
  }
}

kcVector<2> kcRect::corner(int i) const {
  switch (i) {
    case 0:
      return origin_;
    case 1:
      return {xMax(), yMin()};
    case 2:
      return {xMax(), yMax()};
    case 3:
      return {xMin(), yMax()};
    default:
      throw kcShapesError::BadParams();
  }
}

// --- set operations ---

bool kcRect::contains(const kcVector<2>& p) const noexcept {
  return !isEmpty() && p.x() >= xMin() && p.x() < xMax() && p.y() >= yMin() && p.y() < yMax();
}

bool kcRect::intersects(const kcRect& r) const noexcept {
  return !isEmpty() && !r.isEmpty() && r.xMin() <= xMax() && xMin() <= r.xMax() && r.yMin() <= yMax() &&
         yMin() <= r.yMax();
}

kcRect kcRect::intersection(const kcRect& r) const {
  if (!intersects(r)) return kcRect();
  kcVector<2> lo(std::max(xMin(), r.xMin()), std::max(yMin(), r.yMin()));
  kcVector<2> hi(std::min(xMax(), r.xMax()), std::min(yMax(), r.yMax()));
  return kcRect(lo, hi - lo);
}

kcRect& kcRect::enclose(const kcRect& r) {
  if (r.isEmpty()) return *this;
  if (isEmpty()) return *this = r;
  kcVector<2> lo(std::min(xMin(), r.xMin()), std::min(yMin(), r.yMin()));
  kcVector<2> hi(std::max(xMax(), r.xMax()), std::max(yMax(), r.yMax()));
  mutating_();
  origin_ = lo;
  size_ = hi - lo;
  return *this;
}

kcRect& kcRect::enclose(const kcVector<2>& p) {
  kfCheckFinite(p);
  return enclose(kcRect(p, kcVector<2>()));
}

// --- images ---

bool kcRect::keepsAxes(const kcXform<2>& x) noexcept {
  const kcMatrix<2>& m = x.matrix();
  return (m.element(0, 1) == 0.0 && m.element(1, 0) == 0.0) ||
         (m.element(0, 0) == 0.0 && m.element(1, 1) == 0.0);
}

kcRect kcRect::map(const kcXform<2>& x) const {
  if (isEmpty()) return kcRect();
  if (!keepsAxes(x)) throw kcShapesError::BadGeom();
  return fromCorners(x * corner(0), x * corner(2));
}

kcGenRect kcRect::toGenRect() const {
  if (isEmpty()) throw kcShapesError::DegenerateShape();
  return kcGenRect(kcXform<2>(kcMatrix<2>::scale(size_.x(), size_.y()), origin_));
}

kcShapePtr kcRect::clone() const { return kfMakeHandle<kcRect>(*this); }

kcShapePtr kcRect::mapShape(const kcXform<2>& x) const {
  if (isEmpty() || keepsAxes(x)) return kfMakeHandle<kcRect>(map(x));
  return kfMakeHandle<kcGenRect>(toGenRect().map(x));
}

// --- measures ---

kcVector<2> kcRect::nearestPoint(const kcVector<2>& p) const {
  if (isEmpty()) throw kcShapesError::EmptyShape();
  kcVector<2> q(std::clamp(p.x(), xMin(), xMax()), std::clamp(p.y(), yMin(), yMax()));
  if (q != p) return q;  // outside: the clamped point is the one nearest
  // Inside: the nearest edge, ties going to the first edge along the boundary.
  double d[4] = {p.y() - yMin(), xMax() - p.x(), yMax() - p.y(), p.x() - xMin()};
  int best = static_cast<int>(std::min_element(d, d + 4) - d);
  switch (best) {
    case 0:
      return {p.x(), yMin()};
    case 1:
      return {xMax(), p.y()};
    case 2:
      return {p.x(), yMax()};
    default:
      return {xMin(), p.y()};
  }
}

bool kcRect::within(const kcVector<2>& p) const {
  if (isEmpty()) return false;
  double tol = kWithinTol_ * std::max(width(), height());
  return p.x() >= xMin() - tol && p.x() <= xMax() + tol && p.y() >= yMin() - tol && p.y() <= yMax() + tol;
}

void kcRect::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  if (isEmpty()) return;
  for (int i = 0; i < 4; ++i) kfSampleSegment(corner(i), corner((i + 1) % 4), spacing, i == 3, out);
}

bool kcRect::equal_(const kcShape& other) const {
  const auto& r = static_cast<const kcRect&>(other);
  return origin_ == r.origin_ && size_ == r.size_;
}

// --- archive ---

void kcRect::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcRect::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/rect", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> origin = origin_;
  kcVector<2> size = size_;
  ar || origin || size;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(origin);
    kfCheckLoadedFinite(size);
    mutating_();
    origin_ = origin;
    size_ = size;
    canonicalize_();
  }
}
