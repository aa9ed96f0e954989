// Writing 8-bit pel buffers as grey images, to look at synthetic images and
// camera frames outside the program: PGM (binary, maxval 255, no library)
// and PNG (8-bit grey, through libpng). Reading PNG files back as 8-bit grey
// images, to draw over a camera frame or a picture saved earlier.
//
// The window of the buffer is written, row by row from its top. A file that
// cannot be opened or written throws kcExceptionWithString naming the path
// and the reason; a half-written file is removed.
//
// Reading takes a PNG of any colour type, bit depth and interlace: colour
// becomes grey by its luminance, an alpha channel is removed by compositing
// over black, 16-bit samples are reduced to 8 bits. A file that cannot be
// opened or is not a valid PNG, or an image beyond 65535 pels a side or 2^28
// pels in all, throws kcExceptionWithString "cannot read <path>: <reason>"
// before the pels are allocated; the image comes back with the identity
// client transform.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "foundation/pelbuffer.h"

void kfWritePgm(const kcPelBuffer_const<unsigned char>& image, const std::string& path);
void kfWritePng(const kcPelBuffer_const<unsigned char>& image, const std::string& path);
// The PNG file's bytes.
[[nodiscard]] std::vector<std::uint8_t> kfEncodePng(const kcPelBuffer_const<unsigned char>& image);

[[nodiscard]] kcPelBuffer<unsigned char> kfReadPng(const std::string& path);
// The image a PNG file's bytes hold; errors name "PNG" for the path.
[[nodiscard]] kcPelBuffer<unsigned char> kfDecodePng(std::span<const std::uint8_t> bytes);
