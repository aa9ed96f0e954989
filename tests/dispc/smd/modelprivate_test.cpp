// The whole-model helpers: dominant angle, boxes and corners, probes,
// cropping, conversions to and from polygons and wireframes.
#include "dispc/smd/modelprivate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"
#include "tests/dispc/smd/outlines.h"

namespace {

using V = kcVector<2>;
using Poly = kcSMDGDPoly;
using Model = kcSMDGDModel;
using MP = kcSMDGDModelPrivate;
using Vertex = kcSMDGDPolyVertex;

Vertex at(double x, double y, long label = -1, double radius = 0.0) {
  return Vertex(V(x, y), radius, 0.5, 0.5, label);
}

Vertex arcTo(double x, double y, double span) {
  return Vertex(V(x, y), 0.0, kcDegree(span), 0.5, 0.5, -1, kcDimTol(-1, -1, -1, kcDimTol::eOffsets));
}

Poly chain(const std::vector<Vertex>& vs, bool closed) {
  Poly p;
  for (const Vertex& v : vs) p << v;
  if (closed) p.close();
  return p;
}

Model modelOf(const std::vector<Poly>& polys) {
  Model m(L"m");
  for (const Poly& p : polys) m << p;
  return m;
}

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << "(" << a.x() << ", " << a.y() << ") vs (" << b.x() << ", " << b.y() << ")";
}

// A 4 by 2 rectangle turned by t degrees about its centre c, corners rounded by radius.
Poly turnedRectangle(double t, const V& c, double radius = 0.0) {
  Poly r = kc2Rigid(kcDegree(t), c) * Poly::rectangle(4, 2, V());
  std::vector<Vertex> vs = r.vertices();
  for (Vertex& v : vs) v.vertexRadius(radius);
  r.vertices(vs);
  return r;
}

// --- dominant angle, position, corners ---

TEST(SMDModelPosition, DominantAngleOfATurnedRectangleIsItsTurnModulo90) {
  for (const auto& [turn, expected] : std::vector<std::pair<double, double>>{
           {0, 0}, {30, 30}, {44.5, 44.5}, {45, -45}, {60, -30}, {-20, -20}, {90, 0}, {135, -45}}) {
    SCOPED_TRACE(turn);
    EXPECT_NEAR(MP::dominantAngle(modelOf({turnedRectangle(turn, V(1, 2))})).toDouble(), expected, 1e-12);
    // Rounded corners trim the sides, not their directions.
    EXPECT_NEAR(MP::dominantAngle(modelOf({turnedRectangle(turn, V(1, 2), 0.4)})).toDouble(), expected,
                1e-12);
  }
  // Nothing straight, or directions that cancel (an octagon's sides lie 45
  // degrees apart), give 0.
  EXPECT_EQ(MP::dominantAngle(modelOf({Poly::circle(2, V(3, 3))})).toDouble(), 0.0);
  std::vector<Vertex> octagon;
  for (int k = 0; k < 8; ++k) {
    const double a = (22.5 + 45 * k) * std::numbers::pi / 180;
    octagon.push_back(at(std::cos(a), std::sin(a)));
  }
  EXPECT_EQ(MP::dominantAngle(modelOf({chain(octagon, true)})).toDouble(), 0.0);
}

TEST(SMDModelPosition, CornersAreTheRectanglesOwnInTurnedOrder) {
  // Turned by 30 the frame runs along the long sides: corner 0, lowest in
  // that frame, is vertex 2; turned by 60 the frame turns by -30, along the
  // short sides, and corner 0 is vertex 1.
  for (const auto& [turn, first, frame, size] :
       std::vector<std::tuple<double, int, double, V>>{{30, 2, 30, V(4, 2)}, {60, 1, -30, V(2, 4)}}) {
    SCOPED_TRACE(turn);
    const Poly r = turnedRectangle(turn, V(1, 2));
    const Model m = modelOf({r});
    for (int i = 0; i < 4; ++i) expectNear(MP::corner(m, i), r.vertices()[(i + first) % 4].point());
    EXPECT_NEAR(kcDegree(MP::normalizedPosition(m).angle()).toDouble(), frame, 1e-12);
    expectNear(MP::normalizedPosition(m).trans(), V(1, 2));
    expectNear(MP::alignedBox(m).size(), size);
  }
  // The box is the whole model's: a circle beside the rectangle widens it.
  const Model two = modelOf({Poly::rectangle(4, 2, V()), Poly::circle(1, V(5, 0))});
  expectNear(MP::normalizedPosition(two).trans(), V(2, 0));
  expectNear(MP::corner(two, 2), V(6, 1));
  EXPECT_THROW((void)MP::corner(two, 4), Model::invalidIndex);
  EXPECT_THROW((void)MP::corner(Model(), 0), kcShapesError::EmptyShape);
  EXPECT_TRUE(MP::normalizedPosition(Model()) == kc2Rigid());
}

