// The pieces of an SMD poly's outline (straight and circular segments, their
// trimmed parts, rounding arcs) handled alike.
#pragma once

#include <variant>
#include <vector>

#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/lineseg.h"
#include "foundation/angle.h"
#include "foundation/shapes/rect.h"
#include "foundation/xform.h"

using kcSMDPiece_ = std::variant<kc2SegmentLine, kc2SegmentArc>;

// The segment intersection of two pieces, whichever their kinds.
[[nodiscard]] std::vector<kcVector<2>> kfPieceIntersection_(const kcSMDPiece_& a, const kcSMDPiece_& b,
                                                            bool flag);
[[nodiscard]] std::vector<kcVector<2>> kfPieceIntersection_(const kcSMDPiece_& a, const kcFLine& line);
[[nodiscard]] kcVector<2> kfPieceClosestPoint_(const kcSMDPiece_& piece, const kcVector<2>& p);
[[nodiscard]] double kfPieceLength_(const kcSMDPiece_& piece);
[[nodiscard]] kcVector<2> kfPieceStart_(const kcSMDPiece_& piece);
[[nodiscard]] kcVector<2> kfPieceEnd_(const kcSMDPiece_& piece);
[[nodiscard]] kcVector<2> kfPieceMiddle_(const kcSMDPiece_& piece);
[[nodiscard]] kcDegree kfPieceStartDirection_(const kcSMDPiece_& piece);
[[nodiscard]] kcDegree kfPieceEndDirection_(const kcSMDPiece_& piece);
[[nodiscard]] kcDegree kfPieceMidDirection_(const kcSMDPiece_& piece);
// The tight box; for a mapped piece, of the mapped piece.
[[nodiscard]] kcRect kfPieceBox_(const kcSMDPiece_& piece, const kcXform<2>& xform);
[[nodiscard]] kcSMDPiece_ kfMapPiece_(const kcXform<2>& xform, const kcSMDPiece_& piece);
// The piece from its start over the fraction f of it (a line cut short, an
// arc of the same circle with f of the sweep).
[[nodiscard]] kc2SegmentLine kfPiecePart_(const kc2SegmentLine& piece, double f);
[[nodiscard]] kc2SegmentArc kfPiecePart_(const kc2SegmentArc& piece, double f);
[[nodiscard]] kcSMDPiece_ kfPiecePart_(const kcSMDPiece_& piece, double f);

class kcSMDGDPoly;
// Segment s of a poly as a piece: whole, or trimmed by the roundings at its ends.
[[nodiscard]] kcSMDPiece_ kfSegmentPiece_(const kcSMDGDPoly& p, int s);
[[nodiscard]] kcSMDPiece_ kfRoundedPiece_(const kcSMDGDPoly& p, int s);
// The rounded outline in travel order from vertex 0: at each vertex its
// rounding arc (when rounded), then the trimmed segment that leaves it.
// A segment whose roundings meet is left out.
[[nodiscard]] std::vector<kcSMDPiece_> kfOutlinePieces_(const kcSMDGDPoly& p);
