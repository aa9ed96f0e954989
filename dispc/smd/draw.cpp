// Drawing SMD polys: synthetic grey images through the rasterisers.
#include <cmath>
#include <variant>
#include <vector>

#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/wrfm/raster.h"

namespace {
// The pen width of a synthetic outline: one pel.
constexpr signed char kOutlineWidth = 1;
}  // namespace

void kcSMDGDPolyPrivate::drawSynthetic(const kcSMDGDPoly& p, const kcXform<2>& xform,
                                       kcPelBuffer<unsigned char>& pelBuffer, unsigned char grey,
                                       bool fillClosedOnly, bool outline) {
  if (p.vertices_.empty() || pelBuffer.width() <= 0 || pelBuffer.height() <= 0) return;
  // Client -> image -> the window's pels, which put and row address.
  const kcXform<2> toPels =
      kcXform<2>(kcMatrix<2>(), kcVector<2>(-pelBuffer.offsetX(), -pelBuffer.offsetY())) *
      pelBuffer.imageFromClientXform() * xform;
  std::vector<kc2SegmentLine> lines;
  std::vector<kc2SegmentArc> arcs;
  for (kcSMDPiece_& piece : kfOutlinePieces_(p)) {
    if (auto* line = std::get_if<kc2SegmentLine>(&piece))
      lines.push_back(*line);
    else
      arcs.push_back(std::get<kc2SegmentArc>(piece));
  }
  // A box that holds the mapped outline (an arc's whole mapped circle):
  // nothing is drawn when it misses the window.
  const kcMatrix<2>& m = toPels.matrix();
  const double reachX = std::hypot(m.element(0, 0), m.element(0, 1));
  const double reachY = std::hypot(m.element(1, 0), m.element(1, 1));
  kcRect box;
  box.enclose(toPels * p.vertices_.front().point()).enclose(toPels * p.vertices_.back().point());
  for (const kc2SegmentLine& l : lines) box.enclose(toPels * l.p1()).enclose(toPels * l.p2());
  for (const kc2SegmentArc& a : arcs) {
    const kcVector<2> c = toPels * a.center_();
    const kcVector<2> reach(a.radius_() * reachX, a.radius_() * reachY);
    box.enclose(c - reach).enclose(c + reach);
  }
  if (box.xMax() < 0.0 || box.yMax() < 0.0 || box.xMin() > pelBuffer.width() ||
      box.yMin() > pelBuffer.height())
    return;
  if (!(fillClosedOnly && p.open_)) {
    std::vector<kc2SegmentLine> closed = lines;
    const kcVector<2>& first = p.vertices_.front().point();
    const kcVector<2>& last = p.vertices_.back().point();
    if (p.open_ && first != last) closed.emplace_back(last, first);
    kfFillPelBuf(pelBuffer, closed, arcs, toPels, grey);
  }
  if (!outline) return;
  const auto pen = static_cast<signed char>(grey);
  for (const kc2SegmentLine& l : lines) drawLinePelBuf(pelBuffer, l, toPels, pen, kOutlineWidth);
  for (const kc2SegmentArc& a : arcs)
    drawArcPelBuf(pelBuffer, a, toPels, pen, kOutlineWidth, nullptr, nullptr, nullptr, nullptr);
}
