// kcGenAnnulus: the region between a kcGenRect and the same rectangle shrunk
// about its centre by an inner scale in (0, 1).
//
// Parametrisation: outer() is the kcGenRect, inner() its image under the
// scaling by innerScale() about outer().centre(), rounding fractions kept.
// The boundary is the outer rectangle's boundary followed by the inner
// one's, both in the kcGenRect's own order (see genrect.h); sample() gives the
// outer one and then the inner one, each closed. As a shape it is a region:
// within() is true inside or on the outer boundary and not strictly inside
// the inner one, points within 1e-12 of a boundary (relative to the size of
// the outer box) counting as on it. Distances are to the nearer boundary; a
// tie (within 1e-13 of that size) goes to the outer one, the first along the
// boundary.
//
// Images: closed under invertible affine maps, exactly: scaling about the
// centre commutes with every affine map, so the image is the image kcGenRect
// with the same inner scale. Singular maps throw DegenerateShape (from the
// kcGenRect).
//
// A fully rounded kcGenRect (roundX = roundY = 1) is an ellipse, so this
// class also holds every affine image of a circular ring (kcAnnulus).
//
// Default: the unit square unrounded, inner scale 0.5. Equality compares the
// rectangles (kcGenRect's ==) and the scale exactly. Archive form: version
// byte 0, the kcGenRect (its own version byte and fields), the inner scale.
#pragma once

#include "foundation/shapes/genrect.h"

class kcGenAnnulus : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcGenAnnulus);

  kcGenAnnulus() = default;
  // BadParams for a non-finite scale, DegenerateShape unless 0 < innerScale < 1.
  kcGenAnnulus(const kcGenRect& outer, double innerScale);

  [[nodiscard]] const kcGenRect& outer() const noexcept { return outer_; }
  [[nodiscard]] double innerScale() const noexcept { return scale_; }
  void outer(const kcGenRect& r);
  void innerScale(double s);
  // The inner boundary as a kcGenRect.
  [[nodiscard]] kcGenRect inner() const;

  [[nodiscard]] kcGenAnnulus map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  // The outer and the inner kcGenRect.
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcGenAnnulus& a, const kcGenAnnulus& b) {
    return a.outer_ == b.outer_ && a.scale_ == b.scale_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for a scale a ring cannot have.
  static void check_(double innerScale);
  // The larger side of the outer box: the length the tolerances scale with.
  [[nodiscard]] double size_() const;

  kcGenRect outer_;
  double scale_ = 0.5;
};
