#include "foundation/shapes/affinerect.h"

#include "foundation/archive.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcAffineRectangle);

namespace {
constexpr kcVector<2> kUnitCorners[4] = {{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}};
}  // namespace

// --- construction and fields ---

void kcAffineRectangle::check_(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  kfCheckFinite(kcVector<2>(m.element(0, 0), m.element(0, 1)));
  kfCheckFinite(kcVector<2>(m.element(1, 0), m.element(1, 1)));
  kfCheckFinite(x.trans());
  if (m.determinant() == 0.0) throw kcShapesError::DegenerateShape();
}

kcAffineRectangle::kcAffineRectangle(const kcXform<2>& xform) : xform_(xform) { check_(xform_); }

kcAffineRectangle::kcAffineRectangle(const kcVector<2>& origin, const kcVector<2>& side1,
                                     const kcVector<2>& side2)
    : xform_(kcMatrix<2>(side1.x(), side2.x(), side1.y(), side2.y()), origin) {
  check_(xform_);
}

void kcAffineRectangle::xform(const kcXform<2>& x) {
  check_(x);
  mutating_();
  xform_ = x;
}

kcVector<2> kcAffineRectangle::corner(int i) const {
  if (i < 0 || i > 3) throw kcShapesError::BadParams();
  return xform_ * kUnitCorners[i];
}

std::array<kcVector<2>, 4> kcAffineRectangle::corners() const noexcept {
  return {xform_ * kUnitCorners[0], xform_ * kUnitCorners[1], xform_ * kUnitCorners[2],
          xform_ * kUnitCorners[3]};
}

std::vector<kcVector<2>> kcAffineRectangle::cornerList_() const {
  std::array<kcVector<2>, 4> c = corners();
  return {c.begin(), c.end()};
}

kcGenRect kcAffineRectangle::toGenRect() const { return kcGenRect(xform_); }

// --- images ---

kcAffineRectangle kcAffineRectangle::map(const kcXform<2>& x) const { return kcAffineRectangle(x * xform_); }

kcShapePtr kcAffineRectangle::clone() const { return kfMakeHandle<kcAffineRectangle>(*this); }

kcShapePtr kcAffineRectangle::mapShape(const kcXform<2>& x) const {
  return kfMakeHandle<kcAffineRectangle>(map(x));
}

// --- measures ---

kcRect kcAffineRectangle::encloseRect() const { return kfBoxOf_(cornerList_()); }

kcVector<2> kcAffineRectangle::nearestPoint(const kcVector<2>& p) const {
  return kfNearestOnChain_(cornerList_(), true, p);
}

bool kcAffineRectangle::within(const kcVector<2>& p) const {
  // In the unit square, where kWithinTol_ is relative to the size.
  kcVector<2> q = xform_.invMapPoint(p);
  double lo = -kWithinTol_;
  double hi = 1.0 + kWithinTol_;
  return q.x() >= lo && q.x() <= hi && q.y() >= lo && q.y() <= hi;
}

void kcAffineRectangle::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleChain_(cornerList_(), true, spacing, out);
}

bool kcAffineRectangle::equal_(const kcShape& other) const {
  return xform_ == static_cast<const kcAffineRectangle&>(other).xform_;
}

// --- archive ---

void kcAffineRectangle::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcAffineRectangle::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/affinerect", __LINE__);
  kcShape::serialize_(ar, version);
  kcXform<2> x = xform_;
  ar || x;
  if (ar.isLoading()) {
    try {
      check_(x);
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"affine rectangle: bad transform");
    }
    mutating_();
    xform_ = x;
  }
}
