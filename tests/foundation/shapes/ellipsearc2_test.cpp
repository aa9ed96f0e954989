#include "foundation/shapes/ellipsearc2.h"

#include <gtest/gtest.h>

#include "foundation/shapes/ellipsearc.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using X = kcXform<2>;

TEST(EllipseArc2, DirectionsReverseAndTies) {
  kcEllipseArc2 ccw(kcEllipse2(2, 1, kcRadian(0), V()), kcRadian(0), kcRadian(kPi / 2));
  EXPECT_NEAR(ccw.startAngle().toDouble(), kPi / 2, 1e-15);       // up at (2, 0)
  EXPECT_NEAR(std::fabs(ccw.endAngle().toDouble()), kPi, 1e-15);  // left at (0, 1)
  kcEllipseArc2 cw = ccw.reversed();
  EXPECT_EQ(cw.startPoint(), ccw.endPoint());
  EXPECT_NEAR(cw.endAngle().toDouble(), -kPi / 2, 1e-15);
  EXPECT_EQ(*kfDynamicCast<kcEllipseArc2>(ccw.reverse()), cw);
  kcEllipseArc2 circle(kcEllipse2(1, 1, kcRadian(0), V()), kcRadian(2.0), kcRadian(-2 * kPi));
  EXPECT_EQ(circle.nearestPoint(V()), circle.startPoint());
  EXPECT_THROW(ccw.angleStart(kcRadian(kInf)), kcShapesError::BadParams);
  EXPECT_EQ(ccw.angleEnd().toDouble(), kPi / 2);
}

TEST(EllipseArc2, RoundTripThroughTheFirstForm) {
  // A canonical arc comes back as itself, up to rounding.
  kcEllipseArc2 back{
      kcEllipseArc(kcEllipseArc2(kcEllipse2(3, 1, kcRadian(0.4), V(1, 2)), kcRadian(5), kcRadian(-2)))};
  EXPECT_NEAR(back.ellipse().radiusX(), 3.0, 1e-15);
  EXPECT_NEAR(back.ellipse().rotation().toDouble(), 0.4, 1e-15);
  EXPECT_NEAR(back.angleStart().toDouble(), 5.0, 1e-14);
  EXPECT_EQ(back.angleSpan().toDouble(), -2.0);
  // Radii in the other order come back swapped, on the same points.
  kcEllipseArc2 tall(kcEllipse2(1, 3, kcRadian(0.4), V(1, 2)), kcRadian(5.0), kcRadian(-2.0));
  kcEllipseArc2 swapped{kcEllipseArc(tall)};
  EXPECT_NEAR(swapped.ellipse().radiusX(), 3.0, 1e-15);
  EXPECT_LT(swapped.startPoint().distance(tall.startPoint()), 1e-14);
  EXPECT_LT(swapped.endPoint().distance(tall.endPoint()), 1e-14);
}

// Mapping re-factorises the ellipse and carries the angles along, so every
// point of the arc maps onto the image's point of the same fraction.
TEST(EllipseArc2, MapsKeepEveryPointsRole) {
  for (kcEllipseArc2 a :
       {kcEllipseArc2(kcEllipse2(3, 1, kcRadian(0.4), V(1, 1)), kcRadian(0), kcRadian(kPi / 2)),
        kcEllipseArc2(kcEllipse2(1, 3, kcRadian(-0.2), V()), kcRadian(2), kcRadian(-3)),
        kcEllipseArc2(kcEllipse2(2, 2, kcRadian(0), V()), kcRadian(-0.5), kcRadian(1))}) {
    for (X x : {X(kcMatrix<2>::rotation(kcRadian(2.0)), V(1, 0)), X(kcMatrix<2>::scale(-1, 2), V()),
                X(kcMatrix<2>(0, 3, 3, 0), V(1, 1)), X(kcMatrix<2>(1, 2, 3, 1), V(-2, 0)),
                X(kcMatrix<2>(2, 1, 0.5, 1.5), V())}) {
      kcEllipseArc2 image = a.map(x);
      for (double f : {0.0, 0.3, 0.7, 1.0}) {
        V want = x * a.point(a.angleStart() + a.angleSpan() * f);
        EXPECT_LT(image.point(image.angleStart() + image.angleSpan() * f).distance(want), 1e-11) << f;
      }
      EXPECT_EQ(image.angleSpan().toDouble() * a.angleSpan().toDouble() < 0, x.matrix().determinant() < 0);
    }
  }
}

}  // namespace
