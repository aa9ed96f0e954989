#include "foundation/pelbuffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using Buffer = kcPelBuffer<unsigned char>;
using P = kcPair<long>;

template <class B>
concept Writable = requires(B b) {
  b.put(0, 0, 1);
};
static_assert(Writable<Buffer> && !Writable<kcPelBuffer_const<unsigned char>>);
static_assert(std::is_same_v<decltype(kcPelBuffer_const<float>().row(0)), const float*>);

// The window row by row, one digit per pel.
std::string dump(const Buffer& b) {
  std::string out;
  for (long y = 0; y < b.height(); ++y) {
    for (long x = 0; x < b.width(); ++x) out += static_cast<char>('0' + b.get(x, y));
    out += '|';
  }
  return out;
}

TEST(PelBuffer, NullNewAndCopiedBuffers) {
  Buffer null;
  EXPECT_TRUE(null.isNull() && null.width() == 0 && null.height() == 0 && null.get(0, 0) == 0);
  EXPECT_THROW((void)null.row(0), kcShapesError::BadParams);
  EXPECT_THROW(Buffer(-1, 2), kcShapesError::BadParams);
  Buffer b(3, 2);
  b.put(2, 1, 5);
  for (long xy : {-1L, 3L}) b.put(xy, xy, 9);  // outside: nothing written
  Buffer copy = b;
  copy.put(0, 0, 1);
  EXPECT_EQ(dump(b), "100|005|");
}

TEST(PelBuffer, WindowsSharePelsAndClipToThemselves) {
  Buffer image(5, 4);
  Buffer w = image.window(1, 1, 3, 2);
  w.put(0, 0, 7);
  w.put(3, 0, 9);   // right of the window, inside the image: not written
  w.put(0, -1, 9);  // above the window
  w.row(1)[2] = 3;
  Buffer inner = w.window(1, 1, 2, 1);
  EXPECT_EQ(P(inner.offsetX(), inner.offsetY()), P(2, 2));
  inner.fill(4);
  EXPECT_EQ(dump(image), "00000|07000|00440|00000|");
  EXPECT_EQ(dump(w), "700|044|");
  EXPECT_THROW((void)w.row(2), kcShapesError::BadParams);
  // Each row: a window that does not lie inside w.
  const long huge = std::numeric_limits<long>::max();
  const long bad[][4] = {{-1, 0, 1, 1}, {0, -1, 1, 1}, {1, 0, 3, 1},   {0, 1, 1, 2},
                         {0, 0, -1, 1}, {4, 0, 0, 0},  {0, 0, huge, 1}};
  for (const auto& r : bad) EXPECT_THROW((void)w.window(r[0], r[1], r[2], r[3]), kcShapesError::BadParams);
  EXPECT_EQ(w.window(3, 2, 0, 0).width(), 0);  // empty, at the far corner
  // The read-only view sees the same pels.
  const kcPelBuffer_const<unsigned char> view = image;
  EXPECT_EQ(view.window(1, 1, 3, 2).row(1), w.row(1));
}

TEST(PelBuffer, ClientTransformAndPointToPel) {
  Buffer image(4, 4);
  Buffer scaled = image;
  scaled.imageFromClientXform(kcXform<2>::scale(2, 2));
  EXPECT_TRUE(image.imageFromClientXform().isIdentity());
  EXPECT_EQ(scaled.window(1, 1, 2, 2).imageFromClientXform(), kcXform<2>::scale(2, 2));
  // A point's pel is the floor of its coordinates.
  EXPECT_EQ(Buffer::pointToPel({2.5, -0.5}), P(2, -1));
  EXPECT_EQ(Buffer::pointToPel({-0.0, 3.0}), P(0, 3));
  EXPECT_EQ(Buffer::pointToPel({1e30, -1e30}),
            P(std::numeric_limits<long>::max(), std::numeric_limits<long>::min()));
  EXPECT_THROW((void)Buffer::pointToPel({NAN, 0}), kcShapesError::BadParams);
}

}  // namespace
