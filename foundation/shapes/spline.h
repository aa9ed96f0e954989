// kcCubicSpline: a piecewise cubic Bezier curve, the common form of every
// spline of the family.
//
// Parametrisation: 3k + 1 control points (k >= 1 pieces); piece i is the
// Bezier curve of points 3i to 3i + 3, so neighbouring pieces share their
// joining point. The spline parameter runs over [0, k]: pointAt(t) is piece
// floor(t) at t - floor(t) (the last piece at t = k). The curve starts at the
// first point and ends at the last; it is an open contour even when they
// meet. Pieces need not join smoothly, and a piece whose four points
// coincide is allowed (it adds no length); only a spline whose points all
// coincide is degenerate.
//
// The three other splines derive from this class and keep their own defining
// data (de Boor points, points to pass through, points and tangents); each
// computes its Bezier form from that data on construction, so the geometry
// below serves all four, and bezierForm() gives any of them as a plain
// kcCubicSpline. The Bezier points of a derived spline change only with its
// own data: this class has no setter, and a derived class archives only its
// own data.
//
// Images: an affine map commutes with Bezier control points, so the image is
// exact. A singular map is allowed unless the image is a single point
// (DegenerateShape).
//
// Queries: encloseRect is the union of the pieces' tight boxes;
// nearestPoint takes the nearest of the pieces' exact nearest points (pieces
// whose control box is already farther away are skipped; ties go to the
// earlier piece); sample() samples each piece (see kcBezierCurve) and keeps
// the joins once; decompose() gives the pieces as kcBezierCurve, leaving out
// pieces that are a single point.
//
// Archive form: version byte 0, then the control points (a 32-bit count and
// the points, two doubles each).
#pragma once

#include <initializer_list>
#include <vector>

#include "foundation/shapes/bezier.h"
#include "foundation/shapes/shape.h"

struct kcCubicFoot_;

class kcCubicSpline : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcCubicSpline);

  // The straight spline of one piece from (0, 0) to (1, 0).
  kcCubicSpline();
  // BadParams unless the count is 3k + 1 with k >= 1 and every coordinate is
  // finite; DegenerateShape when all points coincide.
  explicit kcCubicSpline(std::vector<kcVector<2>> bezierPoints);
  // The same from a braced list (kcCubicSpline({p0, p1, p2, p3}) is not taken
  // for a kcBezierCurve).
  kcCubicSpline(std::initializer_list<kcVector<2>> bezierPoints)
      : kcCubicSpline(std::vector<kcVector<2>>(bezierPoints)) {}
  explicit kcCubicSpline(const kcBezierCurve& curve);

  // The control points of the pieces, 3k + 1 of them.
  [[nodiscard]] const std::vector<kcVector<2>>& bezierPoints() const noexcept { return bezier_; }
  [[nodiscard]] long numPieces() const noexcept { return static_cast<long>(bezier_.size() / 3); }
  // Piece i as a curve of its own (BadParams for an index outside
  // [0, numPieces()); DegenerateShape for a piece that is a single point).
  [[nodiscard]] kcBezierCurve piece(long i) const;
  // The point at spline parameter t, clamped to [0, numPieces()].
  [[nodiscard]] kcVector<2> pointAt(double t) const;
  // This curve as a plain kcCubicSpline.
  [[nodiscard]] kcCubicSpline bezierForm() const { return kcCubicSpline(bezier_); }

  [[nodiscard]] kcCubicSpline map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isOpenContour() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override { return bezier_.front(); }
  [[nodiscard]] kcVector<2> endPoint() const override { return bezier_.back(); }
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

  // For the derived splines: replaces the Bezier form by one computed from
  // their data (checked as the constructor checks).
  void bezierPoints_(std::vector<kcVector<2>> points);

 private:
  static constexpr unsigned char kVersion = 0;

  // The constructor's checks: BadParams for a count that is not 3k + 1 or a
  // coordinate that is not finite (finite data of a derived spline can still
  // overflow in its Bezier form), DegenerateShape for a single point.
  static void check_(const std::vector<kcVector<2>>& points);
  // The nearest foot over all pieces.
  [[nodiscard]] kcCubicFoot_ nearest_(const kcVector<2>& p) const;

  std::vector<kcVector<2>> bezier_;
};
