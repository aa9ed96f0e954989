#include "foundation/bytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Stores value at offset 1 of a buffer of 0xEE bytes, so that a store that
// strays outside its sizeof(T) bytes shows in the guard bytes.
template <class T>
void expectLayout(T value, const Bytes& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(expected.size(), sizeof(T));
  Bytes buffer(sizeof(T) + 2, 0xEE);
  kfStoreLE(buffer.data() + 1, value);
  EXPECT_EQ(Bytes(buffer.begin() + 1, buffer.end() - 1), expected);
  EXPECT_EQ(buffer.front(), 0xEE);
  EXPECT_EQ(buffer.back(), 0xEE);
  EXPECT_EQ(kfLoadLE<T>(buffer.data() + 1), value);
}

// --- fixed places ---

TEST(ByteCodec, StoresEachWidthLeastSignificantByteFirst) {
  expectLayout<std::uint8_t>(0xAB, {0xAB}, "u8");
  expectLayout<std::int8_t>(-2, {0xFE}, "negative i8");
  expectLayout<std::uint16_t>(0x1234, {0x34, 0x12}, "u16");
  expectLayout<std::int16_t>(-2, {0xFE, 0xFF}, "negative i16");
  expectLayout<char16_t>(0xD83D, {0x3D, 0xD8}, "UTF-16 unit");
  expectLayout<std::uint32_t>(0x12345678, {0x78, 0x56, 0x34, 0x12}, "u32");
  expectLayout<std::int32_t>(-2, {0xFE, 0xFF, 0xFF, 0xFF}, "negative i32");
  expectLayout<std::int32_t>(std::numeric_limits<std::int32_t>::min(), {0, 0, 0, 0x80}, "smallest i32");
  expectLayout<std::uint64_t>(0x0102030405060708, {8, 7, 6, 5, 4, 3, 2, 1}, "u64");
  expectLayout<std::int64_t>(-0x0102030405060708, {0xF8, 0xF8, 0xF9, 0xFA, 0xFB, 0xFC, 0xFD, 0xFE},
                             "negative i64");
  expectLayout<float>(1.0f, {0, 0, 0x80, 0x3F}, "float");
  expectLayout<float>(-2.5f, {0, 0, 0x20, 0xC0}, "negative float");
  expectLayout<double>(1.0, {0, 0, 0, 0, 0, 0, 0xF0, 0x3F}, "double");
  expectLayout<double>(-0.1, {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0xBF}, "negative double");
  expectLayout<bool>(true, {1}, "true");
  expectLayout<bool>(false, {0}, "false");
}

// --- writer ---

