#include "dispc/wrfm/wirefrm.h"

#include <cmath>

#include "dispc/smd/polyprivate.h"
#include "foundation/archive.h"

namespace {
constexpr const char* kSource = "dispc/wrfm/wirefrm";
constexpr unsigned char kVersion = 0;
// Where an unknown version is reported, by the dispatch and by loadSimple.
constexpr int kUnknownVersionLine = 148;
constexpr int kSimpleUnknownVersionLine = 131;
}  // namespace

KC_DEFINE_PERSISTENT(kc2Wireframe);

// --- construction ---

kc2Wireframe::~kc2Wireframe() = default;

kc2Wireframe::kc2Wireframe(const kcGenPoly& poly) : kcGenPoly(poly) {}

// A mapped polygon refuses tolerance edits; the tolerances given here are
// part of making the wireframe, so the flag is lifted while they are set.
kc2Wireframe::kc2Wireframe(const kcGenPoly& poly, const kcDimTol& tol) : kcGenPoly(poly) {
  const bool editable = isEditable();
  setEditable_(true);
  try {
    for (long i = 0; i < numSegments(); ++i) segmentLengthTol(i, tol);
  } catch (...) {
    setEditable_(editable);
    throw;
  }
  setEditable_(editable);
}

// --- length tolerances ---

void kc2Wireframe::segmentLengthTol(long i, const kcDimTol& tol) {
  checkEditable_();
  mutating_();
  guarded_([&] {
    const int v = static_cast<int>(nextVertexIndex(i));
    kcSMDGDPolyVertex copy = polygonData().vertex(v, false);
    copy.segmentLengthTol(tol);
    data_().replaceVertex(v, copy);
  });
}

kcDimTol kc2Wireframe::segmentLengthTol(long i) const {
  const long n = numVertices();
  if (i < 0 || i >= n) return kcDimTol();
  try {
    return kcSMDGDPolyPrivate::dimTol(polygonData().segmentDimension(i == n - 1 ? 0 : i + 1));
  } catch (const kcException&) {
    return kcDimTol();
  }
}

// The split segment loses its tolerance before the insertion, so that the
// shorter halves are not measured against it, and the whole edit is undone
// when a step of it is refused.
void kc2Wireframe::insertVertex(long index, const kcVector<2>& pt, double roundingSize, const kcRadian& span,
                                const kcDimTol& tol) {
  checkEditable_();
  mutating_();
  atomically_([&] {
    const bool splits = index != -1 && nextSegmentIndex(index) != -1;
    if (splits) segmentLengthTol(nextSegmentIndex(index), kcDimTol());
    kcGenPoly::insertVertex(index, pt, roundingSize, span);
    if (splits)
      segmentLengthTol(nextSegmentIndex(index + 1), tol);
    else if (index != -1)
      segmentLengthTol(nextSegmentIndex(index), tol);
  });
}

void kc2Wireframe::insertVertex(const kcVector<2>& pt, double roundingSize, const kcRadian& span,
                                const kcDimTol& tol) {
  insertVertex(numVertices() - 1, pt, roundingSize, span, tol);
}

void kc2Wireframe::close(const kcRadian& span, const kcDimTol& tol) {
  if (!isOpen()) return;
  checkEditable_();
  mutating_();
  atomically_([&] {
    kcGenPoly::close(span);
    segmentLengthTol(nextSegmentIndex(numVertices() - 1), tol);
  });
}

// --- polarity ---

void kc2Wireframe::flipPolarity_() {
  mutating_();
  data_().toggleDirection();
}

void kc2Wireframe::polarity(bool reversed) {
  if (reversed == isPolarityReversed()) return;
  flipPolarity_();
  polarityChanged_(reversed);
}

void kc2Wireframe::polarityChanged_(bool) {}

bool kc2Wireframe::isInsidePositive() const {
  if (isOpen()) throw kcShapesError::BadGeom();
  const bool positive = guarded_([&] { return polygonData().isDirectionPositive(); });
  // A transform that mirrors turns the outline's sense in client space.
  const kcMatrix<2>& m = xform().matrix();
  return std::cos((m.xRot() - m.yRot()).toDouble()) >= 0.0 ? positive : !positive;
}

void kc2Wireframe::insidePolarity(bool positive) {
  if (positive != isInsidePositive()) flipPolarity_();
}

// --- images ---

kc2Wireframe kc2Wireframe::map(const kcXform<2>& x) const { return kc2Wireframe(kcGenPoly::map(x)); }

kc2Wireframe kc2Wireframe::map(const kc2Rigid& r, double scale) const {
  return kc2Wireframe(kcGenPoly::map(r, scale));
}

kcShapePtr kc2Wireframe::clone() const { return kfMakeHandle<kc2Wireframe>(*this); }

kcShapePtr kc2Wireframe::mapShape(const kcXform<2>& x) const { return kfMakeHandle<kc2Wireframe>(map(x)); }

kcShapePtr kc2Wireframe::reverse() const { return kfMakeHandle<kc2Wireframe>(kc2Wireframe(reversed_())); }

bool kc2Wireframe::equal_(const kcShape& other) const {
  const auto* w = dynamic_cast<const kc2Wireframe*>(&other);
  return w != nullptr && *this == *w;
}

// The vertex's own error is the wireframe's to name: a tolerance edit that
// the vertex refuses is a bad geometry here.
void kc2Wireframe::remapAndThrowError_(kcException& e) const {
  if (e.errorNumber() == kcSMDGDPolyVertex::invalidSegmentLength().errorNumber())
    throw kcShapesError::BadGeom();
  kcGenPoly::remapAndThrowError_(e);
}

// --- archive ---

void kc2Wireframe::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kc2Wireframe::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kUnknownVersionLine);
  kcGenPoly::dispatchSerialize(ar);
}

void kc2Wireframe::loadSimple(kcArchive& ar) {
  kcArchive::Transfer transfer(ar);
  kcShape::serialize_(ar, kVersion);
  signed char version = static_cast<signed char>(kVersion);
  ar || version;
  if (version != static_cast<signed char>(kVersion))
    throw kcArchive::UnknownVersion(kSource, kSimpleUnknownVersionLine);
  kcGenPoly::loadSimple(ar);
}

// --- polys and wireframes ---

namespace {
// The poly a wireframe carries: its data as the transform shows it, where a
// poly can hold that (see kc2Wireframe).
kcSMDGDPoly carriedPoly(const kc2Wireframe& w) {
  if (w.xform().isIdentity()) return w.polygonData();
  return kcSMDGDPolyPrivate::similarityImage(w.polygonData(), w.xform());
}
}  // namespace

kcSMDGDPoly::kcSMDGDPoly(const kc2Wireframe& wireframe, const std::wstring& name)
    : kcSMDGDPoly(carriedPoly(wireframe)) {
  this->name(name);
}

kc2Wireframe kcSMDGDPolyPrivate::wireframe(const kcSMDGDPoly& p) { return kc2Wireframe(kcGenPoly(p)); }
