#include "dispc/smd/model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "dispc/smd/modelprivate.h"
#include "dispc/smd/polyprivate.h"
#include "tests/dispc/archive_checks.h"

namespace {

using V = kcVector<2>;
using Poly = kcSMDGDPoly;
using Model = kcSMDGDModel;
using MP = kcSMDGDModelPrivate;
using Vertex = kcSMDGDPolyVertex;
using dispc_test::Bytes;
using Labels = std::vector<std::int32_t>;

Vertex at(double x, double y, long label = -1) { return Vertex(V(x, y), 0.0, 0.5, 0.5, label); }

Poly chain(const std::vector<Vertex>& vs, bool closed) {
  Poly p;
  for (const Vertex& v : vs) p << v;
  if (closed) p.close();
  return p;
}

// Everything a model shows, as bytes: name, polys, labels, placement.
Bytes state(const Model& m) { return dispc_test::stored(m); }

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << "(" << a.x() << ", " << a.y() << ") vs (" << b.x() << ", " << b.y() << ")";
}

// A rectangle and a triangle (labels 0 to 3 from the factories) and an open
// L with labels 7 and 3.
Model threePolys() {
  Model m(L"device");
  m << Poly::rectangle(4, 2, V(0, 0)) << Poly::triangle(2, 2, V(10, 0))
    << chain({at(20, 0, 7), at(22, 0, 7), at(22, 2, 3)}, false);
  return m;
}

// --- building and queries ---

TEST(SMDModel, AnEmptyModelIsClosedAndHasNothing) {
  const Model m(L"empty");
  EXPECT_FALSE(m.isOpen());
  EXPECT_TRUE(m.isClosed());
  EXPECT_EQ(m.numVertices(), 0);
  EXPECT_EQ(MP::orientation_(m).toDouble(), 0.0);
  EXPECT_EQ(MP::centerOfMass_(m), V());
  EXPECT_TRUE(m.boundingBox(kcXform<2>()).isEmpty());
  EXPECT_TRUE(m.placement() == kc2Rigid());
}

TEST(SMDModel, LabelsAreTheUnionInOrderOfFirstAppearance) {
  Model m = threePolys();
  EXPECT_EQ(m.numVertices(), 4 + 3 + 3);
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3, 7}));
  EXPECT_TRUE(m.isOpen());  // the L
  m << m << m.poly(5);      // itself, and one of its own polys
  ASSERT_EQ(m.numPolys(), 7);
  EXPECT_TRUE(m.poly(3) == m.poly(0));
  EXPECT_TRUE(m.poly(6) == m.poly(5));
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3, 7}));
  m.polys({m.poly(2), Poly::circle(1, V())});
  EXPECT_EQ(m.subModelLabels(), (Labels{7, 3, 0}));
}

TEST(SMDModel, BadIndicesAndTheErrorTexts) {
  Model m = threePolys();
  const Bytes before = state(m);
  for (int bad : {-1, m.numPolys()}) {
    try {
      (void)m.poly(bad);
      ADD_FAILURE() << "index " << bad << " accepted";
    } catch (const Model::invalidIndex& e) {
      EXPECT_EQ(e.errorNumber(), 0x11000370);
      EXPECT_EQ(e.message(), L"Invalid poly index specified.");
    }
    EXPECT_THROW(MP::deletePoly(m, bad), Model::invalidIndex);
    EXPECT_THROW(MP::replacePoly(m, bad, Poly::circle(1, V())), Model::invalidIndex);
  }
  EXPECT_EQ(state(m), before);  // a failed replace or delete changes nothing
  EXPECT_EQ(Model::crossingPolys().errorNumber(), 0x11000371);
  EXPECT_EQ(Model::crossingPolys().message(), L"At least two polys intersect.");
  EXPECT_EQ(Model::nestedPolys().errorNumber(), 0x11000372);
  EXPECT_EQ(Model::nestedPolys().message(), L"At least one of the polys is nested.");
}

// --- editing by rebuilding ---

