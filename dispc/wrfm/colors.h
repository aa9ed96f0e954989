// The colours with which an SMD poly or model draws itself: the wireframe
// (outline) colour, the fill of synthetic (rasterised) drawing and its
// background, and the rule that turns a colour into the grey level written
// into an 8-bit pel buffer.
//
// Archive form: an unsigned version byte (1), then the three kcColor records
// (7 bytes each). A version-0 record has nothing after its version byte and
// leaves the colours as they were. The colours are read whole before any of
// them changes.
#pragma once

#include "dispc/classes.h"
#include "dispc/color.h"
#include "foundation/persistent.h"

class kcSMDColors : public virtual kcPersistent {
 public:
  KC_DECLARE_PERSISTENT(kcSMDColors);

  // Green wireframe, light-grey fill, dark-grey background.
  kcSMDColors();
  kcSMDColors(const kcColor& wireframeDefault, const kcColor& syntheticDefault,
              const kcColor& syntheticBackground);
  // Both start with a clear change mark.
  kcSMDColors(const kcSMDColors& other);
  kcSMDColors& operator=(const kcSMDColors& other);
  ~kcSMDColors() override;

  [[nodiscard]] kcColor wireframeDefaultColor() const noexcept { return wireframeDefaultColor_; }
  [[nodiscard]] kcColor syntheticDefaultColor() const noexcept { return syntheticDefaultColor_; }
  [[nodiscard]] kcColor syntheticBackgroundColor() const noexcept { return syntheticBackgroundColor_; }
  void wireframeDefaultColor(const kcColor& c);
  void syntheticDefaultColor(const kcColor& c);
  void syntheticBackgroundColor(const kcColor& c);

  // The three colours pairwise equal under kcColor::operator==.
  [[nodiscard]] bool operator==(const kcSMDColors& o) const noexcept;

  // Grey level of a colour: an RGB colour gives its channel mean rounded half
  // up; an index colour gives the fixed level of the stock colour with that
  // index (black 5, white 250, ...), or 0 for any other index.
  [[nodiscard]] static unsigned char colorToGrayScale(const kcColor& c);

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  kcColor wireframeDefaultColor_;
  kcColor syntheticDefaultColor_;
  kcColor syntheticBackgroundColor_;
};
