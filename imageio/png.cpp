#include <png.h>

#include <cstdio>
#include <string>

#include "imageio/imageio.h"
#include "imageio/imageio_p.h"

namespace {
// libpng reports errors through a callback that must not return: the
// message is kept and the writer unwinds to its setjmp.
struct PngError {
  std::string message;
};

void onError(png_structp png, png_const_charp message) {
  static_cast<PngError*>(png_get_error_ptr(png))->message = message;
  png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void append(png_structp png, png_bytep data, png_size_t length) {
  auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
  out->insert(out->end(), data, data + length);
}

void flush(png_structp) {}

// Encodes into out; the error text when libpng fails, else empty. Kept free
// of C++ objects with destructors between setjmp and longjmp.
std::string encode(const kcPelBuffer_const<unsigned char>& image, std::vector<std::uint8_t>& out) {
  PngError error;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, onError, onWarning);
  if (png == nullptr) return "libpng could not start";
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return error.message.empty() ? "libpng failed" : error.message;
  }
  png_set_write_fn(png, &out, append, flush);
  png_set_IHDR(png, info, static_cast<png_uint_32>(image.width()), static_cast<png_uint_32>(image.height()),
               8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (long y = 0; y < image.height(); ++y) png_write_row(png, const_cast<png_bytep>(image.row(y)));
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return {};
}
}  // namespace

std::vector<std::uint8_t> kfEncodePng(const kcPelBuffer_const<unsigned char>& image) {
  std::vector<std::uint8_t> out;
  // PNG holds no empty image.
  if (image.width() <= 0 || image.height() <= 0) kfImageWriteError_("PNG", "an image without pels");
  const std::string error = encode(image, out);
  if (!error.empty()) kfImageWriteError_("PNG", error);
  return out;
}

void kfWritePng(const kcPelBuffer_const<unsigned char>& image, const std::string& path) {
  if (image.width() <= 0 || image.height() <= 0) kfImageWriteError_(path, "an image without pels");
  const std::vector<std::uint8_t> bytes = kfEncodePng(image);
  kfWriteImageFile_(
      path, [&](std::FILE* f) { return std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size(); });
}
