#include "foundation/vector.h"

#include <gtest/gtest.h>

#include <bit>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/pair.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// Little-endian bytes of the values, built without the archive.
template <class U, class... Ts>
Bytes littleEndian(Ts... values) {
  Bytes out;
  for (auto v : {values...})
    for (std::size_t i = 0; i < sizeof(U); ++i)
      out.push_back(static_cast<std::uint8_t>(std::bit_cast<U>(v) >> (8 * i)));
  return out;
}

TEST(Vector, Geometry) {
  const kcVector<2> a(3, 4), b(-1, 2);
  EXPECT_EQ(2.0 * a - b / 2.0, kcVector<2>(6.5, 7));
  EXPECT_EQ(kcVector<2>(1, 0).cross({0, 1}), 1);  // counter-clockwise is positive
  EXPECT_EQ(a.cross(b), 10);
  EXPECT_EQ(a.distance(b), std::hypot(4, 2));
  EXPECT_EQ(a.unit(), kcVector<2>(0.6, 0.8));
  EXPECT_EQ(kcVector<2>(-1, 0).angle(), kcRadian(std::numbers::pi));
  EXPECT_EQ(kcVector<2>(0, -2).angle(), kcRadian(-std::numbers::pi / 2));
  EXPECT_THROW((void)kcVector<2>().unit(), kcShapesError::DegenerateShape);
  kcVector<2> v(7, 8);
  v[1] = 9;
  EXPECT_EQ(v, kcVector<2>(7, 9));
  EXPECT_THROW((void)v[2], kcShapesError::BadParams);
}

TEST(Vector, ArchiveBytesAreXThenY) {
  kcMemArchive out;
  out << kcVector<2>(1.5, -2);
  EXPECT_EQ(out.bytes(), littleEndian<std::uint64_t>(1.5, -2.0));
  kcMemArchive in(out.bytes());
  kcVector<2> v;
  in >> v;
  EXPECT_EQ(v, kcVector<2>(1.5, -2));
}

TEST(Pair, ArchiveStoresLongAs32Bits) {
  kcMemArchive out;
  out << kcPair<long>(-3, 7) + kcPair<long>(1, 1);
  EXPECT_EQ(out.bytes(), littleEndian<std::uint32_t>(std::int32_t{-2}, std::int32_t{8}));
  kcMemArchive in(out.bytes());
  kcPair<long> loaded;
  in >> loaded;
  EXPECT_EQ(loaded, kcPair<long>(-2, 8));
}

}  // namespace