TEST(SMDModelPosition, ProbesNeededByTheStraightEdges) {
  EXPECT_EQ(MP::numPosProbesRequired(Model()), 0);
  EXPECT_EQ(MP::numPosProbesRequired(modelOf({Poly::circle(1, V()), Poly::circle(2, V(5, 5))})), 0);
  // One way: parallel edges, one travelled back, one within a degree across
  // the half turn, and a circle that adds no direction.
  const Poly rail = chain({at(0, 0), at(10, 0)}, false);
  const Poly back = chain({at(10, 1), at(0, 1)}, false);
  const Poly tilted = kc2Rigid(kcDegree(179.5), V(0, 3)) * rail;
  EXPECT_EQ(MP::numPosProbesRequired(modelOf({rail, back, tilted, Poly::circle(1, V(5, 5))})), 2);
  EXPECT_EQ(MP::numPosProbesRequired(modelOf({rail, kc2Rigid(kcDegree(1.5), V(0, 3)) * rail})), 3);
  EXPECT_EQ(MP::numPosProbesRequired(modelOf({Poly::rectangle(4, 2, V())})), 3);
}

// --- cropping ---

const Poly kWindow = chain({at(0, 0), at(10, 0), at(10, 10), at(0, 10)}, true);

TEST(SMDModelCrop, KeepsWhatLiesInsideOrOnTheWindow) {
  Model m(L"board");
  m.placement(kc2Rigid(kcDegree(5), V(1, 1)));
  m << Poly::rectangle(2, 2, V(3, 3))              // 0 inside: kept
    << Poly::rectangle(2, 2, V(10, 5))             // 1 across the right side
    << Poly::rectangle(2, 2, V(20, 5))             // 2 outside
    << Poly::rectangle(2, 2, V(9, 5))              // 3 on the right side from inside: kept
    << Poly::rectangle(2, 2, V(11, 5))             // 4 on the right side from outside
    << Poly::circle(1, V(5, 7))                    // 5 inside: kept
    << chain({at(1, 8, 4), at(2, 9, 4)}, false)    // 6 open, inside: kept
    << Poly::circle(1, V(5, 1))                    // 7 touching the bottom: kept
    << chain({arcTo(1, 4, 240), at(1, 6)}, true);  // 8 bulging out across the left side
  const Model kept = MP::crop(m, kWindow);
  ASSERT_EQ(kept.numPolys(), 5);
  for (const auto& [k, i] : std::vector<std::pair<int, int>>{{0, 0}, {1, 3}, {2, 5}, {3, 6}, {4, 7}})
    EXPECT_TRUE(kept.poly(k) == m.poly(i)) << "kept " << k << " should be poly " << i;
  EXPECT_EQ(kept.name(), L"board");
  EXPECT_TRUE(kept.placement() == m.placement());
  EXPECT_EQ(kept.subModelLabels(), (std::vector<std::int32_t>{0, 1, 2, 3, 4}));
  // The same window as a polygon; an empty polygon keeps nothing.
  EXPECT_TRUE(MP::crop(m, kcPolygon({V(0, 0), V(10, 0), V(10, 10), V(0, 10)})) == kept);
  EXPECT_EQ(MP::crop(m, kcPolygon()).numPolys(), 0);
  EXPECT_THROW((void)MP::crop(m, chain({at(0, 0), at(10, 0), at(10, 10)}, false)), Poly::notClosed);
}

