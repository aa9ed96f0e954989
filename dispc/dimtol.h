// Dimensions with tolerances. The value -1 means "not set" throughout.
//
// kcDimTol is a nominal dimension with a lower and an upper tolerance, both of
// one kind: absolute limits, offsets from the nominal, or fractions of the
// nominal. It converts between the kinds. kcSMDDimension is the form the SMD
// description stores: nominal, minimum and maximum as absolute sizes and a
// scale type saying how the three follow a scaling of the model.
//
// A kcDimTol is valid exactly when its limits make a valid kcSMDDimension.
// Kinds other than 0, 1 and 2 can be stored (the numbers are kept as given);
// they convert like offsets and map to scale type 1, as the SMD polys expect.
//
// Archive forms: kcDimTol is a signed version byte 0, the three doubles and
// the kind as an unsigned 32-bit number (29 bytes); it is read whole before
// the target changes, and a number that is not finite is kcArchive::Corrupt. kcSMDDimension is an unsigned
// version byte 0, the three doubles and the scale type as one unsigned byte (26 bytes); a loaded dimension is
// validated like one being set, and a scale type above 255 cannot be stored (kcArchive::ValueOutOfRange).
#pragma once

#include <cstdint>
#include <string>

#include "dispc/classes.h"
#include "foundation/archive.h"
#include "foundation/exception.h"

class kcDimTol {
 public:
  enum TolType : std::uint32_t {
    eLimits = 0,       // minTol and maxTol are the smallest and largest dimensions
    eOffsets = 1,      // distances below and above the nominal
    ePercentages = 2,  // fractions of the nominal
  };

  // The no-tolerance value (-1, -1, -1, limits).
  kcDimTol() noexcept = default;
  // Unless all three numbers are exactly -1, throws kcShapesError::BadGeom
  // when they do not describe a valid dimension.
  kcDimTol(double nom, double minTol, double maxTol, TolType type);

  [[nodiscard]] double nomDim() const noexcept { return nomDim_; }
  [[nodiscard]] double minTol() const noexcept { return minTol_; }
  [[nodiscard]] double maxTol() const noexcept { return maxTol_; }
  [[nodiscard]] TolType tolType() const noexcept { return tolType_; }
  // Checks the new nominal with the stored tolerances (kcShapesError::BadGeom).
  void nomDim(double nom);
  // Changes the kind only; the numbers are not converted.
  void tolType(TolType type) noexcept { tolType_ = type; }

  // Set the tolerances in one kind, with the stored or a new nominal; each
  // checks first and throws kcShapesError::BadGeom, leaving this unchanged.
  void limits(double min, double max) { limits(nomDim_, min, max); }
  void offsets(double min, double max) { offsets(nomDim_, min, max); }
  void percentages(double min, double max) { percentages(nomDim_, min, max); }
  void limits(double nom, double min, double max) { set_(nom, min, max, eLimits); }
  void offsets(double nom, double min, double max) { set_(nom, min, max, eOffsets); }
  void percentages(double nom, double min, double max) { set_(nom, min, max, ePercentages); }

  // The tolerances converted into each kind; -1 stays -1. Converting between
  // different kinds needs the nominal (kcShapesError::BadGeom without it).
  [[nodiscard]] double minDim() const { return newTol_(minTol_, eLimits, -1); }
  [[nodiscard]] double maxDim() const { return newTol_(maxTol_, eLimits, +1); }
  [[nodiscard]] double minOffset() const { return newTol_(minTol_, eOffsets, -1); }
  [[nodiscard]] double maxOffset() const { return newTol_(maxTol_, eOffsets, +1); }
  [[nodiscard]] double minPerc() const { return newTol_(minTol_, ePercentages, -1); }
  [[nodiscard]] double maxPerc() const { return newTol_(maxTol_, ePercentages, +1); }

  // Closed interval: both limits are inside. An unset side does not limit.
  [[nodiscard]] bool isWithin(double v) const;

  // The numbers within 1e-15 each and the same kind.
  [[nodiscard]] bool operator==(const kcDimTol& o) const noexcept;
  [[nodiscard]] bool operator!=(const kcDimTol& o) const noexcept { return !(*this == o); }