TEST(SMDModel, DeletingOrReplacingKeepsOnlyLabelsStillUsed) {
  Model m = threePolys();
  const kc2Rigid placed(kcDegree(30), V(1, 2));
  m.placement(placed);
  MP::deletePoly(m, 2);  // the only poly with 7
  EXPECT_EQ(m.subModelLabels(), (Labels{0, 1, 2, 3}));
  MP::replacePoly(m, 0, chain({at(0, 0, 9), at(1, 0, 9), at(1, 1, 2)}, true));
  EXPECT_EQ(m.subModelLabels(), (Labels{9, 2, 0, 1}));
  EXPECT_EQ(m.name(), L"device");
  EXPECT_TRUE(m.placement() == placed);
  MP::deleteAllPolys(m);
  EXPECT_TRUE(m.subModelLabels().empty());
  EXPECT_TRUE(m.placement() == placed);
  m << Poly::circle(1, V());
  MP::reset(m);
  EXPECT_EQ(m.numPolys(), 0);
  EXPECT_EQ(m.name(), L"device");
  EXPECT_TRUE(m.placement() == kc2Rigid());
}

// --- flip, sub-models, tolerances, colours ---

TEST(SMDModel, FlipMirrorsEveryPolyAndForgetsThePlacement) {
  Model m = threePolys();
  m.placement(kc2Rigid(kcDegree(10), V(3, 0)));
  const Model f = m.flip();
  EXPECT_EQ(f.name(), L"");
  EXPECT_TRUE(f.placement() == kc2Rigid());
  EXPECT_EQ(f.subModelLabels(), m.subModelLabels());
  ASSERT_EQ(f.numPolys(), 3);
  for (int i = 0; i < 3; ++i)
    for (long v = 0; v < m.poly(i).numVertices(); ++v)
      EXPECT_EQ(f.poly(i).vertex(v, false).point(),
                V(-m.poly(i).vertex(v, false).point().x(), m.poly(i).vertex(v, false).point().y()));
  EXPECT_EQ(f.poly(0).isDirectionPositive(), m.poly(0).isDirectionPositive());  // polarity kept
  EXPECT_TRUE(MP::equivalent(f.flip(), m));
}

TEST(SMDModel, SubModelTakesEveryRunOfTheLabel) {
  // Labels 5 5 1 1 5 5 on an open chain make two runs of 5; a closed square
  // all of 5 is taken whole.
  const Poly zigzag =
      chain({at(0, 0, 5), at(1, 0, 5), at(2, 0, 1), at(3, 0, 1), at(4, 0, 5), at(5, 0, 5)}, false);
  const Poly square = chain({at(0, 2, 5), at(2, 2, 5), at(2, 4, 5), at(0, 4, 5)}, true);
  Model m;
  m << zigzag << square;
  Model out(L"out");
  m.subModel(5, out);
  ASSERT_EQ(out.numPolys(), 3);
  EXPECT_TRUE(out.poly(0).isOpen());
  EXPECT_EQ(out.poly(0).vertices().back().point(), V(1, 0));
  EXPECT_EQ(out.poly(1).vertices().front().point(), V(4, 0));
  EXPECT_EQ(out.poly(1).numVertices(), 2);
  EXPECT_TRUE(out.poly(2) == square);
  EXPECT_EQ(out.subModelLabels(), Labels{5});
  expectNear(out.placement().trans(), V(2.5, 2));  // the middle of (0, 0) to (5, 4)
  // A label nobody carries adds nothing; a lone vertex of one is no outline.
  const Bytes before = state(out);
  m.subModel(42, out);
  m << chain({at(0, 9, 1), at(1, 9, 8), at(2, 9, 1)}, false);
  EXPECT_THROW(m.subModel(8, out), Poly::badSubModel);
  EXPECT_EQ(state(out), before);
}

