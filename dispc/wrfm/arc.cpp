#include "dispc/wrfm/arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>

#include "dispc/wrfm/predicates_p.h"
#include "foundation/matrix.h"

namespace {
// Where the archive reports an unknown version of the record.
constexpr const char* kSource = "dispc/wrfm/arc";
constexpr int kVersionLine = 147;
constexpr unsigned char kVersion = 1;

constexpr double kPerDegree = 0.017453292519943295;
constexpr double kFullTurn = 360.0;
constexpr double kTwoPi = 2.0 * std::numbers::pi;
// A transform between two arcs' spaces counts as a similarity (circles stay
// circles) when its matrix is a scaled rotation or mirror to this fraction.
constexpr double kSimilarityTol = 1e-12;
// Samples of the numeric circle-ellipse crossing search over a whole turn,
// and room for the candidate roots before duplicates are merged.
constexpr int kEllipseSamples = 64;
constexpr int kMaxFound = 16;

bool near(double a, double b) noexcept { return std::fabs(a - b) <= kc2SegmentArc::kEqualTol; }

// Angles that name the same direction a whole turn apart are also near.
bool nearAngle(double a, double b) noexcept {
  return near(a, b) || near(a - kFullTurn, b) || near(a + kFullTurn, b);
}

kcVector<2> leftNormal(const kcVector<2>& u) noexcept { return {-u.y(), u.x()}; }

bool isSimilarity(const kcMatrix<2>& m) {
  double a00 = m.element(0, 0), a01 = m.element(0, 1), a10 = m.element(1, 0), a11 = m.element(1, 1);
  double tol = kSimilarityTol * std::max({std::fabs(a00), std::fabs(a01), std::fabs(a10), std::fabs(a11)});
  bool rotation = std::fabs(a00 - a11) <= tol && std::fabs(a01 + a10) <= tol;
  bool mirror = std::fabs(a00 + a11) <= tol && std::fabs(a01 - a10) <= tol;
  return rotation || mirror;
}

// Crossings of the circle |p - c| = r with the ellipse e0 + u cos t + v sin t,
// as ellipse parameters t in [0, 2 pi). f(t) = |p(t) - c|^2 - r^2 is a
// trigonometric polynomial of degree 2, so it has at most four roots and
// its derivative at most four sign changes: sampling finds every interval
// with one root or one extremum, and bisection refines it. Values within
// tolF of zero count as zero, so a tangency is one root.
class CircleEllipse {
 public:
  CircleEllipse(const kcVector<2>& c, double r, const kcVector<2>& e0, const kcVector<2>& u,
                const kcVector<2>& v)
      : w_(e0 - c), u_(u), v_(v), r2_(r * r), tolF_(2.0 * kc2SegmentArc::kTangentTol * r * r) {}

  int roots(double out[4]) const {
    double t[kEllipseSamples + 1], f[kEllipseSamples + 1], g[kEllipseSamples + 1];
    for (int k = 0; k <= kEllipseSamples; ++k) {
      t[k] = kTwoPi * k / kEllipseSamples;
      f[k] = snapped_(t[k]);
      g[k] = df_(t[k]);
    }
    double found[kMaxFound];
    int n = 0;
    auto add = [&](double root) {
      if (n < kMaxFound) found[n++] = root;
    };
    // One root at most in [a, b): a itself, or a sign change.
    auto monotone = [&](double a, double fa, double b, double fb) {
      if (fa == 0.0)
        add(a);
      else if (fb != 0.0 && (fa < 0.0) != (fb < 0.0))
        add(bisect_([this](double x) { return f_(x); }, a, b));
    };
    for (int k = 0; k < kEllipseSamples; ++k) {
      if (g[k] != 0.0 && g[k + 1] != 0.0 && (g[k] < 0.0) != (g[k + 1] < 0.0)) {
        double m = bisect_([this](double x) { return df_(x); }, t[k], t[k + 1]);
        double fm = snapped_(m);
        monotone(t[k], f[k], m, fm);
        monotone(m, fm, t[k + 1], f[k + 1]);
      } else {
        monotone(t[k], f[k], t[k + 1], f[k + 1]);
      }
    }
    return merged_(found, n, out);
  }

