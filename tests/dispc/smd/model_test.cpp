// The SMD model and its companion's whole-model helpers: labels, editing,
// transforms and the archive form; positions, cropping and conversions.
#include "dispc/smd/model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "dispc/smd/modelprivate.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"
#include "tests/dispc/archive_checks.h"
#include "tests/dispc/smd/outlines.h"

namespace {

using V = kcVector<2>;
using Poly = kcSMDGDPoly;
using Model = kcSMDGDModel;
using MP = kcSMDGDModelPrivate;
using Vertex = kcSMDGDPolyVertex;
using dispc_test::Bytes;
using Labels = std::vector<std::int32_t>;

Vertex at(double x, double y, long label = -1, double radius = 0.0) {
  return Vertex(V(x, y), radius, 0.5, 0.5, label);
}

Poly chain(const std::vector<Vertex>& vs, bool closed) {
  Poly p;
  for (const Vertex& v : vs) p << v;
  if (closed) p.close();
  return p;
}

Model modelOf(const std::vector<Poly>& polys, const kc2Rigid& placement = kc2Rigid()) {
  Model m(L"m");
  for (const Poly& p : polys) m << p;
  m.placement(placement);
  return m;
}

// Everything a model shows, as bytes: name, polys, labels, placement.
Bytes state(const Model& m) { return dispc_test::stored(m); }

void expectNear(const V& a, const V& b) { EXPECT_LE(a.distance(b), 1e-12) << a.x() << ", " << a.y(); }

// A rectangle and a triangle (labels 0 to 3 from the factories) and an open
// L with labels 7 and 3, placed.
Model threePolys() {
  return modelOf({Poly::rectangle(4, 2, V()), Poly::triangle(2, 2, V(10, 0)),
                  chain({at(20, 0, 7), at(22, 0, 7), at(22, 2, 3)}, false)},
                 kc2Rigid(kcDegree(15), V(1, -1)));
}

// A 4 by 2 rectangle turned by t degrees about c.
Poly turned(double t, const V& c) { return kc2Rigid(kcDegree(t), c) * Poly::rectangle(4, 2, V()); }

const Poly kWindow = chain({at(0, 0), at(10, 0), at(10, 10), at(0, 10)}, true);

// --- building, editing, queries ---

TEST(SMDModel, LabelsAreTheUnionInOrderOfFirstAppearance) {
  Model m = threePolys();
  EXPECT_EQ(m.numVertices(), 4 + 3 + 3);
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3, 7}));
  EXPECT_TRUE(m.isOpen());  // the L
  m << m << m.poly(5);      // itself, and one of its own polys
  ASSERT_EQ(m.numPolys(), 7);
  EXPECT_TRUE(m.poly(6) == m.poly(5));
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3, 7}));
  m.polys({m.poly(2), Poly::circle(1, V())});
  EXPECT_EQ(m.subModelLabels(), (Labels{7, 3, 0}));
}

TEST(SMDModel, EditsKeepOnlyLabelsStillUsedAndBadIndicesChangeNothing) {
  Model m = threePolys();
  const Bytes before = state(m);
  for (int bad : {-1, m.numPolys()}) {
    EXPECT_THROW((void)m.poly(bad), Model::invalidIndex);
    EXPECT_THROW(MP::deletePoly(m, bad), Model::invalidIndex);
    EXPECT_THROW(MP::replacePoly(m, bad, Poly::circle(1, V())), Model::invalidIndex);
  }
  EXPECT_EQ(state(m), before);
  MP::deletePoly(m, 2);  // the only poly with 7
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3}));
  MP::replacePoly(m, 0, chain({at(0, 0, 9), at(1, 0, 9), at(1, 1, 2)}, true));
  EXPECT_EQ(m.subModelLabels(), (Labels{9, 2, 0, 1}));
  EXPECT_TRUE(m.placement() == threePolys().placement());
  MP::deleteAllPolys(m);
  EXPECT_TRUE(m.subModelLabels().empty());
  EXPECT_TRUE(m.placement() == threePolys().placement());
  MP::reset(m);
  EXPECT_TRUE(m.placement() == kc2Rigid());
  EXPECT_EQ(m.name(), L"m");
}

