#include "dispc/smd/vertex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "tests/dispc/archive_checks.h"

namespace {

using dispc_test::Bytes;
using V = kcSMDGDPolyVertex;

const kcDimTol kTol(10, 1, 2, kcDimTol::eOffsets);
const kcDimTol kOffsetsNone(-1, -1, -1, kcDimTol::eOffsets);

V sample() {
  V v(kcVector<2>(3, -4), 0.75, kcDegree(30), 0.25, 0.8, 7, kTol);
  v.forwardPercExtension(0.4);
  v.backwardPercExtension(0.6);
  return v;
}

void expectFields(const V& v, kcVector<2> p, double radius, double span, double prev, double next, long label,
                  const kcDimTol& tol) {
  EXPECT_EQ(v.point(), p);
  EXPECT_EQ(v.vertexRadius(), radius);
  EXPECT_EQ(v.segmentAngleSpan().toDouble(), span);
  EXPECT_EQ(v.percentPrevSegment(), prev);
  EXPECT_EQ(v.percentNextSegment(), next);
  EXPECT_EQ(v.subModelLabel(), label);
  EXPECT_EQ(v.segmentLengthTol(), tol);
}

TEST(PolyVertex, ConstructorsAndScaling) {
  expectFields(V(), {0, 0}, 0, 0, 0.5, 0.5, -1, kcDimTol());
  // The short forms' no-tolerance value is of kind offsets.
  expectFields(V({1, 2}, 0.3, 0.4, 5), {1, 2}, 0, 0, 0.3, 0.4, 5, kOffsetsNone);
  expectFields(V({1, 2}, 1.5, 0.3, 0.4, 5), {1, 2}, 1.5, 0, 0.3, 0.4, 5, kOffsetsNone);
  const V twice = 2 * sample();
  expectFields(twice, {6, -8}, 1.5, 30, 0.25, 0.8, 7, kcDimTol(20, 1, 2, kcDimTol::eOffsets));
  EXPECT_TRUE(twice.forwardPercExtension() == 0.4 && twice.backwardPercExtension() == 0.6);
  const V moved = kc2Rigid(kcRadian(kcDegree(90)), kcVector<2>(1, 2)) * sample();
  EXPECT_LE(moved.point().distance(kcVector<2>(5, 5)), 1e-12);  // (3, -4) turned a quarter is (4, 3)
  V expected = sample();
  expected.point(moved.point());
  EXPECT_TRUE(kfRealEq(moved, expected, 0));
}

TEST(PolyVertex, PercentageRange) {
  for (double p : {0.01, 1.0}) EXPECT_NO_THROW(V({0, 0}, p, p, -1)) << p;
  for (double p : {0.0099, 1.0001, std::numeric_limits<double>::quiet_NaN()}) {
    SCOPED_TRACE(p);
    try {
      V(kcVector<2>(0, 0), 0, kcDegree(0), 0.5, p, -1, kcDimTol());
      FAIL() << "accepted";
    } catch (const V::invalidSegmentLength& e) {
      EXPECT_EQ(e.errorNumber(), 0x11000350);
      EXPECT_EQ(e.message(), L"Invalid poly segment length specified at vertex.");
    }
    EXPECT_THROW(V({0, 0}, p, 0.5, -1), V::invalidSegmentLength);
    V v = sample();
    EXPECT_THROW(v.percentPrevSegment(p), V::invalidSegmentLength);
    EXPECT_THROW(v.percentNextSegment(p), V::invalidSegmentLength);
    EXPECT_TRUE(kfRealEq(v, sample(), 0));
  }
}

TEST(PolyVertex, Comparison) {
  auto withSpan = [](double degrees) {
    V v = sample();
    v.segmentAngleSpan(kcDegree(degrees));
    return v;
  };
  EXPECT_EQ(withSpan(0) == withSpan(360), 1);
  EXPECT_EQ(withSpan(-90) == withSpan(270), 1);
  EXPECT_EQ(withSpan(30) == withSpan(30 + 1e-10), 1);
  EXPECT_EQ(withSpan(30) == withSpan(30 + 1e-8), 0);
  EXPECT_EQ(withSpan(30) != withSpan(150), 1);  // same sine, other cosine
  V close = sample(), far = sample(), label = sample(), tol = sample();
  close.point(close.point() + kcVector<2>(0, 5e-12));
  far.backwardPercExtension(0.6 + 5e-11);
  label.subModelLabel(8);
  tol.segmentLengthTol(kcDimTol(10, 1 + 1e-13, 2, kcDimTol::eOffsets));  // compared at 1e-15
  EXPECT_TRUE(close == sample() && far != sample() && kfRealEq(far, sample(), 1e-10));
  EXPECT_FALSE(kfRealEq(label, sample(), 1e6) || kfRealEq(tol, sample(), 1e-3));
}

// A record of the given version up to the label, plus extra doubles.
Bytes record(unsigned char version, const V& v, std::vector<double> tail = {}) {
  kcMemArchive ar;
  unsigned char prefixVersion = 0;
  std::wstring name;
  kcVector<2> p = v.point();
  double radius = v.vertexRadius(), prev = v.percentPrevSegment(), next = v.percentNextSegment();
  kcDegree span = v.segmentAngleSpan();
  long label = v.subModelLabel();
  ar || version || prefixVersion || name || p || radius || span || prev || next || label;
  for (double& d : tail) ar || d;
  return ar.bytes();
}

TEST(PolyVertexArchive, AllVersionsAndBadRecords) {
  const V v = sample();
  Bytes expected = record(2, v);
  const Bytes tol = dispc_test::stored(kTol);
  expected.insert(expected.end(), tol.begin(), tol.end());
  EXPECT_EQ(dispc_test::stored(v), expected);
  // Everything but the extensions, which stay out of the archive.
  EXPECT_TRUE(
      kfRealEq(dispc_test::loaded(expected, V()), V(v.point(), 0.75, kcDegree(30), 0.25, 0.8, 7, kTol), 0));
  V target;
  target.segmentLengthTol(kcDimTol(4, 0.5, 0.5, kcDimTol::ePercentages));
  expectFields(dispc_test::loaded(record(0, v), target), {3, -4}, 0.75, 30, 0.25, 0.8, 7, kcDimTol());
  Bytes v1 = record(1, v, {0.25, 1.5});
  v1.insert(v1.end(), {0xDE, 0xAD, 0xBE, 0xEF});  // read and discarded
  // Offsets about the target's current nominal.
  expectFields(dispc_test::loaded(v1, target), {3, -4}, 0.75, 30, 0.25, 0.8, 7,
               kcDimTol(4, 0.25, 1.5, kcDimTol::eOffsets));

  Bytes bytes = dispc_test::stored(V({1, 1}, 0.5, 0.5, 2));
  bytes[0] = 3;
  dispc_test::expectUnknownVersion(bytes, sample(), "", 0);
  bytes[0] = 2;
  for (long n : {0, 5, 57, 86})
    dispc_test::expectRefused<kcArchive::Corrupt>(Bytes(bytes.begin(), bytes.begin() + n), sample());
  // A point, radius or span that is not finite (the vertex would equal no
  // vertex, itself included).
  for (std::size_t at : {6, 6 + 8, 6 + 16, 6 + 16 + 8}) {
    Bytes broken = bytes;
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    std::memcpy(&broken[at], &notANumber, 8);
    dispc_test::expectRefused<kcArchive::Corrupt>(broken, sample());
  }
  const double zero = 0;
  std::memcpy(&bytes[6 + 16 + 8 + 8], &zero, 8);  // percentPrevSegment
  dispc_test::expectRefused<V::invalidSegmentLength>(bytes, sample());
}

}  // namespace
