// The rasterisers' working parts, shared by the public functions and the
// synthetic drawing of polys: direct pel access, thin and wide pel lines,
// the chords of a circular arc, and the scan-line fill's edge table.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "dispc/wrfm/raster.h"
#include "foundation/pelbuffer.h"
#include "foundation/vector.h"
#include "foundation/xform.h"

// The window's pels addressed directly: kcPelBuffer::put checks and finds
// its pel on every call, which costs more than a short line.
class kcRasterPels_ {
 public:
  explicit kcRasterPels_(kcPelBuffer<unsigned char>& b) : width_(b.width()), height_(b.height()) {
    if (width_ <= 0 || height_ <= 0) return;
    origin_ = b.row(0);
    stride_ = height_ > 1 ? b.row(1) - origin_ : 0;
  }
  [[nodiscard]] long width() const noexcept { return width_; }
  [[nodiscard]] long height() const noexcept { return height_; }
  [[nodiscard]] unsigned char* row(long y) const noexcept { return origin_ + y * stride_; }
  [[nodiscard]] std::ptrdiff_t stride() const noexcept { return stride_; }
  // Sets pel (x, y) when it lies in the window.
  void put(long x, long y, unsigned char v) const noexcept {
    if (inside(x, y)) origin_[y * stride_ + x] = v;
  }
  // Columns or rows first..last cut to the window's 0..size - 1: the others
  // would write nothing, and a far-off line must not cost a loop over them.
  [[nodiscard]] static std::pair<std::int32_t, std::int32_t> within(std::int32_t first, std::int32_t last,
                                                                    long size) noexcept {
    return {std::max<std::int32_t>(first, 0), static_cast<std::int32_t>(std::min<long>(last, size - 1))};
  }

 private:
  [[nodiscard]] bool inside(long x, long y) const noexcept {
    return (static_cast<unsigned long>(x) < static_cast<unsigned long>(width_)) &
           (static_cast<unsigned long>(y) < static_cast<unsigned long>(height_));
  }

  long width_, height_;
  unsigned char* origin_ = nullptr;
  std::ptrdiff_t stride_ = 0;
};

// The pel line a-b (pel coordinates, a != b) of the given pen width, above
// one: the thin line's pels widened across its major axis. The pel holding
// a is left alone when the caller has set it already (a line that goes on
// from where the last one ended).
void kfRasterLine_(const kcRasterPels_& pels, const kcVector<2>& a, const kcVector<2>& b, unsigned char grey,
                   int width, bool startSet);

