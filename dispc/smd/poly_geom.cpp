// The geometry of a poly: roundings, lengths, extensions, crossings,
// direction and boxes.
#include <algorithm>
#include <cmath>

#include "dispc/smd/poly.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyindex_p.h"
#include "dispc/smd/polyprivate.h"

namespace {
using P = kcSMDGDPolyPrivate;
constexpr double kFullTurn = 360.0;
constexpr double kHalfTurn = 180.0;
constexpr double kPerDegree = 0.017453292519943295;
// Points within this fraction of the outline's size from it are on it.
constexpr double kOnOutlineTol = 1e-9;
}  // namespace

kcSMDPiece_ kfSegmentPiece_(const kcSMDGDPoly& p, int s) {
  if (P::isArcSegment_(p, s)) return P::arcSegment_(p, s);
  return P::lineSegment_(p, s);
}

kcSMDPiece_ kfRoundedPiece_(const kcSMDGDPoly& p, int s) {
  if (P::isArcSegment_(p, s)) return P::roundedArcSegment_(p, s);
  return P::roundedLineSegment_(p, s);
}

std::vector<kcSMDPiece_> kfOutlinePieces_(const kcSMDGDPoly& p) {
  std::vector<kcSMDPiece_> pieces;
  const int n = static_cast<int>(p.vertices().size());
  for (int v = 0; v < n; ++v) {
    if (P::vertexIsRounded_(p, v) && P::roundSpan_(p, v) != 0.0) pieces.push_back(P::roundingArc_(p, v));
    const int s = v + 1 < n ? v + 1 : 0;
    if (!P::segmentExists_(p, s)) continue;
    try {
      pieces.push_back(kfRoundedPiece_(p, s));
    } catch (const kcShapesError::DegenerateShape&) {
      // The roundings at its ends meet: nothing is left of the segment.
    }
  }
  return pieces;
}

// --- segments ---

kcDegree kcSMDGDPoly::segmentStartDirection_(int s) const {
  return kfPieceStartDirection_(kfSegmentPiece_(*this, s));
}

kcDegree kcSMDGDPoly::segmentEndDirection_(int s) const {
  return kfPieceEndDirection_(kfSegmentPiece_(*this, s));
}

double kcSMDGDPoly::segmentLength_(int s) const {
  if (isArcSegment_(s)) return P::arcSegment_(*this, s).length();
  return vertices_[previousVertexIndex_(s)].point().distance(vertices_[nextVertexIndex_(s)].point());
}

double kcSMDGDPoly::roundedSegmentLength_(int s) const { return kfPieceLength_(kfRoundedPiece_(*this, s)); }

kcVector<2> kcSMDGDPoly::closestSegmentPoint_(int s, const kcVector<2>& p) const {
  return kfPieceClosestPoint_(kfSegmentPiece_(*this, s), p);
}

kcVector<2> kcSMDGDPoly::closestRoundedSegmentPoint_(int s, const kcVector<2>& p) const {
  return kfPieceClosestPoint_(kfRoundedPiece_(*this, s), p);
}

// --- roundings ---

// Both neighbours offset by the radius towards the inside of the corner meet
// at the centre. An interior neighbour lends only its half next to the
// corner, which is what bounds a radius; an end segment of an open poly lends
// all of itself.
kcVector<2> kcSMDGDPoly::roundPoint_(int v) const {
  const double r = std::fabs(vertices_[v].vertexRadius());
  const double d = P::vertexAngle(*this, v).toDouble() < 0.0 ? r : -r;
  const int in = previousSegmentIndex_(v);
  const int out = nextSegmentIndex_(v);
  auto endSegment = [&](int s) { return open_ && (s == firstSegmentIndex_() || s == lastSegmentIndex_()); };
  const kcSMDPiece_ incoming =
      isArcSegment_(in)
          ? kcSMDPiece_(endSegment(in) ? P::slideArc_(*this, in, d) : P::secondHalfSlideArc_(*this, in, d))
          : kcSMDPiece_(endSegment(in) ? P::slideLineSegment_(*this, in, d)
                                       : P::secondHalfSlideLineSegment_(*this, in, d));
  const kcSMDPiece_ outgoing =
      isArcSegment_(out)
          ? kcSMDPiece_(endSegment(out) ? P::slideArc_(*this, out, d) : P::firstHalfSlideArc_(*this, out, d))
          : kcSMDPiece_(endSegment(out) ? P::slideLineSegment_(*this, out, d)
                                        : P::firstHalfSlideLineSegment_(*this, out, d));
  const std::vector<kcVector<2>> found = kfPieceIntersection_(incoming, outgoing, false);
  if (found.size() == 1) return found[0];
  if (found.size() == 2) {
    const kcVector<2>& corner = vertices_[v].point();
    return corner.distance(found[0]) < corner.distance(found[1]) ? found[0] : found[1];
  }
  throw invalidRounding();
}

