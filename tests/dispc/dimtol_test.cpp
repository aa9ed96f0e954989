#include "dispc/dimtol.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <tuple>
#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using dispc_test::stored;
using T = kcDimTol;
using S = kcSMDDimension;

TEST(DimTol, ValidityOfConstruction) {
  EXPECT_NO_THROW(T(-1, -1, -1, T::ePercentages));                        // no tolerance: not checked
  EXPECT_NO_THROW(T(-1, 0.5, -1, T::eLimits));                            // stand-in nominal 1.5
  EXPECT_NO_THROW(T(-1, 0.5, 0.7, T::eOffsets));                          // stand-in 1.5: limits 1 and 2.2
  EXPECT_THROW(T(-1, -1, 0.7, T::eOffsets), kcShapesError::BadGeom);      // no stand-in without a minimum
  EXPECT_THROW(T(-1, 1.5, -1, T::ePercentages), kcShapesError::BadGeom);  // stand-in 1: limit -0.5
  for (const T::TolType kind : {T::eLimits, T::eOffsets, T::ePercentages}) {
    EXPECT_THROW(T(0, -1, -1, kind), kcShapesError::BadGeom);  // zero is no dimension
    EXPECT_THROW(T(10, -0.5, -1, kind), kcShapesError::BadGeom);
  }
  EXPECT_THROW(T(10, 11, 12, T::eLimits), kcShapesError::BadGeom);  // nominal below the minimum
  EXPECT_THROW(T(10, 10, 2, T::eOffsets), kcShapesError::BadGeom);  // lower limit 0
}

TEST(DimTol, ConversionsBetweenKinds) {
  // Nominal 10 with limits 9 and 12, given in each kind.
  for (const T& d : {T(10, 9, 12, T::eLimits), T(10, 1, 2, T::eOffsets), T(10, 0.1, 0.2, T::ePercentages)}) {
    const double got[] = {d.minDim(), d.maxDim(), d.minOffset(), d.maxOffset(), d.minPerc(), d.maxPerc()};
    const double want[] = {9, 12, 1, 2, 0.1, 0.2};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(got[i], want[i], 1e-12) << d.tolType() << " " << i;
  }
  const T lowOnly(-1, 0.5, -1, T::eLimits);
  EXPECT_EQ(lowOnly.maxOffset(), -1);                               // unset stays unset
  EXPECT_THROW((void)lowOnly.minOffset(), kcShapesError::BadGeom);  // no nominal to convert with
}

TEST(DimTol, SettersValidateFirst) {
  T d(10, 1, 2, T::eOffsets);
  d.nomDim(20);
  d.limits(18, 23);
  EXPECT_EQ(d, T(20, 18, 23, T::eLimits));
  d.percentages(4, 0.5, 0.5);
  EXPECT_THROW(d.nomDim(-3), kcShapesError::BadGeom);
  EXPECT_THROW(d.offsets(4.5, 1), kcShapesError::BadGeom);
  EXPECT_EQ(d, T(4, 0.5, 0.5, T::ePercentages));
  d.tolType(T::eOffsets);  // the numbers are not converted
  EXPECT_EQ(d, T(4, 0.5 + 2e-16, 0.5, T::eOffsets));
  EXPECT_NE(d, T(4, 0.5 + 1e-14, 0.5, T::eOffsets));
  EXPECT_EQ(2 * T(10, 1, 2, T::eOffsets), T(20, 1, 2, T::eOffsets));
}

TEST(DimTol, IsWithinIsClosedWithinToleranceIsOpen) {
  const T t(10, 1, 2, T::eOffsets);
  const S d(10, 9, 12, S::eFixed);
  for (double v : {9.0, 12.0}) EXPECT_TRUE(t.isWithin(v) && !d.withinTolerance(v, 1)) << v;
  for (double v : {8.999, 12.001}) EXPECT_FALSE(t.isWithin(v) || d.withinTolerance(v, 1)) << v;
  EXPECT_TRUE(d.withinTolerance(9.001, 1) && d.withinTolerance(11.999, 1));
  EXPECT_TRUE(T(10, -1, 12, T::eLimits).isWithin(0.001));
  EXPECT_TRUE(S(10, -1, -1, S::eFixed).withinTolerance(1e9, 1));
  const S s(10, 9, 12, S::eScaleNominal);  // at scale 2: (20, 19, 22)
  EXPECT_TRUE(!s.withinTolerance(19, 2) && s.withinTolerance(19.5, 2));
}

TEST(SMDDimension, ValidationOrderAndMessages) {
  const std::tuple<double, double, double, const wchar_t*> rows[] = {
      {0, -1, -1, L"Nominal dimension must be > 0 or -1"},
      {-2, 0, 0, L"Nominal dimension must be > 0 or -1"},
      {5, 0, -1, L"Minimum dimension must be > 0 or -1"},
      {5, -1, 0, L"Maximum dimension must be > 0 or -1"},
      {-1, 2, -1, L"Nominal must be set if minimum is > 0"},
      {5, 6, 4, L"Nominal must be >= minimum"},
      {-1, -1, 4, L"Nominal must be set if maximum is >= 0"},
      {5, -1, 4, L"Nominal must be <= maximum"},
      {-1, -1, -1, L""},
      {5, 5, 5, L""}};
  for (const auto& [nominal, min, max, text] : rows) {
    S d(7, 6, 8, S::eScaleAll);
    std::wstring message;
    try {
      d.set(nominal, min, max, S::eScaleNominal);
    } catch (const S::badDimensionValue& e) {
      message = e.message();
      EXPECT_EQ(d, S(7, 6, 8, S::eScaleAll));  // nothing stored
    }
    EXPECT_EQ(message, text) << nominal << " " << min << " " << max;
  }
}

