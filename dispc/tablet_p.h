// What the tablet's sources share and its users need not see.
#pragma once

#include <cmath>

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
