// Polys and models drawn on a tablet: wireframes, negative outlines,
// overlaid segments and direction arrows, directly, recorded and as graphics.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "dispc/glist.h"
#include "dispc/sketchop.h"
#include "dispc/smd/model.h"
#include "dispc/smd/modelprivate.h"
#include "dispc/smd/polyprivate.h"
#include "dispc/tablet.h"
#include "dispc/tracescope.h"

namespace {

using V = kcVector<2>;
using L = kcUITablet::Layers;
using Poly = kcSMDGDPoly;
using P = kcSMDGDPolyPrivate;
using Vertex = kcSMDGDPolyVertex;
using X = kcXform<2>;

constexpr double kTol = 1e-9;
constexpr double kScale = 2.5;
const kcColor kWire(12, 34, 56);
const kcColor kPositive(10, 20, 30);
const kcColor kNegative(200, 100, 50);

// A turn, a uniform scale and a move; the same after a mirror in the y axis.
X turned() { return X::translation({40, -15}) * X::rotation(kcRadian(0.7)) * X::scale(kScale, kScale); }
X mirrored() { return turned() * X::scale(-1, 1); }

// A trace device that also keeps the geometry of what it is handed.
struct Capture : kcUITraceScope {
  struct Seg {
    V a, b;
    kcGraphicProps props;
  };
  struct Arc {
    kcEllipseArc a;
    kcGraphicProps props;
  };
  std::vector<kcUIPath> paths;
  std::vector<Seg> segs;
  std::vector<Arc> arcs;
  std::vector<V> points;
  void path(const kcUIPath& p, const kcGraphicProps& props) override {
    paths.push_back(p);
    kcUITraceScope::path(p, props);
  }
  void lineSeg(const V& a, const V& b, const kcGraphicProps& props) override {
    segs.push_back({a, b, props});
    kcUITraceScope::lineSeg(a, b, props);
  }
  void ellipseArc(const kcEllipseArc& a, const kcGraphicProps& props) override {
    arcs.push_back({a, props});
    kcUITraceScope::ellipseArc(a, props);
  }
  void point(const V& p, const kcGraphicProps& props) override {
    points.push_back(p);
    kcUITraceScope::point(p, props);
  }
};

struct Traced {
  Capture main;
  Capture overlay;
  kcUITablet tablet{&main, &overlay};
};

Vertex vx(const V& at, double radius, double span = 0.0) {
  return Vertex(at, radius, kcDegree(span), 0.5, 0.5, -1, kcDimTol());
}

Poly make(const wchar_t* name, const std::vector<Vertex>& vs, bool closed) {
  Poly p(name);
  p.vertices(vs);
  if (closed) p.close();
  p.colors(kcSMDColors(kWire, kcColor::ltGrey, kcColor::dkGrey));
  p.positiveArrowColor(kPositive);
  p.negativeArrowColor(kNegative);
  return p;
}
// Counter-clockwise; corners 0 and 2 rounded, segment 1 an arc of 30 degrees.
Poly pad() { return make(L"pad", {vx({0, 0}, 1), vx({10, 0}, 0, 30), vx({10, 8}, 2), vx({0, 8}, 0)}, true); }
Poly box() { return make(L"box", {vx({7, 5}, 0), vx({-1, 5}, 0), vx({-1, -1}, 0), vx({7, -1}, 0)}, true); }
Poly clockwise() { return make(L"cw", {vx({0, 0}, 0), vx({0, 5}, 0), vx({7, 1}, 0)}, true); }
// Open, its corner 1 rounded.
Poly lead() { return make(L"lead", {vx({0, 0}, 0), vx({6, 0}, 1), vx({6, 4}, 0), vx({-2, 9}, 0)}, false); }
Poly toggled(Poly p) {
  p.toggleDirection();
  return p;
}

// A pen of the width and style, no fill, no arrow head.
void expectPen(const kcGraphicProps& props, long width, kcGraphicProps::kePenStyle style) {
  EXPECT_EQ(props.penWidth(), width);
  EXPECT_EQ(props.penStyle(), style);
  EXPECT_FALSE(props.fill());
  EXPECT_FALSE(props.arrowHead());
}

bool near(const V& a, const V& b) { return a.distance(b) < kTol; }

// --- outlines ---

struct Piece {
  bool arc;
  V from, to, mid;
};

// The rounded outline from the poly's own tangent points, in travel order, mapped.
std::vector<Piece> outline(const Poly& p, const X& x) {
  std::vector<Piece> out;
  const int n = static_cast<int>(p.numVertices());
  for (int s = p.isOpen() ? 1 : 0; s < n; ++s) {
    const V a = P::roundEnd_(p, (s + n - 1) % n), b = P::roundStart_(p, s);
    const V mid = P::isArcSegment_(p, s) ? P::roundedArcSegment_(p, s).midPoint() : (a + b) / 2.0;
    out.push_back({P::isArcSegment_(p, s), x * a, x * b, x * mid});
    if (P::vertexIsRounded_(p, s))
      out.push_back(
          {true, x * P::roundStart_(p, s), x * P::roundEnd_(p, s), x * P::roundingArc_(p, s).midPoint()});
  }
  return out;
}

// The pieces of a path; joins and closes of no length left out.
std::vector<Piece> pieces(const kcUIPath& path) {
  std::vector<Piece> out;
  V at, start;
  for (const kcUIPath::Piece& q : path.pieces()) {
    if (q.kind == kcUIPath::Kind::move) {
      at = start = q.to;
      continue;
    }
    const V to = q.kind == kcUIPath::Kind::close ? start : q.to;
    if (q.kind == kcUIPath::Kind::arc) {
      const kcEllipseArc& a = path.arcs()[q.arc];
      EXPECT_TRUE(near(a.startPoint(), at));
      out.push_back({true, at, to, a.point(a.angleStart() + a.angleSpan() / 2.0)});
    } else if (!near(at, to)) {
      out.push_back({false, at, to, (at + to) / 2.0});
    }
    at = to;
  }
  return out;
}

TEST(SMDDrawWireframe, OneSolidPathInTheWireframeColourOnTheMainLayerOnly) {
  Traced t;
  pad().drawWireframe(turned(), t.tablet);
  ASSERT_EQ(t.main.lines().size(), 3u);
  EXPECT_EQ(t.main.lines()[0], "lockScreenUpdatesPush true");
  EXPECT_EQ(t.main.lines()[2], "lockScreenUpdatesPop");
  const std::string pen = " colour(rgb 12 34 56) width 1 style 0 join 0 cap 0 nofill noarrow";
  EXPECT_TRUE(t.main.lines()[1].ends_with(pen)) << t.main.lines()[1];
  EXPECT_TRUE(t.overlay.lines().empty());

  Traced empty;
  empty.tablet.recordOn() = true;
  Poly().drawWireframe(turned(), empty.tablet);
  P::drawNegWireframe(Poly(), mirrored(), empty.tablet, kcColor::red, L::overlayLayer);
  EXPECT_TRUE(empty.main.lines().empty());
  EXPECT_TRUE(empty.overlay.lines().empty());
  EXPECT_TRUE(empty.tablet.sketch().bytes().empty());
}

TEST(SMDDrawWireframe, PiecesRunBetweenTheMappedTangentPoints) {
  // pad: two roundings and one arc segment; lead (open): one rounding.
  for (const auto& [p, x, arcs, lines] :
       {std::tuple(pad(), X(), 3, 3), std::tuple(pad(), turned(), 3, 3), std::tuple(pad(), mirrored(), 3, 3),
        std::tuple(lead(), turned(), 1, 3)}) {
    Traced t;
    p.drawWireframe(x, t.tablet);
    ASSERT_EQ(t.main.paths.size(), 1u);
    const kcUIPath& path = t.main.paths[0];
    EXPECT_EQ(path.pieces().back().kind == kcUIPath::Kind::close, p.isClosed());
    EXPECT_EQ(path.arcs().size(), static_cast<std::size_t>(arcs));
    const std::vector<Piece> got = pieces(path), want = outline(p, x);
    // No join where mapped end points differ only in the last bits.
    EXPECT_EQ(std::count_if(path.pieces().begin(), path.pieces().end(),
                            [](const kcUIPath::Piece& q) { return q.kind == kcUIPath::Kind::line; }),
              lines);
    ASSERT_EQ(got.size(), want.size());
    // A closed outline may start at any piece.
    std::size_t k = 0;
    while (k < want.size() && !near(want[k].from, got[0].from)) ++k;
    ASSERT_LT(k, want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
      const Piece& w = want[(k + i) % want.size()];
      SCOPED_TRACE(i);
      EXPECT_EQ(got[i].arc, w.arc);
      EXPECT_TRUE(near(got[i].from, w.from));
      EXPECT_TRUE(near(got[i].to, w.to));
      EXPECT_TRUE(near(got[i].mid, w.mid));
    }
  }
}

// --- recording ---

// Closed polys only: the open ones have a test of their own.
kcSMDGDModel model() {
  kcSMDGDModel m(L"part");
  m << box() << pad() << clockwise();
  return m;
}

TEST(SMDDrawRecording, RecordsAndReplaysAsDrawnDirectly) {
  const struct {
    const char* what;
    std::function<void(kcUITablet&)> draw;
    std::vector<long> opcodes;
  } rows[] = {
      {"poly wireframe: one general polygon", [](kcUITablet& t) { pad().drawWireframe(turned(), t); }, {34}},
      {"model wireframe: one per poly",
       [](kcUITablet& t) { model().drawWireframe(mirrored(), t); },
       {34, 34, 34}},
      {"model arrows: three segments each",
       [](kcUITablet& t) { model().drawDirectionArrows(turned(), t, 1.5); },
       std::vector<long>(3 * (4 + 4 + 3), 2)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    kcUITablet rec;
    rec.recordOn() = true;
    row.draw(rec);
    std::vector<long> opcodes;
    for (kcUISketchParser records(rec.sketch()); records.next();)
      opcodes.push_back(records.header().opcode());
    EXPECT_EQ(opcodes, row.opcodes);

    // Playback of one layer brackets the records with a lock and a hint.
    Traced direct;
    direct.tablet.lockScreenUpdatesPush(true, L::mainLayer);
    direct.tablet.optimizeDrawing(true, L::mainLayer);
    row.draw(direct.tablet);
    direct.tablet.optimizeDrawing(false, L::mainLayer);
    direct.tablet.lockScreenUpdatesPop(L::mainLayer);
    Traced replayed;
    replayed.tablet.draw(rec.sketch(), kcPoint(0, 0), L::mainLayer);
    EXPECT_EQ(replayed.main.lines(), direct.main.lines());
    EXPECT_GT(direct.main.lines().size(), 4u);
  }
}

// --- direction arrows ---

struct Place {
  V at, dir;
};

// Where each arrow belongs: the middle of the trimmed line, or the point of
// the trimmed arc halfway between its tangent points, along the travel.
std::vector<Place> places(const Poly& p) {
  std::vector<Place> out;
  const int n = static_cast<int>(p.numVertices());
  for (int s = p.isOpen() ? 1 : 0; s < n; ++s) {
    const int prev = (s + n - 1) % n;
    const V a = P::roundEnd_(p, prev), b = P::roundStart_(p, s);
    Place place{(a + b) / 2.0, (p.vertices()[s].point() - p.vertices()[prev].point()).unit()};
    if (P::isArcSegment_(p, s)) {
      const V c = P::arcSegment_(p, s).center();
      const V u = ((a - c) + (b - c)).unit();
      const bool ccw = p.vertices()[s].segmentAngleSpan().toDouble() > 0;
      place = {c + u * (a - c).len(), ccw ? V(-u.y(), u.x()) : V(u.y(), -u.x())};
    }
    if (p.isDirectionReversed()) place.dir = place.dir * -1.0;
    out.push_back(place);
  }
  return out;
}

// Shaft tail to tip, size long, centred on the place; two barbs a third as
// long ending at the tip, 30 degrees off the shaft on either side.
void expectArrows(const std::vector<Capture::Seg>& segs, const std::vector<Place>& want, const X& x,
                  double size) {
  ASSERT_EQ(segs.size(), 3 * want.size());
  for (std::size_t k = 0; k < want.size(); ++k) {
    SCOPED_TRACE(k);
    const V tip = x * (want[k].at + want[k].dir * (size / 2)),
            tail = x * (want[k].at - want[k].dir * (size / 2));
    EXPECT_TRUE(near(segs[3 * k].a, tail));
    EXPECT_TRUE(near(segs[3 * k].b, tip));
    const V shaft = (tip - tail).unit();
    double side = 1.0;
    for (const Capture::Seg& barb : {segs[3 * k + 1], segs[3 * k + 2]}) {
      EXPECT_TRUE(near(barb.b, tip));
      const V along = barb.b - barb.a;
      EXPECT_NEAR(along.len(), kScale * size / 3, kTol);
      EXPECT_NEAR(along.unit().dot(shaft), std::cos(std::numbers::pi / 6), kTol);
      side *= along.cross(shaft);
    }
    EXPECT_LT(side, 0.0);
  }
}

TEST(SMDDrawArrows, OnePerSegmentAtItsMiddleAlongTheTravel) {
  // Sharp, rounded with an arc, open (no segment 0, but its last), and each
  // way round.
  for (const Poly& p : {box(), pad(), lead(), toggled(pad()), toggled(lead())}) {
    for (const X& x : {turned(), mirrored()}) {
      Traced t;
      p.drawDirectionArrows(x, t.tablet, 1.5);
      SCOPED_TRACE(p.numVertices());
      expectArrows(t.main.segs, places(p), x, 1.5);
      for (const Capture::Seg& s : t.main.segs) expectPen(s.props, 1, kcGraphicProps::penSolid);
      EXPECT_TRUE(t.overlay.lines().empty());
    }
  }
}

TEST(SMDDrawArrows, SizeMustBePositiveAndFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (const double size : {0.0, -1.0, nan, inf}) {
    SCOPED_TRACE(size);
    for (const Poly& p : {box(), lead()}) {
      Traced t;
      EXPECT_THROW(p.drawDirectionArrows(turned(), t.tablet, size), kcShapesError::BadParams);
      EXPECT_TRUE(t.main.lines().empty());
      kcGraphicList list;
      list.append(kfMakeHandle<kcGraphicSimple<kcLineSegSet>>(kcLineSegSet({kcLineSeg({0, 0}, {1, 1})}),
                                                              kcGraphicProps()));
      EXPECT_THROW(p.drawDirectionArrows(turned(), list, size), kcShapesError::BadParams);
      EXPECT_EQ(list.items().size(), 1u);
    }
  }
}

TEST(SMDDrawArrows, SizeIsCheckedAlsoWithoutSegments) {
  // The size is checked even where there is no arrow to draw.
  Poly dot(L"dot");
  dot << vx({1, 1}, 0);
  for (const Poly& p : {Poly(), dot}) {
    Traced t;
    EXPECT_THROW(p.drawDirectionArrows(turned(), t.tablet, 0.0), kcShapesError::BadParams);
    kcGraphicList list;
    EXPECT_THROW(p.drawDirectionArrows(turned(), list, -1.0), kcShapesError::BadParams);
  }
}

// --- negative outlines and overlays ---

// A mirror turns the sense a viewer sees: it decides both whether a closed
// poly is negative and which arrow colour it gets.
TEST(SMDDrawNegative, PolarityAndArrowColourFollowDirectionAndMirror) {
  const struct {
    const char* what;
    Poly p;
    X x;
    bool negative;
    kcColor arrows;
  } rows[] = {
      {"open, kept", lead(), turned(), false, kPositive},
      {"open, mirrored", lead(), mirrored(), false, kNegative},
      {"positive, kept", box(), turned(), false, kPositive},
      {"positive, mirrored", box(), mirrored(), true, kNegative},
      {"positive, mirrored in x", box(), X::scale(1, -1), true, kNegative},
      {"positive, half turn", box(), X::rotation(kcRadian(std::numbers::pi)), false, kPositive},
      {"positive, sheared", box(), X(kcMatrix<2>(1, 3, 0, 1), {}), false, kPositive},
      {"negative, kept", clockwise(), turned(), true, kNegative},
      {"negative, mirrored", clockwise(), mirrored(), false, kPositive},
      {"negative by flag", toggled(pad()), turned(), true, kNegative},
      {"negative by flag, mirrored", toggled(box()), mirrored(), false, kPositive},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(P::isNegative(row.p, row.x), row.negative);
    Traced t;
    row.p.drawDirectionArrows(row.x, t.tablet, 2.0);
    ASSERT_FALSE(t.main.segs.empty());
    for (const Capture::Seg& s : t.main.segs) EXPECT_EQ(s.props.penColor(), row.arrows);
  }
}

// The path's geometry: its trace line up to the pen.
std::string geometry(const std::string& line) { return line.substr(0, line.find(" colour(")); }

TEST(SMDDrawNegative, DashedOutlineOfNegativePolysOnly) {
  Traced t;
  P::drawNegWireframe(pad(), mirrored(), t.tablet, kcColor(1, 2, 3), L::overlayLayer);
  Traced wire;
  pad().drawWireframe(mirrored(), wire.tablet);
  ASSERT_EQ(t.overlay.lines().size(), 3u);
  EXPECT_EQ(t.overlay.lines()[0], "lockScreenUpdatesPush true");
  EXPECT_EQ(geometry(t.overlay.lines()[1]), geometry(wire.main.lines()[1]));
  EXPECT_TRUE(
      t.overlay.lines()[1].ends_with(" colour(rgb 1 2 3) width 1 style 1 join 0 cap 0 nofill noarrow"));
  EXPECT_EQ(t.overlay.lines()[2], "lockScreenUpdatesPop");
  EXPECT_TRUE(t.main.lines().empty());

  // A model: the negative polys in order, the others skipped.
  kcSMDGDModel m;
  m << box() << clockwise() << lead() << pad();
  Traced all;
  kcSMDGDModelPrivate::drawNegWireframe(m, mirrored(), all.tablet, kcColor::red, L::overlayLayer);
  Traced each;
  for (const Poly& p : {box(), pad()}) p.drawWireframe(mirrored(), each.tablet);
  ASSERT_EQ(all.overlay.paths.size(), 2u);
  ASSERT_EQ(each.main.paths.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i)
    EXPECT_EQ(geometry(all.overlay.lines()[3 * i + 1]), geometry(each.main.lines()[3 * i + 1])) << i;
}

TEST(SMDDrawOverlay, SegmentsAndArcsWithATwoPelPen) {
  const kc2SegmentLine line(V(1, 2), V(7, -3));
  const struct {
    L layer;
    kc2SegmentArc arc;
    X x;
  } rows[] = {{L::mainLayer, kc2SegmentArc(V(2, 1), 3.0, kcDegree(20), kcDegree(130)), turned()},
              {L::overlayLayer, kc2SegmentArc(V(-1, 4), 2.0, kcDegree(200), kcDegree(-75)), mirrored()}};
  for (const auto& [layer, arc, x] : rows) {
    Traced t;
    P::overlayLineSegment_(line, x, t.tablet, kcColor(4, 5, 6), layer);
    P::overlayArc_(arc, x, t.tablet, kcColor(4, 5, 6), layer);
    const Capture& on = layer == L::mainLayer ? t.main : t.overlay;
    EXPECT_TRUE((layer == L::mainLayer ? t.overlay : t.main).lines().empty());
    EXPECT_EQ(on.lines().size(), 2u);
    ASSERT_EQ(on.segs.size(), 1u);
    ASSERT_EQ(on.arcs.size(), 1u);
    EXPECT_TRUE(near(on.segs[0].a, x * line.p1()));
    EXPECT_TRUE(near(on.segs[0].b, x * line.p2()));
    const kcEllipseArc& a = on.arcs[0].a;
    EXPECT_TRUE(near(a.startPoint(), x * arc.p1()));
    EXPECT_TRUE(near(a.endPoint(), x * arc.p2()));
    EXPECT_TRUE(near(a.point(a.angleStart() + a.angleSpan() / 2.0), x * arc.midPoint()));
    for (const kcGraphicProps& props : {on.segs[0].props, on.arcs[0].props}) {
      EXPECT_EQ(props.penColor(), kcColor(4, 5, 6));
      expectPen(props, 2, kcGraphicProps::penSolid);
    }
  }
}

// --- models and general polygons ---

TEST(SMDDrawModel, DrawsEveryPolyInOrderOnATabletAndIntoAList) {
  const kcSMDGDModel m = model();
  for (const X& x : {turned(), mirrored()}) {
    Traced all;
    m.drawWireframe(x, all.tablet);
    m.drawDirectionArrows(x, all.tablet, 1.5);
    Traced each;
    for (const Poly& p : m.polys()) p.drawWireframe(x, each.tablet);
    for (const Poly& p : m.polys()) p.drawDirectionArrows(x, each.tablet, 1.5);
    EXPECT_EQ(all.main.paths.size(), 3u);
    EXPECT_EQ(all.main.segs.size(), 3u * (4 + 4 + 3));
    EXPECT_EQ(all.main.lines(), each.main.lines());

    // One graphic per arrow, drawing what the tablet call draws.
    kcGraphicList list;
    m.drawDirectionArrows(x, list, 1.5);
    EXPECT_EQ(list.items().size(), 4u + 4u + 3u);
    Traced listed, direct;
    list.draw(listed.tablet, L::mainLayer);
    m.drawDirectionArrows(x, direct.tablet, 1.5);
    EXPECT_EQ(listed.main.lines(), direct.main.lines());
  }
}

TEST(SMDDrawGenPoly, DrawToScopeMatchesTheTablet) {
  kcGraphicProps thin(kcColor::red, 1, kcGraphicProps::penSolid, false);
  kcGraphicProps marked = thin;
  marked.showVertex(true);
  const struct {
    const char* what;
    kcGenPoly g;
    kcGraphicProps props;
    std::size_t arrowHeads, points;
  } rows[] = {
      {"closed: no arrow head", kcGenPoly(pad(), turned(), false), thin, 0, 0},
      {"open: its arrow head", kcGenPoly(lead(), turned(), false), thin, 1, 0},
      {"vertices marked", kcGenPoly(pad()), marked, 0, 4},
      {"open and mapped, vertices marked", kcGenPoly(lead(), mirrored(), false), marked, 1, 4},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Capture scope;
    row.g.drawToScope(row.props, scope);
    Traced t;
    t.tablet.draw(row.g, row.props, L::mainLayer);
    EXPECT_EQ(scope.lines(), t.main.lines());
    EXPECT_EQ(scope.paths.size(), 1u);
    std::size_t heads = 0;
    for (const std::string& l : scope.lines()) {
      // At the end of the path.
      double x = 0, y = 0;
      if (std::sscanf(l.c_str(), "arrowHead %lf %lf", &x, &y) != 2) continue;
      ++heads;
      EXPECT_TRUE(near(V(x, y), scope.paths[0].currentPoint()));
    }
    EXPECT_EQ(heads, row.arrowHeads);
    ASSERT_EQ(scope.points.size(), row.points);
    // vertexPoint() is in client space already: marks are not mapped twice.
    for (std::size_t i = 0; i < row.points; ++i)
      EXPECT_TRUE(near(scope.points[i], row.g.vertexPoint(static_cast<long>(i))));
  }
}

}  // namespace
