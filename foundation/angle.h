// Strong angle types: kcRadian and kcDegree wrap a double so that an angle
// cannot be passed where the other unit (or a plain number) is expected.
//
// Each converts implicitly to the other, so a function taking kcRadian accepts
// a kcDegree. Arithmetic and comparison work only within one type: mixing the
// two in one expression does not compile, which keeps the unit of every result
// obvious. norm() and signedNorm() always return a value inside their half-open
// range, also for inputs a rounding error away from a boundary (-1e-17 gives 0).
#pragma once

#include <cmath>
#include <compare>

class kcArchive;
class kcDegree;

class kcRadian {
 public:
  // Radians in one degree.
  static constexpr double kPerDegree = 0.017453292519943295;

  constexpr kcRadian() noexcept = default;
  constexpr explicit kcRadian(double value) noexcept : value_(value) {}
  constexpr kcRadian(const kcDegree& d) noexcept;

  [[nodiscard]] constexpr double toDouble() const noexcept { return value_; }
  // The same direction in [0, 2pi).
  [[nodiscard]] kcRadian norm() const noexcept;
  // The same direction in [-pi, pi).
  [[nodiscard]] kcRadian signedNorm() const noexcept;

  constexpr kcRadian& operator+=(const kcRadian& a) noexcept {
    value_ += a.value_;
    return *this;
  }
  constexpr kcRadian& operator-=(const kcRadian& a) noexcept {
    value_ -= a.value_;
    return *this;
  }
  constexpr kcRadian& operator*=(double s) noexcept {
    value_ *= s;
    return *this;
  }
  constexpr kcRadian& operator/=(double s) noexcept {
    value_ /= s;
    return *this;
  }

  friend constexpr kcRadian operator+(kcRadian a, const kcRadian& b) noexcept { return a += b; }
  friend constexpr kcRadian operator-(kcRadian a, const kcRadian& b) noexcept { return a -= b; }
  friend constexpr kcRadian operator-(const kcRadian& a) noexcept { return kcRadian(-a.value_); }
  friend constexpr kcRadian operator*(kcRadian a, double s) noexcept { return a *= s; }
  friend constexpr kcRadian operator*(double s, kcRadian a) noexcept { return a *= s; }
  friend constexpr kcRadian operator/(kcRadian a, double s) noexcept { return a /= s; }
  friend constexpr bool operator==(const kcRadian&, const kcRadian&) noexcept = default;
  friend constexpr auto operator<=>(const kcRadian&, const kcRadian&) noexcept = default;

 private:
  double value_ = 0.0;
};

class kcDegree {
 public:
  // Degrees in one radian.
  static constexpr double kPerRadian = 57.29577951308232;

  constexpr kcDegree() noexcept = default;
  constexpr explicit kcDegree(double value) noexcept : value_(value) {}
  constexpr kcDegree(const kcRadian& r) noexcept : value_(r.toDouble() * kPerRadian) {}

  [[nodiscard]] constexpr double toDouble() const noexcept { return value_; }
  // The same direction in [0, 360).
  [[nodiscard]] kcDegree norm() const noexcept;
  // The same direction in [-180, 180).
  [[nodiscard]] kcDegree signedNorm() const noexcept;

  constexpr kcDegree& operator+=(const kcDegree& a) noexcept {
    value_ += a.value_;
    return *this;
  }
  constexpr kcDegree& operator-=(const kcDegree& a) noexcept {
    value_ -= a.value_;
    return *this;
  }
  constexpr kcDegree& operator*=(double s) noexcept {
    value_ *= s;
    return *this;
  }
  constexpr kcDegree& operator/=(double s) noexcept {
    value_ /= s;
    return *this;
  }

  friend constexpr kcDegree operator+(kcDegree a, const kcDegree& b) noexcept { return a += b; }
  friend constexpr kcDegree operator-(kcDegree a, const kcDegree& b) noexcept { return a -= b; }
  friend constexpr kcDegree operator-(const kcDegree& a) noexcept { return kcDegree(-a.value_); }
  friend constexpr kcDegree operator*(kcDegree a, double s) noexcept { return a *= s; }
  friend constexpr kcDegree operator*(double s, kcDegree a) noexcept { return a *= s; }
  friend constexpr kcDegree operator/(kcDegree a, double s) noexcept { return a /= s; }
  friend constexpr bool operator==(const kcDegree&, const kcDegree&) noexcept = default;
  friend constexpr auto operator<=>(const kcDegree&, const kcDegree&) noexcept = default;

 private:
  double value_ = 0.0;
};

constexpr kcRadian::kcRadian(const kcDegree& d) noexcept : value_(d.toDouble() * kPerDegree) {}

// Trigonometry of an angle in either unit (a kcDegree converts).
[[nodiscard]] inline double sin(const kcRadian& a) noexcept { return std::sin(a.toDouble()); }
[[nodiscard]] inline double cos(const kcRadian& a) noexcept { return std::cos(a.toDouble()); }
[[nodiscard]] inline double tan(const kcRadian& a) noexcept { return std::tan(a.toDouble()); }

// Archive form: the value as one double, in the type's own unit.
kcArchive& operator||(kcArchive& ar, kcRadian& a);
kcArchive& operator||(kcArchive& ar, kcDegree& a);
