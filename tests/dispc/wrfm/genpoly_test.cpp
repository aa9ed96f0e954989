#include "dispc/wrfm/genpoly.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <typeinfo>
#include <vector>

#include "foundation/shapes/shapetree.h"
#include "tests/dispc/archive_checks.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using V = kcVector<2>;
using dispc_test::Bytes;
using shape_testing::kPi;
using shape_testing::probeGrid;
using shape_testing::samples;

kcRadian deg(double d) { return kcRadian(kcDegree(d)); }

kcGenPoly chain(const std::vector<V>& points, bool closed = false) {
  kcGenPoly g;
  for (const V& p : points) g.insertVertex(p, 0.0, kcRadian(0.0));
  if (closed) g.close();
  return g;
}

// A square of side 4 from the origin, two corners rounded by 1, and a
// bulging 60-degree arc back down its left side.
kcGenPoly mixedOutline() {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)});
  g.vertexRoundingSize(1, 1.0);
  g.vertexRoundingSize(2, 1.0);
  g.close(deg(60));
  return g;
}

// A shear, a stretch and a move: no similarity.
const kcXform<2> kShear(kcMatrix<2>(1.5, 0.7, -0.2, 0.8), V(3, -1));

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << "(" << a.x() << ", " << a.y() << ") vs (" << b.x() << ", " << b.y() << ")";
}

const std::type_info& classOf(const kcShapePtr& h) {
  const kcShape& shape = *h;
  return typeid(shape);
}

const std::vector<kcShapePtr>& parts(const kcShapePtr& tree) {
  return dynamic_cast<const kcShapeTree&>(*tree).children();
}

// The turn of the direction from p to a point running along the chain.
double turnAlong(const std::vector<V>& pts, const V& p) {
  double w = 0.0;
  for (std::size_t i = 1; i < pts.size(); ++i) {
    const V u = pts[i - 1] - p, v = pts[i] - p;
    w += std::atan2(u.cross(v), u.dot(v));
  }
  return w;
}

// --- numbering, errors, editing ---

TEST(GenPolyIndex, SegmentsAreNumberedByTheirStartVertex) {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)});
  g.segmentAngleSpan(1, deg(30));
  // Segment 1 runs from vertex 1 to vertex 2, which holds its span.
  EXPECT_NEAR(g.polygonData().vertices()[2].segmentAngleSpan().toDouble(), 30.0, 1e-12);
  EXPECT_NEAR(g.segmentAngleSpan(1).toDouble(), kPi / 6, 1e-15);
  EXPECT_EQ(g.nextVertexIndex(1), 2);
  EXPECT_EQ(g.previousVertexIndex(1), 1);
  EXPECT_EQ(g.nextSegmentIndex(1), 1);
  EXPECT_EQ(g.previousSegmentIndex(1), 0);
  EXPECT_EQ(g.nextSegmentIndex(3), -1);
  EXPECT_EQ(g.previousSegmentIndex(0), -1);
  EXPECT_THROW((void)g.nextVertexIndex(3), kcShapesError::BadCoef);
  // Closed, vertex 0 holds the span of the last segment, which ends there.
  g.close(deg(-20));
  EXPECT_NEAR(g.polygonData().vertices()[0].segmentAngleSpan().toDouble(), -20.0, 1e-12);
  EXPECT_NEAR(g.segmentAngleSpan(3).toDouble(), -kPi / 9, 1e-15);
  EXPECT_EQ(g.nextVertexIndex(3), 0);
  EXPECT_EQ(g.nextSegmentIndex(3), 3);
  EXPECT_EQ(g.previousSegmentIndex(0), 3);
  for (long i : {-1L, 4L, std::numeric_limits<long>::max()}) {
    EXPECT_THROW((void)g.vertexPoint(i), kcShapesError::BadCoef) << i;
    EXPECT_THROW((void)g.nextSegmentIndex(i), kcShapesError::BadCoef) << i;
    EXPECT_THROW(g.insertVertex(i == -1 ? -2 : i, V(1, 1), 0.0, kcRadian(0.0)), kcShapesError::BadCoef) << i;
  }
}

// Throws what the polygon makes of a data error E.
template <class E>
void remap() {
  E e;
  kcGenPoly().remapAndThrowError_(e);
}

