#include "dispc/dimtol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using T = kcDimTol;
using S = kcSMDDimension;

template <class V>
Bytes store(const V& value) {
  kcMemArchive ar;
  ar << value;
  return ar.bytes();
}

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
    SCOPED_TRACE(d.tolType());
    EXPECT_NEAR(d.minDim(), 9, 1e-12);
    EXPECT_NEAR(d.maxDim(), 12, 1e-12);
    EXPECT_NEAR(d.minOffset(), 1, 1e-12);
    EXPECT_NEAR(d.maxOffset(), 2, 1e-12);
    EXPECT_NEAR(d.minPerc(), 0.1, 1e-12);
    EXPECT_NEAR(d.maxPerc(), 0.2, 1e-12);
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

TEST(DimTolArchive, FormsAndRoundTrips) {
  const T t(10, 1.5, 2, T::eOffsets);
  const S s(10, 9, 12, S::eScaleAll);
  const Bytes tb = store(t), sb = store(s);
  ASSERT_EQ(tb.size(), 29u);
  EXPECT_EQ((Bytes{tb[0], tb[25], tb[26], tb[27], tb[28]}), (Bytes{0, 1, 0, 0, 0}));
  ASSERT_EQ(sb.size(), 26u);
  EXPECT_TRUE(sb.front() == 0 && sb.back() == 2);
  kcMemArchive all;
  all << t << s;
  T t2;
  S s2;
  kcMemArchive back(all.bytes());
  back >> t2 >> s2;
  EXPECT_TRUE(back.atEnd() && t2 == t && s2 == s);
}

template <class V>
void expectRejected(Bytes bytes, const V& before, const char* file, int line) {
  V target = before;
  try {
    kcMemArchive in(bytes);
    in >> target;
    ADD_FAILURE() << "accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), file);
    EXPECT_EQ(e.line(), line);
  }
  bytes[0] = 0;
  for (std::size_t n : {std::size_t{0}, bytes.size() - 1}) {
    kcMemArchive cut(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(n)));
    EXPECT_THROW(cut >> target, kcArchive::Corrupt) << n;
  }
  EXPECT_EQ(target, before);
}

TEST(DimTolArchive, BadRecordsLeaveTheTarget) {
  Bytes t = store(T(5, 4, 6, T::eLimits)), s = store(S(5, -1, -1, S::eFixed));
  t[0] = s[0] = 1;
  expectRejected(t, T(10, 1, 2, T::eOffsets), "dispc/dimtol", 197);
  expectRejected(s, S(10, 9, 12, S::eScaleAll), "", 0);
  s[0] = 0;
  std::fill(s.begin() + 1, s.begin() + 9, 0);  // nominal 0: refused as set() refuses it
  S target(10, 9, 12, S::eScaleAll);
  kcMemArchive in(s);
  EXPECT_THROW(in >> target, S::badDimensionValue);
  EXPECT_EQ(target, S(10, 9, 12, S::eScaleAll));
  kcMemArchive out;
  EXPECT_THROW(out << S(5, -1, -1, static_cast<S::ScaleType>(300)), kcArchive::ValueOutOfRange);
}

TEST(SMDDimension, ErrorPersistsWithItsMessage) {
  S::badDimensionValue error(L"Nominal must be >= minimum"), loaded;
  EXPECT_EQ(error.errorNumber(), 0x11000B00);
  kcMemArchive out;
  error.dispatchSerialize(out);
  kcMemArchive in(out.bytes());
  loaded.dispatchSerialize(in);
  EXPECT_STREQ(loaded.what(), "Nominal must be >= minimum");
  EXPECT_THROW((new S::badDimensionValue(loaded))->suicideAndRethrow(), kcSMDDimensionErrors);
  kcMemArchive wrong(Bytes{1, 0, 0, 0, 0});
  try {
    error.dispatchSerialize(wrong);
    FAIL() << "version 1 accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "kcSMDDimension::badDimensionValue");
  }
}

}  // namespace
