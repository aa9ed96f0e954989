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
  kcGenPoly g;
  g.insertVertex(V(0, 0), 0.0, kcRadian(0.0));
  g.insertVertex(V(4, 0), 1.0, kcRadian(0.0));
  g.insertVertex(V(4, 4), 1.0, kcRadian(0.0));
  g.insertVertex(V(0, 4), 0.0, kcRadian(0.0));
  g.close(deg(60));
  return g;
}

// A shear, a stretch and a move: no similarity.
const kcXform<2> kShear(kcMatrix<2>(1.5, 0.7, -0.2, 0.8), V(3, -1));

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << "(" << a.x() << ", " << a.y() << ") vs (" << b.x() << ", " << b.y() << ")";
}

// The error number of what f throws (0 when it throws nothing).
long thrown(const std::function<void()>& f) {
  try {
    f();
  } catch (const kcException& e) {
    return e.errorNumber();
  }
  return 0;
}

const long kBadGeom = kcShapesError::BadGeom().errorNumber();
const long kBadCoef = kcShapesError::BadCoef().errorNumber();
const long kBadRadius = kcShapesError::BadRadius().errorNumber();

// The class of the shape a handle holds.
const std::type_info& classOf(const kcShapePtr& h) {
  const kcShape& shape = *h;
  return typeid(shape);
}

TEST(GenPoly, DefaultIsEmptyEditableAndUnmapped) {
  const kcGenPoly g;
  EXPECT_TRUE(g.degen());
  EXPECT_TRUE(g.isEditable());
  EXPECT_TRUE(g.xform().isIdentity());
  EXPECT_THROW((void)g.boundingBox(), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.nearestPoint(V()), kcShapesError::EmptyShape);
  EXPECT_THROW((void)g.startPoint(), kcShapesError::NotOpenContour);
  EXPECT_TRUE(samples(g, 1.0).empty());
}

// --- numbering and errors ---

TEST(GenPolyIndex, SegmentsAreNumberedByTheirStartVertex) {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)});
  g.segmentAngleSpan(1, deg(30));
  // Segment 1 runs from vertex 1 to vertex 2, which holds its span.
  EXPECT_NEAR(g.polygonData().vertices()[2].segmentAngleSpan().toDouble(), 30.0, 1e-12);
  EXPECT_NEAR(g.segmentAngleSpan(1).toDouble(), kPi / 6, 1e-15);
  EXPECT_TRUE(g.isArcSegment(1));
  EXPECT_EQ(g.nextVertexIndex(1), 2);
  EXPECT_EQ(g.previousVertexIndex(1), 1);
  EXPECT_EQ(g.nextSegmentIndex(1), 1);
  EXPECT_EQ(g.previousSegmentIndex(1), 0);
  EXPECT_EQ(g.nextSegmentIndex(3), -1);
  EXPECT_EQ(g.previousSegmentIndex(0), -1);
  EXPECT_EQ(thrown([&] { (void)g.nextVertexIndex(3); }), kBadCoef);
  // Closing: vertex 0 holds the span of the last segment, which ends there.
  g.close(deg(-20));
  EXPECT_NEAR(g.polygonData().vertices()[0].segmentAngleSpan().toDouble(), -20.0, 1e-12);
  EXPECT_NEAR(g.segmentAngleSpan(3).toDouble(), -kPi / 9, 1e-15);
  EXPECT_EQ(g.nextVertexIndex(3), 0);
  EXPECT_EQ(g.previousSegmentIndex(0), 3);
  const long far = std::numeric_limits<long>::max();
  for (long i : {-1L, 4L, far}) {
    SCOPED_TRACE(i);
    EXPECT_EQ(thrown([&] { (void)g.vertexPoint(i); }), kBadCoef);
    EXPECT_EQ(thrown([&] { (void)g.previousVertexIndex(i); }), kBadCoef);
    EXPECT_EQ(thrown([&] { (void)g.nextSegmentIndex(i); }), kBadCoef);
    EXPECT_EQ(thrown([&] { g.replaceVertex(i, V(1, 1), 0.0); }), kBadCoef);
    EXPECT_EQ(thrown([&] { g.insertVertex(i == -1 ? -2 : i, V(1, 1), 0.0, kcRadian(0.0)); }), kBadCoef);
  }
}

