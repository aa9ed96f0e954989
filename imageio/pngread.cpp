// Reading PNG files through libpng's simplified interface, which does the
// conversions (palette, bit depth, colour to grey, alpha) and keeps its
// longjmp inside libpng.
#include <png.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "foundation/exception.h"
#include "imageio/imageio.h"

namespace {

// The largest image read: 65535 pels a side, 2^28 pels in all.
constexpr std::uint32_t kMaxSide = 65535;
constexpr std::uint64_t kMaxPels = std::uint64_t{1} << 28;

[[noreturn]] void readError(const std::string& path, const std::string& reason) {
  const std::string text = "cannot read " + path + ": " + reason;
  throw kcExceptionWithString(std::wstring(text.begin(), text.end()));
}

// Frees what libpng holds on every way out, a throw included.
struct ImageGuard {
  png_image& image;
  ~ImageGuard() { png_image_free(&image); }
};

// Finishes a read that png_image_begin_read_* started (began false when it
// failed). The buffer starts black: libpng composites an alpha channel onto
// what is already there when it is given no background colour.
kcPelBuffer<unsigned char> finishRead(png_image& image, bool began, const std::string& path) {
  ImageGuard guard{image};
  if (!began) readError(path, image.message);
  image.format = PNG_FORMAT_GRAY;
  // A pel buffer's sizes are longs, and a header may claim any size: what
  // no camera delivers is refused before anything is allocated.
  if (image.width > kMaxSide || image.height > kMaxSide ||
      std::uint64_t{image.width} * image.height > kMaxPels)
    readError(path, "an image too large");
  kcPelBuffer<unsigned char> pels(static_cast<long>(image.width), static_cast<long>(image.height));
  if (pels.width() == 0 || pels.height() == 0) readError(path, "an image without pels");
  // A new buffer's rows follow each other without padding.
  if (!png_image_finish_read(&image, nullptr, pels.row(0), static_cast<png_int_32>(image.width), nullptr))
    readError(path, image.message);
  return pels;
}

}  // namespace

kcPelBuffer<unsigned char> kfReadPng(const std::string& path) {
  // libpng's own message for a missing file says little: open it here first.
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) readError(path, std::strerror(errno));
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const bool began = png_image_begin_read_from_stdio(&image, file) != 0;
  try {
    kcPelBuffer<unsigned char> pels = finishRead(image, began, path);
    std::fclose(file);
    return pels;
  } catch (...) {
    std::fclose(file);
    throw;
  }
}

kcPelBuffer<unsigned char> kfDecodePng(std::span<const std::uint8_t> bytes) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const bool began = png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) != 0;
  return finishRead(image, began, "PNG");
}
