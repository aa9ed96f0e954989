// kcEllipseArc: an arc of a kcEllipse, from a start parameter over a signed
// span, both in the unit circle's space.
//
// Parametrisation: the arc is ellipse().xform() * (cos t, sin t) for t from
// angleStart() to angleStart() + angleSpan(). A positive span runs the way t
// increases (counter-clockwise in the unit circle; clockwise in the plane
// when the transform mirrors), a negative one the other way. |angleSpan()| is
// at most a full turn (a margin of 1e-12 relative allows for rounding); a
// full turn is the whole ellipse, travelled once. A zero span is degenerate.
// The start parameter is any finite angle and is not normalised.
//
// Note the names: angleStart() and angleSpan() are parameters of the arc,
// while startAngle() and endAngle() (of kcShape) are the directions of travel
// at its ends.
//
// This form expresses every affine image of a circular arc exactly: a circle
// (center, radius) is kcEllipse(translation(center) scale(radius, radius)),
// the same circle travelled clockwise is scale(radius, -radius) with both
// angles negated, and map() multiplies the transform on the left, leaving
// the angles alone. Factorising into (circle, start, span, transform) is
// therefore exact in both directions.
//
// As a shape it is an open contour. Nearest points: where several arc points
// are nearest, the first one along the arc wins.
//
// Conversion from a kcEllipseArc2 keeps the angles (its ellipse becomes the
// kcEllipse of the kcEllipse2's transform); the way back is described in
// ellipsearc2.h.
//
// Default: the whole unit circle from 0 (span 2 pi). Equality compares the
// ellipses (kcEllipse's ==) and the angles exactly. Archive form: version
// byte 0, the kcEllipse (its own version byte and transform), start, span
// (radians).
#pragma once

#include "foundation/shapes/ellipse.h"

class kcEllipseArc2;

class kcEllipseArc : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipseArc);

  kcEllipseArc();
  // BadParams for a non-finite value or a span beyond a full turn,
  // DegenerateShape for a zero span.
  kcEllipseArc(const kcEllipse& ellipse, const kcRadian& start, const kcRadian& span);
  explicit kcEllipseArc(const kcEllipseArc2& arc);

  [[nodiscard]] const kcEllipse& ellipse() const noexcept { return ellipse_; }
  [[nodiscard]] const kcRadian& angleStart() const noexcept { return start_; }
  [[nodiscard]] const kcRadian& angleSpan() const noexcept { return span_; }
  // The parameter of the end point: angleStart() + angleSpan().
  [[nodiscard]] kcRadian angleEnd() const noexcept { return start_ + span_; }
  void ellipse(const kcEllipse& e);
  void angleStart(const kcRadian& a);
  void angleSpan(const kcRadian& a);

  // The point of parameter t (of the whole ellipse).
  [[nodiscard]] kcVector<2> point(const kcRadian& t) const noexcept { return ellipse_.point(t); }
  // The same points travelled from the end to the start.
  [[nodiscard]] kcEllipseArc reversed() const;

  // Exact: the arc of ellipse().map(x) with the same angles.
  [[nodiscard]] kcEllipseArc map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] bool isOpenContour() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override { return point(start_); }
  [[nodiscard]] kcVector<2> endPoint() const override { return point(angleEnd()); }
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcEllipseArc& a, const kcEllipseArc& b) noexcept {
    return a.ellipse_ == b.ellipse_ && a.start_ == b.start_ && a.span_ == b.span_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcEllipse ellipse_;
  kcRadian start_;
  kcRadian span_;
};