TEST(SMDModel, ErrorNumbersAndTexts) {
  EXPECT_EQ(Model::invalidIndex().errorNumber(), 0x11000370);
  EXPECT_EQ(Model::invalidIndex().message(), L"Invalid poly index specified.");
  EXPECT_EQ(Model::crossingPolys().errorNumber(), 0x11000371);
  EXPECT_EQ(Model::crossingPolys().message(), L"At least two polys intersect.");
  EXPECT_EQ(Model::nestedPolys().errorNumber(), 0x11000372);
  EXPECT_EQ(Model::nestedPolys().message(), L"At least one of the polys is nested.");
}

TEST(SMDModel, EqualityComparesPolysInOrderAndPlacementsNotNames) {
  const Model a = threePolys();
  Model b(L"other");
  b << a;
  b.placement(a.placement());
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(a != modelOf({a.poly(1), a.poly(0), a.poly(2)}, a.placement()));
  b.placement(kc2Rigid(kcDegree(15), V(1, -1 + 1e-9)));
  EXPECT_TRUE(a != b);
}

TEST(SMDModel, FlipMirrorsEveryPolyAndForgetsNameAndPlacement) {
  const Model m = threePolys();
  const Model f = m.flip();
  EXPECT_EQ(f.name(), L"");
  EXPECT_TRUE(f.placement() == kc2Rigid());
  EXPECT_EQ(f.poly(2).vertices()[2].point(), V(-22, 2));
  EXPECT_TRUE(MP::equivalent(f.flip(), m));
}

TEST(SMDModel, SubModelTakesEveryRunOfTheLabel) {
  // Labels 5 5 1 1 5 5 on an open chain make two runs of 5; a closed square
  // all of 5 is taken whole.
  const Poly square = chain({at(0, 2, 5), at(2, 2, 5), at(2, 4, 5), at(0, 4, 5)}, true);
  Model m = modelOf(
      {chain({at(0, 0, 5), at(1, 0, 5), at(2, 0, 1), at(3, 0, 1), at(4, 0, 5), at(5, 0, 5)}, false), square});
  Model out(L"out");
  m.subModel(5, out);
  ASSERT_EQ(out.numPolys(), 3);
  EXPECT_EQ(out.poly(0).vertices().back().point(), V(1, 0));
  EXPECT_EQ(out.poly(1).vertices().front().point(), V(4, 0));
  EXPECT_TRUE(out.poly(2) == square);
  expectNear(out.placement().trans(), V(2.5, 2));  // the middle of (0, 0) to (5, 4)
  // A label nobody carries adds nothing; a lone vertex of one is no outline.
  const Bytes before = state(out);
  m.subModel(42, out);
  m << chain({at(0, 9, 1), at(1, 9, 8), at(2, 9, 1)}, false);
  EXPECT_THROW(m.subModel(8, out), Poly::badSubModel);
  EXPECT_EQ(state(out), before);
}

TEST(SMDModel, PolysOutOfToleranceInOrder) {
  const Vertex tight(V(1, 0), 0.0, kcDegree(0), 0.5, 0.5, -1, kcDimTol(1, 0.01, 0.01, kcDimTol::eOffsets));
  const Poly toleranced = chain({at(0, 0), tight, at(1, 1)}, false);
  const Model m = modelOf({Poly::rectangle(2, 2, V()), toleranced, Poly::circle(1, V()), toleranced});
  EXPECT_TRUE(m.polysOutOfTolerance(kcXform<2>(), kcXform<2>()).empty());
  EXPECT_EQ(m.polysOutOfTolerance(kcXform<2>::scale(1.03, 1.03), kcXform<2>()), (std::vector<long>{1, 3}));
}

// The placement stays the pose of the same polys: its inverse takes a
// vertex to the same local point before and after.
void expectPlacementFollows(const Model& before, const Model& after) {
  expectNear(after.placement().inverse() * after.poly(1).vertices()[0].point(),
             before.placement().inverse() * before.poly(1).vertices()[0].point());
}

TEST(SMDModel, TransformsMovePolysAndPlacement) {
  const Model m = threePolys();
  const kc2Rigid r(kcDegree(30), V(5, 7));
  const Model moved = r * m;
  EXPECT_EQ(moved.name(), L"m");
  for (int i = 0; i < m.numPolys(); ++i) EXPECT_TRUE(moved.poly(i) == r * m.poly(i));
  expectPlacementFollows(m, moved);
  const Model big = 2.0 * m;
  EXPECT_EQ(big.poly(0).vertices()[0].point(), V(4, 2));
  EXPECT_EQ(big.placement().trans(), V(2, -2));
  expectPlacementFollows(m, -1.0 * m);  // half a turn, placement and all
  // A transform that breaks a poly throws and leaves the source alone.
  const Bytes before = state(m);
  EXPECT_THROW((void)(0.0 * m), kcException);
  EXPECT_EQ(state(m), before);
}

