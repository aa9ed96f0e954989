#include "dispc/wrfm/genpoly.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <utility>
#include <variant>

#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"
#include "foundation/archive.h"
#include "foundation/shapes/shapetree.h"

namespace {
constexpr const char* kSource = "dispc/wrfm/genpoly";
constexpr unsigned char kVersion = 0;
// Where an unknown version is reported, by the dispatch and by loadSimple.
constexpr int kUnknownVersionLine = 751;
constexpr int kSimpleUnknownVersionLine = 741;
// Sides count as perpendicular, and a rounding as circular, to this relative tolerance.
constexpr double kShapeTol = 1e-12;
// Roundings that leave less than this share of a side meet in its middle.
constexpr double kSideTol = 1e-10;
// Crossings this close (as a fraction of a piece) to an end or to each other are one.
constexpr double kCutTol = 1e-12;
constexpr double kTurn = 2.0 * std::numbers::pi;

using Piece = kcSMDPiece_;
using Vertex = kcSMDGDPolyVertex;

template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

// A vertex as the shape conversions and the edits make it: no label,
// percentages 0.5, no length tolerance.
Vertex plainVertex(const kcVector<2>& p, double radius, const kcDegree& span) {
  return Vertex(p, radius, span, 0.5, 0.5, -1, kcDimTol());
}

bool isPositiveScalar(const kcMatrix<2>& m) {
  return m.element(0, 1) == 0.0 && m.element(1, 0) == 0.0 && m.element(0, 0) == m.element(1, 1) &&
         m.element(0, 0) > 0.0;
}

// An elliptical figure is built on the unit circle. When its transform is a
// plain circle's, the points go through it into client space and the polygon
// keeps the identity; otherwise they stay on the unit circle and the
// transform becomes the polygon's.
struct Frame {
  kcXform<2> points;
  kcXform<2> polygon;
};

Frame frameOf(const kcXform<2>& x) {
  if (isPositiveScalar(x.matrix())) return {x, kcXform<2>()};
  return {kcXform<2>(), x};
}

kcVector<2> onCircle(double radius, double t) { return {radius * std::cos(t), radius * std::sin(t)}; }

// How many equal arc segments of at most half a turn cover a sweep (radians).
int halfTurns(double span) {
  // The margin keeps a whole turn converted from degrees at two segments.
  const double n = std::ceil(std::fabs(span) / std::numbers::pi - 1e-9);
  return n < 1.0 ? 1 : static_cast<int>(n);
}

// Appends the vertices after the first of the arc of the given radius from
// parameter start over span, each ending an arc segment.
void appendArc(std::vector<Vertex>& chain, const kcXform<2>& points, double radius, double start,
               double span) {
  const int n = halfTurns(span);
  const kcDegree share(kcRadian(span / n));
  for (int k = 1; k <= n; ++k)
    chain.push_back(plainVertex(points * onCircle(radius, start + span * k / n), 0.0, share));
}

// The rectangle [0, width] x [0, height] with corners rounded by a circle of
// the given radius, its points mapped by x. Where the roundings leave some
// of every side, they are the corners' vertex radii. Where they meet in the
// middle of a side, the data cannot hold them as radii (two roundings that
// touch); the outline is then made of the rounding arcs themselves, from the
// end of corner 0's rounding, with what is left of the sides between them.
std::vector<Vertex> roundedRectangle(const kcXform<2>& x, double width, double height, double radius) {
  const kcVector<2> corner[4] = {{0, 0}, {width, 0}, {width, height}, {0, height}};
  const bool wideMet = width - 2.0 * radius <= kSideTol * width;
  const bool highMet = height - 2.0 * radius <= kSideTol * height;
  std::vector<Vertex> chain;
  if (!wideMet && !highMet) {
    for (const kcVector<2>& c : corner) chain.push_back(plainVertex(x * c, radius, kcDegree(0.0)));
    return chain;
  }
  // A mirroring x turns the quarter arcs round.
  const kcDegree quarter(x.matrix().determinant() < 0.0 ? -90.0 : 90.0);
  kcVector<2> leave[4], reach[4];  // where side k leaves corner k and reaches corner k + 1
  for (int k = 0; k < 4; ++k) {
    const kcVector<2>& a = corner[k];
    const kcVector<2>& b = corner[(k + 1) % 4];
    const bool met = k % 2 == 0 ? wideMet : highMet;
    const kcVector<2> along = (b - a).unit() * radius;
    leave[k] = met ? (a + b) / 2.0 : a + along;
    reach[k] = met ? leave[k] : b - along;
  }
  chain.push_back(plainVertex(x * leave[0], 0.0, quarter));
  for (int k = 0; k < 4; ++k) {
    if (reach[k] != leave[k]) chain.push_back(plainVertex(x * reach[k], 0.0, kcDegree(0.0)));
    if (k < 3) chain.push_back(plainVertex(x * leave[k + 1], 0.0, quarter));
  }
  return chain;
}

// The image of a data piece in client space, as a foundation shape.
kcShapePtr clientShape(const kcXform<2>& x, const Piece& piece) {
  return std::visit(Overloaded{[&](const kc2SegmentLine& l) -> kcShapePtr {
                                 return kfMakeHandle<kcLineSeg>(x * l.p1(), x * l.p2());
                               },
                               [&](const kc2SegmentArc& a) -> kcShapePtr {
                                 return kfMakeHandle<kcEllipseArc>((x * a).ellipseArc());
                               }},
                    piece);
}

double determinant(const kcXform<2>& x) { return x.matrix().determinant(); }

bool isFiniteXform(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  return std::isfinite(m.element(0, 0)) && std::isfinite(m.element(0, 1)) && std::isfinite(m.element(1, 0)) &&
         std::isfinite(m.element(1, 1)) && std::isfinite(x.trans().x()) && std::isfinite(x.trans().y());
}

// The turn (radians) of the direction from p to a point running straight from a to b.
double turnSeen(const kcVector<2>& p, const kcVector<2>& a, const kcVector<2>& b) {
  const kcVector<2> u = a - p, v = b - p;
  return std::atan2(u.cross(v), u.dot(v));
}

// The turn (degrees) of the direction of travel along a mapped arc. A linear
// map turns directions monotonically and keeps an angle below half a turn
// below half a turn, so the sweep is walked in quarter turns and each step
// is measured on its own.
double arcTurn(const kc2SegmentArc& a) {
  const double span = a.angleSpan_().toDouble();
  const int steps = std::max(1, static_cast<int>(std::ceil(std::fabs(span) / 90.0)));
  double turn = 0.0;
  kcDegree previous = a.direction(0.0);
  for (int k = 1; k <= steps; ++k) {
    const kcDegree next = a.direction(static_cast<double>(k) / steps);
    turn += (next - previous).signedNorm().toDouble();
    previous = next;
  }
  return turn;
}

// Whether p (in the arc's unmapped space) lies strictly between the arc and its chord.
bool betweenArcAndChord(const kc2SegmentArc& a, const kcVector<2>& p) {
  if (p.distance(a.center_()) >= a.radius_()) return false;
  const kcVector<2> s = a.p1_(), e = a.p2_(), m = a.midPoint_();
  const double side = (e - s).cross(p - s);
  const double arcSide = (e - s).cross(m - s);
  return side * arcSide > 0.0;
}

// Even-odd inside test of the closed chain of points.
bool insideChain(const std::vector<kcVector<2>>& chain, const kcVector<2>& p) {
  bool inside = false;
  const std::size_t n = chain.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    const kcVector<2>& a = chain[i];
    const kcVector<2>& b = chain[j];
    if ((a.y() > p.y()) != (b.y() > p.y()) &&
        p.x() < (b.x() - a.x()) * (p.y() - a.y()) / (b.y() - a.y()) + a.x())
      inside = !inside;
  }
  return inside;
}

