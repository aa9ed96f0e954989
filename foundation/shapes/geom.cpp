#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "foundation/angle.h"
#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
// Bisection stops when the midpoint no longer moves; this cap still lets it
// cross the whole exponent range of a double.
constexpr int kMaxBisections = 1100;
// Candidates whose distances differ by less than this fraction of the major
// radius count as tied, so that the first along the arc wins.
constexpr double kTieTol = 1e-13;

struct Axes {
  kcVector<2> axis1;  // unit direction of the major semi-axis
  kcVector<2> axis2;  // axis1 turned by +90 degrees
  double a = 0.0;     // major semi-axis
  double b = 0.0;     // minor semi-axis
};

// Principal axes of the ellipse c + u cos t + v sin t from the eigen-system of
// M Mt, M = [u v]; the minor semi-axis comes from |det M| / a, which keeps its
// relative accuracy for thin ellipses.
Axes principalAxes(const kcVector<2>& u, const kcVector<2>& v) {
  double e = u.x() * u.x() + v.x() * v.x();
  double g = u.y() * u.y() + v.y() * v.y();
  double f = u.x() * u.y() + v.x() * v.y();
  double alpha = 0.5 * std::atan2(2.0 * f, e - g);
  double h = std::hypot(0.5 * (e - g), f);
  Axes ax;
  ax.axis1 = kcVector<2>(std::cos(alpha), std::sin(alpha));
  ax.axis2 = kcVector<2>(-ax.axis1.y(), ax.axis1.x());
  ax.a = std::sqrt(0.5 * (e + g) + h);
  ax.b = std::abs(u.cross(v)) / ax.a;
  return ax;
}

// Bisection for the root of a monotone function between lo and hi; positive
// tells on which side of the root an argument is.
template <class Positive>
double bisect(double lo, double hi, bool positiveBelow, Positive positive) {
  for (int i = 0; i < kMaxBisections; ++i) {
    double mid = 0.5 * (lo + hi);
    if (mid <= lo || mid >= hi) break;
    if (positive(mid) == positiveBelow)
      lo = mid;
    else
      hi = mid;
  }
  return 0.5 * (lo + hi);
}

// The points of the ellipse (a cos s, b sin s), a >= b > 0, where the
// distance to q is stationary (feet of the normals through q). The global
// maximum, which is never needed, is left out.
void stationaryPoints(double a, double b, double qx, double qy, std::vector<kcVector<2>>& out) {
  double sx = qx < 0.0 ? -1.0 : 1.0;
  double sy = qy < 0.0 ? -1.0 : 1.0;
  double x0 = std::abs(qx);
  double y0 = std::abs(qy);
  double d = (a - b) * (a + b);  // a^2 - b^2 without cancellation
  if (x0 == 0.0 || y0 == 0.0) {
    out.emplace_back(a, 0.0);
    out.emplace_back(-a, 0.0);
    out.emplace_back(0.0, b);
    out.emplace_back(0.0, -b);
    if (y0 == 0.0 && x0 > 0.0 && d > 0.0 && a * x0 < d) {
      double x = a * a * x0 / d;
      double y = b * std::sqrt(std::max(0.0, 1.0 - (x / a) * (x / a)));
      out.emplace_back(sx * x, y);
      out.emplace_back(sx * x, -y);
    }
    if (x0 == 0.0 && y0 > 0.0 && d > 0.0 && b * y0 < d) {
      double y = -b * b * y0 / d;
      double x = a * std::sqrt(std::max(0.0, 1.0 - (y / b) * (y / b)));
      out.emplace_back(x, sy * y);
      out.emplace_back(-x, sy * y);
    }
    return;
  }
  // Feet are (a^2 x0 / (a^2 + l), b^2 y0 / (b^2 + l)) where
  // F(l) = (a x0 / (a^2 + l))^2 + (b y0 / (b^2 + l))^2 - 1 vanishes.
  // The nearest one: l > -b^2, written as s = b^2 + l in [b y0, |(a x0, b y0)|].
  auto f1 = [&](double s) {
    double p = a * x0 / (d + s);
    double r = b * y0 / s;
    return p * p + r * r - 1.0 > 0.0;
  };
  double s = bisect(b * y0, std::hypot(a * x0, b * y0), true, f1);
  out.emplace_back(sx * a * a * x0 / (d + s), sy * b * b * y0 / s);
  if (!(d > 0.0)) return;
  // Up to two more feet for -a^2 < l < -b^2, across the major axis. With
  // m = a^2 + l in (0, d) and s = m - d, F = (A / m)^2 + (B / s)^2 - 1
  // (A = a x0, B = b y0) is convex there, with its minimum S^3 / d^2 - 1 at
  // m = d cbrt(A)^2 / S, s = -d cbrt(B)^2 / S (S = cbrt(A)^2 + cbrt(B)^2).
  // One root lies on each side of it; the left one is sought in m, the right
  // one in s, so that each keeps its relative precision at its own pole
  // (the right foot can lie closer to d than d's rounding step).
  double ca = std::cbrt(a * x0);
  double cb = std::cbrt(b * y0);
  double sum = ca * ca + cb * cb;
  if (!(sum * std::sqrt(sum) < d)) return;  // outside the evolute: no more feet
  auto positive = [&](double m, double s) {
    double p = a * x0 / m;
    double r = b * y0 / s;
    return p * p + r * r > 1.0;
  };
  double mLeft = bisect(0.0, d * ca * ca / sum, true, [&](double m) { return positive(m, m - d); });
  double sRight = bisect(-d * cb * cb / sum, 0.0, false, [&](double s) { return positive(d + s, s); });
  if (mLeft > 0.0) out.emplace_back(sx * a * a * x0 / mLeft, sy * b * b * y0 / (mLeft - d));
  if (sRight < 0.0) out.emplace_back(sx * a * a * x0 / (d + sRight), sy * b * b * y0 / sRight);
}

