// kcRect: an axis-aligned rectangle given by its origin (the corner of least
// x and y) and its size (width, height).
//
// Parametrisation: the rectangle covers [x, x + w) × [y, y + h), half-open as
// pel rectangles are: contains() answers with that rule. As a shape it is a
// region whose boundary runs from the origin along the bottom edge (y
// minimal), up the right edge, back along the top edge and down the left edge
// (counter-clockwise when y points up); within() counts the boundary as
// inside, like every region, widened by 1e-12 of the larger side so that
// points computed on it test inside despite rounding.
//
// Empty: the default rectangle is empty (origin (0, 0), size (-1, -1)), and so
// is every rectangle built with a negative width or height; all empty
// rectangles are equal. A width or height of 0 is not empty: it is the tight
// box of a point or of an axis-parallel segment. enclose() treats the empty
// rectangle as neutral. Queries that need a point of the shape
// (nearestPoint, distanceToPoint) throw kcShapesError::EmptyShape for it;
// within() and contains() are false, sample() appends nothing.
//
// Images: under a transform that keeps the axes axis-parallel (a diagonal or
// anti-diagonal matrix: scale, mirror, quarter turns, and translation) the
// image is a kcRect again; under any other it is a kcGenRect, which needs a
// rectangle of non-zero area (DegenerateShape otherwise).
//
// Archive form: version byte 0, origin and size (four doubles).
#pragma once

#include "foundation/shapes/shape.h"

class kcGenRect;

class kcRect : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcRect);

  // The empty rectangle.
  kcRect() = default;
  // A negative width or height gives the empty rectangle; BadParams for
  // coordinates that are not finite.
  kcRect(const kcVector<2>& origin, const kcVector<2>& size);
  // The tight box of two opposite corners, in any order.
  [[nodiscard]] static kcRect fromCorners(const kcVector<2>& a, const kcVector<2>& b);

  [[nodiscard]] const kcVector<2>& origin() const noexcept { return origin_; }
  [[nodiscard]] const kcVector<2>& size() const noexcept { return size_; }
  void origin(const kcVector<2>& origin);
  // A negative component empties the rectangle.
  void size(const kcVector<2>& size);

  [[nodiscard]] double width() const noexcept { return size_.x(); }
  [[nodiscard]] double height() const noexcept { return size_.y(); }
  [[nodiscard]] double xMin() const noexcept { return origin_.x(); }
  [[nodiscard]] double yMin() const noexcept { return origin_.y(); }
  // The exclusive ends: origin + size.
  [[nodiscard]] double xMax() const noexcept { return origin_.x() + size_.x(); }
  [[nodiscard]] double yMax() const noexcept { return origin_.y() + size_.y(); }
  [[nodiscard]] kcVector<2> center() const noexcept { return origin_ + size_ * 0.5; }
  // Corners in boundary order: 0 the origin, 1 (xMax, yMin), 2 (xMax, yMax),
  // 3 (xMin, yMax). BadParams for another index.
  [[nodiscard]] kcVector<2> corner(int i) const;
  [[nodiscard]] double area() const noexcept { return isEmpty() ? 0.0 : size_.x() * size_.y(); }

  // Half-open membership: xMin <= x < xMax and yMin <= y < yMax.
  [[nodiscard]] bool contains(const kcVector<2>& p) const noexcept;
  // True when the two closed rectangles share a point.
  [[nodiscard]] bool intersects(const kcRect& r) const noexcept;
  // The common part of the two closed rectangles; empty when they are apart.
  [[nodiscard]] kcRect intersection(const kcRect& r) const;

  // Grows this rectangle to the tight box of itself and r (an empty r changes
  // nothing; an empty this becomes r).
  kcRect& enclose(const kcRect& r);
  // Grows this rectangle to take in p (an empty one becomes the box of p).
  kcRect& enclose(const kcVector<2>& p);

  // The image under an axis-preserving transform (see the class comment);
  // BadGeom for any other transform, unless this rectangle is empty.
  [[nodiscard]] kcRect map(const kcXform<2>& x) const;
  // The same rectangle as a kcGenRect without rounding (DegenerateShape for an
  // empty or zero-area rectangle).
  [[nodiscard]] kcGenRect toGenRect() const;
  // True for transforms under which the image of a kcRect is a kcRect.
  [[nodiscard]] static bool keepsAxes(const kcXform<2>& x) noexcept;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] bool isRegion() const override { return true; }
  [[nodiscard]] bool isEmpty() const override { return size_.x() < 0.0 || size_.y() < 0.0; }
  [[nodiscard]] kcRect encloseRect() const override { return *this; }
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;

  // Puts an empty rectangle into its one canonical form.
  void canonicalize_() noexcept;

  kcVector<2> origin_;
  kcVector<2> size_{-1.0, -1.0};
};