namespace kcRaster_ {
// floorTol(v) as the index of a pel, which matters only within the window:
// where v is not below 0 the two agree, and below 0 (left of or above the
// window) any negative index will do. With kSafe (|v| < kInRange) that is
// -1, and the floor of the rest is a plain truncation.
template <bool kSafe>
[[nodiscard]] inline std::int32_t floorAt(double v) noexcept {
  // Not "v < 0": a point that is not a number (a degenerate piece) is outside too.
  if constexpr (kSafe) return !(v >= 0.0) ? -1 : static_cast<std::int32_t>(v * kGrow);
  return floorTol(v);
}
// ceilTol(v), and for a value that is not a number the largest index, past
// every window, so that a range it begins is empty.
template <bool kSafe>
[[nodiscard]] inline std::int32_t ceilAt(double v) noexcept {
  if constexpr (kSafe) return v == v ? ceilIn(v) : std::numeric_limits<std::int32_t>::max();
  return ceilTol(v);
}

[[nodiscard]] inline bool inRange(const kcVector<2>& p) noexcept {
  return std::fabs(p.x()) < kInRange && std::fabs(p.y()) < kInRange;
}

// Whether the line a-b runs closer to the y axis than to the x axis: its
// major axis is y.
[[nodiscard]] inline bool steep(const kcVector<2>& a, const kcVector<2>& b) noexcept {
  return std::fabs(b.x() - a.x()) < std::fabs(b.y() - a.y());
}

// The pels of the thin line a-b between its ends: along the major axis,
// every column (or row) whose centre lies within the line gets the pel
// holding the line's point there, measured from the line's end with the
// smaller major coordinate, so that the line draws the same pels whichever
// way it runs. A steep line's point in a row is then the crossing the fill
// computes for that row; with byFill, the fill has set those pels (its rows
// end before the row whose centre is the lower end, which is left here).
// Rounding need not saturate when kSafe.
template <bool kSafe>
[[gnu::always_inline]] inline void centrePels(const kcRasterPels_& pels, const kcVector<2>& a,
                                              const kcVector<2>& b, unsigned char grey,
                                              bool byFill = false) noexcept {
  const bool alongX = !steep(a, b);
  const double p0 = alongX ? a.x() : a.y(), q0 = alongX ? b.x() : b.y();
  const bool fromA = p0 < q0;
  const kcVector<2>& base = fromA ? a : b;
  const kcVector<2>& other = fromA ? b : a;
  const double a0 = alongX ? base.x() : base.y(), a1 = alongX ? base.y() : base.x();
  const double b0 = alongX ? other.x() : other.y(), b1 = alongX ? other.y() : other.x();
  const std::int32_t first =
      std::max<std::int32_t>(byFill ? ceilAt<kSafe>(b0 - 0.5) : ceilAt<kSafe>(a0 - 0.5), 0);
  const auto last = static_cast<std::int32_t>(
      std::min<long>(floorAt<kSafe>(b0 - 0.5), (alongX ? pels.width() : pels.height()) - 1));
  if (first > last) return;
  const double slope = (b1 - a1) / (b0 - a0);
  if (last - first <= 1) {
    // One centre or two, the common case of a short line: both ends of the
    // range are set (the same pel twice when it is one), without a branch
    // on which.
    const std::int32_t minor0 = floorAt<kSafe>((first + 0.5 - a0) * slope + a1);
    const std::int32_t minor1 = floorAt<kSafe>((last + 0.5 - a0) * slope + a1);
    if (alongX) {
      pels.put(first, minor0, grey);
      pels.put(last, minor1, grey);
    } else {
      pels.put(minor0, first, grey);
      pels.put(minor1, last, grey);
    }
    return;
  }
  // Locals, which a store through a pel pointer cannot alias. Each centre
  // comes from its whole number, not from the one before it, so that no
  // chain of additions runs through the loop.
  unsigned char* const origin = pels.row(0);
  const std::ptrdiff_t stride = pels.stride();
  if (alongX) {
    const auto height = static_cast<unsigned long>(pels.height());
    for (std::int32_t m = first; m <= last; ++m) {
      const long y = floorAt<kSafe>((m + 0.5 - a0) * slope + a1);
      if (static_cast<unsigned long>(y) < height) origin[y * stride + m] = grey;
    }
  } else {
    const auto width = static_cast<unsigned long>(pels.width());
    unsigned char* row = origin + first * stride;
    for (std::int32_t m = first; m <= last; ++m, row += stride) {
      const long x = floorAt<kSafe>((m + 0.5 - a0) * slope + a1);
      if (static_cast<unsigned long>(x) < width) row[x] = grey;
    }
  }
}

}  // namespace kcRaster_

// How many chords an arc of the given sweep (degrees) is cut into: one more
// than the whole 5-degree steps in it, so that no chord turns by 5 degrees
// or more (counts past a million sweeps, which no outline has, are cut).
[[nodiscard]] inline int kfRasterChordCount_(double span) noexcept {
  constexpr double kMost = 1 << 30;
  const double steps = std::trunc(std::fabs(span * 0.2));
  return steps < kMost ? static_cast<int>(steps) + 1 : static_cast<int>(kMost);
}

