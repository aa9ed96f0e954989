#include "dispc/uirect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace {

using Pair = kcUIRect::Pair;
using Bytes = std::vector<std::uint8_t>;
using Pel = std::pair<long, long>;

void expectRect(const kcUIRect& r, long left, long top, long width, long height) {
  EXPECT_EQ(r.left(), left);
  EXPECT_EQ(r.top(), top);
  EXPECT_EQ(r.width(), width);
  EXPECT_EQ(r.height(), height);
}

// The pels of a rectangle, listed one by one.
std::set<Pel> pels(const kcUIRect& r) {
  std::set<Pel> out;
  for (long y = r.top(); y < r.bottom(); ++y)
    for (long x = r.left(); x < r.right(); ++x) out.insert({x, y});
  return out;
}

// A spread of small rectangles, null ones included, for the set tests.
std::vector<kcUIRect> sampleRects() {
  std::vector<kcUIRect> out = {kcUIRect()};
  for (long l : {-3L, 0L, 2L})
    for (long t : {-1L, 1L})
      for (long w : {1L, 3L, 6L})
        for (long h : {1L, 4L}) out.emplace_back(l, t, w, h);
  kcUIRect movedNull;
  movedNull += Pair(2, 3);
  out.push_back(movedNull);
  return out;
}

// --- construction and normalisation ---

TEST(UIRect, EmptySizesCollapseToTheNullRectangle) {
  const kcUIRect rows[] = {kcUIRect(5, 5, 0, 10),
                           kcUIRect(5, 5, 10, -1),
                           kcUIRect(5, 5, -3, -3),
                           kcUIRect(Pair(7, 8), Pair(0, 4)),
                           kcUIRect(Pair(7, 8), Pair(4, 0)),
                           kcUIRect()};
  for (const kcUIRect& r : rows) {
    expectRect(r, 0, 0, 0, 0);
    EXPECT_TRUE(r.isNull());
    EXPECT_EQ(r, kcUIRect());
  }
  expectRect(kcUIRect(Pair(-7, 8), Pair(1, 4)), -7, 8, 1, 4);
}

TEST(UIRect, CornersAreHalfOpen) {
  const kcUIRect r(2, 3, 10, 20);
  EXPECT_EQ(r.right(), 12);
  EXPECT_EQ(r.bottom(), 23);
  EXPECT_EQ(r.ul(), Pair(2, 3));
  EXPECT_EQ(r.ur(), Pair(12, 3));
  EXPECT_EQ(r.ll(), Pair(2, 23));
  EXPECT_EQ(r.lr(), Pair(12, 23));
  EXPECT_EQ(r.sz(), Pair(10, 20));
}

TEST(UIRect, SizeSetterNormalisesCornerSetterSkipsNull) {
  kcUIRect r(1, 2, 3, 4);
  r.sz(Pair(5, 6));
  expectRect(r, 1, 2, 5, 6);
  r.ul(Pair(-10, 20));
  expectRect(r, -10, 20, 5, 6);
  r.sz(Pair(5, 0));
  expectRect(r, 0, 0, 0, 0);

  kcUIRect null;
  null.ul(Pair(3, 3));
  expectRect(null, 0, 0, 0, 0);
}

// --- moving ---

TEST(UIRect, MovingWithPlusNormalisesMovingInPlaceDoesNot) {
  const kcUIRect null;
  expectRect(null + Pair(3, 4), 0, 0, 0, 0);
  expectRect(null - Pair(3, 4), 0, 0, 0, 0);

  kcUIRect inPlace;
  inPlace += Pair(3, 4);
  expectRect(inPlace, 3, 4, 0, 0);
  EXPECT_TRUE(inPlace.isNull());
  inPlace -= Pair(5, 1);
  expectRect(inPlace, -2, 3, 0, 0);
  // + of a moved null rectangle brings it back to the origin.
  expectRect(inPlace + Pair(1, 1), 0, 0, 0, 0);

  const kcUIRect r(1, 2, 3, 4);
  expectRect(r + Pair(-5, 10), -4, 12, 3, 4);
  expectRect(r - Pair(-5, 10), 6, -8, 3, 4);
  kcUIRect moved = r;
  moved += Pair(-5, 10);
  EXPECT_EQ(moved, r + Pair(-5, 10));
  moved -= Pair(-5, 10);
  EXPECT_EQ(moved, r);
}