TEST(GenPolyErrors, DataErrorsBecomeShapeErrors) {
  const kcGenPoly g;
  kcSMDGDPoly::invalidVertices vertices;
  kcSMDGDPoly::crossingSegments crossing;
  kcSMDGDPoly::invalidRounding rounding;
  kcSMDGDPoly::invalidIndex index;
  kcSMDGDPoly::notClosed notClosed;
  kcSMDGDPolyVertex::invalidSegmentLength length;
  kcSMDGDPoly::badSubModel subModel;
  kcSMDGDPoly::noPelBuffer noPelBuffer;
  kcArchive::Corrupt corrupt(L"why");
  const std::pair<kcException*, long> rows[] = {
      {&vertices, kBadGeom}, {&crossing, kBadGeom},      {&rounding, kBadRadius},
      {&index, kBadCoef},    {&notClosed, kBadGeom},     {&length, kBadGeom},
      {&subModel, kBadGeom}, {&noPelBuffer, 0x11000364}, {&corrupt, kcArchive::Corrupt().errorNumber()},
  };
  for (const auto& row : rows)
    EXPECT_EQ(thrown([&] { g.remapAndThrowError_(*row.first); }), row.second) << row.first->className();
  try {
    g.remapAndThrowError_(corrupt);
  } catch (const kcArchive::Corrupt& e) {
    EXPECT_EQ(e.text(), L"why");  // passed on whole
  }
}

TEST(GenPolyErrors, RefusedEditsAreTranslatedAndUndone) {
  kcGenPoly g = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)}, true);
  const kcGenPoly before = g;
  EXPECT_EQ(thrown([&] { g.vertexPoint(1, V(-1, 2)); }), kBadGeom);      // crossing
  EXPECT_EQ(thrown([&] { g.vertexRoundingSize(1, 3.0); }), kBadRadius);  // beyond the half sides
  EXPECT_EQ(thrown([&] { g.vertexRoundingSizes(2.5); }), kBadRadius);
  EXPECT_EQ(g, before);
  // A closing segment that crosses: the span given to vertex 0 goes back too.
  kcGenPoly z = chain({V(0, 0), V(4, 0), V(0, 4), V(4, 4)});
  const kcGenPoly open = z;
  EXPECT_EQ(thrown([&] { z.close(deg(10)); }), kBadGeom);
  EXPECT_EQ(z, open);
  kcGenPoly empty;
  EXPECT_EQ(thrown([&] { empty.close(); }), kBadGeom);
}

// --- map and the editable state ---

TEST(GenPolyMap, IdentityKeepsEditingAnyOtherTransformStopsIt) {
  const kcGenPoly g = mixedOutline();
  EXPECT_TRUE(g.map(kcXform<2>()).isEditable());
  EXPECT_EQ(g.map(kcXform<2>()), g);
  kcGenPoly mapped = g.map(kcXform<2>::translation(V(1, 0)));
  EXPECT_FALSE(mapped.isEditable());
  EXPECT_EQ(mapped.polygonData(), g.polygonData());
  expectNear(mapped.vertexPoint(2), V(5, 4));
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
  for (const auto& edit : edits) EXPECT_EQ(thrown(edit), kBadGeom);
  EXPECT_EQ(mapped, before);
  EXPECT_THROW((void)g.map(kcXform<2>::scale(1.0, 0.0)), kcMathError::Singular);
  EXPECT_THROW((void)g.map(kc2Rigid(kcRadian(0.3), V()), 0.0), kcMathError::Singular);
  const kcXform<2> a(kcMatrix<2>(2, 1, 0, 1), V(1, 2));
  EXPECT_EQ(g.map(a).map(kShear).xform(), kShear * a);
  const kc2Rigid r(kcRadian(0.5), V(3, -2));
  expectNear(g.map(r, 2.0).vertexPoint(2), r * V(8, 8));
  EXPECT_EQ(static_cast<const kcGenPoly&>(*g.mapShape(a)), g.map(a));
}

