// Bytes read as a run of edits on a poly, each checked as it is made: an
// edit that throws leaves the poly as it was in every stored field (a refused
// open() leaves it open, as documented), and after an edit that succeeds the
// poly validates whole, its roundings are what a whole validation computes,
// and its synthetic image can be drawn. Shared by poly_edit_fuzz,
// raster_fuzz and the property test in tests/.
//
// Coordinates are multiples of 0.5 in [-64, 63.5], radii multiples of 0.5
// below 4 (negative: uncertain), sweeps 0 or multiples of 6 degrees in
// [-384, 378]: small grids, so that valid outlines, touching pieces and
// exact ties all come up often, and invalid values (sweeps past a turn,
// indices past either end) as well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "dispc/smd/poly.h"
#include "dispc/smd/polyprivate.h"
#include "foundation/archive.h"
#include "foundation/rigid.h"

namespace polyedits {

// The bytes still to read; zeros past the end.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}
  [[nodiscard]] bool done() const noexcept { return at_ >= bytes_.size(); }
  std::uint8_t byte() noexcept { return at_ < bytes_.size() ? bytes_[at_++] : 0; }
  // The next byte, left to read.
  [[nodiscard]] std::uint8_t peek() const noexcept { return at_ < bytes_.size() ? bytes_[at_] : 0; }
  double coordinate() noexcept { return static_cast<std::int8_t>(byte()) * 0.5; }
  double radius() noexcept {
    const std::uint8_t b = byte();
    return (b & 7) * 0.5 * ((b & 0x80) ? -1.0 : 1.0);
  }
  kcDegree span() noexcept {
    const std::uint8_t b = byte();
    return kcDegree((b & 1) ? 0.0 : static_cast<std::int8_t>(b) * 3.0);
  }
  // Each read in its own statement: the order in which a call's arguments
  // are worked out is not fixed, and the bytes must mean the same to every
  // compiler.
  kcSMDGDPolyVertex vertex() {
    const double x = coordinate();
    const double y = coordinate();
    const kcVector<2> point(x, y);
    const double r = radius();
    const kcDegree s = span();
    const long label = byte() % 3;
    return kcSMDGDPolyVertex(point, r, s, 0.5, 0.5, label, kcDimTol());
  }
  // An index from -1 to n, so that both ends are overstepped now and then.
  int index(int n) noexcept { return indexOf(byte(), n); }
  [[nodiscard]] static int indexOf(std::uint8_t b, int n) noexcept {
    return static_cast<int>(b % static_cast<unsigned>(n + 2)) - 1;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
};

// What a check found wrong; the caller aborts (fuzzing) or fails (tests).
using Failure = std::function<void(const std::string&)>;

// Every field the poly stores.
inline std::vector<std::uint8_t> stored(kcSMDGDPoly& p) {
  kcMemArchive ar;
  ar || p;
  return ar.bytes();
}

// The checks after an edit that succeeded: false for a poly that a whole
// validation refuses, or (known: for an edit of the kinds run() names)
// whose roundings it computes otherwise; true when every check passes.
inline bool checkValid(const kcSMDGDPoly& p, bool known, const Failure& fail) {
  using P = kcSMDGDPolyPrivate;
  kcSMDGDPoly whole;
  try {
    whole = P::validated(p);
  } catch (const kcException&) {
    // Allowed: the edit's own checks reach only the pieces next to it (see
    // run()). The poly must still draw, or fail only as the library says.
    kcPelBuffer<unsigned char> image(24, 24);
    try {
      p.drawSynthetic(kcXform<2>(kcMatrix<2>::scale(0.2, 0.2), kcVector<2>(12, 12)), image);
    } catch (const kcException&) {
    }
    return false;
  }
  const int n = static_cast<int>(p.vertices().size());
  for (int v = 0; v < n; ++v) {
    if (!P::vertexIsRounded_(p, v)) continue;
    if (P::roundStart_(p, v) != P::roundStart_(whole, v) || P::roundEnd_(p, v) != P::roundEnd_(whole, v) ||
        P::roundSpan_(p, v) != P::roundSpan_(whole, v)) {
      if (!known)
        fail("an edit left a rounding other than the one a whole validation computes, at vertex " +
             std::to_string(v));
      return false;
    }
  }
  kcPelBuffer<unsigned char> image(24, 24);
  try {
    p.drawSynthetic(kcXform<2>(kcMatrix<2>::scale(0.2, 0.2), kcVector<2>(12, 12)), image);
  } catch (const kcException& e) {
    fail(std::string("a valid poly cannot be drawn: ") + e.what());
  }
  return true;
}

// Applies edit op to p. Throws what the poly throws.
inline void apply(int op, Reader& in, kcSMDGDPoly& p) {
  const int n = static_cast<int>(p.vertices().size());
  switch (op) {
    case 0: {
      const int i = in.index(n);
      p.insertVertex(i, in.vertex());
      break;
    }
    case 1:
      p.deleteVertex(in.index(n));
      break;
    case 2: {
      const int i = in.index(n);
      p.replaceVertex(i, in.vertex());
      break;
    }
    case 3: {
      std::vector<kcSMDGDPolyVertex> list(in.byte() % 9);
      for (kcSMDGDPolyVertex& v : list) v = in.vertex();
      p.vertices(list);
      break;
    }
    case 4:
      p.close();
      break;
    case 5:
      p.open();
      break;
    case 6:
      p.toggleDirection();
      break;
    case 7:
      p = (static_cast<int>(in.byte()) - 64) / 32.0 * p;
      break;
    case 8: {
      const double turn = in.byte() * 0.05;
      const double x = in.coordinate();
      const double y = in.coordinate();
      p = kc2Rigid(kcRadian(turn), kcVector<2>(x, y)) * p;
      break;
    }
    case 9:
    case 10: {
      // The radius (9) or the sweep (10) of a vertex changed alone.
      const int i = in.index(n);
      kcSMDGDPolyVertex v = i >= 0 && i < n ? p.vertices()[i] : kcSMDGDPolyVertex();
      if (op == 9)
        v.vertexRadius(in.radius());
      else
        v.segmentAngleSpan(in.span());
      p.replaceVertex(i, v);
      break;
    }
    default:
      p << in.vertex();
      break;
  }
}

inline constexpr int kEdits = 12;

// What a run did.
struct Counts {
  long accepted = 0;   // edits that succeeded and passed the checks
  long refused = 0;    // edits that threw and changed nothing
  long unchecked = 0;  // accepted edits that left what a whole validation would not
};

// Reads and makes up to maxEdits edits on p, checking each.
//
// An edit computes again and checks only what lies next to it, a set the
// poly's rules fix: the roundings of the vertex and its two neighbours,
// and the pieces that meet at them. So an accepted edit may leave a poly
// that a whole validation refuses: a segment beyond a neighbour, trimmed
// anew by the neighbour's new rounding, is not checked again; close() of a
// one-vertex chain is accepted (documented). And a rounding may use all of
// an end segment of an open chain but only half of an interior one, so an
// edit that turns an end segment into an interior one or back (an
// insertion at either end of an open chain, open() of a closed poly)
// reaches a rounding outside the set, which keeps what it was computed
// with. Such edits are counted, and the run goes on from the poly before
// them. Every other accepted edit must leave a poly that validates whole,
// with the roundings a whole validation computes, and that draws.
inline Counts run(Reader& in, kcSMDGDPoly& p, int maxEdits, const Failure& fail) {
  Counts counts;
  for (int k = 0; k < maxEdits && !in.done(); ++k) {
    const int op = in.byte() % kEdits;
    kcSMDGDPoly copy(p);
    const int n = static_cast<int>(p.vertices().size());
    // An insertion at either end of an open chain: after the last vertex
    // (index n - 1, or an append) or before the first (index -1).
    const int insertAt = op == 0 ? Reader::indexOf(in.peek(), n) : n - 1;
    const bool atEnd =
        (op == 0 || op == kEdits - 1) && copy.isOpen() && n >= 2 && (insertAt == -1 || insertAt == n - 1);
    try {
      apply(op, in, p);
    } catch (const kcException&) {
      // Refused: nothing changed. open() is the documented exception: it
      // takes no copy, so the poly stays open, with the roundings its
      // checks computed before they threw; all else is as it was. The run
      // goes on from the poly as it was, a valid one.
      if (op == 5) {
        kcSMDGDPoly expected(copy);
        kcSMDGDPolyPrivate::markOpen_(expected);
        if (!(p == expected) || p.name() != copy.name())
          fail("a refused open() changed more than the open flag and the roundings");
      } else if (stored(p) != stored(copy)) {
        fail("a refused edit (" + std::to_string(op) + ") changed the poly");
      }
      p = copy;
      ++counts.refused;
      continue;
    }
    const bool known = atEnd || (op == 5 && copy.isClosed());
    if (checkValid(p, known, fail)) {
      ++counts.accepted;
    } else {
      ++counts.unchecked;
      p = copy;
    }
  }
  return counts;
}

}  // namespace polyedits