// Extensions are set on every poly, then shortened pairwise, each poly
// against the other both ways.
TEST(SMDModel, ExtensionsStopShortOfOtherPolys) {
  // Far apart, every corner gets its half: each side grows by its length.
  Model apart = modelOf({Poly::rectangle(4, 2, V(0, 0)), Poly::rectangle(2, 2, V(10, 0))});
  MP::setExtensions_(apart, 0.5, kcDegree(10), 0.1, 0.01);
  EXPECT_NEAR(MP::extensionPerimeter_(apart), 2 * (12 + 8), 1e-12);
  // A body whose right side, extended upwards, would run into a pad; the
  // pad's own extensions run clear. Either order gives the same.
  const Poly body = Poly::rectangle(2, 2, V(1, 1));
  const Poly pad = chain({at(1.5, 2.5), at(3, 2.5), at(3, 3.5), at(1.5, 3.5)}, true);
  Model near = modelOf({body, pad}), swapped = modelOf({pad, body});
  MP::setExtensions_(near, 0.5, kcDegree(10), 0.1, 0.01);
  MP::setExtensions_(swapped, 0.5, kcDegree(10), 0.1, 0.01);
  const double up = near.poly(0).vertices()[0].forwardPercExtension();  // segment 0 ends at (2, 2)
  EXPECT_GT(up, 0.0);
  EXPECT_LT(up, 0.5);
  EXPECT_EQ(near.poly(0).vertices()[3].backwardPercExtension(), 0.5);  // downwards, clear
  EXPECT_TRUE(swapped == modelOf({near.poly(1), near.poly(0)}));
}

// --- archive ---

void putU32(Bytes& b, std::size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }

// Loading the bytes into a copy of target throws Error, which comes back;
// the copy keeps what it had.
template <class Error>
Error refusal(const Bytes& bytes, const Model& target) {
  Model kept = target;
  try {
    kcMemArchive in(bytes);
    in || kept;
    ADD_FAILURE() << "load accepted";
  } catch (const Error& e) {
    EXPECT_EQ(state(kept), state(target));
    return e;
  }
  return Error();
}

TEST(SMDModelArchive, RoundTripsKeepEverything) {
  const Model m = threePolys();
  const Bytes bytes = state(m);
  EXPECT_EQ(state(dispc_test::loaded(bytes, Model(L"x"))), bytes);
  EXPECT_TRUE(dispc_test::loaded(state(Model()), m) == Model());
  // The companion: its own version byte, then the model's form.
  const Bytes priv = dispc_test::stored(MP(m));
  EXPECT_EQ(Bytes(priv.begin() + 1, priv.end()), bytes);
  EXPECT_TRUE(dispc_test::loaded(priv, MP()) == m);
  // By handle, as its own class.
  kcPtrHandle<kcSMDGeometricDescription> h(new Model(m)), loaded;
  kcMemArchive out;
  out || h;
  kcMemArchive in(out.bytes());
  in || loaded;
  EXPECT_STREQ(loaded->className(), "kcSMDGDModel");
  EXPECT_TRUE(dynamic_cast<const Model&>(*loaded) == m);
}

TEST(SMDModelArchive, RefusedLoadsLeaveTheTarget) {
  const Model target = threePolys();
  const Bytes bytes = state(modelOf({chain({at(0, 0, 1), at(4, 0, 1), at(4, 4, 2)}, true)}));
  for (std::size_t n = 0; n < bytes.size(); ++n)
    (void)refusal<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.begin() + n), target);
  // The poly count follows the two versions and the name; the placement's
  // 24 bytes follow the labels.
  const std::size_t count = 2 + 4 + 2, labelsEnd = bytes.size() - 24;
  Bytes huge = bytes, more = bytes, other = bytes, swapped = bytes, notFinite = bytes, v1 = bytes;
  putU32(huge, count, 0xFFFFFFF0u);
  EXPECT_EQ(refusal<kcArchive::Corrupt>(huge, target).text(), L"count larger than the remaining data");
  putU32(more, count, 2);  // one poly too many: the label count is read as its version
  (void)refusal<kcArchive::UnknownVersion>(more, target);
  // Labels that are not the polys' in order.
  putU32(other, labelsEnd - 4, 9);
  putU32(swapped, labelsEnd - 8, 2);
  putU32(swapped, labelsEnd - 4, 1);
  for (const Bytes& bad : {other, swapped})
    EXPECT_EQ(refusal<kcArchive::Corrupt>(bad, target).text(),
              L"model labels that are not those of its polys");
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::memcpy(notFinite.data() + labelsEnd, &nan, 8);
  EXPECT_EQ(refusal<kcArchive::Corrupt>(notFinite, target).text(), L"model placement that is not finite");
  v1[0] = 1;
  EXPECT_EQ(refusal<kcArchive::UnknownVersion>(v1, target).file(), "dispc/smd/model");
}