 private:
  [[nodiscard]] kcVector<2> offset_(double t) const noexcept {
    return w_ + u_ * std::cos(t) + v_ * std::sin(t);
  }
  [[nodiscard]] double f_(double t) const noexcept { return offset_(t).lenSq() - r2_; }
  [[nodiscard]] double snapped_(double t) const noexcept {
    double value = f_(t);
    return std::fabs(value) <= tolF_ ? 0.0 : value;
  }
  // Neighbouring roots (the last and the first a turn later included)
  // between which f stays within the zero band are one tangency: the one
  // with the smaller |f| stays.
  int merged_(const double* found, int n, double out[4]) const {
    int m = 0;
    for (int i = 0; i < n; ++i) {
      if (m > 0 && snapped_(0.5 * (out[m - 1] + found[i])) == 0.0) {
        if (std::fabs(f_(found[i])) < std::fabs(f_(out[m - 1]))) out[m - 1] = found[i];
        continue;
      }
      if (m == 4) break;
      out[m++] = found[i];
    }
    if (m > 1 && snapped_(0.5 * (out[m - 1] + out[0] + kTwoPi)) == 0.0) {
      if (std::fabs(f_(out[m - 1])) < std::fabs(f_(out[0]))) out[0] = out[m - 1];
      --m;
    }
    return m;
  }
  [[nodiscard]] double df_(double t) const noexcept {
    kcVector<2> d = v_ * std::cos(t) - u_ * std::sin(t);
    return 2.0 * offset_(t).dot(d);
  }
  // A zero of g in [a, b], where g(a) and g(b) differ in sign.
  template <class G>
  static double bisect_(G g, double a, double b) {
    bool negativeAtA = g(a) < 0.0;
    for (;;) {
      double mid = 0.5 * (a + b);
      if (mid <= a || mid >= b) return mid;
      double gm = g(mid);
      if (gm == 0.0) return mid;
      if ((gm < 0.0) == negativeAtA)
        a = mid;
      else
        b = mid;
    }
  }

  kcVector<2> w_;
  kcVector<2> u_;
  kcVector<2> v_;
  double r2_;
  double tolF_;
};

// The meeting points of two segments in client space, each kept once: two
// points within the crossing tolerance are one.
class Meetings {
 public:
  explicit Meetings(double tol) noexcept : tol_(tol) {}
  [[nodiscard]] bool near(const kcVector<2>& p) const noexcept {
    return std::any_of(points_, points_ + n_, [&](const kcVector<2>& q) { return q.distance(p) <= tol_; });
  }
  void add(const kcVector<2>& p) noexcept {
    if (n_ < 4 && !near(p)) points_[n_++] = p;
  }
  [[nodiscard]] std::vector<kcVector<2>> points() const { return {points_, points_ + n_}; }

 private:
  double tol_;
  kcVector<2> points_[4];
  int n_ = 0;
};

// The end points two segments share: exactly equal first, else within tol
// (the rounding of points computed from angles). The shared point is the
// other segment's end point, a vertex given by the caller where that is a line.
template <class A, class B>
Meetings sharedEnds(const A& a, const B& b, double tol) {
  Meetings shared(tol);
  const kcVector<2> ends[2] = {a.p1(), a.p2()};
  const kcVector<2> others[2] = {b.p1(), b.p2()};
  for (const kcVector<2>& q : others)
    for (const kcVector<2>& p : ends)
      if (p == q || p.distance(q) <= tol) shared.add(q);
  return shared;
}

// Where a point of a line segment's infinite line lies on the segment.
kc2SegmentArc::Place placeOnLine(const kc2SegmentLine& s, const kcVector<2>& p, double tol) noexcept {
  if (p.distance(s.p1()) <= tol || p.distance(s.p2()) <= tol) return kc2SegmentArc::Place::atEnd;
  const kcVector<2> d = s.p2() - s.p1();
  const double t = (p - s.p1()).dot(d);
  return t > 0.0 && t < d.lenSq() ? kc2SegmentArc::Place::inside : kc2SegmentArc::Place::off;
}

// Whether a candidate counts under the flag rule: on both segments, and with
// flag true (adjacent segments) at the end of neither.
bool counts(kc2SegmentArc::Place a, kc2SegmentArc::Place b, bool flag) noexcept {
  using Place = kc2SegmentArc::Place;
  if (a == Place::off || b == Place::off) return false;
  return !flag || (a == Place::inside && b == Place::inside);
}
}  // namespace

