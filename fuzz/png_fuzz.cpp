// Reads arbitrary bytes as a PNG image (kfDecodePng, what the dispc tool
// draws backgrounds with). Reading may only fail with a kcException, and
// must not allocate for an image it would refuse; a crash, a sanitizer
// report, a leak or another exception is a bug. An image that reads is
// written as PNG again and must read back with the same pels.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include "imageio/imageio.h"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "png_fuzz: %s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kcPelBuffer<unsigned char> image;
  try {
    image = kfDecodePng(std::span<const std::uint8_t>(data, size));
  } catch (const kcException&) {
    return 0;
  }
  try {
    const std::vector<std::uint8_t> png = kfEncodePng(image);
    const kcPelBuffer<unsigned char> again = kfDecodePng(png);
    if (again.width() != image.width() || again.height() != image.height())
      fail("an image written again reads back another size");
    for (long y = 0; y < image.height(); ++y)
      for (long x = 0; x < image.width(); ++x)
        if (again.get(x, y) != image.get(x, y)) fail("an image written again reads back other pels");
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s\n", e.what());
    fail("an image that was read cannot be written and read again");
  }
  return 0;
}