// --- dominant angle, position, corners, probes ---

TEST(SMDModelPosition, DominantAngleOfATurnedRectangleIsItsTurnModulo90) {
  const std::pair<double, double> rows[] = {{0, 0},    {30, 30},   {44.5, 44.5}, {45, -45},
                                            {60, -30}, {-20, -20}, {90, 0},      {135, -45}};
  for (const auto& [turn, expected] : rows)
    EXPECT_NEAR(MP::dominantAngle(modelOf({turned(turn, V(1, 2))})).toDouble(), expected, 1e-12) << turn;
  // Nothing straight, or directions that cancel (an octagon's sides lie 45
  // degrees apart), give 0.
  EXPECT_EQ(MP::dominantAngle(modelOf({Poly::circle(2, V(3, 3))})).toDouble(), 0.0);
  std::vector<Vertex> octagon;
  for (int k = 0; k < 8; ++k)
    octagon.push_back(at(std::cos((22.5 + 45 * k) * std::numbers::pi / 180),
                         std::sin((22.5 + 45 * k) * std::numbers::pi / 180)));
  EXPECT_EQ(MP::dominantAngle(modelOf({chain(octagon, true)})).toDouble(), 0.0);
}

TEST(SMDModelPosition, CornersAreTheRectanglesOwnInTurnedOrder) {
  // Turned by 30 the frame runs along the long sides and corner 0, lowest in
  // that frame, is vertex 2; turned by 60 the frame turns by -30, along the
  // short sides, and corner 0 is vertex 1.
  for (const auto& [turn, first, frame] : {std::tuple(30.0, 2, 30.0), std::tuple(60.0, 1, -30.0)}) {
    const Poly r = turned(turn, V(1, 2));
    const Model m = modelOf({r});
    for (int i = 0; i < 4; ++i) expectNear(MP::corner(m, i), r.vertices()[(i + first) % 4].point());
    EXPECT_NEAR(kcDegree(MP::normalizedPosition(m).angle()).toDouble(), frame, 1e-12);
    expectNear(MP::normalizedPosition(m).trans(), V(1, 2));
  }
  // The box is the whole model's: a circle beside the rectangle widens it.
  const Model two = modelOf({Poly::rectangle(4, 2, V()), Poly::circle(1, V(5, 0))});
  expectNear(MP::normalizedPosition(two).trans(), V(2, 0));
  expectNear(MP::alignedBox(two).size(), V(8, 2));
  expectNear(MP::corner(two, 2), V(6, 1));
  EXPECT_THROW((void)MP::corner(two, 4), Model::invalidIndex);
  EXPECT_THROW((void)MP::corner(Model(), 0), kcShapesError::EmptyShape);
  EXPECT_TRUE(MP::normalizedPosition(Model()) == kc2Rigid());
}

TEST(SMDModelPosition, ProbesNeededByTheStraightEdges) {
  const Poly rail = chain({at(0, 0), at(10, 0)}, false), back = chain({at(10, 1), at(0, 1)}, false);
  const auto tilted = [&](double t) { return kc2Rigid(kcDegree(t), V(0, 3)) * rail; };
  const std::pair<std::vector<Poly>, long> rows[] = {
      {{Poly::circle(1, V())}, 0},                                 // nothing straight
      {{tilted(40), tilted(40.5)}, 2},                             // one way within a degree
      {{rail, back, tilted(179.5), Poly::circle(1, V(5, 5))}, 2},  // also across the half turn
      {{rail, tilted(1.5)}, 3},
      {{Poly::rectangle(4, 2, V())}, 3},
  };
  for (const auto& [polys, probes] : rows) EXPECT_EQ(MP::numPosProbesRequired(modelOf(polys)), probes);
}

// --- cropping ---

