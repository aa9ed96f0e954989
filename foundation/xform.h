// Affine transforms of the plane.
//
// kcXform<2> maps a point p to matrix() * p + trans(). Composition reads like
// function application: (a * b) maps by b first, then by a. Mapping an angle
// maps the unit direction of that angle by the linear part and returns the
// direction of the image, so a mirror reverses angles and a non-uniform scale
// bends them; a singular matrix that collapses the direction throws
// kcMathError::Singular, as does every inverse mapping of a singular transform.
// isIdentity() is exact; == allows kEqualTol per element, so a transform
// composed with its inverse compares equal to the identity.
//
// kc2XformBase is the reference-counted, persistent interface of transforms
// held by handle (kcPtrHandle_const<kc2XformBase>); kc2XformLinear is the
// affine one.
#pragma once

#include "foundation/angle.h"
#include "foundation/handle.h"
#include "foundation/matrix.h"
#include "foundation/persistent.h"
#include "foundation/vector.h"

class kcArchive;

template <int N>
class kcXform;

template <>
class kcXform<2> {
 public:
  // Largest difference per element that == still calls equal.
  static constexpr double kEqualTol = 1e-15;

  // The identity.
  constexpr kcXform() noexcept = default;
  constexpr kcXform(const kcMatrix<2>& matrix, const kcVector<2>& trans) noexcept
      : matrix_(matrix), trans_(trans) {}

  [[nodiscard]] static constexpr kcXform translation(const kcVector<2>& v) noexcept { return {{}, v}; }
  // Rotation about the origin.
  [[nodiscard]] static kcXform rotation(const kcRadian& angle) noexcept;
  [[nodiscard]] static constexpr kcXform scale(double sx, double sy) noexcept {
    return {kcMatrix<2>::scale(sx, sy), {}};
  }

  [[nodiscard]] constexpr const kcMatrix<2>& matrix() const noexcept { return matrix_; }
  [[nodiscard]] constexpr const kcVector<2>& trans() const noexcept { return trans_; }
  constexpr void matrix(const kcMatrix<2>& m) noexcept { matrix_ = m; }
  constexpr void trans(const kcVector<2>& t) noexcept { trans_ = t; }

  [[nodiscard]] constexpr kcVector<2> mapPoint(const kcVector<2>& p) const noexcept {
    return matrix_ * p + trans_;
  }
  // A displacement: the linear part only.
  [[nodiscard]] constexpr kcVector<2> mapVector(const kcVector<2>& v) const noexcept { return matrix_ * v; }
  // The point that maps to p.
  [[nodiscard]] kcVector<2> invMapPoint(const kcVector<2>& p) const;
  [[nodiscard]] kcRadian mapAngle(const kcRadian& a) const;
  [[nodiscard]] kcDegree mapAngle(const kcDegree& a) const;
  // The angle whose image is a.
  [[nodiscard]] kcRadian invMapAngle(const kcRadian& a) const;
  [[nodiscard]] kcDegree invMapAngle(const kcDegree& a) const;

  [[nodiscard]] kcXform inverse() const;
  [[nodiscard]] constexpr bool isIdentity() const noexcept {
    return matrix_.isIdentity() && trans_ == kcVector<2>();
  }

  friend constexpr kcVector<2> operator*(const kcXform& x, const kcVector<2>& p) noexcept {
    return x.mapPoint(p);
  }
  // b first, then a.
  friend constexpr kcXform operator*(const kcXform& a, const kcXform& b) noexcept {
    return {a.matrix_ * b.matrix_, a.matrix_ * b.trans_ + a.trans_};
  }
  friend bool operator==(const kcXform& a, const kcXform& b) noexcept;

 private:
  kcMatrix<2> matrix_;
  kcVector<2> trans_;
};

// Archive form: the matrix, then the translation.
kcArchive& operator||(kcArchive& ar, kcXform<2>& x);

// A transform shared by handle. Abstract: no archive form of its own, the
// concrete class archives everything.
class kc2XformBase : public virtual kcPersistent, public virtual kcRepBase {
 public:
  [[nodiscard]] virtual kcVector<2> mapPoint(const kcVector<2>& p) const = 0;
  // This transform as an affine map (exact for an affine transform).
  [[nodiscard]] virtual kcXform<2> linearXform() const = 0;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);
};

// An affine transform held by handle. Archive form: version byte 0, then the
// kcXform<2>.
class kc2XformLinear : public kc2XformBase {
 public:
  KC_DECLARE_PERSISTENT(kc2XformLinear);

  kc2XformLinear() = default;
  explicit kc2XformLinear(const kcXform<2>& xform) : xform_(xform) {}

  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  void xform(const kcXform<2>& x);

  [[nodiscard]] kcVector<2> mapPoint(const kcVector<2>& p) const override { return xform_.mapPoint(p); }
  [[nodiscard]] kcXform<2> linearXform() const override { return xform_; }

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcXform<2> xform_;
};
