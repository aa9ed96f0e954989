#include "foundation/shapes/deboorspline.h"

#include <algorithm>

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcDeBoorSpline);

namespace {

// Inserts knot u once into the B-spline of degree p with knots and points
// (Boehm's algorithm): the curve is unchanged, one point is added.
void insertKnot(int p, double u, std::vector<double>& knots, std::vector<kcVector<2>>& points) {
  // k: the last knot not above u; s: how often u is already a knot.
  const auto k = static_cast<int>(std::upper_bound(knots.begin(), knots.end(), u) - knots.begin()) - 1;
  const auto s = static_cast<int>(std::count(knots.begin(), knots.end(), u));
  std::vector<kcVector<2>> next(points.size() + 1);
  for (int i = 0; i < static_cast<int>(next.size()); ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (i <= k - p) {
      next[at] = points[at];
    } else if (i <= k - s) {
      const double alpha = (u - knots[at]) / (knots[at + static_cast<std::size_t>(p)] - knots[at]);
      next[at] = (1.0 - alpha) * points[at - 1] + alpha * points[at];
    } else {
      next[at] = points[at - 1];
    }
  }
  knots.insert(knots.begin() + k + 1, u);
  points = std::move(next);
}

}  // namespace

// --- construction ---

kcDeBoorSpline::kcDeBoorSpline() : kcDeBoorSpline({kcVector<2>(0.0, 0.0), kcVector<2>(1.0, 0.0)}) {}

kcDeBoorSpline::kcDeBoorSpline(std::vector<kcVector<2>> deBoorPoints)
    : kcCubicSpline(bezierFrom_(deBoorPoints)), deBoor_(std::move(deBoorPoints)) {}

void kcDeBoorSpline::deBoorPoints(std::vector<kcVector<2>> points) {
  bezierPoints_(bezierFrom_(points));
  deBoor_ = std::move(points);
}

std::vector<kcVector<2>> kcDeBoorSpline::bezierFrom_(const std::vector<kcVector<2>>& deBoor) {
  if (deBoor.size() < 2) throw kcShapesError::BadParams();
  for (const kcVector<2>& d : deBoor) kfCheckFinite(d);
  const int n = static_cast<int>(deBoor.size()) - 1;
  const int p = std::min(3, n);
  const int spans = n - p + 1;
  std::vector<double> knots;
  knots.insert(knots.end(), static_cast<std::size_t>(p + 1), 0.0);
  for (int i = 1; i < spans; ++i) knots.push_back(i);
  knots.insert(knots.end(), static_cast<std::size_t>(p + 1), static_cast<double>(spans));
  // Every interior knot raised to multiplicity p cuts the curve into its
  // Bezier pieces of degree p.
  std::vector<kcVector<2>> points = deBoor;
  for (int u = 1; u < spans; ++u)
    for (int times = 1; times < p; ++times) insertKnot(p, u, knots, points);
  if (p == 3) return points;
  // Degree elevation: a straight or parabolic piece as a cubic one.
  std::vector<kcVector<2>> cubic;
  if (p == 1) {
    cubic = {points[0], (2.0 * points[0] + points[1]) / 3.0, (points[0] + 2.0 * points[1]) / 3.0, points[1]};
  } else {
    cubic = {points[0], (points[0] + 2.0 * points[1]) / 3.0, (2.0 * points[1] + points[2]) / 3.0, points[2]};
  }
  return cubic;
}

kcDeBoorSpline kcDeBoorSpline::map(const kcXform<2>& x) const {
  std::vector<kcVector<2>> mapped;
  mapped.reserve(deBoor_.size());
  for (const kcVector<2>& p : deBoor_) mapped.push_back(x.mapPoint(p));
  return kcDeBoorSpline(std::move(mapped));
}

// --- kcShape ---

kcShapePtr kcDeBoorSpline::clone() const { return kfMakeHandle<kcDeBoorSpline>(*this); }

kcShapePtr kcDeBoorSpline::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcDeBoorSpline>(map(x));
}

// The clamped uniform knots are symmetric, so the reversed points give the
// same curve travelled backwards.
kcShapePtr kcDeBoorSpline::reverse() const {
  return kfMakeHandle<kcDeBoorSpline>(std::vector<kcVector<2>>(deBoor_.rbegin(), deBoor_.rend()));
}

bool kcDeBoorSpline::equal_(const kcShape& other) const {
  return deBoor_ == static_cast<const kcDeBoorSpline&>(other).deBoor_;
}

// --- archive ---

void kcDeBoorSpline::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcDeBoorSpline::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/deboorspline", __LINE__);
  kcShape::serialize_(ar, version);
  std::vector<kcVector<2>> points = deBoor_;
  kfTransferPoints_(ar, points);
  if (ar.isLoading()) {
    kcDeBoorSpline loaded;
    try {
      loaded = kcDeBoorSpline(std::move(points));
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"de Boor spline with too few points or a single point");
    }
    mutating_();
    *this = loaded;
  }
}
