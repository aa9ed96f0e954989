// Where a poly's crossing tests look for pairs that can meet.
//
// Element k of a poly is what vertex k brings to the outline: the rounded
// (trimmed) segment that ends at k, when it exists, and the rounding arc of k,
// when k is rounded. Consecutive elements follow each other along the
// outline, so the index is a binary tree over the chain: a leaf bounds one
// element, a node the run of elements below it, each by a box turned along
// the run (from the middle of its first half to the middle of its second) and
// widened by far more than any tolerance of the intersection tests. Boxes
// that follow the outline stay thin where it runs straight or gently curved,
// so the spikes of a star or the teeth of a comb, which boxes along the axes
// would lump together, come apart after a few levels: a query visits about a
// logarithmic number of nodes, and the meeting pairs of a whole outline cost
// about a constant each. Two boxes meet unless one of their four axes
// separates them.
//
// An element whose pieces cannot even be built (a trimmed segment shrunk to a
// point, a rounding of no sweep) meets everything, so the tests meet the same
// exception the plain all-pairs loop would.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

class kcSMDGDPoly;

class kcSMDGDPolyIndex_ {
 public:
  // A box along the unit axis u (the other axis is u turned left).
  struct Bound {
    double cx = 0, cy = 0;  // centre
    double ux = 1, uy = 0;
    double hu = 0, hv = 0;  // half extents along u and along the other axis
    [[nodiscard]] bool meets(const Bound& o) const noexcept;
  };

  // What an element is: nothing (no pieces), a straight segment alone (its
  // vertex not rounded), anything else, or something that cannot be built.
  enum class Kind : std::uint8_t { none, line, some, always };

  // Below this many vertices the tests visit every element.
  static constexpr int kMinVertices = 32;

  // The elements' order changed: everything is built again on next use.
  void invalidate() noexcept { built_ = false; }
  // Element k may have changed.
  void touch(int k);
  // A vertex was appended at the end: its element and element 0 change.
  void grow();

  // The elements j <= upTo whose bounds meet bound, in increasing order.
  const std::vector<int>& near(const kcSMDGDPoly& poly, const Bound& bound, int upTo);

  // Calls test(j, k) for every pair of elements j < k < limit whose bounds
  // meet, except neighbouring straight segments, which share only their
  // common end; test may lower limit, and pairs from then on stay below it.
  template <class Test>
  void pairs(const kcSMDGDPoly& poly, int& limit, Test&& test) {
    refresh_(poly);
    if (count_ > 1) within_(1, 0, cap_, limit, test);
  }

  // The bound of element k of poly, and what the element is.
  static Kind elementBound(const kcSMDGDPoly& poly, int k, Bound& bound);
  // The bound of the rounded segment k (ofSegment) or of the rounding arc of
  // vertex k; false when that piece cannot be built.
  static bool pieceBound(const kcSMDGDPoly& poly, bool ofSegment, int k, Bound& bound);

 private:
  // A bound's box along the axes, the quick first test.
  struct Box {
    double x0, y0, x1, y1;
    explicit Box(const Bound& b) noexcept;
    Box(const Box& a, const Box& b) noexcept;
    [[nodiscard]] bool meets(const Box& o) const noexcept {
      return x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1;
    }
  };

  void build_(const kcSMDGDPoly& poly);
  void refresh_(const kcSMDGDPoly& poly);
  void setLeaf_(const kcSMDGDPoly& poly, int k);
  void merge_(int node);

  [[nodiscard]] static int depth_(int node) noexcept {
    return std::bit_width(static_cast<unsigned>(node)) - 1;
  }
  [[nodiscard]] bool meet_(int a, int b) const noexcept {
    return kind_[a] == Kind::always || kind_[b] == Kind::always ||
           (boxes_[a].meets(boxes_[b]) && bounds_[a].meets(bounds_[b]));
  }

  // Every meeting pair within node, which holds the size elements from first.
  template <class Test>
  void within_(int node, int first, int size, int& limit, Test& test) {
    if (size == 1 || kind_[node] == Kind::none || first >= limit) return;
    const int half = size / 2;
    within_(2 * node, first, half, limit, test);
    within_(2 * node + 1, first + half, half, limit, test);
    across_(2 * node, first, half, 2 * node + 1, first + half, half, limit, test);
  }

  // Every meeting pair of an element under a and one under b; all of a's
  // elements come before b's.
  template <class Test>
  void across_(int a, int fa, int sa, int b, int fb, int sb, int& limit, Test& test) {
    if (kind_[a] == Kind::none || kind_[b] == Kind::none || fb >= limit) return;
    // Neighbours along the chain share a point: they always meet.
    const bool neighbours = fa + sa == fb;
    if (!neighbours && !meet_(a, b)) return;
    if (sa == 1 && sb == 1) {
      if (!(neighbours && kind_[a] == Kind::line && kind_[b] == Kind::line)) test(fa, fb);
    } else if (sa >= sb) {
      const int half = sa / 2;
      across_(2 * a, fa, half, b, fb, sb, limit, test);
      across_(2 * a + 1, fa + half, half, b, fb, sb, limit, test);
    } else {
      const int half = sb / 2;
      across_(a, fa, sa, 2 * b, fb, half, limit, test);
      across_(a, fa, sa, 2 * b + 1, fb + half, half, limit, test);
    }
  }

  bool built_ = false;
  int count_ = 0;  // elements
  int cap_ = 1;    // leaves: the smallest power of two holding them
  // Node 1 is the root, node i has children 2i and 2i + 1, leaf k is node cap_ + k.
  std::vector<Bound> bounds_;
  std::vector<Box> boxes_;
  std::vector<Kind> kind_;
  std::vector<int> dirty_;
  std::vector<int> found_;
};
