// kcPoint and kc2Point: a single point as a shape.
//
// Parametrisation: the point's two coordinates. A point is neither an open
// contour nor a region; its box has zero size at the point, its distance to p
// is |p - point| and sample() gives the point itself. The two classes are the
// same geometry under two names: kc2Point is the one the graphics layer wraps
// directly, kcPoint the one drawn as a plain point.
//
// Archive form of both: version byte 0, then x and y as two doubles.
#pragma once

#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

// The geometry both point classes share; Derived is the concrete class.
template <class Derived>
class kcPointShape_ : public kcShape {
 public:
  [[nodiscard]] const kcVector<2>& point() const noexcept { return point_; }
  void point(const kcVector<2>& p) {
    kfCheckFinite(p);
    mutating_();
    point_ = p;
  }
  [[nodiscard]] double x() const noexcept { return point_.x(); }
  [[nodiscard]] double y() const noexcept { return point_.y(); }
  [[nodiscard]] double distToPoint(const kcVector<2>& p) const noexcept { return point_.distance(p); }

  [[nodiscard]] Derived map(const kcXform<2>& x) const { return Derived(x * point_); }

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override {
    return kfMakeHandle<Derived>(static_cast<const Derived&>(*this));
  }
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override {
    return kfMakeHandle<Derived>(map(x));
  }
  [[nodiscard]] kcRect encloseRect() const override { return kcRect(point_, kcVector<2>()); }
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>&) const override { return point_; }
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override { return point_.distance(p); }
  void sample(double spacing, std::vector<kcVector<2>>& out) const override {
    kfCheckSpacing(spacing);
    out.push_back(point_);
  }

 protected:
  kcPointShape_() = default;
  explicit kcPointShape_(const kcVector<2>& p) : point_(p) { kfCheckFinite(p); }

  [[nodiscard]] bool equal_(const kcShape& other) const override {
    return point_ == static_cast<const kcPointShape_&>(other).point_;
  }
  // The body after the version byte; a loaded point must be finite.
  void transfer_(kcArchive& ar);

 private:
  kcVector<2> point_;
};

class kcPoint : public kcPointShape_<kcPoint> {
 public:
  KC_DECLARE_PERSISTENT(kcPoint);

  // The origin.
  kcPoint() = default;
  kcPoint(const kcVector<2>& p) : kcPointShape_(p) {}  // NOLINT: a point converts from a vector
  kcPoint(double x, double y) : kcPointShape_(kcVector<2>(x, y)) {}

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;
};

class kc2Point : public kcPointShape_<kc2Point> {
 public:
  KC_DECLARE_PERSISTENT(kc2Point);

  // The origin.
  kc2Point() = default;
  kc2Point(const kcVector<2>& p) : kcPointShape_(p) {}  // NOLINT: a point converts from a vector
  kc2Point(double x, double y) : kcPointShape_(kcVector<2>(x, y)) {}

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  static constexpr unsigned char kVersion = 0;
};
