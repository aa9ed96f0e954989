// kcEllipse2: an ellipse given by its two radii, the rotation of its first
// axis and its centre (the second of the two ellipse forms; kcEllipse is the
// first).
//
// Parametrisation: the boundary is
//   center + R(rotation) (radiusX cos t, radiusY sin t),  t in [0, 2 pi),
// R the counter-clockwise rotation, so t = 0 is the end of the first axis
// (radiusX along the direction of rotation) and t increases
// counter-clockwise. Either radius may be the larger one; both are > 0. The
// rotation is not normalised. As a shape it is a region: within() includes
// the boundary, and points within 1e-12 of it (relative to the size) count
// as on it; distances are to the boundary.
//
// Nearest points: where several boundary points are nearest (the centre, or
// a point on the longer axis close to the centre) the first one along the
// boundary from t = 0 is taken, so the centre of an ellipse with
// radiusX > radiusY gets t = pi/2, center + R(rotation) (0, radiusY).
//
// Images (map): closed under every invertible affine map. The image is
// re-factorised: under a similarity whose matrix is exactly a scaled rotation
// (a00 == a11, a01 == -a10) or a scaled mirror (a00 == -a11, a01 == a10) the
// radii keep their order and t its meaning (a mirror reverses it: t becomes
// -t); under any other map the result comes from the singular value
// decomposition, with radiusX >= radiusY and the rotation in [-pi/2, pi/2)
// (0 for a circle). Singular maps throw kcMathError::Singular.
//
// Default: the unit circle. Equality compares the four fields exactly.
// Archive form: version byte 0, radiusX, radiusY, rotation (radians), centre.
#pragma once

#include "foundation/shapes/shape.h"

class kcCircle;
class kcEllipse;

class kcEllipse2 : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcEllipse2);

  kcEllipse2() = default;
  // BadParams for non-finite values, DegenerateShape for a radius that is not > 0.
  kcEllipse2(double radiusX, double radiusY, const kcRadian& rotation, const kcVector<2>& center);
  // The same curve, factorised: radiusX >= radiusY, rotation in [-pi/2, pi/2)
  // (0 for a circle). The parameter changes by a shift, and a mirrored
  // kcEllipse is traced backwards; kcEllipseArc2 carries arcs over exactly.
  explicit kcEllipse2(const kcEllipse& e);
  // Radii (r, r), rotation 0.
  explicit kcEllipse2(const kcCircle& c);

  [[nodiscard]] double radiusX() const noexcept { return radiusX_; }
  [[nodiscard]] double radiusY() const noexcept { return radiusY_; }
  [[nodiscard]] const kcRadian& rotation() const noexcept { return rotation_; }
  [[nodiscard]] const kcVector<2>& center() const noexcept { return center_; }
  void radiusX(double r);
  void radiusY(double r);
  void rotation(const kcRadian& a);
  void center(const kcVector<2>& c);

  // The boundary point of parameter t.
  [[nodiscard]] kcVector<2> point(const kcRadian& t) const noexcept;
  // The transform that maps the unit circle onto this ellipse, parameter
  // for parameter: translation(center) R(rotation) scale(radiusX, radiusY).
  [[nodiscard]] kcXform<2> xform() const noexcept;

  [[nodiscard]] kcEllipse2 map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcEllipse2& a, const kcEllipse2& b) noexcept {
    return a.radiusX_ == b.radiusX_ && a.radiusY_ == b.radiusY_ && a.rotation_ == b.rotation_ &&
           a.center_ == b.center_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for values an ellipse cannot have.
  static void check_(double radiusX, double radiusY, const kcRadian& rotation, const kcVector<2>& center);

  double radiusX_ = 1.0;
  double radiusY_ = 1.0;
  kcRadian rotation_;
  kcVector<2> center_;
};
