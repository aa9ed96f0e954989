#include "foundation/shapes/cubic_p.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// Subdivision depth at which an interval of the quintic's Bernstein form is
// narrower than a double can resolve in [0, 1]; a root still not isolated
// there (a double root) is taken at the interval's midpoint.
constexpr int kMaxIsolationDepth = 56;
// Bracketed Newton steps allowed per root; bisection alone needs about 55.
constexpr int kMaxNewtonSteps = 200;
// A later candidate must be nearer by this fraction to replace an earlier
// one, so ties resolve to the first point along the curve.
constexpr double kTieTol = 1e-12;

using Quintic = std::array<double, 6>;

// f(t) = (B(t) - p) . B'(t) and its derivative B' . B' + (B - p) . B''.
struct Foot {
  const kcCubic_& c;
  const kcVector<2>& p;

  double f(double t) const { return (kfCubicPoint_(c, t) - p).dot(kfCubicDerivative_(c, t)); }
  double df(double t) const {
    const double mt = 1.0 - t;
    const kcVector<2> second = 6.0 * (mt * (c[2] - 2.0 * c[1] + c[0]) + t * (c[3] - 2.0 * c[2] + c[1]));
    const kcVector<2> d = kfCubicDerivative_(c, t);
    return d.dot(d) + (kfCubicPoint_(c, t) - p).dot(second);
  }
};

// The Bernstein coefficients of f on [0, 1]: the product of the cubic B - p
// and the quadratic B', degree 5.
Quintic footQuintic(const kcCubic_& c, const kcVector<2>& p) {
  static constexpr double kC3[4] = {1, 3, 3, 1}, kC2[3] = {1, 2, 1}, kC5[6] = {1, 5, 10, 10, 5, 1};
  kcVector<2> a[4], d[3];
  for (int i = 0; i < 4; ++i) a[i] = c[i] - p;
  for (int j = 0; j < 3; ++j) d[j] = 3.0 * (c[j + 1] - c[j]);
  Quintic q{};
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 3; ++j) q[i + j] += kC3[i] * kC2[j] * a[i].dot(d[j]);
  for (int k = 0; k < 6; ++k) q[k] /= kC5[k];
  return q;
}

void splitQuintic(const Quintic& q, Quintic& left, Quintic& right) {
  Quintic w = q;
  for (int level = 0; level < 6; ++level) {
    left[level] = w[0];
    right[5 - level] = w[5 - level];
    for (int i = 0; i < 5 - level; ++i) w[i] = 0.5 * (w[i] + w[i + 1]);
  }
}

int signChanges(const Quintic& q) {
  int changes = 0;
  double last = 0.0;
  for (double v : q) {
    if (v == 0.0) continue;
    if (last != 0.0 && (v > 0.0) != (last > 0.0)) ++changes;
    last = v;
  }
  return changes;
}

// The root of f in (lo, hi), where the Bernstein form shows one sign change
// with f of sign loPositive at lo: Newton steps kept inside a shrinking
// bracket, bisection when a step would leave it. Only inner points are
// evaluated, so an end where f vanishes (or rounds to the wrong sign) cannot
// stand in for the root inside.
double refineRoot(const Foot& foot, double lo, double hi, bool loPositive) {
  double t = 0.5 * (lo + hi);
  for (int step = 0; step < kMaxNewtonSteps; ++step) {
    const double ft = foot.f(t);
    if (ft == 0.0) return t;
    if ((ft > 0.0) == loPositive) {
      lo = t;
    } else {
      hi = t;
    }
    const double d = foot.df(t);
    double next = d != 0.0 ? t - ft / d : lo;
    if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
    if (next == t || hi - lo <= 4.0 * std::numeric_limits<double>::epsilon() * std::max(1.0, std::fabs(t)))
      return next;
    t = next;
  }
  return t;
}

void isolateRoots(const Foot& foot, const Quintic& q, double lo, double hi, int depth,
                  std::vector<double>& roots) {
  const int changes = signChanges(q);
  if (changes == 0) {
    // All coefficients of one sign: f has no zero inside, only possibly at an end.
    if (q[0] == 0.0) roots.push_back(lo);
    if (q[5] == 0.0) roots.push_back(hi);
    return;
  }
  if (changes == 1 && q[0] * q[5] < 0.0) {
    roots.push_back(refineRoot(foot, lo, hi, q[0] > 0.0));
    return;
  }
  if (depth >= kMaxIsolationDepth) {
    roots.push_back(0.5 * (lo + hi));
    return;
  }
  Quintic left{}, right{};
  splitQuintic(q, left, right);
  const double mid = 0.5 * (lo + hi);
  isolateRoots(foot, left, lo, mid, depth + 1, roots);
  isolateRoots(foot, right, mid, hi, depth + 1, roots);
}

// Roots in (0, 1) of a t^2 + b t + c.
int quadraticRoots(double a, double b, double c, double scale, double roots[2]) {
  int n = 0;
  auto keep = [&](double t) {
    if (t > 0.0 && t < 1.0) roots[n++] = t;
  };
  if (std::fabs(a) <= 1e-14 * scale) {
    if (b != 0.0) keep(-c / b);
    return n;
  }
  const double disc = b * b - 4.0 * a * c;
  if (disc < 0.0) return 0;
  const double q = -0.5 * (b + std::copysign(std::sqrt(disc), b));
  keep(q / a);
  if (q != 0.0) keep(c / q);
  return n;
}