// Where a point of a piece lies along it, as a fraction from its start.
double fractionAlong(const Piece& piece, const kcVector<2>& q) {
  return std::visit(Overloaded{[&](const kc2SegmentLine& l) {
                                 const kcVector<2> d = l.p2() - l.p1();
                                 return (q - l.p1()).dot(d) / d.lenSq();
                               },
                               [&](const kc2SegmentArc& a) {
                                 const kcVector<2> u = a.xform().invMapPoint(q) - a.center_();
                                 const double angle = kcDegree(u.angle()).toDouble();
                                 const double span = a.angleSpan_().toDouble();
                                 const double start = a.startAngle_().toDouble();
                                 const double along = span >= 0.0 ? kcDegree(angle - start).norm().toDouble()
                                                                  : kcDegree(start - angle).norm().toDouble();
                                 return along / std::fabs(span);
                               }},
                    piece);
}

// The part of a piece between two fractions of it.
Piece partOf(const Piece& piece, double from, double to) {
  return std::visit(Overloaded{[&](const kc2SegmentLine& l) -> Piece {
                                 return kc2SegmentLine(from == 0.0 ? l.p1() : l.segPoint(from),
                                                       to == 1.0 ? l.p2() : l.segPoint(to));
                               },
                               [&](const kc2SegmentArc& a) -> Piece {
                                 const double span = a.angleSpan_().toDouble();
                                 return a.xform() *
                                        kc2SegmentArc(a.center_(), a.radius_(),
                                                      kcDegree(a.startAngle_().toDouble() + from * span),
                                                      kcDegree((to - from) * span));
                               }},
                    piece);
}

