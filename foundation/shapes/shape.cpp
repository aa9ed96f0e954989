#include "foundation/shapes/shape.h"

#include <cmath>
#include <cstdlib>
#include <typeinfo>

#include "foundation/archive.h"
#include "foundation/shapes/rect.h"

// --- base behaviour ---

kcShapePtr kcShape::reverse() const { throwNotOpenContour_(); }

std::vector<kcShapePtr> kcShape::decompose() const { return {clone()}; }

kcRect kcShape::boundingBox() const { return encloseRect(); }

double kcShape::distanceToPoint(const kcVector<2>& p) const { return p.distance(nearestPoint(p)); }

bool kcShape::within(const kcVector<2>&) const { throwNotRegion_(); }

kcVector<2> kcShape::startPoint() const { throwNotOpenContour_(); }
kcVector<2> kcShape::endPoint() const { throwNotOpenContour_(); }
kcRadian kcShape::startAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  throw kcShapesError::NoTangent();
}
kcRadian kcShape::endAngle() const {
  if (!isOpenContour()) throwNotOpenContour_();
  throw kcShapesError::NoTangent();
}

bool operator==(const kcShape& a, const kcShape& b) { return typeid(a) == typeid(b) && a.equal_(b); }

void kcShape::remapAndThrowError_(kcException& e) const {
  e.rethrow();
  std::abort();  // not reached: rethrow() always throws
}

void kcShape::throwNotOpenContour_() { throw kcShapesError::NotOpenContour(); }
void kcShape::throwNotRegion_() { throw kcShapesError::NotRegion(); }

// --- argument checks ---

void kfThrowNotFinite_() { throw kcShapesError::BadParams(); }
void kfCheckLoadedFinite(double v) {
  if (!std::isfinite(v)) throw kcArchive::Corrupt(L"shape coordinate is not finite");
}
void kfCheckLoadedFinite(const kcVector<2>& v) {
  kfCheckLoadedFinite(v.x());
  kfCheckLoadedFinite(v.y());
}

// --- sampling ---

void kfCheckSpacing(double spacing) {
  if (!std::isfinite(spacing) || !(spacing > 0.0)) throw kcShapesError::BadParams();
}

std::size_t kfSamplePieces(double length, double spacing) {
  kfCheckSpacing(spacing);
  double pieces = std::ceil(length / spacing);
  if (!(pieces <= kcShape::kMaxSamples)) throw kcShapesError::BadParams();
  return pieces < 1.0 ? 1 : static_cast<std::size_t>(pieces);
}

void kfSampleSegment(const kcVector<2>& a, const kcVector<2>& b, double spacing, bool withEnd,
                     std::vector<kcVector<2>>& out) {
  std::size_t n = kfSamplePieces(a.distance(b), spacing);
  // Interpolated from both ends so that the last point is b exactly.
  for (std::size_t i = 0; i < n; ++i) {
    double t = static_cast<double>(i) / static_cast<double>(n);
    out.push_back(a * (1.0 - t) + b * t);
  }
  if (withEnd) out.push_back(b);
}
