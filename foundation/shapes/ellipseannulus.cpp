#include "foundation/shapes/ellipseannulus.h"

#include <algorithm>
#include <cmath>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipseAnnulus);

// --- construction and fields ---

kcEllipseAnnulus::kcEllipseAnnulus(const kcEllipse2& outer, double innerScale)
    : outer_(outer), scale_(innerScale) {
  check_(innerScale);
}

void kcEllipseAnnulus::check_(double innerScale) {
  kfCheckFinite(innerScale);
  if (!(innerScale > 0.0) || !(innerScale < 1.0)) throw kcShapesError::DegenerateShape();
}

void kcEllipseAnnulus::outer(const kcEllipse2& e) {
  mutating_();
  outer_ = e;
}

void kcEllipseAnnulus::innerScale(double s) {
  check_(s);
  mutating_();
  scale_ = s;
}

kcEllipse2 kcEllipseAnnulus::inner() const {
  return kcEllipse2(outer_.radiusX() * scale_, outer_.radiusY() * scale_, outer_.rotation(), outer_.center());
}

// --- images ---

kcEllipseAnnulus kcEllipseAnnulus::map(const kcXform<2>& x) const {
  return kcEllipseAnnulus(outer_.map(x), scale_);
}

kcShapePtr kcEllipseAnnulus::clone() const { return kfMakeHandle<kcEllipseAnnulus>(*this); }

kcShapePtr kcEllipseAnnulus::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcEllipseAnnulus>(map(x));
}

std::vector<kcShapePtr> kcEllipseAnnulus::decompose() const {
  return {kfMakeHandle<kcEllipse2>(outer_), kfMakeHandle<kcEllipse2>(inner())};
}

// --- measures ---

kcRect kcEllipseAnnulus::encloseRect() const { return outer_.encloseRect(); }

kcVector<2> kcEllipseAnnulus::nearestPoint(const kcVector<2>& p) const {
  kcVector<2> a = outer_.nearestPoint(p);
  kcVector<2> b = inner().nearestPoint(p);
  // The outer ellipse comes first along the boundary, so it wins a tie.
  double tie = kTieTol_ * std::max(outer_.radiusX(), outer_.radiusY());
  return b.distance(p) < a.distance(p) - tie ? b : a;
}

bool kcEllipseAnnulus::within(const kcVector<2>& p) const {
  double rho = kfEllipsePolar_(outer_, p).rho;
  return rho >= scale_ - kBoundaryTol_ && rho <= 1.0 + kBoundaryTol_;
}

void kcEllipseAnnulus::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  outer_.sample(spacing, out);
  inner().sample(spacing, out);
}

bool kcEllipseAnnulus::equal_(const kcShape& other) const {
  return *this == static_cast<const kcEllipseAnnulus&>(other);
}

// --- archive ---

void kcEllipseAnnulus::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipseAnnulus::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipseannulus", __LINE__);
  kcShape::serialize_(ar, version);
  kcEllipse2 outer = outer_;
  double scale = scale_;
  ar || outer || scale;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(scale);
    if (!(scale > 0.0) || !(scale < 1.0)) throw kcArchive::Corrupt(L"annulus inner scale is not in (0, 1)");
    mutating_();
    outer_ = outer;
    scale_ = scale;
  }
}