// --- containment ---

TEST(UIRect, WithinAPelIsHalfOpen) {
  const kcUIRect r(0, 0, 10, 10);
  EXPECT_TRUE(r.within(Pair(9, 9)));
  EXPECT_FALSE(r.within(Pair(10, 10)));

  for (const kcUIRect& a : sampleRects()) {
    const std::set<Pel> inside = pels(a);
    for (long y = -5; y < 10; ++y)
      for (long x = -5; x < 10; ++x)
        EXPECT_EQ(a.within(Pair(x, y)), inside.contains({x, y})) << x << "," << y;
  }
}

TEST(UIRect, WithinARectangleTestsItsFirstAndLastPel) {
  const kcUIRect r(0, 0, 10, 10);
  EXPECT_TRUE(r.within(kcUIRect(0, 0, 10, 10)));
  // The null rectangle's "last pel" is (-1, -1).
  EXPECT_FALSE(r.within(kcUIRect()));
  EXPECT_TRUE(kcUIRect(-5, -5, 10, 10).within(kcUIRect()));

  for (const kcUIRect& a : sampleRects())
    for (const kcUIRect& b : sampleRects()) {
      if (b.isNull()) continue;
      const std::set<Pel> outer = pels(a);
      const std::set<Pel> inner = pels(b);
      const bool subset = std::includes(outer.begin(), outer.end(), inner.begin(), inner.end());
      EXPECT_EQ(a.within(b), subset);
    }
}

// --- intersection and union ---

TEST(UIRect, IntersectionIsTheCommonPels) {
  for (const kcUIRect& a : sampleRects())
    for (const kcUIRect& b : sampleRects()) {
      const kcUIRect both = a & b;
      std::set<Pel> common;
      if (!a.isNull() && !b.isNull()) {
        const std::set<Pel> pa = pels(a);
        const std::set<Pel> pb = pels(b);
        std::set_intersection(pa.begin(), pa.end(), pb.begin(), pb.end(),
                              std::inserter(common, common.end()));
      }
      EXPECT_EQ(pels(both), common);
      if (common.empty()) {
        EXPECT_EQ(both, kcUIRect());
      }
      EXPECT_EQ(a.nullIntersection(b), common.empty());
      EXPECT_EQ(b & a, both);
    }
}

TEST(UIRect, TouchingRectanglesShareNoPel) {
  const kcUIRect a(0, 0, 5, 5);
  const kcUIRect b(5, 0, 5, 5);
  EXPECT_TRUE(a.nullIntersection(b));
  EXPECT_EQ(a & b, kcUIRect());
  expectRect(a | b, 0, 0, 10, 5);
  EXPECT_FALSE(a.nullIntersection(kcUIRect(4, 4, 5, 5)));
  expectRect(a & kcUIRect(4, 4, 5, 5), 4, 4, 1, 1);
  EXPECT_TRUE(a.nullIntersection(kcUIRect()));
  EXPECT_TRUE(kcUIRect().nullIntersection(a));
}

TEST(UIRect, IntersectInPlaceKeepsANullTargetAndCopiesANullArgument) {
  kcUIRect movedNull;
  movedNull += Pair(7, 8);

  kcUIRect target = movedNull;
  target &= kcUIRect(0, 0, 50, 50);
  expectRect(target, 7, 8, 0, 0);

  kcUIRect valid(1, 1, 4, 4);
  valid &= movedNull;
  expectRect(valid, 7, 8, 0, 0);

  kcUIRect overlap(0, 0, 10, 10);
  overlap &= kcUIRect(5, -5, 10, 10);
  expectRect(overlap, 5, 0, 5, 5);
  kcUIRect apart(0, 0, 10, 10);
  apart &= kcUIRect(20, 20, 1, 1);
  expectRect(apart, 0, 0, 0, 0);
}

