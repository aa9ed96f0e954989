// kcRLEBuffer: an 8-bit image compressed as runs of equal pels.
//
// Each 16-bit unit is (run << 8) | value: run pels (1 to 255) of one value.
// Rows follow each other in order; a row's runs add up to exactly the width
// and never continue into the next row; a longer stretch of one value is cut
// into runs of 255 and a remainder. After the last row comes one zero unit.
// An image without pels (zero width or height) is that zero unit alone. Every buffer this class holds
// satisfies these rules: encode() produces them, and the checked constructor
// and the archive loader refuse units that break them.
//
// A default buffer is null: no size, no units, no allocation; encoding a null
// pel buffer gives a null buffer, and decoding one gives a null pel buffer.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/pelbuffer.h"

class kcArchive;

class kcRLEBuffer {
 public:
  // Longest run one unit can hold.
  static constexpr unsigned kMaxRun = 255;

  kcRLEBuffer() noexcept = default;
  // The encoding of an image.
  explicit kcRLEBuffer(const kcPelBuffer_const<unsigned char>& image) { encode(image); }
  // Given units, checked: a negative size or units that do not encode exactly a
  // width x height image throw kcShapesError::BadParams. (0, 0, {}) is null.
  kcRLEBuffer(long width, long height, std::vector<std::uint16_t> units);

  // Replaces the contents by the encoding of the image's window.
  void encode(const kcPelBuffer_const<unsigned char>& image);
  // A new image holding the decoded pels.
  [[nodiscard]] kcPelBuffer<unsigned char> decode() const;

  [[nodiscard]] bool isNull() const noexcept { return units_.empty(); }
  [[nodiscard]] long width() const noexcept { return width_; }
  [[nodiscard]] long height() const noexcept { return height_; }
  [[nodiscard]] const std::vector<std::uint16_t>& units() const noexcept { return units_; }

  friend bool operator==(const kcRLEBuffer&, const kcRLEBuffer&) = default;

 private:
  long width_ = 0;
  long height_ = 0;
  std::vector<std::uint16_t> units_;

  friend kcArchive& operator||(kcArchive& ar, kcRLEBuffer& buffer);
};

// Archive form: width and height (32-bit each), then the units as a vector
// (32-bit count, then the units). Loading checks the units as the checked
// constructor does and throws kcArchive::Corrupt for bad ones.
kcArchive& operator||(kcArchive& ar, kcRLEBuffer& buffer);
