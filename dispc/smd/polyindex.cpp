#include <algorithm>
#include <array>
#include <bit>
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
  // Along the axes.
  Extents() = default;
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
    size_ = std::max(size_, std::max(std::fabs(x), std::fabs(y)));
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

// Where the rounded segment k starts, before any piece is built.
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

// Adds the pieces of element k.
void addElement(Extents& e, const kcSMDGDPoly& poly, int k) {
  if (P::segmentExists_(poly, k)) addSegment(e, poly, k);
  if (P::vertexIsRounded_(poly, k)) e.add(P::roundingArc_(poly, k));
}

// Where element k starts and ends along the outline.
kcVector<2> elementStart(const kcSMDGDPoly& poly, int k) {
  return P::segmentExists_(poly, k) ? segmentStart(poly, k) : P::roundStart_(poly, k);
}
kcVector<2> elementEnd(const kcSMDGDPoly& poly, int k) {
  return P::vertexIsRounded_(poly, k) ? P::roundEnd_(poly, k) : P::roundStart_(poly, k);
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

// --- upkeep ---

void kcSMDGDPolyIndex_::touch(int k) {
  if (built_ && k >= 0 && k < count_) dirty_.push_back(k);
}

void kcSMDGDPolyIndex_::grow() {
  if (!built_) return;
  // Building again whenever the leaves run out keeps the cost of growing
  // linear.
  if (count_ == cap_ * kRun) {
    built_ = false;
    return;
  }
  ++count_;
  touch(count_ - 1);
  touch(0);
}

// Most elements are a plain straight segment, boxed at once; the others are
// boxed piece by piece.
void kcSMDGDPolyIndex_::setElement_(const kcSMDGDPoly& poly, int k) {
  Element& e = elements_[k];
  e = Element{};
  const bool segment = P::segmentExists_(poly, k), rounded = P::vertexIsRounded_(poly, k);
  if (!segment && !rounded) return;
  if (segment && !rounded && !P::isArcSegment_(poly, k)) {
    const kcVector<2>& a = segmentStart(poly, k);
    const kcVector<2>& b = P::roundStart_(poly, k);
    if (a == b) {
      e.kind = Kind::always;
      return;
    }
    const double m =
        kMargin * (std::max({std::fabs(a.x()), std::fabs(a.y()), std::fabs(b.x()), std::fabs(b.y())}) +
                   std::max(std::fabs(b.x() - a.x()), std::fabs(b.y() - a.y())));
    e.box.x0 = std::min(a.x(), b.x()) - m, e.box.x1 = std::max(a.x(), b.x()) + m;
    e.box.y0 = std::min(a.y(), b.y()) - m, e.box.y1 = std::max(a.y(), b.y()) + m;
    e.ax = a.x(), e.ay = a.y(), e.bx = b.x(), e.by = b.y();
    e.kind = Kind::line;
    return;
  }
  try {
    Extents x;
    addElement(x, poly, k);
    e.box = Box(x.bound());
    e.kind = Kind::some;
  } catch (const kcException&) {
    e.kind = Kind::always;
  }
}

// A leaf's box runs from the run's first point to its last and holds every
// piece of it.
void kcSMDGDPolyIndex_::setLeaf_(const kcSMDGDPoly& poly, int run) {
  const int node = cap_ + run;
  const int from = run * kRun, to = std::min(from + kRun, count_);
  int first = -1, last = -1;
  kind_[node] = Kind::none;
  for (int k = from; k < to; ++k) {
    if (elements_[k].kind == Kind::always) {
      kind_[node] = Kind::always;
      return;
    }
    if (elements_[k].kind == Kind::none) continue;
    if (first < 0) first = k;
    last = k;
  }
  if (first < 0) return;
  const Element& f = elements_[first];
  const Element& l = elements_[last];
  Extents x(f.kind == Kind::line ? kcVector<2>(f.ax, f.ay) : elementStart(poly, first),
            l.kind == Kind::line ? kcVector<2>(l.bx, l.by) : elementEnd(poly, last));
  for (int k = first; k <= last; ++k) {
    const Element& e = elements_[k];
    if (e.kind == Kind::line) {
      // A straight segment starts where the one before it ended.
      if (k == first || elements_[k - 1].kind != Kind::line) x.add(e.ax, e.ay);
      x.add(e.bx, e.by);
    } else if (e.kind == Kind::some) {
      addElement(x, poly, k);
    }
  }
  bounds_[node] = x.bound();
  boxes_[node] = Box(bounds_[node]);
  kind_[node] = Kind::some;
}

// A node's box holds both children's and runs from the middle of its first
// child to the middle of its second, along the outline.
void kcSMDGDPolyIndex_::merge_(int node) {
  const int a = 2 * node, b = a + 1;
  if (kind_[a] == Kind::always || kind_[b] == Kind::always) {
    kind_[node] = Kind::always;
    return;
  }
  if (kind_[a] == Kind::none || kind_[b] == Kind::none) {
    const int only = kind_[a] == Kind::none ? b : a;
    kind_[node] = kind_[only];
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
  const Box& p = boxes_[a];
  const Box& q = boxes_[b];
  boxes_[node].x0 = std::min(p.x0, q.x0), boxes_[node].y0 = std::min(p.y0, q.y0);
  boxes_[node].x1 = std::max(p.x1, q.x1), boxes_[node].y1 = std::max(p.y1, q.y1);
  kind_[node] = Kind::some;
}

void kcSMDGDPolyIndex_::build_(const kcSMDGDPoly& poly) {
  count_ = static_cast<int>(poly.numVertices());
  const int runs = std::max((count_ + kRun - 1) / kRun, 1);
  cap_ = static_cast<int>(std::bit_ceil(static_cast<unsigned>(runs)));
  const std::size_t nodes = 2 * static_cast<std::size_t>(cap_);
  elements_.assign(static_cast<std::size_t>(cap_) * kRun, Element{});
  bounds_.assign(nodes, Bound{});
  boxes_.assign(nodes, Box{});
  kind_.assign(nodes, Kind::none);
  for (int run = 0; run < runs; ++run) {
    for (int k = run * kRun; k < std::min(count_, (run + 1) * kRun); ++k) setElement_(poly, k);
    setLeaf_(poly, run);
  }
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
  for (int k : dirty_) setElement_(poly, k);
  // The runs, then level by level each changed parent once.
  for (int& node : dirty_) node /= kRun;
  dirty_.erase(std::unique(dirty_.begin(), dirty_.end()), dirty_.end());
  for (int run : dirty_) setLeaf_(poly, run);
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
    if (kind_[at.node] == Kind::none || at.first * kRun > upTo) continue;
    if (kind_[at.node] != Kind::always && !(boxes_[at.node].meets(box) && bounds_[at.node].meets(bound)))
      continue;
    if (at.size > 1) {
      const int half = at.size / 2;
      stack[top++] = {2 * at.node + 1, at.first + half, half};
      stack[top++] = {2 * at.node, at.first, half};
      continue;
    }
    const int end = std::min((at.first + 1) * kRun - 1, upTo);
    for (int j = at.first * kRun; j <= end; ++j) {
      const Element& e = elements_[j];
      if (e.kind == Kind::always || (e.kind != Kind::none && e.box.meets(box) && e.box.bound().meets(bound)))
        found_.push_back(j);
    }
  }
  return found_;
}
