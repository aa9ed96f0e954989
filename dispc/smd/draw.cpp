// Drawing SMD polys: synthetic grey images through the rasterisers.
//
// The outline is read straight from the poly's rounding caches (the tangent
// points and sweeps), not rebuilt as segment objects: a rounding arc's centre
// lies one radius from its start point, square to the incoming segment, and
// each piece starts on the very point where the one before it ended, so the
// fill's edges meet without a gap and the outline's pels at a joint are
// found once.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "dispc/smd/polyprivate.h"
#include "dispc/wrfm/raster.h"
#include "dispc/wrfm/raster_p.h"

namespace {
// Outline paths this long are given back after use rather than kept.
constexpr std::size_t kKeptPoints = std::size_t{1} << 16;

using Poly = kcSMDGDPoly;
using P = kcSMDGDPolyPrivate;
using V = kcVector<2>;

V leftNormal(const V& v) noexcept { return V(-v.y(), v.x()); }

// v / |v|; hypot only where the squares would leave the range of doubles.
V unit(const V& v) noexcept {
  const double q = v.x() * v.x() + v.y() * v.y();
  const double length = q > 1e-300 && q < 1e300 ? std::sqrt(q) : std::hypot(v.x(), v.y());
  return v * (1.0 / length);
}

// The centre of vertex v's rounding arc: from the arc's start, one radius to
// the side it turns to, square to the incoming segment's direction there.
V roundingCentre(const Poly& p, int v, double radius, double span) {
  const V& start = P::roundStart_(p, v);
  V along;
  if (P::isArcSegment_(p, v)) {
    const kc2SegmentArc arc = P::arcSegment_(p, v);
    along = leftNormal(start - arc.center_());
    if (arc.angleSpan_().toDouble() < 0.0) along = -along;
  } else {
    // Vertex v's incoming segment starts at the vertex before it.
    along = p.vertices()[v].point() - p.vertices()[v > 0 ? v - 1 : p.vertices().size() - 1].point();
  }
  const V side = leftNormal(unit(along));
  return span >= 0.0 ? start + radius * side : start - radius * side;
}

// Hands the pieces of the rounded outline, in order of travel, to
// line(from, to) and arc(centre, radius, from, to, span in degrees).
template <class Line, class Arc>
void forEachPiece(const Poly& p, Line&& line, Arc&& arc) {
  const int n = static_cast<int>(p.vertices().size());
  for (int v = 0; v < n; ++v) {
    const V& start = P::roundStart_(p, v);
    const V& end = P::roundEnd_(p, v);
    if (P::vertexIsRounded_(p, v) && P::roundSpan_(p, v) != 0.0 && start != end) {
      const double radius = std::fabs(p.vertices()[v].vertexRadius());
      const double span = P::roundSpan_(p, v);
      arc(roundingCentre(p, v, radius, span), radius, start, end, span);
    }
    const int s = v + 1 < n ? v + 1 : 0;
    if (!P::segmentExists_(p, s)) continue;
    const V& to = P::roundStart_(p, s);
    if (end == to) continue;  // the roundings at its ends leave nothing of it
    if (!P::isArcSegment_(p, s)) {
      line(end, to);
      continue;
    }
    const kc2SegmentArc whole = P::arcSegment_(p, s);
    const double span = P::vertexIsRounded_(p, v) || P::vertexIsRounded_(p, s)
                            ? P::roundedArcSegment_(p, s).angleSpan_().toDouble()
                            : whole.angleSpan_().toDouble();
    arc(whole.center_(), whole.radius_(), end, to, span);
  }
}

// A box along the axes that holds the mapped outline: its vertices and the
// whole mapped circles of its arc segments hold it (a rounding stays within
// the corner it rounds).
struct Box {
  double x0 = std::numeric_limits<double>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
  void enclose(const V& q, double rx, double ry) noexcept {
    x0 = std::min(x0, q.x() - rx);
    x1 = std::max(x1, q.x() + rx);
    y0 = std::min(y0, q.y() - ry);
    y1 = std::max(y1, q.y() + ry);
  }
};

Box outlineBox(const Poly& p, const kcXform<2>& toPels) {
  const kcMatrix<2>& m = toPels.matrix();
  Box box;
  const int n = static_cast<int>(p.vertices().size());
  for (int v = 0; v < n; ++v) {
    box.enclose(toPels * p.vertices()[v].point(), 0.0, 0.0);
    if (!P::segmentExists_(p, v) || !P::isArcSegment_(p, v)) continue;
    const kc2SegmentArc arc = P::arcSegment_(p, v);
    const double r = arc.radius_();
    box.enclose(toPels * arc.center_(), r * std::hypot(m.element(0, 0), m.element(0, 1)),
                r * std::hypot(m.element(1, 0), m.element(1, 1)));
  }
  return box;
}

// What drawing keeps from one poly to the next, so that it allocates
// nothing once it has seen a poly as large.
struct Scratch {
  kcRasterFill_ table;
  // The outline as one polyline in pels (its arcs as chords), gathered
  // first and drawn after: the arithmetic of the points does not wait on
  // the pen's branches.
  std::vector<V> path;
  // Per point, whether the line that ends there is a steep one whose
  // centre pels the fill sets.
  std::vector<unsigned char> byFill;
};

// The outline, then the fill (both in the same grey, so the order does not
// show), with rounding that need not saturate when kSafe.
template <bool kSafe>
void draw(const Poly& p, const kcXform<2>& toPels, const kcRasterPels_& pels, unsigned char grey, bool fill,
          bool outline, Scratch& scratch) {
  const kcMatrix<2>& m = toPels.matrix();
  const double m00 = m.element(0, 0), m01 = m.element(0, 1), m10 = m.element(1, 0), m11 = m.element(1, 1);
  kcRasterFill_& table = scratch.table;
  std::vector<V>& path = scratch.path;
  std::vector<unsigned char>& byFill = scratch.byFill;
  table.clear();
  path.clear();
  byFill.clear();
  // The pieces follow each other: each starts where the one before ended.
  auto start = [&](const V& a) {
    if (!path.empty()) return;
    path.push_back(a);
    byFill.push_back(0);
  };
  forEachPiece(
      p,
      [&](const V& from, const V& to) {
        const V a = toPels * from, b = toPels * to;
        if (fill) table.line(a, b, outline);
        if (!outline) return;
        start(a);
        path.push_back(b);
        byFill.push_back(fill && kcRaster_::steep(a, b));
      },
      [&](const V& centre, double r, const V& from, const V& to, double span) {
        if (fill) {
          const double inverse = 1.0 / r;
          table.arc({toPels * centre, r * m00, r * m01, r * m10, r * m11, (from - centre) * inverse,
                     (to - centre) * inverse, span, toPels * from, toPels * to});
        }
        if (!outline) return;
        start(toPels * from);
        kcRasterArcWalk_ walk(centre, from, to, span, toPels);
        for (V q; walk.next(q);) {
          path.push_back(q);
          byFill.push_back(0);
        }
      });
  // The outline is one pel wide, drawn as one pen stroke.
  kcRasterPen_<kSafe> pen(pels, grey);
  pen.polyline(path.data(), byFill.data(), path.size());
  if (path.capacity() > kKeptPoints) {
    path = {};
    byFill = {};
  }
  if (!fill) return;
  // An open poly is filled as if a straight segment closed it.
  if (p.isOpen()) table.line(toPels * p.vertices().back().point(), toPels * p.vertices().front().point());
  table.fill(pels, grey);
}
}  // namespace