// --- construction ---

// The centre lies on the perpendicular bisector of the chord, at the distance
// where the chord subtends the sweep, on the side that makes the sweep run
// from p1 to p2: left of the chord for short counter-clockwise and long
// clockwise arcs.
kc2SegmentArc::kc2SegmentArc(const kcVector<2>& p1, const kcVector<2>& p2, const kcDegree& span) {
  double s = span.toDouble();
  if (!(std::fabs(s) > kMinSpan)) throw kcShapesError::DegenerateShape();
  // A whole turn from a point back to another point has no circle.
  if (!(s > -kFullTurn && s < kFullTurn)) throw kcShapesError::DegenerateShape();
  if (p1 == p2) throw kcShapesError::DegenerateShape();
  kcVector<2> chord = p2 - p1;
  kcVector<2> u = chord / chord.len();
  bool left = (s > 0.0 && s < 180.0) || (s > -kFullTurn && s < -180.0);
  kcVector<2> side = left ? leftNormal(u) : -leftNormal(u);
  double half = (chord / 2.0).len();
  double d = std::fabs(half / std::tan(s / 2.0 * kPerDegree));
  circleCenter_ = (p1 + p2) / 2.0 + d * side;
  circleRadius_ = (p1 - circleCenter_).len();
  start_ = kcDegree((p1 - circleCenter_).angle()).toDouble();
  span_ = s;
}

kc2SegmentArc::kc2SegmentArc(const kcVector<2>& center, double radius, const kcDegree& startAngle,
                             const kcDegree& angleSpan)
    : circleCenter_(center),
      circleRadius_(radius),
      start_(startAngle.toDouble()),
      span_(angleSpan.toDouble()) {
  if (!(radius > 0.0)) throw kcShapesError::DegenerateShape();
}

// A circle keeps its centre and radius with the identity transform; any other
// ellipse keeps its whole transform over the unit circle. Both are exact.
kc2SegmentArc::kc2SegmentArc(const kcEllipseArc& arc) {
  const kcXform<2>& x = arc.ellipse().xform();
  const kcMatrix<2>& m = x.matrix();
  double a00 = m.element(0, 0), a01 = m.element(0, 1), a10 = m.element(1, 0), a11 = m.element(1, 1);
  double start = kcDegree(arc.angleStart()).toDouble();
  double span = kcDegree(arc.angleSpan()).toDouble();
  if (a01 == 0.0 && a10 == 0.0 && a00 > 0.0 && (a11 == a00 || a11 == -a00)) {
    // diag(r, -r) is the circle travelled clockwise: the point of parameter t
    // is at angle -t.
    double sense = a11 == a00 ? 1.0 : -1.0;
    circleCenter_ = x.trans();
    circleRadius_ = a00;
    start_ = sense * start;
    span_ = sense * span;
  } else {
    circleCenter_ = kcVector<2>();
    circleRadius_ = 1.0;
    start_ = start;
    span_ = span;
    xform_ = x;
  }
}

kc2SegmentArc::kc2SegmentArc(const kcEllipseArc2& arc) : kc2SegmentArc(kcEllipseArc(arc)) {}

// --- client space ---

double kc2SegmentArc::radius(const kcDegree& angle) const { return arcPoint(angle).distance(center()); }

kcDegree kc2SegmentArc::startAngle() const { return xform_.mapAngle(startAngle_()); }

kcDegree kc2SegmentArc::endAngle() const { return xform_.mapAngle(endAngle_()); }

kcDegree kc2SegmentArc::midAngle() const { return xform_.mapAngle(midAngle_()); }

