#include "dispc/color.h"

#include <array>

#include "dispc/uierror.h"

namespace {
// Where the archive reports an unknown version of each record.
constexpr const char* kColorSource = "dispc/color";
constexpr int kRGBVersionLine = 31;
constexpr int kColorVersionLine = 121;
constexpr signed char kRGBVersion = 0;
constexpr signed char kColorVersion = 0;
constexpr unsigned char kKnownFlags = kcColor::kStockFlag | kcColor::kRGBFlag | kcColor::kIndexFlag;
}  // namespace

// --- kcColor ---

unsigned char kcColor::index() const {
  if (!isIndexColor()) throw kcUIError::NotIndexColor();
  return index_;
}

const kcRGB& kcColor::checkedRGB_() const {
  if (!isRGBColor()) throw kcUIError::NotRGBColor();
  return rgb_;
}

std::uint32_t kcColor::rgb() const { return checkedRGB_().rgb(); }
std::uint32_t kcColor::bgr() const { return checkedRGB_().bgr(); }
std::uint16_t kcColor::rgb15() const { return checkedRGB_().rgb15(); }
std::uint16_t kcColor::rgb16() const { return checkedRGB_().rgb16(); }

// --- stock colours ---

// name, palette index, r, g, b; in kgr_color code order.
#define KC_STOCK_COLORS_(X)     \
  X(black, 0, 0, 0, 0)          \
  X(dkGrey, 248, 128, 128, 128) \
  X(grey, 247, 160, 160, 164)   \
  X(ltGrey, 7, 192, 192, 192)   \
  X(white, 255, 255, 255, 255)  \
  X(red, 249, 255, 0, 0)        \
  X(dkRed, 1, 128, 0, 0)        \
  X(orange, 245, 250, 125, 50)  \
  X(yellow, 251, 255, 255, 0)   \
  X(green, 250, 0, 255, 0)      \
  X(dkGreen, 2, 0, 128, 0)      \
  X(cyan, 254, 0, 255, 255)     \
  X(blue, 252, 0, 0, 255)       \
  X(purple, 244, 160, 20, 200)  \
  X(magenta, 253, 255, 0, 255)  \
  X(pass, 243, 243, 243, 243)

// The accessors build their colour on first use, so they work from any static
// initialiser; the members are copied from them.
#define KC_DEFINE_STOCK_(name, index, r, g, b) \
  const kcColor& kcColor::name##Color() {      \
    static const kcColor c(index, r, g, b);    \
    return c;                                  \
  }                                            \
  const kcColor kcColor::name = kcColor::name##Color();
KC_STOCK_COLORS_(KC_DEFINE_STOCK_)
#undef KC_DEFINE_STOCK_

const kcColor& kcColor::dkGray = kcColor::dkGrey;
const kcColor& kcColor::gray = kcColor::grey;
const kcColor& kcColor::ltGray = kcColor::ltGrey;

// --- kgr_color ---

namespace {
using StockAccessor = const kcColor& (*)();
#define KC_STOCK_ACCESSOR_(name, index, r, g, b) &kcColor::name##Color,
constexpr std::array<StockAccessor, 16> kStockByCode = {KC_STOCK_COLORS_(KC_STOCK_ACCESSOR_)};
#undef KC_STOCK_ACCESSOR_
}  // namespace

kcColor kfColor(kgr_color code) {
  if (kgr_color_isRGB(code)) return kcColor(kgr_color_red(code), kgr_color_green(code), kgr_color_blue(code));
  const auto number = static_cast<std::uint32_t>(code);
  if (number >= 1 && number < kStockByCode.size()) return kStockByCode[number]();
  return kcColor::blackColor();
}

kgr_color kfColor(const kcColor& color) {
  if (!color.isStockColor()) {
    const kcRGB& c = color.rgbStruct();
    return kgr_color_rgb(c.r(), c.g(), c.b());
  }
  for (std::size_t code = 0; code < kStockByCode.size(); ++code)
    if (color == kStockByCode[code]()) return static_cast<kgr_color>(code);
  return KGR_COLOR_BLACK;
}

#undef KC_STOCK_COLORS_

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcRGB& c) {
  signed char version = kRGBVersion;
  ar || version;
  if (version != kRGBVersion) throw kcArchive::UnknownVersion(kColorSource, kRGBVersionLine);
  kcRGB read = c;  // loading fills the copy, so a short record leaves c alone
  ar || read.r_ || read.g_ || read.b_;
  if (ar.isLoading()) c = read;
  return ar;
}

kcArchive& operator||(kcArchive& ar, kcColor& c) {
  signed char version = kColorVersion;
  ar || version;
  if (version != kColorVersion) throw kcArchive::UnknownVersion(kColorSource, kColorVersionLine);
  kcColor read = c;
  ar || read.flags_ || read.index_ || read.rgb_;
  if (ar.isLoading()) {
    if (read.flags_ & ~kKnownFlags) throw kcArchive::Corrupt(L"colour flags with unknown bits");
    // Neither an index nor a triple: no colour, and equal to none, itself
    // included.
    if (!(read.flags_ & (kcColor::kIndexFlag | kcColor::kRGBFlag)))
      throw kcArchive::Corrupt(L"colour with neither index nor triple");
    c = read;
  }
  return ar;
}

std::string kfColorText(const kcColor& c) {
  std::string out;
  if (c.isStockColor()) out += "stock ";
  if (c.isIndexColor()) out += "index " + std::to_string(c.index());
  if (c.isIndexColor() && c.isRGBColor()) out += ' ';
  if (c.isRGBColor()) {
    const kcRGB& rgb = c.rgbStruct();
    out += "rgb(" + std::to_string(rgb.r()) + "," + std::to_string(rgb.g()) + "," + std::to_string(rgb.b()) +
           ")";
  }
  return out;
}