kcVector<2> arcPoint(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v, double t) {
  return c + u * std::cos(t) + v * std::sin(t);
}

// How far along the arc (in parameter, >= 0) the parameter t lies.
double offsetAlong(double t, double t0, double span) {
  double o = span >= 0.0 ? t - t0 : t0 - t;
  return kcRadian(o).norm().toDouble();
}

}  // namespace

kcVector<2> kfNearestOnSegment_(const kcVector<2>& a, const kcVector<2>& b, const kcVector<2>& p) {
  kcVector<2> d = b - a;
  double len2 = d.lenSq();
  if (len2 == 0.0) return a;
  double t = (p - a).dot(d) / len2;
  if (t <= 0.0) return a;
  if (t >= 1.0) return b;
  return a + d * t;
}

double kfEllipseMajorRadius_(const kcVector<2>& u, const kcVector<2>& v) { return principalAxes(u, v).a; }

kcArcFoot_ kfNearestOnEllipseArc_(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v, double t0,
                                  double span, const kcVector<2>& p) {
  bool full = std::abs(span) >= kTwoPi;
  double length = full ? kTwoPi : std::abs(span);
  double dir = span >= 0.0 ? 1.0 : -1.0;
  Axes ax = principalAxes(u, v);
  kcVector<2> d = p - c;
  std::vector<kcVector<2>> feet;
  stationaryPoints(ax.a, ax.b, d.dot(ax.axis1), d.dot(ax.axis2), feet);

  // Candidate offsets along the arc: both ends and every foot on the arc.
  std::vector<double> offsets{0.0};
  if (!full) offsets.push_back(length);
  double det = u.cross(v);
  for (const kcVector<2>& f : feet) {
    kcVector<2> w = ax.axis1 * f.x() + ax.axis2 * f.y();  // relative to c
    // (cos t, sin t) = M^-1 w with M = [u v].
    double ct = (v.y() * w.x() - v.x() * w.y()) / det;
    double st = (u.x() * w.y() - u.y() * w.x()) / det;
    double t = std::atan2(st, ct);
    // Two Newton steps on (P - p).P' polish the foot to the curve's own parameter.
    for (int i = 0; i < 2; ++i) {
      kcVector<2> r = arcPoint(c, u, v, t) - p;
      kcVector<2> d1 = v * std::cos(t) - u * std::sin(t);
      kcVector<2> d2 = -(u * std::cos(t) + v * std::sin(t));
      double g1 = d1.lenSq() + r.dot(d2);
      if (!(g1 > 0.0)) break;
      double next = t - r.dot(d1) / g1;
      if (arcPoint(c, u, v, next).distance(p) > r.len()) break;
      t = next;
    }
    double o = offsetAlong(t, t0, span);
    if (full || o <= length) offsets.push_back(o);
  }
  std::sort(offsets.begin(), offsets.end());

  kcArcFoot_ best;
  double tie = kTieTol * ax.a;
  bool first = true;
  for (double o : offsets) {
    double t = o >= length && !full ? t0 + span : t0 + dir * o;
    kcVector<2> q = arcPoint(c, u, v, t);
    double dist = q.distance(p);
    if (first || dist < best.distance - tie) {
      best = {q, t, dist};
      first = false;
    }
  }
  return best;
}