// --- shapes into polygons ---

TEST(GenPolyFromShapes, CirclesAreTwoHalfArcsInClientSpace) {
  const kcGenPoly g{kcCircle(V(1, 2), 3)};
  ASSERT_EQ(g.numVertices(), 2);
  EXPECT_TRUE(g.isEditable());
  EXPECT_EQ(g.vertexPoint(0), V(-2, 2));
  EXPECT_NEAR(g.segmentAngleSpan(0).toDouble(), kPi, 1e-15);
  EXPECT_TRUE(g.polygonData().subModelLabels().empty());
  EXPECT_TRUE(g.isRightHanded());
  for (const V& p : {V(1, 2.5), V(9, -3), V(-1.5, 0.25), V(4, 2)}) {
    EXPECT_NEAR(g.distanceToPoint(p), std::fabs(p.distance(V(1, 2)) - 3.0), 1e-12);
    EXPECT_EQ(g.within(p), p.distance(V(1, 2)) <= 3.0);
  }
  expectNear(g.boundingBox().origin(), V(-2, -1));
  // A circle given as an ellipse of either form is the same polygon.
  EXPECT_EQ(kcGenPoly(kcEllipse2(3.0, 3.0, kcRadian(0.0), V(1, 2))), g);
  EXPECT_EQ(kcGenPoly(kcEllipse(kcXform<2>(kcMatrix<2>::scale(3, 3), V(1, 2)))), g);
}

TEST(GenPolyFromShapes, EllipsesKeepTheirTransform) {
  const kcEllipse2 e(3.0, 1.0, kcRadian(0.5), V(2, -1));
  const kcGenPoly g(e);
  EXPECT_FALSE(g.isEditable());
  EXPECT_EQ(g.xform(), kcEllipse(e).xform());
  EXPECT_EQ(g.polygonData().vertices()[0].point(), V(-1, 0));
  const kcMatrix<2> back = kcMatrix<2>::rotation(kcRadian(-0.5));
  for (const V& q : samples(g, 0.05)) {
    const V u = back * (q - V(2, -1));
    EXPECT_NEAR(std::hypot(u.x() / 3.0, u.y()), 1.0, 1e-12);  // on the ellipse
  }
  for (const V& p : {V(2, -1), V(6, 1), V(2.5, 0.5)})
    EXPECT_NEAR(g.distanceToPoint(p), e.distanceToPoint(p), 1e-9);
  // Arcs: equal segments of at most half a turn, in the arc's direction.
  const kcEllipse circle(kcXform<2>(kcMatrix<2>::scale(2, 2), V(1, 0)));
  const kcGenPoly back3(kcEllipseArc(circle, kcRadian(0.0), kcRadian(-1.5 * kPi)));
  ASSERT_EQ(back3.numVertices(), 3);
  EXPECT_NEAR(back3.segmentAngleSpan(1).toDouble(), -0.75 * kPi, 1e-12);
  EXPECT_EQ(back3.startPoint(), V(3, 0));
  expectNear(back3.endPoint(), V(1, 2));
  const kcGenPoly whole(kcEllipseArc(circle, kcRadian(1.0), kcRadian(2 * kPi)));
  EXPECT_EQ(whole.numVertices(), 3);
  expectNear(whole.endPoint(), whole.startPoint());
  const kcEllipseArc2 arc(e, kcRadian(0.2), kcRadian(4.0));
  const kcGenPoly a(arc);
  expectNear(a.endPoint(), arc.endPoint());
  EXPECT_NEAR(kcRadian(a.startAngle() - arc.startAngle()).signedNorm().toDouble(), 0.0, 1e-12);
  for (const V& p : {V(0, 1), V(4, 2)}) EXPECT_NEAR(a.distanceToPoint(p), arc.distanceToPoint(p), 1e-9);
}

