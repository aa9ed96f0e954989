// Where a poly's crossing tests look for pairs that can meet.
//
// Element k of a poly is what vertex k brings to the outline: the rounded
// (trimmed) segment that ends at k, when it exists, and the rounding arc of k,
// when k is rounded. The index keeps each element's box, widened by far more
// than any tolerance of the intersection tests, in a hash grid; a test asks
// for the elements whose boxes meet the box of the piece it tests, and skips
// the rest, which cannot meet it. An element whose pieces cannot even be built
// (a trimmed segment shrunk to a point, a rounding of no sweep) is handed to
// every test, which meets the same exception the plain all-pairs loop would.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "foundation/vector.h"

class kcSMDGDPoly;

class kcSMDGDPolyIndex_ {
 public:
  struct Box {
    double x0, y0, x1, y1;
    [[nodiscard]] bool meets(const Box& o) const noexcept {
      return x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1;
    }
  };

  // Below this many vertices the tests visit every element.
  static constexpr int kMinVertices = 32;

  // The elements' order changed: everything is built again on next use.
  void invalidate() noexcept { built_ = false; }
  // Element k may have changed.
  void touch(int k);
  // An element was appended at the end.
  void grow();

  // The elements j <= upTo whose boxes meet box, in increasing order.
  const std::vector<int>& near(const kcSMDGDPoly& poly, const Box& box, int upTo);

  // The box of element k of poly; false when a piece of it cannot be built.
  // An element without pieces has an empty box (x0 > x1).
  static bool elementBox(const kcSMDGDPoly& poly, int k, Box& box);
  // The box of the rounded segment k (ofSegment) or of the rounding arc of
  // vertex k; false when that piece cannot be built.
  static bool pieceBox(const kcSMDGDPoly& poly, bool ofSegment, int k, Box& box);

 private:
  struct Element {
    Box box{1, 1, 0, 0};
    bool always = false;  // a piece cannot be built
    bool big = false;     // kept in the big list rather than in cells
    std::int32_t cx0 = 0, cy0 = 0, cx1 = -1, cy1 = -1;
  };

  void build_(const kcSMDGDPoly& poly);
  void refresh_(const kcSMDGDPoly& poly);
  void place_(const kcSMDGDPoly& poly, int k);
  void unplace_(int k);
  [[nodiscard]] std::int32_t cell_(double v) const noexcept;
  [[nodiscard]] static std::uint64_t key_(std::int32_t x, std::int32_t y) noexcept;

  bool built_ = false;
  double cellSize_ = 1.0;
  std::size_t builtCount_ = 0;
  std::vector<Element> elements_;
  std::vector<int> dirty_;
  std::vector<char> isDirty_;
  std::unordered_map<std::uint64_t, std::vector<int>> cells_;
  std::vector<int> big_;
  std::vector<int> always_;
  std::vector<int> found_;
};
