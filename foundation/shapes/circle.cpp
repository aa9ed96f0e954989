#include "foundation/shapes/circle.h"

#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcCircle);

// --- construction and fields ---

kcCircle::kcCircle(const kcVector<2>& center, double radius) : center_(center), radius_(radius) {
  check_(center, radius);
}

void kcCircle::check_(const kcVector<2>& center, double radius) {
  kfCheckFinite(center);
  kfCheckFinite(radius);
  if (!(radius > 0.0)) throw kcShapesError::DegenerateShape();
}

void kcCircle::center(const kcVector<2>& center) {
  check_(center, radius_);
  mutating_();
  center_ = center;
}

void kcCircle::radius(double radius) {
  check_(center_, radius);
  mutating_();
  radius_ = radius;
}

kcVector<2> kcCircle::point(const kcRadian& t) const noexcept {
  return center_ + kcVector<2>(cos(t), sin(t)) * radius_;
}

// --- images ---

bool kcCircle::isSimilarity(const kcXform<2>& x) noexcept {
  return kfIsSimilarity_(x.matrix(), kSimilarityTol);
}

kcCircle kcCircle::map(const kcXform<2>& x) const {
  if (!isSimilarity(x)) throw kcShapesError::BadGeom();
  // The identity's scale is 1 up to rounding; keep the radius exact for it
  // and for pure translations.
  double scale = x.matrix().isIdentity() ? 1.0 : kfSimilarityScale_(x.matrix());
  return kcCircle(x * center_, radius_ * scale);
}

kcEllipse2 kcCircle::toEllipse2() const { return kcEllipse2(radius_, radius_, kcRadian(0.0), center_); }

kcShapePtr kcCircle::clone() const { return kfMakeHandle<kcCircle>(*this); }

kcShapePtr kcCircle::mapShape(const kcXform<2>& x) const {
  if (x.matrix().determinant() == 0.0) throw kcMathError::Singular();
  if (isSimilarity(x)) return kfMakeHandle<kcCircle>(map(x));
  return kfMakeHandle<kcEllipse2>(toEllipse2().map(x));
}

// --- measures ---

kcRect kcCircle::encloseRect() const {
  kcVector<2> r(radius_, radius_);
  return kcRect::fromCorners(center_ - r, center_ + r);
}

kcVector<2> kcCircle::nearestPoint(const kcVector<2>& p) const {
  kcVector<2> d = p - center_;
  double len = d.len();
  // Every boundary point is nearest to the centre: the first one is taken.
  if (len == 0.0) return point(kcRadian(0.0));
  return center_ + d * (radius_ / len);
}

double kcCircle::distanceToPoint(const kcVector<2>& p) const {
  return std::fabs(p.distance(center_) - radius_);
}

bool kcCircle::within(const kcVector<2>& p) const {
  return p.distance(center_) <= radius_ * (1.0 + kBoundaryTol_);
}

void kcCircle::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  std::size_t first = out.size();
  kfSampleEllipseArc_(center_, kcVector<2>(radius_, 0.0), kcVector<2>(0.0, radius_), 0.0,
                      2.0 * std::numbers::pi, spacing, false, out);
  kcVector<2> start = out[first];
  out.push_back(start);
}

bool kcCircle::equal_(const kcShape& other) const { return *this == static_cast<const kcCircle&>(other); }

// --- archive ---

void kcCircle::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcCircle::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/circle", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> center = center_;
  double radius = radius_;
  ar || center || radius;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(center);
    kfCheckLoadedFinite(radius);
    if (!(radius > 0.0)) throw kcArchive::Corrupt(L"circle radius is not > 0");
    mutating_();
    center_ = center;
    radius_ = radius;
  }
}
