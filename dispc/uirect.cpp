#include "dispc/uirect.h"

#include <algorithm>

namespace {
// Where the archive reports an unknown version of the record.
constexpr const char* kSource = "dispc/uirect";
constexpr int kVersionLine = 156;
constexpr signed char kVersion = 0;
}  // namespace

// --- construction ---

kcUIRect::kcUIRect(long left, long top, long width, long height) : ul_(left, top), sz_(width, height) {
  norm();
}

kcUIRect::kcUIRect(const Pair& ul, const Pair& sz) : ul_(ul), sz_(sz) { norm(); }

void kcUIRect::norm() noexcept {
  if (width() < 1 || height() < 1) *this = kcUIRect();
}

// --- corner and size ---

void kcUIRect::ul(const Pair& p) noexcept {
  if (!isNull()) ul_ = p;
}

void kcUIRect::sz(const Pair& p) noexcept {
  sz_ = p;
  norm();
}

// --- containment ---

bool kcUIRect::within(const Pair& p) const noexcept {
  return left() <= p.x() && p.x() < right() && top() <= p.y() && p.y() < bottom();
}

bool kcUIRect::within(const kcUIRect& r) const noexcept {
  return within(r.ul()) && within(Pair(r.right() - 1, r.bottom() - 1));
}

bool kcUIRect::nullIntersection(const kcUIRect& r) const noexcept { return (*this & r).isNull(); }

// --- intersection and union ---

kcUIRect kcUIRect::operator&(const kcUIRect& r) const noexcept {
  if (isNull() || r.isNull()) return kcUIRect();
  const long l = std::max(left(), r.left());
  const long t = std::max(top(), r.top());
  return kcUIRect(l, t, std::min(right(), r.right()) - l, std::min(bottom(), r.bottom()) - t);
}

kcUIRect& kcUIRect::operator&=(const kcUIRect& r) noexcept {
  if (isNull()) return *this;
  if (r.isNull()) return *this = r;
  return *this = *this & r;
}

namespace {
// The bounding rectangle of two non-null rectangles, not normalised.
void unite(kcUIRect::Pair& ul, kcUIRect::Pair& sz, const kcUIRect& a, const kcUIRect& b) {
  const long l = std::min(a.left(), b.left());
  const long t = std::min(a.top(), b.top());
  ul = kcUIRect::Pair(l, t);
  sz = kcUIRect::Pair(std::max(a.right(), b.right()) - l, std::max(a.bottom(), b.bottom()) - t);
}
}  // namespace

kcUIRect kcUIRect::operator|(const kcUIRect& r) const noexcept {
  if (isNull()) return r;
  if (r.isNull()) return *this;
  Pair ul;
  Pair sz;
  unite(ul, sz, *this, r);
  return kcUIRect(ul, sz);
}

kcUIRect& kcUIRect::operator|=(const kcUIRect& r) noexcept {
  if (isNull()) return *this = r;
  if (r.isNull()) return *this;
  const kcUIRect self = *this;  // unite writes the corner before it reads the far edges
  unite(ul_, sz_, self, r);
  return *this;
}

// --- moving ---

kcUIRect kcUIRect::operator+(const Pair& p) const noexcept { return kcUIRect(ul_ + p, sz_); }

kcUIRect kcUIRect::operator-(const Pair& p) const noexcept { return kcUIRect(ul_ - p, sz_); }

kcUIRect& kcUIRect::operator+=(const Pair& p) noexcept {
  ul_ += p;
  return *this;
}

kcUIRect& kcUIRect::operator-=(const Pair& p) noexcept {
  ul_ -= p;
  return *this;
}

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcUIRect& r) {
  signed char version = kVersion;
  ar || version;
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kVersionLine);
  kcUIRect::Pair ul = r.ul_;
  kcUIRect::Pair sz = r.sz_;
  ar || ul || sz;
  if (ar.isLoading()) {
    r.ul_ = ul;
    r.sz_ = sz;
  }
  return ar;
}
