#include "foundation/shapes/ellipse_p.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/angle.h"
#include "foundation/archive.h"
#include "foundation/exception.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/geom_p.h"

namespace {
constexpr double kPi = std::numbers::pi;

// The closed-form singular value decomposition of a 2 x 2 matrix: with
// e = (a + d) / 2, f = (a - d) / 2, g = (c + b) / 2, h = (c - b) / 2 the
// matrix is R(phi) diag(q + r, q - r) R(theta), where q = |(e, h)|,
// r = |(f, g)|, phi and theta the half sum and half difference of the angles
// of (e, h) and (f, g). q is the rotation-and-scale part, r the part that
// stretches; q < r exactly when the matrix mirrors.
struct Svd {
  double q = 0.0;
  double r = 0.0;
  double angleQ = 0.0;  // angle of (e, h)
  double angleR = 0.0;  // angle of (f, g)
};

Svd svd(const kcMatrix<2>& m) noexcept {
  double a = m.element(0, 0);
  double b = m.element(0, 1);
  double c = m.element(1, 0);
  double d = m.element(1, 1);
  double e = 0.5 * (a + d);
  double f = 0.5 * (a - d);
  double g = 0.5 * (c + b);
  double h = 0.5 * (c - b);
  return {std::hypot(e, h), std::hypot(f, g), std::atan2(h, e), std::atan2(g, f)};
}

// The factorisation of a matrix whose largest element is near 1.
kcEllipseFactors_ factorScaled(const kcMatrix<2>& m) noexcept {
  Svd s = svd(m);
  double det = m.determinant();
  kcEllipseFactors_ out;
  out.param.mirrored = det < 0.0;
  double larger = s.q + s.r;
  if (std::min(s.q, s.r) <= kCircularTol_ * larger) {
    // A circle: its axes are anywhere, so the rotation is 0 and the whole
    // orthogonal part becomes the parameter shift. R(0) diag(k, k) Q is m
    // up to min(q, r), which is below rounding here.
    double k = std::max(s.q, s.r);
    out.radiusX = k;
    out.radiusY = k;
    out.rotation = 0.0;
    // Without a mirror m = k R(angleQ); with one m = k diag(1, -1) R(-angleR).
    out.param.shift = out.param.mirrored ? -s.angleR : s.angleQ;
    return out;
  }
  out.radiusX = larger;
  // |det| / larger keeps the small radius accurate for thin ellipses, where
  // q - r would cancel.
  out.radiusY = std::fabs(det) / larger;
  double phi = 0.5 * (s.angleQ + s.angleR);
  double theta = 0.5 * (s.angleQ - s.angleR);
  // R(phi) = -R(phi - pi) and -Q = Q with pi added to the shift: move phi
  // into [-pi/2, pi/2) without changing the product.
  if (phi >= 0.5 * kPi) {
    phi -= kPi;
    theta += kPi;
  } else if (phi < -0.5 * kPi) {
    phi += kPi;
    theta -= kPi;
  }
  out.rotation = phi;
  out.param.shift = theta;
  return out;
}
}  // namespace

// --- factorisation ---

kcEllipseFactors_ kfFactorEllipse_(const kcMatrix<2>& matrix) noexcept {
  // Work on the matrix scaled by a power of two near its size, so that the
  // determinant neither overflows nor underflows; the scaling is exact.
  double largest = 0.0;
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) largest = std::max(largest, std::fabs(matrix.element(r, c)));
  int exponent = 0;
  std::frexp(largest, &exponent);
  double down = std::ldexp(1.0, -exponent);
  kcMatrix<2> m(matrix.element(0, 0) * down, matrix.element(0, 1) * down, matrix.element(1, 0) * down,
                matrix.element(1, 1) * down);
  kcEllipseFactors_ out = factorScaled(m);
  out.radiusX = std::ldexp(out.radiusX, exponent);
  out.radiusY = std::ldexp(out.radiusY, exponent);
  return out;
}

bool kfIsSimilarity_(const kcMatrix<2>& m, double tol) noexcept {
  if (m.determinant() == 0.0) return false;
  Svd s = svd(m);
  // The singular values are q + r and |q - r|; they differ by 2 min(q, r).
  return 2.0 * std::min(s.q, s.r) <= tol * (s.q + s.r);
}

