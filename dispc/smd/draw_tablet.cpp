// Drawing SMD polys and models on a tablet: wireframes, the outlines of
// negative polys, single segments over a drawing, and direction arrows.
//
// A wireframe goes to the tablet as one general polygon over the poly seen
// through the transform, so a device gets the whole rounded outline as one
// path and a recording tablet keeps it as one record.
#include <cmath>
#include <numbers>

#include "dispc/glist.h"
#include "dispc/smd/model.h"
#include "dispc/smd/modelprivate.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/tablet.h"
#include "dispc/wrfm/genpoly.h"

namespace {

using P = kcSMDGDPolyPrivate;
using V = kcVector<2>;

// The barbs of a direction arrow: a third of its length, 30 degrees off the shaft.
constexpr double kBarbPart = 1.0 / 3.0;
constexpr double kBarbAngle = std::numbers::pi / 6.0;
// Overlaid segments stand out over a 1-pel outline.
constexpr long kOverlayWidth = 2;

kcGraphicProps pen(const kcColor& color, long width, kcGraphicProps::kePenStyle style) {
  kcGraphicProps props(color, width, style, false);
  props.arrowHead(false);
  return props;
}

bool keepsOrientation(const kcXform<2>& x) {
  // As a wireframe judges its inside polarity under its transform.
  const kcMatrix<2>& m = x.matrix();
  return std::cos((m.xRot() - m.yRot()).toDouble()) >= 0.0;
}

V unitAt(double radians) { return {std::cos(radians), std::sin(radians)}; }

void checkArrowSize(double size) {
  if (!(size > 0.0) || !std::isfinite(size)) throw kcShapesError::BadParams();
}

// The arrow as three segments in client space.
kcLineSegSet arrowShape(const kcXform<2>& xform, const kc2Rigid& where, double size) {
  checkArrowSize(size);
  const double angle = where.angle().toDouble();
  const V centre = where.trans();
  const V tip = centre + unitAt(angle) * (size / 2.0);
  const V tail = centre - unitAt(angle) * (size / 2.0);
  const double barb = size * kBarbPart;
  const V left = tip - unitAt(angle + kBarbAngle) * barb;
  const V right = tip - unitAt(angle - kBarbAngle) * barb;
  return kcLineSegSet({kcLineSeg(xform * tail, xform * tip), kcLineSeg(xform * left, xform * tip),
                       kcLineSeg(xform * right, xform * tip)});
}

const kcColor& arrowColor(const kcXform<2>& xform, const kcColor& first, const kcColor& second) {
  return keepsOrientation(xform) ? first : second;
}

// Every arrow of p, each handed to draw(where, first, second).
template <class Draw>
void forEachArrow(const kcSMDGDPoly& p, Draw&& draw) {
  const bool positive = p.isOpen() || p.isDirectionPositive();
  const kcColor& first = positive ? p.positiveArrowColor() : p.negativeArrowColor();
  const kcColor& second = positive ? p.negativeArrowColor() : p.positiveArrowColor();
  // Segment s ends at vertex s; an open poly has no segment 0.
  for (int s = 0; s < p.numVertices(); ++s)
    if (P::segmentExists_(p, s)) draw(P::arrowPlace(p, s), first, second);
}

}  // namespace

// --- polys ---

void kcSMDGDPolyPrivate::drawWireframe(const kcSMDGDPoly& p, const kcXform<2>& xform, kcUITablet& tablet,
                                       const kcColor& color, kcUITablet::Layers layer) {
  if (p.numVertices() == 0) return;
  tablet.draw(kcGenPoly(p, xform, false), pen(color, 1, kcGraphicProps::penSolid), layer);
}

bool kcSMDGDPolyPrivate::isNegative(const kcSMDGDPoly& p, const kcXform<2>& xform) {
  if (p.isOpen()) return false;
  return p.isDirectionPositive() != keepsOrientation(xform);
}

void kcSMDGDPolyPrivate::drawNegWireframe(const kcSMDGDPoly& p, const kcXform<2>& xform, kcUITablet& tablet,
                                          const kcColor& color, kcUITablet::Layers layer) {
  if (p.numVertices() == 0 || !isNegative(p, xform)) return;
  tablet.draw(kcGenPoly(p, xform, false), pen(color, 1, kcGraphicProps::penDash), layer);
}

void kcSMDGDPolyPrivate::overlayLineSegment_(const kc2SegmentLine& s, const kcXform<2>& xform,
                                             kcUITablet& tablet, const kcColor& color,
                                             kcUITablet::Layers layer) {
  tablet.draw(kcLineSeg(xform * s.p1(), xform * s.p2()), pen(color, kOverlayWidth, kcGraphicProps::penSolid),
              layer);
}

