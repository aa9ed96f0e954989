#include "foundation/shapes/bezier.h"

#include "foundation/archive.h"
#include "foundation/shapes/cubic_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcBezierCurve);

// --- construction ---

kcBezierCurve::kcBezierCurve()
    : points_{kcVector<2>(0.0, 0.0), kcVector<2>(1.0 / 3.0, 0.0), kcVector<2>(2.0 / 3.0, 0.0),
              kcVector<2>(1.0, 0.0)} {}

kcBezierCurve::kcBezierCurve(const kcVector<2>& p0, const kcVector<2>& p1, const kcVector<2>& p2,
                             const kcVector<2>& p3)
    : kcBezierCurve(ControlPoints{p0, p1, p2, p3}) {}

kcBezierCurve::kcBezierCurve(const ControlPoints& points) : points_(points) { check_(points_); }

void kcBezierCurve::check_(const ControlPoints& points) {
  for (const kcVector<2>& p : points) kfCheckFinite(p);
  if (points[1] == points[0] && points[2] == points[0] && points[3] == points[0])
    throw kcShapesError::DegenerateShape();
}

void kcBezierCurve::controlPoints(const ControlPoints& points) {
  check_(points);
  mutating_();
  points_ = points;
}

const kcVector<2>& kcBezierCurve::controlPoint(int i) const {
  if (i < 0 || i > 3) throw kcShapesError::BadParams();
  return points_[static_cast<std::size_t>(i)];
}

// --- evaluation ---

kcVector<2> kcBezierCurve::pointAt(double t) const noexcept { return kfCubicPoint_(points_, t); }

kcVector<2> kcBezierCurve::derivativeAt(double t) const noexcept { return kfCubicDerivative_(points_, t); }

double kcBezierCurve::nearestParam(const kcVector<2>& p) const { return kfNearestOnCubic_(points_, p).t; }

std::pair<kcBezierCurve, kcBezierCurve> kcBezierCurve::split(double t) const {
  if (!(t > 0.0 && t < 1.0)) throw kcShapesError::BadParams();
  kcCubic_ left, right;
  kfCubicSplit_(points_, t, left, right);
  return {kcBezierCurve(left), kcBezierCurve(right)};
}

kcBezierCurve kcBezierCurve::map(const kcXform<2>& x) const {
  ControlPoints mapped;
  for (std::size_t i = 0; i < 4; ++i) mapped[i] = x.mapPoint(points_[i]);
  return kcBezierCurve(mapped);
}

// --- kcShape ---

kcShapePtr kcBezierCurve::clone() const { return kfMakeHandle<kcBezierCurve>(*this); }

kcShapePtr kcBezierCurve::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcBezierCurve>(map(x)); }

kcShapePtr kcBezierCurve::reverse() const {
  return kfMakeHandle<kcBezierCurve>(points_[3], points_[2], points_[1], points_[0]);
}

kcRect kcBezierCurve::encloseRect() const { return kfCubicBox_(points_); }

kcVector<2> kcBezierCurve::nearestPoint(const kcVector<2>& p) const {
  return kfNearestOnCubic_(points_, p).point;
}

double kcBezierCurve::distanceToPoint(const kcVector<2>& p) const {
  return kfNearestOnCubic_(points_, p).distance;
}

kcRadian kcBezierCurve::startAngle() const {
  kcVector<2> d;
  if (!kfCubicEndDirection_(points_, false, d)) throw kcShapesError::NoTangent();
  return d.angle();
}

kcRadian kcBezierCurve::endAngle() const {
  kcVector<2> d;
  if (!kfCubicEndDirection_(points_, true, d)) throw kcShapesError::NoTangent();
  return d.angle();
}

void kcBezierCurve::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleCubic_(points_, spacing, true, out);
}

bool kcBezierCurve::equal_(const kcShape& other) const {
  return points_ == static_cast<const kcBezierCurve&>(other).points_;
}

// --- archive ---

void kcBezierCurve::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcBezierCurve::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/bezier", __LINE__);
  kcShape::serialize_(ar, version);
  ControlPoints points = points_;
  for (kcVector<2>& p : points) ar || p;
  if (ar.isLoading()) {
    for (const kcVector<2>& p : points) kfCheckLoadedFinite(p);
    if (points[1] == points[0] && points[2] == points[0] && points[3] == points[0])
      throw kcArchive::Corrupt(L"Bezier curve of coincident points");
    mutating_();
    points_ = points;
  }
}