double longestLeg(const kcCubic_& c) {
  return std::max({c[0].distance(c[1]), c[1].distance(c[2]), c[2].distance(c[3])});
}

}  // namespace

kcVector<2> kfCubicPoint_(const kcCubic_& c, double t) noexcept {
  const double mt = 1.0 - t;
  return (mt * mt * mt) * c[0] + (3.0 * mt * mt * t) * c[1] + (3.0 * mt * t * t) * c[2] + (t * t * t) * c[3];
}

kcVector<2> kfCubicDerivative_(const kcCubic_& c, double t) noexcept {
  const double mt = 1.0 - t;
  return 3.0 * ((mt * mt) * (c[1] - c[0]) + (2.0 * mt * t) * (c[2] - c[1]) + (t * t) * (c[3] - c[2]));
}

void kfCubicSplit_(const kcCubic_& c, double t, kcCubic_& left, kcCubic_& right) noexcept {
  const kcVector<2> a = c[0] + t * (c[1] - c[0]), b = c[1] + t * (c[2] - c[1]), d = c[2] + t * (c[3] - c[2]);
  const kcVector<2> ab = a + t * (b - a), bd = b + t * (d - b);
  const kcVector<2> m = ab + t * (bd - ab);
  left = {c[0], a, ab, m};
  right = {m, bd, d, c[3]};
}

kcRect kfCubicBox_(const kcCubic_& c) {
  kcRect box = kcRect::fromCorners(c[0], c[3]);
  for (int axis = 0; axis < 2; ++axis) {
    const double d0 = c[1][axis] - c[0][axis], d1 = c[2][axis] - c[1][axis], d2 = c[3][axis] - c[2][axis];
    double roots[2];
    const double scale = std::fabs(d0) + std::fabs(d1) + std::fabs(d2);
    const int n = quadraticRoots(d0 - 2.0 * d1 + d2, 2.0 * (d1 - d0), d0, scale, roots);
    for (int i = 0; i < n; ++i) box.enclose(kfCubicPoint_(c, roots[i]));
  }
  return box;
}

kcCubicFoot_ kfNearestOnCubic_(const kcCubic_& c, const kcVector<2>& p) {
  // Working relative to p keeps the distances accurate for a small curve far
  // from the origin: the differences c_i - p lose nothing there.
  const kcVector<2> origin;
  const kcCubic_ a{c[0] - p, c[1] - p, c[2] - p, c[3] - p};
  const Foot foot{a, origin};
  std::vector<double> candidates{0.0};
  isolateRoots(foot, footQuintic(a, origin), 0.0, 1.0, 0, candidates);
  candidates.push_back(1.0);
  std::sort(candidates.begin(), candidates.end());
  kcCubicFoot_ best;
  best.distance = std::numeric_limits<double>::infinity();
  for (double t : candidates) {
    const double d = kfCubicPoint_(a, t).len();
    if (d < best.distance * (1.0 - kTieTol) || best.distance == std::numeric_limits<double>::infinity()) {
      best.t = t;
      best.distance = d;
    }
  }
  // The ends are returned exactly.
  best.point = best.t == 0.0 ? c[0] : best.t == 1.0 ? c[3] : p + kfCubicPoint_(a, best.t);
  return best;
}

double kfCubicDistanceBound_(const kcCubic_& c, const kcVector<2>& p) noexcept {
  double lo[2], hi[2];
  for (int axis = 0; axis < 2; ++axis) {
    lo[axis] = std::min({c[0][axis], c[1][axis], c[2][axis], c[3][axis]});
    hi[axis] = std::max({c[0][axis], c[1][axis], c[2][axis], c[3][axis]});
  }
  const double dx = std::max({lo[0] - p.x(), 0.0, p.x() - hi[0]});
  const double dy = std::max({lo[1] - p.y(), 0.0, p.y() - hi[1]});
  return std::hypot(dx, dy);
}

bool kfCubicEndDirection_(const kcCubic_& c, bool atEnd, kcVector<2>& direction) noexcept {
  // B'(t) near an end is led by the first control leg that does not vanish.
  for (int i = 1; i < 4; ++i) {
    const kcVector<2> d = atEnd ? c[3] - c[3 - i] : c[i] - c[0];
    if (d != kcVector<2>()) {
      direction = d;
      return true;
    }
  }
  return false;
}

double kfCubicSampleSteps_(const kcCubic_& c, double spacing) noexcept {
  return std::max(1.0, std::ceil(3.0 * longestLeg(c) / spacing));
}

void kfSampleCubic_(const kcCubic_& c, double spacing, bool withEnd, std::vector<kcVector<2>>& out) {
  const std::size_t n = kfSamplePieces(3.0 * longestLeg(c), spacing);
  for (std::size_t i = 0; i < n; ++i)
    out.push_back(kfCubicPoint_(c, static_cast<double>(i) / static_cast<double>(n)));
  if (withEnd) out.push_back(c[3]);
}
