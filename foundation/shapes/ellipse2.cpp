#include "foundation/shapes/ellipse2.h"

#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipse2);

// --- construction and fields ---

kcEllipse2::kcEllipse2(double radiusX, double radiusY, const kcRadian& rotation, const kcVector<2>& center)
    : radiusX_(radiusX), radiusY_(radiusY), rotation_(rotation), center_(center) {
  check_(radiusX, radiusY, rotation, center);
}

kcEllipse2::kcEllipse2(const kcEllipse& e) {
  kcEllipseFactors_ f = kfFactorEllipse_(e.xform().matrix());
  *this = kcEllipse2(f.radiusX, f.radiusY, kcRadian(f.rotation), e.center());
}

kcEllipse2::kcEllipse2(const kcCircle& c)
    : radiusX_(c.radius()), radiusY_(c.radius()), rotation_(0.0), center_(c.center()) {}

void kcEllipse2::check_(double radiusX, double radiusY, const kcRadian& rotation, const kcVector<2>& center) {
  kfCheckFinite(radiusX);
  kfCheckFinite(radiusY);
  kfCheckFinite(rotation.toDouble());
  kfCheckFinite(center);
  if (!(radiusX > 0.0) || !(radiusY > 0.0)) throw kcShapesError::DegenerateShape();
}

void kcEllipse2::radiusX(double r) {
  check_(r, radiusY_, rotation_, center_);
  mutating_();
  radiusX_ = r;
}

void kcEllipse2::radiusY(double r) {
  check_(radiusX_, r, rotation_, center_);
  mutating_();
  radiusY_ = r;
}

void kcEllipse2::rotation(const kcRadian& a) {
  check_(radiusX_, radiusY_, a, center_);
  mutating_();
  rotation_ = a;
}

void kcEllipse2::center(const kcVector<2>& c) {
  check_(radiusX_, radiusY_, rotation_, c);
  mutating_();
  center_ = c;
}

// Summed as the shared arc routines sum it, so sample() starts and ends on
// exactly the points point() gives.
kcVector<2> kcEllipse2::point(const kcRadian& t) const noexcept {
  kcMatrix<2> m = kfEllipseMatrix_(radiusX_, radiusY_, rotation_.toDouble());
  return center_ + kfColumnU_(m) * cos(t) + kfColumnV_(m) * sin(t);
}

kcXform<2> kcEllipse2::xform() const noexcept {
  return {kfEllipseMatrix_(radiusX_, radiusY_, rotation_.toDouble()), center_};
}

// --- images ---

kcEllipse2 kcEllipse2::map(const kcXform<2>& x) const {
  kcParamChange_ change;
  return kfMapEllipse2_(*this, x, change);
}

kcShapePtr kcEllipse2::clone() const { return kfMakeHandle<kcEllipse2>(*this); }

kcShapePtr kcEllipse2::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcEllipse2>(map(x)); }

// --- measures ---

kcRect kcEllipse2::encloseRect() const {
  kcMatrix<2> m = kfEllipseMatrix_(radiusX_, radiusY_, rotation_.toDouble());
  return kfEllipseArcBox_(center_, kfColumnU_(m), kfColumnV_(m), 0.0, 2.0 * std::numbers::pi);
}

kcVector<2> kcEllipse2::nearestPoint(const kcVector<2>& p) const {
  kcMatrix<2> m = kfEllipseMatrix_(radiusX_, radiusY_, rotation_.toDouble());
  return kfNearestOnEllipseArc_(center_, kfColumnU_(m), kfColumnV_(m), 0.0, 2.0 * std::numbers::pi, p).point;
}

bool kcEllipse2::within(const kcVector<2>& p) const {
  return kfEllipsePolar_(*this, p).rho <= 1.0 + kBoundaryTol_;
}

void kcEllipse2::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleClosedEllipse_(center_, kfEllipseMatrix_(radiusX_, radiusY_, rotation_.toDouble()), spacing, out);
}

bool kcEllipse2::equal_(const kcShape& other) const { return *this == static_cast<const kcEllipse2&>(other); }

// --- archive ---

void kcEllipse2::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipse2::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipse2", __LINE__);
  kcShape::serialize_(ar, version);
  double radiusX = radiusX_;
  double radiusY = radiusY_;
  kcRadian rotation = rotation_;
  kcVector<2> center = center_;
  ar || radiusX || radiusY || rotation || center;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(radiusX);
    kfCheckLoadedFinite(radiusY);
    kfCheckLoadedFinite(rotation.toDouble());
    kfCheckLoadedFinite(center);
    if (!(radiusX > 0.0) || !(radiusY > 0.0)) throw kcArchive::Corrupt(L"ellipse radius is not > 0");
    mutating_();
    radiusX_ = radiusX;
    radiusY_ = radiusY;
    rotation_ = rotation;
    center_ = center;
  }
}