TEST(SMDModel, PolysOutOfToleranceAndColours) {
  Poly toleranced;
  toleranced << at(0, 0)
             << Vertex(V(1, 0), 0.0, kcDegree(0), 0.5, 0.5, -1, kcDimTol(1, 0.01, 0.01, kcDimTol::eOffsets))
             << at(1, 1);
  Model m;
  m << Poly::rectangle(2, 2, V()) << toleranced << Poly::circle(1, V()) << toleranced;
  EXPECT_TRUE(m.polysOutOfTolerance(kcXform<2>(), kcXform<2>()).empty());
  EXPECT_EQ(m.polysOutOfTolerance(kcXform<2>::scale(1.03, 1.03), kcXform<2>()), (std::vector<long>{1, 3}));
  const kcSMDColors colours(kcColor::redColor(), kcColor::blackColor(), kcColor::whiteColor());
  m.colors(colours);
  m.negativeArrowColor(kcColor::blueColor());
  for (const Poly& p : m.polys()) {
    EXPECT_EQ(p.colors(), colours);
    EXPECT_EQ(p.negativeArrowColor(), kcColor::blueColor());
  }
}

TEST(SMDModel, EqualityComparesPolysAndPlacementsNotNames) {
  const Model a = threePolys();
  Model b(L"other");
  b << a;
  EXPECT_TRUE(a == b);
  b.placement(kc2Rigid(kcDegree(0), V(0, 1e-9)));
  EXPECT_TRUE(a != b);
  Model reordered;
  reordered << a.poly(1) << a.poly(0) << a.poly(2);
  EXPECT_TRUE(a != reordered);
}

// --- transforms ---

// The placement stays the pose of the same polys: its inverse takes a
// vertex to the same local point before and after.
void expectPlacementFollows(const Model& before, const Model& after) {
  expectNear(after.placement().inverse() * after.poly(1).vertices()[0].point(),
             before.placement().inverse() * before.poly(1).vertices()[0].point());
}

TEST(SMDModel, TransformsMovePolysAndPlacement) {
  Model m = threePolys();
  m.placement(kc2Rigid(kcDegree(15), V(1, -1)));
  const kc2Rigid r(kcDegree(30), V(5, 7));
  const Model moved = r * m;
  EXPECT_EQ(moved.name(), L"device");
  for (int i = 0; i < m.numPolys(); ++i) EXPECT_TRUE(moved.poly(i) == r * m.poly(i));
  expectPlacementFollows(m, moved);
  const Model back = r.inverse() * moved;
  for (int i = 0; i < m.numPolys(); ++i) EXPECT_TRUE(kfRealEq(back.poly(i), m.poly(i), 1e-12));
  expectNear(back.placement().trans(), m.placement().trans());
  const Model big = 2.0 * m;
  EXPECT_EQ(big.poly(0).vertices()[0].point(), V(4, 2));
  EXPECT_EQ(big.placement().trans(), V(2, -2));
  expectPlacementFollows(m, -1.0 * m);  // half a turn, placement and all
  // A transform that breaks a poly throws and leaves the source alone.
  const Bytes before = state(m);
  EXPECT_THROW((void)(0.0 * m), kcException);
  EXPECT_EQ(state(m), before);
}

// --- geometry over all polys ---

TEST(SMDModel, MeasuresAndExtensionsOverThePolys) {
  Model apart;
  apart << Poly::rectangle(4, 2, V(0, 0)) << Poly::rectangle(2, 2, V(10, 0));
  EXPECT_NEAR(MP::perimeter_(apart, 0.0), 12 + 8, 1e-12);
  EXPECT_NEAR(MP::perimeter_(apart, 2.0), 8, 1e-12);  // the sides longer than 2
  expectNear(MP::centerOfMass_(apart), V(5, 0));
  EXPECT_EQ(kcDegree(MP::orientation_(apart)).norm().toDouble(), 180);  // the top edge runs left
  // Far apart, every corner gets its half: each side grows by its length.
  MP::setExtensions_(apart, 0.5, kcDegree(10), 0.1, 0.01);
  EXPECT_NEAR(MP::extensionPerimeter_(apart), 2 * (12 + 8), 1e-12);
  // A body whose right side, extended upwards, would run into a pad.
  Model near;
  near << Poly::rectangle(2, 2, V(1, 1)) << chain({at(1.5, 2.5), at(3, 2.5), at(3, 3.5), at(1.5, 3.5)}, true);
  MP::setExtensions_(near, 0.5, kcDegree(10), 0.1, 0.01);
  const double up = near.poly(0).vertices()[0].forwardPercExtension();  // segment 0 ends at (2, 2)
  EXPECT_GT(up, 0.0);
  EXPECT_LT(up, 0.5);
  EXPECT_EQ(near.poly(0).vertices()[3].backwardPercExtension(), 0.5);  // downwards, clear
}

