#include "foundation/angle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <tuple>

#include "foundation/archive.h"

namespace {

constexpr double kPi = std::numbers::pi;

template <class A, class B>
concept Addable = requires(A a, B b) {
  a + b;
};

// The units never mix by accident, but convert where a function asks.
static_assert(!std::is_convertible_v<double, kcRadian> && !std::is_convertible_v<double, kcDegree>);
static_assert(std::is_convertible_v<kcDegree, kcRadian> && std::is_convertible_v<kcRadian, kcDegree>);
static_assert(!Addable<kcRadian, kcDegree> && Addable<kcDegree, kcDegree>);

TEST(Angle, ConvertsWithTheFixedFactorsAndArchives) {
  EXPECT_EQ(kcDegree(kcRadian(1.0)).toDouble(), 57.29577951308232);
  EXPECT_EQ(kcRadian(kcDegree(1.0)).toDouble(), 0.017453292519943295);
  EXPECT_NEAR(sin(kcDegree(30.0)), 0.5, 1e-15);
  // Each archives as one double in its own unit.
  kcMemArchive out;
  out << kcDegree(45.5) << kcRadian(-0.25);
  kcMemArchive in(out.bytes());
  double d = 0, r = 0;
  in >> d >> r;
  EXPECT_TRUE(d == 45.5 && r == -0.25 && in.atEnd());
}

// Each row: input, norm(), signedNorm(); the upper ends belong to the other end.
TEST(Angle, DegreeNormalisationBoundaries) {
  const std::tuple<double, double, double> rows[] = {
      {360, 0, 0},       {-360, 0, 0},          {720.5, 0.5, 0.5}, {-90, 270, -90}, {180, 180, -180},
      {-180, 180, -180}, {179.5, 179.5, 179.5}, {-1e-17, 0, 0},    {-0.0, 0, 0},    {1e-300, 1e-300, 1e-300},
  };
  for (const auto& [in, norm, signedNorm] : rows) {
    EXPECT_EQ(kcDegree(in).norm().toDouble(), norm) << in;
    EXPECT_EQ(kcDegree(in).signedNorm().toDouble(), signedNorm) << in;
    EXPECT_FALSE(std::signbit(kcDegree(in).norm().toDouble())) << in;
  }
}

TEST(Angle, RadianNormalisationStaysInsideTheRange) {
  const double twoPi = 2 * kPi, abovePi = std::nextafter(kPi, 4.0);
  EXPECT_EQ(kcRadian(-1e-17).norm().toDouble(), 0.0);
  EXPECT_EQ(kcRadian(kPi).signedNorm().toDouble(), -kPi);
  for (double v : {-4e-16, std::nextafter(twoPi, 0.0), abovePi, -abovePi, -twoPi - 1e-15, 1e300, -7.5}) {
    double n = kcRadian(v).norm().toDouble(), s = kcRadian(v).signedNorm().toDouble();
    EXPECT_TRUE(n >= 0 && n < twoPi && s >= -kPi && s < kPi) << v << " -> " << n << ", " << s;
    if (std::fabs(v) < 1e6) {  // the same direction
      EXPECT_NEAR(std::cos(n), std::cos(v), 1e-15);
      EXPECT_NEAR(std::sin(s), std::sin(v), 1e-15);
    }
  }
}

}  // namespace
