#include "dispc/smd/polyprivate.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyindex_p.h"

namespace {
constexpr const char* kSource = "dispc/smd/polyprivate";
constexpr unsigned char kVersion = 0;
constexpr double kFullTurn = 360.0;
constexpr double kPerDegree = 0.017453292519943295;
// Extension percentages below this are none.
constexpr double kMinExtension = 1e-3;
// A similarity's turn may differ from an exact one by this fraction of its scale.
constexpr double kSimilarityTol = 1e-12;

kcVector<2> rightNormal(const kcDegree& direction) {
  const kcRadian a(direction);
  return {sin(a), -cos(a)};
}

// The arc of a's circle from angle start over span.
kc2SegmentArc onCircle(const kc2SegmentArc& a, double start, double span) {
  return kc2SegmentArc(a.center_(), a.radius_(), kcDegree(start), kcDegree(span));
}

// The sweep from angle `from` to angle `to` travelled the way of direction
// (its sign), in (-360, 360).
double sweepBetween(double from, double to, double direction) {
  if (direction >= 0.0) return kcDegree(to - from).norm().toDouble();
  return -kcDegree(from - to).norm().toDouble();
}

double angleOf(const kcVector<2>& v) { return kcDegree(v.angle()).toDouble(); }
}  // namespace

KC_DEFINE_PERSISTENT(kcSMDGDPolyPrivate);

void kcSMDGDPolyPrivate::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcSMDGDPolyPrivate::serialize_(kcArchive& ar, unsigned char version) {
  if (version > kVersion) throw kcArchive::UnknownVersion(kSource, __LINE__);
  kcSMDGDPoly::dispatchSerialize(ar);
}

void kcSMDGDPolyPrivate::assignVertices_(kcSMDGDPoly& p, std::vector<kcSMDGDPolyVertex> list, bool open) {
  p.mutating_();
  p.vertices_ = std::move(list);
  p.roundStart_.clear();
  p.roundEnd_.clear();
  for (const kcSMDGDPolyVertex& v : p.vertices_) {
    p.roundStart_.push_back(v.point());
    p.roundEnd_.push_back(v.point());
  }
  p.roundSpan_.assign(p.vertices_.size(), 0.0);
  p.open_ = open;
  p.labels_.clear();
  for (const kcSMDGDPolyVertex& v : p.vertices_) p.addVertexLabel_(v);
  if (p.spatial_) p.spatial_->invalidate();
}

// --- segment shapes ---

kc2SegmentLine kcSMDGDPolyPrivate::lineSegment_(const kcSMDGDPoly& p, int s) {
  const int end = p.nextVertexIndex_(s);
  return kc2SegmentLine(p.vertices_[p.previousVertexIndex_(s)].point(), p.vertices_[end].point());
}

kc2SegmentArc kcSMDGDPolyPrivate::arcSegment_(const kcSMDGDPoly& p, int s) {
  const int end = p.nextVertexIndex_(s);
  return kc2SegmentArc(p.vertices_[p.previousVertexIndex_(s)].point(), p.vertices_[end].point(),
                       p.vertices_[end].segmentAngleSpan());
}

kc2SegmentLine kcSMDGDPolyPrivate::roundedLineSegment_(const kcSMDGDPoly& p, int s) {
  const int end = p.nextVertexIndex_(s);
  return kc2SegmentLine(p.roundEnd_[p.previousVertexIndex_(s)], p.roundStart_[end]);
}

// The same circle between the two tangent points; the sweep keeps the arc's
// sense, and roundings that overlap on it leave a piece travelled backwards,
// as a trimmed line would be.
kc2SegmentArc kcSMDGDPolyPrivate::roundedArcSegment_(const kcSMDGDPoly& p, int s) {
  const int end = p.nextVertexIndex_(s);
  const int start = p.previousVertexIndex_(s);
  const kc2SegmentArc whole = arcSegment_(p, s);
  if (!p.vertexIsRounded_(start) && !p.vertexIsRounded_(end)) return whole;
  const kcVector<2>& a = p.roundEnd_[start];
  const kcVector<2>& b = p.roundStart_[end];
  if (a == b) throw kcShapesError::DegenerateShape();
  const double span = whole.angleSpan_().toDouble();
  const double from = angleOf(a - whole.center_());
  double sweep = sweepBetween(from, angleOf(b - whole.center_()), span);
  if (std::fabs(sweep) > std::fabs(span) + kcSMDGDPoly::kZeroTol) sweep -= std::copysign(kFullTurn, span);
  return onCircle(whole, from, sweep);
}