TEST(SMDDimension, FromDimTolAndScaling) {
  EXPECT_EQ(S(T(10, 1, 2, T::eOffsets)), S(10, 9, 12, S::eScaleNominal));
  EXPECT_EQ(S(T(10, 9, -1, T::eLimits)), S(10, 9, -1, S::eFixed));
  EXPECT_EQ(S(T(10, 0.1, 0.2, T::ePercentages)), S(10, 9, 12, S::eScaleAll));
  T odd(10, 1, 2, T::eOffsets);
  odd.tolType(static_cast<T::TolType>(9));  // converts like offsets
  EXPECT_EQ(S(odd), S(10, 9, 12, S::eScaleNominal));

  EXPECT_EQ(2 * S(10, 9, 12, S::eScaleNominal), S(20, 19, 22, S::eScaleNominal));
  EXPECT_EQ(2 * S(10, 9, 12, S::eScaleAll), S(20, 18, 24, S::eScaleAll));
  EXPECT_EQ(2 * S(10, 9, 12, S::eFixed), S(10, 9, 12, S::eFixed));
  EXPECT_EQ(0.5 * S(10, -1, 12, S::eScaleNominal), S(5, -1, 7, S::eScaleNominal));
  EXPECT_EQ(2 * S(10, 9, 12, static_cast<S::ScaleType>(3)), S());
  EXPECT_THROW((void)(0.05 * S(10, 9, 12, S::eScaleNominal)), S::badDimensionValue);  // min 0.5 - 1
  // The nominal scales even when unset; only a fixed dimension stays unset.
  EXPECT_THROW((void)(2 * S(-1, -1, -1, S::eScaleAll)), S::badDimensionValue);
  EXPECT_EQ(2 * S(-1, -1, -1, S::eFixed), S());
  EXPECT_NE(S(0.5, 0.25, 0.75, S::eFixed), S(0.5 + 1e-14, 0.25, 0.75, S::eFixed));
}

// The version byte, doubles, then the kind in the given number of bytes.
Bytes record(std::vector<double> values, std::uint32_t kind, std::size_t kindBytes) {
  Bytes b = dispc_test::doubles(0, values);
  b.resize(b.size() + kindBytes);
  std::memcpy(b.data() + b.size() - kindBytes, &kind, kindBytes);
  return b;
}

TEST(DimTolArchive, FormsRoundTripsAndBadRecords) {
  const T t(10, 1.5, 2, T::eOffsets);
  const S s(10, 9, 12, S::eScaleAll);
  EXPECT_EQ(stored(t), record({10, 1.5, 2}, 1, 4));
  EXPECT_EQ(stored(s), record({10, 9, 12}, 2, 1));
  EXPECT_EQ(dispc_test::loaded(stored(t), T()), t);
  EXPECT_EQ(dispc_test::loaded(stored(s), S()), s);
  Bytes tb = stored(t), sb = stored(s);
  // A number that is not finite (it would make the tolerance unequal to itself).
  dispc_test::expectRefused<kcArchive::Corrupt>(record({-1, std::nan(""), -1}, 1, 4), t);
  dispc_test::expectRefused<kcArchive::Corrupt>(record({HUGE_VAL, 1, 2}, 1, 4), t);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(), t);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(tb.begin(), tb.end() - 1), t);
  dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(sb.begin(), sb.end() - 1), s);
  tb[0] = sb[0] = 1;
  dispc_test::expectUnknownVersion(tb, t, "dispc/dimtol", 197);
  dispc_test::expectUnknownVersion(sb, s, "", 0);
  // A nominal of 0 is refused as set() refuses it; a scale type beyond a byte cannot be stored.
  dispc_test::expectRefused<S::badDimensionValue>(record({0, -1, -1}, 0, 1), s);
  kcMemArchive out;
  EXPECT_THROW(out << S(5, -1, -1, static_cast<S::ScaleType>(300)), kcArchive::ValueOutOfRange);
}

TEST(SMDDimension, ErrorPersistsWithItsMessage) {
  S::badDimensionValue error(L"Nominal must be >= minimum");
  EXPECT_EQ(error.errorNumber(), 0x11000B00);
  EXPECT_STREQ(dispc_test::loaded(dispc_test::stored(error), S::badDimensionValue()).what(),
               "Nominal must be >= minimum");
  EXPECT_THROW((new S::badDimensionValue(error))->suicideAndRethrow(), kcSMDDimensionErrors);
  dispc_test::expectUnknownVersion(Bytes{1, 0, 0, 0, 0}, error, "kcSMDDimension::badDimensionValue", 0);
}

}  // namespace