TEST(SMDModelCrop, KeepsWhatLiesInsideOrOnTheWindow) {
  const Poly bulge = chain({Vertex(V(1, 4), 0.0, kcDegree(240), 0.5, 0.5, -1, kcDimTol()), at(1, 6)}, true);
  const Model m = modelOf({Poly::rectangle(2, 2, V(3, 3)),            // 0 inside: kept
                           Poly::rectangle(2, 2, V(10, 5)),           // 1 across the right side
                           Poly::rectangle(2, 2, V(20, 5)),           // 2 outside
                           Poly::rectangle(2, 2, V(9, 5)),            // 3 on the right side from inside: kept
                           Poly::rectangle(2, 2, V(11, 5)),           // 4 on the right side from outside
                           chain({at(1, 8, 4), at(2, 9, 4)}, false),  // 5 open, inside: kept
                           Poly::circle(1, V(5, 1)),                  // 6 touching the bottom: kept
                           bulge},                                    // 7 bulging out across the left side
                          kc2Rigid(kcDegree(5), V(1, 1)));
  const Model kept = MP::crop(m, kWindow);
  EXPECT_TRUE(kept == modelOf({m.poly(0), m.poly(3), m.poly(5), m.poly(6)}, m.placement()));
  EXPECT_EQ(kept.name(), L"m");
  EXPECT_EQ(kept.subModelLabels(), (Labels{0, 1, 2, 3, 4}));
  // The same window as a polygon; an empty polygon keeps nothing.
  EXPECT_TRUE(MP::crop(m, kcPolygon({V(0, 0), V(10, 0), V(10, 10), V(0, 10)})) == kept);
  EXPECT_EQ(MP::crop(m, kcPolygon()).numPolys(), 0);
  EXPECT_THROW((void)MP::crop(m, chain({at(0, 0), at(10, 0), at(10, 10)}, false)), Poly::notClosed);
}

TEST(SMDModelCrop, TouchingPassesCrossingEvenThroughACornerDoesNot) {
  // An L: what only touches its inner corner (5, 5) lies inside; what passes
  // through it into the notch does not, nor a lone vertex in the notch.
  const Poly ell = chain({at(0, 0), at(10, 0), at(10, 5), at(5, 5), at(5, 10), at(0, 10)}, true);
  EXPECT_TRUE(MP::liesInside(chain({at(4, 6), at(2, 2), at(6, 4)}, true), ell));
  EXPECT_FALSE(MP::liesInside(chain({at(2, 2), at(8, 8)}, false), ell));
  EXPECT_FALSE(MP::liesInside(chain({at(8, 8)}, false), ell));
  // Corners rounded by 3 cut off what sits in a corner.
  const Poly rounded = chain({at(0, 0, -1, 3), at(10, 0, -1, 3), at(10, 10, -1, 3), at(0, 10, -1, 3)}, true);
  EXPECT_FALSE(MP::liesInside(Poly::rectangle(1, 1, V(1, 1)), rounded));
  // A square inscribed in a circle touches it at its corners; a larger one crosses.
  const double side = 10 / std::numbers::sqrt2;
  EXPECT_TRUE(MP::liesInside(Poly::rectangle(side, side, V(5, 5)), Poly::circle(5, V(5, 5))));
  EXPECT_FALSE(MP::liesInside(Poly::rectangle(side + 0.01, side + 0.01, V(5, 5)), Poly::circle(5, V(5, 5))));
  EXPECT_FALSE(MP::liesInside(Poly(), kWindow));
}

// Cutting at the crossings and testing the middles agrees with testing
// points packed densely along the inner outline.
TEST(SMDModelCrop, LiesInsideAgreesWithDenseSampling) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int inside = 0;
  for (int trial = 0; trial < 60;) {
    Poly outer;
    try {
      outer = chain(dispc_test::wobblyRing(rng, 12), true);
    } catch (const kcException&) {
      continue;  // a wild ring folds over itself
    }
    ++trial;
    const Poly inner = kc2Rigid(kcDegree(360 * unit(rng)), V(16 * unit(rng) - 8, 16 * unit(rng) - 8)) *
                       Poly::rectangle(1 + 4 * unit(rng), 1 + 4 * unit(rng), V());
    bool sampled = true;
    for (const kcSMDPiece_& piece : kfOutlinePieces_(inner))
      for (int k = 0; k <= 64 && sampled; ++k)
        sampled = kcSMDGDPolyPrivate::inside(outer, std::get<kc2SegmentLine>(piece).segPoint(k / 64.0));
    EXPECT_EQ(MP::liesInside(inner, outer), sampled) << "trial " << trial;
    inside += sampled;
  }
  EXPECT_GT(inside, 10);  // both answers come up
  EXPECT_LT(inside, 50);
}

