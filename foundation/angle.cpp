#include "foundation/angle.h"

#include <numbers>

#include "foundation/archive.h"

namespace {

// Reduces value into [0, period). fmod is exact, but adding the period to a
// tiny negative remainder can round up to the period itself, which belongs to
// 0; adding +0.0 turns a -0.0 into +0.0.
double normalize(double value, double period) noexcept {
  double r = std::fmod(value, period);
  if (r < 0.0) r += period;
  return r >= period ? 0.0 : r + 0.0;
}

// Reduces value into [-period / 2, period / 2). The subtraction is exact for r
// in [period / 2, period), so the lower bound holds without rounding.
double signedNormalize(double value, double period) noexcept {
  double r = normalize(value, period);
  return r >= 0.5 * period ? r - period : r;
}

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kFullTurnDegrees = 360.0;

}  // namespace

// --- kcRadian ---

kcRadian kcRadian::norm() const noexcept { return kcRadian(normalize(value_, kTwoPi)); }

kcRadian kcRadian::signedNorm() const noexcept { return kcRadian(signedNormalize(value_, kTwoPi)); }

// --- kcDegree ---

kcDegree kcDegree::norm() const noexcept { return kcDegree(normalize(value_, kFullTurnDegrees)); }

kcDegree kcDegree::signedNorm() const noexcept { return kcDegree(signedNormalize(value_, kFullTurnDegrees)); }

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcRadian& a) {
  double value = a.toDouble();
  ar || value;
  if (ar.isLoading()) a = kcRadian(value);
  return ar;
}

kcArchive& operator||(kcArchive& ar, kcDegree& a) {
  double value = a.toDouble();
  ar || value;
  if (ar.isLoading()) a = kcDegree(value);
  return ar;
}
