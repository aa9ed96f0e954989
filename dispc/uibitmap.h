// kcUIBitmap: a run-length-encoded 8-bit image together with what is needed to
// show it: the colour map from its pel values to palette indexes, and the pass
// (see-through) colour. Point icons and bitmap drawing on a tablet use it.
//
// A plain value; a default bitmap has no image, an empty map, passThrough
// false and passColor 0. isInit() asks whether the image has any pels, so an
// image 0 pels wide or high does not count.
#pragma once

#include <utility>
#include <vector>

#include "foundation/rlebuffer.h"

class kcUIBitmap {
 public:
  kcUIBitmap() = default;
  kcUIBitmap(kcRLEBuffer rleBuf, std::vector<unsigned char> colorMap, bool passThrough,
             unsigned char passColor)
      : rleBuf_(std::move(rleBuf)),
        colorMap_(std::move(colorMap)),
        passThrough_(passThrough),
        passColor_(passColor) {}

  [[nodiscard]] const kcRLEBuffer& rleBuf() const noexcept { return rleBuf_; }
  void rleBuf(kcRLEBuffer b) { rleBuf_ = std::move(b); }
  // Pel value -> palette index.
  [[nodiscard]] const std::vector<unsigned char>& colorMap() const noexcept { return colorMap_; }
  void colorMap(std::vector<unsigned char> m) { colorMap_ = std::move(m); }
  // When set, pels of passColor() are not drawn.
  [[nodiscard]] bool passThrough() const noexcept { return passThrough_; }
  void passThrough(bool on) noexcept { passThrough_ = on; }
  [[nodiscard]] unsigned char passColor() const noexcept { return passColor_; }
  void passColor(unsigned char c) noexcept { passColor_ = c; }

  // True when the image holds at least one pel.
  [[nodiscard]] bool isInit() const noexcept {
    return !rleBuf_.isNull() && rleBuf_.width() > 0 && rleBuf_.height() > 0;
  }

  friend bool operator==(const kcUIBitmap&, const kcUIBitmap&) = default;

 private:
  kcRLEBuffer rleBuf_;
  std::vector<unsigned char> colorMap_;
  bool passThrough_ = false;
  unsigned char passColor_ = 0;
};
