#include "foundation/shapes/ellipseannulussection.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/shapes/ellipse_p.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcEllipseAnnulusSection);

namespace {
constexpr double kTwoPi = 2.0 * std::numbers::pi;
}  // namespace

// --- construction and fields ---

kcEllipseAnnulusSection::kcEllipseAnnulusSection() : span_(kTwoPi) {}

kcEllipseAnnulusSection::kcEllipseAnnulusSection(const kcEllipseAnnulus& annulus, const kcRadian& start,
                                                 const kcRadian& span)
    : annulus_(annulus), start_(start), span_(span) {
  kfCheckFinite(start.toDouble());
  kfCheckArcSpan_(span.toDouble());
}

void kcEllipseAnnulusSection::annulus(const kcEllipseAnnulus& a) {
  mutating_();
  annulus_ = a;
}

void kcEllipseAnnulusSection::angleStart(const kcRadian& a) {
  kfCheckFinite(a.toDouble());
  mutating_();
  start_ = a;
}

void kcEllipseAnnulusSection::angleSpan(const kcRadian& a) {
  kfCheckArcSpan_(a.toDouble());
  mutating_();
  span_ = a;
}

bool kcEllipseAnnulusSection::isFullTurn() const noexcept { return std::fabs(span_.toDouble()) >= kTwoPi; }

kcEllipseArc2 kcEllipseAnnulusSection::outerArc() const {
  return kcEllipseArc2(annulus_.outer(), start_, span_);
}

kcEllipseArc2 kcEllipseAnnulusSection::innerArc() const {
  return kcEllipseArc2(annulus_.inner(), start_, span_);
}

// --- images ---

kcEllipseAnnulusSection kcEllipseAnnulusSection::map(const kcXform<2>& x) const {
  kcParamChange_ change;
  kcEllipse2 outer = kfMapEllipse2_(annulus_.outer(), x, change);
  return kcEllipseAnnulusSection(kcEllipseAnnulus(outer, annulus_.innerScale()),
                                 kcRadian(change.apply(start_.toDouble())),
                                 kcRadian(change.applySpan(span_.toDouble())));
}

kcShapePtr kcEllipseAnnulusSection::clone() const { return kfMakeHandle<kcEllipseAnnulusSection>(*this); }

kcShapePtr kcEllipseAnnulusSection::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcEllipseAnnulusSection>(map(x));
}

std::vector<kcShapePtr> kcEllipseAnnulusSection::decompose() const {
  kcEllipseArc2 outer = outerArc();
  kcEllipseArc2 inner = innerArc();
  if (isFullTurn())
    return {kfMakeHandle<kcEllipseArc2>(outer), kfMakeHandle<kcEllipseArc2>(inner.reversed())};
  return {kfMakeHandle<kcEllipseArc2>(outer), kfMakeHandle<kcLineSeg>(outer.endPoint(), inner.endPoint()),
          kfMakeHandle<kcEllipseArc2>(inner.reversed()),
          kfMakeHandle<kcLineSeg>(inner.startPoint(), outer.startPoint())};
}

// --- measures ---

kcRect kcEllipseAnnulusSection::encloseRect() const {
  // The edges run between the arcs' end points, so the arcs' boxes hold them.
  kcRect box = outerArc().encloseRect();
  box.enclose(innerArc().encloseRect());
  return box;
}

kcVector<2> kcEllipseAnnulusSection::nearestPoint(const kcVector<2>& p) const {
  kcEllipseArc2 outer = outerArc();
  kcEllipseArc2 inner = innerArc();
  // Candidates in boundary order; a later one must be nearer by more than
  // the tie tolerance.
  kcVector<2> best = outer.nearestPoint(p);
  double bestDist = best.distance(p);
  double tie = kTieTol_ * std::max(annulus_.outer().radiusX(), annulus_.outer().radiusY());
  auto consider = [&](const kcVector<2>& q) {
    double d = q.distance(p);
    if (d < bestDist - tie) {
      bestDist = d;
      best = q;
    }
  };
  if (isFullTurn()) {
    consider(inner.reversed().nearestPoint(p));
    return best;
  }
  consider(kfNearestOnSegment_(outer.endPoint(), inner.endPoint(), p));
  consider(inner.reversed().nearestPoint(p));
  consider(kfNearestOnSegment_(inner.startPoint(), outer.startPoint(), p));
  return best;
}

bool kcEllipseAnnulusSection::within(const kcVector<2>& p) const {
  kcEllipsePolar_ polar = kfEllipsePolar_(annulus_.outer(), p);
  if (polar.rho < annulus_.innerScale() - kBoundaryTol_ || polar.rho > 1.0 + kBoundaryTol_) return false;
  if (isFullTurn()) return true;
  // Along the arc from the start; just before the start wraps to nearly a
  // full turn, which still lies on the start edge within the tolerance.
  double offset = kfArcOffset_(polar.t, start_.toDouble(), span_.toDouble());
  return offset <= std::fabs(span_.toDouble()) + kBoundaryTol_ || offset >= kTwoPi - kBoundaryTol_;
}

void kcEllipseAnnulusSection::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  kcEllipseArc2 outer = outerArc();
  kcEllipseArc2 inner = innerArc().reversed();
  if (isFullTurn()) {
    outer.sample(spacing, out);
    inner.sample(spacing, out);
    return;
  }
  std::size_t first = out.size();
  outer.sample(spacing, out);
  out.pop_back();  // the end edge starts there
  kfSampleSegment(outer.endPoint(), inner.startPoint(), spacing, false, out);
  inner.sample(spacing, out);
  out.pop_back();
  kcVector<2> start = out[first];
  kfSampleSegment(inner.endPoint(), start, spacing, true, out);
}

bool kcEllipseAnnulusSection::equal_(const kcShape& other) const {
  return *this == static_cast<const kcEllipseAnnulusSection&>(other);
}

// --- archive ---

void kcEllipseAnnulusSection::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcEllipseAnnulusSection::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/ellipseannulussection", __LINE__);
  kcShape::serialize_(ar, version);
  kcEllipseAnnulus annulus = annulus_;
  kcRadian start = start_;
  kcRadian span = span_;
  ar || annulus || start || span;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(start.toDouble());
    kfCheckLoadedArcSpan_(span.toDouble());
    mutating_();
    annulus_ = annulus;
    start_ = start;
    span_ = span;
  }
}
