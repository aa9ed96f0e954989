// Colours: kcRGB, a plain red/green/blue triple, and kcColor, a colour that is
// a colour-map index, an RGB triple, or (for the sixteen stock colours) both.
//
// kcColor equality is deliberately not transitive: two colours are equal when
// both have an index and the indices match, or else when both have a triple
// and the triples match. So kcColor(249) == kcColor::red and
// kcColor(255, 0, 0) == kcColor::red, while kcColor(249) != kcColor(255, 0, 0).
//
// Archive forms: kcRGB is 4 bytes (signed version 0, r, g, b); kcColor is 7
// bytes (signed version 0, flags, index, then its kcRGB record). A record is
// read completely before the target changes, so a rejected or truncated record
// leaves the target as it was. A flags byte with bits other than 0 to 2 set,
// or with neither the index nor the triple bit, cannot be a colour and loads
// as kcArchive::Corrupt.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/archive.h"
#include "foundation/kgr/kgr_color.h"

class kcRGB {
 public:
  constexpr kcRGB() noexcept = default;
  constexpr kcRGB(unsigned char r, unsigned char g, unsigned char b) noexcept : r_(r), g_(g), b_(b) {}

  [[nodiscard]] constexpr unsigned char r() const noexcept { return r_; }
  [[nodiscard]] constexpr unsigned char g() const noexcept { return g_; }
  [[nodiscard]] constexpr unsigned char b() const noexcept { return b_; }
  void r(unsigned char v) noexcept { r_ = v; }
  void g(unsigned char v) noexcept { g_ = v; }
  void b(unsigned char v) noexcept { b_ = v; }
  void rgb(unsigned char r, unsigned char g, unsigned char b) noexcept {
    r_ = r;
    g_ = g;
    b_ = b;
  }

  // 0x00RRGGBB.
  [[nodiscard]] constexpr std::uint32_t rgb() const noexcept {
    return (std::uint32_t{r_} << 16) | (std::uint32_t{g_} << 8) | b_;
  }
  // 0x00BBGGRR.
  [[nodiscard]] constexpr std::uint32_t bgr() const noexcept {
    return (std::uint32_t{b_} << 16) | (std::uint32_t{g_} << 8) | r_;
  }
  // 5-5-5 bits, bit 15 clear.
  [[nodiscard]] constexpr std::uint16_t rgb15() const noexcept {
    return static_cast<std::uint16_t>(((r_ >> 3) << 10) | ((g_ >> 3) << 5) | (b_ >> 3));
  }
  // 5-6-5 bits.
  [[nodiscard]] constexpr std::uint16_t rgb16() const noexcept {
    return static_cast<std::uint16_t>(((r_ >> 3) << 11) | ((g_ >> 2) << 5) | (b_ >> 3));
  }

  [[nodiscard]] constexpr bool operator==(const kcRGB& o) const noexcept {
    return r_ == o.r_ && g_ == o.g_ && b_ == o.b_;
  }
  [[nodiscard]] constexpr bool operator!=(const kcRGB& o) const noexcept { return !(*this == o); }
  // Brightness order: the integer mean (r + g + b) / 3, fraction discarded.
  // Different triples of the same mean are neither less nor greater.
  [[nodiscard]] constexpr bool operator<(const kcRGB& o) const noexcept { return mean_() < o.mean_(); }
  [[nodiscard]] constexpr bool operator>(const kcRGB& o) const noexcept { return mean_() > o.mean_(); }

 private:
  friend kcArchive& operator||(kcArchive& ar, kcRGB& c);
  [[nodiscard]] constexpr int mean_() const noexcept { return (r_ + g_ + b_) / 3; }

  unsigned char r_ = 0;
  unsigned char g_ = 0;
  unsigned char b_ = 0;
};

class kcColor {
 public:
  // Flag bits.
  static constexpr unsigned char kStockFlag = 1;
  static constexpr unsigned char kRGBFlag = 2;
  static constexpr unsigned char kIndexFlag = 4;

  // An index colour; the default is index colour 0, not RGB black.
  constexpr kcColor(unsigned char index = 0) noexcept : flags_(kIndexFlag), index_(index) {}
  // RGB-only colours.
  constexpr kcColor(unsigned char r, unsigned char g, unsigned char b) noexcept
      : flags_(kRGBFlag), rgb_(r, g, b) {}
  constexpr kcColor(const kcRGB& rgb) noexcept : flags_(kRGBFlag), rgb_(rgb) {}

  [[nodiscard]] constexpr bool isStockColor() const noexcept { return (flags_ & kStockFlag) != 0; }
  [[nodiscard]] constexpr bool isRGBColor() const noexcept { return (flags_ & kRGBFlag) != 0; }
  [[nodiscard]] constexpr bool isIndexColor() const noexcept { return (flags_ & kIndexFlag) != 0; }

  // Throws kcUIError::NotIndexColor unless this is an index colour.
  [[nodiscard]] unsigned char index() const;
  // The stored triple, unchecked: (0, 0, 0) for an index-only colour.
  [[nodiscard]] constexpr const kcRGB& rgbStruct() const noexcept { return rgb_; }
  // The packings of kcRGB; each throws kcUIError::NotRGBColor unless this is
  // an RGB colour.
  [[nodiscard]] std::uint32_t rgb() const;
  [[nodiscard]] std::uint32_t bgr() const;
  [[nodiscard]] std::uint16_t rgb15() const;
  [[nodiscard]] std::uint16_t rgb16() const;

  // Index match first, then triple match; not transitive (see the top).
  [[nodiscard]] constexpr bool operator==(const kcColor& o) const noexcept {
    if (isIndexColor() && o.isIndexColor() && index_ == o.index_) return true;
    return isRGBColor() && o.isRGBColor() && rgb_ == o.rgb_;
  }
  [[nodiscard]] constexpr bool operator!=(const kcColor& o) const noexcept { return !(*this == o); }

