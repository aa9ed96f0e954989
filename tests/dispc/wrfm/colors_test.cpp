#include "dispc/wrfm/colors.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using dispc_test::stored;

TEST(SMDColors, DefaultsCopiesAndEquality) {
  kcSMDColors c;
  EXPECT_EQ(stored(c), stored(kcSMDColors(kcColor::green, kcColor::ltGrey, kcColor::dkGrey)));
  c.track(true);
  c.syntheticDefaultColor(kcColor(9));
  EXPECT_TRUE(c.changed());
  EXPECT_FALSE(kcSMDColors(c).changed());  // a copy starts with a clear change mark
  kcSMDColors assigned;
  assigned.track(true);
  assigned.wireframeDefaultColor(kcColor::blue);
  assigned = c;
  EXPECT_FALSE(assigned.changed());
  EXPECT_EQ(stored(assigned), stored(kcSMDColors(kcColor::green, kcColor(9), kcColor::dkGrey)));
  // Colour equality: stock red equals its index and its triple.
  EXPECT_TRUE(kcSMDColors(kcColor::red, kcColor(7), kcColor::dkGrey) ==
              kcSMDColors(kcColor(255, 0, 0), kcColor::ltGrey, kcColor(128, 128, 128)));
}

TEST(SMDColors, GreyLevels) {
  const std::pair<kcColor, int> rows[] = {
      {kcColor::black, 5},    {kcColor::dkGrey, 50}, {kcColor::grey, 100},          {kcColor::ltGrey, 150},
      {kcColor::white, 250},  {kcColor::red, 120},   {kcColor::dkRed, 90},          {kcColor::orange, 180},
      {kcColor::yellow, 210}, {kcColor::green, 130}, {kcColor::dkGreen, 80},        {kcColor::cyan, 200},
      {kcColor::blue, 160},   {kcColor::purple, 90}, {kcColor::magenta, 170},       {kcColor::pass, 0},
      {kcColor(255), 250},    {kcColor(100), 0},     {kcColor(255, 255, 255), 255}, {kcColor(1, 1, 2), 1},
      {kcColor(1, 2, 2), 2},
  };
  for (const auto& [color, grey] : rows) EXPECT_EQ(kcSMDColors::colorToGrayScale(color), grey) << grey;
  // Every channel sum: the mean rounded half up.
  for (int sum = 0; sum <= 765; ++sum) {
    const int r = std::min(sum, 255), g = std::min(sum - r, 255), b = sum - r - g;
    const kcColor c(static_cast<unsigned char>(r), static_cast<unsigned char>(g),
                    static_cast<unsigned char>(b));
    ASSERT_EQ(kcSMDColors::colorToGrayScale(c), (2 * sum + 3) / 6) << sum;
  }
}

TEST(SMDColorsArchive, FormsVersionsAndBadRecords) {
  const Bytes bytes = stored(kcSMDColors(kcColor(1, 2, 3), kcColor(9), kcColor::purple));
  EXPECT_EQ(bytes, (Bytes{1, 0, 2, 0, 0, 1, 2, 3, 0, 4, 9, 0, 0, 0, 0, 0, 7, 244, 0, 160, 20, 200}));
  kcSMDColors loaded;
  kcMemArchive in(bytes);
  loaded.dispatchSerialize(in);
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(stored(loaded), bytes);
  EXPECT_EQ(stored(dispc_test::loaded(Bytes{0}, loaded)), bytes);  // version 0 carries no colours
  Bytes v2 = bytes;
  v2[0] = 2;
  const kcSMDColors target(kcColor::red, kcColor::blue, kcColor::white);
  dispc_test::expectUnknownVersion(v2, target, "dispc/wrfm/colors", 107);
  for (long n : {1, 15, 21})
    dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.begin() + n), target);
}

}  // namespace
