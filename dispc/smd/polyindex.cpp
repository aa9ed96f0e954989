#include <algorithm>
#include <cmath>

#include "dispc/smd/poly.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyindex_p.h"
#include "dispc/smd/polyprivate.h"

namespace {
using P = kcSMDGDPolyPrivate;
// Boxes are widened by this fraction of their coordinates' size: far more
// than the tolerances by which the intersection tests let pieces meet.
constexpr double kMargin = 1e-9;
// An element covering more cells than this goes to the big list.
constexpr std::int64_t kMaxCells = 64;
// A query covering more cells than this scans the elements instead.
constexpr std::int64_t kMaxQueryCells = 4096;

void enclose(kcSMDGDPolyIndex_::Box& box, const kcRect& r) {
  if (r.isEmpty()) return;
  const double x1 = r.origin().x() + r.size().x(), y1 = r.origin().y() + r.size().y();
  if (box.x0 > box.x1) {
    box = {r.origin().x(), r.origin().y(), x1, y1};
    return;
  }
  box = {std::min(box.x0, r.origin().x()), std::min(box.y0, r.origin().y()), std::max(box.x1, x1),
         std::max(box.y1, y1)};
}

void widen(kcSMDGDPolyIndex_::Box& box) {
  if (box.x0 > box.x1) return;
  const double m =
      kMargin * (std::max({std::fabs(box.x0), std::fabs(box.y0), std::fabs(box.x1), std::fabs(box.y1)}) +
                 std::max(box.x1 - box.x0, box.y1 - box.y0));
  box = {box.x0 - m, box.y0 - m, box.x1 + m, box.y1 + m};
}
}  // namespace

// --- boxes ---

bool kcSMDGDPolyIndex_::elementBox(const kcSMDGDPoly& poly, int k, Box& box) {
  box = {1, 1, 0, 0};
  try {
    if (P::segmentExists_(poly, k)) enclose(box, kfPieceBox_(kfRoundedPiece_(poly, k), kcXform<2>()));
    if (P::vertexIsRounded_(poly, k)) enclose(box, P::roundingArc_(poly, k).boundingBox_());
  } catch (const kcException&) {
    return false;
  }
  widen(box);
  return true;
}

bool kcSMDGDPolyIndex_::pieceBox(const kcSMDGDPoly& poly, bool ofSegment, int k, Box& box) {
  box = {1, 1, 0, 0};
  try {
    if (ofSegment)
      enclose(box, kfPieceBox_(kfRoundedPiece_(poly, k), kcXform<2>()));
    else
      enclose(box, P::roundingArc_(poly, k).boundingBox_());
  } catch (const kcException&) {
    return false;
  }
  widen(box);
  return box.x0 <= box.x1;
}

// --- upkeep ---

void kcSMDGDPolyIndex_::touch(int k) {
  if (!built_ || k < 0 || k >= static_cast<int>(elements_.size())) return;
  if (!isDirty_[k]) {
    isDirty_[k] = 1;
    dirty_.push_back(k);
  }
}

void kcSMDGDPolyIndex_::grow() {
  if (!built_) return;
  // Rebuilding whenever the count doubles keeps the cell size fitting and
  // the total cost of growing linear.
  if (elements_.size() + 1 > 2 * builtCount_) {
    built_ = false;
    return;
  }
  elements_.emplace_back();
  isDirty_.push_back(0);
  touch(static_cast<int>(elements_.size()) - 1);
}

std::int32_t kcSMDGDPolyIndex_::cell_(double v) const noexcept {
  const double c = std::floor(v / cellSize_);
  return static_cast<std::int32_t>(std::clamp(c, -1e9, 1e9));
}

std::uint64_t kcSMDGDPolyIndex_::key_(std::int32_t x, std::int32_t y) noexcept {
  return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32) | static_cast<std::uint32_t>(y);
}