void kcSMDGDPolyPrivate::overlayArc_(const kc2SegmentArc& a, const kcXform<2>& xform, kcUITablet& tablet,
                                     const kcColor& color, kcUITablet::Layers layer) {
  tablet.draw(a.ellipseArc().map(xform), pen(color, kOverlayWidth, kcGraphicProps::penSolid), layer);
}

kc2Rigid kcSMDGDPolyPrivate::arrowPlace(const kcSMDGDPoly& p, int s) {
  const double turn = p.isDirectionReversed() ? std::numbers::pi : 0.0;
  if (p.isArcSegment_(s)) {
    // Where the roundings leave nothing of the arc, the point they meet on.
    kc2SegmentArc arc = arcSegment_(p, s);
    double middle = 0.0;
    try {
      arc = roundedArcSegment_(p, s);
      middle = (arc.startAngle() + arc.angleSpan() / 2.0).toDouble();
    } catch (const kcShapesError::DegenerateShape&) {
      const V meet = p.roundStart_[static_cast<std::size_t>(p.nextVertexIndex_(s))];
      middle = kcDegree((meet - arc.center()).angle()).toDouble();
    }
    const double radians = middle * std::numbers::pi / 180.0;
    const double tangent =
        radians + (arc.angleSpan().toDouble() >= 0.0 ? 1.0 : -1.0) * std::numbers::pi / 2.0;
    return kc2Rigid(kcRadian(tangent + turn), arc.arcPoint(kcDegree(middle)));
  }
  const kc2SegmentLine whole = lineSegment_(p, s);
  const double along = whole.angle().toDouble() * std::numbers::pi / 180.0;
  V middle;
  try {
    middle = roundedLineSegment_(p, s).midPoint();
  } catch (const kcShapesError::DegenerateShape&) {
    middle = p.roundStart_[static_cast<std::size_t>(p.nextVertexIndex_(s))];
  }
  return kc2Rigid(kcRadian(along + turn), middle);
}

void kcSMDGDPoly::drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const {
  kcSMDGDPolyPrivate::drawWireframe(*this, xform, tablet, colors_.wireframeDefaultColor(),
                                    kcUITablet::mainLayer);
}

void kcSMDGDPoly::drawArrow(const kcXform<2>& xform, kcUITablet& tablet, const kc2Rigid& where, double size,
                            const kcColor& first, const kcColor& second) {
  tablet.draw(arrowShape(xform, where, size),
              pen(arrowColor(xform, first, second), 1, kcGraphicProps::penSolid), kcUITablet::mainLayer);
}

void kcSMDGDPoly::drawArrow(const kcXform<2>& xform, kcGraphicList& list, const kc2Rigid& where, double size,
                            const kcColor& first, const kcColor& second) {
  list.append(kfMakeHandle<kcGraphicSimple<kcLineSegSet>>(
      arrowShape(xform, where, size), pen(arrowColor(xform, first, second), 1, kcGraphicProps::penSolid)));
}

void kcSMDGDPoly::drawDirectionArrows(const kcXform<2>& xform, kcUITablet& tablet, double size) const {
  checkArrowSize(size);
  forEachArrow(*this, [&](const kc2Rigid& where, const kcColor& first, const kcColor& second) {
    drawArrow(xform, tablet, where, size, first, second);
  });
}

void kcSMDGDPoly::drawDirectionArrows(const kcXform<2>& xform, kcGraphicList& list, double size) const {
  checkArrowSize(size);
  // Made whole before the list takes any, so a failure adds nothing.
  kcGraphicList arrows;
  forEachArrow(*this, [&](const kc2Rigid& where, const kcColor& first, const kcColor& second) {
    drawArrow(xform, arrows, where, size, first, second);
  });
  list.append(arrows, false);
}

// --- models ---

void kcSMDGDModel::drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const {
  for (const kcSMDGDPoly& p : polys_) p.drawWireframe(xform, tablet);
}

void kcSMDGDModel::drawDirectionArrows(const kcXform<2>& xform, kcUITablet& tablet, double size) const {
  checkArrowSize(size);
  for (const kcSMDGDPoly& p : polys_) p.drawDirectionArrows(xform, tablet, size);
}

void kcSMDGDModel::drawDirectionArrows(const kcXform<2>& xform, kcGraphicList& list, double size) const {
  checkArrowSize(size);
  kcGraphicList arrows;
  for (const kcSMDGDPoly& p : polys_) p.drawDirectionArrows(xform, arrows, size);
  list.append(arrows, false);
}

void kcSMDGDModelPrivate::drawNegWireframe(const kcSMDGDModel& m, const kcXform<2>& xform, kcUITablet& tablet,
                                           const kcColor& color, kcUITablet::Layers layer) {
  for (const kcSMDGDPoly& p : m.polys()) kcSMDGDPolyPrivate::drawNegWireframe(p, xform, tablet, color, layer);
}
