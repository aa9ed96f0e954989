#include "dispc/wrfm/raster.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace {
// Arcs are cut into chords of at most this many degrees.
constexpr double kChordsPerDegree = 0.2;
constexpr double kPerDegree = 0.017453292519943295;

using Buffer = kcPelBuffer<unsigned char>;

unsigned char pelValue(signed char v) noexcept { return static_cast<unsigned char>(v); }

// Rows or columns first..last cut to the window's 0..size - 1: the others
// would write nothing, and a far-off segment must not cost a loop over them.
std::pair<std::int32_t, std::int32_t> within(std::int32_t first, std::int32_t last, long size) noexcept {
  return {std::max<std::int32_t>(first, 0), static_cast<std::int32_t>(std::min<long>(last, size - 1))};
}

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
  const auto [from, to] = within(r0, r1, buffer.height());
  for (std::int32_t r = from; r <= to; ++r) buffer.put(floorTol((r + 0.5 - a.y()) * slope + a.x()), r, grey);
}

// The window's pels addressed directly: put() checks and finds its pel on
// every call, which costs more than the line itself.
class Pels {
 public:
  explicit Pels(Buffer& b) : width_(b.width()), height_(b.height()) {
    if (width_ <= 0 || height_ <= 0) return;
    origin_ = b.row(0);
    stride_ = height_ > 1 ? b.row(1) - origin_ : 0;
  }
  void put(long x, long y, unsigned char v) const noexcept {
    if (x >= 0 && x < width_ && y >= 0 && y < height_) origin_[y * stride_ + x] = v;
  }
  [[nodiscard]] long width() const noexcept { return width_; }
  [[nodiscard]] long height() const noexcept { return height_; }

 private:
  long width_, height_;
  unsigned char* origin_ = nullptr;
  std::ptrdiff_t stride_ = 0;
};

// The thin line a-b (pel coordinates) widened across its major axis.
void drawLine(const Pels& pels, const kcVector<2>& a, const kcVector<2>& b, unsigned char grey, int width) {
  if (a == b) throw kcShapesError::DegenerateShape();
  const bool alongX = std::fabs(b.x() - a.x()) >= std::fabs(b.y() - a.y());
  const long before = (std::max(width, 1) - 1) / 2;
  const long after = std::max(width, 1) - 1 - before;
  // major, minor: the pel's coordinates along and across the major axis.
  auto put = [&](long major, long minor) {
    for (long k = minor - before; k <= minor + after; ++k) {
      if (alongX)
        pels.put(major, k, grey);
      else
        pels.put(k, major, grey);
    }
  };
  const double a0 = alongX ? a.x() : a.y(), a1 = alongX ? a.y() : a.x();
  const double b0 = alongX ? b.x() : b.y(), b1 = alongX ? b.y() : b.x();
  const double slope = (b1 - a1) / (b0 - a0);
  const auto [first, last] = within(ceilTol(std::min(a0, b0) - 0.5), floorTol(std::max(a0, b0) - 0.5),
                                    alongX ? pels.width() : pels.height());
  for (std::int32_t m = first; m <= last; ++m) put(m, floorTol((m + 0.5 - a0) * slope + a1));
  put(floorTol(a0), floorTol(a1));
  put(floorTol(b0), floorTol(b1));
}

// Walks the chords of the arc in pel coordinates, widening the bounds by
// each chord's end.
template <class Chord>
void forEachChord(const kc2SegmentArc& arc, const kcXform<2>& xform, double* minX, double* maxX, double* minY,
                  double* maxY, Chord&& chord) {
  const bool plain = arc.xform().isIdentity();
  const double start = (plain ? arc.startAngle_() : arc.startAngle()).toDouble();
  const double span = (plain ? arc.angleSpan_() : arc.angleSpan()).toDouble();
  const int n = kfArcChords(kcDegree(span));
  const double step = span / n;
  // An arc in client space (the poly's) steps round its circle by turning the
  // radius vector: plain arithmetic, the same on every machine, and no
  // inverse mapping of angles.
  const kcVector<2> centre = arc.center_();
  kcVector<2> radius = arc.arcPoint_(kcDegree(start)) - centre;
  const double c = std::cos(step * kPerDegree), s = std::sin(step * kPerDegree);
  kcVector<2> from = xform * (plain ? centre + radius : arc.arcPoint(kcDegree(start)));
  for (int k = 1; k <= n; ++k) {
    kcVector<2> on;
    if (plain) {
      radius = kcVector<2>(c * radius.x() - s * radius.y(), s * radius.x() + c * radius.y());
      on = k == n ? arc.p2_() : centre + radius;
    } else {
      on = arc.arcPoint(kcDegree(start + k * step));
    }
    const kcVector<2> to = xform * on;
    widen(minX, maxX, minY, maxY, to);
    if (to == from) throw kcShapesError::DegenerateShape();
    chord(from, to);
    from = to;
  }
}
}  // namespace

int kfArcChords(const kcDegree& span) noexcept {
  return static_cast<int>(std::trunc(std::fabs(span.toDouble() * kChordsPerDegree))) + 1;
}

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
  drawLine(Pels(buffer), xform * line.p1(), xform * line.p2(), pelValue(grey), width);
}

void drawArcPelBuf(Buffer buffer, const kc2SegmentArc& arc, const kcXform<2>& xform, signed char grey,
                   signed char width, double* minX, double* maxX, double* minY, double* maxY) {
  const Pels pels(buffer);
  forEachChord(arc, xform, minX, maxX, minY, maxY, [&](const kcVector<2>& a, const kcVector<2>& b) {
    drawLine(pels, a, b, pelValue(grey), width);
  });
}
