// kcAnnulus: the ring between two concentric circles, given by its centre and
// its inner and outer radius (0 < inner < outer).
//
// Parametrisation: the boundary is the outer circle, center + outer (cos t,
// sin t), followed by the inner circle, center + inner (cos t, sin t), each
// from t = 0 counter-clockwise; sample() gives the outer circle and then the
// inner one, each closed (ending with its own start point). As a shape it is
// a region: within() is true for inner <= |p - center| <= outer (each bound
// widened by 1e-12 of the outer radius, so computed boundary points test
// inside). Distances
// are to the nearer circle; a point halfway between them (within 1e-13 of
// the outer radius) gets the outer one, the first along the boundary, and the centre gets the inner
// circle's start point, center + (inner, 0).
//
// Images: under a similarity (see kcCircle::isSimilarity) a kcAnnulus again,
// both radii scaled alike; under any other invertible map a kcGenAnnulus,
// whose outer boundary is the outer circle as a fully rounded kcGenRect
// (roundX = roundY = 1) and whose inner scale is inner / outer. Singular maps
// throw kcMathError::Singular.
//
// Default: centre (0, 0), radii 0.5 and 1. Equality compares the fields
// exactly. Archive form: version byte 0, centre (two doubles), inner radius,
// outer radius.
#pragma once

#include "foundation/shapes/shape.h"

class kcCircle;
class kcGenAnnulus;

class kcAnnulus : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcAnnulus);

  kcAnnulus() = default;
  // BadParams for non-finite values, DegenerateShape unless 0 < inner < outer.
  kcAnnulus(const kcVector<2>& center, double innerRadius, double outerRadius);

  [[nodiscard]] const kcVector<2>& center() const noexcept { return center_; }
  [[nodiscard]] double innerRadius() const noexcept { return inner_; }
  [[nodiscard]] double outerRadius() const noexcept { return outer_; }
  void center(const kcVector<2>& c);
  void innerRadius(double r);
  void outerRadius(double r);

  [[nodiscard]] kcCircle innerCircle() const;
  [[nodiscard]] kcCircle outerCircle() const;

  // The image under a similarity; BadGeom for any other transform.
  [[nodiscard]] kcAnnulus map(const kcXform<2>& x) const;
  // The same ring as a kcGenAnnulus (see the class comment).
  [[nodiscard]] kcGenAnnulus toGenAnnulus() const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  // A kcAnnulus under a similarity, else a kcGenAnnulus.
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  // The outer and the inner circle.
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcAnnulus& a, const kcAnnulus& b) noexcept {
    return a.center_ == b.center_ && a.inner_ == b.inner_ && a.outer_ == b.outer_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for values a ring cannot have.
  static void check_(const kcVector<2>& center, double inner, double outer);

  kcVector<2> center_;
  double inner_ = 0.5;
  double outer_ = 1.0;
};
