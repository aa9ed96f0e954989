#include "foundation/shapes/spline.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/archive.h"
#include "foundation/shapes/cubic_p.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/rect.h"

KC_DEFINE_PERSISTENT(kcCubicSpline);

namespace {

// A later piece must be nearer by this fraction to replace an earlier one, so
// ties resolve to the first point along the curve.
constexpr double kTieTol = 1e-12;

// Piece i of a Bezier point list.
kcCubic_ cubicAt(const std::vector<kcVector<2>>& points, std::size_t i) {
  return {points[3 * i], points[3 * i + 1], points[3 * i + 2], points[3 * i + 3]};
}

bool isPoint(const kcCubic_& c) { return c[1] == c[0] && c[2] == c[0] && c[3] == c[0]; }

}  // namespace

// --- construction ---

kcCubicSpline::kcCubicSpline() : kcCubicSpline(kcBezierCurve()) {}

kcCubicSpline::kcCubicSpline(std::vector<kcVector<2>> bezierPoints) : bezier_(std::move(bezierPoints)) {
  check_(bezier_);
}

kcCubicSpline::kcCubicSpline(const kcBezierCurve& curve)
    : bezier_(curve.controlPoints().begin(), curve.controlPoints().end()) {}

void kcCubicSpline::check_(const std::vector<kcVector<2>>& points) {
  if (points.size() < 4 || points.size() % 3 != 1) throw kcShapesError::BadParams();
  for (const kcVector<2>& p : points) kfCheckFinite(p);
  if (std::all_of(points.begin(), points.end(), [&](const kcVector<2>& p) { return p == points.front(); }))
    throw kcShapesError::DegenerateShape();
}

void kcCubicSpline::bezierPoints_(std::vector<kcVector<2>> points) {
  check_(points);
  mutating_();
  bezier_ = std::move(points);
}

kcBezierCurve kcCubicSpline::piece(long i) const {
  if (i < 0 || i >= numPieces()) throw kcShapesError::BadParams();
  return kcBezierCurve(cubicAt(bezier_, static_cast<std::size_t>(i)));
}

kcVector<2> kcCubicSpline::pointAt(double t) const {
  if (std::isnan(t)) throw kcShapesError::BadParams();
  const double k = static_cast<double>(numPieces());
  t = std::clamp(t, 0.0, k);
  const double i = std::min(std::floor(t), k - 1.0);
  return kfCubicPoint_(cubicAt(bezier_, static_cast<std::size_t>(i)), t - i);
}

kcCubicSpline kcCubicSpline::map(const kcXform<2>& x) const {
  std::vector<kcVector<2>> mapped;
  mapped.reserve(bezier_.size());
  for (const kcVector<2>& p : bezier_) mapped.push_back(x.mapPoint(p));
  return kcCubicSpline(std::move(mapped));
}

// --- kcShape ---

kcShapePtr kcCubicSpline::clone() const { return kfMakeHandle<kcCubicSpline>(*this); }

kcShapePtr kcCubicSpline::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcCubicSpline>(map(x)); }

kcShapePtr kcCubicSpline::reverse() const {
  return kfMakeHandle<kcCubicSpline>(std::vector<kcVector<2>>(bezier_.rbegin(), bezier_.rend()));
}

std::vector<kcShapePtr> kcCubicSpline::decompose() const {
  std::vector<kcShapePtr> pieces;
  for (std::size_t i = 0; i < bezier_.size() / 3; ++i) {
    const kcCubic_ c = cubicAt(bezier_, i);
    if (!isPoint(c)) pieces.emplace_back(new kcBezierCurve(c));
  }
  return pieces;
}

kcRect kcCubicSpline::encloseRect() const {
  kcRect box;
  for (std::size_t i = 0; i < bezier_.size() / 3; ++i) box.enclose(kfCubicBox_(cubicAt(bezier_, i)));
  return box;
}

kcCubicFoot_ kcCubicSpline::nearest_(const kcVector<2>& p) const {
  kcCubicFoot_ best;
  best.distance = std::numeric_limits<double>::infinity();
  bool found = false;
  for (std::size_t i = 0; i < bezier_.size() / 3; ++i) {
    const kcCubic_ c = cubicAt(bezier_, i);
    // A piece can only win by being nearer, so a piece whose control box is
    // no nearer than the best so far is skipped.
    if (found && kfCubicDistanceBound_(c, p) >= best.distance) continue;
    const kcCubicFoot_ foot = kfNearestOnCubic_(c, p);
    if (!found || foot.distance < best.distance * (1.0 - kTieTol)) {
      best = foot;
      found = true;
    }
  }
  return best;
}

kcVector<2> kcCubicSpline::nearestPoint(const kcVector<2>& p) const { return nearest_(p).point; }

double kcCubicSpline::distanceToPoint(const kcVector<2>& p) const { return nearest_(p).distance; }

kcRadian kcCubicSpline::startAngle() const {
  // The first point that leaves the start gives the direction of travel.
  for (const kcVector<2>& p : bezier_)
    if (p != bezier_.front()) return (p - bezier_.front()).angle();
  throw kcShapesError::NoTangent();
}

kcRadian kcCubicSpline::endAngle() const {
  for (auto it = bezier_.rbegin(); it != bezier_.rend(); ++it)
    if (*it != bezier_.back()) return (bezier_.back() - *it).angle();
  throw kcShapesError::NoTangent();
}

void kcCubicSpline::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  const std::size_t k = bezier_.size() / 3;
  // The whole count is checked first, so a refused call appends nothing.
  double steps = 0.0;
  for (std::size_t i = 0; i < k; ++i) steps += kfCubicSampleSteps_(cubicAt(bezier_, i), spacing);
  if (!(steps <= kcShape::kMaxSamples)) throw kcShapesError::BadParams();
  for (std::size_t i = 0; i < k; ++i) kfSampleCubic_(cubicAt(bezier_, i), spacing, i + 1 == k, out);
}

bool kcCubicSpline::equal_(const kcShape& other) const {
  return bezier_ == static_cast<const kcCubicSpline&>(other).bezier_;
}

// --- archive ---

void kcCubicSpline::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcCubicSpline::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/spline", __LINE__);
  kcShape::serialize_(ar, version);
  std::vector<kcVector<2>> points = bezier_;
  kfTransferPoints_(ar, points);
  if (ar.isLoading()) {
    try {
      check_(points);
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"cubic spline with a bad point count or a single point");
    }
    mutating_();
    bezier_ = std::move(points);
  }
}
