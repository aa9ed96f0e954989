#include "foundation/shapes/cross.h"

#include <cmath>

#include "foundation/archive.h"
#include "foundation/shapes/geom_p.h"
#include "foundation/shapes/lineseg.h"

KC_DEFINE_PERSISTENT(kcCross);

// --- construction and fields ---

void kcCross::check_(const kcVector<2>& centre, double armLength, const kcRadian& rotation) {
  kfCheckFinite(centre);
  kfCheckFinite(armLength);
  kfCheckFinite(rotation.toDouble());
  if (!(armLength > 0.0)) throw kcShapesError::DegenerateShape();
}

kcCross::kcCross(const kcVector<2>& centre, double armLength, const kcRadian& rotation)
    : centre_(centre), armLength_(armLength), rotation_(rotation) {
  check_(centre_, armLength_, rotation_);
}

void kcCross::centre(const kcVector<2>& c) {
  check_(c, armLength_, rotation_);
  mutating_();
  centre_ = c;
}

void kcCross::armLength(double a) {
  check_(centre_, a, rotation_);
  mutating_();
  armLength_ = a;
}

void kcCross::rotation(const kcRadian& r) {
  check_(centre_, armLength_, r);
  mutating_();
  rotation_ = r;
}

kcVector<2> kcCross::end(int i) const {
  if (i < 0 || i > 3) throw kcShapesError::BadParams();
  kcVector<2> d(cos(rotation_), sin(rotation_));
  if (i >= 2) d = kcVector<2>(-d.y(), d.x());
  return i % 2 == 0 ? centre_ - d * armLength_ : centre_ + d * armLength_;
}

// --- images and pieces ---

kcCross kcCross::map(const kcXform<2>& x) const {
  double scale = std::sqrt(std::abs(x.matrix().determinant()));
  return kcCross(x * centre_, armLength_ * scale, x.mapAngle(rotation_));
}

kcShapePtr kcCross::clone() const { return kfMakeHandle<kcCross>(*this); }

kcShapePtr kcCross::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kcCross>(map(x)); }

std::vector<kcShapePtr> kcCross::decompose() const {
  return {kfMakeHandle<kcLineSeg>(end(0), end(1)), kfMakeHandle<kcLineSeg>(end(2), end(3))};
}

// --- measures ---

kcRect kcCross::encloseRect() const { return kfBoxOf_({end(0), end(1), end(2), end(3)}); }

kcVector<2> kcCross::nearestPoint(const kcVector<2>& p) const {
  kcVector<2> first = kfNearestOnSegment_(end(0), end(1), p);
  kcVector<2> second = kfNearestOnSegment_(end(2), end(3), p);
  return second.distance(p) < first.distance(p) ? second : first;
}

void kcCross::sample(double spacing, std::vector<kcVector<2>>& out) const {
  kfSampleSegment(end(0), end(1), spacing, true, out);
  kfSampleSegment(end(2), end(3), spacing, true, out);
}

bool kcCross::equal_(const kcShape& other) const {
  const auto& c = static_cast<const kcCross&>(other);
  return centre_ == c.centre_ && armLength_ == c.armLength_ && rotation_ == c.rotation_;
}

// --- archive ---

void kcCross::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcCross::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/cross", __LINE__);
  kcShape::serialize_(ar, version);
  kcVector<2> centre = centre_;
  double arm = armLength_;
  kcRadian rotation = rotation_;
  ar || centre || arm || rotation;
  if (ar.isLoading()) {
    try {
      check_(centre, arm, rotation);
    } catch (const kcException&) {
      throw kcArchive::Corrupt(L"cross: bad centre, arm length or rotation");
    }
    mutating_();
    centre_ = centre;
    armLength_ = arm;
    rotation_ = rotation;
  }
}