TEST(GenPolyFromShapes, AnnulusSectionsOutlineTheSector) {
  const kcEllipseAnnulus ring(kcEllipse2(2.0, 2.0, kcRadian(0.0), V(0, 0)), 0.5);
  const kcGenPoly g(kcEllipseAnnulusSection(ring, kcRadian(0.0), kcRadian(kPi / 2)));
  ASSERT_EQ(g.numVertices(), 4);
  expectNear(g.vertexPoint(1), V(0, 2));
  expectNear(g.vertexPoint(2), V(0, 1));
  EXPECT_EQ(g.vertexPoint(3), V(1, 0));
  EXPECT_TRUE(g.isArcSegment(0));
  EXPECT_TRUE(g.isLineSegment(1));
  EXPECT_NEAR(g.segmentAngleSpan(2).toDouble(), -kPi / 2, 1e-15);
  EXPECT_TRUE(g.isRightHanded());
  const kcEllipseAnnulusSection wide(kcEllipseAnnulus(kcEllipse2(3.0, 1.0, kcRadian(0.4), V(1, 1)), 0.4),
                                     kcRadian(-1.0), kcRadian(4.5));
  const kcGenPoly w(wide);
  EXPECT_FALSE(w.isEditable());
  for (const V& p : probeGrid(wide.encloseRect(), 0.5, 8)) EXPECT_EQ(w.within(p), wide.within(p));
  EXPECT_THROW(kcGenPoly(kcEllipseAnnulusSection(ring, kcRadian(0.0), kcRadian(2 * kPi))),
               kcShapesError::BadGeom);
}

TEST(GenPolyFromShapes, RectanglesKeepTheirCornersAndRounding) {
  const kcGenRect r(V(1, 1), V(4, 2), kcRadian(0.3), 0.25, 0.5);  // rounding radius 0.5 both ways
  const kcGenRect oval(V(0, 0), V(4, 2), kcRadian(0.0), 0.5, 0.25);
  const kcGenRect slanted(kcXform<2>(kcMatrix<2>(2, 1, 0, 1), V(1, 0)));
  const kcGenPoly g(r), o(oval), s(slanted);
  EXPECT_TRUE(g.isEditable());
  EXPECT_FALSE(o.isEditable());  // elliptical rounding: a frame as the transform
  EXPECT_TRUE(s.isEditable());   // no rounding: any parallelogram
  for (int i = 0; i < 4; ++i) {
    expectNear(g.vertexPoint(i), r.corner(i));
    EXPECT_NEAR(g.vertexRoundingSize(i), 0.5, 1e-12);
    expectNear(o.vertexPoint(i), oval.corner(i));
    EXPECT_EQ(s.vertexPoint(i), slanted.corner(i));
  }
  // Roundings meeting in the middle of a side are arcs of the outline.
  const kcGenRect disc(V(0, 0), V(2, 2), kcRadian(0.0), 1.0, 1.0);
  const kcGenRect stadium(V(1, 0), V(4, 2), kcRadian(0.3), 0.5, 1.0);
  const kcGenRect pill(V(1, 0), V(4, 2), kcRadian(-0.3), 1.0, 0.7);
  for (const kcGenRect* shape : {&r, &oval, &disc, &stadium, &pill}) {
    const kcGenPoly p(*shape);
    for (const V& q : probeGrid(shape->encloseRect(), 1.0, 8)) {
      EXPECT_NEAR(p.distanceToPoint(q), shape->distanceToPoint(q), 1e-9);
      EXPECT_EQ(p.within(q), shape->within(q));
    }
  }
  expectNear(kcGenPoly(stadium).vertexPoint(0), stadium.xform() * V(0.25, 0));  // its own start
  const std::vector<kcGenPoly> frames = kcGenPoly::convert(kcGenAnnulus(oval, 0.5));
  EXPECT_EQ(frames[0], kcGenPoly(kcGenAnnulus(oval, 0.5).inner()));
  EXPECT_EQ(frames[1], o);
}