// The sign and the whole turns come from the stored sweep (negated under a
// mirror), the exact value from the mapped end angles. The skew is compared
// signed-normalised, so a rotation near a half turn with rounding noise in
// its matrix is not taken for a mirror. Under a plain translation the mapped
// sweep is the stored one, exactly.
kcDegree kc2SegmentArc::angleSpan() const {
  const kcMatrix<2>& m = xform_.matrix();
  if (m.isIdentity()) return kcDegree(span_);
  kcDegree skew = kcDegree(m.xRot() - m.yRot()).signedNorm();
  double s = std::fabs(skew.toDouble()) > 90.0 ? -span_ : span_;
  double e = (endAngle() - startAngle()).norm().toDouble();
  return kcDegree(s) - kcDegree(s - e).signedNorm();
}

kcDegree kc2SegmentArc::angle(double t) const { return xform_.mapAngle(angle_(t)); }

kcVector<2> kc2SegmentArc::arcPoint(const kcDegree& angle) const {
  return xform_ * arcPoint_(xform_.invMapAngle(angle));
}

kcDegree kc2SegmentArc::direction(double t) const { return xform_.mapAngle(direction_(t)); }

kcFLine kc2SegmentArc::tangent(const kcDegree& angle) const {
  return tangent_(xform_.invMapAngle(angle)).map(xform_);
}

kcFLine kc2SegmentArc::tangent(double t) const { return tangent(angle(t)); }

double kc2SegmentArc::length() const {
  return std::fabs(radius(kcDegree(0.0)) * kcRadian(angleSpan()).toDouble());
}

// kcEllipseArc takes neither a zero sweep nor one beyond a turn; the box of
// such an arc is that of its start point or of the whole mapped circle.
kcRect kc2SegmentArc::boundingBox() const {
  if (std::fabs(span_) >= kFullTurn)
    return kcEllipse(xform_ * kcXform<2>(kcMatrix<2>::scale(circleRadius_, circleRadius_), circleCenter_))
        .encloseRect();
  if (span_ == 0.0) return kcRect::fromCorners(p1(), p1());
  return ellipseArc().encloseRect();
}

kcVector<2> kc2SegmentArc::closestPoint(const kcVector<2>& pt) const {
  return xform_ * closestPoint_(xform_.invMapPoint(pt));
}

double kc2SegmentArc::distToPoint(const kcVector<2>& pt) const { return pt.distance(closestPoint(pt)); }

bool kc2SegmentArc::validAngle(const kcDegree& angle, bool inclusive) const {
  return validAngle_(xform_.invMapAngle(angle), inclusive);
}

bool kc2SegmentArc::validPoint(const kcVector<2>& pt, bool flag) const {
  return validPoint_(xform_.invMapPoint(pt), flag);
}

// The direction from the mapped centre, inverse-mapped by validAngle, is the
// direction from the stored centre to the unmapped point.
bool kc2SegmentArc::inRange(const kcVector<2>& pt, bool inclusive) const {
  if (pt == circleCenter_) return false;
  kcVector<2> v = pt - center();
  if (v == kcVector<2>()) return false;
  return validAngle(kcDegree(v.angle()), inclusive);
}

kcEllipseArc kc2SegmentArc::ellipseArc() const {
  double sense = span_ >= 0.0 ? 1.0 : -1.0;
  kcEllipse circle(kcXform<2>(kcMatrix<2>::scale(circleRadius_, sense * circleRadius_), circleCenter_));
  return kcEllipseArc(circle, kcDegree(sense * start_), kcDegree(sense * span_)).map(xform_);
}

kcEllipseArc2 kc2SegmentArc::ellipseArc2() const { return kcEllipseArc2(ellipseArc()); }

// --- unmapped space ---

kcVector<2> kc2SegmentArc::arcPoint_(const kcDegree& angle) const noexcept {
  kcRadian a(angle);
  return circleCenter_ + circleRadius_ * kcVector<2>(cos(a), sin(a));
}

kcDegree kc2SegmentArc::direction_(double t) const noexcept {
  return kcDegree(span_ * t + start_ + (span_ >= 0.0 ? 90.0 : -90.0));
}

kcFLine kc2SegmentArc::tangent_(const kcDegree& angle) const {
  return kcFLine(arcPoint_(angle), kcDegree(angle.toDouble() + 90.0));
}

double kc2SegmentArc::length_() const noexcept { return std::fabs(circleRadius_ * span_ * kPerDegree); }

