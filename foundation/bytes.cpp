#include "foundation/bytes.h"

#include <type_traits>

namespace {
constexpr std::uint32_t kSurrogateFirst = 0xD800;
constexpr std::uint32_t kLowSurrogateFirst = 0xDC00;
constexpr std::uint32_t kSurrogateEnd = 0xE000;
constexpr std::uint32_t kFirstSupplementary = 0x10000;
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;

bool isSurrogate(std::uint32_t u) { return u >= kSurrogateFirst && u < kSurrogateEnd; }
bool isHighSurrogate(std::uint32_t u) { return u >= kSurrogateFirst && u < kLowSurrogateFirst; }
bool isLowSurrogate(std::uint32_t u) { return u >= kLowSurrogateFirst && u < kSurrogateEnd; }

// wchar_t may be signed: go through its unsigned twin so that a negative
// value is seen as the large one it is.
std::uint32_t codeOf(wchar_t c) {
  return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(c));
}
}  // namespace

std::optional<std::u16string> kfToUtf16(std::wstring_view text, keSurrogates surrogates) {
  std::u16string units;
  units.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t u = codeOf(text[i]);
    if (u > kLastCodePoint) return std::nullopt;
    if (isSurrogate(u)) {
      // Where wchar_t is 16 bits wide the text is UTF-16 already, and a pair
      // is one supplementary character rather than two surrogates: refusing
      // it would refuse text that kfFromUtf16 itself returns.
      if (sizeof(wchar_t) == 2 && isHighSurrogate(u) && i + 1 < text.size() &&
          isLowSurrogate(codeOf(text[i + 1]))) {
        units.push_back(static_cast<char16_t>(u));
        units.push_back(static_cast<char16_t>(codeOf(text[++i])));
        continue;
      }
      if (surrogates == keSurrogates::refuse) return std::nullopt;
    }
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
    const bool pair =
        sizeof(wchar_t) >= 4 && isHighSurrogate(u) && i + 1 < units.size() && isLowSurrogate(units[i + 1]);
    if (pair) u = kFirstSupplementary + ((u - kSurrogateFirst) << 10) + (units[++i] - kLowSurrogateFirst);
    text.push_back(static_cast<wchar_t>(u));
  }
  return text;
}

std::string kfToUtf8(std::wstring_view text) {
  constexpr std::uint32_t kReplacement = 0xFFFD;
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t c = codeOf(text[i]);
    if (sizeof(wchar_t) == 2 && isHighSurrogate(c) && i + 1 < text.size() &&
        isLowSurrogate(codeOf(text[i + 1])))
      c = kFirstSupplementary + ((c - kSurrogateFirst) << 10) + (codeOf(text[++i]) - kLowSurrogateFirst);
    if (c > kLastCodePoint || isSurrogate(c)) c = kReplacement;
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | c >> 6);
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < kFirstSupplementary) {
      out += static_cast<char>(0xE0 | c >> 12);
      out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | c >> 18);
      out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
      out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}
