// Intersections of wireframe segments: the cases an SMD outline meets (shared
// vertices at small angles, short edges, collinear overlaps, arcs split at a
// vertex, small roundings beside large arcs), and property tests against an
// exact reference for lines and a long double one for circles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <optional>
#include <random>
#include <vector>

#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/lineseg.h"
#include "dispc/wrfm/predicates_p.h"

namespace {

using V = kcVector<2>;
using L = kc2SegmentLine;
using A = kc2SegmentArc;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kPerDegree = std::numbers::pi / 180;

kcDegree deg(double d) { return kcDegree(d); }

// --- reproducers ---

TEST(SegmentIntersection, CollinearOverlapHasNoCrossingPoint) {
  const L a(V(0, 0), V(1, 1));
  for (const L& b : {L(V(1.5, 1.5), V(0.25, 0.25)), L(V(0.25, 0.25), V(0.5, 0.5)), L(V(1, 1), V(0, 0)),
                     L(V(-1, 3), V(0.5, -1.5)) /* slope -3, through both */}) {
    const bool collinear = b.p1().x() == b.p1().y();
    EXPECT_TRUE(a.intersection(b, false).size() == (collinear ? 0u : 1u));
    EXPECT_EQ(a.overlaps(b), collinear);
  }
  // Steep, not axis-aligned, exactly collinear: overlapping, touching end to end, apart.
  const L steep(V(0, 0), V(1, 3));
  EXPECT_TRUE(steep.intersection(L(V(1.5, 4.5), V(0.25, 0.75)), false).empty());
  EXPECT_TRUE(steep.overlaps(L(V(1.5, 4.5), V(0.25, 0.75))));
  const auto touch = steep.intersection(L(V(1, 3), V(2, 6)), false);
  ASSERT_EQ(touch.size(), 1u);
  EXPECT_EQ(touch[0], V(1, 3));
  EXPECT_TRUE(steep.intersection(L(V(1, 3), V(2, 6)), true).empty());
  EXPECT_FALSE(steep.overlaps(L(V(1, 3), V(2, 6))));
  EXPECT_TRUE(steep.intersection(L(V(2, 6), V(3, 9)), false).empty());
  EXPECT_FALSE(steep.overlaps(L(V(2, 6), V(3, 9))));
}

TEST(SegmentIntersection, SharedEndPointsAtSmallAnglesAndOnShortSegments) {
  const L a(V(0, 0), V(0.1, 0.3));
  const L b(V(0.1, 0.3), V(0.05009, 0.14997));
  const auto shared = a.intersection(b, false);
  ASSERT_EQ(shared.size(), 1u);
  EXPECT_EQ(shared[0], V(0.1, 0.3));
  EXPECT_TRUE(a.intersection(b, true).empty());
  // Pad edges about a micrometre long, far from the origin, meeting at a
  // vertex at a hundredth of a degree, and as a T (offsets are multiples of
  // 2^-20, so every point here is exact).
  const double u = 1.0 / (1 << 20);
  const V vertex(9876.5, -4321.25);
  const L edge(vertex, vertex + V(2 * u, 4 * u));
  const L next(vertex + V(1024 * u, 2049 * u), vertex);
  EXPECT_EQ(edge.intersection(next, false), std::vector<V>{vertex});
  EXPECT_TRUE(edge.intersection(next, true).empty());
  const L tee(vertex + V(u, 2 * u), vertex + V(3 * u, -u));
  EXPECT_EQ(edge.intersection(tee, false), std::vector<V>{vertex + V(u, 2 * u)});
  EXPECT_TRUE(edge.intersection(tee, true).empty());
}

TEST(SegmentIntersection, ArcsOnOneCircleMeetAtTheirSharedEnds) {
  const A first(V(), 1, deg(140), deg(0.3));
  const A second(V(), 1, deg(140.3), deg(0.3));
  EXPECT_EQ(first.intersection(second, false).size(), 1u);
  EXPECT_TRUE(first.intersection(second, true).empty());
  EXPECT_FALSE(first.overlaps(second));
  const A big(V(), 1, deg(10), deg(300));
  EXPECT_EQ(big.intersection(A(V(), 1, deg(310), deg(60)), false).size(), 2u);  // closing the circle
  EXPECT_EQ(big.intersection(A(V(), 1, deg(310), deg(40)), false).size(), 1u);
  EXPECT_FALSE(big.overlaps(A(V(), 1, deg(310), deg(60))));
  EXPECT_TRUE(big.overlaps(A(V(), 1, deg(300), deg(20))));
  EXPECT_TRUE(big.overlaps(A(V(), 1, deg(100), deg(-5))));  // inside, travelled backwards
  EXPECT_TRUE(big.overlaps(kcXform<2>(kcMatrix<2>(1, 0, 0, -1), V()) * A(V(), 1, deg(-50), deg(-5))));
  EXPECT_FALSE(big.overlaps(A(V(), 1.5, deg(100), deg(5))));
  // An arc split at a vertex, short sweep, far out.
  const A left(V(5000, -3000), 2.5, deg(-10), deg(0.01));
  const A right(left.p2(), left.p2() + V(1e-4, 3e-4), deg(-0.02));
  EXPECT_FALSE(left.intersection(right, false).empty());
  EXPECT_TRUE(left.intersection(right, true).empty());
}

TEST(SegmentIntersection, ArcAndLineSharingAVertex) {
  const A arc(V(0, 0), V(0.1, 0.3), deg(0.5));
  const L line(V(0.1, 0.3), V(0.2, 0.6000001));
  EXPECT_EQ(arc.intersection(line, false), std::vector<V>{V(0.1, 0.3)});
  EXPECT_TRUE(arc.intersection(line, true).empty());
  // The chord shares both ends; a line through the circle still crosses it.
  const A half(V(), 1, deg(0), deg(180));
  EXPECT_EQ(half.intersection(L(half.p1(), half.p2()), false).size(), 2u);
  EXPECT_TRUE(half.intersection(L(half.p1(), half.p2()), true).empty());
  EXPECT_EQ(half.intersection(L(half.p1(), V(-1, 1)), true).size(), 1u);
}

TEST(SegmentIntersection, SmallCircleAgainstAHugeOneStaysOnBoth) {
  for (double big : {1e4, 1e5, 1e7}) {
    const A small(V(), 1, deg(0), deg(360));
    const A huge(V(big, 0), big, deg(0), deg(360));
    for (const auto& points : {small.intersection(huge, false), huge.intersection(small, false)}) {
      ASSERT_EQ(points.size(), 2u) << big;
      for (const V& p : points) {
        EXPECT_NEAR(p.len(), 1.0, 4 * kEps) << big;
        EXPECT_NEAR(p.distance(V(big, 0)), big, 4 * kEps * big) << big;
      }
    }
  }
}

TEST(SegmentIntersection, AWholeTurnBetweenTwoPointsIsRefused) {
  for (double span : {360.0, -360.0})
    EXPECT_THROW(A(V(0, 0), V(2, 0), deg(span)), kcShapesError::DegenerateShape) << span;
}

// --- lines against an exact reference ---

// Coordinates are multiples of 2^-20 below 2^14 in magnitude, so that they
// are exact both as doubles and as 64-bit integers of that unit, and every
// orientation is exact in 128 bits.
constexpr double kUnit = 1.0 / (1 << 20);
using Int = std::int64_t;
using Wide = __int128;

struct IntPoint {
  Int x, y;
  [[nodiscard]] V v() const { return V(static_cast<double>(x) * kUnit, static_cast<double>(y) * kUnit); }
};

int orient(const IntPoint& a, const IntPoint& b, const IntPoint& c) {
  const Wide d = Wide(b.x - a.x) * (c.y - a.y) - Wide(b.y - a.y) * (c.x - a.x);
  return (d > 0) - (d < 0);
}

// Distance from p to the segment ab, in long double.
long double distToSegment(const V& p, const V& a, const V& b) {
  const long double dx = (long double)b.x() - a.x(), dy = (long double)b.y() - a.y();
  long double t =
      (((long double)p.x() - a.x()) * dx + ((long double)p.y() - a.y()) * dy) / (dx * dx + dy * dy);
  t = std::clamp(t, 0.0L, 1.0L);
  return std::hypot((long double)a.x() + t * dx - p.x(), (long double)a.y() + t * dy - p.y());
}

struct LineCase {
  IntPoint a1, a2, b1, b2;
};

class LineCases {
 public:
  explicit LineCases(unsigned seed) : rng_(seed) {}