 private:
  // True when (nom, min, max) in the given kind make a valid kcSMDDimension;
  // an unset nominal is replaced by a stand-in that lets the limits be checked.
  [[nodiscard]] static bool isValid_(double nom, double min, double max, TolType kind);
  friend kcArchive& operator||(kcArchive& ar, kcDimTol& d);
  friend kcDimTol operator*(double s, const kcDimTol& d);
  // value (a tolerance of the stored kind) converted to the wanted kind; sign
  // is -1 for the lower side and +1 for the upper one.
  [[nodiscard]] double newTol_(double value, TolType wanted, int sign) const;
  void set_(double nom, double min, double max, TolType kind);

  double nomDim_ = -1;
  double minTol_ = -1;
  double maxTol_ = -1;
  TolType tolType_ = eLimits;
};

// Only the nominal scales (when it is set); the tolerances keep their values
// in their own kind.
[[nodiscard]] kcDimTol operator*(double s, const kcDimTol& d);

kcArchive& operator||(kcArchive& ar, kcDimTol& d);

// The errors of kcSMDDimension derive from this family base.
class kcSMDDimensionErrors : public kcException {
 protected:
  void serialize_(kcArchive& ar, unsigned char version) { kcException::serialize_(ar, version); }
};

class kcSMDDimension {
 public:
  enum ScaleType : std::uint32_t {
    eFixed = 0,         // nothing changes when scaled
    eScaleNominal = 1,  // the nominal scales, the distances to min and max stay
    eScaleAll = 2,      // nominal, min and max all scale
  };

  class Errors : public kcSMDDimensionErrors {
   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcSMDDimensionErrors::serialize_(ar, version); }
  };
  // A value that breaks one of the rules of set(); the message names the rule.
  class badDimensionValue : public Errors {
   public:
    KC_DECLARE_EXCEPTION(badDimensionValue);
    badDimensionValue() = default;
    explicit badDimensionValue(std::wstring message) : text_(std::move(message)) {}
    [[nodiscard]] const std::wstring& text() const noexcept { return text_; }
    void message_(std::wostream& out) const override;

   protected:
    void serialize_(kcArchive& ar, unsigned char version);

   private:
    std::wstring text_;
  };

  // The unset dimension (-1, -1, -1, fixed).
  kcSMDDimension() noexcept = default;
  kcSMDDimension(double nominal, double min, double max, ScaleType t) { set(nominal, min, max, t); }
  // The limits of d (minDim(), maxDim()) with the scale type of d's kind:
  // limits -> fixed, offsets -> nominal scales, percentages -> all scale,
  // any other kind -> nominal scales.
  explicit kcSMDDimension(const kcDimTol& d);

  [[nodiscard]] double nominal() const noexcept { return nominal_; }
  [[nodiscard]] double min() const noexcept { return min_; }
  [[nodiscard]] double max() const noexcept { return max_; }
  [[nodiscard]] ScaleType scaleType() const noexcept { return scaleType_; }

  // Validates in a fixed order and throws badDimensionValue with the first
  // broken rule; nothing is stored then.
  void set(double nominal, double min, double max, ScaleType t);

  // Open interval: value must lie strictly between the scaled min and max
  // (each where set). Stricter than kcDimTol::isWithin on purpose.
  [[nodiscard]] bool withinTolerance(double value, double scale) const;

  // The numbers within 1e-15 each and the same scale type.
  [[nodiscard]] bool operator==(const kcSMDDimension& o) const noexcept;
  [[nodiscard]] bool operator!=(const kcSMDDimension& o) const noexcept { return !(*this == o); }

 private:
  friend kcArchive& operator||(kcArchive& ar, kcSMDDimension& d);

  double nominal_ = -1;
  double min_ = -1;
  double max_ = -1;
  ScaleType scaleType_ = eFixed;
};

// Scales by the scale type; built with set(), so a result that is not
// positive throws kcSMDDimension::badDimensionValue. An unknown scale type
// gives the unset dimension.
[[nodiscard]] kcSMDDimension operator*(double s, const kcSMDDimension& d);

kcArchive& operator||(kcArchive& ar, kcSMDDimension& d);