// The mean of the arc's points over its length; a zero sweep is its start point.
kcVector<2> kc2SegmentArc::centerOfMass_() const noexcept {
  if (span_ == 0.0) return p1_();
  double s = start_ * kPerDegree;
  double d = span_ * kPerDegree;
  kcVector<2> mean((std::sin(s + d) - std::sin(s)) / d, (std::cos(s) - std::cos(s + d)) / d);
  return circleCenter_ + circleRadius_ * mean;
}

// The end points and every axis extreme of the circle that the arc passes.
kcRect kc2SegmentArc::boundingBox_() const {
  kcVector<2> a = p1_(), b = p2_();
  double xMin = std::min(a.x(), b.x()), xMax = std::max(a.x(), b.x());
  double yMin = std::min(a.y(), b.y()), yMax = std::max(a.y(), b.y());
  const double cx = circleCenter_.x(), cy = circleCenter_.y(), r = circleRadius_;
  if (validAngle_(kcDegree(0.0), true)) xMax = std::max(xMax, cx + r);
  if (validAngle_(kcDegree(90.0), true)) yMax = std::max(yMax, cy + r);
  if (validAngle_(kcDegree(180.0), true)) xMin = std::min(xMin, cx - r);
  if (validAngle_(kcDegree(270.0), true)) yMin = std::min(yMin, cy - r);
  return kcRect::fromCorners({xMin, yMin}, {xMax, yMax});
}

// The circle point along the ray from the centre, when the arc covers that
// direction; otherwise the nearer end, the start on a tie.
kcVector<2> kc2SegmentArc::closestPoint_(const kcVector<2>& pt) const noexcept {
  if (pt == circleCenter_) return circleCenter_ + kcVector<2>(circleRadius_, 0.0);
  kcVector<2> v = pt - circleCenter_;
  if (validAngle_(kcDegree(v.angle()), true))
    return circleCenter_ + v * (circleRadius_ / std::sqrt(v.lenSq()));
  kcVector<2> a = p1_();
  kcVector<2> b = p2_();
  return (pt - b).lenSq() < (pt - a).lenSq() ? b : a;
}

// d is how far the angle lies along the sweep from the start, in [0, 360).
bool kc2SegmentArc::validAngle_(const kcDegree& angle, bool inclusive) const noexcept {
  double tol = std::fabs(span_) * kAngleTol;
  if (std::fabs(span_) >= kFullTurn) return true;
  double d, limit;
  if (span_ >= 0.0) {
    d = (angle - startAngle_()).norm().toDouble();
    limit = span_;
  } else {
    d = (startAngle_() - angle).norm().toDouble();
    limit = -span_;
  }
  bool nearEnd = std::fabs(d - limit) <= tol || std::fabs(d) <= tol || std::fabs(d - kFullTurn) <= tol;
  if (inclusive) return d <= limit || nearEnd;
  return d < limit && !nearEnd;
}

// Maps through the transform although its argument is unmapped: the
// established behaviour, exact for the identity transform.
bool kc2SegmentArc::validPoint_(const kcVector<2>& pt, bool /*flag*/) const {
  kcVector<2> closest = xform_ * closestPoint_(xform_.invMapPoint(pt));
  return closest.distance(pt) <= circleRadius_ * kValidPointTol;
}

// --- intersection ---
//
// Every intersection first takes the end points the two segments share
// (exactly, or within the crossing tolerance of the coordinates involved):
// those meet whatever the angle between the segments. The other candidates
// come from the circles and lines, computed in this arc's unmapped space, and
// count when they lie on both segments; one within the tolerance of an end is
// at that end. Tolerances scale with the coordinates, never with one
// segment's length or sweep, so short segments and small sweeps keep their
// meetings.

kc2SegmentArc::Place kc2SegmentArc::place_(const kcVector<2>& p, double tol) const noexcept {
  if (std::fabs(span_) >= kFullTurn) return Place::inside;
  const kcVector<2> v = p - circleCenter_;
  if (v.x() == 0.0 && v.y() == 0.0) return Place::off;
  const double angleTol = tol / circleRadius_ / kPerDegree;
  const kcDegree a(v.angle());
  double d, limit;
  if (span_ >= 0.0) {
    d = (a - startAngle_()).norm().toDouble();
    limit = span_;
  } else {
    d = (startAngle_() - a).norm().toDouble();
    limit = -span_;
  }
  if (d <= angleTol || d >= kFullTurn - angleTol || std::fabs(d - limit) <= angleTol) return Place::atEnd;
  return d < limit ? Place::inside : Place::off;
}

