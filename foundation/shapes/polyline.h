// kcPolyline: a chain of straight edges through a list of vertices, open or
// closed.
//
// Parametrisation: the vertices in order and the closed flag. Open, the
// chain runs from the first vertex to the last and is an open contour:
// startPoint() is vertex 0, endPoint() the last vertex, the end angles are
// the directions of the first and last edges of non-zero length, reverse()
// reverses the vertices. Closed, an extra edge joins the last vertex back to
// the first (which is not repeated), and the polyline is a region like a
// kcPolygon (even-odd rule, boundary inside with the same tolerance).
//
// The default polyline has no vertices (open, empty: empty box,
// nearestPoint throws kcShapesError::EmptyShape, and it is not an open
// contour). Otherwise an open polyline needs at least two vertices and a
// closed one three, not all coincident (DegenerateShape).
//
// Archive form: version byte 0, a 32-bit count, x and y of each vertex, then
// the closed flag (one byte).
#pragma once

#include <vector>

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcPolyline : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcPolyline);

  kcPolyline() = default;
  // BadParams for non-finite coordinates; DegenerateShape as above.
  explicit kcPolyline(std::vector<kcVector<2>> vertices, bool closed = false);

  [[nodiscard]] const std::vector<kcVector<2>>& vertices() const noexcept { return vertices_; }
  [[nodiscard]] bool closed() const noexcept { return closed_; }
  void vertices(std::vector<kcVector<2>> vertices);
  void closed(bool c);
  [[nodiscard]] std::size_t size() const noexcept { return vertices_.size(); }
  // Total length of the edges, the closing one included.
  [[nodiscard]] double length() const noexcept;

  [[nodiscard]] kcPolyline map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[nodiscard]] bool isOpenContour() const override { return !closed_ && !vertices_.empty(); }
  [[nodiscard]] bool isRegion() const override { return closed_; }
  [[nodiscard]] bool isEmpty() const override { return vertices_.empty(); }
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override;
  [[nodiscard]] kcVector<2> endPoint() const override;
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  [[nodiscard]] static bool valid_(const std::vector<kcVector<2>>& vertices, bool closed);

  std::vector<kcVector<2>> vertices_;
  bool closed_ = false;
};