kcVector<2> pointAt(const Piece& piece, double f) {
  return std::visit([&](const auto& x) { return x.segPoint(f); }, piece);
}
}  // namespace

KC_DEFINE_PERSISTENT(kcGenPoly);

// --- construction ---

kcGenPoly::kcGenPoly() = default;

kcGenPoly::kcGenPoly(const kcGenPoly& other)
    : kcPersistent(other),
      kcRepBase(other),
      kcShape(other),
      poly_(other.poly_),
      editable_(other.editable_),
      xform_(other.xform_) {}

kcGenPoly& kcGenPoly::operator=(const kcGenPoly& other) {
  if (this == &other) return *this;
  mutating_();
  kcShape::operator=(other);
  poly_ = other.poly_;
  editable_ = other.editable_;
  xform_ = other.xform_;
  return *this;
}

kcGenPoly::~kcGenPoly() = default;

kcGenPoly::kcGenPoly(const kcSMDGDPoly& data) : poly_(data) {}

kcGenPoly::kcGenPoly(const kcSMDGDPoly& data, const kcXform<2>& xform, bool editable)
    : poly_(data), editable_(editable), xform_(xform) {
  if (!isFiniteXform(xform)) throw kcShapesError::BadParams();
  if (determinant(xform) == 0.0 || !std::isfinite(determinant(xform))) throw kcShapesError::DegenerateShape();
}

// The chain is validated once, whole, in its final open or closed state:
// a closed outline's roundings need not pass as an open chain first.
void kcGenPoly::build_(std::vector<kcSMDGDPolyVertex> chain, bool closed, const kcXform<2>& x) {
  guarded_([&] {
    kcSMDGDPoly data;
    kcSMDGDPolyPrivate::assignVertices_(data, std::move(chain), !closed);
    data.vertices(data.vertices());
    poly_ = data;
  });
  xform_ = x;
  editable_ = x.isIdentity();
}

kcGenPoly::kcGenPoly(const kcCircle& c) : kcGenPoly(kcEllipse(c)) {}

kcGenPoly::kcGenPoly(const kcEllipse& e) {
  const Frame f = frameOf(e.xform());
  const kcDegree half(180.0);
  build_({plainVertex(f.points * kcVector<2>(-1, 0), 0.0, half),
          plainVertex(f.points * kcVector<2>(1, 0), 0.0, half)},
         true, f.polygon);
}

kcGenPoly::kcGenPoly(const kcEllipse2& e) : kcGenPoly(kcEllipse(e)) {}

kcGenPoly::kcGenPoly(const kcEllipseArc& a) {
  const Frame f = frameOf(a.ellipse().xform());
  const double start = a.angleStart().toDouble();
  std::vector<Vertex> chain{plainVertex(f.points * onCircle(1.0, start), 0.0, kcDegree(0.0))};
  appendArc(chain, f.points, 1.0, start, a.angleSpan().toDouble());
  build_(std::move(chain), false, f.polygon);
}

kcGenPoly::kcGenPoly(const kcEllipseArc2& a) : kcGenPoly(kcEllipseArc(a)) {}

kcGenPoly::kcGenPoly(const kcEllipseAnnulusSection& s) {
  if (s.isFullTurn()) throw kcShapesError::BadGeom();
  const Frame f = frameOf(kcEllipse(s.annulus().outer()).xform());
  const double start = s.angleStart().toDouble();
  const double span = s.angleSpan().toDouble();
  const double inner = s.annulus().innerScale();
  std::vector<Vertex> chain{plainVertex(f.points * onCircle(1.0, start), 0.0, kcDegree(0.0))};
  appendArc(chain, f.points, 1.0, start, span);
  chain.push_back(plainVertex(f.points * onCircle(inner, start + span), 0.0, kcDegree(0.0)));
  appendArc(chain, f.points, inner, start + span, -span);
  build_(std::move(chain), true, f.polygon);
}

kcGenPoly::kcGenPoly(const kcGenRect& r) {
  const kcXform<2>& g = r.xform();
  const kcMatrix<2>& m = g.matrix();
  const kcVector<2> u(m.element(0, 0), m.element(1, 0));
  const kcVector<2> v(m.element(0, 1), m.element(1, 1));
  // Straight sides stay straight under any transform.
  if (!r.isRounded()) {
    build_(roundedRectangle(g, 1.0, 1.0, 0.0), true, kcXform<2>());
    return;
  }
  const double lu = u.len(), lv = v.len();
  const double ru = r.roundX() * lu / 2.0, rv = r.roundY() * lv / 2.0;
  const bool perpendicular = std::fabs(u.dot(v)) <= kShapeTol * lu * lv;
  const bool circular = std::fabs(ru - rv) <= kShapeTol * std::max(ru, rv);
  // The rectangle of the client sides, when its rounding is a circle there:
  // the frame maps onto the client rectangle without changing a length.
  if (perpendicular && circular) {
    build_(roundedRectangle(g * kcXform<2>::scale(1.0 / lu, 1.0 / lv), lu, lv, (ru + rv) / 2.0), true,
           kcXform<2>());
    return;
  }
  // Otherwise a frame in which the rounding is a circle of radius ru: the
  // first side keeps its length, the second is stretched to match.
  const double height = ru * 2.0 / r.roundY();
  build_(roundedRectangle(kcXform<2>(), lu, height, ru), true, g * kcXform<2>::scale(1.0 / lu, 1.0 / height));
}

