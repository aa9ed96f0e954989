// The graphics over one shape: one body for every instance, and the
// instances themselves with their persistence members.
#include <typeinfo>

#include "dispc/glist.h"
#include "dispc/glist_p.h"
#include "foundation/archive.h"

// --- measures and drawing ---

template <class T>
kcRect kcGraphicBuiltin<T>::encloseRect() const {
  return shape_.encloseRect();
}

template <class T>
double kcGraphicBuiltin<T>::distToPoint(const kcVector<2>& p) const {
  return shape_.distanceToPoint(p);
}

template <class T>
void kcGraphicBuiltin<T>::draw(kcUITablet& t, kcUITablet::Layers layer) const {
  t.draw(shape_, props(), layer);
}

// --- archive ---

template <class T>
void kcGraphicBuiltin<T>::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(this->className(), 0);
  if (!ar.isLoading()) {
    kcGraphic::dispatchSerialize(ar);
    ar || shape_;
    return;
  }
  // Read whole before anything changes.
  const kcGraphicProps saved = props();
  try {
    kcGraphic::dispatchSerialize(ar);
    T shape;
    ar || shape;
    shape_ = std::move(shape);
  } catch (...) {
    kcGraphic::props() = saved;
    throw;
  }
}

template <class T>
void kcGraphicSimple<T>::dispatchSerialize(kcArchive& ar) {
  this->dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

template <class T>
void kcGraphicSimple<T>::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(this->className(), 0);
  kcGraphicBuiltin<T>::serialize_(ar, version);
}

template <class T, class U>
void kcGraphicWithFill<T, U>::dispatchSerialize(kcArchive& ar) {
  this->dispatchOnce_(ar, this, 0, [&](unsigned char version) { serialize_(ar, version); });
}

template <class T, class U>
void kcGraphicWithFill<T, U>::serialize_(kcArchive& ar, unsigned char version) {
  if (version != 0) throw kcArchive::UnknownVersion(this->className(), 0);
  kcGraphicBuiltin<T>::serialize_(ar, version);
}

// --- images and copies ---

template <class T>
kcGraphicPtr kcGraphicSimple<T>::map(const kcXform<2>& x) const {
  return kfMakeHandle<kcGraphicSimple>(this->shape_.map(x), this->props());
}

template <class T>
kcGraphicPtr kcGraphicSimple<T>::clone() const {
  return kfMakeHandle<kcGraphicSimple>(*this);
}

template <class T, class U>
kcGraphicWithFill<T, U>::kcGraphicWithFill(const T& shape, const kcColor& color, bool fill)
    : kcGraphicBuiltin<T>(shape, color) {
  this->fill(fill);
}

template <class T, class U>
kcGraphicPtr kcGraphicWithFill<T, U>::map(const kcXform<2>& x) const {
  // The polymorphic map: a circle under a shear comes back an ellipse.
  const kcShapePtr image = this->shape_.mapShape(x);
  if (!image) throw kcBadPointer();
  if (const auto* u = dynamic_cast<const U*>(image.get()))
    return kfMakeHandle<kcGraphicWithFill<U, U>>(*u, this->props());
  if (const auto* t = dynamic_cast<const T*>(image.get()))
    return kfMakeHandle<kcGraphicWithFill>(*t, this->props());
  throw kcShapesError::DegenerateShape();
}

template <class T, class U>
kcGraphicPtr kcGraphicWithFill<T, U>::clone() const {
  return kfMakeHandle<kcGraphicWithFill>(*this);
}

// --- the instances ---

#define DISPC_GRAPHIC_DEFINE_BUILTIN_(T) template class kcGraphicBuiltin<T>;
#define DISPC_GRAPHIC_DEFINE_SIMPLE_(T)              \
  KC_DEFINE_PERSISTENT_TEMPLATE(kcGraphicSimple<T>); \
  template class kcGraphicSimple<T>;
#define DISPC_GRAPHIC_DEFINE_FILLED_(T, U)                \
  KC_DEFINE_PERSISTENT_TEMPLATE(kcGraphicWithFill<T, U>); \
  template class kcGraphicWithFill<T, U>;
DISPC_GRAPHIC_BUILTIN_SHAPES(DISPC_GRAPHIC_DEFINE_BUILTIN_)
DISPC_GRAPHIC_SIMPLE_SHAPES(DISPC_GRAPHIC_DEFINE_SIMPLE_)
DISPC_GRAPHIC_FILLED_SHAPES(DISPC_GRAPHIC_DEFINE_FILLED_)
