#include "dispc/wrfm/raster.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "dispc/wrfm/raster_p.h"

namespace {
using Buffer = kcPelBuffer<unsigned char>;

unsigned char pelValue(signed char v) noexcept { return static_cast<unsigned char>(v); }

void widen(double* minX, double* maxX, double* minY, double* maxY, const kcVector<2>& p) noexcept {
  if (minX) *minX = std::min(*minX, p.x());
  if (maxX) *maxX = std::max(*maxX, p.x());
  if (minY) *minY = std::min(*minY, p.y());
  if (maxY) *maxY = std::max(*maxY, p.y());
}

// The marks of the line a-b, both already in pel coordinates.
void markExtents(Buffer& buffer, kcVector<2> a, kcVector<2> b, unsigned char grey) {
  if (a == b) throw kcShapesError::DegenerateShape();
  if (a.y() > b.y()) std::swap(a, b);
  const std::int32_t r0 = ceilTol(a.y() - 0.5);
  const std::int32_t r1 = floorTol(b.y() - 0.5);
  if (r0 > r1) return;
  if (r0 == r1) {
    // One row: its two ends, the pels whose centres the line reaches.
    const double left = std::min(a.x(), b.x()), right = std::max(a.x(), b.x());
    buffer.put(ceilTol(left - 0.5), r0, grey);
    buffer.put(floorTol(right - 0.5), r0, grey);
    return;
  }
  const double slope = (b.x() - a.x()) / (b.y() - a.y());
  const auto [from, to] = kcRasterPels_::within(r0, r1, buffer.height());
  for (std::int32_t r = from; r <= to; ++r) buffer.put(floorTol((r + 0.5 - a.y()) * slope + a.x()), r, grey);
}

// One pel of a line of the given width: widened across the major axis.
void widePel(const kcRasterPels_& pels, bool alongX, long major, long minor, unsigned char grey, long before,
             long after) noexcept {
  for (long k = minor - before; k <= minor + after; ++k) {
    if (alongX)
      pels.put(major, k, grey);
    else
      pels.put(k, major, grey);
  }
}
}  // namespace

// The thin line's pels, each widened across the major axis.
void kfRasterLine_(const kcRasterPels_& pels, const kcVector<2>& a, const kcVector<2>& b, unsigned char grey,
                   int width, bool startSet) {
  const bool alongX = !kcRaster_::steep(a, b);
  auto major = [alongX](const kcVector<2>& p) { return alongX ? p.x() : p.y(); };
  auto minor = [alongX](const kcVector<2>& p) { return alongX ? p.y() : p.x(); };
  // The centres' points measured from the end with the smaller major
  // coordinate, as for the thin line.
  const kcVector<2>& base = major(a) < major(b) ? a : b;
  const kcVector<2>& other = major(a) < major(b) ? b : a;
  const double slope = (minor(other) - minor(base)) / (major(other) - major(base));
  const auto [first, last] = kcRasterPels_::within(ceilTol(major(base) - 0.5), floorTol(major(other) - 0.5),
                                                   alongX ? pels.width() : pels.height());
  // The extra pel of an even width goes to the side of larger coordinates.
  const long before = (width - 1) / 2, after = width - 1 - before;
  for (std::int32_t m = first; m <= last; ++m)
    widePel(pels, alongX, m, floorTol((m + 0.5 - major(base)) * slope + minor(base)), grey, before, after);
  if (!startSet) widePel(pels, alongX, floorTol(major(a)), floorTol(minor(a)), grey, before, after);
  widePel(pels, alongX, floorTol(major(b)), floorTol(minor(b)), grey, before, after);
}

namespace {
// Walks the chords of the arc in pel coordinates, widening the bounds by
// each chord's end. Coincident chord ends are degenerate.
template <class Chord>
void forEachChord(const kc2SegmentArc& arc, const kcXform<2>& xform, double* minX, double* maxX, double* minY,
                  double* maxY, Chord&& chord) {
  auto each = [&](const kcVector<2>& from, const kcVector<2>& to) {
    widen(minX, maxX, minY, maxY, to);
    if (to == from) throw kcShapesError::DegenerateShape();
    chord(from, to);
  };
  if (arc.xform().isIdentity()) {
    // An arc in client space (the poly's) steps round its circle by turning
    // the radius vector, with no inverse mapping of angles.
    kfRasterChords_(arc.center_(), arc.p1_(), arc.p2_(), arc.angleSpan_().toDouble(), xform, each);
    return;
  }
  const double start = arc.startAngle().toDouble();
  const double span = arc.angleSpan().toDouble();
  const int n = kfRasterChordCount_(span);
  kcVector<2> from = xform * arc.arcPoint(kcDegree(start));
  for (int k = 1; k <= n; ++k) {
    const kcVector<2> to = xform * arc.arcPoint(kcDegree(start + k * (span / n)));
    each(from, to);
    from = to;
  }
}
}  // namespace

int kfArcChords(const kcDegree& span) noexcept { return kfRasterChordCount_(span.toDouble()); }

void drawHorizontalExtentsPelBuf(Buffer buffer, const kc2SegmentLine& line, const kcXform<2>& xform,
                                 signed char grey) {
  markExtents(buffer, xform * line.p1(), xform * line.p2(), pelValue(grey));
}

void drawHorizontalExtentsPelBuf(Buffer buffer, const kc2SegmentArc& arc, const kcXform<2>& xform,
                                 signed char grey, double* minX, double* maxX, double* minY, double* maxY) {
  forEachChord(arc, xform, minX, maxX, minY, maxY, [&](const kcVector<2>& a, const kcVector<2>& b) {
    markExtents(buffer, a, b, pelValue(grey));
  });
}

void drawLinePelBuf(Buffer buffer, const kc2SegmentLine& line, const kcXform<2>& xform, signed char grey,
                    signed char width) {
  const kcVector<2> a = xform * line.p1(), b = xform * line.p2();
  if (a == b) throw kcShapesError::DegenerateShape();
  const kcRasterPels_ pels(buffer);
  if (width > 1) {
    kfRasterLine_(pels, a, b, pelValue(grey), width, false);
    return;
  }
  kcRasterPen_<false> pen(pels, pelValue(grey));
  pen.moveTo(a);
  pen.lineTo(b);
}

void drawArcPelBuf(Buffer buffer, const kc2SegmentArc& arc, const kcXform<2>& xform, signed char grey,
                   signed char width, double* minX, double* maxX, double* minY, double* maxY) {
  const kcRasterPels_ pels(buffer);
  kcRasterPen_<false> pen(pels, pelValue(grey));
  bool startSet = false;  // the chords after the first start on a pel already set
  forEachChord(arc, xform, minX, maxX, minY, maxY, [&](const kcVector<2>& a, const kcVector<2>& b) {
    if (width > 1) {
      kfRasterLine_(pels, a, b, pelValue(grey), width, startSet);
      startSet = true;
      return;
    }
    pen.moveTo(a);
    pen.lineTo(b);
  });
}