std::wstring kcSMDGDPolyPrivate::rebuildRefusal(const kcSMDGDPoly& p) {
  kcSMDGDPoly rebuilt(p.name());
  std::size_t i = 0;
  try {
    for (; i < p.vertices().size(); ++i) rebuilt << p.vertices()[i];
    if (p.isClosed()) rebuilt.close();
  } catch (const kcException& e) {
    const std::wstring where = i < p.vertices().size() ? L"at vertex " + std::to_wstring(i)
                                                       : std::wstring(L"at the closing segment");
    return where + L": " + e.message();
  }
  return {};
}

kcSMDGDPoly kcSMDGDPolyPrivate::validated(const kcSMDGDPoly& p) {
  kcSMDGDPoly copy(p);
  copy.validate_();
  return copy;
}

kc2SegmentArc kcSMDGDPolyPrivate::roundingArc_(const kcSMDGDPoly& p, int v) {
  return kc2SegmentArc(p.roundStart_[v], p.roundEnd_[v], kcDegree(p.roundSpan_[v]));
}

kc2SegmentLine kcSMDGDPolyPrivate::slideLineSegment_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentLine line = lineSegment_(p, s);
  const kcVector<2> shift = d * rightNormal(line.angle());
  return kc2SegmentLine(line.p1() + shift, line.p2() + shift);
}

// The right of a counter-clockwise arc is outside its circle.
kc2SegmentArc kcSMDGDPolyPrivate::slideArc_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentArc arc = arcSegment_(p, s);
  const double span = arc.angleSpan_().toDouble();
  const double radius = arc.radius_() + (span >= 0.0 ? d : -d);
  return kc2SegmentArc(arc.center_(), radius, arc.startAngle_(), arc.angleSpan_());
}

kc2SegmentLine kcSMDGDPolyPrivate::firstHalfSlideLineSegment_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentLine slid = slideLineSegment_(p, s, d);
  return kc2SegmentLine(slid.p1(), slid.midPoint());
}

kc2SegmentLine kcSMDGDPolyPrivate::secondHalfSlideLineSegment_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentLine slid = slideLineSegment_(p, s, d);
  return kc2SegmentLine(slid.midPoint(), slid.p2());
}

kc2SegmentArc kcSMDGDPolyPrivate::firstHalfSlideArc_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentArc slid = slideArc_(p, s, d);
  const double half = slid.angleSpan_().toDouble() / 2;
  if (std::fabs(half) <= kcSMDGDPoly::kZeroTol) throw kcShapesError::DegenerateShape();
  return onCircle(slid, slid.startAngle_().toDouble(), half);
}

kc2SegmentArc kcSMDGDPolyPrivate::secondHalfSlideArc_(const kcSMDGDPoly& p, int s, double d) {
  const kc2SegmentArc slid = slideArc_(p, s, d);
  const double half = slid.angleSpan_().toDouble() / 2;
  if (std::fabs(half) <= kcSMDGDPoly::kZeroTol) throw kcShapesError::DegenerateShape();
  return onCircle(slid, slid.startAngle_().toDouble() + half, half);
}

kc2SegmentLine kcSMDGDPolyPrivate::forwardLineSegmentExtension_(const kcSMDGDPoly& p, int s) {
  const kc2SegmentLine line = lineSegment_(p, s);
  return kc2SegmentLine(line.p2(), line.segPoint(1.0 + p.forwardPercExtension_(s)));
}

kc2SegmentLine kcSMDGDPolyPrivate::backwardLineSegmentExtension_(const kcSMDGDPoly& p, int s) {
  const kc2SegmentLine line = lineSegment_(p, s);
  return kc2SegmentLine(line.p1(), line.segPoint(-p.backwardPercExtension_(s)));
}

kc2SegmentArc kcSMDGDPolyPrivate::forwardArcSegmentExtension_(const kcSMDGDPoly& p, int s) {
  const kc2SegmentArc arc = arcSegment_(p, s);
  const double span = arc.angleSpan_().toDouble() * p.forwardPercExtension_(s);
  if (std::fabs(span) <= kcSMDGDPoly::kZeroTol) throw kcShapesError::DegenerateShape();
  return onCircle(arc, arc.endAngle_().toDouble(), span);
}

