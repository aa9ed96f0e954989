// kcPointSet: a list of points, in order, as one shape.
//
// Parametrisation: the points, duplicates allowed. The default set has no
// points and is empty (isEmpty(); its box is the empty kcRect, and
// nearestPoint/distanceToPoint throw kcShapesError::EmptyShape). The nearest
// point is the nearest member, the first one of several at equal distance;
// sample() gives the members themselves, whatever the spacing; decompose()
// gives one kcPoint per member.
//
// Archive form: version byte 0, a 32-bit count, then x and y of each point.
#pragma once

#include <vector>

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcPointSet : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcPointSet);

  kcPointSet() = default;
  // BadParams when a coordinate is not finite.
  explicit kcPointSet(std::vector<kcVector<2>> points);

  [[nodiscard]] const std::vector<kcVector<2>>& points() const noexcept { return points_; }
  void points(std::vector<kcVector<2>> points);
  void append(const kcVector<2>& p);
  [[nodiscard]] std::size_t size() const noexcept { return points_.size(); }

  [[nodiscard]] kcPointSet map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isEmpty() const override { return points_.empty(); }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  std::vector<kcVector<2>> points_;
};
