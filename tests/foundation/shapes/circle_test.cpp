#include "foundation/shapes/circle.h"

#include <gtest/gtest.h>

#include "foundation/shapes/ellipse2.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

TEST(Circle, SimilaritiesKeepACircle) {
  kcCircle c(V(1, 2), 2);
  kcMatrix<2> composed;
  for (int i = 0; i < 40; ++i) composed = kcMatrix<2>::rotation(kcRadian(0.3 + 0.1 * i)) * composed;
  struct Row {
    const char* why;
    X x;
    double radius;
  } rows[] = {
      {"uniform scale", X::scale(3, 3), 6.0},
      {"turned mirror", X(kcMatrix<2>(0, -3, -3, 0), V()), 6.0},
      {"forty composed rotations", X(composed, V()), 2.0},
      {"scale off by 1e-13", X::scale(1, 1 + 1e-13), 2 + 1e-13},
  };
  for (const Row& r : rows) {
    EXPECT_TRUE(kcCircle::isSimilarity(r.x)) << r.why;
    auto image = kfDynamicCast<kcCircle>(c.mapShape(r.x));
    ASSERT_TRUE(image) << r.why;
    EXPECT_NEAR(image->radius(), r.radius, 1e-14) << r.why;
    EXPECT_LT(image->center().distance(r.x * c.center()), 1e-14) << r.why;
  }
  // A pure translation keeps the radius bit for bit.
  EXPECT_EQ(c.map(X::translation(V(0.1, 0.2))).radius(), 2.0);
}

TEST(Circle, OtherMapsGiveAnEllipse) {
  kcCircle c(V(1, 2), 2);
  for (X x : {X::scale(1, 1 + 1e-9), X::scale(2, 1), X(kcMatrix<2>(1, 1, 0, 1), V(1, 0))}) {
    EXPECT_FALSE(kcCircle::isSimilarity(x));
    EXPECT_TRUE(kfDynamicCast<kcEllipse2>(c.mapShape(x)));
    EXPECT_THROW((void)c.map(x), kcShapesError::BadGeom);
  }
  EXPECT_THROW((void)c.mapShape(X(kcMatrix<2>(1, 2, 2, 4), V())), kcMathError::Singular);
}

TEST(Circle, CentreTiesGoToTheStart) {
  kcCircle c(V(1, -2), 2.5);
  EXPECT_EQ(c.nearestPoint(V(1, -2)), V(3.5, -2));
  EXPECT_TRUE(c.within(V(3.5, -2)));  // on the boundary
  EXPECT_FALSE(c.within(V(3.51, -2)));
  EXPECT_EQ(samples(c, 0.5).back(), V(3.5, -2));  // the outline closes at the start
}

TEST(Circle, ConvertsToTheEllipseAndRefusesBadEdits) {
  kcCircle c(V(1, 2), 2);
  EXPECT_EQ(c.toEllipse2(), kcEllipse2(2, 2, kcRadian(0), V(1, 2)));
  EXPECT_EQ(kcEllipse2(c), c.toEllipse2());
  for (double t : {0.0, 1.0, 4.0})
    EXPECT_LT(c.toEllipse2().point(kcRadian(t)).distance(c.point(kcRadian(t))), 1e-15);
  EXPECT_THROW(c.radius(0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(c.center(V(kInf, 0)), kcShapesError::BadParams);
  EXPECT_EQ(c, kcCircle(V(1, 2), 2));
}

}  // namespace
