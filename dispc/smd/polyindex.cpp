#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "dispc/smd/poly.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyindex_p.h"
#include "dispc/smd/polyprivate.h"

namespace {
using P = kcSMDGDPolyPrivate;
using Bound = kcSMDGDPolyIndex_::Bound;
using Kind = kcSMDGDPolyIndex_::Kind;

// Bounds are widened by this fraction of their coordinates' size: far more
// than the tolerances by which the intersection tests let pieces meet.
constexpr double kMargin = 1e-9;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kFullTurn = 360.0;

// The extents of what is added along an axis and the axis turned left.
class Extents {
 public:
  // Along the direction from one point to the other (the axes when they coincide).
  Extents(const kcVector<2>& from, const kcVector<2>& to) {
    const kcVector<2> d = to - from;
    const double length = std::sqrt(d.x() * d.x() + d.y() * d.y());
    if (length > 0.0 && std::isfinite(length)) ux_ = d.x() / length, uy_ = d.y() / length;
  }

  void add(double x, double y) noexcept {
    const double u = x * ux_ + y * uy_, v = y * ux_ - x * uy_;
    u0_ = std::min(u0_, u), u1_ = std::max(u1_, u);
    v0_ = std::min(v0_, v), v1_ = std::max(v1_, v);
    size_ = std::max({size_, std::fabs(x), std::fabs(y)});
  }
  void add(const kcVector<2>& p) noexcept { add(p.x(), p.y()); }

  // A circular arc: its ends, and the points of its circle farthest along
  // either axis that it passes.
  void add(const kc2SegmentArc& arc) {
    add(arc.p1());
    add(arc.p2());
    if (!arc.xform().isIdentity()) {
      const kcRect box = arc.boundingBox();
      add(box.origin());
      add(box.origin() + box.size());
      add(box.origin().x() + box.size().x(), box.origin().y());
      add(box.origin().x(), box.origin().y() + box.size().y());
      return;
    }
    const kcVector<2> c = arc.center_();
    const double r = arc.radius_(), start = arc.startAngle_().toDouble(), span = arc.angleSpan_().toDouble();
    const std::array<kcVector<2>, 4> ways{kcVector<2>(ux_, uy_), kcVector<2>(-ux_, -uy_),
                                          kcVector<2>(-uy_, ux_), kcVector<2>(uy_, -ux_)};
    for (const kcVector<2>& w : ways) {
      const double turn = std::atan2(w.y(), w.x()) / kcRadian::kPerDegree - start;
      const double along = span >= 0.0 ? turn : -turn;
      if (std::fabs(span) >= kFullTurn ||
          along - kFullTurn * std::floor(along / kFullTurn) <= std::fabs(span))
        add(c.x() + r * w.x(), c.y() + r * w.y());
    }
  }

  [[nodiscard]] bool empty() const noexcept { return u0_ > u1_; }

  [[nodiscard]] Bound bound() const noexcept {
    const double m = kMargin * (size_ + std::max(u1_ - u0_, v1_ - v0_));
    const double u = (u0_ + u1_) / 2, v = (v0_ + v1_) / 2;
    return {u * ux_ - v * uy_, u * uy_ + v * ux_, ux_, uy_, (u1_ - u0_) / 2 + m, (v1_ - v0_) / 2 + m};
  }

 private:
  double ux_ = 1, uy_ = 0;
  double u0_ = kInf, u1_ = -kInf, v0_ = kInf, v1_ = -kInf;
  double size_ = 0;
};

// Where the rounded segment k starts and ends, before any piece is built.
kcVector<2> segmentStart(const kcSMDGDPoly& poly, int k) {
  return P::roundEnd_(poly, P::previousVertexIndex_(poly, k));
}

// Adds the rounded segment k as the intersection tests build it.
void addSegment(Extents& e, const kcSMDGDPoly& poly, int k) {
  if (P::isArcSegment_(poly, k)) {
    e.add(P::roundedArcSegment_(poly, k));
    return;
  }
  const kcVector<2>& a = segmentStart(poly, k);
  const kcVector<2>& b = P::roundStart_(poly, k);
  if (a == b) throw kcShapesError::DegenerateShape();
  e.add(a);
  e.add(b);
}

// The half extent of b along the unit axis (x, y).
double reach(const Bound& b, double x, double y) noexcept {
  return b.hu * std::fabs(b.ux * x + b.uy * y) + b.hv * std::fabs(b.ux * y - b.uy * x);
}
}  // namespace

