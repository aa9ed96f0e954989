// kcGenRect: a general rectangle, the image of the unit square [0, 1] × [0, 1]
// under an affine transform, with rounded corners.
//
// Parametrisation: xform() maps the unit square onto the rectangle, so
// xform() * (0, 0) is the corner the boundary starts from, the matrix columns
// are the two sides and xform() * (0.5, 0.5) is the centre. A shear gives a
// parallelogram, a mirror reverses the direction of travel. The transform
// must be invertible (DegenerateShape otherwise).
//
// Rounding: roundX() and roundY(), each in [0, 1], are the rounding's extent
// as fractions of the half sides: in the unit square every corner is cut by
// the quarter of the ellipse with semi-axes roundX / 2 along x and roundY / 2
// along y centred inside the corner; the transform then maps that quarter
// onto an elliptical arc. A corner is rounded only when both fractions are
// above 0; both at 1 make the whole outline one ellipse. Equality compares
// the stored fractions as well, so (0.5, 0) and (0, 0) draw alike but differ.
//
// The boundary (a region's curve) starts at xform() * (roundX / 2, 0) (at
// xform() * (0, 0) when the corners are not rounded) and
// runs counter-clockwise in the unit square: the bottom side, the corner at
// (1, 0), the right side, and so on; the closing point repeats the start.
//
// within() counts the boundary as inside, widened by 1e-12 in the unit
// square against rounding.
//
// Archive form: version byte 0, the transform (six doubles), roundX, roundY.
#pragma once

#include "foundation/shapes/shape.h"

class kcRect;

class kcGenRect : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcGenRect);

  // The unit square itself, without rounding.
  kcGenRect() = default;
  // BadParams for non-finite values or a rounding outside [0, 1];
  // DegenerateShape for a singular transform.
  explicit kcGenRect(const kcXform<2>& xform, double roundX = 0.0, double roundY = 0.0);
  // A rectangle of the given side lengths (both > 0) about its centre, its
  // first side turned by angle from the x axis.
  kcGenRect(const kcVector<2>& centre, const kcVector<2>& size, const kcRadian& angle, double roundX = 0.0,
            double roundY = 0.0);
  // The rectangle r, unrounded (DegenerateShape when r has no area).
  explicit kcGenRect(const kcRect& r);

  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  [[nodiscard]] double roundX() const noexcept { return roundX_; }
  [[nodiscard]] double roundY() const noexcept { return roundY_; }
  void xform(const kcXform<2>& x);
  void roundX(double f);
  void roundY(double f);

  [[nodiscard]] bool isRounded() const noexcept { return roundX_ > 0.0 && roundY_ > 0.0; }
  [[nodiscard]] kcVector<2> centre() const noexcept { return xform_ * kcVector<2>(0.5, 0.5); }
  // Corners of the unrounded outline: images of (0, 0), (1, 0), (1, 1), (0, 1);
  // BadParams for another index.
  [[nodiscard]] kcVector<2> corner(int i) const;
  // Lengths of the images of the unit square's x and y sides.
  [[nodiscard]] double sideX() const noexcept { return xform_.matrix().xScale(); }
  [[nodiscard]] double sideY() const noexcept { return xform_.matrix().yScale(); }

  // The image under x, rounding kept (DegenerateShape for a singular x).
  [[nodiscard]] kcGenRect map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // One piece of the boundary: a straight side from a to b, or the elliptical
  // arc c + u cos t + v sin t for t in [t0, t0 + pi / 2].
  struct Piece {
    bool arc = false;
    kcVector<2> a, b;
    kcVector<2> c, u, v;
    double t0 = 0.0;
  };
  // The boundary's pieces in order (sides of zero length left out).
  [[nodiscard]] std::vector<Piece> pieces_() const;
  // BadParams for non-finite values or a rounding outside [0, 1],
  // DegenerateShape for a singular transform.
  static void check_(const kcXform<2>& x, double roundX, double roundY);

  kcXform<2> xform_;
  double roundX_ = 0.0;
  double roundY_ = 0.0;
};
