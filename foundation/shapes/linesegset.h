// kcLineSegSet: a list of line segments, in order, as one shape.
//
// Parametrisation: the segments (each a kcLineSeg, so none is degenerate).
// The default set has none and is empty (isEmpty(); empty box; nearestPoint
// and distanceToPoint throw kcShapesError::EmptyShape). The segments need
// not touch: the set is neither an open contour nor a region. sample() gives
// each segment's samples in turn, ends included; decompose() the segments.
//
// Archive form: version byte 0, a 32-bit count, then p1 and p2 of each
// segment (32 bytes per segment).
#pragma once

#include <vector>

#include "foundation/shapes/lineseg.h"

class kcLineSegSet : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcLineSegSet);

  kcLineSegSet() = default;
  explicit kcLineSegSet(std::vector<kcLineSeg> segments) : segments_(std::move(segments)) {}

  [[nodiscard]] const std::vector<kcLineSeg>& segments() const noexcept { return segments_; }
  void segments(std::vector<kcLineSeg> segments);
  void append(const kcLineSeg& s);
  [[nodiscard]] std::size_t size() const noexcept { return segments_.size(); }

  [[nodiscard]] kcLineSegSet map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isEmpty() const override { return segments_.empty(); }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  std::vector<kcLineSeg> segments_;
};
