// kcUIRect: a half-open integer rectangle in pels (screen or tablet pixels).
//
// A pel (x, y) is inside when left <= x < right and top <= y < bottom, where
// right = left + width and bottom = top + height are the first column and
// row outside. A rectangle is null when its width is 0; the null rectangle
// proper is (0, 0, 0, 0), which is what the default constructor makes.
//
// Normalisation turns any rectangle whose width or height is below 1 into
// (0, 0, 0, 0). The four-value and two-pair constructors, sz(pair), +, -, &
// and &= normalise their result; +=, -=, ul(pair) and |= do not. So a null
// rectangle moved with + stays at (0, 0), while one moved in place with +=
// keeps width 0 but takes the new corner; callers that care only ask
// isNull().
//
// Archive form: a signed version byte (0), then left, top, width, height as
// signed 32-bit values, loaded as stored (not normalised). Another version is
// kcArchive::UnknownVersion ("dispc/uirect", line 156); the target is left
// unchanged by a failed load.
#pragma once

#include "foundation/archive.h"
#include "foundation/pair.h"

class kcUIRect {
 public:
  using Pair = kcPair<long>;

  // The null rectangle (0, 0, 0, 0).
  constexpr kcUIRect() = default;
  // Normalised.
  kcUIRect(long left, long top, long width, long height);
  // Upper-left corner and size; normalised.
  kcUIRect(const Pair& ul, const Pair& sz);

  [[nodiscard]] long left() const noexcept { return ul_.x(); }
  [[nodiscard]] long top() const noexcept { return ul_.y(); }
  [[nodiscard]] long width() const noexcept { return sz_.x(); }
  [[nodiscard]] long height() const noexcept { return sz_.y(); }
  // First column to the right of the rectangle.
  [[nodiscard]] long right() const noexcept { return left() + width(); }
  // First row below the rectangle.
  [[nodiscard]] long bottom() const noexcept { return top() + height(); }

  [[nodiscard]] const Pair& ul() const noexcept { return ul_; }
  // (right, top).
  [[nodiscard]] Pair ur() const noexcept { return Pair(right(), top()); }
  // (left, bottom).
  [[nodiscard]] Pair ll() const noexcept { return Pair(left(), bottom()); }
  // (right, bottom).
  [[nodiscard]] Pair lr() const noexcept { return Pair(right(), bottom()); }
  [[nodiscard]] const Pair& sz() const noexcept { return sz_; }
  // Moves the corner, keeping the size; does nothing to a null rectangle.
  void ul(const Pair& p) noexcept;
  // Sets the size, then normalises.
  void sz(const Pair& p) noexcept;

  [[nodiscard]] bool isNull() const noexcept { return width() == 0; }
  // The pel p lies inside.
  [[nodiscard]] bool within(const Pair& p) const noexcept;
  // r's first pel (left, top) and last pel (right - 1, bottom - 1) both lie
  // inside; a null r is tested by its numbers like any other.
  [[nodiscard]] bool within(const kcUIRect& r) const noexcept;
  // Either rectangle is null, or they share no pel.
  [[nodiscard]] bool nullIntersection(const kcUIRect& r) const noexcept;

  // Intersection; null when either is null or they share no pel.
  [[nodiscard]] kcUIRect operator&(const kcUIRect& r) const noexcept;
  // A null target stays as it is; a null r is copied into the target.
  kcUIRect& operator&=(const kcUIRect& r) noexcept;
  // Smallest rectangle holding both; a null operand is ignored.
  [[nodiscard]] kcUIRect operator|(const kcUIRect& r) const noexcept;
  // As |, without normalising.
  kcUIRect& operator|=(const kcUIRect& r) noexcept;

  // Moved by p, normalised.
  [[nodiscard]] kcUIRect operator+(const Pair& p) const noexcept;
  [[nodiscard]] kcUIRect operator-(const Pair& p) const noexcept;
  // Moved in place, not normalised.
  kcUIRect& operator+=(const Pair& p) noexcept;
  kcUIRect& operator-=(const Pair& p) noexcept;

  // All four fields.
  [[nodiscard]] bool operator==(const kcUIRect& r) const noexcept = default;

 private:
  friend kcArchive& operator||(kcArchive& ar, kcUIRect& r);

  // Width or height below 1 makes the null rectangle.
  void norm() noexcept;

  Pair ul_;
  Pair sz_;
};

kcArchive& operator||(kcArchive& ar, kcUIRect& r);
