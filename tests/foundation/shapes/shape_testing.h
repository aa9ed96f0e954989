// Checks shared by the shape tests: archive access by handle, and reference
// geometry written out from the definitions (ellipses, segments, de Casteljau
// cubics) that shares no code with the shapes under test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

#include "foundation/archive.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

namespace shape_testing {

using V = kcVector<2>;
using Bytes = std::vector<std::uint8_t>;
constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// --- archive ---

// The bytes of a shape stored by handle: tag 1, class name, version, body.
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

inline std::size_t versionOffset(const kcShape& shape) { return 1 + 4 + std::strlen(shape.className()); }
inline std::size_t bodyOffset(const kcShape& shape) { return versionOffset(shape) + 1; }

// Overwrites the double at offset (little-endian).
inline void patchDouble(Bytes& bytes, std::size_t offset, double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, 8);
  for (int i = 0; i < 8; ++i) bytes.at(offset + i) = static_cast<std::uint8_t>(bits >> (8 * i));
}

// --- sampling ---

inline std::vector<V> samples(const kcShape& shape, double spacing) {
  std::vector<V> pts;
  shape.sample(spacing, pts);
  return pts;
}

// Distance from p to the polyline through pts.
inline double polylineDistance(const std::vector<V>& pts, const V& p) {
  double best = kInf;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    V a = pts[i];
    V d = (i + 1 < pts.size() ? pts[i + 1] : a) - a;
    double t = d.lenSq() > 0.0 ? std::clamp((p - a).dot(d) / d.lenSq(), 0.0, 1.0) : 0.0;
    best = std::min(best, p.distance(a + d * t));
  }
  return best;
}

// A grid of (n + 1)^2 probe points over r grown by margin on each side.
inline std::vector<V> probeGrid(const kcRect& r, double margin, int n) {
  std::vector<V> probes;
  for (int i = 0; i <= n; ++i) {
    for (int j = 0; j <= n; ++j) {
      probes.emplace_back(r.xMin() - margin + (r.width() + 2 * margin) * i / n,
                          r.yMin() - margin + (r.height() + 2 * margin) * j / n);
    }
  }
  return probes;
}

// --- reference curves ---

using Curve = std::function<V(double)>;

// One piece of a reference outline: the curve for t from t0 to t0 + span.
struct Piece {
  Curve at;
  double t0 = 0.0, span = 1.0;
};

// c + u cos t + v sin t.
inline Curve ellipseCurve(V c, V u, V v) {
  return [=](double t) { return c + u * std::cos(t) + v * std::sin(t); };
}
// c + R(rotation) (rx cos t, ry sin t).
inline Curve ellipseCurve(V c, double rx, double ry, double rotation) {
  V ax(std::cos(rotation), std::sin(rotation));
  return ellipseCurve(c, ax * rx, V(-ax.y(), ax.x()) * ry);
}
// x (cos t, sin t): the image of the unit circle.
inline Curve ellipseCurve(const kcXform<2>& x) {
  const kcMatrix<2>& m = x.matrix();
  return ellipseCurve(x.trans(), V(m.element(0, 0), m.element(1, 0)), V(m.element(0, 1), m.element(1, 1)));
}

inline Piece segmentPiece(V a, V b) {
  return {[=](double t) { return a + (b - a) * t; }};
}

// The cubic with control points c[0..3] at t, by repeated interpolation.
inline V casteljau(const V* c, double t) {
  V a = c[0] + t * (c[1] - c[0]), b = c[1] + t * (c[2] - c[1]), d = c[2] + t * (c[3] - c[2]);
  V ab = a + t * (b - a), bd = b + t * (d - b);
  return ab + t * (bd - ab);
}

// The pieces of a Bezier point list (3k + 1 points).
inline std::vector<Piece> bezierPieces(const std::vector<V>& pts) {
  std::vector<Piece> out;
  for (std::size_t i = 0; i + 3 < pts.size(); i += 3) {
    std::array<V, 4> c{pts[i], pts[i + 1], pts[i + 2], pts[i + 3]};
    out.push_back({[=](double t) { return casteljau(c.data(), t); }});
  }
  return out;
}

// The points of a piece at n + 1 even steps of its parameter.
inline std::vector<V> trace(const Piece& c, int n = 500) {
  std::vector<V> pts;
  for (int i = 0; i <= n; ++i) pts.push_back(c.at(c.t0 + c.span * i / n));
  return pts;
}

// The distance from p to the piece that pts = trace(c) follows: around every
// local minimum among the traced points, a finer scan and then golden-section
// refinement (the finer scan parts valleys closer than a step, as near the
// end of a thin ellipse).
inline double pieceDistance(const Piece& c, const std::vector<V>& pts, const V& p) {
  const int n = static_cast<int>(pts.size()) - 1, kFine = 64;
  std::vector<double> d;
  for (const V& q : pts) d.push_back(q.distance(p));
  double best = *std::min_element(d.begin(), d.end());
  const double g = (std::sqrt(5.0) - 1.0) / 2.0;
  auto at = [&](double f) { return c.at(c.t0 + c.span * f).distance(p); };
  for (int i = 0; i <= n; ++i) {
    // The first step of every valley (a flat one, such as a point, once).
    if ((i > 0 && d[i] >= d[i - 1]) || (i < n && d[i] > d[i + 1])) continue;
    double lo = std::max(0.0, (i - 1.0) / n), hi = std::min(1.0, (i + 1.0) / n), step = (hi - lo) / kFine;
    int j = 0;
    for (int k = 1; k <= kFine; ++k) j = at(lo + k * step) < at(lo + j * step) ? k : j;
    hi = std::min(hi, lo + (j + 1) * step);
    lo = std::max(lo, lo + (j - 1) * step);
    for (int k = 0; k < 200 && hi - lo > 1e-17; ++k) {
      double a = hi - g * (hi - lo), b = lo + g * (hi - lo);
      if (at(a) < at(b))
        hi = b;
      else
        lo = a;
    }
    best = std::min(best, at(0.5 * (lo + hi)));
  }
  return best;
}

// The smallest distance from p to the curve for t in [t0, t0 + span].
inline double bruteDistance(const Curve& curve, double t0, double span, const V& p) {
  Piece c{curve, t0, span};
  return pieceDistance(c, trace(c), p);
}

}  // namespace shape_testing
