#include "foundation/rigid.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/matrix.h"

// --- mapping ---

kcVector<2> kc2Rigid::mapPoint(const kcVector<2>& p) const noexcept { return mapVector(p) + trans_; }

kcVector<2> kc2Rigid::mapVector(const kcVector<2>& v) const noexcept {
  return kcMatrix<2>::rotation(angle_) * v;
}

// R(-a) undoes the rotation; the translation comes back rotated the same way.
kc2Rigid kc2Rigid::inverse() const noexcept {
  kc2Rigid inv(-angle_, {});
  inv.trans_ = -inv.mapVector(trans_);
  return inv;
}

kcXform<2> kc2Rigid::xform() const noexcept { return {kcMatrix<2>::rotation(angle_), trans_}; }

// --- composition and comparison ---

// a(b(p)) = Ra (Rb p + tb) + ta = R(a + b) p + (Ra tb + ta).
kc2Rigid operator*(const kc2Rigid& a, const kc2Rigid& b) noexcept {
  return {a.angle_ + b.angle_, a.mapPoint(b.trans_)};
}

// The angles are compared as directions: fmod is exact, and so is the turn
// minus a remainder of at least half a turn, so no rounding hides a difference.
bool operator==(const kc2Rigid& a, const kc2Rigid& b) noexcept {
  constexpr double tol = kc2Rigid::kEqualTol;
  constexpr double turn = 2.0 * std::numbers::pi;
  double d = std::fabs(std::fmod(a.angle_.toDouble() - b.angle_.toDouble(), turn));
  return std::min(d, turn - d) <= tol && std::fabs(a.trans_.x() - b.trans_.x()) <= tol &&
         std::fabs(a.trans_.y() - b.trans_.y()) <= tol;
}

// --- archive ---

kcArchive& operator||(kcArchive& ar, kc2Rigid& r) {
  kcRadian angle = r.angle();
  kcVector<2> trans = r.trans();
  ar || angle || trans;
  if (ar.isLoading()) r = kc2Rigid(angle, trans);
  return ar;
}