TEST(GenPolyErrors, DataErrorsBecomeShapeErrors) {
  EXPECT_THROW(remap<kcSMDGDPoly::invalidVertices>(), kcShapesError::BadGeom);
  EXPECT_THROW(remap<kcSMDGDPoly::crossingSegments>(), kcShapesError::BadGeom);
  EXPECT_THROW(remap<kcSMDGDPoly::invalidRounding>(), kcShapesError::BadRadius);
  EXPECT_THROW(remap<kcSMDGDPoly::invalidIndex>(), kcShapesError::BadCoef);
  EXPECT_THROW(remap<kcSMDGDPoly::notClosed>(), kcShapesError::BadGeom);
  EXPECT_THROW(remap<kcSMDGDPolyVertex::invalidSegmentLength>(), kcShapesError::BadGeom);
  EXPECT_THROW(remap<kcSMDGDPoly::badSubModel>(), kcShapesError::BadGeom);
  EXPECT_THROW(remap<kcSMDGDPoly::noPelBuffer>(),
               kcSMDGDPoly::noPelBuffer);  // anything else passes unchanged
}

TEST(GenPolyErrors, RefusedEditsAreTranslatedAndUndone) {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)}, true);
  const kcGenPoly before = g;
  EXPECT_THROW(g.vertexPoint(1, V(-1, 2)), kcShapesError::BadGeom);      // crossing
  EXPECT_THROW(g.vertexRoundingSize(1, 3.0), kcShapesError::BadRadius);  // beyond the half sides
  EXPECT_THROW(g.vertexRoundingSizes(2.5), kcShapesError::BadRadius);
  EXPECT_EQ(g, before);
  // A closing segment that crosses: the span given to vertex 0 goes back too.
  kcGenPoly z = chain({V(0, 0), V(4, 0), V(0, 4), V(4, 4)});
  const kcGenPoly open = z;
  EXPECT_THROW(z.close(deg(10)), kcShapesError::BadGeom);
  EXPECT_EQ(z, open);
  kcGenPoly empty;
  EXPECT_THROW(empty.close(), kcShapesError::BadGeom);
}

TEST(GenPoly, EmptyAndSingleVertexPolygons) {
  const kcGenPoly g;
  EXPECT_THROW((void)g.boundingBox(), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.nearestPoint(V()), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.startPoint(), kcShapesError::NotOpenContour);
  EXPECT_TRUE(samples(g, 1.0).empty());
  const kcGenPoly lone = chain({V(2, 3)});
  EXPECT_EQ(lone.encloseRect().origin(), V(2, 3));
  EXPECT_EQ(samples(lone, 1.0), std::vector<V>{V(2, 3)});
  EXPECT_THROW((void)lone.tangentRotation(), kcShapesError::NoTangent);
}

TEST(GenPolyMap, IdentityKeepsEditingAnyOtherTransformStopsIt) {
  const kcGenPoly g = mixedOutline();
  EXPECT_EQ(g.map(kcXform<2>()), g);
  kcGenPoly mapped = g.map(kcXform<2>::translation(V(1, 0)));
  EXPECT_FALSE(mapped.isEditable());
  const kcGenPoly before = mapped;
  const std::function<void()> edits[] = {
      [&] { mapped.open(); },
      [&] { mapped.close(); },
      [&] { mapped.insertVertex(V(2, -1), 0.0, kcRadian(0.0)); },
      [&] { mapped.deleteVertex(0); },
      [&] { mapped.replaceVertex(0, V(0, 1), 0.0, deg(10)); },
      [&] { mapped.vertexRoundingSizes(0.5); },
      [&] { mapped.segmentAngleSpan(0, deg(10)); },
  };
  for (const auto& edit : edits) EXPECT_THROW(edit(), kcShapesError::BadGeom);
  EXPECT_EQ(mapped, before);
  EXPECT_THROW((void)g.map(kcXform<2>::scale(1.0, 0.0)), kcMathError::Singular);
  const kcXform<2> a(kcMatrix<2>(2, 1, 0, 1), V(1, 2));
  EXPECT_EQ(g.map(a).map(kShear).xform(), kShear * a);
  const kc2Rigid r(kcRadian(0.5), V(3, -2));
  expectNear(g.map(r, 2.0).vertexPoint(2), r * V(8, 8));
  expectNear(g.map(kShear).center(), kShear * V(2, 2));  // the mean of the vertices, mapped
}

