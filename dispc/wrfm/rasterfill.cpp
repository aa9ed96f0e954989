// The scan-line fill of outlines made of lines and arcs. One edge table is
// built, every edge a piece of the outline along which y only grows or only
// falls in pel space, and is then walked row by row: each row takes the
// crossings of the edges it meets, sorts them and sets the pels between
// pairs. Arcs stay arcs: under the mapping an arc is an elliptical arc
// x = x0 + a ux + b uy, y = y0 + c ux + d uy over unit vectors u, cut where
// y turns, and each row's crossing is solved on the ellipse.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "dispc/wrfm/raster.h"
#include "dispc/wrfm/raster_p.h"

namespace {
// Above this many crossings in a row a comparison sort beats insertion.
constexpr std::size_t kInsertionSortLimit = 24;
// Rows whose crossings are worked out together before their spans are set.
constexpr std::int32_t kBlock = 32;
// An edge table this large is given back after use rather than kept.
constexpr std::size_t kKeptEdges = std::size_t{1} << 16;

// The angle of (x, y) as a number in [0, 4) that grows with it: a quarter
// turn per unit, without trigonometry.
double diamondAngle(double x, double y) noexcept {
  if (y >= 0.0) return x >= 0.0 ? y / (x + y) : 1.0 - x / (y - x);
  return x < 0.0 ? 2.0 - y / (-x - y) : 3.0 + x / (x - y);
}

// Sets line[from..to) to grey: short spans in 16-pel stores, where a call
// to memset and its choice of method would cost more than the stores.
void fillPels(unsigned char* line, long from, long to, unsigned char grey) noexcept {
  constexpr long kLong = 128;
  if (from >= to) return;
  unsigned char* p = line + from;
  const long n = to - from;
  if (n >= kLong) {
    std::memset(p, grey, static_cast<std::size_t>(n));
    return;
  }
  if (n < 16) {
    for (long i = 0; i < n; ++i) p[i] = grey;
    return;
  }
  unsigned char block[16];
  std::memset(block, grey, sizeof block);
  // The last store may overlap the one before it.
  for (long i = 0; i + 16 < n; i += 16) std::memcpy(p + i, block, 16);
  std::memcpy(p + n - 16, block, 16);
}

void insertionSort(double* xs, std::size_t n) noexcept {
  for (std::size_t i = 1; i < n; ++i) {
    const double v = xs[i];
    std::size_t j = i;
    for (; j > 0 && xs[j - 1] > v; --j) xs[j] = xs[j - 1];
    xs[j] = v;
  }
}
}  // namespace

// Rows whose centres lie in [top, bottom).
void kcRasterFill_::add(const Edge& e, double top, double bottom) {
  const bool in = std::fabs(top) < kcRaster_::kInRange && std::fabs(bottom) < kcRaster_::kInRange;
  const std::int32_t first = in ? kcRaster_::ceilIn(top - 0.5) : ceilTol(top - 0.5);
  // In 64 bits: below a saturated ceiling the row before may not exist.
  const std::int64_t last =
      static_cast<std::int64_t>(in ? kcRaster_::ceilIn(bottom - 0.5) : ceilTol(bottom - 0.5)) - 1;
  if (first > last) return;
  Edge& kept = edges_.emplace_back(e);
  kept.first = first;
  kept.last = static_cast<std::int32_t>(last);  // below the largest: last + 1 cannot overflow
}

void kcRasterFill_::line(const kcVector<2>& p, const kcVector<2>& q, bool stroke) {
  if (p.y() == q.y()) return;  // a horizontal line crosses no row centre in its inside
  // The upper end first, so that an edge shared by two outlines gives the
  // same crossings whichever way each travels it.
  const bool down = p.y() < q.y();
  const double x0 = down ? p.x() : q.x(), y0 = down ? p.y() : q.y();
  const double x1 = down ? q.x() : p.x(), y1 = down ? q.y() : p.y();
  add({x0, y0, (x1 - x0) / (y1 - y0), 0.0, 0.0, 0, 0, stroke && kcRaster_::steep(p, q)}, y0, y1);
}

