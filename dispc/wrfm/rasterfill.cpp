// The scan-line fill of outlines made of lines and arcs. One edge table is
// built, every edge a piece of the outline along which y only grows or only
// falls in pel space, and is then walked row by row: each row takes the
// crossings of the edges it meets, sorts them and sets the pels between
// pairs. Arcs stay arcs: under the mapping an arc is an elliptical arc
// x = x0 + a cos t + b sin t, y = y0 + c cos t + d sin t, cut where y turns,
// and each row's crossing is solved for t.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "dispc/wrfm/raster.h"

namespace {
constexpr double kPerDegree = std::numbers::pi / 180.0;

struct Edge {
  // Rows first..last (inclusive) have their centres in [top, bottom).
  std::int32_t first = 0;
  std::int32_t last = -1;
  bool arc = false;
  // A line: x = x0 + slope (yc - y0).
  // An arc piece, on the ellipse of centre (x0, y0) whose y reaches y0 +- sqrt(h):
  // x = x0 + slope (yc - y0) + branch sqrt(h - (yc - y0)^2), the branch's
  // sign that of the side of the ellipse the piece runs along.
  double x0 = 0, y0 = 0, slope = 0, h = 0, branch = 0;

  [[nodiscard]] double crossing(double yc) const {
    const double dy = yc - y0;
    if (!arc) return x0 + slope * dy;
    return x0 + slope * dy + branch * std::sqrt(std::max(0.0, h - dy * dy));
  }
};

// Rows whose centres lie in [top, bottom).
void setRows(Edge& e, double top, double bottom) {
  e.first = ceilTol(top - 0.5);
  e.last = ceilTol(bottom - 0.5) - 1;
}

void addLine(std::vector<Edge>& edges, kcVector<2> p, kcVector<2> q) {
  if (p.y() == q.y()) return;  // a horizontal line crosses no row centre in its inside
  // The upper end first, so that an edge shared by two outlines gives the
  // same crossings whichever way each travels it.
  if (p.y() > q.y() || (p.y() == q.y() && p.x() > q.x())) std::swap(p, q);
  Edge e;
  e.x0 = p.x();
  e.y0 = p.y();
  e.slope = (q.x() - p.x()) / (q.y() - p.y());
  setRows(e, p.y(), q.y());
  if (e.first <= e.last) edges.push_back(e);
}

// The arc mapped into pels, cut at the parameters where y turns. On the
// ellipse x = x0 + a cos t + b sin t, y = y0 + c cos t + d sin t a row's
// two crossings are x0 + (ac + bd) dy / h +- |ad - bc| sqrt(h - dy^2) / h
// with h = c^2 + d^2: one square root per crossing, exact in IEEE arithmetic.
void addArc(std::vector<Edge>& edges, const kc2SegmentArc& arc, const kcXform<2>& toPels) {
  const kcXform<2> x = toPels * arc.xform();
  const kcMatrix<2>& m = x.matrix();
  const double radius = arc.radius_();
  const kcVector<2> centre = x * arc.center_();
  const double a = radius * m.element(0, 0), b = radius * m.element(0, 1);
  const double c = radius * m.element(1, 0), d = radius * m.element(1, 1);
  Edge e;
  e.arc = true;
  e.x0 = centre.x();
  e.y0 = centre.y();
  e.h = c * c + d * d;
  e.slope = (a * c + b * d) / e.h;
  const double across = std::fabs(a * d - b * c) / e.h;
  // y = y0 + sqrt(h) cos(t - phi) turns at phi + k pi.
  const double phi = std::atan2(d, c);
  const double s = arc.startAngle_().toDouble() * kPerDegree;
  const double span = arc.angleSpan_().toDouble() * kPerDegree;
  const double lo = std::min(s, s + span), hi = std::max(s, s + span);
  auto at = [&](double t) {
    return kcVector<2>(e.x0 + a * std::cos(t) + b * std::sin(t), e.y0 + c * std::cos(t) + d * std::sin(t));
  };
  for (double from = lo; from < hi;) {
    const double k = std::floor((from - phi) / std::numbers::pi);
    const double to = std::min(hi, phi + (k + 1) * std::numbers::pi);
    if (to > from) {
      Edge piece = e;
      // The side is that of the piece's middle, away from both turning points.
      const kcVector<2> middle = at((from + to) / 2);
      piece.branch = middle.x() - (e.x0 + e.slope * (middle.y() - e.y0)) >= 0.0 ? across : -across;
      const double y1 = at(from).y(), y2 = at(to).y();
      setRows(piece, std::min(y1, y2), std::max(y1, y2));
      if (piece.first <= piece.last) edges.push_back(piece);
    }
    from = to;
  }
}
}  // namespace

