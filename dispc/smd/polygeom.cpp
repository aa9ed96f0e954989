#include "dispc/smd/polygeom_p.h"

namespace {
template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;
}  // namespace

// Arcs carry the line-arc and arc-arc cases, so a line meeting an arc asks the arc.
std::vector<kcVector<2>> kfPieceIntersection_(const kcSMDPiece_& a, const kcSMDPiece_& b, bool flag) {
  return std::visit(
      Overloaded{[&](const kc2SegmentLine& x, const kc2SegmentLine& y) { return x.intersection(y, flag); },
                 [&](const kc2SegmentLine& x, const kc2SegmentArc& y) { return y.intersection(x, flag); },
                 [&](const kc2SegmentArc& x, const kc2SegmentLine& y) { return x.intersection(y, flag); },
                 [&](const kc2SegmentArc& x, const kc2SegmentArc& y) { return x.intersection(y, flag); }},
      a, b);
}

std::vector<kcVector<2>> kfPieceIntersection_(const kcSMDPiece_& a, const kcFLine& line) {
  return std::visit([&](const auto& x) { return x.intersection(line, false); }, a);
}

kcVector<2> kfPieceClosestPoint_(const kcSMDPiece_& piece, const kcVector<2>& p) {
  return std::visit([&](const auto& x) { return x.closestPoint(p); }, piece);
}

double kfPieceLength_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.length(); }, piece);
}

kcVector<2> kfPieceStart_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.p1(); }, piece);
}

kcVector<2> kfPieceEnd_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.p2(); }, piece);
}

kcVector<2> kfPieceMiddle_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.midPoint(); }, piece);
}

kcDegree kfPieceStartDirection_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.startDirection(); }, piece);
}

kcDegree kfPieceEndDirection_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.endDirection(); }, piece);
}

kcDegree kfPieceMidDirection_(const kcSMDPiece_& piece) {
  return std::visit([](const auto& x) { return x.midDirection(); }, piece);
}

kcSMDPiece_ kfMapPiece_(const kcXform<2>& xform, const kcSMDPiece_& piece) {
  return std::visit([&](const auto& x) -> kcSMDPiece_ { return xform * x; }, piece);
}

kcRect kfPieceBox_(const kcSMDPiece_& piece, const kcXform<2>& xform) {
  return std::visit(
      Overloaded{[&](const kc2SegmentLine& x) { return kcRect::fromCorners(xform * x.p1(), xform * x.p2()); },
                 [&](const kc2SegmentArc& x) {
                   return xform.isIdentity() && x.xform().isIdentity() ? x.boundingBox_()
                                                                       : (xform * x).boundingBox();
                 }},
      piece);
}

kc2SegmentLine kfPiecePart_(const kc2SegmentLine& piece, double f) {
  return kc2SegmentLine(piece.p1(), piece.segPoint(f));
}

kc2SegmentArc kfPiecePart_(const kc2SegmentArc& piece, double f) {
  return kc2SegmentArc(piece.center_(), piece.radius_(), piece.startAngle_(),
                       kcDegree(piece.angleSpan_().toDouble() * f));
}

kcSMDPiece_ kfPiecePart_(const kcSMDPiece_& piece, double f) {
  return std::visit([&](const auto& x) -> kcSMDPiece_ { return kfPiecePart_(x, f); }, piece);
}
