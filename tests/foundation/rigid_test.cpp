#include "foundation/rigid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "foundation/archive.h"

namespace {

using V = kcVector<2>;

TEST(Rigid, MapComposeAndInvert) {
  const kc2Rigid cases[] = {{kcDegree(90), {1, 2}}, {kcRadian(-2.5), {-0.5, 3}}, {kcDegree(400), {0, 0}}};
  EXPECT_LE((cases[0] * V(1, 0)).distance(V(1, 3)), 1e-15);  // turned to (0, 1), then shifted
  for (const kc2Rigid& a : cases) {
    EXPECT_LE((a.xform() * V(0.25, -4)).distance(a * V(0.25, -4)), 1e-14);
    for (const kc2Rigid& b : cases) EXPECT_LE(((a * b) * V(2, 1)).distance(a * (b * V(2, 1))), 1e-14);
    EXPECT_EQ(a * a.inverse(), kc2Rigid());
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

// The angle in radians, then the translation.
TEST(Rigid, ArchiveIsRadiansThenTranslation) {
  kcMemArchive out, doubles;
  out << kc2Rigid(kcDegree(90), {1, -2});
  doubles << 90 * 0.017453292519943295 << 1.0 << -2.0;
  EXPECT_EQ(out.bytes(), doubles.bytes());
  kcMemArchive in(out.bytes());
  kc2Rigid loaded;
  in >> loaded;
  EXPECT_TRUE(loaded.angle() == kcRadian(kcDegree(90)) && loaded.trans() == V(1, -2));  // exact
}

}  // namespace
