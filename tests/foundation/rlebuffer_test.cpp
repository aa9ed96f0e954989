#include "foundation/rlebuffer.h"

#include <gtest/gtest.h>

#include <tuple>

#include "foundation/archive.h"

namespace {

using Units = std::vector<std::uint16_t>;

kcPelBuffer<unsigned char> image(long w, long h, int (*pel)(long x, long y)) {
  kcPelBuffer<unsigned char> b(w, h);
  for (long y = 0; y < h; ++y)
    for (long x = 0; x < w; ++x) b.put(x, y, static_cast<unsigned char>(pel(x, y)));
  return b;
}

TEST(RLEBuffer, EncodesRunsRowByRow) {
  EXPECT_EQ(kcRLEBuffer(image(3, 2, [](long x, long y) { return y == 0 ? 1 + (x == 2) : 0; })).units(),
            (Units{0x0201, 0x0102, 0x0300, 0}));
  // A run never continues into the next row; a long one is cut at 255.
  EXPECT_EQ(kcRLEBuffer(image(2, 2, [](long, long) { return 5; })).units(), (Units{0x0205, 0x0205, 0}));
  EXPECT_EQ(kcRLEBuffer(image(600, 1, [](long, long) { return 7; })).units(),
            (Units{0xFF07, 0xFF07, 0x5A07, 0}));
}

TEST(RLEBuffer, RoundTrips) {
  const kcPelBuffer<unsigned char> images[] = {
      image(700, 3, [](long x, long y) { return x < 300 + 100 * y ? 200 : int(x % 3); }),
      image(1, 5, [](long, long y) { return int(y * 60); }),  // 1-pel rows
      image(256, 2, [](long x, long) { return int(x == 255); }),
      image(700, 3, [](long x, long) { return int(x % 256); }).window(290, 1, 20, 2),
      kcPelBuffer<unsigned char>(0, 3),
  };
  for (const auto& im : images) {
    const kcRLEBuffer rle(im);
    const kcPelBuffer<unsigned char> back = rle.decode();
    ASSERT_TRUE(back.width() == im.width() && back.height() == im.height());
    for (long y = 0; y < im.height(); ++y)
      for (long x = 0; x < im.width(); ++x) ASSERT_EQ(back.get(x, y), im.get(x, y)) << x << ", " << y;
    EXPECT_EQ(kcRLEBuffer(rle.width(), rle.height(), rle.units()), rle);  // the checked form agrees
  }
  EXPECT_TRUE(kcRLEBuffer(kcPelBuffer<unsigned char>()).isNull());
  EXPECT_EQ(kcRLEBuffer(kcPelBuffer<unsigned char>(0, 0)).units(), Units{0});
}

// Each row: a size, units that do not encode it, and the reason loading gives.
const std::tuple<long, long, Units, const wchar_t*> kBadUnits[] = {
    {2, 1, {0x0201}, L"do not end with a zero unit"},
    {2, 1, {0x0101, 0x0005, 0x0101, 0}, L"zero-length run"},
    {2, 1, {0x0201, 0, 0}, L"zero-length run"},
    {2, 2, {0x0101, 0x0201, 0x0101, 0}, L"crosses the end of a row"},
    {2, 2, {0x0201, 0x0101, 0}, L"end before the last row"},
    {2, 1, {0x0201, 0x0101, 0}, L"after the last row"},
    {2, 2, {0x0201, 0}, L"too few units"},
    {1L << 30, 1L << 30, {0x0101, 0}, L"too few units"},
    {-1, 1, {0}, L"negative"},
    {1, 1, {}, L"no units"},
    {0, 1, {0x0101, 0}, L"without pels"},
};

// The checked constructor refuses them; loading them is corrupt data.
TEST(RLEBuffer, ArchiveFormAndBadUnits) {
  const kcRLEBuffer rle(2, 1, {0x0103, 0x0104, 0});
  kcMemArchive out;
  out << rle;
  EXPECT_EQ(out.bytes(), (std::vector<std::uint8_t>{2, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 3, 1, 4, 1, 0, 0}));
  kcMemArchive in(out.bytes());
  kcRLEBuffer loaded;
  in >> loaded;
  EXPECT_EQ(loaded, rle);
  for (const auto& [w, h, units, reason] : kBadUnits) {
    EXPECT_THROW(kcRLEBuffer(w, h, units), kcShapesError::BadParams) << reason;
    kcMemArchive store;
    store << w << h << units;
    kcMemArchive load(store.bytes());
    kcRLEBuffer target = rle;
    try {
      load >> target;
      ADD_FAILURE() << "loaded: " << reason;
    } catch (const kcArchive::Corrupt& e) {
      EXPECT_NE(e.message().find(reason), std::wstring::npos) << e.message();
    }
    EXPECT_EQ(target, rle) << reason;  // a failed load changes nothing
  }
}

}  // namespace
