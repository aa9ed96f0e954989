// Checks shared by the shape tests: archive round trips by handle, and
// geometry measured against dense samples of the shape itself.
//
// The sampled checks treat the points of sample(spacing) as a polyline: for a
// spacing small against the curvature, every point of the curve lies within
// spacing^2 / (8 r) of it (r the smallest radius of curvature), so the
// tolerances passed in must allow for that sag.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <typeinfo>
#include <vector>

#include "foundation/archive.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

namespace shape_testing {

using Bytes = std::vector<std::uint8_t>;

// The bytes of a shape stored by handle: tag 1, class name, then its body.
inline Bytes storeByHandle(const kcShape& shape) {
  kcShapePtr h = shape.clone();
  kcMemArchive ar;
  ar || h;
  return ar.bytes();
}

// Loads a shape stored by handle; the archive must be used up.
inline kcShapePtr loadByHandle(Bytes bytes) {
  kcMemArchive ar(std::move(bytes));
  kcShapePtr h;
  ar || h;
  EXPECT_TRUE(ar.atEnd());
  return h;
}

// Where the version byte of a shape stored by handle lies.
inline std::size_t versionOffset(const kcShape& shape) { return 1 + 4 + std::strlen(shape.className()); }
// Where the first field of the shape's body lies (after the version byte).
inline std::size_t bodyOffset(const kcShape& shape) { return versionOffset(shape) + 1; }

// Overwrites the double at offset (little-endian).
inline void patchDouble(Bytes& bytes, std::size_t offset, double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, 8);
  for (int i = 0; i < 8; ++i) bytes.at(offset + i) = static_cast<std::uint8_t>(bits >> (8 * i));
}

// Stores by handle and loads back: same class, equal shape.
inline void expectRoundTrip(const kcShape& shape) {
  kcShapePtr loaded = loadByHandle(storeByHandle(shape));
  ASSERT_FALSE(loaded.isNull());
  const kcShape& back = *loaded;
  EXPECT_EQ(typeid(back), typeid(shape));
  EXPECT_STREQ(loaded->className(), shape.className());
  EXPECT_TRUE(*loaded == shape) << shape.className();
}

// A version byte above 0 is UnknownVersion naming the shape's source file.
inline void expectUnknownVersion(const kcShape& shape, const std::string& file) {
  Bytes bytes = storeByHandle(shape);
  bytes.at(versionOffset(shape)) = 1;
  try {
    (void)loadByHandle(bytes);
    ADD_FAILURE() << "no UnknownVersion for " << shape.className();
  } catch (const kcArchive::UnknownVersion& e) {
    EXPECT_EQ(e.file(), file);
    EXPECT_GT(e.line(), 0);
  }
}

// Every proper prefix of the stored form is Corrupt.
inline void expectTruncationCorrupt(const kcShape& shape) {
  Bytes bytes = storeByHandle(shape);
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
    EXPECT_THROW((void)loadByHandle(cut), kcArchive::Corrupt) << shape.className() << " cut at " << n;
  }
}

// The stored form with a NaN put at offset loads as Corrupt.
inline void expectNaNCorrupt(const kcShape& shape, std::size_t offset) {
  Bytes bytes = storeByHandle(shape);
  patchDouble(bytes, offset, std::numeric_limits<double>::quiet_NaN());
  EXPECT_THROW((void)loadByHandle(bytes), kcArchive::Corrupt) << shape.className() << " NaN at " << offset;
}

inline std::vector<kcVector<2>> samples(const kcShape& shape, double spacing) {
  std::vector<kcVector<2>> pts;
  shape.sample(spacing, pts);
  return pts;
}

// Distance from p to the polyline through pts.
inline double polylineDistance(const std::vector<kcVector<2>>& pts, const kcVector<2>& p) {
  double best = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < pts.size(); ++i) {
    kcVector<2> a = pts[i];
    kcVector<2> b = i + 1 < pts.size() ? pts[i + 1] : a;
    kcVector<2> d = b - a;
    double t = d.lenSq() > 0.0 ? std::clamp((p - a).dot(d) / d.lenSq(), 0.0, 1.0) : 0.0;
    best = std::min(best, p.distance(a + d * t));
  }
  return best;
}

// The samples of each connected piece (decompose()) on its own, so that no
// polyline bridges the gap between two pieces of a set.
inline std::vector<std::vector<kcVector<2>>> pieceSamples(const kcShape& shape, double spacing) {
  std::vector<std::vector<kcVector<2>>> out;
  for (const kcShapePtr& piece : shape.decompose()) out.push_back(samples(*piece, spacing));
  return out;
}