kcGenPoly::kcGenPoly(const kcRect& r) {
  if (r.isEmpty() || !(r.width() > 0.0) || !(r.height() > 0.0)) throw kcShapesError::DegenerateShape();
  std::vector<Vertex> chain;
  for (int i = 0; i < 4; ++i) chain.push_back(plainVertex(r.corner(i), 0.0, kcDegree(0.0)));
  build_(std::move(chain), true, kcXform<2>());
}

kcGenPoly::kcGenPoly(const kcLineSeg& s) {
  build_({plainVertex(s.p1(), 0.0, kcDegree(0.0)), plainVertex(s.p2(), 0.0, kcDegree(0.0))}, false,
         kcXform<2>());
}

kcGenPoly::kcGenPoly(const kcPolygon& p) {
  if (p.isEmpty()) return;
  std::vector<Vertex> chain;
  chain.reserve(p.size());
  for (const kcVector<2>& v : p.vertices()) chain.push_back(plainVertex(v, 0.0, kcDegree(0.0)));
  build_(std::move(chain), true, kcXform<2>());
}

std::vector<kcGenPoly> kcGenPoly::convert(const kcAnnulus& a) {
  return {kcGenPoly(a.innerCircle()), kcGenPoly(a.outerCircle())};
}

std::vector<kcGenPoly> kcGenPoly::convert(const kcEllipseAnnulus& a) {
  return {kcGenPoly(a.inner()), kcGenPoly(a.outer())};
}

std::vector<kcGenPoly> kcGenPoly::convert(const kcGenAnnulus& a) {
  return {kcGenPoly(a.inner()), kcGenPoly(a.outer())};
}

// --- counting and navigation ---

int kcGenPoly::dataVertex_(long i) const {
  if (i < 0 || i >= numVertices()) throw kcSMDGDPoly::invalidIndex();
  return static_cast<int>(i);
}

int kcGenPoly::dataSegment_(long i) const {
  const long n = numVertices();
  if (i < 0 || i >= n) throw kcSMDGDPoly::invalidIndex();
  const int s = i == n - 1 ? 0 : static_cast<int>(i + 1);
  return kcSMDGDPolyPrivate::segmentIndex_(poly_, s, false);
}

long kcGenPoly::nextVertexIndex(long i) const {
  return guarded_([&] { return long{kcSMDGDPolyPrivate::nextVertexIndex_(poly_, dataSegment_(i))}; });
}

long kcGenPoly::previousVertexIndex(long i) const {
  return guarded_([&] { return long{kcSMDGDPolyPrivate::previousVertexIndex_(poly_, dataSegment_(i))}; });
}

// The data answers in its own numbering: its segment d is this class's d - 1.
long kcGenPoly::nextSegmentIndex(long i) const {
  return guarded_([&] {
    const int d = kcSMDGDPolyPrivate::nextSegmentIndex_(poly_, dataVertex_(i));
    return d < 0 ? -1L : (d == 0 ? numVertices() - 1 : long{d} - 1);
  });
}

long kcGenPoly::previousSegmentIndex(long i) const {
  return guarded_([&] {
    const int d = kcSMDGDPolyPrivate::previousSegmentIndex_(poly_, dataVertex_(i));
    return d < 0 ? -1L : (d == 0 ? numVertices() - 1 : long{d} - 1);
  });
}

bool kcGenPoly::isLineSegment(long i) const {
  return guarded_([&] { return !kcSMDGDPolyPrivate::isArcSegment_(poly_, dataSegment_(i)); });
}

// --- editing ---

void kcGenPoly::checkEditable_() const {
  if (!editable_) throw kcShapesError::BadGeom();
}

void kcGenPoly::insertVertex(long index, const kcVector<2>& pt, double roundingSize, const kcRadian& span) {
  checkEditable_();
  mutating_();
  guarded_([&] {
    if (index < -1 || index >= numVertices()) throw kcSMDGDPoly::invalidIndex();
    poly_.insertVertex(static_cast<int>(index), plainVertex(pt, roundingSize, kcDegree(span)));
  });
}

