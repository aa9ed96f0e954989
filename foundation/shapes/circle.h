// kcCircle: a circle given by its centre and its radius (> 0).
//
// Parametrisation: the boundary is center + radius (cos t, sin t), t from 0
// (the point right of the centre) counter-clockwise to 2 pi, where sample()
// starts and ends. As a shape it is a region: within() counts the disc with
// its boundary, taking points within 1e-12 of the radius (relative) as on it
// so that computed boundary points test inside; distances are measured to
// the boundary. The nearest point to
// the centre itself is not unique; it is the start point, center + (radius, 0).
//
// Images: under a similarity (rotation, uniform scale, mirror and
// translation) the image is a kcCircle again; under any other invertible
// transform a kcEllipse2. A transform counts as a similarity when its two
// singular values differ by at most kSimilarityTol of the larger one, so the
// rounding of composed rotations does not turn a circle into an ellipse;
// the image radius is then the radius times the mean singular value.
// Singular transforms throw kcMathError::Singular.
//
// Default: the unit circle about the origin. Equality compares centre and
// radius exactly. Archive form: version byte 0, centre (two doubles), radius.
#pragma once

#include "foundation/shapes/shape.h"

class kcEllipse2;

class kcCircle : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcCircle);

  // Largest relative difference of a transform's singular values for which
  // the transform still counts as a similarity.
  static constexpr double kSimilarityTol = 1e-12;

  kcCircle() = default;
  // BadParams for non-finite values, DegenerateShape for a radius that is not > 0.
  kcCircle(const kcVector<2>& center, double radius);

  [[nodiscard]] const kcVector<2>& center() const noexcept { return center_; }
  [[nodiscard]] double radius() const noexcept { return radius_; }
  void center(const kcVector<2>& center);
  void radius(double radius);

  // The boundary point at angle t.
  [[nodiscard]] kcVector<2> point(const kcRadian& t) const noexcept;

  // True when x maps every circle onto a circle (see the class comment).
  [[nodiscard]] static bool isSimilarity(const kcXform<2>& x) noexcept;
  // The image under a similarity; BadGeom for any other transform.
  [[nodiscard]] kcCircle map(const kcXform<2>& x) const;
  // The same circle in the ellipse's second form: radii (r, r), rotation 0.
  [[nodiscard]] kcEllipse2 toEllipse2() const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  // A kcCircle under a similarity, else a kcEllipse2.
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

  friend bool operator==(const kcCircle& a, const kcCircle& b) noexcept {
    return a.center_ == b.center_ && a.radius_ == b.radius_;
  }

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // BadParams or DegenerateShape for values a circle cannot have.
  static void check_(const kcVector<2>& center, double radius);

  kcVector<2> center_;
  double radius_ = 1.0;
};