  LineCase next() {
    const Int far = Int{10'000} << 20;
    switch (kind_++ % 6) {
      case 0:  // anywhere
        return {point(far), point(far), point(far), point(far)};
      case 1: {  // collinear, on a lattice line of any slope
        const IntPoint p = point(far / 2);
        const IntPoint d{small(1 << 12), small(1 << 12)};
        auto at = [&](Int k) { return IntPoint{p.x + k * d.x, p.y + k * d.y}; };
        return {at(small(8)), at(small(8) + 9), at(small(12)), at(small(12))};
      }
      case 2: {  // a shared vertex, edges down to a unit (about 1e-6) long
        const IntPoint v = point(far);
        return {point(v, 1 + std::llabs(small(4))), v, v, point(v, 1 + std::llabs(small(1 << 10)))};
      }
      case 3: {  // nearly parallel, a unit apart
        const IntPoint p = point(far / 2), d{small(1 << 16), small(1 << 16)};
        const IntPoint q{p.x + small(2), p.y + small(2)};
        return {p, {p.x + d.x, p.y + d.y}, q, {q.x + d.x + small(1), q.y + d.y + small(1)}};
      }
      case 4: {  // an end point on the other segment: a T
        const IntPoint p = point(far / 2), d{small(1 << 10), small(1 << 10)};
        const IntPoint mid{p.x + d.x, p.y + d.y};
        return {p, {p.x + 2 * d.x, p.y + 2 * d.y}, mid, point(mid, 1 + std::llabs(small(1 << 10)))};
      }
      default: {  // short segments crossing or nearly touching
        const IntPoint c = point(far);
        return {point(c, 4), point(c, 4), point(c, 4), point(c, 4)};
      }
    }
  }

 private:
  Int small(Int range) { return std::uniform_int_distribution<Int>(-range, range)(rng_); }
  IntPoint point(Int range) { return {small(range), small(range)}; }
  IntPoint point(const IntPoint& around, Int range) {
    return {around.x + small(range), around.y + small(range)};
  }

  std::mt19937_64 rng_;
  unsigned kind_ = 0;
};

// Classifies a case exactly and checks both flags and overlaps().
void checkAgainstExact(const LineCase& c, double& worstUlps) {
  if ((c.a1.x == c.a2.x && c.a1.y == c.a2.y) || (c.b1.x == c.b2.x && c.b1.y == c.b2.y)) return;
  const L a(c.a1.v(), c.a2.v()), b(c.b1.v(), c.b2.v());
  const int o1 = orient(c.a1, c.a2, c.b1), o2 = orient(c.a1, c.a2, c.b2);
  const int o3 = orient(c.b1, c.b2, c.a1), o4 = orient(c.b1, c.b2, c.a2);
  const auto loose = a.intersection(b, false);
  const auto strict = a.intersection(b, true);
  if (o1 == 0 && o2 == 0) {
    // Along the dominant axis of a.
    const bool useX = std::llabs(c.a2.x - c.a1.x) >= std::llabs(c.a2.y - c.a1.y);
    auto k = [&](const IntPoint& p) { return useX ? p.x : p.y; };
    const Int lo = std::max(std::min(k(c.a1), k(c.a2)), std::min(k(c.b1), k(c.b2)));
    const Int hi = std::min(std::max(k(c.a1), k(c.a2)), std::max(k(c.b1), k(c.b2)));
    EXPECT_EQ(a.overlaps(b), lo < hi);
    EXPECT_EQ(loose.size(), lo == hi ? 1u : 0u);
    EXPECT_TRUE(strict.empty());
    return;
  }
  EXPECT_FALSE(a.overlaps(b));
  if (o1 * o2 > 0 || o3 * o4 > 0) {
    EXPECT_TRUE(loose.empty());
    EXPECT_TRUE(strict.empty());
    return;
  }
  ASSERT_EQ(loose.size(), 1u);
  const std::optional<IntPoint> end = o1 == 0   ? std::optional(c.b1)
                                      : o2 == 0 ? std::optional(c.b2)
                                      : o3 == 0 ? std::optional(c.a1)
                                      : o4 == 0 ? std::optional(c.a2)
                                                : std::nullopt;
  if (end) {
    EXPECT_EQ(loose[0], end->v());
    EXPECT_TRUE(strict.empty());
    return;
  }
  const double m =
      std::max({kfMagnitude(a.p1()), kfMagnitude(a.p2()), kfMagnitude(b.p1()), kfMagnitude(b.p2())});
  const long double off =
      std::max(distToSegment(loose[0], a.p1(), a.p2()), distToSegment(loose[0], b.p1(), b.p2()));
  worstUlps = std::max(worstUlps, static_cast<double>(off / (kEps * m)));
  // A proper crossing with the flag counts unless it sits within the range
  // tolerance of an end; the band around that tolerance is left undecided.
  auto along = [](const IntPoint& p, const IntPoint& q, const IntPoint& r, const IntPoint& s) {
    const Wide num = Wide(r.x - p.x) * (s.y - r.y) - Wide(r.y - p.y) * (s.x - r.x);
    const Wide den = Wide(q.x - p.x) * (s.y - r.y) - Wide(q.y - p.y) * (s.x - r.x);
    const long double t = static_cast<long double>(num) / static_cast<long double>(den);
    return std::min(t, 1.0L - t);
  };
  const long double nearest = std::min(along(c.a1, c.a2, c.b1, c.b2), along(c.b1, c.b2, c.a1, c.a2));
  if (nearest > 1e-13L) {
    EXPECT_EQ(strict.size(), 1u);
  } else if (nearest < 1e-15L) {
    EXPECT_TRUE(strict.empty());
  }
}

// Crossings lie within 8 units in the last place of the largest coordinate
// from both segments, as the header states.
TEST(SegmentIntersectionProperty, LinesAgreeWithExactArithmetic) {
  LineCases cases(20261124);
  double worstUlps = 0.0;
  for (int i = 0; i < 120'000; ++i) {
    checkAgainstExact(cases.next(), worstUlps);
    if (::testing::Test::HasFailure()) break;
  }
  EXPECT_LE(worstUlps, 8.0);
}

// --- circles against a long double reference ---

struct Residual {
  long double worst = 0;
  void add(const V& p, const V& c, double r, double scale) {
    const long double d = std::hypot((long double)p.x() - c.x(), (long double)p.y() - c.y()) - r;
    worst = std::max(worst, std::fabs(d) / (kEps * scale));
  }
};

// Points returned lie on both circles within 16 units in the last place of
// the largest coordinate involved; counts agree with the reference wherever
// the case is not within a hair of tangency or of an arc's end.
TEST(SegmentIntersectionProperty, CirclesAgreeWithALongDoubleReference) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  Residual residual;
  int decided = 0;
  for (int i = 0; i < 40'000; ++i) {
    const double scale = std::pow(10.0, 4 * std::fabs(unit(rng)));  // coordinates up to 1e4
    const V c1(scale * unit(rng), scale * unit(rng));
    const double r1 = scale * std::pow(10.0, -5 * std::fabs(unit(rng)));
    const double r2 = scale * std::pow(10.0, -5 * std::fabs(unit(rng)));
    // The other centre where the circles mostly meet.
    const double dist = std::fabs(r1 - r2) + (r1 + r2 - std::fabs(r1 - r2)) * (0.5 + 0.5 * unit(rng));
    const double dir = 180 * unit(rng);
    const V c2 = c1 + dist * V(std::cos(dir * kPerDegree), std::sin(dir * kPerDegree));
    const A a(c1, r1, deg(180 * unit(rng)), deg(360 * unit(rng)));
    const A b(c2, r2, deg(180 * unit(rng)), deg(360 * unit(rng)));
    const auto points = a.intersection(b, false);
    const double m = std::max({kfMagnitude(c1), kfMagnitude(c2), r1, r2});
    for (const V& p : points) {
      residual.add(p, c1, r1, m);
      residual.add(p, c2, r2, m);
    }
    // Reference crossings of the two circles, in long double.
    const long double dx = (long double)c2.x() - c1.x(), dy = (long double)c2.y() - c1.y();
    const long double d = std::hypot(dx, dy);
    const long double along = (d * d + (long double)r1 * r1 - (long double)r2 * r2) / (2 * d);
    const long double h2 = (long double)r1 * r1 - along * along;
    if (h2 < 1e-6L * r1 * r1) continue;  // near tangency: undecided
    const long double h = std::sqrt(h2);
    bool undecided = false;
    std::size_t expected = 0;
    for (int side : {-1, 1}) {
      const long double px = c1.x() + (along * dx - side * h * dy) / d;
      const long double py = c1.y() + (along * dy + side * h * dx) / d;
      auto inside = [&](const A& arc, long double cx, long double cy) {
        const long double t = std::atan2(py - cy, px - cx) * 180 / std::numbers::pi_v<long double>;
        const long double s = arc.startAngle_().toDouble(), span = arc.angleSpan_().toDouble();
        long double off = span >= 0 ? t - s : s - t;
        off = std::fmod(std::fmod(off, 360.0L) + 360.0L, 360.0L);
        const long double limit = std::fabs(span);
        if (std::fabs(off - limit) < 1e-6L || off < 1e-6L || off > 360 - 1e-6L) undecided = true;
        return off <= limit;
      };
      if (inside(a, c1.x(), c1.y()) && inside(b, c2.x(), c2.y())) ++expected;
    }
    if (undecided) continue;
    ++decided;
    EXPECT_EQ(points.size(), expected) << i;
    if (::testing::Test::HasFailure()) break;
  }
  EXPECT_GT(decided, 30'000);
  EXPECT_LE(residual.worst, 16.0L);
}

TEST(SegmentIntersectionProperty, ArcsAndLinesAgreeWithALongDoubleReference) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  Residual residual;
  for (int i = 0; i < 40'000; ++i) {
    const double scale = std::pow(10.0, 4 * std::fabs(unit(rng)));
    const V c(scale * unit(rng), scale * unit(rng));
    const double r = scale * std::pow(10.0, -5 * std::fabs(unit(rng)));
    const A arc(c, r, deg(180 * unit(rng)), deg(360 * unit(rng)));
    // A line through the circle, its ends beyond it or inside it.
    const V through = c + r * 0.99 * V(unit(rng), unit(rng)) / std::sqrt(2.0);
    const V d(unit(rng), unit(rng));
    const L line(through - 2 * r * unit(rng) * d, through + 2 * r * unit(rng) * d);
    const double m = std::max({kfMagnitude(c), r, kfMagnitude(line.p1()), kfMagnitude(line.p2())});
    for (const V& p : arc.intersection(line, false)) {
      residual.add(p, c, r, m);
      EXPECT_LE(distToSegment(p, line.p1(), line.p2()), 64 * kEps * m);
    }
  }
  EXPECT_LE(residual.worst, 16.0L);
}

}  // namespace
