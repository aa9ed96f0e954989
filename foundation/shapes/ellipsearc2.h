// kcEllipseArc2: an arc of a kcEllipse2, from a start parameter over a signed
// span.
//
// Parametrisation: the arc is ellipse().point(t) for t from angleStart() to
// angleStart() + angleSpan(), t being the kcEllipse2's own parameter (see
// ellipse2.h). A positive span runs the way t increases (counter-clockwise
// for the ellipse), a negative one the other way. |angleSpan()| is at most a
// full turn (a margin of 1e-12 relative allows for rounding: 2 pi converted
// from degrees); a span of a full turn is the whole ellipse, travelled once,
// with the start point also the end point. A zero span is degenerate. The
// start parameter is any finite angle and is not normalised.
//
// Note the names: angleStart() and angleSpan() are parameters of the arc,
// while startAngle() and endAngle() (of kcShape) are the directions of travel
// at its ends.
//
// As a shape it is an open contour. Nearest points: where several arc points
// are nearest, the first one along the arc wins (so a point equally near both
// ends gets the start point).
//
// Images: closed under invertible affine maps. The ellipse is mapped as
// kcEllipse2::map does and the parameters follow it, so the image arc has the
// same end points in the same order; when the ellipse's parameter is mirrored
// by the map, both angles change sign (the start up to the parameter's shift).
//
// Conversion from a kcEllipseArc: the ellipse is factorised (see ellipse2.h)
// and the start and span are carried over by the same change of parameter; a
// mirrored kcEllipse turns into a kcEllipseArc2 whose span has the opposite
// sign, on the same points in the same order.
//
// Default: the whole unit circle from 0 (span 2 pi). Equality compares the
// fields exactly. Archive form: version byte 0, the kcEllipse2 (its own
// version byte and fields), start, span (radians).
#pragma once

#include "foundation/shapes/ellipse2.h"

class kcEllipseArc;

class kcEllipseArc2 : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipseArc2);

  kcEllipseArc2();
  // BadParams for a non-finite value or a span beyond a full turn,
  // DegenerateShape for a zero span.
  kcEllipseArc2(const kcEllipse2& ellipse, const kcRadian& start, const kcRadian& span);
  explicit kcEllipseArc2(const kcEllipseArc& arc);

  [[nodiscard]] const kcEllipse2& ellipse() const noexcept { return ellipse_; }
  [[nodiscard]] const kcRadian& angleStart() const noexcept { return start_; }
  [[nodiscard]] const kcRadian& angleSpan() const noexcept { return span_; }
  // The parameter of the end point: angleStart() + angleSpan().
  [[nodiscard]] kcRadian angleEnd() const noexcept { return start_ + span_; }
  void ellipse(const kcEllipse2& e);
  void angleStart(const kcRadian& a);
  void angleSpan(const kcRadian& a);

  // The point of parameter t (of the whole ellipse).
  [[nodiscard]] kcVector<2> point(const kcRadian& t) const noexcept { return ellipse_.point(t); }
  // The same points travelled from the end to the start.
  [[nodiscard]] kcEllipseArc2 reversed() const;

  [[nodiscard]] kcEllipseArc2 map(const kcXform<2>& x) const;

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

  friend bool operator==(const kcEllipseArc2& a, const kcEllipseArc2& b) noexcept {
    return a.ellipse_ == b.ellipse_ && a.start_ == b.start_ && a.span_ == b.span_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcEllipse2 ellipse_;
  kcRadian start_;
  kcRadian span_;
};