void kcGenPoly::insertVertex(const kcVector<2>& pt, double roundingSize, const kcRadian& span) {
  insertVertex(numVertices() - 1, pt, roundingSize, span);
}

void kcGenPoly::deleteVertex(long i) {
  checkEditable_();
  mutating_();
  guarded_([&] { poly_.deleteVertex(dataVertex_(i)); });
}

namespace {
// Vertex v of the data with a new point and radius (and span, when given),
// written back and validated.
void replaceAt(kcSMDGDPoly& data, int v, const kcVector<2>& pt, double roundingSize, const kcRadian* span) {
  Vertex copy = data.vertex(v, false);
  copy.point(pt);
  copy.vertexRadius(roundingSize);
  if (span) copy.segmentAngleSpan(kcDegree(*span));
  data.replaceVertex(v, copy);
}
}  // namespace

void kcGenPoly::replaceVertex(long i, const kcVector<2>& pt, double roundingSize) {
  checkEditable_();
  mutating_();
  guarded_([&] { replaceAt(poly_, dataVertex_(i), pt, roundingSize, nullptr); });
}

void kcGenPoly::replaceVertex(long i, const kcVector<2>& pt, double roundingSize, const kcRadian& span) {
  checkEditable_();
  mutating_();
  guarded_([&] { replaceAt(poly_, dataVertex_(i), pt, roundingSize, &span); });
}

void kcGenPoly::vertexPoint(long i, const kcVector<2>& pt) {
  checkEditable_();
  replaceVertex(i, pt, guarded_([&] { return poly_.vertex(dataVertex_(i), false).vertexRadius(); }));
}

void kcGenPoly::vertexRoundingSize(long i, double roundingSize) {
  checkEditable_();
  replaceVertex(i, guarded_([&] { return poly_.vertex(dataVertex_(i), false).point(); }), roundingSize);
}

// One whole replacement, so that no vertex is left changed when a later one
// is refused, and no intermediate state has to validate.
void kcGenPoly::vertexRoundingSizes(double roundingSize) {
  checkEditable_();
  mutating_();
  guarded_([&] {
    std::vector<Vertex> chain = poly_.vertices();
    for (Vertex& v : chain) v.vertexRadius(roundingSize);
    poly_.vertices(chain);
  });
}

void kcGenPoly::segmentAngleSpan(long i, const kcRadian& span) {
  checkEditable_();
  mutating_();
  guarded_([&] {
    const int v = kcSMDGDPolyPrivate::nextVertexIndex_(poly_, dataSegment_(i));
    Vertex copy = poly_.vertex(v, false);
    copy.segmentAngleSpan(kcDegree(span));
    poly_.replaceVertex(v, copy);
  });
}

// Vertex 0 ends the closing segment, so it takes the span first; a close
// that is then refused takes the span back with it.
void kcGenPoly::close(const kcRadian& span) {
  checkEditable_();
  mutating_();
  guarded_([&] {
    atomically_([&] {
      if (numVertices() > 0) {
        Vertex first = poly_.vertex(0, false);
        first.segmentAngleSpan(kcDegree(span));
        poly_.replaceVertex(0, first);
      }
      poly_.close();
    });
  });
}

// The data stays open when the open chain does not validate; here it goes
// back to what it was.
void kcGenPoly::open() {
  checkEditable_();
  mutating_();
  guarded_([&] { atomically_([&] { poly_.open(); }); });
}

// --- queries ---

kcVector<2> kcGenPoly::vertexPoint(long i) const {
  return xform_ * guarded_([&] { return poly_.vertex(dataVertex_(i), false).point(); });
}

double kcGenPoly::vertexRoundingSize(long i) const {
  return guarded_([&] { return poly_.vertex(dataVertex_(i), false).vertexRadius(); });
}

kcRadian kcGenPoly::segmentAngleSpan(long i) const {
  return guarded_([&] {
    const int v = kcSMDGDPolyPrivate::nextVertexIndex_(poly_, dataSegment_(i));
    return kcRadian(poly_.vertex(v, false).segmentAngleSpan());
  });
}

kcVector<2> kcGenPoly::pos() const { return vertexPoint(0); }

kcVector<2> kcGenPoly::center() const {
  return xform_ * guarded_([&] { return kcSMDGDPolyPrivate::position(poly_).trans(); });
}

kcLineSeg kcGenPoly::lineSegment(long i, bool raw) const {
  return guarded_([&] {
    const int s = dataSegment_(i);
    if (kcSMDGDPolyPrivate::isArcSegment_(poly_, s)) throw kcShapesError::BadGeom();
    const kc2SegmentLine l =
        raw ? kcSMDGDPolyPrivate::lineSegment_(poly_, s) : kcSMDGDPolyPrivate::roundedLineSegment_(poly_, s);
    return kcLineSeg(xform_ * l.p1(), xform_ * l.p2());
  });
}

