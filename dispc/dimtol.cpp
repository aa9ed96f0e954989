#include "dispc/dimtol.h"

#include <cmath>
#include <ostream>

namespace {
// "Is this -1" and equality of dimensions are absolute tests at this size.
constexpr double kDimTol = 1e-15;
constexpr double kUnset = -1;

constexpr const char* kDimTolSource = "dispc/dimtol";
constexpr int kDimTolVersionLine = 197;
constexpr signed char kDimTolVersion = 0;
constexpr unsigned char kDimensionVersion = 0;

bool isUnset(double v) { return std::fabs(v - kUnset) <= kDimTol; }
bool near(double a, double b) { return std::fabs(a - b) <= kDimTol; }

// Kinds outside 0 to 2 behave as offsets, the same mapping the SMD polys use.
kcDimTol::TolType effectiveKind(kcDimTol::TolType t) {
  return t == kcDimTol::eLimits || t == kcDimTol::ePercentages ? t : kcDimTol::eOffsets;
}
}  // namespace

// --- kcDimTol ---

kcDimTol::kcDimTol(double nom, double minTol, double maxTol, TolType type)
    : nomDim_(nom), minTol_(minTol), maxTol_(maxTol), tolType_(type) {
  // The no-tolerance value is taken as it is; only here is -1 tested exactly.
  const bool noTolerance = nom == kUnset && minTol == kUnset && maxTol == kUnset;
  if (!noTolerance && !isValid_(nom, minTol, maxTol, type)) throw kcShapesError::BadGeom();
}

void kcDimTol::nomDim(double nom) {
  if (!isValid_(nom, minTol_, maxTol_, tolType_)) throw kcShapesError::BadGeom();
  nomDim_ = nom;
}

void kcDimTol::set_(double nom, double min, double max, TolType kind) {
  if (!isValid_(nom, min, max, kind)) throw kcShapesError::BadGeom();
  nomDim_ = nom;
  minTol_ = min;
  maxTol_ = max;
  tolType_ = kind;
}

double kcDimTol::newTol_(double value, TolType wanted, int sign) const {
  if (tolType_ == wanted) return value;
  if (isUnset(value)) return kUnset;
  if (isUnset(nomDim_)) throw kcShapesError::BadGeom();
  double offset = 0;
  switch (effectiveKind(tolType_)) {
    case eLimits:
      offset = std::fabs(nomDim_ - value);
      break;
    case ePercentages:
      offset = nomDim_ * value;
      break;
    default:
      offset = value;
      break;
  }
  switch (effectiveKind(wanted)) {
    case eLimits:
      return nomDim_ + sign * offset;
    case ePercentages:
      return nomDim_ == 0 ? 0 : offset / nomDim_;
    default:
      return offset;
  }
}

bool kcDimTol::isValid_(double nom, double min, double max, TolType kind) {
  for (double v : {nom, min, max})
    if (!(v >= 0 || isUnset(v))) return false;

  // An unset nominal gets a stand-in so that the limits can still be checked.
  const bool minSet = !isUnset(min);
  const bool maxSet = !isUnset(max);
  if (isUnset(nom) && (minSet || maxSet)) {
    switch (kind) {
      case eLimits:
        nom = !minSet ? max - 1 : maxSet ? (min + max) / 2 : min + 1;
        break;
      case eOffsets:
        if (minSet) nom = min + 1;
        break;
      case ePercentages:
        nom = 1;
        break;
      default:
        break;
    }
  }

  kcDimTol unchecked;
  unchecked.nomDim_ = nom;
  unchecked.minTol_ = min;
  unchecked.maxTol_ = max;
  unchecked.tolType_ = kind;
  try {
    (void)kcSMDDimension(unchecked);
  } catch (const kcException&) {
    return false;
  }
  return true;
}

bool kcDimTol::isWithin(double v) const {
  if (minTol_ >= 0 && v < newTol_(minTol_, eLimits, -1)) return false;
  if (maxTol_ < 0) return true;
  return v <= newTol_(maxTol_, eLimits, +1);
}

bool kcDimTol::operator==(const kcDimTol& o) const noexcept {
  return near(nomDim_, o.nomDim_) && near(minTol_, o.minTol_) && near(maxTol_, o.maxTol_) &&
         tolType_ == o.tolType_;
}

kcDimTol operator*(double s, const kcDimTol& d) {
  // A plain copy: the tolerances keep their numbers in their own kind, and
  // nothing is validated again.
  kcDimTol scaled = d;
  if (!isUnset(d.nomDim_)) scaled.nomDim_ = d.nomDim_ * s;
  return scaled;
}

kcArchive& operator||(kcArchive& ar, kcDimTol& d) {
  signed char version = kDimTolVersion;
  ar || version;
  if (version != kDimTolVersion) throw kcArchive::UnknownVersion(kDimTolSource, kDimTolVersionLine);
  kcDimTol read = d;
  auto kind = static_cast<std::uint32_t>(read.tolType_);
  ar || read.nomDim_ || read.minTol_ || read.maxTol_ || kind;
  if (ar.isLoading()) {
    // A number that is not finite makes a tolerance unequal to itself.
    if (!std::isfinite(read.nomDim_) || !std::isfinite(read.minTol_) || !std::isfinite(read.maxTol_))
      throw kcArchive::Corrupt(L"dimension tolerance that is not a finite number");
    read.tolType_ = static_cast<kcDimTol::TolType>(kind);
    d = read;
  }
  return ar;
}

