#include "foundation/shapes/fline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(FLine, ClosestPointAndSignedDistance) {
  kcFLine l(V(1, 1), kcRadian(kPi / 4));
  EXPECT_LT(l.closestPoint(V(3, 1)).distance(V(2, 2)), 1e-15);
  EXPECT_NEAR(l.signedDistance(V(3, 1)), -std::sqrt(2.0), 1e-15);  // right of travel
  EXPECT_NEAR(l.signedDistance(V(1, 3)), std::sqrt(2.0), 1e-15);
  EXPECT_LT(l.pointAt(std::sqrt(8.0)).distance(V(3, 3)), 1e-15);
}

TEST(FLine, Intersections) {
  struct Case {
    const char* why;
    kcFLine a, b;
    bool meets;
    V at;
  } cases[] = {
      {"axes", kcFLine(V(5, 0), kcRadian(0)), kcFLine(V(0, 7), kcRadian(kPi / 2)), true, V(0, 0)},
      {"diagonals", kcFLine::through(V(0, 0), V(2, 2)), kcFLine::through(V(0, 2), V(2, 0)), true, V(1, 1)},
      {"steep and flat", kcFLine(V(3, -10), kcRadian(kPi / 2)), kcFLine::through(V(0, 1), V(1, 1.5)), true,
       V(3, 2.5)},
      {"parallel", kcFLine(V(0, 0), kcRadian(0.3)), kcFLine(V(0, 1), kcRadian(0.3)), false, V()},
      {"coincident", kcFLine(V(0, 0), kcRadian(0)), kcFLine(V(5, 0), kcRadian(0)), false, V()},
  };
  for (const Case& c : cases) {
    std::optional<V> p = c.a.intersect(c.b);
    ASSERT_EQ(p.has_value(), c.meets) << c.why;
    EXPECT_LT(p.value_or(c.at).distance(c.at), 1e-14) << c.why;
  }
}

TEST(FLine, EqualityModuloATurnAndDirectionUnderMaps) {
  // Angles naming the same direction are equal; the opposite direction is not.
  EXPECT_EQ(kcFLine(V(1, 2), kcRadian(0.5)), kcFLine(V(1, 2), kcRadian(0.5 + 2 * kPi)));
  EXPECT_FALSE(kcFLine(V(1, 2), kcRadian(0.5)) == kcFLine(V(1, 2), kcRadian(0.5 + kPi)));
  kcFLine l(V(1, 2), kcRadian(0.5));
  kcXform<2> x(kcMatrix<2>(2, 1, -1, 3), V(4, 0));
  kcFLine m = l.map(x);
  for (double s : {-3.0, 0.0, 2.5}) EXPECT_LT(m.distanceToPoint(x * l.pointAt(s)), 1e-13);
  EXPECT_GT((x * l.pointAt(1) - x * l.point()).dot(m.direction()), 0.0);  // travel survives
  EXPECT_THROW((void)l.map(kcXform<2>(kcMatrix<2>(0, 0, 0, 0), V())), kcMathError::Singular);
}

}  // namespace
