#include "dispc/uistring.h"

#include <gtest/gtest.h>

#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using F = kcUIFormat;

TEST(UIFormat, AlignRectPlacesTheAnchorOnTheGrid) {
  const kcUIRect r(100, 100, 11, 21);
  const long dx[] = {0, 5, 11}, dy[] = {0, 10, 21};  // 0, half and all of the size
  for (int a = 0; a <= 8; ++a)
    EXPECT_EQ(F(3, static_cast<F::Alignment>(a)).alignRect(r),
              kcUIRect(100 - dx[a % 3], 100 - dy[a / 3], 11, 21))
        << a;
  EXPECT_EQ(F(3, F::center).alignRect(r), kcUIRect(95, 90, 11, 21));
  EXPECT_EQ(F(3, F::bottomRight).alignRect(r), kcUIRect(89, 79, 11, 21));
  for (int a : {9, -1}) EXPECT_EQ(F(0, static_cast<F::Alignment>(a)).alignRect(r), r) << a;
  kcUIRect movedNull;
  movedNull += kcUIRect::Pair(40, 50);
  EXPECT_EQ(F(0, F::topLeft).alignRect(movedNull), kcUIRect());
}

TEST(UIFormat, AlignmentOnlyConstructorTakesTheDefaultFont) {
  // No test leaves the default changed, so it is still the initial -1.
  EXPECT_EQ(F(F::center).fontId(), -1);
  F::defaultFontId(17);
  const F f(F::bottomLeft);
  F::defaultFontId(18);
  EXPECT_EQ(f.fontId(), 17);  // later changes do not reach existing formats
  EXPECT_EQ(f.alignment(), F::bottomLeft);
  EXPECT_EQ(F(F::center).fontId(), 18);
  F::defaultFontId(-1);
}

TEST(UIFormatArchive, FormRoundTripAndBadRecords) {
  const F f(0x01020304, F::bottomCenter);
  EXPECT_EQ(dispc_test::stored(f), (Bytes{0, 4, 3, 2, 1, 7, 0, 0, 0}));
  for (F c : {f, F(-1, F::topLeft), F(9, static_cast<F::Alignment>(-3))})
    EXPECT_EQ(dispc_test::loaded(dispc_test::stored(c), F(0, F::center)), c);
  EXPECT_TRUE(f != F(0x01020304, F::bottomLeft) && f != F(5, F::bottomCenter));
  dispc_test::expectUnknownVersion(Bytes{1, 4, 3, 2, 1, 7, 0, 0, 0}, F(3, F::center), "dispc/uistring", 77);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes{0, 4, 3, 2, 1, 7, 0, 0}, F(3, F::center));
}

}  // namespace
