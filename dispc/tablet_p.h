// What the tablet's sources share and its users need not see.
#pragma once

#include <array>
#include <cmath>

#include "foundation/shapes/rect.h"
#include "foundation/xform.h"

// Pel positions a tablet hands a device in rectangles: within +-2^30, so that
// a rectangle's size never overflows; NaN reads as 0. Geometry far outside
// any display is drawn at its edge.
inline constexpr double kTabletPelLimit = 1073741824.0;
[[nodiscard]] inline long kfTabletPel(double v) noexcept {
  if (!(v == v)) return 0;
  if (v > kTabletPelLimit) v = kTabletPelLimit;
  if (v < -kTabletPelLimit) v = -kTabletPelLimit;
  return static_cast<long>(v);
}

// The corners of a rectangle mapped by x, counter-clockwise from its origin:
// an affine image of a rectangle is the parallelogram through them.
[[nodiscard]] inline std::array<kcVector<2>, 4> kfMappedCorners(const kcRect& r, const kcXform<2>& x) {
  const kcVector<2> o = r.origin();
  const kcVector<2> w(r.width(), 0.0);
  const kcVector<2> h(0.0, r.height());
  return {x * o, x * (o + w), x * (o + w + h), x * (o + h)};
}
