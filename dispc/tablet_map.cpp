// The tablet's maps and coordinates, its place among parent and kids, and the
// point icon. The client transform is rebuilt whenever the base map, the
// factors or the mode change; kids hear of it before the tablet redraws, so
// a component that derives its own map from its parent's is current by then.
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

#include "dispc/tablet.h"
#include "dispc/uierror.h"

namespace {

// A factor this close to one is no scale at all.
constexpr double kUnitScaleTol = 1e-6;
// Coordinates are raised by this fraction of their size before the floor, so
// a value a rounding error below a whole number lands on that number.
constexpr double kPelRaise = 1e-11;

constexpr wchar_t kPattern[] =
    L"/.....+0+...../.....+0+...../.....+0+...../...+00000+.../...0++0++0.../+++0++0++0+++/0000000000000/"
    L"+++0++0++0+++/...0++0++0.../...+00000+.../.....+0+...../.....+0+...../.....+0+...../";
constexpr long kPatternLength = static_cast<long>(sizeof(kPattern) / sizeof(kPattern[0])) - 1;
// The icon is 13 pels square; a row of the pattern is those and a separator.
constexpr long kIconSide = 13;
constexpr long kIconCentre = kIconSide / 2;
constexpr long kPatternRowStride = kIconSide + 1;
static_assert(kPatternLength == 1 + kIconSide * kPatternRowStride);

// Converting a double outside the range of long is undefined; the coordinate
// queries never fail, so far values saturate and NaN reads as 0.
long toLongSaturated(double v) noexcept {
  constexpr double kLimit = -static_cast<double>(std::numeric_limits<long>::min());
  if (std::isnan(v)) return 0;
  if (v >= kLimit) return std::numeric_limits<long>::max();
  if (v < -kLimit) return std::numeric_limits<long>::min();
  return static_cast<long>(v);
}

// The whole part of a factor as scale() reports it.
long wholeFactor(double s) noexcept { return toLongSaturated(std::trunc(s >= 1.0 ? s : 1.0 / s)); }

double raisedFloor(double c) noexcept {
  const double sign = c > 0.0 ? 1.0 : c < 0.0 ? -1.0 : 0.0;
  return std::floor(c * (1.0 + kPelRaise * sign));
}

// The walks below call hooks, and hooks (or re-parenting itself) may change
// the list being walked; a copy keeps the walk well defined.
std::vector<kcUITablet*> snapshot(const std::list<kcUITablet*>& kids) { return {kids.begin(), kids.end()}; }

bool isTransparentPel(wchar_t c) noexcept { return c == L' ' || c == L'.' || c == L'+'; }
bool isDigitPel(wchar_t c) noexcept { return c >= L'0' && c <= L'9'; }

}  // namespace

// --- maps and coordinates ---

kcUITablet& kcUITablet::baseMap(const kcXform<2>& map) {
  baseMap_ = map;
  newMap_();
  return *this;
}

kcUITablet& kcUITablet::scale(const kcPair<long>& factors) {
  factors_ = kcPair<double>(static_cast<double>(factors.x()), static_cast<double>(factors.y()));
  newMap_();
  return *this;
}

kcPair<long> kcUITablet::scale() const { return {wholeFactor(factors_.x()), wholeFactor(factors_.y())}; }

kcUITablet& kcUITablet::scaleExact(const kcPair<double>& factors) {
  factors_ = factors;
  // Only x chooses the mode: a tablet scaled (1, 3) stays unscaled on purpose.
  const double x = factors.x();
  if (std::abs(1.0 - x) <= kUnitScaleTol)
    mode_ = scaleNone;
  else
    mode_ = x > 1.0 ? scaleMagnify : scaleReduce;
  newMap_();
  return *this;
}

kcUITablet& kcUITablet::scaleMode(ScaleModes mode) {
  mode_ = mode;
  newMap_();
  return *this;
}

kcPair<long> kcUITablet::scopeCoords(const kcPoint& p) const {
  const kcVector<2> v = scaledMap_.mapPoint(p.point());
  return {toLongSaturated(raisedFloor(v.x())), toLongSaturated(raisedFloor(v.y()))};
}