void kcSMDGDPoly::computeVertexRounding_(int v) {
  if (!vertexIsRounded_(v)) {
    setRounding_(v, vertices_[v].point(), vertices_[v].point(), 0.0);
    return;
  }
  const kcVector<2> centre = roundPoint_(v);
  const kcVector<2> start = closestSegmentPoint_(previousSegmentIndex_(v), centre);
  const kcVector<2> end = closestSegmentPoint_(nextSegmentIndex_(v), centre);
  const kcRadian span = (kcRadian((end - centre).angle()) - kcRadian((start - centre).angle())).signedNorm();
  setRounding_(v, start, end, kcDegree(span).toDouble());
}

// Exactly these: v, its two neighbours, and for the first vertex of a closed
// poly also the one two back.
void kcSMDGDPoly::computeVertexRoundings_(int v) {
  const int n = static_cast<int>(vertices_.size());
  computeVertexRounding_(v);
  if (n > 1) computeVertexRounding_(vertexIndex_(v - 1, true));
  if (n > 2) computeVertexRounding_(vertexIndex_(v + 1, true));
  if (n > 3 && v == 0 && !open_) computeVertexRounding_(vertexIndex_(v - 2, true));
}

// --- lengths ---

double kcSMDGDPoly::perimeter_(double minLength) const {
  double sum = 0.0;
  const int n = static_cast<int>(vertices_.size());
  for (int k = 0; k < n; ++k) {
    if (segmentExists_(k)) {
      const double length = roundedSegmentLength_(k);
      if (length > minLength) sum += length;
    }
    if (vertexIsRounded_(k)) {
      const double length = P::roundingArc_(*this, k).length();
      if (length > minLength) sum += length;
    }
  }
  return sum;
}

double kcSMDGDPoly::perimeter_(const kcXform<2>& xform) const {
  double sum = 0.0;
  const int n = static_cast<int>(vertices_.size());
  for (int k = 0; k < n; ++k) {
    if (segmentExists_(k)) sum += kfPieceLength_(kfMapPiece_(xform, kfRoundedPiece_(*this, k)));
    if (vertexIsRounded_(k)) sum += (xform * P::roundingArc_(*this, k)).length();
  }
  return sum;
}

double kcSMDGDPoly::extensionPerimeter_() const {
  double sum = perimeter_(0.0);
  const int n = static_cast<int>(vertices_.size());
  for (int s = 0; s < n; ++s)
    if (segmentExists_(s)) sum += (forwardPercExtension_(s) + backwardPercExtension_(s)) * segmentLength_(s);
  return sum;
}

// --- extensions ---

double kcSMDGDPoly::forwardPercExtension_(int s) const {
  return vertices_[nextVertexIndex_(s)].forwardPercExtension();
}

void kcSMDGDPoly::forwardPercExtension_(int s, double p) {
  mutating_();
  vertices_[nextVertexIndex_(s)].forwardPercExtension(p);
}

double kcSMDGDPoly::backwardPercExtension_(int s) const {
  return vertices_[previousVertexIndex_(s)].backwardPercExtension();
}

void kcSMDGDPoly::backwardPercExtension_(int s, double p) {
  mutating_();
  vertices_[previousVertexIndex_(s)].backwardPercExtension(p);
}

// Only real corners, turning by kExtensionCornerAngle or more, get extensions;
// the free ends of an open poly never do.
void kcSMDGDPoly::setExtensions_(double p) {
  auto corner = [&](int v) {
    if (isEndVertex(v)) return false;
    return std::fabs(P::vertexAngle(*this, v).norm().toDouble() - kHalfTurn) >= kExtensionCornerAngle;
  };
  const int n = static_cast<int>(vertices_.size());
  for (int s = 0; s < n; ++s) {
    if (!segmentExists_(s)) continue;
    backwardPercExtension_(s, 0.0);
    if (corner(previousVertexIndex_(s))) backwardPercExtension_(s, p);
    forwardPercExtension_(s, 0.0);
    if (corner(nextVertexIndex_(s))) forwardPercExtension_(s, p);
  }
}

