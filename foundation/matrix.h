// kcMatrix<N>: an N x N matrix acting on kcVector<N> column vectors. Only the
// 2 x 2 matrix is defined; it is the linear part of every plane transform.
//
// Rotation and scale queries describe where the axes go: xRot() is the angle
// of the image of the x axis, yRot() that of the image of the y axis minus 90
// degrees (so both equal the angle of a rotation, and differ under a shear or
// a mirror), xScale() and yScale() the lengths of those images. inverse()
// throws kcMathError::Singular only for an exactly zero determinant: a nearly
// singular matrix still inverts, to large elements. An element index outside
// 0..1 throws kcShapesError::BadParams.
#pragma once

#include "foundation/angle.h"
#include "foundation/exception.h"
#include "foundation/vector.h"

class kcArchive;

template <int N>
class kcMatrix;

template <>
class kcMatrix<2> {
 public:
  // The identity.
  constexpr kcMatrix() noexcept = default;
  // Row-major: the first row is (a00, a01).
  constexpr kcMatrix(double a00, double a01, double a10, double a11) noexcept
      : a00_(a00), a01_(a01), a10_(a10), a11_(a11) {}

  // Counter-clockwise rotation by angle (for a y axis pointing up).
  [[nodiscard]] static kcMatrix rotation(const kcRadian& angle) noexcept;
  [[nodiscard]] static constexpr kcMatrix scale(double sx, double sy) noexcept { return {sx, 0.0, 0.0, sy}; }
  [[nodiscard]] static constexpr kcMatrix identity() noexcept { return {}; }

  // Element in row r, column c.
  [[nodiscard]] double element(int r, int c) const;
  void element(int r, int c, double value);

  [[nodiscard]] constexpr double determinant() const noexcept { return a00_ * a11_ - a01_ * a10_; }
  [[nodiscard]] kcMatrix inverse() const;
  [[nodiscard]] constexpr kcMatrix transpose() const noexcept { return {a00_, a10_, a01_, a11_}; }
  [[nodiscard]] kcRadian xRot() const noexcept;
  [[nodiscard]] kcRadian yRot() const noexcept;
  [[nodiscard]] double xScale() const noexcept;
  [[nodiscard]] double yScale() const noexcept;
  [[nodiscard]] constexpr bool isIdentity() const noexcept { return *this == kcMatrix(); }

  friend constexpr kcMatrix operator*(const kcMatrix& a, const kcMatrix& b) noexcept {
    return {a.a00_ * b.a00_ + a.a01_ * b.a10_, a.a00_ * b.a01_ + a.a01_ * b.a11_,
            a.a10_ * b.a00_ + a.a11_ * b.a10_, a.a10_ * b.a01_ + a.a11_ * b.a11_};
  }
  friend constexpr kcVector<2> operator*(const kcMatrix& a, const kcVector<2>& v) noexcept {
    return {a.a00_ * v.x() + a.a01_ * v.y(), a.a10_ * v.x() + a.a11_ * v.y()};
  }
  // Exact, element by element.
  friend constexpr bool operator==(const kcMatrix&, const kcMatrix&) noexcept = default;

 private:
  double a00_ = 1.0;
  double a01_ = 0.0;
  double a10_ = 0.0;
  double a11_ = 1.0;
};

// Archive form: a00, a01, a10, a11 as four doubles.
kcArchive& operator||(kcArchive& ar, kcMatrix<2>& m);