kcEllipseArc kcGenPoly::arcSegment(long i, bool raw) const {
  return guarded_([&] {
    const int s = dataSegment_(i);
    if (!kcSMDGDPolyPrivate::isArcSegment_(poly_, s)) throw kcShapesError::BadGeom();
    const kc2SegmentArc a =
        raw ? kcSMDGDPolyPrivate::arcSegment_(poly_, s) : kcSMDGDPolyPrivate::roundedArcSegment_(poly_, s);
    return (xform_ * a).ellipseArc();
  });
}

kcEllipseArc2 kcGenPoly::ellipseSegment(long i, bool raw) const { return kcEllipseArc2(arcSegment(i, raw)); }

kcEllipseArc kcGenPoly::roundedVertex(long i) const {
  return guarded_([&] {
    const int v = dataVertex_(i);
    if (!kcSMDGDPolyPrivate::vertexIsRounded_(poly_, v)) throw kcShapesError::BadGeom();
    return (xform_ * kcSMDGDPolyPrivate::roundingArc_(poly_, v)).ellipseArc();
  });
}

kcEllipseArc2 kcGenPoly::roundedVertexArc(long i) const { return kcEllipseArc2(roundedVertex(i)); }

kcRect kcGenPoly::encloseRect(const kcXform<2>& x) const {
  return guarded_([&] {
    const kcXform<2> all = x * xform_;
    if (numSegments() > 0) return poly_.boundingBox(all);
    // A lone vertex has no piece to box.
    kcRect box;
    for (const kcSMDGDPolyVertex& v : poly_.vertices()) box.enclose(all * v.point());
    return box;
  });
}

kcRect kcGenPoly::encloseRect() const { return encloseRect(kcXform<2>()); }

kcRect kcGenPoly::boundingBox() const {
  if (degen()) throw kcShapesError::EmptyShape();
  return encloseRect();
}

bool kcGenPoly::hasTangent() const { return isOpenContour() && numSegments() > 0; }

kcVector<2> kcGenPoly::nearestPoint(const kcVector<2>& p) const {
  if (degen()) throw kcShapesError::EmptyShape();
  return guarded_([&] {
    kcVector<2> best = xform_ * poly_.vertex(0, false).point();
    double bestDistance = p.distance(best);
    bool first = true;
    // Strictly nearer only: of equally near points the first along the outline wins.
    for (const Piece& piece : kfOutlinePieces_(poly_)) {
      const kcVector<2> q = clientShape(xform_, piece)->nearestPoint(p);
      const double d = p.distance(q);
      if (first || d < bestDistance) {
        best = q;
        bestDistance = d;
        first = false;
      }
    }
    return best;
  });
}

double kcGenPoly::distanceToPoint(const kcVector<2>& p) const { return p.distance(nearestPoint(p)); }

bool kcGenPoly::within(const kcVector<2>& p) const {
  if (isOpen()) throwNotRegion_();
  return guarded_([&] { return kcSMDGDPolyPrivate::inside(poly_, xform_.invMapPoint(p)); });
}

kcVector<2> kcGenPoly::startPoint() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return vertexPoint(0);
}

kcVector<2> kcGenPoly::endPoint() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return vertexPoint(numVertices() - 1);
}

namespace {
// The direction of travel, in client space, where the outline starts or ends.
kcRadian travelDirection(const kcSMDGDPoly& data, const kcXform<2>& x, bool atStart) {
  const std::vector<Piece> pieces = kfOutlinePieces_(data);
  if (pieces.empty()) throw kcShapesError::NoTangent();
  return kcRadian(atStart ? kfPieceStartDirection_(kfMapPiece_(x, pieces.front()))
                          : kfPieceEndDirection_(kfMapPiece_(x, pieces.back())));
}
}  // namespace

kcRadian kcGenPoly::startAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return guarded_([&] { return travelDirection(poly_, xform_, true); });
}

kcRadian kcGenPoly::endAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return guarded_([&] { return travelDirection(poly_, xform_, false); });
}

kcRadian kcGenPoly::tangentRotation() const {
  if (!isOpenContour()) throwNotOpenContour_();
  return guarded_([&] {
    const std::vector<Piece> pieces = kfOutlinePieces_(poly_);
    if (pieces.empty()) throw kcShapesError::NoTangent();
    double turn = 0.0;  // degrees
    bool first = true;
    kcDegree previousEnd;
    for (const Piece& piece : pieces) {
      const Piece mapped = kfMapPiece_(xform_, piece);
      if (!first) turn += (kfPieceStartDirection_(mapped) - previousEnd).signedNorm().toDouble();
      if (const auto* arc = std::get_if<kc2SegmentArc>(&mapped)) turn += arcTurn(*arc);
      previousEnd = kfPieceEndDirection_(mapped);
      first = false;
    }
    return kcRadian(kcDegree(turn));
  });
}