TEST(UIRect, UnionIsTheBoundingBoxAndIgnoresNull) {
  for (const kcUIRect& a : sampleRects())
    for (const kcUIRect& b : sampleRects()) {
      const kcUIRect u = a | b;
      if (a.isNull()) {
        EXPECT_EQ(u, b);
        continue;
      }
      if (b.isNull()) {
        EXPECT_EQ(u, a);
        continue;
      }
      // The bounding box of both pel sets, from their extreme pels.
      std::set<Pel> all = pels(a);
      const std::set<Pel> pb = pels(b);
      all.insert(pb.begin(), pb.end());
      auto [minX, maxX] = std::minmax_element(all.begin(), all.end());
      auto [minY, maxY] = std::minmax_element(all.begin(), all.end(),
                                              [](const Pel& p, const Pel& q) { return p.second < q.second; });
      expectRect(u, minX->first, minY->second, maxX->first - minX->first + 1,
                 maxY->second - minY->second + 1);

      kcUIRect inPlace = a;
      inPlace |= b;
      EXPECT_EQ(inPlace, u);
    }

  kcUIRect movedNull;
  movedNull += Pair(7, 8);
  kcUIRect target = movedNull;
  target |= kcUIRect(1, 2, 3, 4);
  expectRect(target, 1, 2, 3, 4);
  kcUIRect valid(1, 2, 3, 4);
  valid |= movedNull;
  expectRect(valid, 1, 2, 3, 4);
  EXPECT_EQ(movedNull | movedNull, movedNull);
}

// --- comparison and archive ---

TEST(UIRect, EqualityComparesAllFourFields) {
  const kcUIRect r(1, 2, 3, 4);
  for (const kcUIRect& other :
       {kcUIRect(0, 2, 3, 4), kcUIRect(1, 0, 3, 4), kcUIRect(1, 2, 1, 4), kcUIRect(1, 2, 3, 1)})
    EXPECT_TRUE(r != other);
  EXPECT_TRUE(r == kcUIRect(1, 2, 3, 4));
}

TEST(UIRect, ArchiveFormIsVersionThenFourLongs) {
  kcUIRect r(-2, 0x01020304, 5, 600);
  kcMemArchive out;
  out || r;
  const Bytes expected = {0, 0xfe, 0xff, 0xff, 0xff, 4, 3, 2, 1, 5, 0, 0, 0, 0x58, 2, 0, 0};
  EXPECT_EQ(out.bytes(), expected);

  kcMemArchive in(out.bytes());
  kcUIRect loaded;
  in || loaded;
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(loaded, r);

  // A null rectangle moved in place comes back exactly, corner and all.
  kcUIRect movedNull;
  movedNull += Pair(9, -9);
  kcMemArchive out2;
  out2 || movedNull;
  kcMemArchive in2(out2.bytes());
  kcUIRect loaded2(1, 1, 1, 1);
  in2 || loaded2;
  expectRect(loaded2, 9, -9, 0, 0);
}

TEST(UIRect, BadArchiveRecordsLeaveTheTargetUnchanged) {
  kcUIRect r(1, 2, 3, 4);
  kcMemArchive out;
  out || r;
  Bytes badVersion = out.bytes();
  badVersion[0] = 0xff;  // -1
  {
    kcMemArchive in(badVersion);
    kcUIRect target(5, 6, 7, 8);
    try {
      in || target;
      FAIL() << "no exception";
    } catch (const kcArchive::UnknownVersion& e) {
      EXPECT_EQ(e.file(), "dispc/uirect");
      EXPECT_EQ(e.line(), 156);
    }
    expectRect(target, 5, 6, 7, 8);
  }
  {
    kcMemArchive in(Bytes(out.bytes().begin(), out.bytes().end() - 1));
    kcUIRect target(5, 6, 7, 8);
    EXPECT_THROW(in || target, kcArchive::Corrupt);
    expectRect(target, 5, 6, 7, 8);
  }
}

}  // namespace
