// kcLine: an infinite straight line given by a point on it and a direction
// vector.
//
// Parametrisation: point() is a point of the line, direction() a non-zero
// vector along it, both kept as given (the direction is not normalised); the
// line is point + s direction for all real s. Equality compares the two
// vectors exactly. A zero direction is DegenerateShape, also for the image
// under a transform that collapses it.
//
// The line is not finite: its encloseRect() is the empty kcRect, sample()
// throws kcShapesError::BadGeom; nearest points are exact.
//
// Archive form: version byte 0, the point, the direction (four doubles).
#pragma once

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcFLine;

class kcLine : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcLine);

  // The x axis: through (0, 0) along (1, 0).
  kcLine() = default;
  // BadParams for values that are not finite; DegenerateShape for a zero direction.
  kcLine(const kcVector<2>& point, const kcVector<2>& direction);

  [[nodiscard]] const kcVector<2>& point() const noexcept { return point_; }
  [[nodiscard]] const kcVector<2>& direction() const noexcept { return direction_; }
  void point(const kcVector<2>& p);
  void direction(const kcVector<2>& d);

  [[nodiscard]] kcRadian angle() const noexcept { return direction_.angle(); }
  // The foot of the perpendicular from p.
  [[nodiscard]] kcVector<2> closestPoint(const kcVector<2>& p) const noexcept;
  // The same line as a kcFLine (point and direction angle).
  [[nodiscard]] kcFLine toFLine() const;

  [[nodiscard]] kcLine map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isFinite() const override { return false; }
  [[nodiscard]] kcRect encloseRect() const override { return kcRect(); }
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override { return closestPoint(p); }
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  kcVector<2> point_;
  kcVector<2> direction_{1.0, 0.0};
};
