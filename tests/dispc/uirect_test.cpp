#include "dispc/uirect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using Pair = kcUIRect::Pair;
using dispc_test::Bytes;
using Pel = std::pair<long, long>;

void expectRect(const kcUIRect& r, long left, long top, long width, long height) {
  EXPECT_EQ(r.left(), left);
  EXPECT_EQ(r.top(), top);
  EXPECT_EQ(r.width(), width);
  EXPECT_EQ(r.height(), height);
}

kcUIRect movedNull(long x, long y) {
  kcUIRect r;
  r += Pair(x, y);
  return r;
}

std::set<Pel> pels(const kcUIRect& r) {
  std::set<Pel> out;
  for (long y = r.top(); y < r.bottom(); ++y)
    for (long x = r.left(); x < r.right(); ++x) out.insert({x, y});
  return out;
}

TEST(UIRect, EmptySizesCollapseToTheNullRectangle) {
  kcUIRect s(1, 2, 3, 4);
  s.sz(Pair(5, 0));
  for (const kcUIRect& r :
       {kcUIRect(5, 5, 0, 10), kcUIRect(5, 5, 10, -1), kcUIRect(Pair(7, 8), Pair(4, 0)), s})
    expectRect(r, 0, 0, 0, 0);
  const kcUIRect r(2, 3, 10, 20);
  EXPECT_TRUE(r.ur() == Pair(12, 3) && r.ll() == Pair(2, 23) && r.lr() == Pair(12, 23));
  EXPECT_TRUE(r.within(Pair(11, 22)) && !r.within(Pair(12, 22)) && !r.within(Pair(11, 23)));
}

TEST(UIRect, NullRectangleMoves) {
  expectRect(kcUIRect() + Pair(3, 4), 0, 0, 0, 0);
  kcUIRect inPlace = movedNull(3, 4);
  expectRect(inPlace, 3, 4, 0, 0);
  EXPECT_TRUE(inPlace.isNull());
  expectRect(inPlace + Pair(1, 1), 0, 0, 0, 0);
  kcUIRect null;
  null.ul(Pair(3, 3));
  expectRect(null, 0, 0, 0, 0);
  // In place, &= keeps a null target and copies a null argument.
  inPlace &= kcUIRect(0, 0, 50, 50);
  expectRect(inPlace, 3, 4, 0, 0);
  kcUIRect valid(1, 1, 4, 4);
  valid &= movedNull(7, 8);
  expectRect(valid, 7, 8, 0, 0);
}

// Containment, intersection and union against the pel sets of many small rectangles.
TEST(UIRect, SetOperationsAgreeWithPelSets) {
  std::vector<kcUIRect> rects = {kcUIRect(), movedNull(2, 3)};
  for (long l : {-3L, 0L, 2L})
    for (long t : {-1L, 1L})
      for (long w : {1L, 3L, 6L})
        for (long h : {1L, 4L}) rects.emplace_back(l, t, w, h);
  for (const kcUIRect& a : rects) {
    const std::set<Pel> pa = pels(a);
    for (long y = -5; y < 10; ++y)
      for (long x = -5; x < 10; ++x) ASSERT_EQ(a.within(Pair(x, y)), pa.contains({x, y}));
    for (const kcUIRect& b : rects) {
      SCOPED_TRACE(testing::Message() << a.left() << "," << a.top() << " " << b.left() << "," << b.top());
      const std::set<Pel> pb = pels(b);
      if (!b.isNull()) {
        EXPECT_EQ(a.within(b), std::includes(pa.begin(), pa.end(), pb.begin(), pb.end()));
      }
      std::set<Pel> common;
      if (!a.isNull() && !b.isNull())
        std::set_intersection(pa.begin(), pa.end(), pb.begin(), pb.end(),
                              std::inserter(common, common.end()));
      const kcUIRect both = a & b;
      EXPECT_EQ(pels(both), common);
      EXPECT_TRUE(!common.empty() || both == kcUIRect());
      EXPECT_EQ(a.nullIntersection(b), common.empty());
      kcUIRect u = a | b, inPlace = a;
      inPlace |= b;
      EXPECT_EQ(inPlace, u);
      if (a.isNull() || b.isNull()) {
        EXPECT_EQ(u, a.isNull() ? b : a);
        continue;
      }
      long x0 = 99, y0 = 99, x1 = -99, y1 = -99;  // the extreme pels of both
      for (const std::set<Pel>& set : {pa, pb})
        for (auto [x, y] : set)
          x0 = std::min(x0, x), y0 = std::min(y0, y), x1 = std::max(x1, x), y1 = std::max(y1, y);
      expectRect(u, x0, y0, x1 - x0 + 1, y1 - y0 + 1);
    }
  }
}

TEST(UIRectArchive, FormRoundTripAndBadRecords) {
  const Bytes bytes = {0, 0xfe, 0xff, 0xff, 0xff, 4, 3, 2, 1, 5, 0, 0, 0, 0x58, 2, 0, 0};
  EXPECT_EQ(dispc_test::stored(kcUIRect(-2, 0x01020304, 5, 600)), bytes);
  EXPECT_EQ(dispc_test::loaded(bytes, kcUIRect()), kcUIRect(-2, 0x01020304, 5, 600));
  // A moved null rectangle comes back with its corner.
  expectRect(dispc_test::loaded(dispc_test::stored(movedNull(9, -9)), kcUIRect(1, 1, 1, 1)), 9, -9, 0, 0);
  Bytes bad = bytes;
  bad[0] = 0xff;
  dispc_test::expectUnknownVersion(bad, kcUIRect(5, 6, 7, 8), "dispc/uirect", 156);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.end() - 1), kcUIRect(5, 6, 7, 8));
}

}  // namespace
