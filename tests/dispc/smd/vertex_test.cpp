#include "dispc/smd/vertex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "foundation/archive.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
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

TEST(PolyVertex, Constructors) {
  expectFields(V(), {0, 0}, 0, 0, 0.5, 0.5, -1, kcDimTol());
  EXPECT_EQ(V().name(), L"");
  expectFields(sample(), {3, -4}, 0.75, 30, 0.25, 0.8, 7, kTol);
  // The short forms' no-tolerance value is of kind offsets.
  expectFields(V({1, 2}, 0.3, 0.4, 5), {1, 2}, 0, 0, 0.3, 0.4, 5, kOffsetsNone);
  expectFields(V({1, 2}, 1.5, 0.3, 0.4, 5), {1, 2}, 1.5, 0, 0.3, 0.4, 5, kOffsetsNone);
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

  using Edit = void (*)(V&, double);
  const Edit edits[] = {
      [](V& v, double d) { v.point(v.point() + kcVector<2>(0, d)); },
      [](V& v, double d) { v.percentNextSegment(v.percentNextSegment() - d); },
      [](V& v, double d) { v.backwardPercExtension(v.backwardPercExtension() + d); },
  };
  for (Edit edit : edits) {
    V close = sample(), far = sample();
    edit(close, 5e-12);
    edit(far, 5e-11);
    EXPECT_TRUE(close == sample() && far != sample() && kfRealEq(far, sample(), 1e-10));
  }
  V other = sample();
  other.subModelLabel(8);
  EXPECT_FALSE(kfRealEq(other, sample(), 1e6));
  other = sample();
  other.segmentLengthTol(kcDimTol(10, 1 + 1e-13, 2, kcDimTol::eOffsets));  // compared at 1e-15
  EXPECT_FALSE(kfRealEq(other, sample(), 1e-3));
}

TEST(PolyVertex, Transforms) {
  const V moved = kc2Rigid(kcRadian(kcDegree(90)), kcVector<2>(1, 2)) * sample();
  EXPECT_NEAR(moved.point().x(), 1 + 4, 1e-12);  // (3, -4) turned a quarter is (4, 3)
  EXPECT_NEAR(moved.point().y(), 2 + 3, 1e-12);
  V expected = sample();
  expected.point(moved.point());
  EXPECT_TRUE(kfRealEq(moved, expected, 0));
  const V twice = 2 * sample();
  expectFields(twice, {6, -8}, 1.5, 30, 0.25, 0.8, 7, kcDimTol(20, 1, 2, kcDimTol::eOffsets));
  EXPECT_EQ(twice.forwardPercExtension(), 0.4);
  EXPECT_EQ(twice.backwardPercExtension(), 0.6);
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

V load(const Bytes& bytes, V target) {
  kcMemArchive in(bytes);
  target.dispatchSerialize(in);
  EXPECT_TRUE(in.atEnd());
  return target;
}

TEST(PolyVertexArchive, AllVersions) {
  kcMemArchive out;
  V v = sample();
  v.dispatchSerialize(out);
  Bytes expected = record(2, v);
  kcMemArchive tol;
  tol << kTol;
  expected.insert(expected.end(), tol.bytes().begin(), tol.bytes().end());
  EXPECT_EQ(out.bytes(), expected);
  EXPECT_EQ(expected.size(), 87u);
  const V current = load(expected, V());
  // Everything but the extensions, which stay out of the archive.
  EXPECT_TRUE(kfRealEq(current, V(sample().point(), 0.75, kcDegree(30), 0.25, 0.8, 7, kTol), 0));

  V target;
  target.segmentLengthTol(kcDimTol(4, 0.5, 0.5, kcDimTol::ePercentages));
  expectFields(load(record(0, v), target), {3, -4}, 0.75, 30, 0.25, 0.8, 7, kcDimTol());
  Bytes v1 = record(1, v, {0.25, 1.5});
  v1.insert(v1.end(), {0xDE, 0xAD, 0xBE, 0xEF});  // unused word
  // Offsets about the target's current nominal.
  expectFields(load(v1, target), {3, -4}, 0.75, 30, 0.25, 0.8, 7, kcDimTol(4, 0.25, 1.5, kcDimTol::eOffsets));
}

TEST(PolyVertexArchive, BadRecordsLeaveTheVertex) {
  kcMemArchive out;
  V source({1, 1}, 0.5, 0.5, 2);
  source.dispatchSerialize(out);
  Bytes bytes = out.bytes();
  auto expectRefused = [&](const Bytes& b, auto error) {
    V target = sample();
    kcMemArchive in(b);
    EXPECT_THROW(target.dispatchSerialize(in), decltype(error));
    EXPECT_TRUE(kfRealEq(target, sample(), 0));
  };
  bytes[0] = 3;
  try {
    V target;
    kcMemArchive in(bytes);
    target.dispatchSerialize(in);
    FAIL() << "version 3 accepted";
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), "");
    EXPECT_EQ(e.line(), 0);
  }
  expectRefused(bytes, kcArchive::UnknownVersion());
  bytes[0] = 2;
  bytes[1] = 1;  // the prefix's version
  expectRefused(bytes, kcArchive::UnknownVersion());
  bytes[1] = 0;
  for (long n : {0, 1, 5, 57, 86})
    expectRefused(Bytes(bytes.begin(), bytes.begin() + n), kcArchive::Corrupt());
  const double zero = 0;
  std::memcpy(&bytes[6 + 16 + 8 + 8], &zero, 8);  // percentPrevSegment
  expectRefused(bytes, V::invalidSegmentLength());
}

}  // namespace
