// kc2Rigid: a rotation about the origin followed by a translation, the motion
// of a rigid body in the plane: p maps to R(angle) p + trans.
//
// The angle is kept as given (composition adds angles without reducing them);
// == compares the directions, so angles a whole turn apart are equal, and
// allows kEqualTol in the angle and in each translation coordinate.
#pragma once

#include "foundation/angle.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kcArchive;

class kc2Rigid {
 public:
  // Largest difference in the angle (radians) and per coordinate that == accepts.
  static constexpr double kEqualTol = 1e-15;

  // The identity.
  constexpr kc2Rigid() noexcept = default;
  constexpr kc2Rigid(const kcRadian& angle, const kcVector<2>& trans) noexcept
      : angle_(angle), trans_(trans) {}

  [[nodiscard]] constexpr kcRadian angle() const noexcept { return angle_; }
  [[nodiscard]] constexpr const kcVector<2>& trans() const noexcept { return trans_; }
  constexpr void angle(const kcRadian& a) noexcept { angle_ = a; }
  constexpr void trans(const kcVector<2>& t) noexcept { trans_ = t; }

  [[nodiscard]] kcVector<2> mapPoint(const kcVector<2>& p) const noexcept;
  // A displacement: rotated only.
  [[nodiscard]] kcVector<2> mapVector(const kcVector<2>& v) const noexcept;
  [[nodiscard]] kc2Rigid inverse() const noexcept;
  // The same motion as an affine transform.
  [[nodiscard]] kcXform<2> xform() const noexcept;

  friend kcVector<2> operator*(const kc2Rigid& r, const kcVector<2>& p) noexcept { return r.mapPoint(p); }
  // b first, then a.
  friend kc2Rigid operator*(const kc2Rigid& a, const kc2Rigid& b) noexcept;
  friend bool operator==(const kc2Rigid& a, const kc2Rigid& b) noexcept;

 private:
  kcRadian angle_;
  kcVector<2> trans_;
};

// Archive form: the angle in radians (a double), then the translation.
kcArchive& operator||(kcArchive& ar, kc2Rigid& r);