void kcSMDGDPoly::checkExtensions_(kcSMDGDPoly& other, double distance, const kcDegree& angle,
                                   double minPercent, bool both) {
  const int n = static_cast<int>(vertices_.size());
  const int m = static_cast<int>(other.vertices_.size());
  for (int s = 0; s < n; ++s) {
    if (!segmentExists_(s)) continue;
    for (bool forward : {true, false}) {
      const double before = forward ? forwardPercExtension_(s) : backwardPercExtension_(s);
      if (before <= 0.0) continue;
      const kcSMDPiece_ whole = !isArcSegment_(s)
                                    ? kcSMDPiece_(forward ? P::forwardLineSegmentExtension_(*this, s)
                                                          : P::backwardLineSegmentExtension_(*this, s))
                                    : kcSMDPiece_(forward ? P::forwardArcSegmentExtension_(*this, s)
                                                          : P::backwardArcSegmentExtension_(*this, s));
      double percent = before;
      for (int k = 0; k < m && percent > 0.0; ++k) {
        if (!other.segmentExists_(k)) continue;
        // The piece for the percentage as it stands now, against segment k.
        std::visit([&](const auto& e,
                       const auto& t) { P::checkSegmentExtension_(percent, e, t, distance, angle, true); },
                   kfPiecePart_(whole, percent / before), kfSegmentPiece_(other, k));
      }
      if (percent < minPercent) percent = 0.0;
      if (percent == before) continue;
      if (forward)
        forwardPercExtension_(s, percent);
      else
        backwardPercExtension_(s, percent);
    }
  }
  if (both) other.checkExtensions_(*this, distance, angle, minPercent, false);
}

// --- measures ---

kcDegree kcSMDGDPoly::orientation_() const {
  if (vertices_.size() < 2) return kcDegree(0);
  return kcDegree((vertices_[1].point() - vertices_[0].point()).angle());
}

kcVector<2> kcSMDGDPoly::centerOfMass_() const noexcept {
  if (vertices_.empty()) return {};
  kcVector<2> sum;
  for (const kcSMDGDPolyVertex& v : vertices_) sum = sum + v.point();
  return sum / static_cast<double>(vertices_.size());
}

kcRect kcSMDGDPoly::boundingBox(const kcXform<2>& xform) const {
  kcRect box;
  const int n = static_cast<int>(vertices_.size());
  if (n == 1) return kcRect::fromCorners(xform * vertices_[0].point(), xform * vertices_[0].point());
  for (int k = 0; k < n; ++k) {
    if (segmentExists_(k)) box.enclose(kfPieceBox_(kfRoundedPiece_(*this, k), xform));
    if (vertexIsRounded_(k)) box.enclose(kfPieceBox_(P::roundingArc_(*this, k), xform));
  }
  return box;
}

// --- crossings ---

bool kcSMDGDPoly::vertexIntersectsVertex_(int a, int b) const { return !vertexIntersection_(a, b).empty(); }

std::vector<kcVector<2>> kcSMDGDPoly::vertexIntersection_(int a, int b) const {
  if (!vertexIsRounded_(a) || !vertexIsRounded_(b)) return {};
  return P::roundingArc_(*this, a).intersection(P::roundingArc_(*this, b), false);
}

bool kcSMDGDPoly::segmentIntersectsVertex_(int s, int v) const {
  return !segmentVertexIntersection_(s, v).empty();
}

std::vector<kcVector<2>> kcSMDGDPoly::segmentVertexIntersection_(int s, int v) const {
  if (!vertexIsRounded_(v)) return {};
  if (s == previousSegmentIndex_(v) || s == nextSegmentIndex_(v)) return {};
  return kfPieceIntersection_(P::roundingArc_(*this, v), kfRoundedPiece_(*this, s), false);
}

// Adjacent segments share a vertex, which is no crossing: the flag of the
// segment intersections drops it, and two adjacent lines never cross.
std::vector<kcVector<2>> kcSMDGDPoly::segmentIntersection_(int a, int b) const {
  const int bs = segmentIndex_(b, false);
  const int bStart = previousVertexIndex_(bs);
  const bool adjacent = a == previousSegmentIndex_(bStart) || a == nextSegmentIndex_(bs);
  const kcSMDPiece_ pa = kfRoundedPiece_(*this, a);
  const kcSMDPiece_ pb = kfRoundedPiece_(*this, bs);
  if (adjacent && std::holds_alternative<kc2SegmentLine>(pa) && std::holds_alternative<kc2SegmentLine>(pb))
    return {};
  return kfPieceIntersection_(pa, pb, adjacent);
}

bool kcSMDGDPoly::segmentMeetsElement_(int s, int j) const {
  if (segmentIntersectsVertex_(s, j)) return true;
  return segmentExists_(j) && j != s && segmentIntersectsSegment_(s, j);
}

