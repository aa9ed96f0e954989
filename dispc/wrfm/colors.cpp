#include "dispc/wrfm/colors.h"

#include <array>
#include <utility>

#include "foundation/archive.h"

namespace {
constexpr unsigned char kColorsVersion = 1;
constexpr const char* kColorsSource = "dispc/wrfm/colors";
constexpr int kColorsVersionLine = 107;

// The grey levels of the indexed stock colours, tested in this order. The
// levels are those the synthetic images have always had: black and white stay
// clear of 0 and 255, and dark red and purple share 90.
using StockAccessor = const kcColor& (*)();
constexpr std::array<std::pair<StockAccessor, unsigned char>, 15> kStockGreys = {{
    {&kcColor::blackColor, 5},
    {&kcColor::dkGreyColor, 50},
    {&kcColor::greyColor, 100},
    {&kcColor::ltGreyColor, 150},
    {&kcColor::whiteColor, 250},
    {&kcColor::redColor, 120},
    {&kcColor::dkRedColor, 90},
    {&kcColor::orangeColor, 180},
    {&kcColor::yellowColor, 210},
    {&kcColor::greenColor, 130},
    {&kcColor::dkGreenColor, 80},
    {&kcColor::cyanColor, 200},
    {&kcColor::blueColor, 160},
    {&kcColor::purpleColor, 90},
    {&kcColor::magentaColor, 170},
}};
}  // namespace

KC_DEFINE_PERSISTENT(kcSMDColors);

kcSMDColors::kcSMDColors()
    : wireframeDefaultColor_(kcColor::greenColor()),
      syntheticDefaultColor_(kcColor::ltGreyColor()),
      syntheticBackgroundColor_(kcColor::dkGreyColor()) {}

kcSMDColors::kcSMDColors(const kcColor& wireframeDefault, const kcColor& syntheticDefault,
                         const kcColor& syntheticBackground)
    : wireframeDefaultColor_(wireframeDefault),
      syntheticDefaultColor_(syntheticDefault),
      syntheticBackgroundColor_(syntheticBackground) {}

kcSMDColors::kcSMDColors(const kcSMDColors& other)
    : kcPersistent(other),
      wireframeDefaultColor_(other.wireframeDefaultColor_),
      syntheticDefaultColor_(other.syntheticDefaultColor_),
      syntheticBackgroundColor_(other.syntheticBackgroundColor_) {}

kcSMDColors& kcSMDColors::operator=(const kcSMDColors& other) {
  wireframeDefaultColor_ = other.wireframeDefaultColor_;
  syntheticDefaultColor_ = other.syntheticDefaultColor_;
  syntheticBackgroundColor_ = other.syntheticBackgroundColor_;
  clearChanged();
  return *this;
}

kcSMDColors::~kcSMDColors() = default;

void kcSMDColors::wireframeDefaultColor(const kcColor& c) {
  mutating_();
  wireframeDefaultColor_ = c;
}

void kcSMDColors::syntheticDefaultColor(const kcColor& c) {
  mutating_();
  syntheticDefaultColor_ = c;
}

void kcSMDColors::syntheticBackgroundColor(const kcColor& c) {
  mutating_();
  syntheticBackgroundColor_ = c;
}

bool kcSMDColors::operator==(const kcSMDColors& o) const noexcept {
  return wireframeDefaultColor_ == o.wireframeDefaultColor_ &&
         syntheticDefaultColor_ == o.syntheticDefaultColor_ &&
         syntheticBackgroundColor_ == o.syntheticBackgroundColor_;
}

// --- grey levels ---

unsigned char kcSMDColors::colorToGrayScale(const kcColor& c) {
  if (!c.isIndexColor()) {
    const kcRGB& rgb = c.rgbStruct();
    return static_cast<unsigned char>((rgb.r() + rgb.g() + rgb.b()) * 0.3333333333333333 + 0.5);
  }
  const unsigned char index = c.index();
  for (const auto& [stock, grey] : kStockGreys)
    if (index == stock().index()) return grey;
  // The pass colour and every other index have no level of their own.
  return 0;
}

// --- archive ---

void kcSMDColors::dispatchSerialize(kcArchive& ar) {
  dispatchOnce_(ar, this, kColorsVersion, [&](unsigned char version) { serialize_(ar, version); });
}

void kcSMDColors::serialize_(kcArchive& ar, unsigned char version) {
  if (version == 0) return;  // an old record without colours
  // The kcPersistent part carries no bytes.
  if (version != kColorsVersion) throw kcArchive::UnknownVersion(kColorsSource, kColorsVersionLine);
  kcColor wireframe = wireframeDefaultColor_;
  kcColor synthetic = syntheticDefaultColor_;
  kcColor background = syntheticBackgroundColor_;
  ar || wireframe || synthetic || background;
  if (ar.isLoading()) {
    mutating_();
    wireframeDefaultColor_ = wireframe;
    syntheticDefaultColor_ = synthetic;
    syntheticBackgroundColor_ = background;
  }
}
