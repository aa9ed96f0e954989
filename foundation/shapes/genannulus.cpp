#include "foundation/shapes/genannulus.h"

#include <algorithm>
#include <cmath>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcGenAnnulus);

// --- construction and fields ---

kcGenAnnulus::kcGenAnnulus(const kcGenRect& outer, double innerScale) : outer_(outer), scale_(innerScale) {
  check_(innerScale);
}

void kcGenAnnulus::check_(double innerScale) {
  kfCheckFinite(innerScale);
  if (!(innerScale > 0.0) || !(innerScale < 1.0)) throw kcShapesError::DegenerateShape();
}

void kcGenAnnulus::outer(const kcGenRect& r) {
  mutating_();
  outer_ = r;
}

void kcGenAnnulus::innerScale(double s) {
  check_(s);
  mutating_();
  scale_ = s;
}

kcGenRect kcGenAnnulus::inner() const {
  // Scaling by s about the centre c after the rectangle's own transform:
  // p -> c + s (p - c).
  const kcXform<2>& x = outer_.xform();
  kcVector<2> c = outer_.centre();
  kcMatrix<2> m = x.matrix() * kcMatrix<2>::scale(scale_, scale_);
  return kcGenRect(kcXform<2>(m, c + (x.trans() - c) * scale_), outer_.roundX(), outer_.roundY());
}

// --- images ---

kcGenAnnulus kcGenAnnulus::map(const kcXform<2>& x) const { return kcGenAnnulus(outer_.map(x), scale_); }

kcShapePtr kcGenAnnulus::clone() const { return kfMakeHandle<kcGenAnnulus>(*this); }

kcShapePtr kcGenAnnulus::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcGenAnnulus>(map(x)); }

std::vector<kcShapePtr> kcGenAnnulus::decompose() const {
  return {kfMakeHandle<kcGenRect>(outer_), kfMakeHandle<kcGenRect>(inner())};
}

// --- measures ---

kcRect kcGenAnnulus::encloseRect() const { return outer_.encloseRect(); }

kcVector<2> kcGenAnnulus::nearestPoint(const kcVector<2>& p) const {
  kcVector<2> a = outer_.nearestPoint(p);
  kcVector<2> b = inner().nearestPoint(p);
  // The outer boundary comes first, so it wins a tie.
  return b.distance(p) < a.distance(p) - kTieTol_ * size_() ? b : a;
}

bool kcGenAnnulus::within(const kcVector<2>& p) const {
  double tol = kBoundaryTol_ * size_();
  if (!outer_.within(p) && outer_.distanceToPoint(p) > tol) return false;
  // The inner boundary belongs to the region, the inside of it does not.
  kcGenRect hole = inner();
  return !hole.within(p) || hole.distanceToPoint(p) <= tol;
}

double kcGenAnnulus::size_() const {
  kcRect box = outer_.encloseRect();
  return std::max(box.width(), box.height());
}

void kcGenAnnulus::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  outer_.sample(spacing, out);
  inner().sample(spacing, out);
}

bool kcGenAnnulus::equal_(const kcShape& other) const {
  return *this == static_cast<const kcGenAnnulus&>(other);
}

// --- archive ---

void kcGenAnnulus::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGenAnnulus::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/genannulus", __LINE__);
  kcShape::serialize_(ar, version);
  kcGenRect outer = outer_;
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
