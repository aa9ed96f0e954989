#include "foundation/shapes/point.h"

#include "foundation/archive.h"

// --- shared body ---

template <class Derived>
void kcPointShape_<Derived>::transfer_(kcArchive& ar) {
  kcVector<2> p = point_;
  ar || p;
  if (ar.isLoading()) {
    kfCheckLoadedFinite(p);
    mutating_();
    point_ = p;
  }
}

template class kcPointShape_<kcPoint>;
template class kcPointShape_<kc2Point>;

// --- kcPoint ---

KC_DEFINE_PERSISTENT(kcPoint);

void kcPoint::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcPoint::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/point", __LINE__);
  kcShape::serialize_(ar, version);
  transfer_(ar);
}

// --- kc2Point ---

KC_DEFINE_PERSISTENT(kc2Point);

void kc2Point::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kc2Point::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion("foundation/shapes/point", __LINE__);
  kcShape::serialize_(ar, version);
  transfer_(ar);
}
