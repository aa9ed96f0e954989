// The byte codec: little-endian, unaligned values over plain byte memory.
//
// Everything the library puts on the wire goes through here: the archive, the
// graphics-list records, the graphic properties' sketch record and the sketch.
// kfStoreLE / kfLoadLE work at a place the caller has already bounded;
// kcByteWriter appends to a byte vector; kcByteReader walks a span and refuses
// (returns false, reads nothing) rather than run past its end, so each caller
// turns a short read into its own error.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Types the codec moves: integers, characters and floating point, bool as one byte.
template <class T>
concept kcWireScalar = std::is_arithmetic_v<T>;

namespace kcBytesDetail {
template <class T>
inline T byteSwapped(T value) noexcept {
  unsigned char b[sizeof(T)];
  std::memcpy(b, &value, sizeof(T));
  for (std::size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(b[i], b[sizeof(T) - 1 - i]);
  std::memcpy(&value, b, sizeof(T));
  return value;
}
}  // namespace kcBytesDetail

// Writes value at p, least significant byte first.
template <kcWireScalar T>
inline void kfStoreLE(std::uint8_t* p, T value) noexcept {
  if constexpr (std::endian::native == std::endian::big) value = kcBytesDetail::byteSwapped(value);
  std::memcpy(p, &value, sizeof(T));
}

// Reads a value stored by kfStoreLE at p.
template <kcWireScalar T>
[[nodiscard]] inline T kfLoadLE(const std::uint8_t* p) noexcept {
  // Any other byte than 0 is true: copying it into a bool would not be.
  if constexpr (std::is_same_v<T, bool>) return p[0] != 0;
  T value;
  std::memcpy(&value, p, sizeof(T));
  if constexpr (std::endian::native == std::endian::big) value = kcBytesDetail::byteSwapped(value);
  return value;
}

// Appends values to a byte vector it does not own. The writer works ahead of
// the vector: it grows it in large steps and keeps its own count of the bytes
// written, so an append is a bounds test and a store. finish() (and the
// destructor) cut the vector to exactly what was written.
class kcByteWriter {
 public:
  explicit kcByteWriter(std::vector<std::uint8_t>& out) noexcept : out_(&out), size_(out.size()) {}
  kcByteWriter(const kcByteWriter&) = delete;
  kcByteWriter& operator=(const kcByteWriter&) = delete;
  ~kcByteWriter() { finish(); }

  template <kcWireScalar T>
  void put(T value) {
    kfStoreLE(grow(sizeof(T)), value);
  }
  void putBytes(const void* data, std::size_t n) {
    if (n) std::memcpy(grow(n), data, n);
  }
  // Appends n bytes and returns where they start, for a record filled in
  // place with kfStoreLE. The bytes hold no particular value until written.
  [[nodiscard]] std::uint8_t* grow(std::size_t n) {
    if (out_->size() - size_ < n) reserve_(n);
    std::uint8_t* at = out_->data() + size_;
    size_ += n;
    return at;
  }
  // Bytes written (the vector's size once finished).
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  // Forgets everything written after the first n bytes.
  void truncate(std::size_t n) noexcept {
    if (n < size_) size_ = n;
  }
  void finish() { out_->resize(size_); }

 private:
  void reserve_(std::size_t n) {
    constexpr std::size_t kFirstStep = 256;
    std::size_t want = out_->size() < kFirstStep ? kFirstStep : 2 * out_->size();
    if (want < size_ + n) want = size_ + n;
    out_->resize(want);
  }

  std::vector<std::uint8_t>* out_;
  std::size_t size_;
};

// Reads values from a span it does not own. Every read checks the bounds
// first: a read that does not fit returns false and moves nothing.
class kcByteReader {
 public:
  kcByteReader() noexcept = default;
  explicit kcByteReader(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] std::size_t position() const noexcept { return pos_; }
  [[nodiscard]] std::size_t remaining() const noexcept { return bytes_.size() - pos_; }
  [[nodiscard]] bool has(std::size_t n) const noexcept { return n <= remaining(); }
  // The unread bytes.
  [[nodiscard]] const std::uint8_t* here() const noexcept { return bytes_.data() + pos_; }

  template <kcWireScalar T>
  [[nodiscard]] bool read(T& value) noexcept {
    if (!has(sizeof(T))) return false;
    value = kfLoadLE<T>(here());
    pos_ += sizeof(T);
    return true;
  }
  [[nodiscard]] bool readBytes(void* data, std::size_t n) noexcept {
    if (!has(n)) return false;
    if (n) std::memcpy(data, here(), n);
    pos_ += n;
    return true;
  }
  // The next n bytes in place, or nullopt (and no move) when fewer remain.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> take(std::size_t n) noexcept {
    if (!has(n)) return std::nullopt;
    auto out = bytes_.subspan(pos_, n);
    pos_ += n;
    return out;
  }
  [[nodiscard]] bool skip(std::size_t n) noexcept {
    if (!has(n)) return false;
    pos_ += n;
    return true;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t pos_ = 0;
};

// --- UTF-16 ---

// How lone surrogates in the text are treated when encoding.
enum class keSurrogates {
  keep,    // passed through as the code unit they are
  refuse,  // the text cannot be encoded
};

// The UTF-16 code units of text, whatever the width of wchar_t; nullopt when a
// character is above 0x10FFFF, or is a surrogate and surrogates are refused.
[[nodiscard]] std::optional<std::u16string> kfToUtf16(std::wstring_view text, keSurrogates surrogates);
// The text of UTF-16 units. Pairs become one character where wchar_t is wide
// enough; a lone surrogate comes back as the unit it was.
[[nodiscard]] std::wstring kfFromUtf16(std::u16string_view units);

// --- UTF-8 ---

// The UTF-8 bytes of text, for a display or a terminal: a lone surrogate or
// a value above 0x10FFFF becomes U+FFFD (where wchar_t is 16 bits, a
// surrogate pair is the one character it stands for).
[[nodiscard]] std::string kfToUtf8(std::wstring_view text);
