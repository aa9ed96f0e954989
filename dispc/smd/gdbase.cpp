#include "dispc/smd/gdbase.h"

#include "foundation/archive.h"

namespace {
constexpr unsigned char kDescriptionVersion = 0;
}  // namespace

kcSMDGeometricDescription::~kcSMDGeometricDescription() = default;

void kcSMDGeometricDescription::name(std::wstring name) {
  mutating_();
  name_ = std::move(name);
}

void kcSMDGeometricDescription::drawSynthetic(const kcPtrHandle_const<kc2XformBase>& xform,
                                              kcPelBuffer<unsigned char>& pelBuffer) const {
  if (xform.isNull()) throw kcBadPointer();
  drawSynthetic(xform->linearXform(), pelBuffer);
}

// --- archive ---

void kcSMDGeometricDescription::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kDescriptionVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcSMDGeometricDescription::serialize_(kcArchive& ar, unsigned char version) {
  if (version != kDescriptionVersion) throw kcArchive::UnknownVersion("kcSMDGeometricDescription", 0);
  // The kcPersistent part carries no bytes.
  std::wstring name = name_;
  ar || name;
  if (ar.isLoading()) {
    mutating_();
    name_ = std::move(name);
  }
}
