#include "foundation/shapes/line.h"

#include "foundation/archive.h"
#include "foundation/shapes/fline.h"

KC_DEFINE_PERSISTENT(kcLine);

// --- construction and fields ---

kcLine::kcLine(const kcVector<2>& point, const kcVector<2>& direction)
    : point_(point), direction_(direction) {
  kfCheckFinite(point);
  kfCheckFinite(direction);
  if (direction == kcVector<2>()) throw kcShapesError::DegenerateShape();
}

void kcLine::point(const kcVector<2>& p) {
  kfCheckFinite(p);
  mutating_();
  point_ = p;
}

void kcLine::direction(const kcVector<2>& d) {
  kfCheckFinite(d);
  if (d == kcVector<2>()) throw kcShapesError::DegenerateShape();
  mutating_();
  direction_ = d;
}

kcVector<2> kcLine::closestPoint(const kcVector<2>& p) const noexcept {
  return point_ + direction_ * ((p - point_).dot(direction_) / direction_.lenSq());
}

kcFLine kcLine::toFLine() const { return kcFLine(point_, angle()); }

// --- images ---

kcLine kcLine::map(const kcXform<2>& x) const { return kcLine(x * point_, x.mapVector(direction_)); }

kcShapePtr kcLine::clone() const { return kfMakeHandle<kcLine>(*this); }

kcShapePtr kcLine::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcLine>(map(x)); }

void kcLine::sample(double, std::vector<kcVector<2>>&) const { throw kcShapesError::BadGeom(); }

bool kcLine::equal_(const kcShape& other) const {
  const auto& l = static_cast<const kcLine&>(other);
  return point_ == l.point_ && direction_ == l.direction_;
}

// --- archive ---

void kcLine::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcLine::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/line", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> point = point_;
  kcVector<2> direction = direction_;
  ar || point || direction;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(point);
    kfCheckLoadedFinite(direction);
    if (direction == kcVector<2>()) throw kcArchive::Corrupt(L"line with a zero direction");
    mutating_();
    point_ = point;
    direction_ = direction;
  }
}
