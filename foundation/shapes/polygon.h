// kcPolygon: a closed polygon with straight edges.
//
// Parametrisation: the vertices in order; edge i runs from vertex i to
// vertex i + 1 and the last edge back to vertex 0 (the first vertex is not
// repeated at the end). A region: the boundary starts at vertex 0 and
// follows the vertices; within() uses the even-odd rule, the boundary
// (widened by 1e-12 of the box diagonal, against rounding) counting as inside; area() is the signed
// (shoelace) area, positive for counter-clockwise vertices. Self-intersecting and zero-area polygons are
// allowed.
//
// The default polygon has no vertices and is empty (empty box; nearestPoint
// and distanceToPoint throw kcShapesError::EmptyShape; within() is false).
// One or two vertices, or vertices that all coincide, are DegenerateShape.
//
// Archive form: version byte 0, a 32-bit count, then x and y of each vertex.
#pragma once

#include <vector>

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcPolygon : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcPolygon);

  kcPolygon() = default;
  // BadParams for non-finite coordinates; DegenerateShape as above.
  explicit kcPolygon(std::vector<kcVector<2>> vertices);

  [[nodiscard]] const std::vector<kcVector<2>>& vertices() const noexcept { return vertices_; }
  void vertices(std::vector<kcVector<2>> vertices);
  [[nodiscard]] std::size_t size() const noexcept { return vertices_.size(); }

  [[nodiscard]] double area() const noexcept;
  [[nodiscard]] double perimeter() const noexcept;

  [[nodiscard]] kcPolygon map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] bool isEmpty() const override { return vertices_.empty(); }
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

  // True when the vertex list makes a polygon (or the empty one).
  [[nodiscard]] static bool valid_(const std::vector<kcVector<2>>& vertices);

  std::vector<kcVector<2>> vertices_;
};