  // Stock colours: index and triple both valid. Each member is a copy of what
  // its accessor returns; the accessors are safe in other static initialisers.
  static const kcColor black;
  static const kcColor dkGrey;
  static const kcColor grey;
  static const kcColor ltGrey;
  static const kcColor white;
  static const kcColor red;
  static const kcColor dkRed;
  static const kcColor orange;
  static const kcColor yellow;
  static const kcColor green;
  static const kcColor dkGreen;
  static const kcColor cyan;
  static const kcColor blue;
  static const kcColor purple;
  static const kcColor magenta;
  static const kcColor pass;
  static const kcColor& dkGray;
  static const kcColor& gray;
  static const kcColor& ltGray;

  static const kcColor& blackColor();
  static const kcColor& dkGreyColor();
  static const kcColor& greyColor();
  static const kcColor& ltGreyColor();
  static const kcColor& whiteColor();
  static const kcColor& redColor();
  static const kcColor& dkRedColor();
  static const kcColor& orangeColor();
  static const kcColor& yellowColor();
  static const kcColor& greenColor();
  static const kcColor& dkGreenColor();
  static const kcColor& cyanColor();
  static const kcColor& blueColor();
  static const kcColor& purpleColor();
  static const kcColor& magentaColor();
  static const kcColor& passColor();

 private:
  friend kcArchive& operator||(kcArchive& ar, kcColor& c);
  friend constexpr std::uint64_t kfSketchColorBits(const kcColor& c) noexcept;
  friend bool kfLoadSketchColor(const unsigned char* p, kcColor& c) noexcept;
  // Stock colours only.
  constexpr kcColor(unsigned char index, unsigned char r, unsigned char g, unsigned char b) noexcept
      : flags_(kStockFlag | kRGBFlag | kIndexFlag), index_(index), rgb_(r, g, b) {}
  const kcRGB& checkedRGB_() const;

  unsigned char flags_ = kIndexFlag;
  unsigned char index_ = 0;
  kcRGB rgb_;
};

// kgr_color codes: 0xRRGGBB80 is an explicit colour (bit 7 of the lowest byte
// set); otherwise the code is a stock-colour number 0 to 15, in the order
// black, dkGrey, grey, ltGrey, white, red, dkRed, orange, yellow, green,
// dkGreen, cyan, blue, purple, magenta, pass.
// An explicit code gives an RGB-only colour; codes 1 to 15 give the stock
// colour; anything else gives black.
[[nodiscard]] kcColor kfColor(kgr_color code);
// A non-stock colour leaves as its triple (an index-only colour as explicit
// black, 0x00000080); a stock colour as the code of the first stock colour it
// equals, or 0.
[[nodiscard]] kgr_color kfColor(const kcColor& color);
// The colour as a person reads it: "stock index 249 rgb(255,0,0)",
// "index 5", "rgb(12,34,56)".
[[nodiscard]] std::string kfColorText(const kcColor& color);

// The sketch form of a colour: 6 bytes, a 32-bit field holding r, g, b and
// the index from the lowest byte up, then the flags as a 16-bit field.
inline constexpr long kSketchColorSize = 6;
// The 6 bytes of c as the low 48 bits of a number, the first byte lowest.
[[nodiscard]] constexpr std::uint64_t kfSketchColorBits(const kcColor& c) noexcept {
  return c.rgb_.r() | (std::uint64_t{c.rgb_.g()} << 8) | (std::uint64_t{c.rgb_.b()} << 16) |
         (std::uint64_t{c.index_} << 24) | (std::uint64_t{c.flags_} << 32);
}
// Writes c's 6 bytes at p.
inline void kfStoreSketchColor(unsigned char* p, const kcColor& c) noexcept {
  const std::uint64_t bits = kfSketchColorBits(c);
  kfStoreLE(p, static_cast<std::uint32_t>(bits));
  kfStoreLE(p + 4, static_cast<std::uint16_t>(bits >> 32));
}
// The colour of the 6 bytes at p; false (and c unchanged) for bytes that are
// no colour: flag bits other than 0 to 2, neither index nor triple.
[[nodiscard]] inline bool kfLoadSketchColor(const unsigned char* p, kcColor& c) noexcept {
  const auto packed = kfLoadLE<std::uint32_t>(p);
  const auto flags = kfLoadLE<std::uint16_t>(p + 4);
  // The same colours as the archive accepts.
  if (flags & ~(kcColor::kStockFlag | kcColor::kRGBFlag | kcColor::kIndexFlag)) return false;
  if (!(flags & (kcColor::kIndexFlag | kcColor::kRGBFlag))) return false;
  c.flags_ = static_cast<unsigned char>(flags);
  c.index_ = static_cast<unsigned char>(packed >> 24);
  c.rgb_ = kcRGB(static_cast<unsigned char>(packed), static_cast<unsigned char>(packed >> 8),
                 static_cast<unsigned char>(packed >> 16));
  return true;
}

kcArchive& operator||(kcArchive& ar, kcRGB& c);
kcArchive& operator||(kcArchive& ar, kcColor& c);
inline kcArchive& operator<<(kcArchive& ar, const kcRGB& c) { return ar || const_cast<kcRGB&>(c); }
inline kcArchive& operator>>(kcArchive& ar, kcRGB& c) { return ar || c; }
inline kcArchive& operator<<(kcArchive& ar, const kcColor& c) { return ar || const_cast<kcColor&>(c); }
inline kcArchive& operator>>(kcArchive& ar, kcColor& c) { return ar || c; }
