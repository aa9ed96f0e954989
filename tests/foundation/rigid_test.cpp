#include "foundation/rigid.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <numbers>

#include "foundation/archive.h"

namespace {

using V = kcVector<2>;

void expectNear(const V& a, const V& b) {
  EXPECT_NEAR(a.x(), b.x(), 1e-14);
  EXPECT_NEAR(a.y(), b.y(), 1e-14);
}

const kc2Rigid kCases[] = {{kcDegree(90), {1, 2}}, {kcRadian(-2.5), {-0.5, 3}}, {kcDegree(400), {0, 0}}};

TEST(Rigid, MapComposeAndInvert) {
  expectNear(kc2Rigid(kcDegree(90), {1, 2}) * V(1, 0), V(1, 3));  // turned to (0, 1), then shifted
  for (const kc2Rigid& a : kCases) {
    expectNear(a.xform() * V(0.25, -4), a * V(0.25, -4));
    for (const kc2Rigid& b : kCases) expectNear((a * b) * V(2, 1), a * (b * V(2, 1)));
    EXPECT_EQ(a * a.inverse(), kc2Rigid());
    EXPECT_EQ(a.inverse() * a, kc2Rigid());
  }
}

TEST(Rigid, EqualityComparesDirectionsWithinTolerance) {
  const double turn = 2 * std::numbers::pi;
  EXPECT_EQ(kc2Rigid(kcRadian(0.3), {1, 1}), kc2Rigid(kcRadian(0.3 + turn), {1, 1}));
  EXPECT_EQ(kc2Rigid(kcRadian(turn / 2), {1, 1}), kc2Rigid(kcRadian(-turn / 2), {1, 1 + 1e-16}));
  EXPECT_EQ(kc2Rigid(kcRadian(0), {}), kc2Rigid(kcRadian(std::nextafter(turn, 0.0)), {}));  // one ulp short
  EXPECT_NE(kc2Rigid(kcRadian(0.3), {1, 1}), kc2Rigid(kcRadian(0.3 + 1e-14), {1, 1}));
  EXPECT_NE(kc2Rigid(kcRadian(0.3), {1, 1}), kc2Rigid(kcRadian(0.3), {1, 1 + 4e-15}));
}

TEST(Rigid, ArchiveIsRadiansThenTranslation) {
  kcMemArchive out;
  out << kc2Rigid(kcDegree(90), {1, -2});
  const double expected[] = {90 * 0.017453292519943295, 1, -2};
  ASSERT_EQ(out.bytes().size(), sizeof expected);
  for (std::size_t i = 0; i < sizeof expected; ++i)
    EXPECT_EQ(out.bytes()[i], (std::bit_cast<std::uint64_t>(expected[i / 8]) >> (8 * (i % 8))) & 0xFF) << i;
  kcMemArchive in(out.bytes());
  kc2Rigid loaded;
  in >> loaded;
  EXPECT_TRUE(loaded.angle() == kcRadian(kcDegree(90)) && loaded.trans() == V(1, -2));  // exact
}

}  // namespace
