// kcVector<N>: a point or displacement in N dimensions. The plane is the only
// dimension this library uses, so only kcVector<2> is defined.
//
// Equality is exact; compare with a tolerance through distance() where
// rounding matters. unit() of the zero vector has no direction and throws
// kcShapesError::DegenerateShape; an index other than 0 or 1 throws
// kcShapesError::BadParams.
#pragma once

#include <cmath>
#include <concepts>

#include "foundation/angle.h"
#include "foundation/exception.h"

class kcArchive;

template <int N>
class kcVector;

template <>
class kcVector<2> {
 public:
  constexpr kcVector() noexcept = default;
  constexpr kcVector(double x, double y) noexcept : x_(x), y_(y) {}

  [[nodiscard]] constexpr double x() const noexcept { return x_; }
  [[nodiscard]] constexpr double y() const noexcept { return y_; }
  constexpr void x(double x) noexcept { x_ = x; }
  constexpr void y(double y) noexcept { y_ = y; }
  // Coordinate i: 0 is x, 1 is y.
  [[nodiscard]] double operator[](int i) const { return i == 0 ? x_ : i == 1 ? y_ : badIndex_(); }
  [[nodiscard]] double& operator[](int i) { return i == 0 ? x_ : i == 1 ? y_ : badIndex_(); }

  [[nodiscard]] constexpr double dot(const kcVector& v) const noexcept { return x_ * v.x_ + y_ * v.y_; }
  // The z component of the 3-D cross product: positive when v lies
  // counter-clockwise of this vector.
  [[nodiscard]] constexpr double cross(const kcVector& v) const noexcept { return x_ * v.y_ - y_ * v.x_; }
  [[nodiscard]] double len() const noexcept { return std::hypot(x_, y_); }
  [[nodiscard]] constexpr double lenSq() const noexcept { return x_ * x_ + y_ * y_; }
  [[nodiscard]] double distance(const kcVector& v) const noexcept { return std::hypot(x_ - v.x_, y_ - v.y_); }
  // atan2(y, x), in (-pi, pi].
  [[nodiscard]] kcRadian angle() const noexcept { return kcRadian(std::atan2(y_, x_)); }
  // This vector scaled to length 1.
  [[nodiscard]] kcVector unit() const;

  constexpr kcVector& operator+=(const kcVector& v) noexcept {
    x_ += v.x_;
    y_ += v.y_;
    return *this;
  }
  constexpr kcVector& operator-=(const kcVector& v) noexcept {
    x_ -= v.x_;
    y_ -= v.y_;
    return *this;
  }
  constexpr kcVector& operator*=(double s) noexcept {
    x_ *= s;
    y_ *= s;
    return *this;
  }
  constexpr kcVector& operator/=(double s) noexcept {
    x_ /= s;
    y_ /= s;
    return *this;
  }

  friend constexpr kcVector operator+(kcVector a, const kcVector& b) noexcept { return a += b; }
  friend constexpr kcVector operator-(kcVector a, const kcVector& b) noexcept { return a -= b; }
  friend constexpr kcVector operator-(const kcVector& a) noexcept { return kcVector(-a.x_, -a.y_); }
  friend constexpr kcVector operator*(kcVector a, double s) noexcept { return a *= s; }
  friend constexpr kcVector operator*(double s, kcVector a) noexcept { return a *= s; }
  friend constexpr kcVector operator/(kcVector a, double s) noexcept { return a /= s; }
  friend constexpr bool operator==(const kcVector&, const kcVector&) noexcept = default;

 private:
  [[noreturn]] static double& badIndex_();

  double x_ = 0.0;
  double y_ = 0.0;
};

// Archive form: x then y, two doubles. A template only so that its body is
// compiled where the archive is complete: points are the bulk of most stored
// geometry, and this lets the transfer inline into the caller's loop.
template <class Archive>
requires std::derived_from<Archive, kcArchive> Archive& operator||(Archive& ar, kcVector<2>& v) {
  double xy[2] = {v.x(), v.y()};
  if (ar.isStoring()) {
    // Two stores straight from the coordinates: copying the pair through
    // the array would stall on the store just made.
    ar.transferScalar(xy[0]);
    ar.transferScalar(xy[1]);
    return ar;
  }
  ar.transferScalars(xy);
  v = kcVector<2>(xy[0], xy[1]);
  return ar;
}