double kc2SegmentArc::crossingTol_() const noexcept {
  return kfCrossingTol({kfMagnitude(circleCenter_), circleRadius_});
}

int kc2SegmentArc::circleLine_(const kcVector<2>& q, const kcVector<2>& e,
                               kcVector<2> out[2]) const noexcept {
  kcVector<2> foot = q + e * (circleCenter_ - q).dot(e);
  double h = foot.distance(circleCenter_);
  double r = circleRadius_;
  if (std::fabs(h - r) <= kTangentTol * r) {
    out[0] = foot;
    return 1;
  }
  if (h > r) return 0;
  double s = std::sqrt((r - h) * (r + h));
  out[0] = foot - e * s;
  out[1] = foot + e * s;
  return 2;
}

void kc2SegmentArc::unmapLine_(const kcVector<2>& point, const kcVector<2>& dir, kcVector<2>& q,
                               kcVector<2>& e) const {
  if (xform_.isIdentity()) {
    q = point;
    e = dir;
    return;
  }
  kcXform<2> inverse = xform_.inverse();
  q = inverse * point;
  kcVector<2> d = inverse.mapVector(dir);
  e = d / d.len();
}

std::vector<kcVector<2>> kc2SegmentArc::intersection(const kcFLine& other, bool flag) const {
  kcVector<2> q, e;
  unmapLine_(other.point(), other.direction(), q, e);
  const double tol = kfCrossingTol({kfMagnitude(circleCenter_), circleRadius_, kfMagnitude(q)});
  kcVector<2> candidates[2];
  const int count = circleLine_(q, e, candidates);
  Meetings found(kfCrossingTol({kfMagnitude(p1()), kfMagnitude(p2())}));
  for (int i = 0; i < count; ++i) {
    const Place here = place_(candidates[i], tol);
    if (counts(here, Place::inside, flag)) found.add(xform_ * candidates[i]);
  }
  return found.points();
}

std::vector<kcVector<2>> kc2SegmentArc::intersection(const kc2SegmentLine& other, bool flag) const {
  // A segment that passes the circle by has nothing in common with the arc:
  // the cheap answer for most pairs of an outline.
  if (xform_.isIdentity() &&
      other.distToPoint(circleCenter_) > circleRadius_ * (1.0 + kTangentTol) + crossingTol_())
    return {};
  const double tolClient =
      kfCrossingTol({kfMagnitude(p1()), kfMagnitude(p2()), kfMagnitude(other.p1()), kfMagnitude(other.p2())});
  const Meetings shared = sharedEnds(*this, other, tolClient);
  Meetings found = flag ? Meetings(tolClient) : shared;
  const kcVector<2> d = other.p2() - other.p1();
  kcVector<2> q, e;
  unmapLine_(other.p1(), d / d.len(), q, e);
  const double tol = kfCrossingTol({kfMagnitude(circleCenter_), circleRadius_, kfMagnitude(q)});
  kcVector<2> candidates[2];
  const int count = circleLine_(q, e, candidates);
  for (int i = 0; i < count; ++i) {
    const kcVector<2> p = xform_ * candidates[i];
    if (shared.near(p)) continue;
    if (counts(place_(candidates[i], tol), placeOnLine(other, p, tolClient), flag)) found.add(p);
  }
  return found.points();
}