// --- shapes into polygons ---

// The polygon of the shape has n vertices, starts at start and is editable
// or not; its distances and insides agree with the shape's around it.
template <class S>
void expectOutlineOf(const char* what, const S& shape, long n, V start, bool editable) {
  SCOPED_TRACE(what);
  const kcGenPoly g(shape);
  EXPECT_EQ(g.numVertices(), n);
  expectNear(g.vertexPoint(0), start);
  EXPECT_EQ(g.isEditable(), editable);
  EXPECT_EQ(g.isRegion(), shape.isRegion());
  for (const V& p : probeGrid(shape.encloseRect(), 0.9, 8)) {
    EXPECT_NEAR(g.distanceToPoint(p), shape.distanceToPoint(p), 1e-9);
    if (shape.isRegion()) {
      EXPECT_EQ(g.within(p), shape.within(p));
    }
  }
}

TEST(GenPolyFromShapes, EachShapeBecomesItsOutline) {
  const kcEllipse2 e(3.0, 1.0, kcRadian(0.5), V(2, -1));
  const kcXform<2> ex = kcEllipse(e).xform();
  const kcEllipse circle(kcXform<2>(kcMatrix<2>::scale(2, 2), V(1, 0)));
  const kcEllipseArc2 arc(e, kcRadian(0.2), kcRadian(4.0));
  const kcEllipseAnnulus ring(kcEllipse2(2.0, 2.0, kcRadian(0.0), V()), 0.5);
  const kcGenRect stadium(V(1, 0), V(4, 2), kcRadian(0.3), 0.5, 1.0);
  const kcGenRect pill(V(1, 0), V(4, 2), kcRadian(-0.3), 1.0, 0.7);  // elliptical, meeting across
  const kcGenRect mirrored(kcXform<2>(kcMatrix<2>(-4, 0, 0, 2), V(1, 1)), 0.5, 1.0);
  const kcGenRect oval(V(0, 0), V(4, 2), kcRadian(0.0), 0.5, 0.25);
  const kcGenRect slanted(kcXform<2>(kcMatrix<2>(2, 1, 0, 1), V(1, 0)));
  const kcGenRect rounded(V(1, 1), V(4, 2), kcRadian(0.3), 0.25, 0.5);  // radius 0.5 both ways
  expectOutlineOf("circle", kcCircle(V(1, 2), 3), 2, V(-2, 2), true);
  expectOutlineOf("half-turned circle", kcEllipse(kcXform<2>(kcMatrix<2>::scale(-2, -2), V(1, 0))), 2,
                  V(3, 0), false);
  expectOutlineOf("ellipse", e, 2, ex * V(-1, 0), false);
  expectOutlineOf("arc backwards", kcEllipseArc(circle, kcRadian(0.0), kcRadian(-1.5 * kPi)), 3, V(3, 0),
                  true);
  expectOutlineOf("whole-turn arc", kcEllipseArc(circle, kcRadian(1.0), kcRadian(2 * kPi)), 3,
                  V(1 + 2 * std::cos(1.0), 2 * std::sin(1.0)), true);
  expectOutlineOf("elliptical arc", arc, 3, arc.startPoint(), false);
  expectOutlineOf("section", kcEllipseAnnulusSection(ring, kcRadian(0.0), kcRadian(kPi / 2)), 4, V(2, 0),
                  true);
  expectOutlineOf("wide section",
                  kcEllipseAnnulusSection(kcEllipseAnnulus(e, 0.4), kcRadian(-1.0), kcRadian(4.5)), 6,
                  ex * V(std::cos(-1.0), std::sin(-1.0)), false);
  expectOutlineOf("rounded", rounded, 4, rounded.corner(0), true);
  expectOutlineOf("oval", oval, 4, oval.corner(0), false);
  expectOutlineOf("slanted", slanted, 4, slanted.corner(0), true);
  expectOutlineOf("stadium", stadium, 6, stadium.xform() * V(0.25, 0), true);
  expectOutlineOf("pill", pill, 6, pill.xform() * V(0.5, 0), false);
  expectOutlineOf("mirrored stadium", mirrored, 6, mirrored.xform() * V(0.25, 0), true);
  expectOutlineOf("rect", kcRect(V(1, 2), V(3, 1)), 4, V(1, 2), true);
  expectOutlineOf("segment", kcLineSeg(V(1, 1), V(4, 5)), 2, V(1, 1), true);
  expectOutlineOf("clockwise polygon", kcPolygon({V(0, 0), V(0, 2), V(3, 2), V(3, 0)}), 4, V(0, 0), true);
  // Arcs: equal segments of at most half a turn, in the arc's direction.
  EXPECT_NEAR(
      kcGenPoly(kcEllipseArc(circle, kcRadian(0.0), kcRadian(-1.5 * kPi))).segmentAngleSpan(1).toDouble(),
      -0.75 * kPi, 1e-12);
  // A section: the outer arc, the edge in, the inner arc back, the edge out.
  const kcGenPoly s(kcEllipseAnnulusSection(ring, kcRadian(0.0), kcRadian(kPi / 2)));
  EXPECT_TRUE(s.isLineSegment(1));
  EXPECT_NEAR(s.segmentAngleSpan(2).toDouble(), -kPi / 2, 1e-15);
}

