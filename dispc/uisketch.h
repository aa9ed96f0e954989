// kcUISketch: a display list, the flat growable byte buffer into which a
// recording tablet appends one record per drawing call, and from which a
// tablet replays the same drawing.
//
// The block comes from the runtime heap (malloc/realloc/free) and is owned by
// the sketch; it stays null until something is appended. Growth: when
// length + n passes the capacity, the new capacity is the larger of
// length + n and twice the old capacity (so a first append allocates exactly
// what it asks for and later ones at least double). A failed allocation
// throws std::bad_alloc and leaves the sketch as it was. Capacity shrinks
// only through eraseAndDelete(). Length and capacity are 32-bit quantities:
// a sketch that would pass 2147483647 bytes throws std::bad_alloc, and the
// doubling stops at that size.
//
// Besides the bytes, a sketch remembers the graphic properties most recently
// written into its stream, so that a run of calls with the same properties
// records them once. The pen colour plays no part in that test: it travels in
// every operation header, not in the properties record.
#pragma once

#include <cstdint>

#include "dispc/dispprop.h"

class kcUISketch {
 public:
  // Opcode of a properties record.
  static constexpr signed char kPropsOpcode = 40;

  // Empty: no block, length 0, default props.
  kcUISketch() = default;
  // Same bytes and capacity; the props of the copy are default, not copied.
  kcUISketch(const kcUISketch& other);
  // Copies the bytes (growing by the rule above when they do not fit); the
  // target keeps its own props.
  kcUISketch& operator=(const kcUISketch& other);
  ~kcUISketch();

  // Reserves n more bytes at the end and returns a pointer to them (null
  // when n is 0 and nothing was ever allocated). A negative n throws
  // kcUIError::BadParams.
  unsigned char* append(long n);
  // Reserves n bytes and copies p into them; p may point into this sketch.
  void append(const void* p, long n);

  // Writes a properties record (op, then the 21-byte record of props) when
  // props differ from the current props in anything but the pen colour;
  // props then become the current props. The tablet always passes op 40.
  void opcode(signed char op, const kcGraphicProps& props);

  // Length 0 and default props; the block is kept for reuse.
  void erase() noexcept;
  // Frees the block (null, length 0, capacity 0) and resets the props.
  void eraseAndDelete() noexcept;
  [[nodiscard]] bool isNull() const noexcept { return length_ == 0; }

  // The bytes in use (null while no block was ever allocated).
  [[nodiscard]] const unsigned char* data() const noexcept { return data_; }
  [[nodiscard]] long length() const noexcept { return length_; }
  [[nodiscard]] long capacity() const noexcept { return capacity_; }

 private:
  [[nodiscard]] const kcGraphicProps& props() const noexcept { return props_; }
  void props(const kcGraphicProps& p) { props_ = p; }

  // Makes the capacity at least needed, by the growth rule.
  void reserve_(long needed);

  unsigned char* data_ = nullptr;
  std::int32_t length_ = 0;
  std::int32_t capacity_ = 0;
  kcGraphicProps props_;
};
