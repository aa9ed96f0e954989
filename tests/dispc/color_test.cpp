#include "dispc/color.h"

#include <gtest/gtest.h>

#include "dispc/uierror.h"
#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using dispc_test::stored;

TEST(RGB, PackingsAndBrightnessOrder) {
  const kcRGB c(0x12, 0x34, 0xFE);
  EXPECT_EQ(c.rgb(), 0x001234FEu);
  EXPECT_EQ(c.bgr(), 0x00FE3412u);
  EXPECT_EQ(kcRGB(255, 255, 255).rgb15(), 0x7FFF);
  EXPECT_EQ(kcRGB(0, 4, 0).rgb16(), 1 << 5);      // green keeps 6 bits
  EXPECT_FALSE(kcRGB(3, 0, 0) < kcRGB(0, 0, 5));  // same integer mean
  EXPECT_FALSE(kcRGB(0, 0, 5) < kcRGB(3, 0, 0));
  EXPECT_TRUE(kcRGB(200, 0, 0) < kcRGB(70, 70, 70));  // not channel by channel
}

TEST(Color, KindsEqualityAndChecks) {
  const kcColor index;
  EXPECT_TRUE(index.isIndexColor() && !index.isRGBColor() && !index.isStockColor());
  EXPECT_THROW((void)index.rgb(), kcUIError::NotRGBColor);
  EXPECT_THROW((void)index.rgb16(), kcUIError::NotRGBColor);
  EXPECT_THROW((void)kcColor(1, 2, 3).index(), kcUIError::NotIndexColor);
  EXPECT_EQ(kcColor::grey.rgb15(), 0x5294);
  EXPECT_EQ(kcColor::grey.rgb16(), 0xA514);
  EXPECT_EQ(kcColor::orange.bgr(), 0x00327DFAu);
  EXPECT_EQ(&kcColor::gray, &kcColor::grey);
  // Index match, else triple match: not transitive.
  EXPECT_TRUE(kcColor(249) == kcColor::red && kcColor(255, 0, 0) == kcColor::red);
  EXPECT_TRUE(kcColor(249) != kcColor(255, 0, 0));
  EXPECT_TRUE(kcColor(0, 0, 0) == kcColor::black && kcColor() == kcColor::black);
  EXPECT_FALSE(kcColor(0, 0, 0) == kcColor());
}

TEST(Color, StockColorsInCodeOrder) {
  struct Row {
    const kcColor& member;
    const kcColor& (*accessor)();
    unsigned char index, r, g, b;
  };
  const Row rows[] = {
      {kcColor::black, kcColor::blackColor, 0, 0, 0, 0},
      {kcColor::dkGrey, kcColor::dkGreyColor, 248, 128, 128, 128},
      {kcColor::grey, kcColor::greyColor, 247, 160, 160, 164},
      {kcColor::ltGrey, kcColor::ltGreyColor, 7, 192, 192, 192},
      {kcColor::white, kcColor::whiteColor, 255, 255, 255, 255},
      {kcColor::red, kcColor::redColor, 249, 255, 0, 0},
      {kcColor::dkRed, kcColor::dkRedColor, 1, 128, 0, 0},
      {kcColor::orange, kcColor::orangeColor, 245, 250, 125, 50},
      {kcColor::yellow, kcColor::yellowColor, 251, 255, 255, 0},
      {kcColor::green, kcColor::greenColor, 250, 0, 255, 0},
      {kcColor::dkGreen, kcColor::dkGreenColor, 2, 0, 128, 0},
      {kcColor::cyan, kcColor::cyanColor, 254, 0, 255, 255},
      {kcColor::blue, kcColor::blueColor, 252, 0, 0, 255},
      {kcColor::purple, kcColor::purpleColor, 244, 160, 20, 200},
      {kcColor::magenta, kcColor::magentaColor, 253, 255, 0, 255},
      {kcColor::pass, kcColor::passColor, 243, 243, 243, 243},
  };
  for (kgr_color code = 0; code < 16; ++code) {
    const Row& s = rows[code];
    SCOPED_TRACE(code);
    EXPECT_EQ(stored(s.member), (Bytes{0, 7, s.index, 0, s.r, s.g, s.b}));
    EXPECT_EQ(stored(s.accessor()), stored(s.member));
    EXPECT_EQ(kfColor(s.member), code);
    EXPECT_EQ(stored(kfColor(code)), stored(s.member));
  }
}

TEST(Color, KgrCodes) {
  for (kgr_color code : {0, 16, 0x7F, -256}) EXPECT_EQ(stored(kfColor(code)), stored(kcColor::black)) << code;
  EXPECT_EQ(stored(kfColor(kgr_color(0x80))), stored(kcColor(0, 0, 0)));
  EXPECT_EQ(stored(kfColor(kfColor(kcColor(250, 125, 50)))), stored(kcColor(250, 125, 50)));  // not orange
  EXPECT_EQ(static_cast<std::uint32_t>(kfColor(kcColor(250, 125, 50))), 0xFA7D3280u);
  EXPECT_EQ(kfColor(kcColor(249)), 0x80);  // index-only leaves as explicit black
  // A stock colour that matches none: only loading makes one.
  EXPECT_EQ(kfColor(dispc_test::loaded(Bytes{0, 7, 100, 0, 1, 2, 3}, kcColor())), 0);
}

TEST(ColorArchive, FormsAndBadRecords) {
  EXPECT_EQ(stored(kcRGB(1, 2, 3)), (Bytes{0, 1, 2, 3}));
  EXPECT_EQ(stored(kcColor(9)), (Bytes{0, 4, 9, 0, 0, 0, 0}));
  EXPECT_EQ(stored(kcColor(4, 5, 6)), (Bytes{0, 2, 0, 0, 4, 5, 6}));
  EXPECT_EQ(stored(dispc_test::loaded(stored(kcColor::purple), kcColor())), stored(kcColor::purple));
  using dispc_test::expectUnknownVersion;
  expectUnknownVersion(Bytes{1, 7, 245, 0, 250, 125, 50}, kcColor::blue, "dispc/color", 121);
  expectUnknownVersion(Bytes{0xFF, 4, 1, 0, 0, 0, 0}, kcColor::blue, "dispc/color", 121);
  expectUnknownVersion(Bytes{0, 2, 0, 1, 1, 2, 3}, kcColor::blue, "dispc/color", 31);  // the triple's version
  expectUnknownVersion(Bytes{2, 1, 2, 3}, kcRGB(9, 9, 9), "dispc/color", 31);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes{0, 0x0C, 1, 0, 0, 0, 0},
                                                kcColor::blue);  // unknown flags
  // Neither index nor triple (a stock flag alone, or none): equal to no
  // colour, itself included.
  for (unsigned char flags : {0, 1})
    dispc_test::expectRefused<kcArchive::Corrupt>(Bytes{0, flags, 1, 0, 4, 5, 6}, kcColor::blue);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes{0, 7, 245, 0, 250, 125}, kcColor::blue);
}

}  // namespace