TEST(SMDModelCrop, NonConvexRoundedAndCurvedWindows) {
  // An L: what only touches its inner corner (5, 5) lies inside, what passes
  // through it into the notch does not.
  const Poly ell = chain({at(0, 0), at(10, 0), at(10, 5), at(5, 5), at(5, 10), at(0, 10)}, true);
  EXPECT_TRUE(MP::liesInside(chain({at(4, 6), at(2, 2), at(6, 4)}, true), ell));
  EXPECT_FALSE(MP::liesInside(chain({at(2, 2), at(8, 8)}, false), ell));
  // Corners rounded by 3 cut off what sits in a corner.
  const Poly rounded = chain({at(0, 0, -1, 3), at(10, 0, -1, 3), at(10, 10, -1, 3), at(0, 10, -1, 3)}, true);
  EXPECT_FALSE(MP::liesInside(Poly::rectangle(1, 1, V(1, 1)), rounded));
  EXPECT_TRUE(MP::liesInside(Poly::rectangle(1, 1, V(3.5, 3.5)), rounded));
  EXPECT_TRUE(MP::liesInside(rounded, kWindow));
  EXPECT_TRUE(MP::liesInside(kWindow, kWindow));
  // A square inscribed in a circle touches it at its corners; a larger one crosses.
  const Poly circle = Poly::circle(5, V(5, 5));
  const double side = 10 / std::numbers::sqrt2;
  EXPECT_TRUE(MP::liesInside(Poly::rectangle(side, side, V(5, 5)), circle));
  EXPECT_FALSE(MP::liesInside(Poly::rectangle(side + 0.01, side + 0.01, V(5, 5)), circle));
  EXPECT_FALSE(MP::liesInside(Poly(), kWindow));
}

TEST(SMDModelCrop, ByAModelKeepsWhatLiesInOneWindowAndRefusesNesting) {
  Model windows;
  windows << kWindow << kc2Rigid(kcDegree(0), V(20, 0)) * kWindow
          << chain({at(40, 0), at(50, 0), at(50, 10)}, false);  // open: no window
  const Model m = modelOf({Poly::rectangle(2, 2, V(3, 3)), Poly::rectangle(2, 2, V(15, 5)),
                           Poly::rectangle(2, 2, V(25, 5)), Poly::rectangle(2, 2, V(45, 8))});
  const Model kept = MP::crop(m, windows);
  ASSERT_EQ(kept.numPolys(), 2);
  EXPECT_TRUE(kept.poly(0) == m.poly(0));
  EXPECT_TRUE(kept.poly(1) == m.poly(2));
  // A lead beside a body passes; a pad within it does not, open or closed.
  Model body = modelOf({Poly::rectangle(6, 6, V(5, 5)), chain({at(9, 1), at(9, 9)}, false)});
  EXPECT_EQ(MP::crop(body, windows).numPolys(), 2);
  EXPECT_THROW((void)MP::crop(modelOf({body.poly(0), Poly::rectangle(2, 2, V(5, 5))}), windows),
               Model::nestedPolys);
  body << chain({at(4, 4), at(6, 6)}, false);
  EXPECT_THROW((void)MP::crop(body, windows), Model::nestedPolys);
  EXPECT_EQ(MP::crop(body, kWindow).numPolys(), 3);  // one window never asks
}

// Cutting at the crossings and testing the middles agrees with testing
// points packed densely along the inner outline.
TEST(SMDModelCrop, LiesInsideAgreesWithDenseSampling) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int inside = 0, trials = 0;
  while (trials < 60) {
    Poly outer;
    try {
      outer = chain(dispc_test::wobblyRing(rng, 12), true);
    } catch (const kcException&) {
      continue;  // a wild ring folds over itself
    }
    ++trials;
    const Poly inner = kc2Rigid(kcDegree(360 * unit(rng)), V(16 * unit(rng) - 8, 16 * unit(rng) - 8)) *
                       Poly::rectangle(1 + 4 * unit(rng), 1 + 4 * unit(rng), V());
    bool sampled = true;
    for (const kcSMDPiece_& piece : kfOutlinePieces_(inner))
      for (int k = 0; k <= 64 && sampled; ++k)
        sampled = kcSMDGDPolyPrivate::inside(outer, std::get<kc2SegmentLine>(piece).segPoint(k / 64.0));
    EXPECT_EQ(MP::liesInside(inner, outer), sampled) << "trial " << trials;
    inside += sampled;
  }
  EXPECT_GT(inside, 10);
  EXPECT_LT(inside, 50);
}

