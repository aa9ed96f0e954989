#include "foundation/matrix.h"

#include <cmath>

#include "foundation/archive.h"
#include "foundation/exception.h"

// --- construction and elements ---

kcMatrix<2> kcMatrix<2>::rotation(const kcRadian& angle) noexcept {
  double c = cos(angle);
  double s = sin(angle);
  return {c, -s, s, c};
}

double kcMatrix<2>::element(int r, int c) const {
  if (r == 0 && c == 0) return a00_;
  if (r == 0 && c == 1) return a01_;
  if (r == 1 && c == 0) return a10_;
  if (r == 1 && c == 1) return a11_;
  throw kcShapesError::BadParams();
}

void kcMatrix<2>::element(int r, int c, double value) {
  if (r == 0 && c == 0)
    a00_ = value;
  else if (r == 0 && c == 1)
    a01_ = value;
  else if (r == 1 && c == 0)
    a10_ = value;
  else if (r == 1 && c == 1)
    a11_ = value;
  else
    throw kcShapesError::BadParams();
}

// --- algebra ---

kcMatrix<2> kcMatrix<2>::inverse() const {
  double det = determinant();
  if (det == 0.0) throw kcMathError::Singular();
  return {a11_ / det, -a01_ / det, -a10_ / det, a00_ / det};
}

// --- decomposition ---

// The images of the axes are the columns: (a00, a10) and (a01, a11). The y
// axis image turned back by 90 degrees is (a11, -a01).
kcRadian kcMatrix<2>::xRot() const noexcept { return kcRadian(std::atan2(a10_, a00_)); }

kcRadian kcMatrix<2>::yRot() const noexcept { return kcRadian(std::atan2(-a01_, a11_)); }

double kcMatrix<2>::xScale() const noexcept { return std::hypot(a00_, a10_); }

double kcMatrix<2>::yScale() const noexcept { return std::hypot(a01_, a11_); }

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcMatrix<2>& m) {
  double a[4] = {m.element(0, 0), m.element(0, 1), m.element(1, 0), m.element(1, 1)};
  for (double& value : a) ar || value;
  if (ar.isLoading()) m = kcMatrix<2>(a[0], a[1], a[2], a[3]);
  return ar;
}