kc2SegmentArc kcSMDGDPolyPrivate::backwardArcSegmentExtension_(const kcSMDGDPoly& p, int s) {
  const kc2SegmentArc arc = arcSegment_(p, s);
  const double span = arc.angleSpan_().toDouble() * p.backwardPercExtension_(s);
  if (std::fabs(span) <= kcSMDGDPoly::kZeroTol) throw kcShapesError::DegenerateShape();
  return onCircle(arc, arc.startAngle_().toDouble(), -span);
}

// --- corners ---

kcDegree kcSMDGDPolyPrivate::vertexAngle(const kcSMDGDPoly& p, int v) {
  if (p.isEndVertex(v)) throw kcSMDGDPoly::invalidIndex();
  const kcDegree in = p.segmentEndDirection_(p.previousSegmentIndex_(v));
  const kcDegree out = p.segmentStartDirection_(p.nextSegmentIndex_(v));
  return (kcDegree(180) - (out - in)).signedNorm();
}

// --- direction probes ---

std::vector<double> kcSMDGDPolyPrivate::ranges_(const kcSMDGDPoly& p, const kcVector<2>& probe,
                                                int skipSegment) {
  std::vector<double> ends;
  auto seen = [&](const kcVector<2>& q) {
    if (q != probe) ends.push_back(angleOf(q - probe));
  };
  auto add = [&](const kcSMDPiece_& piece) {
    seen(kfPieceStart_(piece));
    seen(kfPieceEnd_(piece));
    if (const auto* arc = std::get_if<kc2SegmentArc>(&piece)) {
      // A ray along a tangent from the probe grazes the circle.
      const kcVector<2> toCentre = arc->center_() - probe;
      const double d = toCentre.len();
      if (d > arc->radius_()) {
        const double half = std::asin(arc->radius_() / d) / kPerDegree;
        ends.push_back(angleOf(toCentre) + half);
        ends.push_back(angleOf(toCentre) - half);
      }
    }
  };
  const int n = static_cast<int>(p.vertices_.size());
  for (int k = 0; k < n; ++k) {
    if (p.segmentExists_(k) && k != skipSegment) add(kfRoundedPiece_(p, k));
    if (p.vertexIsRounded_(k)) add(roundingArc_(p, k));
  }
  return ends;
}

double kcSMDGDPolyPrivate::safestDirection_(std::vector<double> ends, double from, double span) {
  std::vector<double> offsets;
  offsets.reserve(ends.size() + 2);
  for (double e : ends) {
    const double off = kcDegree(e - from).norm().toDouble();
    if (off <= span) offsets.push_back(off);
  }
  if (span < kFullTurn) {
    offsets.push_back(0.0);
    offsets.push_back(span);
  }
  if (offsets.empty()) return from + span / 2;
  std::sort(offsets.begin(), offsets.end());
  // The middle of the widest gap; over a whole turn the gap across 360 counts too.
  double best = span < kFullTurn ? -1.0 : offsets.front() + kFullTurn - offsets.back();
  double at = span < kFullTurn ? span / 2 : offsets.back() + best / 2;
  for (std::size_t i = 1; i < offsets.size(); ++i) {
    const double gap = offsets[i] - offsets[i - 1];
    if (gap > best) {
      best = gap;
      at = offsets[i - 1] + gap / 2;
    }
  }
  return from + at;
}

// --- extensions ---

namespace {
// Distance between two pieces: 0 where they meet, else the least of the end
// points' distances to the other piece and, for an arc, of its point facing
// the other piece (found from the other's point nearest its centre).
template <class A, class B>
double gap(const A& a, const B& b) {
  if (!kfPieceIntersection_(a, b, false).empty()) return 0.0;
  double d =
      std::min({b.distToPoint(a.p1()), b.distToPoint(a.p2()), a.distToPoint(b.p1()), a.distToPoint(b.p2())});
  if constexpr (std::is_same_v<A, kc2SegmentArc>)
    d = std::min(d, b.distToPoint(a.closestPoint(b.closestPoint(a.center_()))));
  if constexpr (std::is_same_v<B, kc2SegmentArc>)
    d = std::min(d, a.distToPoint(b.closestPoint(a.closestPoint(b.center_()))));
  return d;
}

template <class E, class O>
void shorten(double& percent, const E& extension, const O& other, double distance, const kcDegree& angle,
             bool flag) {
  if (percent <= 0.0) return;
  if (flag) {
    // An edge the extension runs along, within angle of parallel, does not stop it.
    const double turn = std::fabs((other.midDirection() - extension.midDirection()).signedNorm().toDouble());
    if (std::min(turn, 180.0 - turn) <= std::fabs(angle.toDouble())) return;
  }
  const double full = percent;
  while (gap(kfPiecePart_(extension, percent / full), other) < distance) {
    percent *= 0.5;
    if (percent < kMinExtension) {
      percent = 0.0;
      return;
    }
  }
}
}  // namespace