// --- conversions ---

TEST(SMDModelConvert, PolygonsBecomeSharpClosedPolys) {
  const kcPolygon triangle({V(0, 0), V(4, 0), V(0, 3)});
  const kcPolygon clockwise({V(10, 0), V(10, 2), V(12, 2), V(12, 0)});
  const Model m = MP::convert({triangle, clockwise}, L"pads");
  EXPECT_EQ(m.name(), L"pads");
  ASSERT_EQ(m.numPolys(), 2);
  EXPECT_TRUE(m.subModelLabels().empty());
  for (int i = 0; i < 2; ++i) {
    const std::vector<V>& want = (i == 0 ? triangle : clockwise).vertices();
    ASSERT_EQ(m.poly(i).numVertices(), static_cast<long>(want.size()));
    for (std::size_t k = 0; k < want.size(); ++k) EXPECT_EQ(m.poly(i).vertices()[k].point(), want[k]);
  }
  EXPECT_TRUE(m.poly(0).isDirectionPositive());
  EXPECT_FALSE(m.poly(1).isDirectionPositive());
  EXPECT_THROW((void)MP::convert({kcPolygon({V(0, 0), V(2, 2), V(2, 0), V(0, 2)})}, L"bow"),
               Poly::crossingSegments);
}

TEST(SMDModelConvert, WireframesCarryThePolysThereAndBack) {
  const Model m = modelOf({Poly::rectangle(4, 2, V(1, 1)), Poly::circle(1, V(5, 0)),
                           chain({at(0, 5, 3), at(2, 5, 3), at(2, 7, 4, 0.5), at(4, 7, 4)}, false)});
  const std::vector<kc2Wireframe> wires = MP::convert(m);
  Model back(L"back");
  back << wires;
  EXPECT_TRUE(MP::equivalent(back, m));
  EXPECT_EQ(back.subModelLabels(), m.subModelLabels());
  EXPECT_EQ(back.poly(0).name(), L"poly");
  // Seen through a similarity a wireframe carries the moved poly; sheared it
  // carries none, and nothing is added.
  const kc2Rigid r(kcDegree(40), V(3, -2));
  Model moved;
  moved << std::vector<kc2Wireframe>{wires[0].map(r, 2.0)};
  EXPECT_TRUE(kfRealEq(moved.poly(0), r * (2.0 * m.poly(0)), 1e-12));
  const std::vector<kc2Wireframe> sheared{wires[1], wires[0].map(kcXform<2>(kcMatrix<2>(1, 0.5, 0, 1), V()))};
  EXPECT_THROW(back << sheared, kcShapesError::BadGeom);
  EXPECT_EQ(back.numPolys(), 3);
}

TEST(SMDModelConvert, WeightedWireframesAndPolyFrames) {
  const Model m = modelOf({turnedRectangle(30, V(1, 2)), Poly::triangle(2, 3, V(-4, 0))});
  const Model weighted = MP::weightedWireframesToModel(MP::convert(m), {0.25, 4}, L"weighted");
  EXPECT_EQ(weighted.name(), L"weighted");
  ASSERT_EQ(weighted.numPolys(), 2);
  EXPECT_EQ(weighted.poly(0).weight(), 0.25);
  EXPECT_EQ(weighted.poly(1).weight(), 4.0);
  EXPECT_THROW((void)MP::weightedWireframesToModel(MP::convert(m), {1.0}, L"short"), Model::invalidIndex);
  // Each frame sits at its poly's centre of mass, its x axis along the
  // poly's first side.
  const std::vector<kcXform<2>> frames = MP::wireframeXforms(m);
  ASSERT_EQ(frames.size(), 2u);
  expectNear(frames[0] * V(), V(1, 2));
  expectNear(frames[1] * V(), V(-4, 0));
  for (int i = 0; i < 2; ++i) {
    const V side = frames[i].inverse() * m.poly(i).vertices()[1].point() -
                   frames[i].inverse() * m.poly(i).vertices()[0].point();
    EXPECT_NEAR(side.y(), 0.0, 1e-12);
    EXPECT_GT(side.x(), 0.0);
  }
}

}  // namespace
