#include "foundation/shapes/coordaxes.h"

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/lineseg.h"

KC_DEFINE_PERSISTENT(kcCoordAxes);

// --- construction and fields ---

void kcCoordAxes::check_(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  kfCheckFinite(kcVector<2>(m.element(0, 0), m.element(0, 1)));
  kfCheckFinite(kcVector<2>(m.element(1, 0), m.element(1, 1)));
  kfCheckFinite(x.trans());
  if (m.determinant() == 0.0) throw kcShapesError::DegenerateShape();
}

kcCoordAxes::kcCoordAxes(const kcXform<2>& xform) : xform_(xform) { check_(xform_); }

void kcCoordAxes::xform(const kcXform<2>& x) {
  check_(x);
  mutating_();
  xform_ = x;
}

// --- images and pieces ---

kcCoordAxes kcCoordAxes::map(const kcXform<2>& x) const { return kcCoordAxes(x * xform_); }

kcShapePtr kcCoordAxes::clone() const { return kfMakeHandle<kcCoordAxes>(*this); }

kcShapePtr kcCoordAxes::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcCoordAxes>(map(x)); }

std::vector<kcShapePtr> kcCoordAxes::decompose() const {
  return {kfMakeHandle<kcLineSeg>(origin(), xEnd()), kfMakeHandle<kcLineSeg>(origin(), yEnd())};
}

// --- measures ---

kcRect kcCoordAxes::encloseRect() const { return kfBoxOf_({origin(), xEnd(), yEnd()}); }

kcVector<2> kcCoordAxes::nearestPoint(const kcVector<2>& p) const {
  // Ties go to the x axis, the first of the two.
  kcVector<2> onX = kfNearestOnSegment_(origin(), xEnd(), p);
  kcVector<2> onY = kfNearestOnSegment_(origin(), yEnd(), p);
  return onY.distance(p) < onX.distance(p) ? onY : onX;
}

void kcCoordAxes::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleSegment(origin(), xEnd(), spacing, true, out);
  kfSampleSegment(origin(), yEnd(), spacing, true, out);
}

bool kcCoordAxes::equal_(const kcShape& other) const {
  return xform_ == static_cast<const kcCoordAxes&>(other).xform_;
}

// --- archive ---

void kcCoordAxes::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcCoordAxes::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/coordaxes", __LINE__);
  kcShape::serialize_(ar, version);
  kcXform<2> x = xform_;
  ar || x;
  if (ar.isLoading()) {
    try {
      check_(x);
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"coordinate axes: bad transform");
    }
    mutating_();
    xform_ = x;
  }
}
