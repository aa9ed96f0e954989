// Private algebra of the ellipse shapes: the factorisation of an ellipse's
// linear part into rotation, radii and a change of parameter, the similarity
// test, and the parameter bookkeeping of arcs.
//
// Every ellipse and elliptical arc of the family is a curve
//   P(t) = c + M (cos t, sin t)
// for some invertible 2 x 2 matrix M. kcEllipse stores M and c directly (its
// kcXform<2>), kcEllipse2 stores them factorised, M = R(rotation) diag(rx, ry).
// Going from the first form to the second needs the singular value
// decomposition of M; a mirror in M cannot go into the radii (they are
// positive), so it is carried by the parameter: t runs the other way.
#pragma once

#include <vector>

#include "foundation/matrix.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kcEllipse2;

// A change of an ellipse's parameter: t becomes -(t + shift) when mirrored,
// else t + shift; an arc's span changes sign with a mirror.
struct kcParamChange_ {
  double shift = 0.0;
  bool mirrored = false;

  [[nodiscard]] double apply(double t) const noexcept { return mirrored ? -(t + shift) : t + shift; }
  [[nodiscard]] double applySpan(double span) const noexcept { return mirrored ? -span : span; }
};

// M = R(rotation) diag(radiusX, radiusY) Q, with Q = R(shift) or, when
// mirrored, Q = diag(1, -1) R(shift). The point of parameter t of the curve
// c + M (cos t, sin t) is then the point of parameter u = param.apply(t) of
// c + R(rotation) (radiusX cos u, radiusY sin u).
struct kcEllipseFactors_ {
  double radiusX = 1.0;   // the larger radius
  double radiusY = 1.0;   // the smaller radius, >= 0
  double rotation = 0.0;  // in [-pi/2, pi/2); exactly 0 for a circle
  kcParamChange_ param;   // mirrored when M reverses orientation
};

// The factorisation of m (any matrix; a singular one gives radiusY 0). The
// two radii of a matrix whose singular values differ by less than rounding
// (relative kCircularTol_) are taken as equal and the rotation as 0, so a
// circle always factorises with rotation 0 and the whole turn in shift.
[[nodiscard]] kcEllipseFactors_ kfFactorEllipse_(const kcMatrix<2>& m) noexcept;

// Regions count points this close to their boundary (relative to their size,
// or in parameter for the straight edges of a section) as on it, so that
// points computed on the boundary (nearestPoint, sample) test as within.
inline constexpr double kBoundaryTol_ = 1e-12;
// Where a region picks the nearer of two boundary pieces, distances closer
// than this (relative to its size) tie, and the piece first along the
// boundary wins.
inline constexpr double kTieTol_ = 1e-13;

// Relative difference of the singular values below which an ellipse counts
// as a circle when factorised.
inline constexpr double kCircularTol_ = 1e-15;

// True when m is invertible and maps circles to circles: its singular values
// differ by at most tol times the larger one. A mirror may be part of it.
[[nodiscard]] bool kfIsSimilarity_(const kcMatrix<2>& m, double tol) noexcept;
// The scale factor of a similarity: the mean of m's singular values.
[[nodiscard]] double kfSimilarityScale_(const kcMatrix<2>& m) noexcept;

// The matrix R(rotation) diag(rx, ry) of an ellipse in its second form.
[[nodiscard]] kcMatrix<2> kfEllipseMatrix_(double rx, double ry, double rotation) noexcept;

// Arcs: the parameter runs from start over a signed span; |span| of a full
// turn or more is the whole curve.
// The offset of parameter t along the arc from start in the direction of
// span, in [0, 2 pi).
[[nodiscard]] double kfArcOffset_(double t, double start, double span) noexcept;
// The largest |span| an arc accepts: a full turn and a rounding margin.
inline constexpr double kMaxArcSpan_ = 6.283185307179586 * (1.0 + 1e-12);
// Checks an arc's span: BadParams for a non-finite value or one beyond a
// full turn, DegenerateShape for 0.
void kfCheckArcSpan_(double span);
// The same for a loaded span: kcArchive::Corrupt.
void kfCheckLoadedArcSpan_(double span);

// The image of e under x as a kcEllipse2 (see kcEllipse2::map), and the
// change that takes a parameter of e to the parameter of the same point of
// the image. kcMathError::Singular for a singular x.
[[nodiscard]] kcEllipse2 kfMapEllipse2_(const kcEllipse2& e, const kcXform<2>& x, kcParamChange_& change);

// The images of the unit x and y directions under m: the u and v of the
// parametric arcs of geom_p.h.
[[nodiscard]] inline kcVector<2> kfColumnU_(const kcMatrix<2>& m) {
  return {m.element(0, 0), m.element(1, 0)};
}
[[nodiscard]] inline kcVector<2> kfColumnV_(const kcMatrix<2>& m) {
  return {m.element(0, 1), m.element(1, 1)};
}

// Samples the whole closed curve c + M (cos t, sin t) from t = 0, ending with
// the start point again (see kcShape::sample).
void kfSampleClosedEllipse_(const kcVector<2>& c, const kcMatrix<2>& m, double spacing,
                            std::vector<kcVector<2>>& out);

// BadParams unless every element of x is finite.
void kfCheckFiniteXform_(const kcXform<2>& x);
// The same for a loaded transform: kcArchive::Corrupt.
void kfCheckLoadedFiniteXform_(const kcXform<2>& x);

// The direction of travel at parameter t along an arc of c + m (cos t, sin t)
// whose span has the given sign.
[[nodiscard]] kcRadian kfArcTravelAngle_(const kcMatrix<2>& m, double t, double span) noexcept;

// The position of p in an ellipse's own polar coordinates: rho = 1 on the
// ellipse, 0 at the centre, and the parameter t of the ray through p (0 for
// the centre itself). A region bounded by the ellipse scaled by rho0 and rho1
// about its centre holds exactly the points with rho0 <= rho <= rho1.
struct kcEllipsePolar_ {
  double rho = 0.0;
  double t = 0.0;
};
[[nodiscard]] kcEllipsePolar_ kfEllipsePolar_(const kcEllipse2& e, const kcVector<2>& p) noexcept;
