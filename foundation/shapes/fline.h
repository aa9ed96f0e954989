// kcFLine: an infinite, directed straight line given by a point on it and the
// angle of its direction.
//
// Parametrisation: point() is any point of the line, angle() (a kcRadian,
// kept as given) the direction of travel, counter-clockwise from the x axis;
// the line is point + s (cos angle, sin angle) for all real s. Two lines are
// equal when their points are equal and their angles name the same direction
// (equal modulo 2 pi); the same line through another of its points, or
// travelled the other way, is a different value.
//
// The line is not finite: its encloseRect() is the empty kcRect (it has no
// finite box), sample() throws kcShapesError::BadGeom; distances, nearest
// points and intersections are exact.
//
// Images: the point maps as a point, the angle through kcXform::mapAngle; a
// singular transform that collapses the direction throws kcMathError::Singular.
//
// Archive form: version byte 0, the point (two doubles), the angle (one double).
#pragma once

#include <optional>

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcFLine : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcFLine);

  // The x axis, travelled in +x.
  kcFLine() = default;
  // BadParams for a point or angle that is not finite.
  kcFLine(const kcVector<2>& point, const kcRadian& angle);
  // The line through a towards b (DegenerateShape for a == b).
  [[nodiscard]] static kcFLine through(const kcVector<2>& a, const kcVector<2>& b);

  [[nodiscard]] const kcVector<2>& point() const noexcept { return point_; }
  [[nodiscard]] const kcRadian& angle() const noexcept { return angle_; }
  void point(const kcVector<2>& p);
  void angle(const kcRadian& a);

  // Unit vector of the direction.
  [[nodiscard]] kcVector<2> direction() const noexcept { return {cos(angle_), sin(angle_)}; }
  // point() + s direction().
  [[nodiscard]] kcVector<2> pointAt(double s) const noexcept { return point_ + direction() * s; }
  // The foot of the perpendicular from p.
  [[nodiscard]] kcVector<2> closestPoint(const kcVector<2>& p) const noexcept;
  // Distance from the line, positive to the left of the direction of travel.
  [[nodiscard]] double signedDistance(const kcVector<2>& p) const noexcept;
  // The crossing point of the two lines; none when they are parallel
  // (directions with an exactly zero cross product, coincident lines included).
  [[nodiscard]] std::optional<kcVector<2>> intersect(const kcFLine& other) const;

  [[nodiscard]] kcFLine map(const kcXform<2>& x) const;

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
  kcRadian angle_;
};
