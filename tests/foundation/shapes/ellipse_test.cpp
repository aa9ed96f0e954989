#include "foundation/shapes/ellipse.h"

#include <gtest/gtest.h>

#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

// The first point along the boundary from t = 0 wins a tie; a mirror in the
// transform changes which point that is.
TEST(Ellipse, NearestPointTiesFollowTheParameter) {
  kcEllipse plain(X::scale(3, 1));
  kcEllipse mirrored(X::scale(3, -1));
  EXPECT_LT(plain.nearestPoint(V()).distance(V(0, 1)), 1e-15);
  EXPECT_LT(mirrored.nearestPoint(V()).distance(V(0, -1)), 1e-15);
  EXPECT_GT(plain.nearestPoint(V(1, 0)).y(), 0.0);
  EXPECT_LT(mirrored.nearestPoint(V(1, 0)).y(), 0.0);
  kcEllipse circle(X(kcMatrix<2>::rotation(kcRadian(1.0)), V(2, 2)));
  EXPECT_LT(circle.nearestPoint(V(2, 2)).distance(circle.point(kcRadian(0))), 1e-15);
}

TEST(Ellipse, PointsAHairOffTheAxis) {
  // The feet of (x, 0) inside x^2/4 + y^2 = 1 are (4x/3, +-sqrt(1 - 4x^2/9)), at
  // distance sqrt(1 - x^2/3); bisection must reach brackets far below 1 to
  // find them for a point 1e-150 above the axis.
  kcEllipse e(X::scale(2, 1));
  V q = e.nearestPoint(V(0.5, 1e-150));
  EXPECT_NEAR(q.distance(V(0.5, 1e-150)), std::sqrt(11.0 / 12.0), 1e-14);
  EXPECT_NEAR(q.x(), 2.0 / 3.0, 1e-14);
  EXPECT_GT(q.y(), 0.0);
}

TEST(Ellipse, MapComposesSoTheParameterNamesTheSamePoint) {
  kcEllipse e(X(kcMatrix<2>(2, 1.5, 0, 1), V(1, -1)));
  X y(kcMatrix<2>(1, 2, -1, 0.5), V(3, 4));
  kcEllipse image = e.map(y);
  for (double t : {0.0, 1.0, 3.0})
    EXPECT_LT(image.point(kcRadian(t)).distance(y * e.point(kcRadian(t))), 1e-13);
  EXPECT_EQ(samples(e, 0.1).front(), e.xform() * V(1, 0));
  EXPECT_THROW((void)e.map(X::scale(1, 0)), kcMathError::Singular);
  EXPECT_THROW(e.xform(X::scale(1, 0)), kcShapesError::DegenerateShape);
  EXPECT_EQ(e, kcEllipse(X(kcMatrix<2>(2, 1.5, 0, 1), V(1, -1))));
}

TEST(Ellipse, ConversionsKeepTheParameter) {
  kcCircle c(V(1, 2), 3);
  kcEllipse fromCircle(c);
  EXPECT_EQ(fromCircle.xform(), X(kcMatrix<2>::scale(3, 3), V(1, 2)));
  kcEllipse2 e2(1, 3, kcRadian(2.0), V(-1, 0));
  kcEllipse first(e2);
  EXPECT_EQ(first.xform(), e2.xform());
  for (double t : {0.0, 1.0, 5.0}) {
    EXPECT_LT(fromCircle.point(kcRadian(t)).distance(c.point(kcRadian(t))), 1e-15);
    EXPECT_LT(first.point(kcRadian(t)).distance(e2.point(kcRadian(t))), 1e-15);
  }
}

}  // namespace