// The turn from one chord end to the next: n chords, each turning the
// radius vector by (cos, sin). A chord turns by less than 5 degrees (0.0873
// radians), where the series below are exact to the last bit or two: plain
// arithmetic, so the chords are the same on every machine, whatever its
// library's sine.
struct kcRasterTurn_ {
  int n;
  double cos, sin;
};
[[nodiscard]] inline kcRasterTurn_ kfRasterTurn_(double span) noexcept {
  constexpr double kPerDegree = 0.017453292519943295;
  const int n = kfRasterChordCount_(span);
  const double t = span / n * kPerDegree;
  if (!(std::fabs(t) < 0.0873)) return {n, std::cos(t), std::sin(t)};
  // Taylor coefficients, multiplied rather than divided by: a chain of
  // divisions would cost more than the chords.
  constexpr double c2 = -1.0 / 2, c4 = 1.0 / 24, c6 = -1.0 / 720, c8 = 1.0 / 40320;
  constexpr double s3 = -1.0 / 6, s5 = 1.0 / 120, s7 = -1.0 / 5040, s9 = 1.0 / 362880;
  const double t2 = t * t;
  const double c = 1.0 + t2 * (c2 + t2 * (c4 + t2 * (c6 + t2 * c8)));
  const double s = t + t * t2 * (s3 + t2 * (s5 + t2 * (s7 + t2 * s9)));
  return {n, c, s};
}

// The chord ends of a circular arc in client space, from `from` turning by
// span degrees (counter-clockwise when positive) about centre to `to`, in
// pel coordinates. The radius vector is turned step by step: plain
// arithmetic, the same on every machine; the last chord ends exactly on
// `to`, so the next piece of an outline starts where this one ends.
class kcRasterArcWalk_ {
 public:
  kcRasterArcWalk_(const kcVector<2>& centre, const kcVector<2>& from, const kcVector<2>& to, double span,
                   const kcXform<2>& toPels) noexcept
      : turn_(kfRasterTurn_(span)),
        centre_(centre),
        to_(to),
        toPels_(toPels),
        rx_(from.x() - centre.x()),
        ry_(from.y() - centre.y()) {}

  // The end of the next chord, while there is one.
  [[gnu::always_inline]] bool next(kcVector<2>& q) noexcept {
    if (k_ == turn_.n) return false;
    const double x = turn_.cos * rx_ - turn_.sin * ry_;
    ry_ = turn_.sin * rx_ + turn_.cos * ry_;
    rx_ = x;
    q = toPels_ * (++k_ == turn_.n ? to_ : kcVector<2>(centre_.x() + rx_, centre_.y() + ry_));
    return true;
  }

 private:
  kcRasterTurn_ turn_;
  kcVector<2> centre_, to_;
  kcXform<2> toPels_;
  double rx_, ry_;
  int k_ = 0;
};

// Hands the chords of the arc to chord(p, q), in pel coordinates.
template <class Chord>
void kfRasterChords_(const kcVector<2>& centre, const kcVector<2>& from, const kcVector<2>& to, double span,
                     const kcXform<2>& toPels, Chord&& chord) {
  kcRasterArcWalk_ walk(centre, from, to, span, toPels);
  kcVector<2> p = toPels * from, q;
  while (walk.next(q)) {
    chord(p, q);
    p = q;
  }
}

// A thin pel outline drawn line by line, as a pen moves: each line sets the
// pels of its major-axis centres (kcRaster_::centrePels) and the pels
// holding its ends, a pel where one line ends and the next begins once. A
// line that starts and ends in one pel sets nothing more: the pel is set
// already (a line between two far-off points whose pels saturate alike
// stays outside the window). Outlines of many chords shorter than a pel
// (small roundings) cost little more than their pels. kSafe: every point
// the pen meets lies within kcRaster_::kInRange, and rounds without
// saturating.
template <bool kSafe>
class kcRasterPen_ {
 public:
  kcRasterPen_(const kcRasterPels_& pels, unsigned char grey) noexcept : pels_(pels), grey_(grey) {}

