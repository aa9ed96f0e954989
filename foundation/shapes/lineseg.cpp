#include "foundation/shapes/lineseg.h"

#include "foundation/archive.h"
#include "foundation/shapes/fline.h"
#include "foundation/shapes/geom_p.h"

KC_DEFINE_PERSISTENT(kcLineSeg);

// --- construction and fields ---

kcLineSeg::kcLineSeg(const kcVector<2>& p1, const kcVector<2>& p2) : p1_(p1), p2_(p2) {
  kfCheckFinite(p1);
  kfCheckFinite(p2);
  if (p1 == p2) throw kcShapesError::DegenerateShape();
}

void kcLineSeg::p1(const kcVector<2>& p) {
  kfCheckFinite(p);
  if (p == p2_) throw kcShapesError::DegenerateShape();
  mutating_();
  p1_ = p;
}

void kcLineSeg::p2(const kcVector<2>& p) {
  kfCheckFinite(p);
  if (p == p1_) throw kcShapesError::DegenerateShape();
  mutating_();
  p2_ = p;
}

kcFLine kcLineSeg::line() const { return kcFLine(p1_, angle()); }

// --- images ---

kcLineSeg kcLineSeg::map(const kcXform<2>& x) const { return kcLineSeg(x * p1_, x * p2_); }

kcShapePtr kcLineSeg::clone() const { return kfMakeHandle<kcLineSeg>(*this); }

kcShapePtr kcLineSeg::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcLineSeg>(map(x)); }

kcShapePtr kcLineSeg::reverse() const { return kfMakeHandle<kcLineSeg>(p2_, p1_); }

// --- measures ---

kcRect kcLineSeg::encloseRect() const { return kcRect::fromCorners(p1_, p2_); }

kcVector<2> kcLineSeg::nearestPoint(const kcVector<2>& p) const { return kfNearestOnSegment_(p1_, p2_, p); }

void kcLineSeg::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleSegment(p1_, p2_, spacing, true, out);
}

bool kcLineSeg::equal_(const kcShape& other) const {
  const auto& s = static_cast<const kcLineSeg&>(other);
  return p1_ == s.p1_ && p2_ == s.p2_;
}

// --- archive ---

void kcLineSeg::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcLineSeg::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/lineseg", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> p1 = p1_;
  kcVector<2> p2 = p2_;
  ar || p1 || p2;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(p1);
    kfCheckLoadedFinite(p2);
    if (p1 == p2) throw kcArchive::Corrupt(L"line segment with coincident end points");
    mutating_();
    p1_ = p1;
    p2_ = p2;
  }
}
