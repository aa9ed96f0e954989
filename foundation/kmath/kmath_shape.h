// The shape-math library: small geometric helpers in plain C style that the
// graphics-list conversion and the ellipse shapes share.
//
// - kmath_shapeAffineRect_initPoints: the four corners of an affine rectangle
//   (the image of the unit square [0, 1] x [0, 1]), in the order
//   T(0, 0), T(1, 0), T(1, 1), T(0, 1), so consecutive corners share an edge.
// - kmath_ellipse_transform: the image of an ellipse under an affine map, as
//   another ellipse in centre / radii / rotation form, always in one
//   canonical form: radiusX is the larger radius, the rotation (the direction
//   of radiusX) lies in [-pi/2, pi/2), and a circle has rotation 0. The
//   factorisation is the one kcEllipse2::map uses for a general map, so the
//   two agree there (for an exact similarity kcEllipse2::map keeps its own
//   radii order instead). A mirror is lost: an ellipse as a set of points has
//   no orientation.
// - kmath_ellipse_fromXform / kmath_ellipse_toXform: between an ellipse and
//   an affine map of the unit circle (the first is the transform of the unit
//   circle; the second builds translation * rotation * scale(radiusX, radiusY)).
//
// Every function returns KMATH_OK (0) or one of the negative codes below and
// writes its output only on success; kfThrowExceptionOnFailure turns a
// negative code into kcFoundationError::LibraryFailure.
#pragma once

#include "foundation/xform.h"

class kcAffineRectangle;

// Return codes. The negative ones start at -101, apart from those of the
// graphics-list library, so a code names the library that failed.
inline constexpr long KMATH_OK = 0;
// An output or input pointer is null.
inline constexpr long KMATH_ERR_NULL = -101;
// An input value is NaN or infinite, or the result overflowed.
inline constexpr long KMATH_ERR_NOT_FINITE = -102;
// The result is not an ellipse: a radius is not > 0, or the map collapses it.
inline constexpr long KMATH_ERR_DEGENERATE = -103;

struct kmath_point {
  double x;
  double y;
};

// The corners of an affine rectangle, in order (see above).
struct kmath_shapeAffineRect {
  kmath_point corners[4];
};

// An ellipse: centre, the radius along its rotated x axis and along its
// rotated y axis, and the rotation (radians, counter-clockwise from the x axis).
struct kmath_ellipse {
  double centreX;
  double centreY;
  double radiusX;
  double radiusY;
  double rotation;
};

// The corners of the affine rectangle (the same order as its corner(i)).
long kmath_shapeAffineRect_initPoints(kmath_shapeAffineRect* out, const kcAffineRectangle& rect);
// The corners of the image of the unit square under x.
long kmath_shapeAffineRect_initPoints(kmath_shapeAffineRect* out, const kcXform<2>& x);

// The image of ellipse in under x; in and out may be the same object.
long kmath_ellipse_transform(kmath_ellipse* out, const kmath_ellipse* in, const kcXform<2>& x);
// The image of the unit circle under x.
long kmath_ellipse_fromXform(kmath_ellipse* out, const kcXform<2>& x);
// An affine map whose image of the unit circle is the ellipse.
long kmath_ellipse_toXform(kcXform<2>* out, const kmath_ellipse* in);