TEST(GenPolyFromShapes, CirclesAnnuliAndRefusals) {
  // A circle given as an ellipse is the same polygon.
  EXPECT_EQ(kcGenPoly(kcEllipse2(3.0, 3.0, kcRadian(0.0), V(1, 2))), kcGenPoly(kcCircle(V(1, 2), 3)));
  // Annuli: the inner boundary first, inside the outer.
  for (const std::vector<kcGenPoly>& pair :
       {kcGenPoly::convert(kcAnnulus(V(1, 1), 1.0, 3.0)),
        kcGenPoly::convert(kcEllipseAnnulus(kcEllipse2(4.0, 2.0, kcRadian(0.2), V()), 0.5)),
        kcGenPoly::convert(kcGenAnnulus(kcGenRect(V(0, 0), V(4, 2), kcRadian(0.0), 0.5, 0.25), 0.5))}) {
    ASSERT_EQ(pair.size(), 2u);
    EXPECT_TRUE(pair[1].within(pair[0].vertexPoint(0)));
    EXPECT_FALSE(pair[0].within(pair[1].vertexPoint(0)));
  }
  EXPECT_TRUE(kcGenPoly(kcPolygon()).degen());
  const kcEllipseAnnulus ring(kcEllipse2(2.0, 2.0, kcRadian(0.0), V()), 0.5);
  EXPECT_THROW(kcGenPoly(kcEllipseAnnulusSection(ring, kcRadian(0.0), kcRadian(2 * kPi))),
               kcShapesError::BadGeom);
  EXPECT_THROW(kcGenPoly(kcRect(V(0, 0), V(2, 0))), kcShapesError::DegenerateShape);
  EXPECT_THROW(kcGenPoly(kcPolygon({V(0, 0), V(2, 2), V(2, 0), V(0, 2)})), kcShapesError::BadGeom);
}

// --- client-space queries ---

TEST(GenPolyQueries, NearestPointsUnderAShearAgreeWithDenseSampling) {
  const kcGenPoly g = mixedOutline().map(kShear);
  const std::vector<V> dense = samples(g, 2e-3);
  for (const V& p : probeGrid(g.encloseRect(), 2.0, 10)) {
    // The nearest point lies on the outline, and no sample is nearer.
    EXPECT_LE(shape_testing::polylineDistance(dense, g.nearestPoint(p)), 1e-6);
    double nearest = std::numeric_limits<double>::infinity();
    for (const V& s : dense) nearest = std::min(nearest, s.distance(p));
    EXPECT_LE(g.distanceToPoint(p), nearest + 1e-12);
    EXPECT_GE(g.distanceToPoint(p), nearest - 2e-3);
  }
  // The box is tight around the mapped outline.
  kcRect box;
  for (const V& q : dense) box.enclose(q);
  expectNear(g.encloseRect().origin(), box.origin(), 1e-5);
  expectNear(g.encloseRect().size(), box.size(), 1e-5);
  EXPECT_THROW((void)chain({V(0, 0), V(1, 0)}).within(V()), kcShapesError::NotRegion);
}

