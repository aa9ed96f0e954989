// Seeded random runs of edits on polys, each edit checked as the fuzz target
// checks it (fuzz/poly_edits.h): a refused edit changes nothing, an accepted
// one leaves a poly that validates whole and can be drawn.
#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/poly_edits.h"

namespace {

TEST(SMDPolyEditProperty, RefusedEditsChangeNothingAndAcceptedOnesStayValid) {
  constexpr int kRuns = 10000;
  constexpr int kLongest = 50;
  std::mt19937 rng(20261125);
  std::vector<std::uint8_t> bytes(16 * kLongest);
  polyedits::Counts all;
  long closed = 0;
  for (int run = 0; run < kRuns; ++run) {
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(rng());
    polyedits::Reader in(bytes);
    kcSMDGDPoly p(L"property");
    bool failed = false;
    const polyedits::Counts counts = polyedits::run(in, p, 1 + run % kLongest, [&](const std::string& what) {
      if (!failed) ADD_FAILURE() << "run " << run << ": " << what;
      failed = true;
    });
    all.accepted += counts.accepted;
    all.refused += counts.refused;
    all.unchecked += counts.unchecked;
    closed += p.isClosed();
    if (failed) break;
  }
  // The runs reach enough accepted edits, and closed outlines, for the
  // checks to mean something.
  EXPECT_GT(all.accepted, 2L * kRuns);
  EXPECT_GT(all.refused, 2L * kRuns);
  EXPECT_GT(closed, kRuns / 20);
  // The edits whose own checks may miss a rounding a whole validation
  // refuses stay rare.
  EXPECT_LT(all.unchecked, all.accepted / 20);
  std::cout << all.accepted << " accepted, " << all.refused << " refused, " << all.unchecked
            << " accepted where only a whole validation refuses\n";
}

}  // namespace