// On the ellipse a row at y0 + dy is crossed at
// x0 + (ac + bd) dy / h +- (ad - bc) sqrt(h - dy^2) / h, h = c^2 + d^2: one
// square root per crossing. y turns where u is +-(c, d) / sqrt(h), at
// y0 +- sqrt(h); between turns, x - x0 - slope dy has the sign of
// (ad - bc) dy/dt, which the direction of travel and the piece's rise give
// without an angle.
void kcRasterFill_::arc(const Arc& arc) {
  const double h = arc.c * arc.c + arc.d * arc.d;
  if (h == 0.0) return;  // flattened onto one row: crosses no row centre
  const double root = std::sqrt(h), overRoot = 1.0 / root, overH = 1.0 / h;
  const double det = arc.a * arc.d - arc.b * arc.c;
  const double turn = arc.sweep >= 0.0 ? 1.0 : -1.0;
  // The ys at which the arc's pieces meet, in the order of travel.
  struct Stop {
    double at, y;
  };
  Stop stops[4] = {{0.0, arc.p0.y()}, {0.0, 0.0}, {0.0, 0.0}, {0.0, arc.p1.y()}};
  int n = 1;
  // The directions u at which y is highest (largest) and lowest.
  const double nx = arc.c * overRoot, ny = arc.d * overRoot;
  if (std::fabs(arc.sweep) <= 180.0) {
    // At most one of two opposite directions lies within: the one on the
    // inner side of both ends.
    auto within = [&](double x, double y) {
      return turn * (arc.u0.x() * y - arc.u0.y() * x) > 0.0 && turn * (x * arc.u1.y() - y * arc.u1.x()) > 0.0;
    };
    if (within(nx, ny))
      stops[n++].y = arc.centre.y() + root;
    else if (within(-nx, -ny))
      stops[n++].y = arc.centre.y() - root;
  } else {
    // Angles from u0 in the direction of travel.
    auto angle = [&](double x, double y) {
      return diamondAngle(arc.u0.x() * x + arc.u0.y() * y, turn * (arc.u0.x() * y - arc.u0.y() * x));
    };
    double end = angle(arc.u1.x(), arc.u1.y());
    // Near a whole turn, the sweep says that the ends mean one.
    if (std::fabs(arc.sweep) > 270.0 && end < 1.0) end = 4.0;
    const double lowest = angle(-nx, -ny);
    const double highest = angle(nx, ny);
    if (lowest > 0.0 && lowest < end) stops[n++] = {lowest, arc.centre.y() - root};
    if (highest > 0.0 && highest < end) stops[n++] = {highest, arc.centre.y() + root};
    if (n == 3 && stops[2].at < stops[1].at) std::swap(stops[1], stops[2]);
  }
  stops[n++] = stops[3];
  const Edge e{arc.centre.x(), arc.centre.y(), (arc.a * arc.c + arc.b * arc.d) * overH, h, 0.0, 0, 0, false};
  for (int k = 0; k + 1 < n; ++k) {
    const double y1 = stops[k].y, y2 = stops[k + 1].y;
    if (y1 == y2) continue;
    Edge piece = e;
    piece.branch = det * overH * (y2 > y1 ? turn : -turn);
    add(piece, std::min(y1, y2), std::max(y1, y2));
  }
}