kcRadian kcGenPoly::windingAngle(const kcVector<2>& pt) const {
  if (!isOpenContour()) throwNotOpenContour_();
  return guarded_([&] {
    double winding = 0.0;
    for (const Piece& piece : kfOutlinePieces_(poly_)) {
      const Piece mapped = kfMapPiece_(xform_, piece);
      winding += turnSeen(pt, kfPieceStart_(mapped), kfPieceEnd_(mapped));
      // The arc and its chord taken back enclose the part of the disc on the
      // arc's side; a point in there sees the arc turn a whole turn more than
      // the chord, the way the arc runs in client space.
      if (const auto* arc = std::get_if<kc2SegmentArc>(&piece)) {
        const kcXform<2> toClient = xform_ * arc->xform();
        if (betweenArcAndChord(*arc, toClient.invMapPoint(pt))) {
          const bool counterClockwise = (arc->angleSpan_().toDouble() > 0.0) != (determinant(toClient) < 0.0);
          winding += counterClockwise ? kTurn : -kTurn;
        }
      }
    }
    return kcRadian(winding);
  });
}

// The data's direction answers for its polarity; taking the flag out leaves
// the turning sense of the vertex order, which a mirror reverses.
bool kcGenPoly::isRightHanded() const {
  if (isOpen()) throwNotRegion_();
  return guarded_([&] {
    const bool counterClockwise = poly_.isDirectionPositive() != poly_.isDirectionReversed();
    return counterClockwise != (determinant(xform_) < 0.0);
  });
}

void kcGenPoly::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfCheckSpacing(spacing);
  if (degen()) return;
  std::vector<kcVector<2>> chain;
  guarded_([&] {
    const std::vector<Piece> pieces = kfOutlinePieces_(poly_);
    if (pieces.empty()) {
      chain.push_back(xform_ * poly_.vertex(0, false).point());
      return;
    }
    for (const Piece& piece : pieces) {
      std::vector<kcVector<2>> part;
      clientShape(xform_, piece)->sample(spacing, part);
      // Each piece ends where the next begins: its last point is left to that one.
      chain.insert(chain.end(), part.begin(), part.end() - 1);
    }
    chain.push_back(isOpen() ? xform_ * kfPieceEnd_(pieces.back()) : chain.front());
  });
  out.insert(out.end(), chain.begin(), chain.end());
}

std::vector<kcShapePtr> kcGenPoly::decompose() const {
  return guarded_([&] {
    std::vector<kcShapePtr> out;
    for (const Piece& piece : kfOutlinePieces_(poly_)) out.push_back(clientShape(xform_, piece));
    return out;
  });
}

kcShapePtr kcGenPoly::clip_(const kcPolyline& window, kcClipInfo& info) const {
  info = kcClipInfo();
  return guarded_([&] {
    // Affine maps keep lines straight and insides inside: the window is
    // taken into the data rather than every piece out of it.
    std::vector<kcVector<2>> chain;
    for (const kcVector<2>& w : window.vertices()) chain.push_back(xform_.invMapPoint(w));
    std::vector<kc2SegmentLine> edges;
    for (std::size_t i = 0; i < chain.size() && chain.size() > 1; ++i) {
      const kcVector<2>& a = chain[i];
      const kcVector<2>& b = chain[(i + 1) % chain.size()];
      if (a != b) edges.emplace_back(a, b);
    }
    auto inside = [&](const kcVector<2>& p) { return chain.size() >= 3 && insideChain(chain, p); };

    std::vector<kcShapePtr> kept;
    for (const Piece& piece : kfOutlinePieces_(poly_)) {
      std::vector<double> cuts{0.0, 1.0};
      for (const kc2SegmentLine& edge : edges)
        for (const kcVector<2>& q : kfPieceIntersection_(piece, Piece(edge), false)) {
          const double f = fractionAlong(piece, q);
          if (f > kCutTol && f < 1.0 - kCutTol) cuts.push_back(f);
        }
      std::sort(cuts.begin(), cuts.end());
      cuts.erase(std::unique(cuts.begin(), cuts.end(), [](double a, double b) { return b - a <= kCutTol; }),
                 cuts.end());
      if (cuts.back() != 1.0) cuts.back() = 1.0;
      const bool cut = cuts.size() > 2;
      if (cut) ++info.piecesCut;
      for (std::size_t k = 0; k + 1 < cuts.size(); ++k) {
        if (!inside(pointAt(piece, (cuts[k] + cuts[k + 1]) / 2.0))) {
          if (!cut) ++info.piecesDropped;
          continue;
        }
        const Piece part = cut ? partOf(piece, cuts[k], cuts[k + 1]) : piece;
        kept.push_back(clientShape(xform_, part));
        ++info.piecesKept;
      }
    }
    return kcShapePtr(kfMakeHandle<kcShapeTree>(std::move(kept)));
  });
}

