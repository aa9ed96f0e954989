#include "foundation/shapes/interpspline.h"

#include <gtest/gtest.h>

#include "tests/foundation/shapes/shape_testing.h"

namespace {

using namespace shape_testing;

// Second derivatives of a Bezier piece at its ends.
V secondAtStart(const V* c) { return 6.0 * (c[0] - 2.0 * c[1] + c[2]); }
V secondAtEnd(const V* c) { return 6.0 * (c[1] - 2.0 * c[2] + c[3]); }

TEST(InterpSpline, PassesThroughThePointsTwiceSmoothWithNaturalEnds) {
  const std::vector<V> cases[] = {
      {V(0, 0), V(2, 3), V(5, -1)},
      {V(0, 0), V(1, 2), V(2, -1), V(3, 3), V(4, 0), V(5, 1)},
      {V(0, 0), V(1, 1), V(1, 1), V(3, 0)},
      {V(0, 0), V(4, 0), V(4, 4), V(0, 4), V(0, 0)},
  };
  for (const std::vector<V>& q : cases) {
    kcInterpSpline s(q);
    const std::vector<V>& b = s.bezierPoints();
    ASSERT_EQ(s.numPieces(), long(q.size() - 1));
    for (std::size_t i = 0; i < q.size(); ++i) EXPECT_EQ(s.pointAt(double(i)), q[i]);
    for (std::size_t i = 1; i + 1 < q.size(); ++i) {  // C1 and C2 at the joins
      EXPECT_LE((b[3 * i] - b[3 * i - 1]).distance(b[3 * i + 1] - b[3 * i]), 1e-12);
      EXPECT_LE(secondAtEnd(&b[3 * i - 3]).distance(secondAtStart(&b[3 * i])), 1e-11);
    }
    EXPECT_LE(secondAtStart(&b[0]).len(), 1e-11);
    EXPECT_LE(secondAtEnd(&b[b.size() - 4]).len(), 1e-11);
  }
  EXPECT_EQ(kcInterpSpline({V(1, 1), V(4, 7)}).bezierPoints(),
            (std::vector<V>{V(1, 1), V(2, 3), V(3, 5), V(4, 7)}));
}

TEST(InterpSpline, TangentsAreTheBezierLegsAndEditsAreChecked) {
  std::vector<V> q{V(0, 0), V(1, 2), V(3, 3), V(4, 1), V(6, 2)};
  kcInterpSpline s(q);
  const std::vector<V>& b = s.bezierPoints();
  for (long i = 0; i < 4; ++i) EXPECT_LE(s.tangent(i).distance(3.0 * (b[3 * i + 1] - b[3 * i])), 1e-12);
  EXPECT_LE(s.tangent(4).distance(3.0 * (b[12] - b[11])), 1e-12);
  EXPECT_THROW((void)s.tangent(5), kcShapesError::BadParams);
  EXPECT_THROW(s.points({V(5, 5), V(5, 5)}), kcShapesError::DegenerateShape);
  EXPECT_EQ(s, kcInterpSpline(q));
}

}  // namespace
