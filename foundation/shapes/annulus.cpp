#include "foundation/shapes/annulus.h"

#include <cmath>

#include "foundation/archive.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcAnnulus);

// --- construction and fields ---

kcAnnulus::kcAnnulus(const kcVector<2>& center, double innerRadius, double outerRadius)
    : center_(center), inner_(innerRadius), outer_(outerRadius) {
  check_(center, innerRadius, outerRadius);
}

void kcAnnulus::check_(const kcVector<2>& center, double inner, double outer) {
  kfCheckFinite(center);
  kfCheckFinite(inner);
  kfCheckFinite(outer);
  if (!(inner > 0.0) || !(inner < outer)) throw kcShapesError::DegenerateShape();
}

void kcAnnulus::center(const kcVector<2>& c) {
  check_(c, inner_, outer_);
  mutating_();
  center_ = c;
}

void kcAnnulus::innerRadius(double r) {
  check_(center_, r, outer_);
  mutating_();
  inner_ = r;
}

void kcAnnulus::outerRadius(double r) {
  check_(center_, inner_, r);
  mutating_();
  outer_ = r;
}

kcCircle kcAnnulus::innerCircle() const { return kcCircle(center_, inner_); }

kcCircle kcAnnulus::outerCircle() const { return kcCircle(center_, outer_); }

// --- images ---

kcAnnulus kcAnnulus::map(const kcXform<2>& x) const {
  if (!kcCircle::isSimilarity(x)) throw kcShapesError::BadGeom();
  double scale = x.matrix().isIdentity() ? 1.0 : kfSimilarityScale_(x.matrix());
  return kcAnnulus(x * center_, inner_ * scale, outer_ * scale);
}

kcGenAnnulus kcAnnulus::toGenAnnulus() const {
  // The unit square [0, 1]^2 onto the outer circle's box; rounding both
  // corners' fractions to 1 leaves exactly the inscribed circle.
  kcXform<2> box(kcMatrix<2>::scale(2.0 * outer_, 2.0 * outer_), center_ - kcVector<2>(outer_, outer_));
  return kcGenAnnulus(kcGenRect(box, 1.0, 1.0), inner_ / outer_);
}

kcShapePtr kcAnnulus::clone() const { return kfMakeHandle<kcAnnulus>(*this); }

kcShapePtr kcAnnulus::mapShape(const kcXform<2>& x) const {
  if (x.matrix().determinant() == 0.0) throw kcMathError::Singular();
  if (kcCircle::isSimilarity(x)) return kfMakeHandle<kcAnnulus>(map(x));
  return kfMakeHandle<kcGenAnnulus>(toGenAnnulus().map(x));
}

std::vector<kcShapePtr> kcAnnulus::decompose() const {
  return {kfMakeHandle<kcCircle>(outerCircle()), kfMakeHandle<kcCircle>(innerCircle())};
}

// --- measures ---

kcRect kcAnnulus::encloseRect() const { return outerCircle().encloseRect(); }

kcVector<2> kcAnnulus::nearestPoint(const kcVector<2>& p) const {
  double d = p.distance(center_);
  // The outer circle comes first along the boundary, so it wins a tie.
  if (std::fabs(d - inner_) < std::fabs(d - outer_) - kTieTol_ * outer_) return innerCircle().nearestPoint(p);
  return outerCircle().nearestPoint(p);
}

double kcAnnulus::distanceToPoint(const kcVector<2>& p) const {
  double d = p.distance(center_);
  return std::min(std::fabs(d - inner_), std::fabs(d - outer_));
}

bool kcAnnulus::within(const kcVector<2>& p) const {
  double d = p.distance(center_);
  double tol = kBoundaryTol_ * outer_;
  return d >= inner_ - tol && d <= outer_ + tol;
}

void kcAnnulus::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  outerCircle().sample(spacing, out);
  innerCircle().sample(spacing, out);
}

bool kcAnnulus::equal_(const kcShape& other) const { return *this == static_cast<const kcAnnulus&>(other); }

// --- archive ---

void kcAnnulus::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcAnnulus::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/annulus", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> center = center_;
  double inner = inner_;
  double outer = outer_;
  ar || center || inner || outer;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(center);
    kfCheckLoadedFinite(inner);
    kfCheckLoadedFinite(outer);
    if (!(inner > 0.0) || !(inner < outer))
      throw kcArchive::Corrupt(L"annulus radii are not 0 < inner < outer");
    mutating_();
    center_ = center;
    inner_ = inner;
    outer_ = outer;
  }
}
