#include "dispc/smd/modelprivate.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"

namespace {
constexpr const char* kSource = "dispc/smd/modelprivate";
constexpr unsigned char kVersion = 0;
constexpr double kPerRadian = 57.29577951308232;
constexpr double kQuarterTurn = 90.0;
constexpr double kHalfTurn = 180.0;
// Straight edges whose directions (modulo a half turn) all lie within this
// many degrees run one way.
constexpr double kOneDirectionTol = 1.0;
// Weighted directions that cancel to within this fraction of the straight
// length have no dominant angle.
constexpr double kNoDominanceTol = 1e-9;
// A dominant angle this close below 45 degrees is taken as -45: the two
// name one direction, and rounding must not decide between them.
constexpr double kQuarterEndTol = 1e-9;
// Sub-pieces shorter than this fraction of their piece are not tested.
constexpr double kMinPartTol = 1e-12;
// Outlines' boxes are compared with this fraction of the outer box's size to spare.
constexpr double kBoxTol = 1e-9;

using P = kcSMDGDPolyPrivate;

// Every trimmed straight piece of every poly's rounded outline.
template <class F>
void forEachLine(const kcSMDGDModel& m, F&& f) {
  for (const kcSMDGDPoly& p : m.polys())
    for (const kcSMDPiece_& piece : kfOutlinePieces_(p))
      if (const auto* line = std::get_if<kc2SegmentLine>(&piece)) f(*line);
}

// Where q lies along the piece, as the fraction of it from its start: the
// projection onto a line, the share of the sweep on an arc (a point just
// before an arc's start counts as its start, not its end).
double fractionOf(const kc2SegmentLine& line, const kcVector<2>& q) {
  const kcVector<2> d = line.p2() - line.p1();
  return std::clamp((q - line.p1()).dot(d) / d.lenSq(), 0.0, 1.0);
}

double fractionOf(const kc2SegmentArc& arc, const kcVector<2>& q) {
  const kcVector<2> local = arc.xform().isIdentity() ? q : arc.xform().invMapPoint(q);
  const double span = arc.angleSpan_().toDouble();
  const double along = (kcDegree((local - arc.center_()).angle()) - arc.startAngle_()).toDouble();
  const double turned = span >= 0.0 ? kcDegree(along).norm().toDouble() : kcDegree(-along).norm().toDouble();
  const double sweep = std::fabs(span);
  if (sweep == 0.0) return 0.0;
  if (turned <= sweep) return turned / sweep;
  return turned - sweep < 2 * kHalfTurn - turned ? 1.0 : 0.0;
}

kcVector<2> pointAt(const kc2SegmentLine& line, double f) { return line.segPoint(f); }
kcVector<2> pointAt(const kc2SegmentArc& arc, double f) { return arc.segPoint(f); }

kcRect widened(const kcRect& box, double by) {
  return kcRect(box.origin() - kcVector<2>(by, by), box.size() + kcVector<2>(2 * by, 2 * by));
}

// The polygon as a closed poly with sharp corners and no labels, validated.
kcSMDGDPoly polyOf(const kcPolygon& polygon) {
  std::vector<kcSMDGDPolyVertex> vertices;
  vertices.reserve(polygon.size());
  for (const kcVector<2>& q : polygon.vertices()) vertices.emplace_back(q, 0.5, 0.5, -1);
  kcSMDGDPoly poly;
  P::assignVertices_(poly, vertices, false);
  poly.vertices(vertices);
  return poly;
}

// The same name and placement, the polys kept in order.
kcSMDGDModel keeping(const kcSMDGDModel& m, const std::vector<const kcSMDGDPoly*>& kept) {
  kcSMDGDModel out(m.name());
  for (const kcSMDGDPoly* p : kept) out << *p;
  out.placement(m.placement());
  return out;
}
}  // namespace

KC_DEFINE_PERSISTENT(kcSMDGDModelPrivate);

void kcSMDGDModelPrivate::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcSMDGDModelPrivate::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, __LINE__);
  kcSMDGDModel::dispatchSerialize(ar);
}

bool kcSMDGDModelPrivate::equivalent(const kcSMDGDModel& a, const kcSMDGDModel& b) {
  return a.polys() == b.polys();
}

// --- boxes and positions ---