void kfFillPelBuf(kcPelBuffer<unsigned char> buffer, std::span<const kc2SegmentLine> lines,
                  std::span<const kc2SegmentArc> arcs, const kcXform<2>& xform, unsigned char grey) {
  if (buffer.width() <= 0 || buffer.height() <= 0) return;
  std::vector<Edge> all;
  all.reserve(lines.size() + 3 * arcs.size());
  for (const kc2SegmentLine& l : lines) addLine(all, xform * l.p1(), xform * l.p2());
  for (const kc2SegmentArc& a : arcs) addArc(all, a, xform);

  // The edges that meet the window, in order of their first row: a counting
  // sort over the rows they start in, linear where a comparison sort of
  // thousands of edges would cost more than filling their rows.
  const std::int32_t height = static_cast<std::int32_t>(buffer.height());
  std::int32_t top = height, bottom = -1;
  for (const Edge& e : all)
    if (e.last >= 0 && e.first < height) {
      // Edges that start above the window count from its first row.
      top = std::min(top, std::max<std::int32_t>(e.first, 0));
      bottom = std::max(bottom, std::max<std::int32_t>(e.first, 0));
    }
  if (bottom < top) return;
  std::vector<std::uint32_t> starts(static_cast<std::size_t>(bottom - top) + 2, 0);
  for (const Edge& e : all)
    if (e.last >= 0 && e.first < height) ++starts[std::max(e.first, top) - top + 1];
  for (std::size_t r = 1; r < starts.size(); ++r) starts[r] += starts[r - 1];
  std::vector<Edge> edges(starts.back());
  for (const Edge& e : all)
    if (e.last >= 0 && e.first < height) edges[starts[std::max(e.first, top) - top]++] = e;

  const long width = buffer.width();
  std::vector<const Edge*> active;
  std::vector<double> xs;
  std::size_t next = 0;
  std::int32_t ends = std::numeric_limits<std::int32_t>::max();  // the first row an active edge ends after
  std::int32_t row = edges.empty() ? height : std::max<std::int32_t>(edges.front().first, 0);
  for (; row < height; ++row) {
    while (next < edges.size() && edges[next].first <= row) {
      active.push_back(&edges[next]);
      ends = std::min(ends, edges[next++].last);
    }
    // Edges leave only at the rows where one ends.
    if (row > ends) {
      std::erase_if(active, [row](const Edge* e) { return e->last < row; });
      ends = std::numeric_limits<std::int32_t>::max();
      for (const Edge* e : active) ends = std::min(ends, e->last);
    }
    if (active.empty()) {
      if (next == edges.size()) break;
      continue;
    }
    xs.clear();
    const double yc = row + 0.5;
    for (const Edge* e : active) xs.push_back(e->crossing(yc));
    std::sort(xs.begin(), xs.end());
    unsigned char* pels = buffer.row(row);
    // Pels whose centres lie in [left, right): a pel on the left crossing is
    // inside, one on the right crossing is not, so outlines that share an
    // edge set each pel along it once.
    for (std::size_t i = 0; i + 1 < xs.size(); i += 2) {
      const long from = std::max<long>(ceilTol(xs[i] - 0.5), 0);
      const long to = std::min<long>(ceilTol(xs[i + 1] - 0.5), width);
      if (from < to) std::fill(pels + from, pels + to, grey);
    }
  }
}
