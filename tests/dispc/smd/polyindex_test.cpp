#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "dispc/smd/poly.h"
#include "dispc/smd/polyindex_p.h"
#include "dispc/smd/polyprivate.h"
#include "tests/dispc/smd/outlines.h"

namespace {

using V = kcVector<2>;
using P = kcSMDGDPolyPrivate;
using Vertex = kcSMDGDPolyVertex;
using Index = kcSMDGDPolyIndex_;

// A poly taken as it is, roundings computed, nothing validated; its own
// crossing tests are the truth the index must not miss.
struct Outline : kcSMDGDPoly {
  Outline(const std::vector<Vertex>& vs, bool open) {
    P::assignVertices_(*this, vs, open);
    for (int v = 0; v < static_cast<int>(vs.size()); ++v) {
      try {
        computeVertexRounding_(v);
      } catch (const kcException&) {
      }
    }
  }

  // Whether the rounded segment s (or the rounding of vertex s) really meets
  // a piece of element j; a piece that cannot be built counts as meeting.
  bool meets(bool ofSegment, int s, int j) const {
    try {
      return ofSegment ? segmentMeetsElement_(s, j) : vertexIsRounded_(s) && roundingMeetsElement_(s, j);
    } catch (const kcException&) {
      return true;
    }
  }
  bool elementsMeet(int j, int k) const { return meets(true, k, j) || meets(false, k, j); }
  using kcSMDGDPoly::segmentExists_;
  using kcSMDGDPoly::vertexIsRounded_;
};

std::vector<Vertex> star(int n) {
  std::vector<Vertex> vs;
  for (int i = 0; i < n; ++i) {
    const double a = 2 * std::numbers::pi * i / n;
    const double r = i % 2 == 1 ? 70.0 : 100.0;
    vs.emplace_back(V(r * std::cos(a), r * std::sin(a)), 0.0, 0.5, 0.5, -1);
  }
  return vs;
}

TEST(SMDPolyIndex, QueriesAndPairsMissNothingThatMeets) {
  std::mt19937 rng(11);
  long meetings = 0;
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 33 + static_cast<int>(rng() % 90);
    const Outline poly(dispc_test::wobblyRing(rng, n), trial % 5 == 0);
    Index index;
    for (int s = 0; s < n; ++s)
      for (bool ofSegment : {true, false}) {
        if (ofSegment ? !poly.segmentExists_(s) : !poly.vertexIsRounded_(s)) continue;
        Index::Bound bound;
        if (!Index::pieceBound(poly, ofSegment, s, bound)) continue;
        const int upTo = static_cast<int>(rng() % n);
        const std::vector<int> found = index.near(poly, bound, upTo);
        ASSERT_TRUE(std::is_sorted(found.begin(), found.end()));
        for (int j = 0; j <= upTo; ++j)
          if (poly.meets(ofSegment, s, j)) {
            ++meetings;
            EXPECT_TRUE(std::binary_search(found.begin(), found.end(), j))
                << "trial " << trial << " piece " << s << " element " << j;
          }
      }
    std::set<std::pair<int, int>> visited;
    int limit = n;
    index.pairs(poly, limit, [&](int j, int k) {
      ASSERT_LT(j, k);
      EXPECT_TRUE(visited.insert({j, k}).second) << "pair visited twice";
    });
    for (int k = 1; k < n; ++k)
      for (int j = 0; j < k; ++j)
        if (poly.elementsMeet(j, k)) {
          // Neighbouring straight segments are the one pair left out.
          const bool neighbourLines = k == j + 1 && !poly.vertexIsRounded_(j) && !poly.vertexIsRounded_(k) &&
                                      !P::isArcSegment_(poly, k) && poly.segmentExists_(j) &&
                                      !P::isArcSegment_(poly, j);
          if (!neighbourLines) {
            EXPECT_TRUE(visited.count({j, k})) << "trial " << trial << " pair " << j << "," << k;
          }
        }
  }
  EXPECT_GT(meetings, 1000);
}

TEST(SMDPolyIndex, PairsStopBelowALoweredLimit) {
  std::mt19937 rng(3);
  const Outline poly(dispc_test::wobblyRing(rng, 200), false);
  Index index;
  int limit = 200;
  int calls = 0;
  index.pairs(poly, limit, [&](int, int k) {
    EXPECT_LT(k, limit);
    ++calls;
    limit = std::min(limit, 50);
  });
  EXPECT_GT(calls, 0);
}

// Boxes along the outline keep a star's spikes apart: a spike meets a handful
// of elements however many spikes there are, where boxes along the axes would
// take in a fixed share of them all.
TEST(SMDPolyIndex, StarSpikesMeetAHandfulOfElements) {
  for (int n : {512, 4096}) {
    const Outline poly(star(n), false);
    Index index;
    std::size_t most = 0;
    for (int s = 0; s < n; s += 7) {
      Index::Bound bound;
      ASSERT_TRUE(Index::pieceBound(poly, true, s, bound));
      most = std::max(most, index.near(poly, bound, n - 1).size());
    }
    EXPECT_LE(most, std::size_t{4 * Index::kRun}) << n;
  }
}

// What an index learns by touches and growth matches one built afresh.
TEST(SMDPolyIndex, GrowingAndTouchingMatchesBuildingAgain) {
  std::mt19937 rng(7);
  std::vector<Vertex> vs = dispc_test::wobblyRing(rng, 70);
  Index kept;
  for (int n = 40; n <= 70; ++n) {
    const std::vector<Vertex> prefix(vs.begin(), vs.begin() + n);
    const Outline poly(prefix, false);
    if (n > 40) {
      kept.touch(n - 2);  // the old last vertex gets rounded now
      kept.grow();
    }
    Index fresh;
    for (int s = 1; s < n; ++s) {
      Index::Bound bound;
      if (!Index::pieceBound(poly, true, s, bound)) continue;
      EXPECT_EQ(kept.near(poly, bound, n - 1), fresh.near(poly, bound, n - 1)) << n << " " << s;
    }
  }
}

}  // namespace