TEST(ByteWriter, AppendsAfterWhatTheVectorHeldAndCutsItBack) {
  Bytes out{0xAA};
  {
    kcByteWriter w(out);
    w.put<std::uint16_t>(0x0102);
    w.put(true);
    const std::uint8_t raw[] = {7, 8};
    w.putBytes(raw, 2);
    kfStoreLE<std::int32_t>(w.grow(4), -1);
    EXPECT_EQ(w.size(), 10u);
  }  // the destructor finishes
  EXPECT_EQ(out, (Bytes{0xAA, 0x02, 0x01, 1, 7, 8, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(ByteWriter, TruncateForgetsTheTail) {
  Bytes out;
  kcByteWriter w(out);
  w.put<std::uint32_t>(0x04030201);
  w.truncate(1);
  w.put<std::uint8_t>(9);
  w.truncate(5);  // longer than written: no effect
  w.finish();
  EXPECT_EQ(out, (Bytes{1, 9}));
}

// --- reader ---

TEST(ByteReader, ReadsValuesInOrder) {
  const Bytes in{0x34, 0x12, 0, 0, 0x80, 0x3F, 1, 0xFE, 0xFF, 0xFF, 0xFF};
  kcByteReader r(in);
  std::uint16_t a = 0;
  float b = 0;
  bool c = false;
  std::int32_t d = 0;
  ASSERT_TRUE(r.read(a));
  ASSERT_TRUE(r.read(b));
  ASSERT_TRUE(r.read(c));
  ASSERT_TRUE(r.read(d));
  EXPECT_EQ(a, 0x1234);
  EXPECT_EQ(b, 1.0f);
  EXPECT_TRUE(c);
  EXPECT_EQ(d, -2);
  EXPECT_EQ(r.remaining(), 0u);
}

TEST(ByteReader, RefusesShortReadsWithoutMoving) {
  const Bytes in{1, 2, 3};
  kcByteReader r(in);
  std::uint32_t wide = 99;
  EXPECT_FALSE(r.read(wide));
  EXPECT_EQ(wide, 99u);
  EXPECT_EQ(r.position(), 0u);

  std::uint16_t half = 0;
  ASSERT_TRUE(r.read(half));
  EXPECT_EQ(half, 0x0201);
  EXPECT_FALSE(r.read(half));
  EXPECT_EQ(r.position(), 2u);

  std::uint8_t raw[2] = {0, 0};
  EXPECT_FALSE(r.readBytes(raw, 2));
  EXPECT_EQ(r.position(), 2u);
  ASSERT_TRUE(r.readBytes(raw, 1));
  EXPECT_EQ(raw[0], 3);
  EXPECT_EQ(r.remaining(), 0u);

  kcByteReader empty;
  EXPECT_FALSE(empty.read(half));
}

TEST(ByteReader, TakeAndSkipStayInBounds) {
  const Bytes in{1, 2, 3, 4, 5};
  kcByteReader r(in);
  EXPECT_FALSE(r.take(6));
  EXPECT_FALSE(r.skip(6));
  EXPECT_EQ(r.position(), 0u);

  ASSERT_TRUE(r.skip(1));
  const auto taken = r.take(3);
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->data(), in.data() + 1);  // in place, not copied
  EXPECT_EQ(taken->size(), 3u);
  EXPECT_EQ(r.position(), 4u);

  EXPECT_FALSE(r.take(2));
  EXPECT_FALSE(r.skip(2));
  EXPECT_EQ(r.position(), 4u);
  EXPECT_EQ(*r.here(), 5);
  ASSERT_TRUE(r.skip(1));
  const auto none = r.take(0);  // an empty take at the end is allowed
  ASSERT_TRUE(none);
  EXPECT_TRUE(none->empty());
}

// --- UTF-16 ---

TEST(Utf16, RoundTripsTextWithoutSurrogates) {
  struct Case {
    const char* what;
    std::wstring text;
    std::u16string units;
  } cases[] = {
      {"empty", L"", u""},
      {"ASCII", L"Az", u"Az"},
      {"last before the surrogates", L"\uD7FF", u"\uD7FF"},
      {"first after the surrogates", L"\uE000\uFFFF", u"\uE000\uFFFF"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    for (keSurrogates mode : {keSurrogates::keep, keSurrogates::refuse}) {
      const auto units = kfToUtf16(c.text, mode);
      ASSERT_TRUE(units);
      EXPECT_EQ(*units, c.units);
    }
    EXPECT_EQ(kfFromUtf16(c.units), c.text);
  }
}

// Holds for either width of wchar_t: where it is 16 bits the text is the pair
// already, and refusing surrogates must not refuse it.
TEST(Utf16, SupplementaryCharactersTravelAsPairs) {
  struct Case {
    const char* what;
    std::wstring text;
    std::u16string units;
  } cases[] = {
      {"first", L"\U00010000", u"\xD800\xDC00"},
      {"between others", L"a\U0001F600b", {u'a', 0xD83D, 0xDE00, u'b'}},
      {"last", L"\U0010FFFF", u"\xDBFF\xDFFF"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto units = kfToUtf16(c.text, keSurrogates::refuse);
    ASSERT_TRUE(units);
    EXPECT_EQ(*units, c.units);
    EXPECT_EQ(kfFromUtf16(c.units), c.text);
  }
}

TEST(Utf16, LoneSurrogatesAreKeptOrRefused) {
  const std::wstring texts[] = {
      L"a\xD800",        // high at the end
      L"\xDC00z",        // low first
      L"\xDFFF\xD800",   // low then high is no pair
      L"\xDBFFq\xDC00",  // a character between them
  };
  for (const std::wstring& text : texts) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_FALSE(kfToUtf16(text, keSurrogates::refuse));
    const auto units = kfToUtf16(text, keSurrogates::keep);
    ASSERT_TRUE(units);
    EXPECT_EQ(*units, std::u16string(text.begin(), text.end()));
    EXPECT_EQ(kfFromUtf16(*units), text);
  }
}

TEST(Utf8, EveryLengthAndWhatIsNoCharacter) {
  EXPECT_EQ(kfToUtf8(L"Az"), "Az");
  EXPECT_EQ(kfToUtf8(L"\u00c5\u20ac\U0001F600"), "\xC3\x85\xE2\x82\xAC\xF0\x9F\x98\x80");
  // A lone surrogate, either half, is the replacement character.
  EXPECT_EQ(kfToUtf8(std::wstring{L'a', static_cast<wchar_t>(0xD800)}), "a\xEF\xBF\xBD");
  EXPECT_EQ(kfToUtf8(std::wstring{static_cast<wchar_t>(0xDC00), L'z'}), "\xEF\xBF\xBDz");
  if (sizeof(wchar_t) >= 4) {
    EXPECT_EQ(kfToUtf8(std::wstring(1, static_cast<wchar_t>(0x110000))), "\xEF\xBF\xBD");
  }
}

TEST(Utf16, RefusesCharactersBeyondUnicode) {
  if (sizeof(wchar_t) < 4) GTEST_SKIP() << "wchar_t cannot hold them";
  const wchar_t beyond[] = {
      static_cast<wchar_t>(0x110000), static_cast<wchar_t>(std::numeric_limits<std::int32_t>::max()),
      static_cast<wchar_t>(-1),  // a negative wchar_t is a large value, not a small one
  };
  for (wchar_t c : beyond) {
    SCOPED_TRACE(static_cast<long>(c));
    const std::wstring text{L'a', c};
    EXPECT_FALSE(kfToUtf16(text, keSurrogates::keep));
    EXPECT_FALSE(kfToUtf16(text, keSurrogates::refuse));
  }
}

}  // namespace