kcRect kfEllipseArcBox_(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v, double t0,
                        double span) {
  bool full = std::abs(span) >= kTwoPi;
  kcRect box;
  if (full) {
    kcVector<2> r(std::hypot(u.x(), v.x()), std::hypot(u.y(), v.y()));
    return kcRect::fromCorners(c - r, c + r);
  }
  box.enclose(arcPoint(c, u, v, t0));
  box.enclose(arcPoint(c, u, v, t0 + span));
  // Extremes of x at atan2(vx, ux) (+ pi), of y at atan2(vy, uy) (+ pi).
  for (double base : {std::atan2(v.x(), u.x()), std::atan2(v.y(), u.y())}) {
    for (double t : {base, base + std::numbers::pi}) {
      double o = offsetAlong(t, t0, span);
      if (o <= std::abs(span)) box.enclose(arcPoint(c, u, v, t0 + (span >= 0.0 ? o : -o)));
    }
  }
  return box;
}

void kfSampleEllipseArc_(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v, double t0,
                         double span, double spacing, bool withEnd, std::vector<kcVector<2>>& out) {
  // |P'(t)| never exceeds the major radius, so parameter steps of
  // spacing / radius keep consecutive points within spacing.
  std::size_t n = kfSamplePieces(std::abs(span) * kfEllipseMajorRadius_(u, v), spacing);
  for (std::size_t i = 0; i < n; ++i) {
    out.push_back(arcPoint(c, u, v, t0 + span * (static_cast<double>(i) / static_cast<double>(n))));
  }
  if (withEnd) out.push_back(arcPoint(c, u, v, t0 + span));
}

// --- vertex chains ---

kcVector<2> kfNearestOnChain_(const std::vector<kcVector<2>>& pts, bool closed, const kcVector<2>& p) {
  kcVector<2> best = pts.front();
  double bestDist = p.distance(best);
  std::size_t edges = closed ? pts.size() : pts.size() - 1;
  for (std::size_t i = 0; i < edges; ++i) {
    kcVector<2> q = kfNearestOnSegment_(pts[i], pts[(i + 1) % pts.size()], p);
    double d = p.distance(q);
    if (d < bestDist) {
      bestDist = d;
      best = q;
    }
  }
  return best;
}

void kfSampleChain_(const std::vector<kcVector<2>>& pts, bool closed, double spacing,
                    std::vector<kcVector<2>>& out) {
  kfCheckSpacing(spacing);
  if (pts.empty()) return;
  std::size_t edges = closed ? pts.size() : pts.size() - 1;
  for (std::size_t i = 0; i < edges; ++i)
    kfSampleSegment(pts[i], pts[(i + 1) % pts.size()], spacing, false, out);
  out.push_back(closed ? pts.front() : pts.back());
}

bool kfWithinChain_(const std::vector<kcVector<2>>& pts, const kcVector<2>& p) {
  kcRect box = kfBoxOf_(pts);
  double tol = kWithinTol_ * std::hypot(box.width(), box.height());
  bool inside = false;
  for (std::size_t i = 0, n = pts.size(); i < n; ++i) {
    const kcVector<2>& a = pts[i];
    const kcVector<2>& b = pts[(i + 1) % n];
    if (kfNearestOnSegment_(a, b, p).distance(p) <= tol) return true;  // on the edge
    // Half-open in y so that a vertex on the ray counts once.
    if ((a.y() > p.y()) != (b.y() > p.y())) {
      double x = a.x() + (p.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y());
      if (x > p.x()) inside = !inside;
    }
  }
  return inside;
}

kcRect kfBoxOf_(const std::vector<kcVector<2>>& pts) {
  kcRect box;
  for (const kcVector<2>& p : pts) box.enclose(p);
  return box;
}

std::vector<kcVector<2>> kfMapPoints_(const kcXform<2>& x, const std::vector<kcVector<2>>& pts) {
  std::vector<kcVector<2>> out;
  out.reserve(pts.size());
  for (const kcVector<2>& p : pts) out.push_back(x * p);
  return out;
}

bool kfAllCoincide_(const std::vector<kcVector<2>>& pts) {
  return std::all_of(pts.begin(), pts.end(), [&](const kcVector<2>& p) { return p == pts.front(); });
}

void kfTransferPoints_(kcArchive& ar, std::vector<kcVector<2>>& pts) {
  std::uint32_t count = 0;
  if (ar.isStoring()) {
    if (pts.size() > UINT32_MAX) throw kcArchive::ValueOutOfRange();
    count = static_cast<std::uint32_t>(pts.size());
    ar || count;
    for (kcVector<2>& p : pts) ar || p;
    return;
  }
  ar || count;
  ar.checkCount(count, 16);
  std::vector<kcVector<2>> loaded(count);
  for (kcVector<2>& p : loaded) {
    ar || p;
    kfCheckLoadedFinite(p);
  }
  pts = std::move(loaded);
}
