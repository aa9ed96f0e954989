#include "foundation/shapes/ellipsearc2.h"

#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipseArc2);

namespace {
kcMatrix<2> matrixOf(const kcEllipse2& e) {
  return kfEllipseMatrix_(e.radiusX(), e.radiusY(), e.rotation().toDouble());
}
}  // namespace

// --- construction and fields ---

kcEllipseArc2::kcEllipseArc2() : span_(2.0 * std::numbers::pi) {}

kcEllipseArc2::kcEllipseArc2(const kcEllipse2& ellipse, const kcRadian& start, const kcRadian& span)
    : ellipse_(ellipse), start_(start), span_(span) {
  kfCheckFinite(start.toDouble());
  kfCheckArcSpan_(span.toDouble());
}

kcEllipseArc2::kcEllipseArc2(const kcEllipseArc& arc) {
  // Factorise the arc's transform; the parameter change that takes the unit
  // circle's angles to the kcEllipse2's also takes the arc's ends there.
  kcEllipseFactors_ f = kfFactorEllipse_(arc.ellipse().xform().matrix());
  ellipse_ = kcEllipse2(f.radiusX, f.radiusY, kcRadian(f.rotation), arc.ellipse().center());
  start_ = kcRadian(f.param.apply(arc.angleStart().toDouble()));
  span_ = kcRadian(f.param.applySpan(arc.angleSpan().toDouble()));
}

void kcEllipseArc2::ellipse(const kcEllipse2& e) {
  mutating_();
  ellipse_ = e;
}

void kcEllipseArc2::angleStart(const kcRadian& a) {
  kfCheckFinite(a.toDouble());
  mutating_();
  start_ = a;
}

void kcEllipseArc2::angleSpan(const kcRadian& a) {
  kfCheckArcSpan_(a.toDouble());
  mutating_();
  span_ = a;
}

kcEllipseArc2 kcEllipseArc2::reversed() const { return kcEllipseArc2(ellipse_, angleEnd(), -span_); }

// --- images ---

kcEllipseArc2 kcEllipseArc2::map(const kcXform<2>& x) const {
  kcParamChange_ change;
  kcEllipse2 image = kfMapEllipse2_(ellipse_, x, change);
  return kcEllipseArc2(image, kcRadian(change.apply(start_.toDouble())),
                       kcRadian(change.applySpan(span_.toDouble())));
}

kcShapePtr kcEllipseArc2::clone() const { return kfMakeHandle<kcEllipseArc2>(*this); }

kcShapePtr kcEllipseArc2::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcEllipseArc2>(map(x)); }

kcShapePtr kcEllipseArc2::reverse() const { return kfMakeHandle<kcEllipseArc2>(reversed()); }

// --- measures ---

kcRect kcEllipseArc2::encloseRect() const {
  kcMatrix<2> m = matrixOf(ellipse_);
  return kfEllipseArcBox_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(),
                          span_.toDouble());
}

kcVector<2> kcEllipseArc2::nearestPoint(const kcVector<2>& p) const {
  kcMatrix<2> m = matrixOf(ellipse_);
  return kfNearestOnEllipseArc_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(),
                                span_.toDouble(), p)
      .point;
}

kcRadian kcEllipseArc2::startAngle() const {
  return kfArcTravelAngle_(matrixOf(ellipse_), start_.toDouble(), span_.toDouble());
}

kcRadian kcEllipseArc2::endAngle() const {
  return kfArcTravelAngle_(matrixOf(ellipse_), angleEnd().toDouble(), span_.toDouble());
}

void kcEllipseArc2::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  kcMatrix<2> m = matrixOf(ellipse_);
  kfSampleEllipseArc_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(), span_.toDouble(),
                      spacing, true, out);
}

bool kcEllipseArc2::equal_(const kcShape& other) const {
  return *this == static_cast<const kcEllipseArc2&>(other);
}

// --- archive ---

void kcEllipseArc2::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipseArc2::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipsearc2", __LINE__);
  kcShape::serialize_(ar, version);
  kcEllipse2 ellipse = ellipse_;
  kcRadian start = start_;
  kcRadian span = span_;
  ar || ellipse || start || span;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(start.toDouble());
    kfCheckLoadedArcSpan_(span.toDouble());
    mutating_();
    ellipse_ = ellipse;
    start_ = start;
    span_ = span;
  }
}