TEST(GenPolyQueries, TurnsOfTheDirectionOfTravel) {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(6, 2), V(6, 6), V(2, 6)});
  g.segmentAngleSpan(1, deg(-90));
  g.vertexRoundingSize(3, 1.0);
  // Sharp to 90 where the arc starts, the arc back to 0, sharp to 90, rounded to 180.
  EXPECT_NEAR(kcDegree(g.tangentRotation()).toDouble(), 90.0 - 90.0 + 90.0 + 90.0, 1e-9);
  EXPECT_NEAR(g.map(kcXform<2>::scale(1, -1)).tangentRotation().toDouble(), -kPi, 1e-12);
  // Under a shear the ends point the mapped ways, and the total is the turn between them.
  const kcGenPoly sheared = g.map(kShear);
  const kcRadian start = kShear.mapAngle(kcRadian(0.0)), end = kShear.mapAngle(kcRadian(kPi));
  EXPECT_NEAR(kcRadian(sheared.startAngle() - start).signedNorm().toDouble(), 0.0, 1e-12);
  EXPECT_NEAR(kcRadian(sheared.endAngle() - end).signedNorm().toDouble(), 0.0, 1e-12);
  EXPECT_NEAR(sheared.tangentRotation().toDouble(), (end - start).norm().toDouble(), 1e-9);
  EXPECT_NEAR(static_cast<const kcGenPoly&>(*g.reverse()).tangentRotation().toDouble(), -kPi, 1e-12);
  EXPECT_THROW((void)mixedOutline().tangentRotation(), kcShapesError::NotOpenContour);
}

TEST(GenPolyQueries, WindingAngleAgreesWithDenseSampling) {
  kcGenPoly g = mixedOutline();
  g.open();
  for (const kcXform<2>& x : {kShear, kcXform<2>::scale(-1, 1) * kShear}) {
    const kcGenPoly m = g.map(x);
    const std::vector<V> dense = samples(m, 2e-3);
    for (const V& p : probeGrid(m.encloseRect(), 0.5, 9)) {
      if (shape_testing::polylineDistance(dense, p) > 1e-2) {
        EXPECT_NEAR(m.windingAngle(p).toDouble(), turnAlong(dense, p), 1e-6);
      }
    }
  }
}

TEST(GenPolyQueries, RightHandednessIsTheTurnInClientSpace) {
  const kcGenPoly g = mixedOutline();
  EXPECT_TRUE(g.isRightHanded());
  EXPECT_FALSE(static_cast<const kcGenPoly&>(*g.reverse()).isRightHanded());
  EXPECT_FALSE(g.map(kcXform<2>::scale(-1, 1)).isRightHanded());
  EXPECT_FALSE(kcGenPoly(kcPolygon({V(0, 0), V(0, 2), V(3, 2), V(3, 0)})).isRightHanded());
  // The data's direction flag says which side is inside, not how it turns.
  kcSMDGDPoly flagged = g.polygonData();
  flagged.toggleDirection();
  EXPECT_TRUE(kcGenPoly(flagged).isRightHanded());
}

// --- sampling and pieces ---

TEST(GenPolySample, OneChainWithinTheSpacing) {
  const kcGenPoly g = mixedOutline().map(kShear);
  const std::vector<V> pts = samples(g, 0.1);
  EXPECT_EQ(pts.front(), pts.back());
  for (std::size_t i = 1; i < pts.size(); ++i) {
    EXPECT_LE(pts[i].distance(pts[i - 1]), 0.1 + 1e-12);
    EXPECT_GT(pts[i].distance(pts[i - 1]), 1e-9);  // joints come once
  }
  kcGenPoly open = mixedOutline();
  open.open();
  expectNear(samples(open, 0.5).back(), open.endPoint());
}

TEST(GenPolyPieces, DecomposeGivesTrimmedSegmentsAndRoundingsInOrder) {
  const kcGenPoly g = mixedOutline().map(kShear);
  const std::vector<kcShapePtr> pieces = g.decompose();
  // Bottom side, rounding, right side, rounding, top side, left arc.
  ASSERT_EQ(pieces.size(), 6u);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    EXPECT_EQ(classOf(pieces[i]), i % 2 ? typeid(kcEllipseArc) : typeid(kcLineSeg)) << i;
    expectNear(pieces[i]->endPoint(), pieces[(i + 1) % pieces.size()]->startPoint());
  }
  expectNear(g.lineSegment(0, false).p2(), kShear * V(3, 0));
  expectNear(g.lineSegment(0, true).p2(), kShear * V(4, 0));
  EXPECT_EQ(static_cast<const kcEllipseArc&>(*pieces[1]), g.roundedVertex(1));
  EXPECT_THROW((void)g.lineSegment(3, true), kcShapesError::BadGeom);
  EXPECT_THROW((void)g.roundedVertex(0), kcShapesError::BadGeom);
}