// Works in this arc's unmapped space, into which m maps the other arc's. When
// m is a similarity the other circle stays a circle there; otherwise it is an
// ellipse and its crossings are found numerically.
std::vector<kcVector<2>> kc2SegmentArc::intersection(const kc2SegmentArc& other, bool flag) const {
  const bool identities = xform_.isIdentity() && other.xform_.isIdentity();
  const kcXform<2> m = identities ? kcXform<2>() : xform_.inverse() * other.xform_;
  const kcXform<2> back = identities ? kcXform<2>() : m.inverse();
  const double tolClient =
      kfCrossingTol({kfMagnitude(p1()), kfMagnitude(p2()), kfMagnitude(other.p1()), kfMagnitude(other.p2())});
  const double tolThis = crossingTol_();
  const double tolOther = other.crossingTol_();
  if (isSimilarity(m.matrix())) {
    // Circles apart, or one inside the other, have nothing in common.
    const double r2 = other.circleRadius_ * std::sqrt(std::fabs(m.matrix().determinant()));
    const double d = (m * other.circleCenter_).distance(circleCenter_);
    const double slack = kTangentTol * std::max(circleRadius_, r2) + tolThis;
    if (d > circleRadius_ + r2 + slack || d < std::fabs(circleRadius_ - r2) - slack) return {};
  }
  const Meetings shared = sharedEnds(*this, other, tolClient);
  Meetings found = flag ? Meetings(tolClient) : shared;
  // A candidate in this arc's unmapped space.
  auto consider = [&](const kcVector<2>& p) {
    const kcVector<2> client = xform_ * p;
    if (shared.near(client)) return;
    if (counts(place_(p, tolThis), other.place_(back * p, tolOther), flag)) found.add(client);
  };

  const kcVector<2>& c1 = circleCenter_;
  const double r1 = circleRadius_;
  if (!isSimilarity(m.matrix())) {
    const kcMatrix<2>& a = m.matrix();
    const double r2 = other.circleRadius_;
    CircleEllipse crossing(c1, r1, m * other.circleCenter_, a * kcVector<2>(r2, 0.0),
                           a * kcVector<2>(0.0, r2));
    double roots[4];
    const int count = crossing.roots(roots);
    for (int i = 0; i < count; ++i)
      consider(m * (other.circleCenter_ + r2 * kcVector<2>(std::cos(roots[i]), std::sin(roots[i]))));
    return found.points();
  }

  const kcVector<2> c2 = m * other.circleCenter_;
  const double r2 = other.circleRadius_ * std::sqrt(std::fabs(m.matrix().determinant()));
  const double tol = kTangentTol * std::max(r1, r2);
  const kcVector<2> dv = c2 - c1;
  const double d = dv.len();
  if ((c1 == c2 && r1 == r2) || (d <= tol && std::fabs(r1 - r2) <= tol)) {
    // One circle: the arcs meet only at end points, the ends of either that
    // lie on the other; with flag true every one of them is dropped.
    if (flag) return {};
    const kcVector<2> ends[4] = {p1_(), p2_(), m * other.p1_(), m * other.p2_()};
    for (const kcVector<2>& p : ends)
      if (place_(p, tolThis) != Place::off && other.place_(back * p, tolOther) != Place::off)
        found.add(xform_ * p);
    return found.points();
  }
  if (d <= tol || d > r1 + r2 + tol || d < std::fabs(r1 - r2) - tol) return found.points();
  // The radical line, measured from the smaller circle's centre so that the
  // rounding stays relative to the smaller radius; (d - R)(d + R) keeps a
  // small circle against a huge one from cancelling.
  const kcVector<2> e = dv / d;
  const bool thisSmall = r1 <= r2;
  const kcVector<2>& cs = thisSmall ? c1 : c2;
  const double rs = thisSmall ? r1 : r2;
  const double rl = thisSmall ? r2 : r1;
  const kcVector<2> toLarge = thisSmall ? e : -e;
  const double along = ((d - rl) * (d + rl) + rs * rs) / (2.0 * d);
  if (std::fabs(d - (r1 + r2)) <= tol || std::fabs(d - std::fabs(r1 - r2)) <= tol) {
    consider(cs + toLarge * std::copysign(rs, along));
    return found.points();
  }
  const double h = std::sqrt(std::max((rs - along) * (rs + along), 0.0));
  const kcVector<2> base = cs + toLarge * along;
  // Right of the line from this centre to the other's first.
  consider(base - leftNormal(e) * h);
  consider(base + leftNormal(e) * h);
  return found.points();
}

