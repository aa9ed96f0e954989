#include "foundation/shapes/interpspline.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcInterpSpline);

// --- construction ---

kcInterpSpline::kcInterpSpline() : kcInterpSpline({kcVector<2>(0.0, 0.0), kcVector<2>(1.0, 0.0)}) {}

kcInterpSpline::kcInterpSpline(std::vector<kcVector<2>> points)
    : kcCubicSpline(bezierFrom_(points)), points_(std::move(points)) {}

void kcInterpSpline::points(std::vector<kcVector<2>> points) {
  bezierPoints_(bezierFrom_(points));
  points_ = std::move(points);
}

std::vector<kcVector<2>> kcInterpSpline::bezierFrom_(const std::vector<kcVector<2>>& q) {
  if (q.size() < 2) throw kcShapesError::BadParams();
  for (const kcVector<2>& p : q) kfCheckFinite(p);
  const std::size_t n = q.size() - 1;
  // The natural end conditions give a strictly diagonally dominant
  // tridiagonal system (diagonal 2, 4, ..., 4, 2; off-diagonals 1), solved by
  // elimination without pivoting. diag[i] and rhs[i] hold the eliminated rows.
  std::vector<double> diag(n + 1);
  std::vector<kcVector<2>> rhs(n + 1);
  for (std::size_t i = 0; i <= n; ++i) {
    diag[i] = (i == 0 || i == n) ? 2.0 : 4.0;
    rhs[i] = 3.0 * (q[i == n ? n : i + 1] - q[i == 0 ? 0 : i - 1]);
  }
  for (std::size_t i = 1; i <= n; ++i) {
    const double w = 1.0 / diag[i - 1];
    diag[i] -= w;
    rhs[i] -= w * rhs[i - 1];
  }
  std::vector<kcVector<2>> d(n + 1);
  d[n] = rhs[n] / diag[n];
  for (std::size_t i = n; i-- > 0;) d[i] = (rhs[i] - d[i + 1]) / diag[i];

  std::vector<kcVector<2>> bezier;
  bezier.reserve(3 * n + 1);
  for (std::size_t i = 0; i < n; ++i) {
    bezier.push_back(q[i]);
    bezier.push_back(q[i] + d[i] / 3.0);
    bezier.push_back(q[i + 1] - d[i + 1] / 3.0);
  }
  bezier.push_back(q[n]);
  return bezier;
}

kcVector<2> kcInterpSpline::tangent(long i) const {
  if (i < 0 || i >= static_cast<long>(points_.size())) throw kcShapesError::BadParams();
  // The Bezier form holds q_i + D_i / 3 after each point but the last, and
  // q_n - D_n / 3 before the last.
  const std::vector<kcVector<2>>& b = bezierPoints();
  const auto k = static_cast<std::size_t>(i);
  if (k + 1 < points_.size()) return 3.0 * (b[3 * k + 1] - b[3 * k]);
  return 3.0 * (b[3 * k] - b[3 * k - 1]);
}

kcInterpSpline kcInterpSpline::map(const kcXform<2>& x) const {
  std::vector<kcVector<2>> mapped;
  mapped.reserve(points_.size());
  for (const kcVector<2>& p : points_) mapped.push_back(x.mapPoint(p));
  return kcInterpSpline(std::move(mapped));
}

// --- kcShape ---

kcShapePtr kcInterpSpline::clone() const { return kfMakeHandle<kcInterpSpline>(*this); }

kcShapePtr kcInterpSpline::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcInterpSpline>(map(x));
}

// Uniform parameters and natural ends are symmetric under reversal.
kcShapePtr kcInterpSpline::reverse() const {
  return kfMakeHandle<kcInterpSpline>(std::vector<kcVector<2>>(points_.rbegin(), points_.rend()));
}

bool kcInterpSpline::equal_(const kcShape& other) const {
  return points_ == static_cast<const kcInterpSpline&>(other).points_;
}

// --- archive ---

void kcInterpSpline::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcInterpSpline::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/interpspline", __LINE__);
  kcShape::serialize_(ar, version);
  std::vector<kcVector<2>> points = points_;
  kfTransferPoints_(ar, points);
  if (ar.isLoading()) {
    kcInterpSpline loaded;
    try {
      loaded = kcInterpSpline(std::move(points));
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"interpolating spline with too few points or a single point");
    }
    mutating_();
    *this = loaded;
  }
}