// --- archive ---

// The offset of the poly count: the two version bytes, then the name.
std::size_t polyCountAt(const Model& m) { return 2 + 4 + 2 * m.name().size(); }

void putU32(Bytes& b, std::size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }

TEST(SMDModelArchive, RoundTripsKeepEverything) {
  Model m = threePolys();
  m.placement(kc2Rigid(kcDegree(20), V(1.5, -2)));
  const Bytes bytes = state(m);
  const Model back = dispc_test::loaded(bytes, Model(L"x"));
  EXPECT_TRUE(back == m);
  EXPECT_EQ(back.name(), L"device");
  EXPECT_EQ(state(back), bytes);
  EXPECT_EQ(bytes[polyCountAt(m)], 3);
  EXPECT_TRUE(dispc_test::loaded(state(Model()), threePolys()) == Model());
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
  Model m(L"m");
  m << chain({at(0, 0, 1), at(3.25, 0, 1), at(4, 4, 2), at(0, 4, 2)}, true);
  const Bytes bytes = state(m);
  const std::size_t labelsEnd = bytes.size() - 24;  // the placement follows the labels
  for (std::size_t n = 0; n < bytes.size(); ++n)
    dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.begin() + n), target);
  Bytes huge = bytes;
  putU32(huge, polyCountAt(m), 0xFFFFFFF0u);
  dispc_test::expectRefused<kcArchive::Corrupt>(huge, target);
  Bytes more = bytes;  // one poly too many: the label count is read as its version
  putU32(more, polyCountAt(m), 2);
  dispc_test::expectRefused<kcArchive::UnknownVersion>(more, target);
  // Labels that are not the polys': another value, another order, one missing.
  Bytes other = bytes, swapped = bytes;
  putU32(other, labelsEnd - 4, 9);
  dispc_test::expectRefused<kcArchive::Corrupt>(other, target);
  putU32(swapped, labelsEnd - 8, 2);
  putU32(swapped, labelsEnd - 4, 1);
  dispc_test::expectRefused<kcArchive::Corrupt>(swapped, target);
  Bytes missing(bytes.begin(), bytes.begin() + labelsEnd - 4);
  putU32(missing, missing.size() - 8, 1);
  missing.insert(missing.end(), bytes.begin() + labelsEnd, bytes.end());
  dispc_test::expectRefused<kcArchive::Corrupt>(missing, target);
  // A poly that does not validate: vertex 1 moved from x = 3.25 to -3 makes
  // its edge to (4, 4) cross the left side.
  Bytes crossing = bytes;
  const double from = 3.25, to = -3, nan = std::numeric_limits<double>::quiet_NaN();
  const auto found =
      std::search(crossing.begin(), crossing.end(), reinterpret_cast<const std::uint8_t*>(&from),
                  reinterpret_cast<const std::uint8_t*>(&from) + 8);
  ASSERT_NE(found, crossing.end());
  std::memcpy(&*found, &to, 8);
  dispc_test::expectRefused<kcArchive::Corrupt>(crossing, target);
  Bytes notFinite = bytes;
  std::memcpy(notFinite.data() + labelsEnd, &nan, 8);
  dispc_test::expectRefused<kcArchive::Corrupt>(notFinite, target);
  Bytes v1 = bytes;
  v1[0] = 1;
  Model kept = target;
  kcMemArchive in(v1);
  try {
    in || kept;
    ADD_FAILURE() << "version 1 accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "dispc/smd/model");
  }
  EXPECT_TRUE(kept == target);
}

}  // namespace