// --- images ---

kcGenPoly kcGenPoly::map(const kcXform<2>& x) const {
  if (x.isIdentity()) return *this;
  if (!isFiniteXform(x)) throw kcShapesError::BadParams();
  if (determinant(x) == 0.0) throw kcMathError::Singular();
  kcGenPoly out(*this);
  out.xform_ = x * xform_;
  out.editable_ = false;
  return out;
}

kcGenPoly kcGenPoly::map(const kc2Rigid& r, double scale) const {
  return map(r.xform() * kcXform<2>::scale(scale, scale));
}

kcShapePtr kcGenPoly::clone() const { return kfMakeHandle<kcGenPoly>(*this); }

kcShapePtr kcGenPoly::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcGenPoly>(map(x)); }

kcGenPoly kcGenPoly::reversed_() const {
  kcGenPoly out(*this);
  out.poly_ = guarded_([&] { return kcSMDGDPolyPrivate::reversePoly(poly_); });
  return out;
}

kcShapePtr kcGenPoly::reverse() const { return kfMakeHandle<kcGenPoly>(reversed_()); }

bool kcGenPoly::operator==(const kcGenPoly& o) const {
  return poly_ == o.poly_ && xform_ == o.xform_ && editable_ == o.editable_;
}

bool kcGenPoly::equal_(const kcShape& other) const { return *this == static_cast<const kcGenPoly&>(other); }

// --- errors of the data ---

void kcGenPoly::remapAndThrowError_(kcException& e) const {
  const long n = e.errorNumber();
  if (n == kcSMDGDPoly::invalidVertices().errorNumber()) throw kcShapesError::BadGeom();
  if (n == kcSMDGDPoly::crossingSegments().errorNumber()) throw kcShapesError::BadGeom();
  if (n == kcSMDGDPoly::invalidRounding().errorNumber()) throw kcShapesError::BadRadius();
  if (n == kcSMDGDPoly::invalidIndex().errorNumber()) throw kcShapesError::BadCoef();
  if (n == kcSMDGDPoly::notClosed().errorNumber()) throw kcShapesError::BadGeom();
  if (n == kcSMDGDPolyVertex::invalidSegmentLength().errorNumber()) throw kcShapesError::BadGeom();
  if (n == kcSMDGDPoly::badSubModel().errorNumber()) throw kcShapesError::BadGeom();
  e.rethrow();
  std::abort();  // not reached: rethrow() always throws
}

// --- archive ---

void kcGenPoly::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcGenPoly::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kUnknownVersionLine);
  kcShape::serialize_(ar, version);
  transferBody_(ar);
}

void kcGenPoly::loadSimple(kcArchive& ar) {
  kcArchive::Transfer transfer(ar);
  signed char version = static_cast<signed char>(kVersion);
  ar || version;
  if (version != static_cast<signed char>(kVersion))
    throw kcArchive::UnknownVersion(kSource, kSimpleUnknownVersionLine);
  kcShape::serialize_(ar, kVersion);
  transferBody_(ar);
}

// Loads into locals and takes them over only when all is read and checked.
void kcGenPoly::transferBody_(kcArchive& ar) {
  if (ar.isStoring()) {
    ar || poly_ || xform_ || editable_;
    return;
  }
  kcSMDGDPoly data;
  kcXform<2> x;
  bool editable = true;
  ar || data || x || editable;
  if (!isFiniteXform(x)) throw kcArchive::Corrupt(L"polygon transform that is not finite");
  if (determinant(x) == 0.0 || !std::isfinite(determinant(x)))
    throw kcArchive::Corrupt(L"polygon transform that is singular");
  mutating_();
  poly_ = std::move(data);
  xform_ = x;
  editable_ = editable;
}

// --- synthetic images ---

void kfDrawSynthetic(const kcGenPoly& poly, const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer,
                     unsigned char grey) {
  if (poly.isOpen()) throw kcShapesError::BadGeom();
  kcSMDGDPolyPrivate::drawSynthetic(poly.polygonData(), xform * poly.xform(), pelBuffer, grey, true, true);
}

void kfDrawSynthetic(const kcGenPoly& poly, const kcPtrHandle_const<kc2XformBase>& xform,
                     kcPelBuffer<unsigned char>& pelBuffer, unsigned char grey) {
  if (xform.isNull()) throw kcBadPointer();
  kfDrawSynthetic(poly, xform->linearXform(), pelBuffer, grey);
}
