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
//
// Marks are byte positions for cutting and pasting; they are not checked
// against the sketch (a mark beyond the length, or from another sketch, is the
// caller's error).
//
// Archive form: a signed version byte (1), the record count, then per record
// a kc_UISketchOpHeader and its payload object, each as an unshared object
// with its class name. Version 0 held the byte length and the raw bytes of the
// older layout, and still loads. Another version is kcArchive::UnknownVersion
// ("dispc/uisketch", line 286). A sketch holding a nested sketch (opcode 15)
// cannot be stored (kcUIError::NotImplemented). Loading reads everything
// before the sketch changes: a failed load leaves it as it was.
#pragma once

#include <cstdint>
#include <span>

#include "dispc/color.h"
#include "dispc/dispprop.h"

class kcUISketch;

class kcUISketchMark {
 public:
  kcUISketchMark() noexcept = default;
  [[nodiscard]] bool operator==(const kcUISketchMark&) const noexcept = default;

 private:
  friend class kcUISketch;
  friend kcArchive& operator||(kcArchive& ar, kcUISketchMark& m);
  explicit kcUISketchMark(std::int32_t position) noexcept : position_(position) {}
  [[nodiscard]] std::int32_t mark() const noexcept { return position_; }

  std::int32_t position_ = 0;
};

class kcUISketch {
 public:
  // Opcode of a properties record.
  static constexpr signed char kPropsOpcode = 40;
  // Bytes of an operation header.
  static constexpr long kHeaderSize = 8;

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
  unsigned char* append(long n) {
    // Recording appends a few bytes at a time: the common case stays inline.
    if (n >= 0 && n <= capacity_ - length_ && data_) {
      unsigned char* end = data_ + length_;
      length_ += static_cast<std::int32_t>(n);
      return end;
    }
    return grow_(n);
  }
  // Reserves n bytes and copies p into them; p may point into this sketch.
  void append(const void* p, long n);

  // Writes a properties record (op, then the 21-byte record of props) when
  // props differ from the current props in anything but the pen colour;
  // props then become the current props. The tablet always passes op 40.
  void opcode(signed char op, const kcGraphicProps& props) {
    if (kcGraphicProps::sameRecord_(props, props_))
      props_.penColor_ = props.penColor_;
    else
      changeProps_(op, props);
  }
  // Appends an operation header: opcode, layer, the colour's 6 bytes.
  void opcode(signed char op, signed char layer, const kcColor& color) {
    unsigned char* out = append(kHeaderSize);
    out[0] = static_cast<unsigned char>(op);
    out[1] = static_cast<unsigned char>(layer);
    kfStoreSketchColor(out + 2, color);
  }

  // --- cutting and pasting ---

  // A mark at the current end.
  [[nodiscard]] kcUISketchMark mark() const noexcept { return kcUISketchMark(length_); }
  // Inserts the bytes of s at m, moving the tail up.
  void insert(const kcUISketch& s, kcUISketchMark m);
  // Removes the bytes [from, to); nothing when from is not below to.
  void remove(kcUISketchMark from, kcUISketchMark to);
  // The bytes [from, to) as a new sketch; empty when from is not below to.
  [[nodiscard]] kcUISketch subSketch(kcUISketchMark from, kcUISketchMark to) const;
  kcUISketch& operator+=(const kcUISketch& s);
  // A new sketch (default props) holding exactly the bytes of both, this one's first.
  [[nodiscard]] kcUISketch operator+(const kcUISketch& s) const;

  // Length 0 and default props; the block is kept for reuse.
  void erase() noexcept;
  // Frees the block (null, length 0, capacity 0) and resets the props.
  void eraseAndDelete() noexcept;
  [[nodiscard]] bool isNull() const noexcept { return length_ == 0; }

  // The bytes in use (null while no block was ever allocated).
  [[nodiscard]] const unsigned char* data() const noexcept { return data_; }
  [[nodiscard]] long length() const noexcept { return length_; }
  [[nodiscard]] long capacity() const noexcept { return capacity_; }
  [[nodiscard]] std::span<const unsigned char> bytes() const noexcept {
    return {data_, static_cast<std::size_t>(length_)};
  }
  // Same length and bytes.
  [[nodiscard]] bool operator==(const kcUISketch& o) const noexcept;

 private:
  friend class kc_UISketchOpHeader;
  friend kcArchive& operator||(kcArchive& ar, kcUISketch& s);
  // Exactly those n bytes.
  kcUISketch(const unsigned char* bytes, long n);
  // Appends the properties record of props whether or not they changed (a
  // stream rebuilt record by record keeps every record it had).
  void propsRecord_(const kcGraphicProps& props);

  [[nodiscard]] const kcGraphicProps& props() const noexcept { return props_; }
  void props(const kcGraphicProps& p) { props_ = p; }

  // Makes the capacity at least needed, by the growth rule.
  void reserve_(long needed);
  // append() when the block must grow (or n is bad).
  unsigned char* grow_(long n);
  // Writes the properties record of props and makes them the current ones.
  void changeProps_(signed char op, const kcGraphicProps& props);
  void swap_(kcUISketch& o) noexcept;

  unsigned char* data_ = nullptr;
  std::int32_t length_ = 0;
  std::int32_t capacity_ = 0;
  kcGraphicProps props_;
};

kcArchive& operator||(kcArchive& ar, kcUISketch& s);
kcArchive& operator||(kcArchive& ar, kcUISketchMark& m);
