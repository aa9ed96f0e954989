// Writing 8-bit pel buffers as grey images, to look at synthetic images and
// camera frames outside the program: PGM (binary, maxval 255, no library)
// and PNG (8-bit grey, through libpng).
//
// The window of the buffer is written, row by row from its top. A file that
// cannot be opened or written throws kcExceptionWithString naming the path
// and the reason; a half-written file is removed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/pelbuffer.h"

void kfWritePgm(const kcPelBuffer_const<unsigned char>& image, const std::string& path);
void kfWritePng(const kcPelBuffer_const<unsigned char>& image, const std::string& path);
// The PNG file's bytes.
[[nodiscard]] std::vector<std::uint8_t> kfEncodePng(const kcPelBuffer_const<unsigned char>& image);