kcRect kcSMDGDModelPrivate::boundingBox(const kcSMDGDModel& m) { return m.boundingBox(kcXform<2>()); }

// Four times a direction folds the four sides of a rectangle onto one, so
// the sides reinforce each other whatever their turn; a quarter of the
// summed angle is the turn modulo 90 degrees.
kcDegree kcSMDGDModelPrivate::dominantAngle(const kcSMDGDModel& m) {
  double c = 0.0, s = 0.0, total = 0.0;
  forEachLine(m, [&](const kc2SegmentLine& line) {
    const kcVector<2> d = line.p2() - line.p1();
    const double a = 4.0 * std::atan2(d.y(), d.x());
    c += line.length() * std::cos(a);
    s += line.length() * std::sin(a);
    total += line.length();
  });
  if (std::hypot(c, s) <= kNoDominanceTol * total) return kcDegree(0);
  double angle = std::atan2(s, c) * kPerRadian / 4.0;
  if (angle >= kQuarterTurn / 2 - kQuarterEndTol) angle -= kQuarterTurn;
  return kcDegree(angle);
}

kcRect kcSMDGDModelPrivate::alignedBox(const kcSMDGDModel& m) {
  const kcRect turned = m.boundingBox(kcXform<2>::rotation(-kcRadian(dominantAngle(m))));
  if (turned.isEmpty()) return turned;
  return kcRect(turned.size() * -0.5, turned.size());
}

// The box is measured in the frame turned by the dominant angle; its centre
// is turned back into model coordinates.
kc2Rigid kcSMDGDModelPrivate::normalizedPosition(const kcSMDGDModel& m) {
  const kcRadian angle(dominantAngle(m));
  const kcRect turned = m.boundingBox(kcXform<2>::rotation(-angle));
  if (turned.isEmpty()) return kc2Rigid();
  return kc2Rigid(angle, kc2Rigid(angle, kcVector<2>()).mapVector(turned.center()));
}

kcVector<2> kcSMDGDModelPrivate::corner(const kcSMDGDModel& m, int i) {
  if (i < 0 || i > 3) throw invalidIndex();
  const kcRect box = alignedBox(m);
  if (box.isEmpty()) throw kcShapesError::EmptyShape();
  return normalizedPosition(m) * box.corner(i);
}

// The directions, modulo a half turn, lie within one window of
// kOneDirectionTol when the widest gap between neighbours (round the half
// turn) leaves no more than that for the rest.
long kcSMDGDModelPrivate::numPosProbesRequired(const kcSMDGDModel& m) {
  std::vector<double> directions;
  forEachLine(m, [&](const kc2SegmentLine& line) {
    double d = std::fmod(line.angle().toDouble(), kHalfTurn);
    if (d < 0.0) d += kHalfTurn;
    directions.push_back(d);
  });
  if (directions.empty()) return 0;
  std::sort(directions.begin(), directions.end());
  double widestGap = directions.front() + kHalfTurn - directions.back();
  for (std::size_t i = 1; i < directions.size(); ++i)
    widestGap = std::max(widestGap, directions[i] - directions[i - 1]);
  return kHalfTurn - widestGap <= kOneDirectionTol ? 2 : 3;
}

// --- cropping ---

