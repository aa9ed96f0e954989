#include "imageio/imageio.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "imageio/imageio_p.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A 5 x 3 window of a larger image, its pels numbered.
kcPelBuffer<unsigned char> sample() {
  kcPelBuffer<unsigned char> image(9, 7);
  for (long y = 0; y < 7; ++y)
    for (long x = 0; x < 9; ++x) image.put(x, y, static_cast<unsigned char>(10 * y + x));
  return image.window(2, 3, 5, 3);
}

std::string scratch(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }

Bytes readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

TEST(ImageIO, PgmIsTheHeaderThenTheWindowsRows) {
  const std::string path = scratch("dispc_imageio_test.pgm");
  kfWritePgm(sample(), path);
  const std::string header = "P5\n5 3\n255\n";
  Bytes expected(header.begin(), header.end());
  for (long y = 3; y < 6; ++y)
    for (long x = 2; x < 7; ++x) expected.push_back(static_cast<std::uint8_t>(10 * y + x));
  EXPECT_EQ(readFile(path), expected);
  std::remove(path.c_str());
}

TEST(ImageIO, PngReadsBackAsTheSamePels) {
  const Bytes png = kfEncodePng(sample());
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
  image.format = PNG_FORMAT_GRAY;
  EXPECT_EQ(image.width, 5u);
  EXPECT_EQ(image.height, 3u);
  Bytes pels(PNG_IMAGE_SIZE(image));
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, pels.data(), 0, nullptr));
  for (long y = 0; y < 3; ++y)
    for (long x = 0; x < 5; ++x) EXPECT_EQ(pels[y * 5 + x], 10 * (y + 3) + x + 2);
  // The file holds exactly the encoded bytes.
  const std::string path = scratch("dispc_imageio_test.png");
  kfWritePng(sample(), path);
  EXPECT_EQ(readFile(path), png);
  std::remove(path.c_str());
}

TEST(ImageIO, UnwritablePathsAndEmptyImagesAreRefusedByName) {
  const std::string path = "/nonexistent-dir/x.png";
  try {
    kfWritePng(sample(), path);
    ADD_FAILURE() << "wrote into a missing folder";
  } catch (const kcExceptionWithString& e) {
    EXPECT_EQ(e.text().rfind(L"cannot write /nonexistent-dir/x.png: ", 0), 0u);
  }
  EXPECT_THROW(kfWritePgm(sample(), "/nonexistent-dir/x.pgm"), kcExceptionWithString);
  // A write that fails takes back the half-written file.
  const std::string half = scratch("dispc_imageio_half.pgm");
  EXPECT_THROW(kfWriteImageFile_(half,
                                 [](std::FILE* f) {
                                   std::fputs("P5", f);
                                   return false;
                                 }),
               kcExceptionWithString);
  EXPECT_FALSE(std::filesystem::exists(half));
  EXPECT_THROW((void)kfEncodePng(kcPelBuffer<unsigned char>(0, 4)), kcExceptionWithString);
}

}  // namespace
