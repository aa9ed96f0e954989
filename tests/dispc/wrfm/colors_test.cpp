#include "dispc/wrfm/colors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "foundation/archive.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes store(kcSMDColors c) {
  kcMemArchive ar;
  c.dispatchSerialize(ar);
  return ar.bytes();
}

TEST(SMDColors, DefaultsSettersAndCopies) {
  kcSMDColors c;
  EXPECT_EQ(store(c), store(kcSMDColors(kcColor::green, kcColor::ltGrey, kcColor::dkGrey)));
  c.track(true);
  c.wireframeDefaultColor(kcColor(1, 2, 3));
  c.syntheticDefaultColor(kcColor(9));
  c.syntheticBackgroundColor(kcColor::white);
  EXPECT_TRUE(c.changed());
  EXPECT_EQ(store(c), store(kcSMDColors(kcColor(1, 2, 3), kcColor(9), kcColor::white)));
  EXPECT_FALSE(kcSMDColors(c).changed());
  kcSMDColors assigned;
  assigned.track(true);
  assigned.syntheticDefaultColor(kcColor::blue);
  assigned = c;
  EXPECT_FALSE(assigned.changed());
  EXPECT_TRUE(assigned == c);
  // Equality is colour equality: stock red equals its index and its triple.
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

TEST(SMDColorsArchive, FormsAndVersions) {
  const kcSMDColors c(kcColor(1, 2, 3), kcColor(9), kcColor::purple);
  const Bytes bytes = store(c);
  EXPECT_EQ(bytes, (Bytes{1, 0, 2, 0, 0, 1, 2, 3, 0, 4, 9, 0, 0, 0, 0, 0, 7, 244, 0, 160, 20, 200}));
  kcSMDColors loaded;
  kcMemArchive in(bytes);
  loaded.dispatchSerialize(in);
  loaded.dispatchSerialize(in);  // once per pass: the second reads nothing
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(store(loaded), bytes);
  // Version 0 carries no colours.
  kcMemArchive old(Bytes{0});
  loaded.dispatchSerialize(old);
  EXPECT_TRUE(old.atEnd());
  EXPECT_EQ(store(loaded), bytes);
}

TEST(SMDColorsArchive, BadRecordsLeaveTheColours) {
  Bytes bytes = store(kcSMDColors(kcColor(1, 2, 3), kcColor(9), kcColor::purple));
  const kcSMDColors before(kcColor::red, kcColor::blue, kcColor::white);
  bytes[0] = 2;
  kcSMDColors target = before;
  try {
    kcMemArchive in(bytes);
    target.dispatchSerialize(in);
    FAIL() << "version 2 accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "dispc/wrfm/colors");
    EXPECT_EQ(e.line(), 107);
  }
  EXPECT_EQ(store(target), store(before));
  bytes[0] = 1;
  for (long n : {0, 1, 15, 21}) {
    kcMemArchive cut(Bytes(bytes.begin(), bytes.begin() + n));
    EXPECT_THROW(target.dispatchSerialize(cut), kcArchive::Corrupt) << n;
    EXPECT_EQ(store(target), store(before));
  }
}

}  // namespace
