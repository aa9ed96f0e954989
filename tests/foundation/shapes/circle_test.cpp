#include "foundation/shapes/circle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/rect.h"
#include "tests/foundation/shapes/ellipse_testing.h"
#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;
using V = kcVector<2>;
constexpr double kPi = std::numbers::pi;

TEST(Circle, ConstructorRejectsBadValues) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  double inf = std::numeric_limits<double>::infinity();
  struct Case {
    const char* why;
    std::function<void()> make;
    long error;
  } cases[] = {
      {"NaN centre", [&] { kcCircle(V(nan, 0), 1); }, 0x10000209},
      {"infinite radius", [&] { kcCircle(V(), inf); }, 0x10000209},
      {"NaN radius", [&] { kcCircle(V(), nan); }, 0x10000209},
      {"zero radius", [&] { kcCircle(V(), 0.0); }, 0x10000204},
      {"negative radius", [&] { kcCircle(V(), -1.0); }, 0x10000204},
  };
  for (const Case& c : cases) {
    try {
      c.make();
      ADD_FAILURE() << c.why;
    } catch (const kcException& e) {
      EXPECT_EQ(e.errorNumber(), c.error) << c.why;
    }
  }
  kcCircle c(V(1, 2), 3);
  EXPECT_THROW(c.radius(0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(c.center(V(inf, 0)), kcShapesError::BadParams);
  EXPECT_EQ(c, kcCircle(V(1, 2), 3));  // unchanged after the failed edits
  kcCircle d;
  EXPECT_EQ(d, kcCircle(V(), 1.0));
}

TEST(Circle, MeasuresAgainstTheDefinition) {
  kcCircle c(V(1, -2), 2.5);
  EXPECT_EQ(c.encloseRect(), kcRect(V(-1.5, -4.5), V(5, 5)));
  EXPECT_TRUE(c.isRegion());
  EXPECT_FALSE(c.isOpenContour());
  EXPECT_TRUE(c.within(V(3.5, -2)));  // on the boundary
  EXPECT_FALSE(c.within(V(3.51, -2)));
  EXPECT_THROW((void)c.startPoint(), kcShapesError::NotOpenContour);
  EXPECT_DOUBLE_EQ(c.distanceToPoint(V(1, 2)), 1.5);
  EXPECT_DOUBLE_EQ(c.distanceToPoint(V(1, -1)), 1.5);
  EXPECT_EQ(c.nearestPoint(V(1, 5)), V(1, 0.5));
  // Every boundary point is nearest to the centre: the start point is taken.
  EXPECT_EQ(c.nearestPoint(V(1, -2)), V(3.5, -2));
  EXPECT_DOUBLE_EQ(c.distanceToPoint(V(1, -2)), 2.5);
  for (V p : ellipse_testing::probes(V(1, -2), 4.0)) {
    double brute = ellipse_testing::bruteDistance(ellipse_testing::ellipseCurve(V(1, -2), 2.5, 2.5, 0.0), 0.0,
                                                  2 * kPi, p);
    EXPECT_NEAR(c.distanceToPoint(p), brute, 1e-9) << p.x() << "," << p.y();
    EXPECT_NEAR(c.nearestPoint(p).distance(V(1, -2)), 2.5, 1e-14);
  }
  expectDistancesMatchSampling(c, probeGrid(c.encloseRect(), 1.0, 8), 0.01, 2e-5);
  expectEncloseRectMatchesSampling(c, 0.01, 1e-5);
}

TEST(Circle, SampleIsClosedAndDense) {
  kcCircle c(V(1, 1), 3);
  std::vector<V> pts = samples(c, 0.5);
  ASSERT_EQ(pts.size(), 39u);  // ceil(6 pi / 0.5) = 38 pieces, and the closing point
  EXPECT_EQ(pts.front(), V(4, 1));
  EXPECT_EQ(pts.back(), pts.front());
  for (const V& p : pts) EXPECT_NEAR(p.distance(V(1, 1)), 3.0, 1e-14);
  expectSampleSpacing(c, 0.5);
  EXPECT_THROW(c.sample(0.0, pts), kcShapesError::BadParams);
  EXPECT_THROW(c.sample(1e-12, pts), kcShapesError::BadParams);  // too many points
}

TEST(Circle, SimilaritiesKeepACircle) {
  kcCircle c(V(1, 2), 2);
  kcMatrix<2> composed;
  for (int i = 0; i < 40; ++i) composed = kcMatrix<2>::rotation(kcRadian(0.3 + 0.1 * i)) * composed;
  struct Row {
    const char* why;
    kcXform<2> x;
    double radius;
  } rows[] = {
      {"translation", kcXform<2>::translation(V(3, 4)), 2.0},
      {"rotation", kcXform<2>::rotation(kcRadian(1.0)), 2.0},
      {"uniform scale", kcXform<2>::scale(3, 3), 6.0},
      {"mirror", kcXform<2>::scale(-2, 2), 4.0},
      {"forty composed rotations", kcXform<2>(composed, V()), 2.0},
  };
  for (const Row& r : rows) {
    EXPECT_TRUE(kcCircle::isSimilarity(r.x)) << r.why;
    kcShapePtr image = c.mapShape(r.x);
    auto* circle = dynamic_cast<kcCircle*>(image.get());
    ASSERT_NE(circle, nullptr) << r.why;
    EXPECT_NEAR(circle->radius(), r.radius, 1e-14) << r.why;
    EXPECT_LT(circle->center().distance(r.x * c.center()), 1e-14) << r.why;
    expectMapMatchesSamples(c, r.x, 0.05, 1e-9);
  }
  // A pure translation keeps the radius bit for bit.
  EXPECT_EQ(c.map(kcXform<2>::translation(V(0.1, 0.2))).radius(), 2.0);
}

TEST(Circle, OtherMapsGiveAnEllipse) {
  kcCircle c(V(1, 2), 2);
  for (kcXform<2> x :
       {kcXform<2>::scale(1, 1 + 1e-9), kcXform<2>::scale(2, 1), kcXform<2>(kcMatrix<2>(1, 1, 0, 1), V(1, 0)),
        kcXform<2>(kcMatrix<2>(1, 2, 3, 1), V())}) {
    EXPECT_FALSE(kcCircle::isSimilarity(x));
    kcShapePtr image = c.mapShape(x);
    EXPECT_NE(dynamic_cast<kcEllipse2*>(image.get()), nullptr);
    EXPECT_THROW((void)c.map(x), kcShapesError::BadGeom);
    expectMapMatchesSamples(c, x, 0.05, 1e-9);
  }
  EXPECT_THROW((void)c.mapShape(kcXform<2>(kcMatrix<2>(1, 2, 2, 4), V())), kcMathError::Singular);
}

TEST(Circle, ConvertsToBothEllipseForms) {
  kcCircle c(V(1, 2), 2);
  EXPECT_EQ(c.toEllipse2(), kcEllipse2(2, 2, kcRadian(0), V(1, 2)));
  EXPECT_EQ(kcEllipse2(c), c.toEllipse2());
  for (double t : {0.0, 1.0, 4.0})
    EXPECT_LT(c.toEllipse2().point(kcRadian(t)).distance(c.point(kcRadian(t))), 1e-15);
}

TEST(Circle, Archive) {
  kcCircle c(V(1, -2), 2.5);
  expectRoundTrip(c);
  expectUnknownVersion(c, "foundation/shapes/circle");
  expectTruncationCorrupt(c);
  // Body: version 0, centre x, centre y, radius.
  Bytes bytes = storeByHandle(c);
  ASSERT_EQ(bytes.size(), bodyOffset(c) + 24);
  EXPECT_EQ(bytes[versionOffset(c)], 0);
  Bytes fixed = bytes;
  patchDouble(fixed, bodyOffset(c) + 16, 4.0);
  EXPECT_EQ(*kfDynamicCast<kcCircle>(loadByHandle(fixed)), kcCircle(V(1, -2), 4.0));
  for (std::size_t field = 0; field < 3; ++field) expectNaNCorrupt(c, bodyOffset(c) + 8 * field);
  patchDouble(bytes, bodyOffset(c) + 16, 0.0);
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt);
}

}  // namespace
