#include "foundation/xform.h"

#include <cmath>

#include "foundation/archive.h"
#include "foundation/exception.h"

namespace {

// The direction of m applied to the unit vector of angle a. A direction that
// m collapses to zero has no angle.
kcRadian mapDirection(const kcMatrix<2>& m, const kcRadian& a) {
  kcVector<2> image = m * kcVector<2>(cos(a), sin(a));
  if (image == kcVector<2>()) throw kcMathError::Singular();
  return image.angle();
}

bool near(double a, double b) noexcept { return std::fabs(a - b) <= kcXform<2>::kEqualTol; }

}  // namespace

// --- kcXform<2> ---

kcXform<2> kcXform<2>::rotation(const kcRadian& angle) noexcept { return {kcMatrix<2>::rotation(angle), {}}; }

kcVector<2> kcXform<2>::invMapPoint(const kcVector<2>& p) const { return matrix_.inverse() * (p - trans_); }

kcRadian kcXform<2>::mapAngle(const kcRadian& a) const { return mapDirection(matrix_, a); }

kcDegree kcXform<2>::mapAngle(const kcDegree& a) const { return mapDirection(matrix_, a); }

kcRadian kcXform<2>::invMapAngle(const kcRadian& a) const { return mapDirection(matrix_.inverse(), a); }

kcDegree kcXform<2>::invMapAngle(const kcDegree& a) const { return mapDirection(matrix_.inverse(), a); }

kcXform<2> kcXform<2>::inverse() const {
  kcMatrix<2> inv = matrix_.inverse();
  return {inv, -(inv * trans_)};
}

bool operator==(const kcXform<2>& a, const kcXform<2>& b) noexcept {
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c)
      if (!near(a.matrix_.element(r, c), b.matrix_.element(r, c))) return false;
  return near(a.trans_.x(), b.trans_.x()) && near(a.trans_.y(), b.trans_.y());
}

kcArchive& operator||(kcArchive& ar, kcXform<2>& x) {
  kcMatrix<2> m = x.matrix();
  kcVector<2> t = x.trans();
  ar || m || t;
  if (ar.isLoading()) x = kcXform<2>(m, t);
  return ar;
}

// --- kc2XformBase ---

// The base has no fields; its concrete class carries the version byte.
void kc2XformBase::serialize_(kcArchive&, unsigned char) {}

// --- kc2XformLinear ---

KC_DEFINE_PERSISTENT(kc2XformLinear);

void kc2XformLinear::xform(const kcXform<2>& x) {
  mutating_();
  xform_ = x;
}

void kc2XformLinear::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kc2XformLinear::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/xform", __LINE__);
  kc2XformBase::serialize_(ar, version);
  ar || xform_;
}