void kcRasterFill_::fill(const kcRasterPels_& pels, unsigned char grey) {
  const auto height = static_cast<std::int32_t>(pels.height());
  const long width = pels.width();
  // The edges that meet the window, in buckets by the row they start in
  // (edges that start above the window count from its first row): each
  // bucket a list threaded through next_, built in one pass with no copy of
  // an edge, where a sort of thousands of edges would cost more than
  // filling their rows.
  std::int32_t top = height, bottom = -1;
  for (const Edge& e : edges_)
    if (e.last >= 0 && e.first < height) {
      const std::int32_t from = std::max<std::int32_t>(e.first, 0);
      top = std::min(top, from);
      bottom = std::max(bottom, from);
    }
  if (bottom < top) return;
  constexpr std::uint32_t kNone = ~std::uint32_t{0};
  heads_.assign(static_cast<std::size_t>(bottom - top) + 1, kNone);
  next_.resize(edges_.size());
  for (std::uint32_t i = 0; i < edges_.size(); ++i) {
    const Edge& e = edges_[i];
    if (e.last < 0 || e.first >= height) continue;
    std::uint32_t& head = heads_[std::max(e.first, top) - top];
    next_[i] = head;
    head = i;
  }
  active_.clear();
  xs_.resize(edges_.size());

  const double beyond = static_cast<double>(width) + 1.0;
  // A line has branch 0 and takes no square root: the test stays out of
  // the loops over rows, where the edges are fixed. Crossings beyond the
  // window count as just beyond it, so that they round without saturating
  // (NaN counts as left of it).
  auto crossing = [beyond](const Edge& e, double yc) {
    const double dy = yc - e.y0;
    double x = e.x0 + e.slope * dy;
    if (e.branch != 0.0) x += e.branch * std::sqrt(std::max(0.0, e.h - dy * dy));
    return std::max(-1.0, std::min(x, beyond));
  };
  // The first and the one past the last pel whose centres lie in
  // [left, right). Only pels from 0 on matter, so the ceiling is taken of
  // positive numbers alone: rounded to the nearest whole number by adding
  // 1.5 * 2^52 (the number lands in the low bits), then raised by one where
  // that fell below.
  auto ceilPos = [](double w) {
    constexpr double kMagic = 6755399441055744.0;
    const double t = w * kcRaster_::kShrink;
    const double r = t + kMagic;
    std::int64_t bits;
    std::memcpy(&bits, &r, sizeof bits);
    const auto i = static_cast<std::int32_t>(bits) + ((r - kMagic) < t);
    return w > 0.0 ? static_cast<long>(i) : 0L;
  };
  auto first = [&](double left) { return ceilPos(left - 0.5); };
  auto end = [&](double right) { return std::min(ceilPos(right - 0.5), width); };
  auto span = [&](std::int32_t row, double left, double right) {
    fillPels(pels.row(row), first(left), end(right), grey);
  };
  // The next row at or after row whose bucket holds an edge, or height.
  std::int32_t starting = top;
  auto nextStart = [&](std::int32_t row) {
    starting = std::max(starting, row);
    while (starting <= bottom && heads_[starting - top] == kNone) ++starting;
    return starting <= bottom ? starting : height;
  };
  for (std::int32_t row = top; row < height;) {
    if (row <= bottom)
      for (std::uint32_t i = heads_[row - top]; i != kNone; i = next_[i]) active_.push_back(edges_[i]);
    // The rows until an edge joins or leaves; ended edges leave (order
    // among the active edges does not matter: the crossings are sorted).
    std::int32_t stop = nextStart(row + 1);
    for (std::size_t k = 0; k < active_.size();) {
      if (active_[k].last < row) {
        active_[k] = active_.back();
        active_.pop_back();
        continue;
      }
      stop = std::min(stop, active_[k++].last + 1);
    }
    if (active_.empty()) {
      row = stop;
      continue;
    }
    if (active_.size() == 2) {
      // One span a row, the common case: the crossings of a block of rows
      // are worked out before any is filled, so that their long chains of
      // arithmetic overlap instead of waiting on each row's fill.
      const Edge &e1 = active_[0], &e2 = active_[1];
      const bool stroke = e1.stroke || e2.stroke;
      for (std::int32_t r = row; r < stop; r += kBlock) {
        const std::int32_t rows = std::min(kBlock, stop - r);
        long froms[kBlock], ends[kBlock];
        std::int32_t pel1[kBlock], pel2[kBlock];
        for (std::int32_t k = 0; k < rows; ++k) {
          const double yc = r + k + 0.5;
          const double x1 = crossing(e1, yc), x2 = crossing(e2, yc);
          froms[k] = first(std::min(x1, x2));
          ends[k] = end(std::max(x1, x2));
          // The outline pels, at -1 (left of the window) for an edge without.
          pel1[k] = e1.stroke ? kcRaster_::floorAt<true>(x1) : -1;
          pel2[k] = e2.stroke ? kcRaster_::floorAt<true>(x2) : -1;
        }
        for (std::int32_t k = 0; k < rows; ++k) {
          unsigned char* const line = pels.row(r + k);
          fillPels(line, froms[k], ends[k], grey);
          if (stroke) {
            if (static_cast<unsigned long>(pel1[k]) < static_cast<unsigned long>(width)) line[pel1[k]] = grey;
            if (static_cast<unsigned long>(pel2[k]) < static_cast<unsigned long>(width)) line[pel2[k]] = grey;
          }
        }
      }
    } else {
      for (std::int32_t r = row; r < stop; ++r) {
        const double yc = r + 0.5;
        std::size_t count = 0;
        for (const Edge& e : active_) {
          const double x = crossing(e, yc);
          xs_[count++] = x;
          if (e.stroke) pels.put(kcRaster_::floorAt<true>(x), r, grey);
        }
        if (count > kInsertionSortLimit)
          std::sort(xs_.begin(), xs_.begin() + static_cast<std::ptrdiff_t>(count));
        else
          insertionSort(xs_.data(), count);
        for (std::size_t i = 0; i + 1 < count; i += 2) span(r, xs_[i], xs_[i + 1]);
      }
    }
    row = stop;
  }
  if (edges_.capacity() > kKeptEdges) {
    edges_ = {};
    next_ = {};
    active_ = {};
    xs_ = {};
  }
  if (heads_.capacity() > kKeptEdges) heads_ = {};
}

void kfFillPelBuf(kcPelBuffer<unsigned char> buffer, std::span<const kc2SegmentLine> lines,
                  std::span<const kc2SegmentArc> arcs, const kcXform<2>& xform, unsigned char grey) {
  if (buffer.width() <= 0 || buffer.height() <= 0) return;
  constexpr double kPerDegree = 0.017453292519943295;
  kcRasterFill_ table;
  for (const kc2SegmentLine& l : lines) table.line(xform * l.p1(), xform * l.p2());
  for (const kc2SegmentArc& a : arcs) {
    // The arc's own transform joins the mapping; its circle stays a circle.
    const kcXform<2> x = xform * a.xform();
    const kcMatrix<2>& m = x.matrix();
    const double r = a.radius_();
    const double s = a.startAngle_().toDouble() * kPerDegree;
    const double e = s + a.angleSpan_().toDouble() * kPerDegree;
    table.arc({x * a.center_(), r * m.element(0, 0), r * m.element(0, 1), r * m.element(1, 0),
               r * m.element(1, 1), kcVector<2>(std::cos(s), std::sin(s)),
               kcVector<2>(std::cos(e), std::sin(e)), a.angleSpan_().toDouble(), xform * a.p1(),
               xform * a.p2()});
  }
  table.fill(kcRasterPels_(buffer), grey);
}