  // Puts the pen down at a, setting its pel, unless it is there already.
  [[gnu::always_inline]] void moveTo(const kcVector<2>& a) noexcept {
    if (a != spot_.at) spot_ = place(pels_, a);
  }
  // The line from where the pen is to b.
  [[gnu::always_inline]] void lineTo(const kcVector<2>& b) noexcept {
    const kcRasterPels_ pels = pels_;
    spot_ = line(pels, spot_, b);
  }
  // The lines from points[0] through the rest, in order; the centre pels
  // of line i - 1 to i are left to the fill where byFill[i] (when byFill is
  // not null).
  void polyline(const kcVector<2>* points, const unsigned char* byFill, std::size_t n) noexcept {
    if (n == 0) return;
    moveTo(points[0]);
    // The pels and the pen's place in locals, which a pel store cannot
    // alias: they stay in registers along the lines.
    const kcRasterPels_ pels = pels_;
    kcVector<2> at = spot_.at;
    std::int32_t x = spot_.x, y = spot_.y;
    for (std::size_t i = 1; i < n; ++i) {
      const kcVector<2>& q = points[i];
      if (q == at) continue;
      const std::int32_t qx = kcRaster_::floorAt<kSafe>(q.x()), qy = kcRaster_::floorAt<kSafe>(q.y());
      if (qx != x || qy != y) {
        pels.put(qx, qy, grey_);
        kcRaster_::centrePels<kSafe>(pels, at, q, grey_, byFill && byFill[i]);
      }
      at = q;
      x = qx;
      y = qy;
    }
    spot_ = {at, x, y};
  }

 private:
  // Where the pen is (NaN before the first move: equal to nothing), and
  // its pel.
  struct Spot {
    kcVector<2> at{std::numeric_limits<double>::quiet_NaN(), 0.0};
    std::int32_t x = 0, y = 0;
  };

  [[gnu::always_inline]] Spot place(const kcRasterPels_& pels, const kcVector<2>& a) const noexcept {
    const Spot spot{a, kcRaster_::floorAt<kSafe>(a.x()), kcRaster_::floorAt<kSafe>(a.y())};
    pels.put(spot.x, spot.y, grey_);
    return spot;
  }
  [[gnu::always_inline]] Spot line(const kcRasterPels_& pels, const Spot& from,
                                   const kcVector<2>& b) const noexcept {
    if (b == from.at) return from;
    const Spot to{b, kcRaster_::floorAt<kSafe>(b.x()), kcRaster_::floorAt<kSafe>(b.y())};
    if (to.x != from.x || to.y != from.y) {
      pels.put(to.x, to.y, grey_);
      kcRaster_::centrePels<kSafe>(pels, from.at, b, grey_);
    }
    return to;
  }

  kcRasterPels_ pels_;
  unsigned char grey_;
  Spot spot_;
};

// The fill's edge table: pieces of closed outlines in pel coordinates, each
// cut where y turns, then filled row by row between pairs of crossings.
// Rows are sampled at their centres; a pel whose centre lies on a crossing
// is inside on the crossing's left and outside on its right, and a row
// centre on an edge's upper end meets it, on its lower end does not, so
// outlines that share an edge set every pel along it once. Its storage is
// kept from one outline to the next: filling allocates nothing once it has
// seen an outline as large.
class kcRasterFill_ {
 public:
  void clear() noexcept { edges_.clear(); }
  // The line p-q. With stroke, a steep line also sets the pel holding its
  // crossing in each of its rows: the centre pels of its outline
  // (kcRaster_::centrePels with byFill), set while the row is at hand.
  void line(const kcVector<2>& p, const kcVector<2>& q, bool stroke = false);
  // The elliptical arc x = x0 + a ux + b uy, y = y0 + c ux + d uy over the
  // unit vectors u that turn from u0 by sweep degrees (counter-clockwise
  // when positive) to u1, running from pel point p0 to p1.
  struct Arc {
    kcVector<2> centre;
    double a, b, c, d;
    kcVector<2> u0, u1;
    double sweep;
    kcVector<2> p0, p1;
  };
  void arc(const Arc& arc);
  // Sets the pels inside the outlines added since clear() to grey.
  void fill(const kcRasterPels_& pels, unsigned char grey);

 private:
  struct Edge {
    // x = x0 + slope (yc - y0), plus, on an arc piece, branch sqrt(h - (yc - y0)^2).
    double x0, y0, slope, h, branch;
    // The rows whose centres the edge meets, first..last.
    std::int32_t first, last;
    // Whether the pel holding each crossing is set too.
    bool stroke;
  };
  void add(const Edge& e, double top, double bottom);

  std::vector<Edge> edges_;
  // Per row from the first that an edge starts in, the last edge starting
  // there; per edge, the one before it in its row's list.
  std::vector<std::uint32_t> heads_, next_;
  // The edges that meet the rows being filled.
  std::vector<Edge> active_;
  std::vector<double> xs_;
};