TEST(GenPolyFromShapes, RectSegmentPolygonAndAnnuli) {
  const kcGenPoly rect(kcRect(V(1, 2), V(3, 1)));
  EXPECT_EQ(rect.vertexPoint(2), V(4, 3));
  EXPECT_TRUE(rect.isRightHanded());
  EXPECT_THROW(kcGenPoly(kcRect(V(0, 0), V(2, 0))), kcShapesError::DegenerateShape);
  const kcGenPoly seg(kcLineSeg(V(1, 1), V(4, 5)));
  EXPECT_TRUE(seg.isOpenContour());
  EXPECT_NEAR(seg.startAngle().toDouble(), std::atan2(4.0, 3.0), 1e-15);
  const kcGenPoly cw(kcPolygon({V(0, 0), V(0, 2), V(3, 2), V(3, 0)}));
  EXPECT_FALSE(cw.isRightHanded());
  EXPECT_TRUE(kcGenPoly(kcPolygon()).degen());
  EXPECT_THROW(kcGenPoly(kcPolygon({V(0, 0), V(2, 2), V(2, 0), V(0, 2)})), kcShapesError::BadGeom);
  const std::vector<kcGenPoly> circles = kcGenPoly::convert(kcAnnulus(V(1, 1), 1.0, 3.0));
  EXPECT_NEAR(circles[0].distanceToPoint(V(1, 1)), 1.0, 1e-12);
  EXPECT_NEAR(circles[1].distanceToPoint(V(1, 1)), 3.0, 1e-12);
  const kcEllipseAnnulus ring(kcEllipse2(4.0, 2.0, kcRadian(0.2), V(0, 0)), 0.5);
  EXPECT_EQ(kcGenPoly::convert(ring)[0].xform(), kcEllipse(ring.inner()).xform());
}

// --- client-space queries ---

TEST(GenPolyQueries, NearestPointsUnderAShearAgreeWithDenseSampling) {
  const kcGenPoly g = mixedOutline().map(kShear);
  const std::vector<V> dense = samples(g, 2e-3);
  const kcPolygon reference(std::vector<V>(dense.begin(), dense.end() - 1));
  for (const V& p : probeGrid(g.encloseRect(), 2.0, 10)) {
    // The nearest point lies on the outline, and no sample is nearer.
    EXPECT_LE(shape_testing::polylineDistance(dense, g.nearestPoint(p)), 1e-6);
    double nearest = std::numeric_limits<double>::infinity();
    for (const V& s : dense) nearest = std::min(nearest, s.distance(p));
    EXPECT_LE(g.distanceToPoint(p), nearest + 1e-12);
    EXPECT_GE(g.distanceToPoint(p), nearest - 2e-3);
    if (nearest > 1e-2) {
      EXPECT_EQ(g.within(p), reference.within(p));
    }
  }
  // The box is tight around the mapped outline.
  kcRect box;
  for (const V& q : dense) box.enclose(q);
  expectNear(g.encloseRect().origin(), box.origin(), 1e-5);
  expectNear(g.encloseRect().size(), box.size(), 1e-5);
  EXPECT_EQ(chain({V(2, 3)}).encloseRect().origin(), V(2, 3));
  EXPECT_THROW((void)chain({V(0, 0), V(1, 0)}).within(V()), kcShapesError::NotRegion);
}

TEST(GenPolyQueries, TurnsOfTheDirectionOfTravel) {
  kcGenPoly g;
  g.insertVertex(V(0, 0), 0.0, kcRadian(0.0));
  g.insertVertex(V(4, 0), 0.0, kcRadian(0.0));
  g.insertVertex(V(6, 2), 0.0, deg(-90));
  g.insertVertex(V(6, 6), 1.0, kcRadian(0.0));
  g.insertVertex(V(2, 6), 0.0, kcRadian(0.0));
  // Sharp to 90 where the arc starts, the arc back to 0, sharp to 90, rounded to 180.
  EXPECT_NEAR(kcDegree(g.tangentRotation()).toDouble(), 90.0 - 90.0 + 90.0 + 90.0, 1e-9);
  EXPECT_NEAR(g.endAngle().toDouble(), kPi, 1e-12);
  EXPECT_NEAR(g.map(kcXform<2>::scale(1, -1)).tangentRotation().toDouble(), -kPi, 1e-12);
  // Under a shear the total is the turn between the mapped end directions.
  EXPECT_NEAR(g.map(kShear).tangentRotation().toDouble(),
              (kShear.mapAngle(kcRadian(kPi)) - kShear.mapAngle(kcRadian(0.0))).norm().toDouble(), 1e-9);
  EXPECT_NEAR(static_cast<const kcGenPoly&>(*g.reverse()).tangentRotation().toDouble(), -kPi, 1e-12);
  EXPECT_THROW((void)chain({V(1, 1)}).tangentRotation(), kcShapesError::NoTangent);
  EXPECT_THROW((void)mixedOutline().tangentRotation(), kcShapesError::NotOpenContour);
}