TEST(SMDModelCrop, ByAModelKeepsWhatLiesInOneWindowAndRefusesNesting) {
  const Model windows = modelOf({kWindow, kc2Rigid(kcDegree(0), V(20, 0)) * kWindow,
                                 chain({at(40, 0), at(50, 0), at(50, 10)}, false)});  // open: no window
  const Model m = modelOf({Poly::rectangle(2, 2, V(3, 3)), Poly::rectangle(2, 2, V(15, 5)),
                           Poly::rectangle(2, 2, V(25, 5)), Poly::rectangle(2, 2, V(45, 8))});
  EXPECT_TRUE(MP::crop(m, windows) == modelOf({m.poly(0), m.poly(2)}));
  // A lead beside a body passes; a pad within it does not, open or closed.
  Model body = modelOf({Poly::rectangle(6, 6, V(5, 5)), chain({at(9, 1), at(9, 9)}, false)});
  EXPECT_EQ(MP::crop(body, windows).numPolys(), 2);
  EXPECT_THROW((void)MP::crop(modelOf({body.poly(0), Poly::rectangle(2, 2, V(5, 5))}), windows),
               Model::nestedPolys);
  body << chain({at(4, 4), at(6, 6)}, false);
  EXPECT_THROW((void)MP::crop(body, windows), Model::nestedPolys);
  EXPECT_EQ(MP::crop(body, kWindow).numPolys(), 3);  // one window never asks
}

// --- conversions ---

TEST(SMDModelConvert, PolygonsBecomeSharpClosedPolysAsGiven) {
  const Model m =
      MP::convert({kcPolygon({V(0, 0), V(4, 0), V(0, 3)}), kcPolygon({V(1, 5), V(1, 7), V(3, 7)})}, L"pads");
  EXPECT_EQ(m.name(), L"pads");
  EXPECT_TRUE(m == modelOf({chain({at(0, 0), at(4, 0), at(0, 3)}, true),
                            chain({at(1, 5), at(1, 7), at(3, 7)}, true)}));
  EXPECT_THROW((void)MP::convert({kcPolygon({V(0, 0), V(2, 2), V(2, 0), V(0, 2)})}, L"bow"),
               Poly::crossingSegments);
}

TEST(SMDModelConvert, WireframesCarryThePolysThereAndBack) {
  const Model m = modelOf({Poly::rectangle(4, 2, V(1, 1)), Poly::circle(1, V(5, 0)),
                           chain({at(0, 5, 3), at(2, 5, 3), at(2, 7, 4, 0.5), at(4, 7, 4)}, false)});
  const std::vector<kc2Wireframe> wires = MP::convert(m);
  Model back;
  back << wires;
  EXPECT_TRUE(back == m);
  EXPECT_EQ(back.poly(0).name(), L"poly");
  // Seen through a similarity a wireframe carries the moved poly; sheared it
  // carries none, and nothing is added.
  const kc2Rigid r(kcDegree(40), V(3, -2));
  EXPECT_TRUE(kfRealEq((Model() << std::vector<kc2Wireframe>{wires[0].map(r, 2.0)}).poly(0),
                       r * (2.0 * m.poly(0)), 1e-12));
  const std::vector<kc2Wireframe> sheared{wires[1], wires[0].map(kcXform<2>(kcMatrix<2>(1, 0.5, 0, 1), V()))};
  EXPECT_THROW(back << sheared, kcShapesError::BadGeom);
  EXPECT_EQ(back.numPolys(), 3);
  // With weights, one for each.
  EXPECT_EQ(MP::weightedWireframesToModel(wires, {0.25, 4, 1}, L"weighted").poly(1).weight(), 4.0);
  EXPECT_THROW((void)MP::weightedWireframesToModel(wires, {1.0}, L"short"), Model::invalidIndex);
  // A poly's frame sits at its centre of mass, its x axis along its first side.
  const Poly t = turned(30, V(1, 2));
  const kcXform<2> frame = MP::wireframeXforms(modelOf({t}))[0];
  expectNear(frame * V(), V(1, 2));
  const V side = frame.inverse() * t.vertices()[1].point() - frame.inverse() * t.vertices()[0].point();
  EXPECT_NEAR(side.y(), 0.0, 1e-12);
  EXPECT_GT(side.x(), 0.0);
}

}  // namespace
