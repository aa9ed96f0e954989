#include "foundation/shapes/ellipse_p.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

TEST(ArcParameters, OffsetsAndSpans) {
  EXPECT_NEAR(kfArcOffset_(1.0, 0.5, 1.0), 0.5, 1e-15);
  EXPECT_NEAR(kfArcOffset_(0.0, 0.5, -1.0), 0.5, 1e-15);
  EXPECT_NEAR(kfArcOffset_(0.0, 0.5, 1.0), 2 * kPi - 0.5, 1e-15);  // runs in the span's direction
  EXPECT_NEAR(kfArcOffset_(0.1 + 4 * kPi, 0.0, 1.0), 0.1, 1e-14);  // modulo a turn
  // A full turn allows for rounding; the least step beyond it does not.
  EXPECT_THROW(kfCheckArcSpan_(-0.0), kcShapesError::DegenerateShape);
  EXPECT_THROW(kfCheckArcSpan_(-2 * kPi - 1e-9), kcShapesError::BadParams);
  for (double ok : {-2 * kPi * (1 + 1e-13), 1e-300}) EXPECT_NO_THROW(kfCheckArcSpan_(ok));
}

}  // namespace
