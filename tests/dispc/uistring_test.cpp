#include "dispc/uistring.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Restores the process-wide default font when a test ends.
class DefaultFontGuard {
 public:
  DefaultFontGuard() : saved_(kcUIFormat::defaultFontId()) {}
  ~DefaultFontGuard() { kcUIFormat::defaultFontId(saved_); }
  DefaultFontGuard(const DefaultFontGuard&) = delete;
  DefaultFontGuard& operator=(const DefaultFontGuard&) = delete;

 private:
  long saved_;
};

// --- alignment ---

TEST(UIFormat, AlignRectPlacesTheAnchorOnTheGrid) {
  const kcUIRect r(100, 100, 11, 21);
  // Column shifts 0, width / 2, width; row shifts 0, height / 2, height.
  const long dx[] = {0, 5, 11};
  const long dy[] = {0, 10, 21};
  for (int a = 0; a <= 8; ++a) {
    const kcUIFormat f(3, static_cast<kcUIFormat::Alignment>(a));
    const kcUIRect placed = f.alignRect(r);
    EXPECT_EQ(placed, kcUIRect(100 - dx[a % 3], 100 - dy[a / 3], 11, 21)) << a;
  }
  EXPECT_EQ(kcUIFormat(3, kcUIFormat::center).alignRect(r), kcUIRect(95, 90, 11, 21));
  EXPECT_EQ(kcUIFormat(3, kcUIFormat::bottomRight).alignRect(r), kcUIRect(89, 79, 11, 21));
}

TEST(UIFormat, AlignRectOutsideTheGridMovesNothing) {
  const kcUIRect r(100, 100, 11, 21);
  for (int a : {9, -1, 1000})
    EXPECT_EQ(kcUIFormat(0, static_cast<kcUIFormat::Alignment>(a)).alignRect(r), r) << a;
}

TEST(UIFormat, AlignRectOfAnEmptySizeIsNull) {
  kcUIRect movedNull;
  movedNull += kcUIRect::Pair(40, 50);
  EXPECT_EQ(kcUIFormat(0, kcUIFormat::topLeft).alignRect(movedNull), kcUIRect());
  EXPECT_EQ(kcUIFormat(0, kcUIFormat::bottomRight).alignRect(kcUIRect()), kcUIRect());
  // An odd size halves down: 1 / 2 is 0.
  EXPECT_EQ(kcUIFormat(0, kcUIFormat::center).alignRect(kcUIRect(7, 7, 1, 3)), kcUIRect(7, 6, 1, 3));
}

// --- values ---

TEST(UIFormat, AccessorsAndEquality) {
  kcUIFormat f(12, kcUIFormat::middleRight);
  EXPECT_EQ(f.fontId(), 12);
  EXPECT_EQ(f.alignment(), kcUIFormat::middleRight);
  f.fontId(-4);
  f.alignment(kcUIFormat::topCenter);
  EXPECT_EQ(f.fontId(), -4);
  EXPECT_EQ(f.alignment(), 1);
  EXPECT_EQ(f, kcUIFormat(-4, kcUIFormat::topCenter));
  EXPECT_NE(f, kcUIFormat(-4, kcUIFormat::topLeft));
  EXPECT_NE(f, kcUIFormat(5, kcUIFormat::topCenter));
}

TEST(UIFormat, AlignmentOnlyConstructorTakesTheDefaultFont) {
  DefaultFontGuard guard;
  kcUIFormat::defaultFontId(17);
  EXPECT_EQ(kcUIFormat::defaultFontId(), 17);
  const kcUIFormat f(kcUIFormat::bottomLeft);
  EXPECT_EQ(f.fontId(), 17);
  EXPECT_EQ(f.alignment(), kcUIFormat::bottomLeft);
  // Later changes of the default do not reach existing formats.
  kcUIFormat::defaultFontId(18);
  EXPECT_EQ(f.fontId(), 17);
  EXPECT_EQ(kcUIFormat().fontId(), 18);
  EXPECT_EQ(kcUIFormat().alignment(), kcUIFormat::topLeft);
}

// Runs in a freshly started copy of the test program, where nothing has yet
// touched the default font.
TEST(UIFormatDeathTest, DefaultFontStartsAtMinusOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const bool fresh = kcUIFormat(kcUIFormat::center).fontId() == -1 && kcUIFormat::defaultFontId() == -1;
        kcUIFormat::defaultFontId(5);
        const bool set = kcUIFormat(kcUIFormat::center).fontId() == 5;
        std::exit(fresh && set ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// --- archive ---

TEST(UIFormat, ArchiveFormIsVersionFontAlignment) {
  kcUIFormat f(0x01020304, kcUIFormat::bottomCenter);
  kcMemArchive out;
  out || f;
  EXPECT_EQ(out.bytes(), (Bytes{0, 4, 3, 2, 1, 7, 0, 0, 0}));

  const std::vector<kcUIFormat> cases = {f, kcUIFormat(-1, kcUIFormat::topLeft),
                                         kcUIFormat(9, static_cast<kcUIFormat::Alignment>(-3))};
  for (kcUIFormat c : cases) {
    kcMemArchive store;
    store || c;
    kcMemArchive in(store.bytes());
    kcUIFormat loaded(0, kcUIFormat::center);
    in || loaded;
    EXPECT_TRUE(in.atEnd());
    EXPECT_EQ(loaded, c);
  }
}

TEST(UIFormat, BadArchiveRecordsLeaveTheTargetUnchanged) {
  const kcUIFormat original(3, kcUIFormat::center);
  {
    kcMemArchive in(Bytes{1, 4, 3, 2, 1, 7, 0, 0, 0});
    kcUIFormat target = original;
    try {
      in || target;
      FAIL() << "no exception";
    } catch (const kcArchive::UnknownVersion& e) {
      EXPECT_EQ(e.file(), "dispc/uistring");
      EXPECT_EQ(e.line(), 77);
    }
    EXPECT_EQ(target, original);
  }
  {
    kcMemArchive in(Bytes{0, 4, 3, 2, 1, 7, 0, 0});
    kcUIFormat target = original;
    EXPECT_THROW(in || target, kcArchive::Corrupt);
    EXPECT_EQ(target, original);
  }
}

}  // namespace