// --- bounds ---

bool Bound::meets(const Bound& o) const noexcept {
  const double tx = o.cx - cx, ty = o.cy - cy;
  if (uy == 0 && o.uy == 0) return std::fabs(tx) <= hu + o.hu && std::fabs(ty) <= hv + o.hv;
  const double c = std::fabs(ux * o.ux + uy * o.uy), s = std::fabs(ux * o.uy - uy * o.ux);
  if (std::fabs(tx * ux + ty * uy) > hu + o.hu * c + o.hv * s) return false;
  if (std::fabs(ty * ux - tx * uy) > hv + o.hu * s + o.hv * c) return false;
  if (std::fabs(tx * o.ux + ty * o.uy) > o.hu + hu * c + hv * s) return false;
  return !(std::fabs(ty * o.ux - tx * o.uy) > o.hv + hu * s + hv * c);
}

Kind kcSMDGDPolyIndex_::elementBound(const kcSMDGDPoly& poly, int k, Bound& bound) {
  const bool segment = P::segmentExists_(poly, k), rounded = P::vertexIsRounded_(poly, k);
  if (!segment && !rounded) return Kind::none;
  if (segment && !rounded && !P::isArcSegment_(poly, k)) {
    // Most elements: a plain straight segment, its own box.
    const kcVector<2>& a = segmentStart(poly, k);
    const kcVector<2>& b = P::roundStart_(poly, k);
    if (a == b) return Kind::always;
    const double dx = b.x() - a.x(), dy = b.y() - a.y(), length = std::sqrt(dx * dx + dy * dy);
    if (std::isfinite(length)) {
      const double m =
          kMargin *
          (std::max({std::fabs(a.x()), std::fabs(a.y()), std::fabs(b.x()), std::fabs(b.y())}) + length);
      bound = {(a.x() + b.x()) / 2, (a.y() + b.y()) / 2, dx / length, dy / length, length / 2 + m, m};
      return Kind::line;
    }
  }
  try {
    Extents e(segment ? segmentStart(poly, k) : P::roundStart_(poly, k),
              rounded ? P::roundEnd_(poly, k) : P::roundStart_(poly, k));
    if (segment) addSegment(e, poly, k);
    if (rounded) e.add(P::roundingArc_(poly, k));
    bound = e.bound();
  } catch (const kcException&) {
    return Kind::always;
  }
  return Kind::some;
}

bool kcSMDGDPolyIndex_::pieceBound(const kcSMDGDPoly& poly, bool ofSegment, int k, Bound& bound) {
  try {
    if (ofSegment) {
      Extents e(segmentStart(poly, k), P::roundStart_(poly, k));
      addSegment(e, poly, k);
      bound = e.bound();
    } else {
      Extents e(P::roundStart_(poly, k), P::roundEnd_(poly, k));
      e.add(P::roundingArc_(poly, k));
      bound = e.bound();
    }
  } catch (const kcException&) {
    return false;
  }
  return true;
}

kcSMDGDPolyIndex_::Box::Box(const Bound& b) noexcept {
  const double rx = b.hu * std::fabs(b.ux) + b.hv * std::fabs(b.uy);
  const double ry = b.hu * std::fabs(b.uy) + b.hv * std::fabs(b.ux);
  x0 = b.cx - rx, y0 = b.cy - ry, x1 = b.cx + rx, y1 = b.cy + ry;
}

kcSMDGDPolyIndex_::Box::Box(const Box& a, const Box& b) noexcept
    : x0(std::min(a.x0, b.x0)),
      y0(std::min(a.y0, b.y0)),
      x1(std::max(a.x1, b.x1)),
      y1(std::max(a.y1, b.y1)) {}

// --- upkeep ---

void kcSMDGDPolyIndex_::touch(int k) {
  if (built_ && k >= 0 && k < count_) dirty_.push_back(k);
}

void kcSMDGDPolyIndex_::grow() {
  if (!built_) return;
  // Building again whenever the leaves run out keeps the cost of growing
  // linear.
  if (count_ == cap_) {
    built_ = false;
    return;
  }
  ++count_;
  touch(count_ - 1);
  touch(0);
}

void kcSMDGDPolyIndex_::setLeaf_(const kcSMDGDPoly& poly, int k) {
  const int node = cap_ + k;
  kind_[node] = elementBound(poly, k, bounds_[node]);
  boxes_[node] = Box(bounds_[node]);
}

