// kgr_color: the colour code of the graphics-list library, a signed 32-bit
// value in one of two forms:
//   - an explicit colour 0xRRGGBB80: bit 7 of the lowest byte set, red in bits
//     24-31, green in bits 16-23, blue in bits 8-15 (bits 0-6 are ignored);
//   - a stock-colour number 0 to 15 (bit 7 of the lowest byte clear), in the
//     order of the constants below. Readers take any other value with bit 7
//     clear as black.
#pragma once

#include <cstdint>

typedef std::int32_t kgr_color;

inline constexpr kgr_color KGR_COLOR_BLACK = 0;
inline constexpr kgr_color KGR_COLOR_DKGREY = 1;
inline constexpr kgr_color KGR_COLOR_GREY = 2;
inline constexpr kgr_color KGR_COLOR_LTGREY = 3;
inline constexpr kgr_color KGR_COLOR_WHITE = 4;
inline constexpr kgr_color KGR_COLOR_RED = 5;
inline constexpr kgr_color KGR_COLOR_DKRED = 6;
inline constexpr kgr_color KGR_COLOR_ORANGE = 7;
inline constexpr kgr_color KGR_COLOR_YELLOW = 8;
inline constexpr kgr_color KGR_COLOR_GREEN = 9;
inline constexpr kgr_color KGR_COLOR_DKGREEN = 10;
inline constexpr kgr_color KGR_COLOR_CYAN = 11;
inline constexpr kgr_color KGR_COLOR_BLUE = 12;
inline constexpr kgr_color KGR_COLOR_PURPLE = 13;
inline constexpr kgr_color KGR_COLOR_MAGENTA = 14;
inline constexpr kgr_color KGR_COLOR_PASS = 15;

// The explicit colour (r, g, b).
[[nodiscard]] constexpr kgr_color kgr_color_rgb(std::uint8_t r, std::uint8_t g, std::uint8_t b) noexcept {
  return static_cast<kgr_color>((std::uint32_t{r} << 24) | (std::uint32_t{g} << 16) |
                                (std::uint32_t{b} << 8) | 0x80u);
}
[[nodiscard]] constexpr bool kgr_color_isRGB(kgr_color c) noexcept { return (c & 0x80) != 0; }
[[nodiscard]] constexpr std::uint8_t kgr_color_red(kgr_color c) noexcept {
  return static_cast<std::uint8_t>(static_cast<std::uint32_t>(c) >> 24);
}
[[nodiscard]] constexpr std::uint8_t kgr_color_green(kgr_color c) noexcept {
  return static_cast<std::uint8_t>(static_cast<std::uint32_t>(c) >> 16);
}
[[nodiscard]] constexpr std::uint8_t kgr_color_blue(kgr_color c) noexcept {
  return static_cast<std::uint8_t>(static_cast<std::uint32_t>(c) >> 8);
}