TEST(GenPolyClip, KeepsThePartsInsideTheWindow) {
  kcClipInfo info;
  const kcShapePtr half = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)}, true)
                              .clip_(kcPolyline({V(-1, -1), V(2, -1), V(2, 5), V(-1, 5)}), info);
  ASSERT_EQ(parts(half).size(), 3u);
  expectNear(parts(half)[0]->endPoint(), V(2, 0));
  expectNear(parts(half)[1]->startPoint(), V(2, 4));
  expectNear(parts(half)[2]->endPoint(), V(0, 0));
  EXPECT_EQ(info.piecesCut, 2);
  EXPECT_EQ(info.piecesKept, 3);
  EXPECT_EQ(info.piecesDropped, 1);
  // Only the bulging arc reaches into this window, cut where it crosses; the
  // mapped polygon in the mapped window gives the mapped part.
  const kcPolyline window({V(-1, 1), V(2, 1), V(2, 3.5), V(-1, 3.5)}, true);
  const kcShapePtr arc = mixedOutline().clip_(window, info);
  ASSERT_EQ(parts(arc).size(), 1u);
  EXPECT_EQ(classOf(parts(arc)[0]), typeid(kcEllipseArc));
  EXPECT_NEAR(parts(arc)[0]->startPoint().y(), 3.5, 1e-12);
  EXPECT_NEAR(parts(arc)[0]->endPoint().y(), 1.0, 1e-12);
  EXPECT_EQ(info.piecesDropped, 5);
  const kcShapePtr mapped = mixedOutline().map(kShear).clip_(window.map(kShear), info);
  ASSERT_EQ(parts(mapped).size(), 1u);
  expectNear(parts(mapped)[0]->startPoint(), kShear * parts(arc)[0]->startPoint(), 1e-9);
  expectNear(parts(mapped)[0]->endPoint(), kShear * parts(arc)[0]->endPoint(), 1e-9);
}

// --- archive ---

TEST(GenPolyArchive, RoundTripsByValueAndByHandle) {
  for (const kcGenPoly& g : {kcGenPoly(), mixedOutline(), mixedOutline().map(kShear)}) {
    const Bytes bytes = dispc_test::stored(g);
    EXPECT_EQ(bytes.front(), 0);
    EXPECT_EQ(bytes.back(), g.isEditable() ? 1 : 0);
    EXPECT_EQ(dispc_test::loaded(bytes, kcGenPoly()), g);
    const kcShapePtr h = shape_testing::loadByHandle(shape_testing::storeByHandle(g));
    EXPECT_EQ(classOf(h), typeid(kcGenPoly));
    EXPECT_TRUE(*h == g);
  }
}

TEST(GenPolyArchive, UnknownVersionsAndBadTransformsAreRefused) {
  const kcGenPoly target = mixedOutline();
  kcGenPoly g = target.map(kShear), loaded = target;
  const Bytes bytes = dispc_test::stored(g);
  Bytes wrong = bytes, singular = bytes, notFinite = bytes, flag = bytes;
  wrong[0] = 1;
  dispc_test::expectUnknownVersion(wrong, target, "dispc/wrfm/genpoly", 751);
  // The transform's six doubles come just before the editable flag.
  const std::size_t a00 = bytes.size() - 1 - 48;
  shape_testing::patchDouble(singular, a00, 0.0);
  shape_testing::patchDouble(singular, a00 + 8, 0.0);
  shape_testing::patchDouble(notFinite, a00 + 40, shape_testing::kInf);
  flag.back() = 2;
  for (const Bytes& bad : {singular, notFinite, flag, Bytes(bytes.begin(), bytes.end() - 3)})
    dispc_test::expectRefused<kcArchive::Corrupt>(bad, target);
  // loadSimple moves the same bytes and reads the version as a signed byte.
  kcMemArchive out;
  g.loadSimple(out);
  EXPECT_EQ(out.bytes(), bytes);
  wrong[0] = 0xFF;
  dispc_test::expectSimpleUnknownVersion(wrong, loaded, "dispc/wrfm/genpoly", 741);
}

}  // namespace