kcPair<long> kcUITablet::screenCoords(const kcPoint& p) const { return scopeCoords(p) + scopeOrg(); }

kcPoint kcUITablet::tabletCoords(const kcPair<long>& p) const {
  return kcPoint(scaledMap_.invMapPoint(kcVector<2>(static_cast<double>(p.x()), static_cast<double>(p.y()))));
}

void kcUITablet::scopeRect(const kcUIRect& r) {
  const bool moved = r.ul() != scopeRect_.ul();
  const bool resized = r.sz() != scopeRect_.sz();
  scopeRect_ = r;
  // The hooks run after the store, so a component reads the new area.
  if (resized) resize_();
  if (moved) move_();
}

kcUIRect kcUITablet::absRect() const { return kcUIRect(scopeOrg(), scopeRect_.sz()); }

kcUITablet& kcUITablet::moveAbs(const kcPair<long>& p) {
  scopeRect(kcUIRect(p, scopeRect_.sz()));
  return *this;
}

kcUITablet& kcUITablet::moveRel(const kcPair<long>& d) {
  scopeRect(scopeRect_ + d);
  return *this;
}

// --- parent and kids ---

kcUITablet* kcUITablet::firstKid() const noexcept { return kids_.empty() ? nullptr : kids_.front(); }

kcUITablet* kcUITablet::lastKid() const noexcept { return kids_.empty() ? nullptr : kids_.back(); }

kcUITablet* kcUITablet::nextSib() const noexcept {
  if (!parent_) return nullptr;
  const auto& sibs = parent_->kids_;
  for (auto it = sibs.begin(); it != sibs.end(); ++it)
    if (*it == this) return ++it == sibs.end() ? nullptr : *it;
  return nullptr;
}

kcUITablet* kcUITablet::prevSib() const noexcept {
  if (!parent_) return nullptr;
  const auto& sibs = parent_->kids_;
  for (auto it = sibs.begin(); it != sibs.end(); ++it)
    if (*it == this) return it == sibs.begin() ? nullptr : *--it;
  return nullptr;
}

void kcUITablet::setParent(kcUITablet& parent, const kcUIRect& rect) {
  // A tablet under itself would make the parent chain a loop and step 6
  // below recurse without end.
  for (const kcUITablet* t = &parent; t; t = t->parent_)
    if (t == this) throw kcUIError::BadParams();
  if (parent.kids_.size() >= parent.kids_.max_size()) throw std::length_error("list<T> too long");
  // rect may be one of our own fields (a kid re-attached with its scopeRect()).
  const kcUIRect area = rect;

  if (updateNesting_++ == 0) {
    const kcUIRect own(0, 0, scopeRect_.width(), scopeRect_.height());
    erase(own, mainLayer);
    erase(own, overlayLayer);
    if (recordOn_) sketch_.erase();
  }
  try {
    kcUITablet* const oldParent = parent_;
    if (oldParent) oldParent->kids_.remove(this);
    for (long l = mainLayer; l <= overlayLayer; ++l) {
      if (!ownScopes_[l]) continue;
      if (scopes_[l] == ownScopes_[l]) scopes_[l] = nullptr;
      delete ownScopes_[l];
      ownScopes_[l] = nullptr;
    }

    parent_ = &parent;
    for (long l = mainLayer; l <= overlayLayer; ++l) {
      // A caller's scope is dropped, not deleted: under a parent the tablet
      // draws only through the parent's device.
      scopes_[l] = nullptr;
      if (kcUIScope* ps = parent.scopes_[l]) scopes_[l] = ownScopes_[l] = ps->makeSubScope(area);
    }
    parent.kids_.push_back(this);
    newParentTablet(oldParent);

    // Each kid leaves and joins the end again, so the order is kept.
    for (kcUITablet* kid : snapshot(kids_)) kid->setParent(*this, kid->scopeRect());
    scopeRect(area);
    detached_ = false;
  } catch (...) {
    --updateNesting_;
    throw;
  }

  if (--updateNesting_ != 0) return;
  for (kcUIScope* s : scopes_)
    if (s) s->settle();
  redraw(bothLayers);
  for (kcUITablet* kid : snapshot(kids_)) kid->fullDraw(bothLayers);
  for (kcUIScope* s : scopes_)
    if (s) s->releaseUpdates();
}

