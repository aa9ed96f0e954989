// kcGenShape: a general shape, a handle to any other shape that stands in for
// it and forwards the whole shape protocol to it.
//
// Parametrisation: the held shape (a kcShapePtr), or none. A general shape
// with a shape answers every query as that shape does: kind, box, distances,
// ends and angles, sample, decompose (the held shape's pieces). Its images
// (map, mapShape, reverse) are general shapes holding the held shape's
// image, so the wrapper survives mapping; clone() clones the held shape too
// (as kcShapeTree::clone does), while a copy shares it. Without a shape (the
// default) it is an empty shape: isEmpty() true, encloseRect empty,
// nearestPoint EmptyShape, sample appends nothing, and the open-contour and
// region queries throw NotOpenContour and NotRegion. Two general shapes are
// equal when both hold none or both hold equal shapes.
//
// Cycles: a general shape may not hold itself, directly or through trees and
// other general shapes (BadParams; see kcShapeTree::contains).
//
// Depth: general shapes and trees nest to any depth, and every operation
// walks the nesting without recursion (see kcShapeTree): a chain of general
// shapes answers as the shape at its end, however long.
//
// Archive form: version byte 0, then the held shape through the handle
// operator (tag 0 for none). Nesting is bounded as for kcShapeTree: loading
// refuses trees and general shapes nested deeper than
// kcShapeTree::kMaxLoadDepth (kcArchive::Corrupt), and storing checks the
// nesting before it writes anything and throws kcArchive::ValueOutOfRange
// rather than write what loading would refuse.
#pragma once

#include "foundation/shapes/shape.h"

class kcGenShape final : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcGenShape);

  // Holds no shape.
  kcGenShape() = default;
  // Holds shape (which may be null).
  explicit kcGenShape(kcShapePtr shape);
  // Holds a clone of shape.
  explicit kcGenShape(const kcShape& shape);
  kcGenShape(const kcGenShape&) = default;
  kcGenShape(kcGenShape&&) = default;
  // Take the other's shape (BadParams, leaving this one unchanged, when that
  // shape contains this general shape).
  kcGenShape& operator=(const kcGenShape& other);
  kcGenShape& operator=(kcGenShape&& other);
  // Frees a chain of general shapes and trees held only here link by link.
  ~kcGenShape() override;

  [[nodiscard]] const kcShapePtr& shape() const noexcept { return shape_; }
  // BadParams when shape contains this general shape.
  void shape(kcShapePtr shape);

  [[nodiscard]] kcGenShape map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isOpenContour() const override;
  [[nodiscard]] bool isRegion() const override;
  [[nodiscard]] bool isFinite() const override;
  [[nodiscard]] bool isEmpty() const override;
  [[nodiscard]] bool hasTangent() const override;
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcRect boundingBox() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override;
  [[nodiscard]] kcVector<2> endPoint() const override;
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  [[noreturn]] void remapAndThrowError_(kcException& e) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  friend class kcShapeNesting_;

  static constexpr unsigned char kVersion = 0;

  kcShapePtr shape_;
};
