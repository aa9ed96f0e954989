#include "foundation/shapes/ellipse.h"

#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipse);

// --- construction and fields ---

kcEllipse::kcEllipse(const kcXform<2>& xform) : xform_(xform) { check_(xform); }

kcEllipse::kcEllipse(const kcEllipse2& e) : xform_(e.xform()) {}

kcEllipse::kcEllipse(const kcCircle& c) : xform_(kcMatrix<2>::scale(c.radius(), c.radius()), c.center()) {}

void kcEllipse::check_(const kcXform<2>& x) {
  kfCheckFiniteXform_(x);
  if (x.matrix().determinant() == 0.0) throw kcShapesError::DegenerateShape();
}

void kcEllipse::xform(const kcXform<2>& x) {
  check_(x);
  mutating_();
  xform_ = x;
}

// Summed as the shared arc routines sum it, so sample() starts and ends on
// exactly the points point() gives.
kcVector<2> kcEllipse::point(const kcRadian& t) const noexcept {
  const kcMatrix<2>& m = xform_.matrix();
  return center() + kfColumnU_(m) * cos(t) + kfColumnV_(m) * sin(t);
}

// --- images ---

kcEllipse kcEllipse::map(const kcXform<2>& x) const {
  if (x.matrix().determinant() == 0.0) throw kcMathError::Singular();
  return kcEllipse(x * xform_);
}

kcShapePtr kcEllipse::clone() const { return kfMakeHandle<kcEllipse>(*this); }

kcShapePtr kcEllipse::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcEllipse>(map(x)); }

// --- measures ---

kcRect kcEllipse::encloseRect() const {
  const kcMatrix<2>& m = xform_.matrix();
  return kfEllipseArcBox_(center(), kfColumnU_(m), kfColumnV_(m), 0.0, 2.0 * std::numbers::pi);
}

kcVector<2> kcEllipse::nearestPoint(const kcVector<2>& p) const {
  const kcMatrix<2>& m = xform_.matrix();
  return kfNearestOnEllipseArc_(center(), kfColumnU_(m), kfColumnV_(m), 0.0, 2.0 * std::numbers::pi, p).point;
}

// In the unit circle's space the boundary is at distance 1; the tolerance is
// relative to the ellipse's size there.
bool kcEllipse::within(const kcVector<2>& p) const {
  return xform_.invMapPoint(p).len() <= 1.0 + kBoundaryTol_;
}

void kcEllipse::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleClosedEllipse_(center(), xform_.matrix(), spacing, out);
}

bool kcEllipse::equal_(const kcShape& other) const { return *this == static_cast<const kcEllipse&>(other); }

// --- archive ---

void kcEllipse::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipse::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipse", __LINE__);
  kcShape::serialize_(ar, version);
  kcXform<2> xform = xform_;
  ar || xform;
  if (ar.isLoading()) {
    kfCheckLoadedFiniteXform_(xform);
    if (xform.matrix().determinant() == 0.0) throw kcArchive::Corrupt(L"ellipse transform is singular");
    mutating_();
    xform_ = xform;
  }
}