// A node's bound holds both children's and runs from the middle of its first
// child to the middle of its second, along the outline.
void kcSMDGDPolyIndex_::merge_(int node) {
  const int a = 2 * node, b = a + 1;
  if (kind_[a] == Kind::always || kind_[b] == Kind::always) {
    kind_[node] = Kind::always;
    return;
  }
  if (kind_[a] == Kind::none || kind_[b] == Kind::none) {
    const int only = kind_[a] == Kind::none ? b : a;
    kind_[node] = kind_[only] == Kind::none ? Kind::none : Kind::some;
    bounds_[node] = bounds_[only];
    boxes_[node] = boxes_[only];
    return;
  }
  const Bound& x = bounds_[a];
  const Bound& y = bounds_[b];
  double ux = x.ux, uy = x.uy;
  const double dx = y.cx - x.cx, dy = y.cy - x.cy, length = std::sqrt(dx * dx + dy * dy);
  if (length > 0.0 && std::isfinite(length)) ux = dx / length, uy = dy / length;
  const double xu = x.cx * ux + x.cy * uy, xv = x.cy * ux - x.cx * uy;
  const double yu = y.cx * ux + y.cy * uy, yv = y.cy * ux - y.cx * uy;
  const double xhu = reach(x, ux, uy), xhv = reach(x, -uy, ux);
  const double yhu = reach(y, ux, uy), yhv = reach(y, -uy, ux);
  const double u0 = std::min(xu - xhu, yu - yhu), u1 = std::max(xu + xhu, yu + yhu);
  const double v0 = std::min(xv - xhv, yv - yhv), v1 = std::max(xv + xhv, yv + yhv);
  const double u = (u0 + u1) / 2, v = (v0 + v1) / 2;
  bounds_[node] = {u * ux - v * uy, u * uy + v * ux, ux, uy, (u1 - u0) / 2, (v1 - v0) / 2};
  boxes_[node] = Box(boxes_[a], boxes_[b]);
  kind_[node] = Kind::some;
}

void kcSMDGDPolyIndex_::build_(const kcSMDGDPoly& poly) {
  count_ = static_cast<int>(poly.numVertices());
  cap_ = static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(count_, 1))));
  const std::size_t nodes = 2 * static_cast<std::size_t>(cap_);
  bounds_.assign(nodes, Bound{});
  boxes_.assign(nodes, Box(Bound{}));
  kind_.assign(nodes, Kind::none);
  for (int k = 0; k < count_; ++k) setLeaf_(poly, k);
  for (int node = cap_ - 1; node >= 1; --node) merge_(node);
  dirty_.clear();
  built_ = true;
}

void kcSMDGDPolyIndex_::refresh_(const kcSMDGDPoly& poly) {
  if (!built_ || count_ != static_cast<int>(poly.numVertices())) {
    build_(poly);
    return;
  }
  if (dirty_.empty()) return;
  std::sort(dirty_.begin(), dirty_.end());
  dirty_.erase(std::unique(dirty_.begin(), dirty_.end()), dirty_.end());
  for (int k : dirty_) setLeaf_(poly, k);
  // Level by level, each changed parent once.
  for (int& node : dirty_) node += cap_;
  while (dirty_.front() > 1) {
    for (int& node : dirty_) node /= 2;
    dirty_.erase(std::unique(dirty_.begin(), dirty_.end()), dirty_.end());
    for (int node : dirty_) merge_(node);
  }
  dirty_.clear();
}

// --- queries ---

const std::vector<int>& kcSMDGDPolyIndex_::near(const kcSMDGDPoly& poly, const Bound& bound, int upTo) {
  refresh_(poly);
  found_.clear();
  const Box box(bound);
  // Depth-first, first children first: the elements come out in order.
  struct Visit {
    int node, first, size;
  };
  std::array<Visit, 2 * 32> stack{};
  int top = 0;
  stack[top++] = {1, 0, cap_};
  while (top > 0) {
    const Visit at = stack[--top];
    if (kind_[at.node] == Kind::none || at.first > upTo) continue;
    if (kind_[at.node] != Kind::always && !(boxes_[at.node].meets(box) && bounds_[at.node].meets(bound)))
      continue;
    if (at.size == 1) {
      found_.push_back(at.first);
    } else {
      const int half = at.size / 2;
      stack[top++] = {2 * at.node + 1, at.first + half, half};
      stack[top++] = {2 * at.node, at.first, half};
    }
  }
  return found_;
}
