#include "foundation/vector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "foundation/archive.h"
#include "foundation/pair.h"

namespace {

TEST(Vector, Geometry) {
  kcVector<2> a(3, 4), b(-1, 2);
  EXPECT_EQ(2.0 * a - b / 2.0, kcVector<2>(6.5, 7));
  EXPECT_EQ(kcVector<2>(1, 0).cross({0, 1}), 1);  // counter-clockwise is positive
  EXPECT_EQ(a.cross(b), 10);
  EXPECT_EQ(a.distance(b), std::hypot(4, 2));
  EXPECT_EQ(a.unit(), kcVector<2>(0.6, 0.8));
  EXPECT_EQ(kcVector<2>(-1, 0).angle(), kcRadian(std::numbers::pi));
  EXPECT_EQ(kcVector<2>(0, -2).angle(), kcRadian(-std::numbers::pi / 2));
  EXPECT_THROW((void)kcVector<2>().unit(), kcShapesError::DegenerateShape);
  EXPECT_THROW((void)a[2], kcShapesError::BadParams);
}

// A vector is two doubles, x then y; a pair of longs two 32-bit integers.
TEST(Vector, ArchiveForms) {
  kcMemArchive out;
  out << kcVector<2>(1.5, -2) << kcPair<long>(-3, 7) + kcPair<long>(1, 1);
  EXPECT_EQ(out.bytes(), (std::vector<std::uint8_t>{0, 0, 0, 0,    0,    0,    0xF8, 0x3F, 0, 0, 0, 0,
                                                    0, 0, 0, 0xC0, 0xFE, 0xFF, 0xFF, 0xFF, 8, 0, 0, 0}));
  kcMemArchive in(out.bytes());
  kcVector<2> v;
  kcPair<long> p;
  in >> v >> p;
  EXPECT_TRUE(v == kcVector<2>(1.5, -2) && p == kcPair<long>(-2, 8) && in.atEnd());
}

}  // namespace