void kcSMDGDPolyIndex_::unplace_(int k) {
  Element& e = elements_[k];
  if (e.always) std::erase(always_, k);
  if (e.big) std::erase(big_, k);
  for (std::int32_t x = e.cx0; x <= e.cx1; ++x)
    for (std::int32_t y = e.cy0; y <= e.cy1; ++y) {
      auto it = cells_.find(key_(x, y));
      if (it != cells_.end()) std::erase(it->second, k);
    }
  e = Element{};
}

void kcSMDGDPolyIndex_::place_(const kcSMDGDPoly& poly, int k) {
  Element& e = elements_[k];
  if (!elementBox(poly, k, e.box)) {
    e.always = true;
    always_.push_back(k);
    return;
  }
  if (e.box.x0 > e.box.x1) return;
  const std::int32_t x0 = cell_(e.box.x0), y0 = cell_(e.box.y0), x1 = cell_(e.box.x1), y1 = cell_(e.box.y1);
  if (std::int64_t{x1 - x0 + 1} * (y1 - y0 + 1) > kMaxCells) {
    e.big = true;
    big_.push_back(k);
    return;
  }
  e.cx0 = x0, e.cy0 = y0, e.cx1 = x1, e.cy1 = y1;
  for (std::int32_t x = x0; x <= x1; ++x)
    for (std::int32_t y = y0; y <= y1; ++y) cells_[key_(x, y)].push_back(k);
}

// The cell size is the median element extent, so a typical element covers a
// few cells whatever the outline's scale.
void kcSMDGDPolyIndex_::build_(const kcSMDGDPoly& poly) {
  const int n = static_cast<int>(poly.numVertices());
  elements_.assign(n, Element{});
  isDirty_.assign(n, 0);
  dirty_.clear();
  cells_.clear();
  big_.clear();
  always_.clear();
  std::vector<double> extents;
  extents.reserve(n);
  for (int k = 0; k < n; ++k) {
    Box b{};
    if (elementBox(poly, k, b) && b.x0 <= b.x1) extents.push_back(std::max(b.x1 - b.x0, b.y1 - b.y0));
  }
  cellSize_ = 1.0;
  if (!extents.empty()) {
    auto mid = extents.begin() + static_cast<std::ptrdiff_t>(extents.size() / 2);
    std::nth_element(extents.begin(), mid, extents.end());
    if (*mid > 0.0 && std::isfinite(*mid)) cellSize_ = *mid;
  }
  for (int k = 0; k < n; ++k) place_(poly, k);
  builtCount_ = static_cast<std::size_t>(n);
  built_ = true;
}

void kcSMDGDPolyIndex_::refresh_(const kcSMDGDPoly& poly) {
  if (!built_ || elements_.size() != static_cast<std::size_t>(poly.numVertices())) {
    build_(poly);
    return;
  }
  for (int k : dirty_) {
    unplace_(k);
    place_(poly, k);
    isDirty_[k] = 0;
  }
  dirty_.clear();
}

// --- queries ---

const std::vector<int>& kcSMDGDPolyIndex_::near(const kcSMDGDPoly& poly, const Box& box, int upTo) {
  refresh_(poly);
  found_.clear();
  auto consider = [&](int j) {
    if (j <= upTo && (elements_[j].always || elements_[j].box.meets(box))) found_.push_back(j);
  };
  const std::int32_t x0 = cell_(box.x0), y0 = cell_(box.y0), x1 = cell_(box.x1), y1 = cell_(box.y1);
  if (std::int64_t{x1 - x0 + 1} * (y1 - y0 + 1) > kMaxQueryCells) {
    for (int j = 0; j < static_cast<int>(elements_.size()); ++j) consider(j);
    return found_;
  }
  for (std::int32_t x = x0; x <= x1; ++x)
    for (std::int32_t y = y0; y <= y1; ++y) {
      auto it = cells_.find(key_(x, y));
      if (it == cells_.end()) continue;
      for (int j : it->second) consider(j);
    }
  for (int j : big_) consider(j);
  for (int j : always_) consider(j);
  std::sort(found_.begin(), found_.end());
  found_.erase(std::unique(found_.begin(), found_.end()), found_.end());
  return found_;
}