inline double piecesDistance(const std::vector<std::vector<kcVector<2>>>& pieces, const kcVector<2>& p) {
  double best = std::numeric_limits<double>::infinity();
  for (const auto& pts : pieces) best = std::min(best, polylineDistance(pts, p));
  return best;
}

// Consecutive samples of each piece are no more than spacing apart.
inline void expectSampleSpacing(const kcShape& shape, double spacing) {
  for (const auto& pts : pieceSamples(shape, spacing)) {
    ASSERT_FALSE(pts.empty());
    for (std::size_t i = 1; i < pts.size(); ++i) {
      EXPECT_LE(pts[i].distance(pts[i - 1]), spacing * (1.0 + 1e-9)) << shape.className() << " at " << i;
    }
  }
}

// distanceToPoint and nearestPoint agree with the densely sampled curve: the
// distance equals the polylines' within tol, and the nearest point lies on
// the curve (within tol of a polyline) at that distance from p.
inline void expectDistancesMatchSampling(const kcShape& shape, const std::vector<kcVector<2>>& probes,
                                         double spacing, double tol) {
  std::vector<std::vector<kcVector<2>>> pieces = pieceSamples(shape, spacing);
  for (const kcVector<2>& p : probes) {
    double d = shape.distanceToPoint(p);
    kcVector<2> q = shape.nearestPoint(p);
    EXPECT_NEAR(d, piecesDistance(pieces, p), tol) << shape.className() << " probe " << p.x() << "," << p.y();
    EXPECT_NEAR(p.distance(q), d, 1e-9 * (1.0 + d)) << shape.className();
    EXPECT_LE(piecesDistance(pieces, q), tol) << shape.className() << " nearest point off the curve";
  }
}

// encloseRect is the box of the samples, within tol on each side.
inline void expectEncloseRectMatchesSampling(const kcShape& shape, double spacing, double tol) {
  kcRect box;
  for (const kcVector<2>& p : samples(shape, spacing)) box.enclose(p);
  kcRect r = shape.encloseRect();
  ASSERT_FALSE(r.isEmpty()) << shape.className();
  EXPECT_NEAR(r.xMin(), box.xMin(), tol) << shape.className();
  EXPECT_NEAR(r.yMin(), box.yMin(), tol) << shape.className();
  EXPECT_NEAR(r.xMax(), box.xMax(), tol) << shape.className();
  EXPECT_NEAR(r.yMax(), box.yMax(), tol) << shape.className();
}

// mapShape(x) is the image of the shape: the mapped samples lie on the mapped
// shape and the mapped shape's samples map back onto the shape (within tol).
inline void expectMapMatchesSamples(const kcShape& shape, const kcXform<2>& x, double spacing, double tol) {
  kcShapePtr mapped = shape.mapShape(x);
  ASSERT_FALSE(mapped.isNull());
  for (const kcVector<2>& p : samples(shape, spacing)) {
    EXPECT_LE(mapped->distanceToPoint(x * p), tol) << shape.className();
  }
  kcXform<2> back = x.inverse();
  for (const kcVector<2>& p : samples(*mapped, spacing)) {
    EXPECT_LE(shape.distanceToPoint(back * p), tol) << shape.className();
  }
}

// A grid of probe points over the box r grown by margin on each side.
inline std::vector<kcVector<2>> probeGrid(const kcRect& r, double margin, int n) {
  std::vector<kcVector<2>> probes;
  for (int i = 0; i <= n; ++i) {
    for (int j = 0; j <= n; ++j) {
      probes.emplace_back(r.xMin() - margin + (r.width() + 2 * margin) * i / n,
                          r.yMin() - margin + (r.height() + 2 * margin) * j / n);
    }
  }
  return probes;
}

// The archive checks every shape class must pass: round trip by handle
// keeping the class, UnknownVersion naming file, Corrupt for every truncation.
inline void expectArchiveBasics(const kcShape& shape, const std::string& file) {
  expectRoundTrip(shape);
  expectUnknownVersion(shape, file);
  expectTruncationCorrupt(shape);
}

// The geometric checks against the shape's own dense samples: spacing of the
// samples, distances and nearest points for probes around the shape, the
// tight box, and the image under x. Tolerances are relative to the box size.
inline void expectGeometryMatchesSampling(const kcShape& shape, const kcXform<2>& x) {
  kcRect box = shape.encloseRect();
  double size = std::max({box.width(), box.height(), 1e-3});
  expectSampleSpacing(shape, size / 23);
  expectDistancesMatchSampling(shape, probeGrid(box, 0.4 * size, 8), size * 1e-3, size * 1e-6);
  expectEncloseRectMatchesSampling(shape, size * 1e-3, size * 1e-12);
  expectMapMatchesSamples(shape, x, size * 1e-2, size * 1e-9);
}

}  // namespace shape_testing
