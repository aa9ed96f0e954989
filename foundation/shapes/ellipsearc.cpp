#include "foundation/shapes/ellipsearc.h"

#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipseArc);

// --- construction and fields ---

kcEllipseArc::kcEllipseArc() : span_(2.0 * std::numbers::pi) {}

kcEllipseArc::kcEllipseArc(const kcEllipse& ellipse, const kcRadian& start, const kcRadian& span)
    : ellipse_(ellipse), start_(start), span_(span) {
  kfCheckFinite(start.toDouble());
  kfCheckArcSpan_(span.toDouble());
}

// The kcEllipse of a kcEllipse2 keeps its parameter, so the angles carry over.
kcEllipseArc::kcEllipseArc(const kcEllipseArc2& arc)
    : ellipse_(arc.ellipse()), start_(arc.angleStart()), span_(arc.angleSpan()) {}

void kcEllipseArc::ellipse(const kcEllipse& e) {
  mutating_();
  ellipse_ = e;
}

void kcEllipseArc::angleStart(const kcRadian& a) {
  kfCheckFinite(a.toDouble());
  mutating_();
  start_ = a;
}

void kcEllipseArc::angleSpan(const kcRadian& a) {
  kfCheckArcSpan_(a.toDouble());
  mutating_();
  span_ = a;
}

kcEllipseArc kcEllipseArc::reversed() const { return kcEllipseArc(ellipse_, angleEnd(), -span_); }

// --- images ---

kcEllipseArc kcEllipseArc::map(const kcXform<2>& x) const {
  return kcEllipseArc(ellipse_.map(x), start_, span_);
}

kcShapePtr kcEllipseArc::clone() const { return kfMakeHandle<kcEllipseArc>(*this); }

kcShapePtr kcEllipseArc::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcEllipseArc>(map(x)); }

kcShapePtr kcEllipseArc::reverse() const { return kfMakeHandle<kcEllipseArc>(reversed()); }

// --- measures ---

kcRect kcEllipseArc::encloseRect() const {
  const kcMatrix<2>& m = ellipse_.xform().matrix();
  return kfEllipseArcBox_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(),
                          span_.toDouble());
}

kcVector<2> kcEllipseArc::nearestPoint(const kcVector<2>& p) const {
  const kcMatrix<2>& m = ellipse_.xform().matrix();
  return kfNearestOnEllipseArc_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(),
                                span_.toDouble(), p)
      .point;
}

kcRadian kcEllipseArc::startAngle() const {
  return kfArcTravelAngle_(ellipse_.xform().matrix(), start_.toDouble(), span_.toDouble());
}

kcRadian kcEllipseArc::endAngle() const {
  return kfArcTravelAngle_(ellipse_.xform().matrix(), angleEnd().toDouble(), span_.toDouble());
}

void kcEllipseArc::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  const kcMatrix<2>& m = ellipse_.xform().matrix();
  kfSampleEllipseArc_(ellipse_.center(), kfColumnU_(m), kfColumnV_(m), start_.toDouble(), span_.toDouble(),
                      spacing, true, out);
}

bool kcEllipseArc::equal_(const kcShape& other) const {
  return *this == static_cast<const kcEllipseArc&>(other);
}

// --- archive ---

void kcEllipseArc::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipseArc::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipsearc", __LINE__);
  kcShape::serialize_(ar, version);
  kcEllipse ellipse = ellipse_;
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