void kcSMDGDPolyPrivate::drawSynthetic(const kcSMDGDPoly& p, const kcXform<2>& xform,
                                       kcPelBuffer<unsigned char>& pelBuffer, unsigned char grey,
                                       bool fillClosedOnly, bool outline) {
  const bool fill = !(fillClosedOnly && p.open_);
  if (p.vertices_.empty() || pelBuffer.width() <= 0 || pelBuffer.height() <= 0 || !(fill || outline)) return;
  // Client -> image -> the window's pels, which put and row address.
  const kcXform<2> toPels =
      kcXform<2>(kcMatrix<2>(), kcVector<2>(-pelBuffer.offsetX(), -pelBuffer.offsetY())) *
      pelBuffer.imageFromClientXform() * xform;
  // Nothing is drawn when the outline misses the window.
  const Box box = outlineBox(p, toPels);
  if (!(box.x1 >= 0.0 && box.y1 >= 0.0 && box.x0 <= pelBuffer.width() && box.y0 <= pelBuffer.height()))
    return;
  const kcRasterPels_ pels(pelBuffer);
  thread_local Scratch scratch;
  // Well inside the range of rounding (the chords of an arc stay within
  // its circle).
  constexpr double kSafe = kcRaster_::kInRange / 2;
  if (box.x0 > -kSafe && box.x1 < kSafe && box.y0 > -kSafe && box.y1 < kSafe)
    draw<true>(p, toPels, pels, grey, fill, outline, scratch);
  else
    draw<false>(p, toPels, pels, grey, fill, outline, scratch);
}
