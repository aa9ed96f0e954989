#include "dispc/wrfm/lineseg.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "dispc/wrfm/predicates_p.h"

namespace {
// Where the archive reports an unknown version of the record.
constexpr const char* kSource = "dispc/wrfm/lineseg";
constexpr int kVersionLine = 105;
constexpr unsigned char kVersion = 0;

bool near(double a, double b) noexcept { return std::fabs(a - b) <= kc2SegmentLine::kEqualTol; }
}  // namespace

// --- construction ---

kc2SegmentLine::kc2SegmentLine(const kcVector<2>& p1, const kcVector<2>& p2) : p1_(p1), p2_(p2) {
  if (p1 == p2) throw kcShapesError::DegenerateShape();
}

kc2SegmentLine::kc2SegmentLine(const kcLineSeg& seg) : kc2SegmentLine(seg.p1(), seg.p2()) {}

// --- queries ---

kcFLine kc2SegmentLine::line() const { return kcFLine(p1_, (p2_ - p1_).angle()); }

kcLineSeg kc2SegmentLine::lineSeg() const { return kcLineSeg(p1_, p2_); }

kcRect kc2SegmentLine::boundingBox() const { return kcRect::fromCorners(p1_, p2_); }

kcVector<2> kc2SegmentLine::unit_() const noexcept {
  kcRadian a = (p2_ - p1_).angle();
  return {cos(a), sin(a)};
}

// The foot of the perpendicular on line() when it falls on the segment;
// otherwise the nearer end, p2 on a tie.
kcVector<2> kc2SegmentLine::closestPoint(const kcVector<2>& pt) const noexcept {
  kcVector<2> u = unit_();
  kcVector<2> foot = p1_ + u * (pt - p1_).dot(u);
  if (inRange_(foot, true, u)) return foot;
  return (pt - p1_).lenSq() < (pt - p2_).lenSq() ? p1_ : p2_;
}

double kc2SegmentLine::distToPoint(const kcVector<2>& pt) const noexcept {
  return pt.distance(closestPoint(pt));
}

bool kc2SegmentLine::inRange(const kcVector<2>& pt, bool inclusive) const noexcept {
  return inRange_(pt, inclusive, unit_());
}

// Projections on the unit direction: the segment covers [0, L]. The
// tolerance is relative to the length, so a test means the same at any scale.
bool kc2SegmentLine::inRange_(const kcVector<2>& pt, bool inclusive, const kcVector<2>& u) const noexcept {
  double len = (p2_ - p1_).dot(u);
  double t = (pt - p1_).dot(u);
  double tol = len * kRangeTol;
  bool nearEnd = std::fabs(t) <= tol || std::fabs(t - len) <= tol;
  if (inclusive) return (t >= 0.0 && t <= len) || nearEnd;
  if (t <= 0.0 || t >= len) return false;
  return !nearEnd;
}

bool kc2SegmentLine::validPoint(const kcVector<2>& pt, bool /*flag*/) const noexcept {
  return closestPoint(pt).distance(pt) <= kValidPointTol * length();
}

// --- intersection ---

// The same arithmetic as kcFLine::intersect, without building the lines.
std::optional<kcVector<2>> kc2SegmentLine::intersection_(const kcVector<2>& u, const kcVector<2>& q,
                                                         const kcVector<2>& e) const noexcept {
  double denom = u.cross(e);
  if (denom == 0.0) return std::nullopt;
  double s = (q - p1_).cross(e) / denom;
  return p1_ + u * s;
}

std::optional<kcVector<2>> kc2SegmentLine::intersection_(const kcFLine& other) const noexcept {
  return intersection_(unit_(), other.point(), other.direction());
}

