#include "foundation/kmath/kmath_shape.h"

#include <cmath>

#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/ellipse_p.h"

namespace {

bool isFiniteValue(double v) { return std::isfinite(v); }

bool isFiniteEllipse(const kmath_ellipse& e) {
  return isFiniteValue(e.centreX) && isFiniteValue(e.centreY) && isFiniteValue(e.radiusX) &&
         isFiniteValue(e.radiusY) && isFiniteValue(e.rotation);
}

// The ellipse centre + m * (unit circle) in centre / radii / rotation form.
// The factorisation is the one the ellipse shapes use, so this agrees with
// kcEllipse2::map: the larger radius first, rotation in [-pi/2, pi/2), and
// exactly 0 for a circle.
long ellipseFromLinear(kmath_ellipse* out, const kcVector<2>& centre, const kcMatrix<2>& m) {
  if (!isFiniteValue(centre.x()) || !isFiniteValue(centre.y())) return KMATH_ERR_NOT_FINITE;
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 2; ++c)
      if (!isFiniteValue(m.element(r, c))) return KMATH_ERR_NOT_FINITE;
  const kcEllipseFactors_ f = kfFactorEllipse_(m);
  if (!isFiniteValue(f.radiusX) || !isFiniteValue(f.radiusY)) return KMATH_ERR_NOT_FINITE;
  if (!(f.radiusY > 0) || m.determinant() == 0) return KMATH_ERR_DEGENERATE;
  *out = kmath_ellipse{centre.x(), centre.y(), f.radiusX, f.radiusY, f.rotation};
  return KMATH_OK;
}

}  // namespace

// --- affine rectangle ---

long kmath_shapeAffineRect_initPoints(kmath_shapeAffineRect* out, const kcXform<2>& x) {
  if (!out) return KMATH_ERR_NULL;
  static constexpr double kUnit[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  kmath_shapeAffineRect result{};
  for (int i = 0; i < 4; ++i) {
    const kcVector<2> p = x.mapPoint(kcVector<2>(kUnit[i][0], kUnit[i][1]));
    if (!isFiniteValue(p.x()) || !isFiniteValue(p.y())) return KMATH_ERR_NOT_FINITE;
    result.corners[i] = {p.x(), p.y()};
  }
  *out = result;
  return KMATH_OK;
}

long kmath_shapeAffineRect_initPoints(kmath_shapeAffineRect* out, const kcAffineRectangle& rect) {
  return kmath_shapeAffineRect_initPoints(out, rect.xform());
}

// --- ellipses ---

long kmath_ellipse_transform(kmath_ellipse* out, const kmath_ellipse* in, const kcXform<2>& x) {
  if (!out || !in) return KMATH_ERR_NULL;
  const kmath_ellipse e = *in;
  if (!isFiniteEllipse(e)) return KMATH_ERR_NOT_FINITE;
  if (!(e.radiusX > 0) || !(e.radiusY > 0)) return KMATH_ERR_DEGENERATE;
  const kcMatrix<2> own = kfEllipseMatrix_(e.radiusX, e.radiusY, e.rotation);
  return ellipseFromLinear(out, x.mapPoint(kcVector<2>(e.centreX, e.centreY)), x.matrix() * own);
}

long kmath_ellipse_fromXform(kmath_ellipse* out, const kcXform<2>& x) {
  if (!out) return KMATH_ERR_NULL;
  return ellipseFromLinear(out, x.trans(), x.matrix());
}

long kmath_ellipse_toXform(kcXform<2>* out, const kmath_ellipse* in) {
  if (!out || !in) return KMATH_ERR_NULL;
  const kmath_ellipse e = *in;
  if (!isFiniteEllipse(e)) return KMATH_ERR_NOT_FINITE;
  if (!(e.radiusX > 0) || !(e.radiusY > 0)) return KMATH_ERR_DEGENERATE;
  *out = kcXform<2>(kfEllipseMatrix_(e.radiusX, e.radiusY, e.rotation), kcVector<2>(e.centreX, e.centreY));
  return KMATH_OK;
}
