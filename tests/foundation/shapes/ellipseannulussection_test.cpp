#include "foundation/shapes/ellipseannulussection.h"

#include <gtest/gtest.h>

#include "foundation/shapes/lineseg.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

kcEllipseAnnulusSection section(double span) {
  return kcEllipseAnnulusSection(kcEllipseAnnulus(kcEllipse2(3, 2, kcRadian(0.3), V(1, -1)), 0.5),
                                 kcRadian(0.2), kcRadian(span));
}

TEST(EllipseAnnulusSection, BoundaryIsAClosedChainOfArcsAndEdges) {
  // Outer arc, end edge, inner arc backwards, start edge.
  std::vector<kcShapePtr> pieces = section(-2.0).decompose();
  ASSERT_EQ(pieces.size(), 4u);
  for (std::size_t i : {0u, 2u}) EXPECT_TRUE(kfDynamicCast<kcEllipseArc2>(pieces[i]));
  for (std::size_t i : {1u, 3u}) EXPECT_TRUE(kfDynamicCast<kcLineSeg>(pieces[i]));
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_LT(pieces[i]->endPoint().distance(pieces[(i + 1) % 4]->startPoint()), 1e-13) << i;
  std::vector<V> pts = samples(section(-2.0), 0.05);
  EXPECT_EQ(pts.front(), pts.back());
  EXPECT_EQ(pts.front(), section(-2.0).outerArc().startPoint());
  // A full turn is the whole ring: two ellipses, no edges.
  EXPECT_EQ(section(-2 * kPi).decompose().size(), 2u);
  EXPECT_TRUE(kcEllipseAnnulusSection().isFullTurn());
  EXPECT_FALSE(section(2.0).isFullTurn());
}

TEST(EllipseAnnulusSection, TiesGoToTheEarlierPiece) {
  // The upper right quarter of the circular ring between radii 1 and 2.
  kcEllipseAnnulusSection s(kcEllipseAnnulus(kcEllipse2(2, 2, kcRadian(0), V()), 0.5), kcRadian(0),
                            kcRadian(kPi / 2));
  // (3, -1) is nearest to the corner (2, 0), the outer arc's start and the
  // start edge's end: the outer arc comes first.
  EXPECT_EQ(s.nearestPoint(V(3, -1)), s.outerArc().startPoint());
  // Midway between the arcs: the outer one.
  EXPECT_NEAR(s.nearestPoint(V(1.5 * std::cos(0.7), 1.5 * std::sin(0.7))).len(), 2.0, 1e-14);
}

TEST(EllipseAnnulusSection, MapKeepsEveryPointsRoleAndRefusesBadEdits) {
  kcEllipseAnnulusSection s = section(-2.0);
  for (kcXform<2> x :
       {kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V(2, 2)), kcXform<2>(kcMatrix<2>(2, 0.5, 0, 1), V())}) {
    kcEllipseAnnulusSection image = s.map(x);
    EXPECT_LT(image.outerArc().startPoint().distance(x * s.outerArc().startPoint()), 1e-12);
    EXPECT_LT(image.innerArc().endPoint().distance(x * s.innerArc().endPoint()), 1e-12);
  }
  EXPECT_THROW(s.angleSpan(kcRadian(0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(s.angleEnd().toDouble(), 0.2 - 2.0);
  // The nested ellipse's version byte is checked too.
  Bytes bytes = storeByHandle(s);
  bytes.at(bodyOffset(s) + 1) = 3;
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::UnknownVersion);
}

}  // namespace
