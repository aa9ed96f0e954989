#include "foundation/shapes/fline.h"

#include <cmath>

#include "foundation/archive.h"

KC_DEFINE_PERSISTENT(kcFLine);

// --- construction and fields ---

kcFLine::kcFLine(const kcVector<2>& point, const kcRadian& angle) : point_(point), angle_(angle) {
  kfCheckFinite(point);
  kfCheckFinite(angle.toDouble());
}

kcFLine kcFLine::through(const kcVector<2>& a, const kcVector<2>& b) {
  kfCheckFinite(a);
  kfCheckFinite(b);
  if (a == b) throw kcShapesError::DegenerateShape();
  return kcFLine(a, (b - a).angle());
}

void kcFLine::point(const kcVector<2>& p) {
  kfCheckFinite(p);
  mutating_();
  point_ = p;
}

void kcFLine::angle(const kcRadian& a) {
  kfCheckFinite(a.toDouble());
  mutating_();
  angle_ = a;
}

// --- line geometry ---

kcVector<2> kcFLine::closestPoint(const kcVector<2>& p) const noexcept {
  kcVector<2> d = direction();
  return point_ + d * (p - point_).dot(d);
}

double kcFLine::signedDistance(const kcVector<2>& p) const noexcept { return direction().cross(p - point_); }

std::optional<kcVector<2>> kcFLine::intersect(const kcFLine& other) const {
  kcVector<2> d1 = direction();
  kcVector<2> d2 = other.direction();
  double denom = d1.cross(d2);
  if (denom == 0.0) return std::nullopt;
  // point + s d1 lies on the other line where (point + s d1 - other.point) x d2 = 0.
  double s = (other.point_ - point_).cross(d2) / denom;
  return point_ + d1 * s;
}

// --- images ---

kcFLine kcFLine::map(const kcXform<2>& x) const { return kcFLine(x * point_, x.mapAngle(angle_)); }

kcShapePtr kcFLine::clone() const { return kfMakeHandle<kcFLine>(*this); }

kcShapePtr kcFLine::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcFLine>(map(x)); }

void kcFLine::sample(double, std::vector<kcVector<2>>&) const { throw kcShapesError::BadGeom(); }

bool kcFLine::equal_(const kcShape& other) const {
  const auto& l = static_cast<const kcFLine&>(other);
  return point_ == l.point_ && angle_.norm() == l.angle_.norm();
}

// --- archive ---

void kcFLine::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcFLine::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/fline", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> point = point_;
  kcRadian angle = angle_;
  ar || point || angle;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(point);
    kfCheckLoadedFinite(angle.toDouble());
    mutating_();
    point_ = point;
    angle_ = angle;
  }
}
