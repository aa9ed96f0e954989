#include "dispc/wrfm/lineseg.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>
#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using V = kcVector<2>;
using dispc_test::Bytes;

TEST(SegmentLine, ConstructionAndQueries) {
  EXPECT_THROW(kc2SegmentLine(V(1, 2), V(1, 2)), kcShapesError::DegenerateShape);
  EXPECT_NO_THROW(kc2SegmentLine(V(1, 2), V(1, 2.0000000000000004)));
  EXPECT_TRUE(kc2SegmentLine().p1() == V() && kc2SegmentLine().p2() == V());
  kc2SegmentLine fromSeg(kcLineSeg(V(3, 4), V(-1, 0)));
  EXPECT_TRUE(fromSeg.p1() == V(3, 4) && fromSeg.p2() == V(-1, 0));

  kc2SegmentLine s(V(1, 1), V(4, 5));
  EXPECT_DOUBLE_EQ(s.length(), 5.0);
  const double expected = std::atan2(4.0, 3.0) * 180 / std::numbers::pi;
  for (kcDegree d : {s.angle(), s.direction(7.5), s.startDirection(), s.midDirection(), s.endDirection()})
    EXPECT_NEAR(d.toDouble(), expected, 1e-13);
  EXPECT_EQ(s.midPoint(), V(2.5, 3));
  EXPECT_EQ(s.segPoint(2.0), V(7, 9));  // not clamped
  kcRect box = kc2SegmentLine(V(4, -1), V(1, 5)).boundingBox();
  EXPECT_TRUE(box.origin() == V(1, -1) && box.size() == V(3, 6));
}

TEST(SegmentLine, InRangeUsesARelativeToleranceAtTheEnds) {
  // {position along the segment of length 10 (tolerance 1e-13), distance off it, inclusive, exclusive}
  const double rows[][4] = {{5, 3, 1, 1},          {0, 0, 1, 0},      {10, 0, 1, 0},   {5e-14, 0, 1, 0},
                            {10 + 5e-14, 1, 1, 0}, {-1e-12, 0, 0, 0}, {1e-12, 0, 1, 1}};
  const V u(std::cos(0.6), std::sin(0.6)), n(-u.y(), u.x()), p1(3, -2);
  kc2SegmentLine s(p1, p1 + 10.0 * u);
  for (const auto& r : rows) {
    EXPECT_EQ(s.inRange(p1 + r[0] * u + r[1] * n, true), r[2] != 0) << r[0];
    EXPECT_EQ(s.inRange(p1 + r[0] * u + r[1] * n, false), r[3] != 0) << r[0];
  }
  kc2SegmentLine longOne(V(0, 0), V(1e6, 0));  // the tolerance scales with the length
  EXPECT_FALSE(longOne.inRange(V(1e6 - 5e-9, 0), false));
  EXPECT_TRUE(longOne.inRange(V(1e6 - 5e-8, 0), false));
}

TEST(SegmentLine, ClosestPointAgainstDenseSampling) {
  kc2SegmentLine slant(V(-1, 2), V(3, -1));
  for (V pt : {V(0, 0), V(5, 5), V(-4, 1), V(3.5, -2), V(1, 0.5)}) {
    double best = 1e300;
    for (int i = 0; i <= 20000; ++i) best = std::min(best, pt.distance(slant.segPoint(i / 20000.0)));
    EXPECT_NEAR(slant.distToPoint(pt), best, 2e-4);
    EXPECT_LE(slant.distToPoint(pt), best + 1e-12);
  }
  // A segment so short that the distances to its ends round alike: p2 wins the tie.
  kc2SegmentLine tiny(V(0, 0), V(1e-20, 0));
  EXPECT_EQ(tiny.closestPoint(V(-1, 0)), V(1e-20, 0));
  kc2SegmentLine s(V(0, 0), V(10, 0));  // validPoint tolerance 1e-13
  EXPECT_TRUE(s.validPoint(V(3, 5e-14), true) && s.validPoint(V(10 + 5e-14, 0), false));
  EXPECT_FALSE(s.validPoint(V(3, 2e-13), false) || s.validPoint(V(10.001, 0), false));
}

