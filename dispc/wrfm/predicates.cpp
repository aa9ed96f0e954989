#include <array>
#include <cstddef>

#include "dispc/wrfm/predicates_p.h"

namespace {

// Largest relative error of the plain evaluation of the orientation
// determinant: (3 + 16 eps) eps of the sum of the magnitudes of its two
// products, the classic bound for this form.
constexpr double kEps = std::numeric_limits<double>::epsilon() / 2.0;
constexpr double kOrientErrBound = (3.0 + 16.0 * kEps) * kEps;

struct TwoTerm {
  double hi;
  double lo;
};

// a * b = hi + lo exactly (fused multiply-add gives the rounding error).
TwoTerm twoProduct(double a, double b) noexcept {
  const double hi = a * b;
  return {hi, std::fma(a, b, -hi)};
}

// a + b = hi + lo exactly.
TwoTerm twoSum(double a, double b) noexcept {
  const double hi = a + b;
  const double bv = hi - a;
  const double av = hi - bv;
  return {hi, (a - av) + (b - bv)};
}

// Adds b to the expansion e (components of increasing magnitude that do not
// overlap), keeping it exact.
template <std::size_t N>
void grow(std::array<double, N>& e, std::size_t& n, double b) noexcept {
  double q = b;
  for (std::size_t i = 0; i < n; ++i) {
    const TwoTerm s = twoSum(q, e[i]);
    e[i] = s.lo;
    q = s.hi;
  }
  e[n++] = q;
}

int sign(double v) noexcept { return (v > 0.0) - (v < 0.0); }

// The determinant expanded into six products whose sum is exact; the sign of
// an expansion is that of its largest nonzero component.
int exactOrientation(const kcVector<2>& a, const kcVector<2>& b, const kcVector<2>& c) noexcept {
  const TwoTerm terms[6] = {twoProduct(b.x(), c.y()),  twoProduct(-b.x(), a.y()), twoProduct(-a.x(), c.y()),
                            twoProduct(-b.y(), c.x()), twoProduct(b.y(), a.x()),  twoProduct(a.y(), c.x())};
  std::array<double, 12> e{};
  std::size_t n = 0;
  for (const TwoTerm& t : terms) {
    grow(e, n, t.lo);
    grow(e, n, t.hi);
  }
  for (std::size_t i = n; i-- > 0;)
    if (e[i] != 0.0) return sign(e[i]);
  return 0;
}

}  // namespace

int kfOrientation(const kcVector<2>& a, const kcVector<2>& b, const kcVector<2>& c) noexcept {
  const double left = (b.x() - a.x()) * (c.y() - a.y());
  const double right = (b.y() - a.y()) * (c.x() - a.x());
  const double det = left - right;
  if (std::fabs(det) > kOrientErrBound * (std::fabs(left) + std::fabs(right))) return sign(det);
  return exactOrientation(a, b, c);
}