bool kc2SegmentArc::overlaps(const kc2SegmentArc& other) const {
  const bool identities = xform_.isIdentity() && other.xform_.isIdentity();
  const kcXform<2> m = identities ? kcXform<2>() : xform_.inverse() * other.xform_;
  if (!isSimilarity(m.matrix())) return false;
  const kcVector<2> c2 = m * other.circleCenter_;
  const double r1 = circleRadius_;
  const double r2 = other.circleRadius_ * std::sqrt(std::fabs(m.matrix().determinant()));
  const double tol = kTangentTol * std::max(r1, r2);
  if (!((circleCenter_ == c2 && r1 == r2) ||
        (c2.distance(circleCenter_) <= tol && std::fabs(r1 - r2) <= tol)))
    return false;
  // Both arcs as counter-clockwise intervals of this circle: they share more
  // than a point when one starts inside the other, or both start together.
  const double angleTol = crossingTol_() / r1 / kPerDegree;
  auto interval = [&](const kcVector<2>& from, const kcVector<2>& to, double sweep) {
    const double a = kcDegree((from - circleCenter_).angle()).toDouble();
    const double b = kcDegree((to - circleCenter_).angle()).toDouble();
    return std::pair{sweep >= 0.0 ? a : b, std::min(std::fabs(sweep), kFullTurn)};
  };
  const bool mirrored = m.matrix().determinant() < 0.0;
  const auto [a0, aLen] = interval(p1_(), p2_(), span_);
  const auto [b0, bLen] = interval(m * other.p1_(), m * other.p2_(), mirrored ? -other.span_ : other.span_);
  const double bFromA = kcDegree(b0 - a0).norm().toDouble();
  const double aFromB = kcDegree(a0 - b0).norm().toDouble();
  return bFromA < aLen - angleTol || aFromB < bLen - angleTol || bFromA <= angleTol || aFromB <= angleTol;
}

// --- comparison and images ---

bool operator==(const kc2SegmentArc& a, const kc2SegmentArc& b) {
  kcDegree start = a.startAngle();
  if (!nearAngle(start.toDouble(), b.startAngle().toDouble())) return false;
  kcDegree span = a.angleSpan();
  if (!near(span.toDouble(), b.angleSpan().toDouble())) return false;
  kcVector<2> ca = a.center();
  kcVector<2> cb = b.center();
  if (!near(ca.x(), cb.x()) || !near(ca.y(), cb.y())) return false;
  if (!near(a.radius(start), b.radius(start))) return false;
  kcDegree end = a.endAngle();
  if (!near(a.radius(end), b.radius(end))) return false;
  kcDegree sweptEnd = start + span;
  return near(a.radius(sweptEnd), b.radius(sweptEnd));
}

kc2SegmentArc operator*(const kcXform<2>& x, const kc2SegmentArc& a) noexcept {
  kc2SegmentArc result = a;
  result.xform_ = x * a.xform_;
  return result;
}

kc2SegmentArc operator*(const kc2Rigid& r, const kc2SegmentArc& a) noexcept { return r.xform() * a; }

// --- archive and printing ---

kcArchive& operator||(kcArchive& ar, kc2SegmentArc& a) {
  unsigned char version = kVersion;
  ar || version;
  if (version > kVersion) throw kcArchive::UnknownVersion(kSource, kVersionLine);
  kcVector<2> center = a.circleCenter_;
  double radius = a.circleRadius_;
  double start = a.start_;
  double span = a.span_;
  kcXform<2> xform = a.xform_;
  ar || center || radius || start || span;
  if (version >= 1) ar || xform;
  if (ar.isLoading()) {
    if (!(radius > 0.0)) throw kcArchive::Corrupt(L"kc2SegmentArc: radius not > 0");
    a.circleCenter_ = center;
    a.circleRadius_ = radius;
    a.start_ = start;
    a.span_ = span;
    a.xform_ = version >= 1 ? xform : kcXform<2>();
  }
  return ar;
}

void kc2SegmentArc::print_(std::wostream& out) const {
  kcVector<2> c = center();
  out << L"center=" << c.x() << L" " << c.y() << std::endl;
  out << L"radius=" << radius(kcDegree(0.0)) << std::endl;
  out << L"startAngle=" << startAngle().toDouble() << std::endl;
  out << L"angleSpan=" << angleSpan().toDouble() << std::endl;
  out << std::endl;
}

std::wostream& operator<<(std::wostream& out, const kc2SegmentArc& a) {
  a.print_(out);
  return out;
}
