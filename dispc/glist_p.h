// What the graphic sources share: where their archive errors point, and the
// pen a colour alone stands for.
#pragma once

#include "dispc/dispprop.h"

inline constexpr const char* kGlistSource = "dispc/glist";
inline constexpr int kGraphicVersionLine = 29;
inline constexpr int kGroupVersionLine = 325;
inline constexpr int kTextVersionLine = 338;
inline constexpr int kPointIconVersionLine = 389;
inline constexpr int kCrossVersionLine = 430;
inline constexpr int kSectionVersionLine = 473;

// A 1-pel solid unfilled pen of the colour, the other props at their defaults.
[[nodiscard]] inline kcGraphicProps kfGraphicPen(const kcColor& color) {
  return kcGraphicProps(color, 1, kcGraphicProps::penSolid, false);
}