bool kcSMDGDPoly::roundingMeetsElement_(int v, int j) const {
  if (j != v && vertexIntersectsVertex_(v, j)) return true;
  return segmentExists_(j) && segmentIntersectsVertex_(j, v);
}

bool kcSMDGDPoly::segmentIntersectsPoly_(int s, int upTo) const {
  return anyNear_(upTo, true, s, [&](int j) { return segmentMeetsElement_(s, j); });
}

bool kcSMDGDPoly::vertexIntersectsPoly_(int v, int upTo) const {
  if (!vertexIsRounded_(v)) return false;
  return anyNear_(upTo, false, v, [&](int j) { return roundingMeetsElement_(v, j); });
}

// Every j up to upTo in increasing order, skipping those the index shows to
// lie apart from the piece tested; the tests themselves are the same.
template <class Test>
bool kcSMDGDPoly::anyNear_(int upTo, bool ofSegment, int k, Test&& test) const {
  const int n = static_cast<int>(vertices_.size());
  if (upTo < 0) upTo = n - 1;
  kcSMDGDPolyIndex_::Bound bound;
  if (n >= kcSMDGDPolyIndex_::kMinVertices && kcSMDGDPolyIndex_::pieceBound(*this, ofSegment, k, bound)) {
    for (int j : index_().near(*this, bound, upTo))
      if (test(j)) return true;
    return false;
  }
  for (int j = 0; j <= upTo; ++j)
    if (test(j)) return true;
  return false;
}

// --- inside and direction ---

namespace {
// Crossings of the ray from probe in direction (degrees) with the pieces of p
// (all but segment skip), not counting points at the probe itself.
int crossings(const kcSMDGDPoly& p, const kcVector<2>& probe, double direction, int skip, double atProbe) {
  const kcFLine ray(probe, kcRadian(direction * kPerDegree));
  const kcVector<2> along(std::cos(direction * kPerDegree), std::sin(direction * kPerDegree));
  int count = 0;
  auto add = [&](const kcSMDPiece_& piece) {
    for (const kcVector<2>& q : kfPieceIntersection_(piece, ray))
      if ((q - probe).dot(along) > atProbe) ++count;
  };
  const int n = static_cast<int>(p.vertices().size());
  for (int k = 0; k < n; ++k) {
    if (k != skip && P::segmentExists_(p, k)) add(kfRoundedPiece_(p, k));
    if (P::vertexIsRounded_(p, k)) add(P::roundingArc_(p, k));
  }
  return count;
}

double outlineSize(const kcSMDGDPoly& p) {
  const kcRect box = p.boundingBox(kcXform<2>());
  return std::max({std::fabs(box.origin().x()), std::fabs(box.origin().y()), box.size().x(), box.size().y()});
}
}  // namespace

bool kcSMDGDPoly::inside_(const kcVector<2>& p) const {
  if (vertices_.size() < 2) return false;
  const double tol = kOnOutlineTol * outlineSize(*this);
  const int n = static_cast<int>(vertices_.size());
  for (int k = 0; k < n; ++k) {
    if (segmentExists_(k) && kfPieceClosestPoint_(kfRoundedPiece_(*this, k), p).distance(p) <= tol)
      return true;
    if (vertexIsRounded_(k) && P::roundingArc_(*this, k).distToPoint(p) <= tol) return true;
  }
  const double direction = P::safestDirection_(P::ranges_(*this, p, -1), 0.0, kFullTurn);
  return crossings(*this, p, direction, -1, tol) % 2 == 1;
}

// The ray leaves the middle of segment 1 to its left: inside lies there, and
// the poly runs counter-clockwise, when it crosses the outline an odd number
// of times. An arc's ray may cross the arc itself once more, which counts.
bool kcSMDGDPoly::isDirectionPositive() const {
  if (open_) throw notClosed();
  const int first = segmentIndex_(1, true);
  const kcSMDPiece_ piece = kfRoundedPiece_(*this, first);
  const kcVector<2> probe = kfPieceMiddle_(piece);
  const double left = kfPieceMidDirection_(piece).toDouble();
  const bool arc = std::holds_alternative<kc2SegmentArc>(piece);
  std::vector<double> ends = P::ranges_(*this, probe, arc ? -1 : first);
  const double direction = P::safestDirection_(std::move(ends), left, kHalfTurn);
  const double atProbe = kOnOutlineTol * outlineSize(*this);
  const bool odd = crossings(*this, probe, direction, arc ? -1 : first, atProbe) % 2 == 1;
  return reversed_ ? !odd : odd;
}
