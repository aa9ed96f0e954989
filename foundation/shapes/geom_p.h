// Private geometry shared by the shapes: nearest points on segments and on
// elliptical arcs in parametric form, their boxes and samples.
//
// An arc is P(t) = c + u cos t + v sin t for t from t0 over a signed span
// (|span| >= 2 pi: the whole ellipse); u and v are the images of the unit x
// and y directions, so any affine image of a circular or elliptical arc keeps
// this form: map c as a point and u, v as vectors. u and v must be linearly
// independent.
#pragma once

#include <vector>

#include "foundation/shapes/rect.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kcArchive;

// Regions count points within this fraction of their size outside the
// boundary as on it, so that points computed on the boundary (nearest points,
// samples, mapped corners) test inside despite rounding.
inline constexpr double kWithinTol_ = 1e-12;

// The point of the segment a-b nearest to p (a itself when a == b).
[[nodiscard]] kcVector<2> kfNearestOnSegment_(const kcVector<2>& a, const kcVector<2>& b,
                                              const kcVector<2>& p);

struct kcArcFoot_ {
  kcVector<2> point;  // the nearest point, P(t)
  double t = 0.0;     // its parameter, between t0 and t0 + span
  double distance = 0.0;
};

// The point of the arc nearest to p. Exact up to rounding: the candidates are
// the feet of the normals from p, found by bisection on the ellipse's own
// axes, and the two ends. Ties resolve to the first point along the arc.
[[nodiscard]] kcArcFoot_ kfNearestOnEllipseArc_(const kcVector<2>& c, const kcVector<2>& u,
                                                const kcVector<2>& v, double t0, double span,
                                                const kcVector<2>& p);

// The tight axis-aligned box of the arc.
[[nodiscard]] kcRect kfEllipseArcBox_(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v,
                                      double t0, double span);

// Appends points of the arc no more than spacing apart: P(t0) first, P(t0 +
// span) last only when withEnd is set.
void kfSampleEllipseArc_(const kcVector<2>& c, const kcVector<2>& u, const kcVector<2>& v, double t0,
                         double span, double spacing, bool withEnd, std::vector<kcVector<2>>& out);

// The larger semi-axis of the ellipse c + u cos t + v sin t (the largest
// singular value of the matrix [u v]).
[[nodiscard]] double kfEllipseMajorRadius_(const kcVector<2>& u, const kcVector<2>& v);

// --- vertex chains: polylines, polygons, segment lists ---

// The point nearest to p on the chain pts[0], pts[1], ... (closed: back to
// pts[0]); ties go to the first edge. pts must not be empty.
[[nodiscard]] kcVector<2> kfNearestOnChain_(const std::vector<kcVector<2>>& pts, bool closed,
                                            const kcVector<2>& p);
// Appends samples of the chain, its last point included (closed: pts[0] again).
void kfSampleChain_(const std::vector<kcVector<2>>& pts, bool closed, double spacing,
                    std::vector<kcVector<2>>& out);
// Inside the closed chain by the even-odd rule, or on one of its edges
// (within kWithinTol_ of the chain's size).
[[nodiscard]] bool kfWithinChain_(const std::vector<kcVector<2>>& pts, const kcVector<2>& p);
// The tight box of the points (empty for none).
[[nodiscard]] kcRect kfBoxOf_(const std::vector<kcVector<2>>& pts);
// Every point mapped by x.
[[nodiscard]] std::vector<kcVector<2>> kfMapPoints_(const kcXform<2>& x, const std::vector<kcVector<2>>& pts);
// True when every point equals the first (and for none).
[[nodiscard]] bool kfAllCoincide_(const std::vector<kcVector<2>>& pts);

// Archive form of a point list: a 32-bit count, then x and y of each point.
// Loading checks the count against the bytes left before it allocates, and
// every coordinate for finiteness (kcArchive::Corrupt).
void kfTransferPoints_(kcArchive& ar, std::vector<kcVector<2>>& pts);