double kfSimilarityScale_(const kcMatrix<2>& m) noexcept {
  Svd s = svd(m);
  return std::max(s.q, s.r);
}

kcMatrix<2> kfEllipseMatrix_(double rx, double ry, double rotation) noexcept {
  double c = std::cos(rotation);
  double s = std::sin(rotation);
  return {rx * c, -ry * s, rx * s, ry * c};
}

// --- arcs ---

double kfArcOffset_(double t, double start, double span) noexcept {
  double offset = span >= 0.0 ? t - start : start - t;
  return kcRadian(offset).norm().toDouble();
}

kcRadian kfArcTravelAngle_(const kcMatrix<2>& m, double t, double span) noexcept {
  kcVector<2> d = m * kcVector<2>(-std::sin(t), std::cos(t));
  return span < 0.0 ? (-d).angle() : d.angle();
}

void kfCheckArcSpan_(double span) {
  if (!std::isfinite(span) || std::fabs(span) > kMaxArcSpan_) throw kcShapesError::BadParams();
  if (span == 0.0) throw kcShapesError::DegenerateShape();
}

void kfCheckLoadedArcSpan_(double span) {
  if (!std::isfinite(span) || std::fabs(span) > kMaxArcSpan_ || span == 0.0)
    throw kcArchive::Corrupt(L"arc span is zero, beyond a full turn or not finite");
}

void kfCheckFiniteXform_(const kcXform<2>& x) {
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) kfCheckFinite(x.matrix().element(r, c));
  kfCheckFinite(x.trans());
}

void kfCheckLoadedFiniteXform_(const kcXform<2>& x) {
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c) kfCheckLoadedFinite(x.matrix().element(r, c));
  kfCheckLoadedFinite(x.trans());
}

// --- images and samples ---

kcEllipse2 kfMapEllipse2_(const kcEllipse2& e, const kcXform<2>& x, kcParamChange_& change) {
  const kcMatrix<2>& a = x.matrix();
  if (a.determinant() == 0.0) throw kcMathError::Singular();
  kcVector<2> center = x * e.center();
  double a00 = a.element(0, 0);
  double a01 = a.element(0, 1);
  double a10 = a.element(1, 0);
  double a11 = a.element(1, 1);
  if ((a00 == a11 && a01 == -a10) || (a00 == -a11 && a01 == a10)) {
    // s R(alpha), or s R(alpha) diag(1, -1): the axes turn with the map and
    // keep their lengths' order. The mirror, moved past the ellipse's own
    // rotation, becomes R(alpha - rotation) and a reversed parameter.
    double scale = std::hypot(a00, a10);
    kcRadian alpha(std::atan2(a10, a00));
    bool mirror = !(a00 == a11 && a01 == -a10);
    change = {0.0, mirror};
    kcRadian rotation = mirror ? alpha - e.rotation() : e.rotation() + alpha;
    return kcEllipse2(e.radiusX() * scale, e.radiusY() * scale, rotation, center);
  }
  kcEllipseFactors_ f =
      kfFactorEllipse_(a * kfEllipseMatrix_(e.radiusX(), e.radiusY(), e.rotation().toDouble()));
  change = f.param;
  return kcEllipse2(f.radiusX, f.radiusY, kcRadian(f.rotation), center);
}

void kfSampleClosedEllipse_(const kcVector<2>& c, const kcMatrix<2>& m, double spacing,
                            std::vector<kcVector<2>>& out) {
  kfCheckSpacing(spacing);
  std::size_t first = out.size();
  kfSampleEllipseArc_(c, kfColumnU_(m), kfColumnV_(m), 0.0, 2.0 * kPi, spacing, false, out);
  kcVector<2> start = out[first];
  out.push_back(start);
}

kcEllipsePolar_ kfEllipsePolar_(const kcEllipse2& e, const kcVector<2>& p) noexcept {
  kcVector<2> q = kcMatrix<2>::rotation(-e.rotation()) * (p - e.center());
  double x = q.x() / e.radiusX();
  double y = q.y() / e.radiusY();
  if (x == 0.0 && y == 0.0) return {};
  return {std::hypot(x, y), std::atan2(y, x)};
}