// Each piece of inner is cut where it meets outer's outline; inner lies
// inside when the middle of every part is inside or on outer. A part that
// only touches outer (a shared edge, a tangent) stays on it and passes; a
// crossing leaves a part outside, even one through a corner of outer.
bool kcSMDGDModelPrivate::liesInside(const kcSMDGDPoly& inner, const kcSMDGDPoly& outer) {
  if (outer.isOpen()) throw kcSMDGDPoly::notClosed();
  if (inner.numVertices() == 0) return false;
  const kcRect outerBox = outer.boundingBox(kcXform<2>());
  const kcRect innerBox = inner.boundingBox(kcXform<2>());
  const kcRect room = widened(outerBox, kBoxTol * std::max(outerBox.width(), outerBox.height()));
  if (innerBox.xMin() < room.xMin() || innerBox.yMin() < room.yMin() || innerBox.xMax() > room.xMax() ||
      innerBox.yMax() > room.yMax())
    return false;
  const std::vector<kcSMDPiece_> mine = kfOutlinePieces_(inner);
  if (mine.empty()) return P::inside(outer, inner.vertices().front().point());
  const std::vector<kcSMDPiece_> theirs = kfOutlinePieces_(outer);
  std::vector<kcRect> theirBoxes;
  theirBoxes.reserve(theirs.size());
  for (const kcSMDPiece_& b : theirs) theirBoxes.push_back(kfPieceBox_(b, kcXform<2>()));
  for (const kcSMDPiece_& a : mine) {
    const kcRect box = kfPieceBox_(a, kcXform<2>());
    std::vector<double> cuts{0.0, 1.0};
    for (std::size_t k = 0; k < theirs.size(); ++k) {
      if (!box.intersects(theirBoxes[k])) continue;
      for (const kcVector<2>& q : kfPieceIntersection_(a, theirs[k], false))
        cuts.push_back(std::visit([&](const auto& piece) { return fractionOf(piece, q); }, a));
    }
    std::sort(cuts.begin(), cuts.end());
    for (std::size_t i = 1; i < cuts.size(); ++i) {
      if (cuts[i] - cuts[i - 1] <= kMinPartTol) continue;
      const double middle = (cuts[i - 1] + cuts[i]) / 2;
      const kcVector<2> q = std::visit([&](const auto& piece) { return pointAt(piece, middle); }, a);
      if (!P::inside(outer, q)) return false;
    }
  }
  return true;
}

kcSMDGDModel kcSMDGDModelPrivate::crop(const kcSMDGDModel& m, const kcSMDGDPoly& window) {
  if (window.isOpen()) throw kcSMDGDPoly::notClosed();
  std::vector<const kcSMDGDPoly*> kept;
  for (const kcSMDGDPoly& p : m.polys())
    if (liesInside(p, window)) kept.push_back(&p);
  return keeping(m, kept);
}

// An empty polygon has no inside: nothing is kept.
kcSMDGDModel kcSMDGDModelPrivate::crop(const kcSMDGDModel& m, const kcPolygon& window) {
  if (window.isEmpty()) return keeping(m, {});
  return crop(m, polyOf(window));
}

kcSMDGDModel kcSMDGDModelPrivate::crop(const kcSMDGDModel& m, const kcSMDGDModel& windows) {
  std::vector<const kcSMDGDPoly*> kept;
  for (const kcSMDGDPoly& p : m.polys()) {
    const bool inOne = std::any_of(windows.polys().begin(), windows.polys().end(),
                                   [&](const kcSMDGDPoly& w) { return w.isClosed() && liesInside(p, w); });
    if (inOne) kept.push_back(&p);
  }
  for (const kcSMDGDPoly* inner : kept)
    for (const kcSMDGDPoly* outer : kept)
      if (inner != outer && outer->isClosed() && liesInside(*inner, *outer)) throw nestedPolys();
  return keeping(m, kept);
}

// --- conversions ---

kcSMDGDModel kcSMDGDModelPrivate::convert(const std::vector<kcPolygon>& polygons, const std::wstring& name) {
  kcSMDGDModel out(name);
  for (const kcPolygon& polygon : polygons) out << polyOf(polygon);
  return out;
}

std::vector<kc2Wireframe> kcSMDGDModelPrivate::convert(const kcSMDGDModel& m) {
  std::vector<kc2Wireframe> out;
  out.reserve(m.polys().size());
  for (const kcSMDGDPoly& p : m.polys()) out.push_back(P::wireframe(p));
  return out;
}

kcSMDGDModel kcSMDGDModelPrivate::weightedWireframesToModel(const std::vector<kc2Wireframe>& wireframes,
                                                            const std::vector<double>& weights,
                                                            const std::wstring& name) {
  if (wireframes.size() != weights.size()) throw invalidIndex();
  kcSMDGDModel out(name);
  for (std::size_t i = 0; i < wireframes.size(); ++i) {
    kcSMDGDPoly p(wireframes[i], L"poly");
    p.weight(weights[i]);
    out << p;
  }
  return out;
}

std::vector<kcXform<2>> kcSMDGDModelPrivate::wireframeXforms(const kcSMDGDModel& m) {
  std::vector<kcXform<2>> out;
  out.reserve(m.polys().size());
  for (const kcSMDGDPoly& p : m.polys()) out.push_back(P::position(p).xform());
  return out;
}