TEST(SegmentLine, Intersections) {
  kc2SegmentLine a(V(0, 0), V(4, 4));
  auto x = a.intersection(kc2SegmentLine(V(0, 4), V(4, 0)), true);
  ASSERT_EQ(x.size(), 1u);
  EXPECT_NEAR(x[0].distance(V(2, 2)), 0.0, 1e-12);
  EXPECT_TRUE(a.intersection(kc2SegmentLine(V(5, 0), V(6, -1)), false).empty());  // outside one
  EXPECT_TRUE(a.intersection(kc2SegmentLine(V(1, 1), V(6, 6)), false).empty());   // collinear
  // Shared end points and T-junctions count only without the flag.
  kc2SegmentLine b(V(0, 0), V(1, 0));
  for (const kc2SegmentLine& other :
       {kc2SegmentLine(V(1, 0), V(1, 1)), kc2SegmentLine(V(0.5, 0), V(0.5, 2))}) {
    EXPECT_EQ(b.intersection(other, false).size(), 1u);
    EXPECT_TRUE(b.intersection(other, true).empty());
  }
  // An infinite line has no range of its own.
  kc2SegmentLine s(V(0, 0), V(2, 0));
  EXPECT_EQ(s.intersection(kcFLine(V(1, 100), kcDegree(90)), true).size(), 1u);
  EXPECT_EQ(s.intersection(kcFLine(V(2, -5), kcDegree(90)), false).size(), 1u);
  EXPECT_TRUE(s.intersection(kcFLine(V(2, -5), kcDegree(90)), true).empty());
  EXPECT_TRUE(s.intersection(kcFLine(V(3, 0), kcDegree(90)), false).empty());
}

TEST(SegmentLine, EqualityAndTransforms) {
  kc2SegmentLine a(V(1, 2), V(3, 4));
  EXPECT_TRUE(a == kc2SegmentLine(V(1 + 8e-16, 2), V(3, 4 - 4e-16)));
  EXPECT_TRUE(a != kc2SegmentLine(V(1, 2), V(3, 4 + 5e-15)));
  EXPECT_FALSE(a == kc2SegmentLine(V(3, 4), V(1, 2)));  // direction matters
  kc2SegmentLine s(V(1, 0), V(2, 3));
  kc2SegmentLine m = kcXform<2>(kcMatrix<2>(2, 0, 0, -1), V(5, 6)) * s;
  EXPECT_TRUE(m.p1() == V(7, 6) && m.p2() == V(9, 3));
  kc2SegmentLine rs = kc2Rigid(kcDegree(90), V(1, 1)) * s;
  EXPECT_NEAR(rs.p2().distance(V(-2, 3)), 0.0, 1e-12);
  EXPECT_THROW((void)(kcXform<2>(kcMatrix<2>(1, 0, 0, 0), V()) * kc2SegmentLine(V(0, 0), V(0, 1))),
               kcShapesError::DegenerateShape);
}

TEST(SegmentLine, PrintWritesTheCoordinatesWithoutSeparator) {
  std::wostringstream out;
  out << kc2SegmentLine(V(1, 2), V(3, 4));
  EXPECT_EQ(out.str(), L"p1_=12\np2_=34\n\n");
}

TEST(SegmentLineArchive, FormRoundTripAndBadData) {
  const kc2SegmentLine s(V(1.5, -2), V(3, 1e-300));
  const Bytes bytes = dispc_test::doubles(0, {1.5, -2, 3, 1e-300});
  EXPECT_EQ(dispc_test::stored(s), bytes);
  EXPECT_EQ(dispc_test::stored(dispc_test::loaded(bytes, kc2SegmentLine(V(5, 6), V(7, 8)))), bytes);
  Bytes v1 = bytes;
  v1[0] = 1;
  dispc_test::expectUnknownVersion(v1, s, "dispc/wrfm/lineseg", 105);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.end() - 1), s);
}

}  // namespace