void kcUITablet::redraw(Layers layer) {
  checkLayer_(layer);
  if (!detached_) redraw_();
}

void kcUITablet::fullDraw(Layers layer) {
  redraw(layer);
  for (kcUITablet* kid : snapshot(kids_)) kid->fullDraw(layer);
}

// --- point icons ---

const wchar_t* const kcUITablet::kPointIconPattern = kPattern;

kcRLEBuffer kcUITablet::makeIcon(const wchar_t* pattern, const std::vector<unsigned char>& colours) {
  if (!pattern || !*pattern) throw kcUIError::BadIconPattern();
  const wchar_t separator = pattern[0];
  if (isTransparentPel(separator) || isDigitPel(separator)) throw kcUIError::BadIconPattern();
  const unsigned char pass = kcColor::passColor().index();

  // One pass checks the rows and collects the pels row after row.
  std::vector<unsigned char> pels;
  long width = -1;
  long rows = 0;
  long column = 0;
  const auto endRow = [&] {
    if (width < 0) width = column;
    if (column != width) throw kcUIError::BadIconPattern();
    ++rows;
    column = 0;
  };
  const wchar_t* c = pattern + 1;
  for (; *c; ++c) {
    if (*c == separator) {
      endRow();
      continue;
    }
    if (isTransparentPel(*c)) {
      pels.push_back(pass);
    } else if (isDigitPel(*c)) {
      const auto d = static_cast<std::size_t>(*c - L'0');
      pels.push_back(d < colours.size() ? colours[d] : static_cast<unsigned char>(d));
    } else {
      throw kcUIError::BadIconPattern();
    }
    ++column;
  }
  // A last row ended by the string's end rather than a separator.
  if (column > 0) endRow();

  kcPelBuffer<unsigned char> image(width < 0 ? 0 : width, rows);
  for (long y = 0; y < rows; ++y)
    for (long x = 0; x < width; ++x) image.put(x, y, pels[static_cast<std::size_t>(y * width + x)]);
  return kcRLEBuffer(image);
}

const kcRLEBuffer& kcUITablet::pointIcon() {
  static const kcRLEBuffer icon = makeIcon(kPointIconPattern, {0});
  return icon;
}

bool kcUITablet::pointIconTouched(const kcPair<long>& d) {
  // Offsets beyond the icon are ruled out before any arithmetic, so that
  // nothing overflows; a row outside it would index before the pattern or
  // past its end anyway.
  if (d.x() < -kIconCentre || d.x() > kIconCentre) return false;
  if (d.y() < -kIconCentre || d.y() > kIconCentre) return false;
  const long index = 1 + (d.y() + kIconCentre) * kPatternRowStride + (d.x() + kIconCentre);
  if (index < 0 || index >= kPatternLength) return false;
  const wchar_t c = kPattern[index];
  return c != L' ' && c != L'.';
}

// --- making the map ---

void kcUITablet::setMap_() {
  if (mode_ == scaleNone) {
    scaledMap_ = baseMap_;
    return;
  }
  double sx = factors_.x();
  double sy = factors_.y();
  // Reducing divides only when both factors exceed one; factors below one
  // multiply as when magnifying.
  if (mode_ == scaleReduce && sx > 1.0 && sy > 1.0) {
    sx = 1.0 / sx;
    sy = 1.0 / sy;
  }
  scaledMap_ = kcXform<2>::scale(sx, sy) * baseMap_;
}

void kcUITablet::newMap_() {
  setMap_();
  for (kcUITablet* kid : snapshot(kids_)) kid->parentMapChanged();
  redraw(bothLayers);
}
