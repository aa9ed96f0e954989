// The whole-poly helpers: outline pieces, nearest points, reversal, mirror,
// similarity images, sub-polys and dimension conversions.
#include "dispc/smd/polyprivate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dispc/smd/polygeom_p.h"

namespace {

using V = kcVector<2>;
using Poly = kcSMDGDPoly;
using P = kcSMDGDPolyPrivate;
using Vertex = kcSMDGDPolyVertex;

Vertex at(double x, double y, double radius = 0.0, long label = -1) {
  return Vertex(V(x, y), radius, 0.5, 0.5, label);
}

Vertex arcTo(double x, double y, double span) {
  return Vertex(V(x, y), 0.0, kcDegree(span), 0.5, 0.5, -1, kcDimTol(-1, -1, -1, kcDimTol::eOffsets));
}

Poly chain(const std::vector<Vertex>& vs, bool close) {
  Poly p;
  for (const Vertex& v : vs) p << v;
  if (close) p.close();
  return p;
}

void expectNear(const V& a, const V& b, double tol = 1e-12) {
  EXPECT_LE(a.distance(b), tol) << a.x() << "," << a.y() << " vs " << b.x() << "," << b.y();
}

// A closed outline with a bent segment, a rounded corner and a tolerance.
Poly mixed() {
  Vertex tol = at(4, 0);
  tol.segmentLengthTol(kcDimTol(4, 0.1, 0.2, kcDimTol::eOffsets));
  Vertex apart = at(4, 3, 0.5);
  apart.percentPrevSegment(0.3);
  return chain({at(0, 0), tol, apart, arcTo(0, 3, 60)}, true);
}

// --- outline pieces ---

TEST(SMDPolyOutline, PiecesFollowTheOutline) {
  const std::vector<kcSMDPiece_> square =
      kfOutlinePieces_(chain({at(0, 0, 1), at(4, 0, 1), at(4, 4, 1), at(0, 4, 1)}, true));
  ASSERT_EQ(square.size(), 8u);
  for (std::size_t k = 0; k < square.size(); ++k)
    expectNear(kfPieceEnd_(square[k]), kfPieceStart_(square[(k + 1) % square.size()]));
  // The ends of an open chain are never rounded.
  EXPECT_EQ(kfOutlinePieces_(chain({at(0, 0, 1), at(4, 0, 1), at(4, 4, 1)}, false)).size(), 3u);
}

// --- nearest points, inside, position ---

TEST(SMDPolyNearest, MeasuresTheRoundedOutline) {
  const Poly p = chain({at(0, 0, 1), at(4, 0, 1), at(4, 4, 1), at(0, 4, 1)}, true);
  // Out from the corner's rounding centre (3, 3) along the diagonal.
  const V far(6, 6);
  EXPECT_NEAR(P::distToPoint(p, far), far.distance(V(3, 3)) - 1.0, 1e-12);
  expectNear(P::closestPoint(p, far), V(3, 3) + V(1, 1) * std::sqrt(0.5));
  expectNear(P::closestPoint(p, V(2, -5)), V(2, 0));
  EXPECT_EQ(P::closestPoint(chain({at(7, 8)}, false), V()), V(7, 8));
  EXPECT_THROW((void)P::closestPoint(Poly(), V()), kcShapesError::EmptyShape);
}

TEST(SMDPolyNearest, InsideWantsAClosedPoly) {
  const Poly p = mixed();
  EXPECT_TRUE(P::inside(p, V(2, 1)));
  EXPECT_FALSE(P::inside(p, V(5, 1)));
  EXPECT_THROW((void)P::inside(chain({at(0, 0), at(4, 0), at(4, 4)}, false), V(3, 1)), Poly::notClosed);
}

TEST(SMDPolyPosition, IsTheMeanTurnedByTheFirstSegment) {
  const Poly p = chain({at(0, 0), at(2, 2), at(0, 4), at(-2, 2)}, true);
  const kc2Rigid pose = P::position(p);
  EXPECT_NEAR(pose.angle().toDouble(), std::numbers::pi / 4, 1e-15);
  expectNear(pose.trans(), V(0, 2));
}

// --- reversal ---

TEST(SMDPolyReverse, ClosedKeepsVertexZeroAndMovesSpansWithTheirSegments) {
  const Poly p = mixed();
  const Poly r = P::reversePoly(p);
  ASSERT_EQ(r.numVertices(), 4);
  EXPECT_EQ(r.vertices()[0].point(), V(0, 0));
  EXPECT_EQ(r.vertices()[1].point(), V(0, 3));
  // The bent segment ran 4,3 -> 0,3 over 60 degrees; now 0,3 -> 4,3 over -60.
  EXPECT_EQ(r.vertices()[2].segmentAngleSpan().toDouble(), -60.0);
  EXPECT_EQ(r.vertices()[1].segmentAngleSpan().toDouble(), 0.0);
  // The tolerance of 0,0 -> 4,0 now sits at the end of 4,0 -> 0,0.
  EXPECT_EQ(r.vertices()[0].segmentLengthTol(), kcDimTol(4, 0.1, 0.2, kcDimTol::eOffsets));
  EXPECT_EQ(r.vertices()[2].percentNextSegment(), 0.3);
  EXPECT_NE(r.isDirectionPositive(), p.isDirectionPositive());
  EXPECT_NEAR(r.boundingBox(kcXform<2>()).area(), p.boundingBox(kcXform<2>()).area(), 1e-12);
  EXPECT_TRUE(P::reversePoly(r) == p);
}

TEST(SMDPolyReverse, OpenReversesTheOrder) {
  const Poly p = chain({at(0, 0), arcTo(4, 0, 90), at(4, 4)}, false);
  const Poly r = P::reversePoly(p);
  EXPECT_EQ(r.vertices()[0].point(), V(4, 4));
  EXPECT_EQ(r.vertices()[2].point(), V(0, 0));
  EXPECT_EQ(r.vertices()[2].segmentAngleSpan().toDouble(), -90.0);
  EXPECT_EQ(r.vertices()[0].segmentAngleSpan().toDouble(), 0.0);
  EXPECT_TRUE(P::reversePoly(r) == p);
}

// --- mirror and similarity ---

TEST(SMDPolyFlip, MirrorsAboutTheYAxisAndKeepsPolarity) {
  const Poly p = mixed();
  const Poly f = P::flip(p);
  for (long i = 0; i < p.numVertices(); ++i) {
    EXPECT_EQ(f.vertices()[i].point(), V(-p.vertices()[i].point().x(), p.vertices()[i].point().y()));
    EXPECT_EQ(f.vertices()[i].segmentAngleSpan(), -p.vertices()[i].segmentAngleSpan());
  }
  EXPECT_EQ(f.isDirectionPositive(), p.isDirectionPositive());
  EXPECT_NE(f.isDirectionReversed(), p.isDirectionReversed());
  const kcRect box = p.boundingBox(kcXform<2>());
  const kcRect fbox = f.boundingBox(kcXform<2>());
  EXPECT_NEAR(fbox.xMin(), -box.xMax(), 1e-12);
  EXPECT_NEAR(fbox.yMax(), box.yMax(), 1e-12);
  EXPECT_TRUE(P::flip(f) == p);
}

TEST(SMDPolySimilarity, TurnsScalesAndMirrorsExactly) {
  const Poly p = mixed();
  const kcRadian turn(0.3);
  const kcXform<2> x(kcMatrix<2>::rotation(turn) * kcMatrix<2>::scale(2, 2), V(5, -1));
  const Poly image = P::similarityImage(p, x);
  EXPECT_TRUE(kfRealEq(image, kc2Rigid(turn, V(5, -1)) * (2.0 * p), 1e-12));
  // A mirror: the spans change sign, and so does the direction.
  const Poly m = P::similarityImage(p, kcXform<2>(kcMatrix<2>::scale(-1, 1), V()));
  EXPECT_EQ(m.vertices(), P::flip(p).vertices());
  EXPECT_EQ(m.isDirectionReversed(), p.isDirectionReversed());
  EXPECT_NE(m.isDirectionPositive(), p.isDirectionPositive());
  EXPECT_THROW((void)P::similarityImage(p, kcXform<2>(kcMatrix<2>::scale(2, 1), V())),
               kcShapesError::BadGeom);
  EXPECT_THROW((void)P::similarityImage(p, kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V())), kcShapesError::BadGeom);
  EXPECT_THROW((void)P::similarityImage(p, kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcShapesError::BadGeom);
}

// --- sub-polys ---

TEST(SMDPolySubPoly, TakesTheRunOfALabel) {
  const Poly p = chain(
      {at(0, 0, 0, 1), at(4, 0, 0, 1), at(4, 2, 0, 2), at(4, 4, 0, 2), at(2, 5, 0, 2), at(0, 4, 0, 1)}, true);
  const Poly first = P::subPoly(p, 0, false);
  EXPECT_TRUE(first.isOpen());
  ASSERT_EQ(first.numVertices(), 2);
  EXPECT_EQ(first.vertices()[1].point(), V(4, 0));
  EXPECT_EQ(P::subPoly(p, 2, false).numVertices(), 3);
  // From the last vertex the run goes on at vertex 0 only with wrap.
  const Poly wrapped = P::subPoly(p, 5, true);
  ASSERT_EQ(wrapped.numVertices(), 3);
  EXPECT_EQ(wrapped.vertices()[2].point(), V(4, 0));
  EXPECT_THROW((void)P::subPoly(p, 5, false), Poly::badSubModel);
  EXPECT_THROW((void)P::subPoly(p, 6, false), Poly::invalidIndex);
  // A run over every vertex is the poly itself.
  const Poly whole = chain({at(0, 0, 0, 3), at(4, 0, 0, 3), at(4, 4, 0, 3)}, true);
  EXPECT_TRUE(P::subPoly(whole, 0, false) == whole);
  EXPECT_TRUE(P::subPoly(whole, 0, false).isClosed());
}

// --- dimensions ---

TEST(SMDPolyDimTol, KeepsTheKindOfTheScaleType) {
  EXPECT_EQ(P::tolType(kcSMDDimension::eFixed), kcDimTol::eLimits);
  EXPECT_EQ(P::tolType(kcSMDDimension::eScaleNominal), kcDimTol::eOffsets);
  EXPECT_EQ(P::tolType(kcSMDDimension::eScaleAll), kcDimTol::ePercentages);
  EXPECT_EQ(P::tolType(static_cast<kcSMDDimension::ScaleType>(7)), kcDimTol::eOffsets);
  EXPECT_EQ(P::dimTol(kcSMDDimension(10, 9, 12, kcSMDDimension::eFixed)),
            kcDimTol(10, 9, 12, kcDimTol::eLimits));
  EXPECT_EQ(P::dimTol(kcSMDDimension(10, 9, 12, kcSMDDimension::eScaleNominal)),
            kcDimTol(10, 1, 2, kcDimTol::eOffsets));
  const kcDimTol perc = P::dimTol(kcSMDDimension(10, 9, 12, kcSMDDimension::eScaleAll));
  EXPECT_EQ(perc.tolType(), kcDimTol::ePercentages);
  EXPECT_NEAR(perc.minTol(), 0.1, 1e-15);
  EXPECT_NEAR(perc.maxTol(), 0.2, 1e-15);
  for (const kcSMDDimension& d : {kcSMDDimension(10, 9, -1, kcSMDDimension::eScaleNominal),
                                  kcSMDDimension(10, -1, 12, kcSMDDimension::eScaleAll), kcSMDDimension()})
    EXPECT_EQ(kcSMDDimension(P::dimTol(d)), d);
}

}  // namespace
