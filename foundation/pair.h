// kcPair<T>: two values of one type, such as the integer coordinates of a pel
// (kcPair<long>). A plain value: default (T{}, T{}), exact equality.
#pragma once

#include "foundation/archive.h"

template <class T>
class kcPair {
 public:
  constexpr kcPair() = default;
  constexpr kcPair(T x, T y) : x_(x), y_(y) {}

  [[nodiscard]] constexpr T x() const noexcept { return x_; }
  [[nodiscard]] constexpr T y() const noexcept { return y_; }
  constexpr void x(T x) { x_ = x; }
  constexpr void y(T y) { y_ = y; }

  constexpr kcPair& operator+=(const kcPair& p) {
    x_ += p.x_;
    y_ += p.y_;
    return *this;
  }
  constexpr kcPair& operator-=(const kcPair& p) {
    x_ -= p.x_;
    y_ -= p.y_;
    return *this;
  }
  friend constexpr kcPair operator+(kcPair a, const kcPair& b) { return a += b; }
  friend constexpr kcPair operator-(kcPair a, const kcPair& b) { return a -= b; }
  friend constexpr bool operator==(const kcPair&, const kcPair&) = default;

 private:
  T x_{};
  T y_{};
};

// Archive form: x then y, each in the archive form of T.
template <class T>
kcArchive& operator||(kcArchive& ar, kcPair<T>& p) {
  T x = p.x();
  T y = p.y();
  ar || x || y;
  if (ar.isLoading()) p = kcPair<T>(x, y);
  return ar;
}