// Decided on the end points themselves: the four orientations are exact, so
// parallel, collinear and touching segments are told apart whatever their
// angle or length, and a meeting at an end point is that end point exactly.
// Only a proper crossing is computed, and it is clamped onto this segment.
std::vector<kcVector<2>> kc2SegmentLine::intersection(const kc2SegmentLine& other, bool flag) const {
  const int o1 = kfOrientation(p1_, p2_, other.p1_);
  const int o2 = kfOrientation(p1_, p2_, other.p2_);
  if (o1 == 0 && o2 == 0) {
    const std::optional<kcVector<2>> touch = collinearTouch_(other);
    if (touch && !flag) return {*touch};
    return {};
  }
  const int o3 = kfOrientation(other.p1_, other.p2_, p1_);
  const int o4 = kfOrientation(other.p1_, other.p2_, p2_);
  if (o1 * o2 > 0 || o3 * o4 > 0) return {};
  // An end point on the other segment is where they meet.
  const kcVector<2>* end = o1 == 0   ? &other.p1_
                           : o2 == 0 ? &other.p2_
                           : o3 == 0 ? &p1_
                           : o4 == 0 ? &p2_
                                     : nullptr;
  if (end) {
    if (flag) return {};
    return {*end};
  }
  const kcVector<2> u = p2_ - p1_;
  const kcVector<2> e = other.p2_ - other.p1_;
  const double t = std::clamp((other.p1_ - p1_).cross(e) / u.cross(e), 0.0, 1.0);
  const kcVector<2> p = p1_ + u * t;
  // Adjacent segments (flag true) drop a crossing within the range tolerance
  // of an end, as the range test does.
  if (flag && (!inRange_(p, false, unit_()) || !other.inRange_(p, false, other.unit_()))) return {};
  return {p};
}

// Collinear segments compared along the axis their line runs closer to,
// where the order of points on the line is the order of that coordinate.
// The single shared point when they touch end to end; none when they are
// apart or share more than a point.
std::optional<kcVector<2>> kc2SegmentLine::collinearTouch_(const kc2SegmentLine& other) const noexcept {
  const kcVector<2> d = p2_ - p1_;
  const int k = std::fabs(d.x()) >= std::fabs(d.y()) ? 0 : 1;
  const bool thisUp = p1_[k] <= p2_[k];
  const bool otherUp = other.p1_[k] <= other.p2_[k];
  const kcVector<2>& lo1 = thisUp ? p1_ : p2_;
  const kcVector<2>& hi1 = thisUp ? p2_ : p1_;
  const kcVector<2>& lo2 = otherUp ? other.p1_ : other.p2_;
  const kcVector<2>& hi2 = otherUp ? other.p2_ : other.p1_;
  if (hi1[k] == lo2[k]) return hi1;
  if (hi2[k] == lo1[k]) return hi2;
  return std::nullopt;
}

bool kc2SegmentLine::overlaps(const kc2SegmentLine& other) const noexcept {
  if (kfOrientation(p1_, p2_, other.p1_) != 0 || kfOrientation(p1_, p2_, other.p2_) != 0) return false;
  const kcVector<2> d = p2_ - p1_;
  const int k = std::fabs(d.x()) >= std::fabs(d.y()) ? 0 : 1;
  const double lo = std::max(std::min(p1_[k], p2_[k]), std::min(other.p1_[k], other.p2_[k]));
  const double hi = std::min(std::max(p1_[k], p2_[k]), std::max(other.p1_[k], other.p2_[k]));
  return lo < hi;
}

std::vector<kcVector<2>> kc2SegmentLine::intersection(const kcFLine& other, bool flag) const {
  kcVector<2> u = unit_();
  std::optional<kcVector<2>> p = intersection_(u, other.point(), other.direction());
  if (p && inRange_(*p, !flag, u)) return {*p};
  return {};
}

// --- comparison and images ---

bool operator==(const kc2SegmentLine& a, const kc2SegmentLine& b) noexcept {
  return near(a.p1_.x(), b.p1_.x()) && near(a.p1_.y(), b.p1_.y()) && near(a.p2_.x(), b.p2_.x()) &&
         near(a.p2_.y(), b.p2_.y());
}

kc2SegmentLine operator*(const kcXform<2>& x, const kc2SegmentLine& s) { return {x * s.p1(), x * s.p2()}; }

kc2SegmentLine operator*(const kc2Rigid& r, const kc2SegmentLine& s) { return {r * s.p1(), r * s.p2()}; }

// --- archive and printing ---

kcArchive& operator||(kcArchive& ar, kc2SegmentLine& s) {
  unsigned char version = kVersion;
  ar || version;
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kVersionLine);
  kcVector<2> p1 = s.p1_;
  kcVector<2> p2 = s.p2_;
  ar || p1 || p2;
  if (ar.isLoading()) {
    s.p1_ = p1;
    s.p2_ = p2;
  }
  return ar;
}

// No separator between the two coordinates: the established output.
void kc2SegmentLine::print_(std::wostream& out) const {
  out << L"p1_=" << p1_.x() << p1_.y() << std::endl;
  out << L"p2_=" << p2_.x() << p2_.y() << std::endl;
  out << std::endl;
}

std::wostream& operator<<(std::wostream& out, const kc2SegmentLine& s) {
  s.print_(out);
  return out;
}
