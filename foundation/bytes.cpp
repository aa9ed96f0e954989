#include "foundation/bytes.h"

namespace {
constexpr std::uint32_t kSurrogateFirst = 0xD800;
constexpr std::uint32_t kLowSurrogateFirst = 0xDC00;
constexpr std::uint32_t kSurrogateEnd = 0xE000;
constexpr std::uint32_t kFirstSupplementary = 0x10000;
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;
}  // namespace

std::optional<std::u16string> kfToUtf16(std::wstring_view text, keSurrogates surrogates) {
  std::u16string units;
  units.reserve(text.size());
  for (wchar_t c : text) {
    // wchar_t may be signed: go through its unsigned twin so that a negative
    // value is seen as the large one it is.
    auto u = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(c));
    if (u > kLastCodePoint) return std::nullopt;
    if (u >= kSurrogateFirst && u < kSurrogateEnd && surrogates == keSurrogates::refuse) return std::nullopt;
    if (u >= kFirstSupplementary) {
      u -= kFirstSupplementary;
      units.push_back(static_cast<char16_t>(kSurrogateFirst | (u >> 10)));
      units.push_back(static_cast<char16_t>(kLowSurrogateFirst | (u & 0x3FF)));
    } else {
      units.push_back(static_cast<char16_t>(u));
    }
  }
  return units;
}

std::wstring kfFromUtf16(std::u16string_view units) {
  std::wstring text;
  text.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    std::uint32_t u = units[i];
    const bool pair = sizeof(wchar_t) >= 4 && u >= kSurrogateFirst && u < kLowSurrogateFirst &&
                      i + 1 < units.size() && units[i + 1] >= kLowSurrogateFirst &&
                      units[i + 1] < kSurrogateEnd;
    if (pair) u = kFirstSupplementary + ((u - kSurrogateFirst) << 10) + (units[++i] - kLowSurrogateFirst);
    text.push_back(static_cast<wchar_t>(u));
  }
  return text;
}