TEST(GenPolyQueries, WindingAngleFollowsArcsAroundThePoint) {
  // Inside the half disc the arc winds a whole turn further than its chord.
  kcGenPoly half;
  half.insertVertex(V(1, 0), 0.0, kcRadian(0.0));
  half.insertVertex(V(-1, 0), 0.0, deg(180));
  EXPECT_NEAR(half.windingAngle(V(0, 0.5)).toDouble(), 2 * kPi - 2 * std::atan2(1.0, 0.5), 1e-12);
  EXPECT_NEAR(half.windingAngle(V(0, -0.5)).toDouble(), 2 * std::atan2(1.0, 0.5), 1e-12);
  // Against the turn along dense samples, under a shear and a mirror.
  kcGenPoly g = mixedOutline();
  g.open();
  for (const kcXform<2>& x : {kShear, kcXform<2>::scale(-1, 1) * kShear}) {
    const kcGenPoly m = g.map(x);
    const std::vector<V> dense = samples(m, 2e-3);
    for (const V& p : probeGrid(m.encloseRect(), 0.5, 9)) {
      if (shape_testing::polylineDistance(dense, p) < 1e-2) continue;
      double w = 0.0;
      for (std::size_t i = 1; i < dense.size(); ++i) {
        const V u = dense[i - 1] - p, v = dense[i] - p;
        w += std::atan2(u.cross(v), u.dot(v));
      }
      EXPECT_NEAR(m.windingAngle(p).toDouble(), w, 1e-6);
    }
  }
}

TEST(GenPolyQueries, RightHandednessIsTheTurnInClientSpace) {
  const kcGenPoly g = mixedOutline();
  EXPECT_TRUE(g.isRightHanded());
  EXPECT_FALSE(static_cast<const kcGenPoly&>(*g.reverse()).isRightHanded());
  EXPECT_FALSE(g.map(kcXform<2>::scale(-1, 1)).isRightHanded());
  EXPECT_TRUE(g.map(kShear).isRightHanded());
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
  EXPECT_EQ(samples(chain({V(1, 2)}), 1.0), std::vector<V>{V(1, 2)});
  for (double s : {0.0, -1.0, shape_testing::kNaN, shape_testing::kInf, 1e-300}) {
    std::vector<V> out;
    EXPECT_THROW(g.sample(s, out), kcShapesError::BadParams) << s;
  }
}

TEST(GenPolyPieces, DecomposeGivesTrimmedSegmentsAndRoundingsInOrder) {
  const kcGenPoly g = mixedOutline().map(kShear);
  const std::vector<kcShapePtr> pieces = g.decompose();
  // Bottom side, rounding, right side, rounding, top side, left arc.
  ASSERT_EQ(pieces.size(), 6u);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const kcShape& piece = *pieces[i];
    EXPECT_EQ(typeid(piece), i % 2 ? typeid(kcEllipseArc) : typeid(kcLineSeg)) << i;
    expectNear(piece.endPoint(), pieces[(i + 1) % pieces.size()]->startPoint());
  }
  expectNear(pieces[0]->endPoint(), kShear * V(3, 0));
  expectNear(g.lineSegment(0, false).p2(), kShear * V(3, 0));
  expectNear(g.lineSegment(0, true).p2(), kShear * V(4, 0));
  EXPECT_EQ(static_cast<const kcEllipseArc&>(*pieces[1]), g.roundedVertex(1));
  expectNear(g.ellipseSegment(3, false).startPoint(), kShear * V(0, 4));
  EXPECT_THROW((void)g.lineSegment(3, true), kcShapesError::BadGeom);
  EXPECT_THROW((void)g.arcSegment(0, true), kcShapesError::BadGeom);
  EXPECT_THROW((void)g.roundedVertex(0), kcShapesError::BadGeom);
}

