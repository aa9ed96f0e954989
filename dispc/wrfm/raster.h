// Rasterisers: wireframe segments written into 8-bit pel buffers.
//
// Every function takes the buffer by value (a kcPelBuffer is a handle: the
// writes land in the caller's pels), a segment in client coordinates and a
// transform from client coordinates to the buffer's pel coordinates (the
// window coordinates kcPelBuffer::put takes). Pels outside the window are
// not written; nothing is clipped beforehand.
//
// Pel (x, y) covers [x, x + 1) x [y, y + 1); its centre is (x + 0.5, y + 0.5).
// Rounding goes through floorTol and ceilTol, so that a coordinate a hair
// off a whole number counts as that number.
//
// Horizontal extents mark, per pel row, where an edge crosses the row's
// centre: the marks of a closed outline come in pairs along each row, and a
// fill sets the pels between them. A line marks one pel in every row whose
// centre lies within its vertical extent (two pels, its ends, when that is
// one row); an arc is cut into chords of at most 5 degrees, each marked like
// a line.
//
// Outlines (drawLinePelBuf, drawArcPelBuf) are thin 8-connected pel lines:
// along the line's major axis (x unless |dy| > |dx|) every pel column (or
// row) whose centre lies within the line's extent gets the pel holding the
// line's point at that centre, measured from the line's end with the
// smaller major coordinate (so a line draws the same pels whichever way it
// runs), and the two pels holding the end points are set as well, so a
// line shorter than a pel still shows. An arc's chords are drawn one after
// another by the same rule, except that a chord which starts and ends in
// one pel adds nothing (its pel is set already). The second 8-bit argument
// is the pen width in pels: each pel of a line or chord is widened across
// its major axis to that many pels (the extra pel of an even width on the
// side of larger coordinates); 1 and anything below draw the thin line.
//
// Arcs are cut into n = trunc(|span| / 5 degrees) + 1 equal chords of the
// mapped arc, measured in client space: the radius vector is turned by
// span / n at each step (its sine and cosine from their Taylor series, the
// same on every machine), and the last chord ends on the arc's end point;
// an arc with a transform of its own takes its points at equal steps of the
// mapped angle.
// The bounds (each may be null) are widened by the chord end points only,
// not by the arc's start point; the chords may miss the arc by the sagitta
// of a 5-degree chord.
//
// Coincident end points of a line, or of a chord, are
// kcShapesError::DegenerateShape.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/lineseg.h"
#include "foundation/angle.h"
#include "foundation/pelbuffer.h"
#include "foundation/xform.h"

namespace kcRaster_ {
inline constexpr double kRoundTol = 1e-11;
// 1 + tol and 1 - tol: a select of one of them is copysign's multiplier.
inline constexpr double kGrow = 1.0 + kRoundTol;
inline constexpr double kShrink = 1.0 - kRoundTol;
// Coordinates below this magnitude round without saturating.
inline constexpr double kInRange = 1073741824.0;  // 2^30

// floor (up false) or ceil (up true) of v as a 32-bit number, saturated (NaN
// gives the lowest). Truncation and one compare instead of a call to
// floor(), which the base instruction set does not have.
[[nodiscard]] inline std::int32_t rounded(double v, bool up) noexcept {
  constexpr double lo = std::numeric_limits<std::int32_t>::min();
  constexpr double hi = std::numeric_limits<std::int32_t>::max();
  if (!(v > lo)) return std::numeric_limits<std::int32_t>::min();
  if (!(v < hi)) return std::numeric_limits<std::int32_t>::max();
  const auto i = static_cast<std::int32_t>(v);
  const double back = static_cast<double>(i);
  if (up) return i + (back < v);
  return i - (back > v);
}

// ceilTol for |v| < 2 kInRange, where nothing can saturate:
// the rasterisers' inner loops, once their ends are known to be in range.
[[nodiscard]] inline std::int32_t ceilIn(double v) noexcept {
  v *= v >= 0.0 ? kShrink : kGrow;
  const auto i = static_cast<std::int32_t>(v);
  return i + (static_cast<double>(i) < v);
}
}  // namespace kcRaster_

// floor((1 + copysign(1e-11, v)) v) and ceil((1 - copysign(1e-11, v)) v),
// saturated to the 32-bit range (NaN gives the lowest value). Inline: the
// fill calls them for every edge in every row.
[[nodiscard]] inline std::int32_t floorTol(double v) noexcept {
  return kcRaster_::rounded((v >= 0.0 ? kcRaster_::kGrow : kcRaster_::kShrink) * v, false);
}
[[nodiscard]] inline std::int32_t ceilTol(double v) noexcept {
  return kcRaster_::rounded((v >= 0.0 ? kcRaster_::kShrink : kcRaster_::kGrow) * v, true);
}

// How many chords the rasterisers cut an arc of the given sweep into.
[[nodiscard]] int kfArcChords(const kcDegree& span) noexcept;

void drawHorizontalExtentsPelBuf(kcPelBuffer<unsigned char> buffer, const kc2SegmentLine& line,
                                 const kcXform<2>& xform, signed char grey);
void drawHorizontalExtentsPelBuf(kcPelBuffer<unsigned char> buffer, const kc2SegmentArc& arc,
                                 const kcXform<2>& xform, signed char grey, double* minX, double* maxX,
                                 double* minY, double* maxY);
void drawLinePelBuf(kcPelBuffer<unsigned char> buffer, const kc2SegmentLine& line, const kcXform<2>& xform,
                    signed char grey, signed char width);
void drawArcPelBuf(kcPelBuffer<unsigned char> buffer, const kc2SegmentArc& arc, const kcXform<2>& xform,
                   signed char grey, signed char width, double* minX, double* maxX, double* minY,
                   double* maxY);

// Fills closed outlines made of the lines and arcs (in client space, in any
// order, several outlines at once): every pel whose centre lies inside by
// the even-odd rule gets grey. Rows are sampled at their centres; a pel
// whose centre lies on the outline is inside on the outline's left or upper
// side and outside on its right or lower side (centres within 1e-11 of a
// whole number's scale of a crossing count as on it), so outlines that share
// an edge set every pel along it exactly once. Arcs fill as arcs, not as
// chords. One edge table is built; nothing is allocated per row.
void kfFillPelBuf(kcPelBuffer<unsigned char> buffer, std::span<const kc2SegmentLine> lines,
                  std::span<const kc2SegmentArc> arcs, const kcXform<2>& xform, unsigned char grey);