void kcSMDGDPolyPrivate::checkSegmentExtension_(double& percent, const kc2SegmentLine& extension,
                                                const kc2SegmentLine& other, double distance,
                                                const kcDegree& angle, bool flag) {
  shorten(percent, extension, other, distance, angle, flag);
}
void kcSMDGDPolyPrivate::checkSegmentExtension_(double& percent, const kc2SegmentLine& extension,
                                                const kc2SegmentArc& other, double distance,
                                                const kcDegree& angle, bool flag) {
  shorten(percent, extension, other, distance, angle, flag);
}
void kcSMDGDPolyPrivate::checkSegmentExtension_(double& percent, const kc2SegmentArc& extension,
                                                const kc2SegmentLine& other, double distance,
                                                const kcDegree& angle, bool flag) {
  shorten(percent, extension, other, distance, angle, flag);
}
void kcSMDGDPolyPrivate::checkSegmentExtension_(double& percent, const kc2SegmentArc& extension,
                                                const kc2SegmentArc& other, double distance,
                                                const kcDegree& angle, bool flag) {
  shorten(percent, extension, other, distance, angle, flag);
}

// --- whole polys ---

kc2Rigid kcSMDGDPolyPrivate::position(const kcSMDGDPoly& p) {
  return kc2Rigid(kcRadian(p.orientation_()), p.centerOfMass_());
}

kcVector<2> kcSMDGDPolyPrivate::closestPoint(const kcSMDGDPoly& p, const kcVector<2>& pt) {
  if (p.vertices_.empty()) throw kcShapesError::EmptyShape();
  const std::vector<kcSMDPiece_> pieces = kfOutlinePieces_(p);
  // A lone vertex is all there is of its poly.
  if (pieces.empty()) return p.vertices_.front().point();
  kcVector<2> best = kfPieceClosestPoint_(pieces.front(), pt);
  double bestDistance = best.distance(pt);
  for (std::size_t k = 1; k < pieces.size(); ++k) {
    const kcVector<2> q = kfPieceClosestPoint_(pieces[k], pt);
    const double d = q.distance(pt);
    if (d < bestDistance) {
      best = q;
      bestDistance = d;
    }
  }
  return best;
}

double kcSMDGDPolyPrivate::distToPoint(const kcSMDGDPoly& p, const kcVector<2>& pt) {
  return closestPoint(p, pt).distance(pt);
}

bool kcSMDGDPolyPrivate::inside(const kcSMDGDPoly& p, const kcVector<2>& pt) {
  if (p.open_) throw kcSMDGDPoly::notClosed();
  return p.inside_(pt);
}

kcSMDGDPoly kcSMDGDPolyPrivate::reversePoly(const kcSMDGDPoly& p) {
  const int n = static_cast<int>(p.vertices_.size());
  std::vector<kcSMDGDPolyVertex> list;
  list.reserve(p.vertices_.size());
  for (int i = 0; i < n; ++i) {
    const int j = p.open_ ? n - 1 - i : (n - i) % n;
    // The segment now ending at the new vertex i ran from old vertex j to
    // j + 1, whose span and tolerance old vertex j + 1 held. (At the free
    // end of an open poly vertex 0's unused values move, so that reversing
    // twice gives the poly back.)
    const int k = (j + 1) % n;
    kcSMDGDPolyVertex v = p.vertices_[j];
    v.segmentAngleSpan(-p.vertices_[k].segmentAngleSpan());
    v.segmentLengthTol(p.vertices_[k].segmentLengthTol());
    const double prev = v.percentPrevSegment();
    v.percentPrevSegment(v.percentNextSegment());
    v.percentNextSegment(prev);
    const double forward = v.forwardPercExtension();
    v.forwardPercExtension(v.backwardPercExtension());
    v.backwardPercExtension(forward);
    list.push_back(std::move(v));
  }
  kcSMDGDPoly q(p);
  q.vertices(list);
  return q;
}