TEST(GenPolyClip, KeepsThePartsInsideTheWindow) {
  const kcGenPoly square = chain({V(0, 0), V(4, 0), V(4, 4), V(0, 4)}, true);
  kcClipInfo info;
  const kcShapePtr clipped = square.clip_(kcPolyline({V(-1, -1), V(2, -1), V(2, 5), V(-1, 5)}), info);
  const auto& parts = dynamic_cast<const kcShapeTree&>(*clipped).children();
  ASSERT_EQ(parts.size(), 3u);
  expectNear(parts[0]->endPoint(), V(2, 0));
  expectNear(parts[1]->startPoint(), V(2, 4));
  expectNear(parts[2]->endPoint(), V(0, 0));
  EXPECT_EQ(info.piecesCut, 2);
  EXPECT_EQ(info.piecesKept, 3);
  EXPECT_EQ(info.piecesDropped, 1);
  // Only the bulging arc reaches into this window, cut where it crosses.
  const kcGenPoly data = mixedOutline();
  const kcPolyline window({V(-1, 1), V(2, 1), V(2, 3.5), V(-1, 3.5)}, true);
  const kcShapePtr inData = data.clip_(window, info);
  const auto& arc = static_cast<const kcShapeTree&>(*inData).children();
  ASSERT_EQ(arc.size(), 1u);
  EXPECT_EQ(classOf(arc[0]), typeid(kcEllipseArc));
  EXPECT_NEAR(arc[0]->startPoint().y(), 3.5, 1e-12);
  EXPECT_NEAR(arc[0]->endPoint().y(), 1.0, 1e-12);
  EXPECT_EQ(info.piecesDropped, 5);
  // The mapped polygon in the mapped window gives the mapped part.
  const kcShapePtr inClient = data.map(kShear).clip_(window.map(kShear), info);
  const auto& mapped = static_cast<const kcShapeTree&>(*inClient).children();
  ASSERT_EQ(mapped.size(), 1u);
  expectNear(mapped[0]->startPoint(), kShear * arc[0]->startPoint(), 1e-9);
  expectNear(mapped[0]->endPoint(), kShear * arc[0]->endPoint(), 1e-9);
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
  const Bytes bytes = dispc_test::stored(mixedOutline().map(kShear));
  Bytes wrong = bytes;
  wrong[0] = 1;
  dispc_test::expectUnknownVersion(wrong, target, "dispc/wrfm/genpoly", 751);
  // The transform's six doubles come just before the editable flag.
  const std::size_t a00 = bytes.size() - 1 - 48;
  Bytes singular = bytes, notFinite = bytes, flag = bytes;
  shape_testing::patchDouble(singular, a00, 0.0);
  shape_testing::patchDouble(singular, a00 + 8, 0.0);
  shape_testing::patchDouble(notFinite, a00 + 40, shape_testing::kInf);
  flag.back() = 2;
  for (const Bytes& bad : {singular, notFinite, flag, Bytes(bytes.begin(), bytes.end() - 3)})
    dispc_test::expectRefused<kcArchive::Corrupt>(bad, target);
  // loadSimple moves the same bytes and reads the version as a signed byte.
  kcGenPoly g = mixedOutline().map(kShear);
  kcMemArchive out;
  g.loadSimple(out);
  EXPECT_EQ(out.bytes(), bytes);
  kcGenPoly back;
  kcMemArchive in(out.bytes());
  back.loadSimple(in);
  EXPECT_EQ(back, g);
  wrong = bytes;
  wrong[0] = 0xFF;
  kcGenPoly loaded = target;
  try {
    kcMemArchive bad(wrong);
    loaded.loadSimple(bad);
    ADD_FAILURE() << "version accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "dispc/wrfm/genpoly");
    EXPECT_EQ(e.line(), 741);
  }
  EXPECT_EQ(loaded, target);
}

}  // namespace