// --- kcSMDDimension errors ---

KC_DEFINE_EXCEPTION(kcSMDDimension::badDimensionValue, 0x11000B00, kcSMDDimension::badDimensionValue);

void kcSMDDimension::badDimensionValue::message_(std::wostream& out) const { out << text_; }

void kcSMDDimension::badDimensionValue::serialize_(kcArchive& ar, unsigned char version) {
  Errors::serialize_(ar, version);
  ar || text_;
}

// --- kcSMDDimension ---

namespace {
kcSMDDimension::ScaleType scaleTypeOf(kcDimTol::TolType kind) {
  switch (kind) {
    case kcDimTol::eLimits:
      return kcSMDDimension::eFixed;
    case kcDimTol::ePercentages:
      return kcSMDDimension::eScaleAll;
    default:
      return kcSMDDimension::eScaleNominal;
  }
}
}  // namespace

kcSMDDimension::kcSMDDimension(const kcDimTol& d) {
  set(d.nomDim(), d.minDim(), d.maxDim(), scaleTypeOf(d.tolType()));
}

void kcSMDDimension::set(double nominal, double min, double max, ScaleType t) {
  // The rules are tested in this order and the first broken one is reported.
  // "Unset" is exactly -1 here. The sixth text says ">= 0" while the rule is
  // "> 0"; the text is kept as it has always read.
  auto fail = [](const wchar_t* text) { throw badDimensionValue(text); };
  if (!(nominal > 0 || nominal == kUnset)) fail(L"Nominal dimension must be > 0 or -1");
  if (!(min > 0 || min == kUnset)) fail(L"Minimum dimension must be > 0 or -1");
  if (!(max > 0 || max == kUnset)) fail(L"Maximum dimension must be > 0 or -1");
  if (min > 0 && !(nominal >= 0)) fail(L"Nominal must be set if minimum is > 0");
  if (min > 0 && !(nominal >= min)) fail(L"Nominal must be >= minimum");
  if (max > 0 && !(nominal >= 0)) fail(L"Nominal must be set if maximum is >= 0");
  if (max > 0 && !(nominal <= max)) fail(L"Nominal must be <= maximum");
  nominal_ = nominal;
  min_ = min;
  max_ = max;
  scaleType_ = t;
}

bool kcSMDDimension::withinTolerance(double value, double scale) const {
  const kcSMDDimension d = scale * *this;
  if (d.min_ != kUnset && value <= d.min_) return false;
  if (d.max_ != kUnset && value >= d.max_) return false;
  return true;
}

bool kcSMDDimension::operator==(const kcSMDDimension& o) const noexcept {
  return near(nominal_, o.nominal_) && near(min_, o.min_) && near(max_, o.max_) && scaleType_ == o.scaleType_;
}

kcSMDDimension operator*(double s, const kcSMDDimension& d) {
  // The nominal scales even when unset: a scaled -1 is no longer -1, so set()
  // rejects it, as it rejects any scale that makes a value non-positive.
  const double nom = d.nominal() * s;
  switch (d.scaleType()) {
    case kcSMDDimension::eFixed:
      return d;
    case kcSMDDimension::eScaleNominal: {
      const double max = d.max() == kUnset ? kUnset : std::fabs(d.nominal() - d.max()) + nom;
      const double min = d.min() == kUnset ? kUnset : nom - std::fabs(d.nominal() - d.min());
      return kcSMDDimension(nom, min, max, kcSMDDimension::eScaleNominal);
    }
    case kcSMDDimension::eScaleAll: {
      const double max = d.max() == kUnset ? kUnset : d.max() * s;
      const double min = d.min() == kUnset ? kUnset : d.min() * s;
      return kcSMDDimension(nom, min, max, kcSMDDimension::eScaleAll);
    }
    default:
      return kcSMDDimension(kUnset, kUnset, kUnset, kcSMDDimension::eFixed);
  }
}

kcArchive& operator||(kcArchive& ar, kcSMDDimension& d) {
  unsigned char version = kDimensionVersion;
  ar || version;
  if (version != kDimensionVersion) throw kcArchive::UnknownVersion(nullptr, 0);
  double nominal = d.nominal_;
  double min = d.min_;
  double max = d.max_;
  std::uint8_t scale = 0;
  if (ar.isStoring()) {
    if (d.scaleType_ > UINT8_MAX) throw kcArchive::ValueOutOfRange();
    scale = static_cast<std::uint8_t>(d.scaleType_);
  }
  ar || nominal || min || max || scale;
  // A loaded dimension obeys the same rules as one being set.
  if (ar.isLoading()) d.set(nominal, min, max, static_cast<kcSMDDimension::ScaleType>(scale));
  return ar;
}
