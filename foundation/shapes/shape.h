// The shape family's base: every geometric object the display core draws,
// maps, measures and archives is a kcShape held by kcPtrHandle<kcShape>.
//
// A shape is one of three kinds: an open contour (a curve with a start and an
// end: segments, arcs, splines, polylines), a region (a closed curve with an
// inside: rectangles, circles, polygons, annuli) or neither (points, infinite
// lines, axes, composites). Distances and nearest points are measured to the
// curve, which for a region is its boundary. Queries that do not fit a kind
// throw the kcShapesError that names the misuse.
#pragma once

#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "foundation/angle.h"
#include "foundation/exception.h"
#include "foundation/handle.h"
#include "foundation/persistent.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

class kcArchive;
class kcRect;
class kcShape;

using kcShapePtr = kcPtrHandle<kcShape>;

class kcShape : public virtual kcPersistent, public virtual kcRepBase {
 public:
  ~kcShape() override = default;

  // --- copies and images ---

  // A new shape equal to this one, of the same class.
  [[nodiscard]] virtual kcShapePtr clone() const = 0;
  // The image under x; its class may differ (a circle under a shear is an
  // ellipse). Every class also has a typed map() where it is closed under x.
  [[nodiscard]] virtual kcShapePtr mapShape(const kcXform<2>& x) const = 0;
  // The same curve travelled the other way (open contours).
  [[nodiscard]] virtual kcShapePtr reverse() const;
  // The simple pieces this shape is made of; a simple shape gives a clone of itself.
  [[nodiscard]] virtual std::vector<kcShapePtr> decompose() const;

  // --- kind ---

  [[nodiscard]] virtual bool isOpenContour() const { return false; }
  [[nodiscard]] virtual bool isRegion() const { return false; }
  // False for shapes that reach infinity (lines).
  [[nodiscard]] virtual bool isFinite() const { return true; }
  // True for a shape with no geometry at all (an empty point set).
  [[nodiscard]] virtual bool isEmpty() const { return false; }
  [[nodiscard]] virtual bool hasTangent() const { return isOpenContour(); }

  // --- measures ---

  // The tight axis-aligned box of the curve; an empty kcRect for an empty
  // shape and for one that is not finite (a line has no finite box).
  [[nodiscard]] virtual kcRect encloseRect() const = 0;
  // The box a caller may use for culling; the tight box unless a class says otherwise.
  [[nodiscard]] virtual kcRect boundingBox() const;
  // The point of the curve nearest to p (EmptyShape for an empty shape;
  // ties resolve to the first point along the curve).
  [[nodiscard]] virtual kcVector<2> nearestPoint(const kcVector<2>& p) const = 0;
  // Euclidean distance from p to the curve.
  [[nodiscard]] virtual double distanceToPoint(const kcVector<2>& p) const;
  // Regions: p strictly inside or on the boundary. Others: NotRegion.
  [[nodiscard]] virtual bool within(const kcVector<2>& p) const;

  // --- open contours (NotOpenContour otherwise) ---

  [[nodiscard]] virtual kcVector<2> startPoint() const;
  [[nodiscard]] virtual kcVector<2> endPoint() const;
  // Directions of travel at the ends (NoTangent where the curve has none there).
  [[nodiscard]] virtual kcRadian startAngle() const;
  [[nodiscard]] virtual kcRadian endAngle() const;

  // Points along the curve no more than spacing apart, ends included; a closed
  // curve ends with its start point again, so consecutive points cover every
  // edge. A shape of several pieces gives each piece's samples in turn
  // (decompose() tells the pieces). BadParams for a spacing that is not
  // finite and > 0, or so small that more than kMaxSamples points would be
  // needed per piece; BadGeom for a shape that is not finite. Appends to out.
  virtual void sample(double spacing, std::vector<kcVector<2>>& out) const = 0;

  // Most points one sample() call may produce.
  static constexpr double kMaxSamples = 1e7;

  // Same class and equal geometry.
  friend bool operator==(const kcShape& a, const kcShape& b);

  // Hook through which a shape turns an error of the data it wraps into the
  // error its callers see; the base rethrows e unchanged. Never returns.
  [[noreturn]] virtual void remapAndThrowError_(kcException& e) const;

 protected:
  kcShape() = default;
  kcShape(const kcShape&) = default;
  kcShape& operator=(const kcShape&) = default;

  // Geometric equality with a shape of the same dynamic class.
  [[nodiscard]] virtual bool equal_(const kcShape& other) const = 0;

  // The base has no fields and no version byte of its own; concrete shapes
  // call it first from their serialize_ all the same.
  void serialize_(kcArchive&, unsigned char) {}

  [[noreturn]] static void throwNotOpenContour_();
  [[noreturn]] static void throwNotRegion_();
};

// Rejects NaN and infinity in constructor arguments with kcShapesError::BadParams.
[[noreturn]] void kfThrowNotFinite_();
inline void kfCheckFinite(double v) {
  if (!std::isfinite(v)) kfThrowNotFinite_();
}
inline void kfCheckFinite(const kcVector<2>& v) {
  if (!std::isfinite(v.x()) || !std::isfinite(v.y())) kfThrowNotFinite_();
}
// The same for data just loaded from an archive: kcArchive::Corrupt.
void kfCheckLoadedFinite(double v);
void kfCheckLoadedFinite(const kcVector<2>& v);

// BadParams for a sample spacing that is not finite and > 0.
void kfCheckSpacing(double spacing);
// Pieces into which a curve of the given length is cut so that none is longer
// than spacing (at least 1); BadParams for a bad spacing (see kcShape::sample).
[[nodiscard]] std::size_t kfSamplePieces(double length, double spacing);
// Appends a, then the points cutting the segment a-b into pieces no longer
// than spacing, then b when withEnd is set.
void kfSampleSegment(const kcVector<2>& a, const kcVector<2>& b, double spacing, bool withEnd,
                     std::vector<kcVector<2>>& out);
