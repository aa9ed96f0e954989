// Reading PNG files as 8-bit grey images (what dispc render draws over):
// every colour type comes back as grey, and a file that is not a PNG is an
// error naming it.
#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "foundation/exception.h"
#include "imageio/imageio.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A PNG of the given in-memory format, through libpng's own writer.
Bytes encode(png_uint_32 format, png_uint_32 width, png_uint_32 height, const void* pels,
             const void* colourMap = nullptr, png_uint_32 mapEntries = 0) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  image.colormap_entries = mapEntries;
  png_alloc_size_t size = 0;
  EXPECT_TRUE(png_image_write_get_memory_size(image, size, 0, pels, 0, colourMap));
  Bytes out(size);
  EXPECT_TRUE(png_image_write_to_memory(&image, out.data(), &size, 0, pels, 0, colourMap));
  out.resize(size);
  return out;
}

std::string scratch(const char* name) { return (std::filesystem::path(DISPC_TOOL_SCRATCH) / name).string(); }

std::string messageOf(const std::function<void()>& read) {
  try {
    read();
  } catch (const kcExceptionWithString& e) {
    return e.what();
  }
  return "(nothing thrown)";
}

TEST(ReadPng, GreyComesBackAsWritten) {
  kcPelBuffer<unsigned char> image(7, 3);
  for (long y = 0; y < 3; ++y)
    for (long x = 0; x < 7; ++x) image.put(x, y, static_cast<unsigned char>(40 * y + x));
  std::filesystem::create_directories(DISPC_TOOL_SCRATCH);
  const std::string path = scratch("grey.png");
  kfWritePng(image, path);
  const kcPelBuffer<unsigned char> back = kfReadPng(path);
  ASSERT_EQ(back.width(), 7);
  ASSERT_EQ(back.height(), 3);
  for (long y = 0; y < 3; ++y)
    for (long x = 0; x < 7; ++x) EXPECT_EQ(back.get(x, y), 40 * y + x) << x << "," << y;
  std::remove(path.c_str());
}

TEST(ReadPng, ColourBecomesItsLuminance) {
  const std::uint8_t rgb[] = {255, 255, 255, 0, 0, 0, 128, 128, 128, 255, 0, 0, 0, 255, 0};
  const kcPelBuffer<unsigned char> image = kfDecodePng(encode(PNG_FORMAT_RGB, 5, 1, rgb));
  ASSERT_EQ(image.width(), 5);
  EXPECT_EQ(image.get(0, 0), 255);
  EXPECT_EQ(image.get(1, 0), 0);
  EXPECT_EQ(image.get(2, 0), 128);
  // Green looks brighter than red; both lie between black and white.
  EXPECT_GT(image.get(3, 0), 0);
  EXPECT_GT(image.get(4, 0), image.get(3, 0));
  EXPECT_LT(image.get(4, 0), 255);
}

TEST(ReadPng, AlphaIsCompositedOverBlack) {
  const std::uint8_t rgba[] = {255, 255, 255, 0, 255, 255, 255, 255, 255, 255, 255, 128};
  const kcPelBuffer<unsigned char> image = kfDecodePng(encode(PNG_FORMAT_RGBA, 3, 1, rgba));
  EXPECT_EQ(image.get(0, 0), 0);
  EXPECT_EQ(image.get(1, 0), 255);
  EXPECT_GT(image.get(2, 0), 0);
  EXPECT_LT(image.get(2, 0), 255);
}

TEST(ReadPng, SixteenBitAndPaletteImagesBecomeEightBitGrey) {
  const std::uint16_t deep[] = {0, 65535};
  const kcPelBuffer<unsigned char> linear = kfDecodePng(encode(PNG_FORMAT_LINEAR_Y, 2, 1, deep));
  EXPECT_EQ(linear.get(0, 0), 0);
  EXPECT_EQ(linear.get(1, 0), 255);
  const std::uint8_t map[] = {255, 255, 255, 0, 0, 0, 128, 128, 128};
  const std::uint8_t indices[] = {1, 0, 2, 0};
  const kcPelBuffer<unsigned char> palette =
      kfDecodePng(encode(PNG_FORMAT_RGB_COLORMAP, 2, 2, indices, map, 3));
  EXPECT_EQ(palette.get(0, 0), 0);
  EXPECT_EQ(palette.get(1, 0), 255);
  EXPECT_EQ(palette.get(0, 1), 128);
  EXPECT_EQ(palette.get(1, 1), 255);
}

TEST(ReadPng, WhatIsNotAPngIsAnErrorNamingTheFile) {
  std::filesystem::create_directories(DISPC_TOOL_SCRATCH);
  const std::string missing = scratch("missing.png");
  EXPECT_EQ(messageOf([&] { (void)kfReadPng(missing); }),
            "cannot read " + missing + ": No such file or directory");
  const std::string text = scratch("text.png");
  std::ofstream(text) << "not an image at all\n";
  const std::string notPng = messageOf([&] { (void)kfReadPng(text); });
  EXPECT_EQ(notPng.rfind("cannot read " + text + ": ", 0), 0u) << notPng;
  EXPECT_GT(notPng.size(), ("cannot read " + text + ": ").size());
  std::remove(text.c_str());
  // Cut in the middle of its pels.
  const std::uint8_t grey[64 * 64] = {};
  Bytes png = encode(PNG_FORMAT_GRAY, 64, 64, grey);
  png.resize(png.size() - 20);
  EXPECT_EQ(messageOf([&] { (void)kfDecodePng(png); }).rfind("cannot read PNG: ", 0), 0u);
}

TEST(ReadPng, AHeaderClaimingAHugeImageIsRefusedBeforeItsPels) {
  const std::uint8_t grey[1] = {};
  for (const std::uint32_t width : {65536u, 40000u}) {
    Bytes png = encode(PNG_FORMAT_GRAY, 1, 1, grey);
    // The width in the header chunk (after the 8-byte signature, its length
    // and type), and the chunk's check sum over type and data.
    const std::uint32_t height = width == 65536u ? 1 : 40000;
    for (int i = 0; i < 4; ++i) {
      png[16 + i] = static_cast<std::uint8_t>(width >> (24 - 8 * i));
      png[20 + i] = static_cast<std::uint8_t>(height >> (24 - 8 * i));
    }
    const uLong sum = crc32(crc32(0L, nullptr, 0), png.data() + 12, 17);
    for (int i = 0; i < 4; ++i) png[29 + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    EXPECT_EQ(messageOf([&] { (void)kfDecodePng(png); }), "cannot read PNG: an image too large") << width;
  }
}

}  // namespace