namespace {
// The vertex mirrored about the y axis: x and the span change sign.
kcSMDGDPolyVertex mirrored(kcSMDGDPolyVertex v) {
  v.point(kcVector<2>(-v.point().x(), v.point().y()));
  v.segmentAngleSpan(-v.segmentAngleSpan());
  return v;
}
}  // namespace

kcSMDGDPoly kcSMDGDPolyPrivate::flip(const kcSMDGDPoly& p) {
  std::vector<kcSMDGDPolyVertex> list;
  list.reserve(p.vertices_.size());
  for (const kcSMDGDPolyVertex& v : p.vertices_) list.push_back(mirrored(v));
  kcSMDGDPoly q(p);
  q.vertices(list);
  // A mirror turns the direction of travel; the flag turns it back.
  q.toggleDirection();
  return q;
}

kcSMDGDPoly kcSMDGDPolyPrivate::similarityImage(const kcSMDGDPoly& p, const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  const double det = m.determinant();
  if (!std::isfinite(det) || det == 0.0) throw kcShapesError::BadGeom();
  const bool mirror = det < 0.0;
  const double scale = std::sqrt(std::fabs(det));
  // With the mirror (x -> -x) taken out first, what is left must be a turn
  // times the scale: [[c, -s], [s, c]].
  const double c = mirror ? -m.element(0, 0) : m.element(0, 0);
  const double s = mirror ? -m.element(1, 0) : m.element(1, 0);
  const double tol = kSimilarityTol * scale;
  if (std::fabs(c - m.element(1, 1)) > tol || std::fabs(s + m.element(0, 1)) > tol)
    throw kcShapesError::BadGeom();
  const kc2Rigid turn(kcRadian(std::atan2(s, c)), x.trans());
  std::vector<kcSMDGDPolyVertex> list;
  list.reserve(p.vertices_.size());
  for (const kcSMDGDPolyVertex& v : p.vertices_) list.push_back(turn * (scale * (mirror ? mirrored(v) : v)));
  kcSMDGDPoly q(p);
  q.vertices(list);
  return q;
}

kcSMDGDPoly kcSMDGDPolyPrivate::subPoly(const kcSMDGDPoly& p, int v, bool wrap) {
  const int first = p.vertexIndex_(v, false);
  const int n = static_cast<int>(p.vertices_.size());
  const long label = p.vertices_[first].subModelLabel();
  std::vector<kcSMDGDPolyVertex> run{p.vertices_[first]};
  for (int k = first + 1;; ++k) {
    if (k == n) {
      if (!wrap || p.open_) break;
      k = 0;
    }
    if (k == first || p.vertices_[k].subModelLabel() != label) break;
    run.push_back(p.vertices_[k]);
  }
  if (static_cast<int>(run.size()) == n) return p;
  if (run.size() < 2) throw kcSMDGDPoly::badSubModel();
  // The run's first vertex starts an open chain: no segment ends there.
  run.front().segmentAngleSpan(kcDegree(0.0));
  run.front().segmentLengthTol(kcDimTol());
  kcSMDGDPoly q(p);
  q.reInit();
  q.vertices(run);
  return q;
}

// --- dimensions ---

kcDimTol::TolType kcSMDGDPolyPrivate::tolType(kcSMDDimension::ScaleType t) noexcept {
  switch (t) {
    case kcSMDDimension::eFixed:
      return kcDimTol::eLimits;
    case kcSMDDimension::eScaleAll:
      return kcDimTol::ePercentages;
    default:
      return kcDimTol::eOffsets;
  }
}

kcDimTol kcSMDGDPolyPrivate::dimTol(const kcSMDDimension& d) {
  const kcDimTol limits(d.nominal(), d.min(), d.max(), kcDimTol::eLimits);
  const kcDimTol::TolType kind = tolType(d.scaleType());
  // Offsets and fractions are measured from the nominal.
  if (kind == kcDimTol::eLimits || d.nominal() < 0.0) return limits;
  if (kind == kcDimTol::eOffsets)
    return kcDimTol(d.nominal(), limits.minOffset(), limits.maxOffset(), kcDimTol::eOffsets);
  return kcDimTol(d.nominal(), limits.minPerc(), limits.maxPerc(), kcDimTol::ePercentages);
}
