// Where a poly's crossing tests look for pairs that can meet.
//
// Element k of a poly is what vertex k brings to the outline: the rounded
// (trimmed) segment that ends at k, when it exists, and the rounding arc of k,
// when k is rounded. Consecutive elements follow each other along the
// outline, so the index is a binary tree over the chain: a leaf holds a run of
// kRun elements, a node the runs below it, each bounded by a box turned along
// the outline (for a leaf, from the run's first point to its last; for a
// node, from the middle of its first child to the middle of its second).
// Boxes that follow the outline stay thin where it runs straight or gently
// curved, so the spikes of a star or the teeth of a comb, which boxes along
// the axes would lump together, come apart after a few levels: a query visits
// about a logarithmic number of nodes, and the meeting pairs of a whole
// outline cost about a constant each. Two turned boxes meet unless one of
// their four axes separates them. Within a run each element has its box along
// the axes. Every box is widened by far more than any tolerance of the
// intersection tests.
//
// An element whose pieces cannot even be built (a trimmed segment shrunk to a
// point, a rounding of no sweep) meets everything, so the tests meet the same
// exception the plain all-pairs loop would.
#pragma once

#include <algorithm>
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

  // A box along the axes.
  struct Box {
    double x0 = 1, y0 = 1, x1 = 0, y1 = 0;
    Box() = default;
    explicit Box(const Bound& b) noexcept;
    [[nodiscard]] Bound bound() const noexcept {
      return {(x0 + x1) / 2, (y0 + y1) / 2, 1, 0, (x1 - x0) / 2, (y1 - y0) / 2};
    }
    [[nodiscard]] bool meets(const Box& o) const noexcept {
      return x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1;
    }
  };

  // What an element or a node holds: nothing (no pieces), a straight segment
  // alone (its vertex not rounded), anything else, or something that cannot
  // be built.
  enum class Kind : std::uint8_t { none, line, some, always };

  // Elements in a leaf.
  static constexpr int kRun = 8;
  // Below this many vertices the tests visit every element.
  static constexpr int kMinVertices = 32;

  // The elements' order changed: everything is built again on next use.
  void invalidate() noexcept { built_ = false; }
  // Element k may have changed.
  void touch(int k);
  // A vertex was appended at the end: its element and element 0 change.
  void grow();

  // The elements j <= upTo whose boxes meet bound, in increasing order.
  const std::vector<int>& near(const kcSMDGDPoly& poly, const Bound& bound, int upTo);

  // Calls test(j, k) for every pair of elements j < k < limit whose boxes
  // meet, except neighbouring straight segments, which share only their
  // common end; test may lower limit, and pairs from then on stay below it.
  template <class Test>
  void pairs(const kcSMDGDPoly& poly, int& limit, Test&& test) {
    refresh_(poly);
    within_(1, 0, cap_, limit, test);
  }

  // The bound of the rounded segment k (ofSegment) or of the rounding arc of
  // vertex k; false when that piece cannot be built.
  static bool pieceBound(const kcSMDGDPoly& poly, bool ofSegment, int k, Bound& bound);

 private:
  struct Element {
    Box box;
    double ax = 0, ay = 0, bx = 0, by = 0;  // a straight segment's ends
    Kind kind = Kind::none;
  };

  void build_(const kcSMDGDPoly& poly);
  void refresh_(const kcSMDGDPoly& poly);
  void setElement_(const kcSMDGDPoly& poly, int k);
  void setLeaf_(const kcSMDGDPoly& poly, int run);
  void merge_(int node);

  [[nodiscard]] bool meet_(int a, int b) const noexcept {
    return kind_[a] == Kind::always || kind_[b] == Kind::always ||
           (boxes_[a].meets(boxes_[b]) && bounds_[a].meets(bounds_[b]));
  }
  [[nodiscard]] bool meet_(const Element& a, const Element& b) const noexcept {
    return a.kind == Kind::always || b.kind == Kind::always || a.box.meets(b.box);
  }
  [[nodiscard]] bool meetNode_(const Element& e, int node) const noexcept {
    return e.kind == Kind::always || kind_[node] == Kind::always || e.box.meets(boxes_[node]);
  }
  [[nodiscard]] bool neighbourLines_(int j, int k) const noexcept {
    return k == j + 1 && elements_[j].kind == Kind::line && elements_[k].kind == Kind::line;
  }

  // Every meeting pair under node, which holds size runs from run first.
  template <class Test>
  void within_(int node, int first, int size, int& limit, Test& test) {
    if (kind_[node] == Kind::none || first * kRun >= limit) return;
    if (size == 1) {
      const int end = std::min((first + 1) * kRun, count_);
      for (int k = first * kRun + 1; k < end && k < limit; ++k)
        for (int j = first * kRun; j < k; ++j)
          if (elements_[j].kind != Kind::none && elements_[k].kind != Kind::none && !neighbourLines_(j, k) &&
              meet_(elements_[j], elements_[k]))
            test(j, k);
      return;
    }
    const int half = size / 2;
    within_(2 * node, first, half, limit, test);
    within_(2 * node + 1, first + half, half, limit, test);
    across_(2 * node, first, half, 2 * node + 1, first + half, half, limit, test);
  }

  // Every meeting pair of an element under a and one under b; all of a's
  // runs come before b's.
  template <class Test>
  void across_(int a, int fa, int sa, int b, int fb, int sb, int& limit, Test& test) {
    if (kind_[a] == Kind::none || kind_[b] == Kind::none || fb * kRun >= limit) return;
    // Neighbours along the chain share a point: they always meet.
    if (fa + sa != fb && !meet_(a, b)) return;
    if (sa == 1 && sb == 1) {
      // Only the elements that reach the other run's box can meet it.
      int near[kRun];
      int nearCount = 0;
      for (int j = fa * kRun; j < (fa + 1) * kRun; ++j)
        if (elements_[j].kind != Kind::none && meetNode_(elements_[j], b)) near[nearCount++] = j;
      if (nearCount == 0) return;
      const int end = std::min((fb + 1) * kRun, count_);
      for (int k = fb * kRun; k < end && k < limit; ++k) {
        if (elements_[k].kind == Kind::none || !meetNode_(elements_[k], a)) continue;
        for (int i = 0; i < nearCount; ++i)
          if (!neighbourLines_(near[i], k) && meet_(elements_[near[i]], elements_[k])) test(near[i], k);
      }
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
  int count_ = 0;                  // elements
  int cap_ = 1;                    // leaves: the smallest power of two holding the runs
  std::vector<Element> elements_;  // count_ rounded up to whole runs
  // Node 1 is the root, node i has children 2i and 2i + 1, leaf r is node cap_ + r.
  std::vector<Bound> bounds_;
  std::vector<Box> boxes_;
  std::vector<Kind> kind_;
  std::vector<int> dirty_;  // elements
  std::vector<int> found_;
};
