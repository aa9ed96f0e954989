#include "dispc/uistring.h"

#include <atomic>

#include "foundation/mutex.h"

namespace {
// Where the archive reports an unknown version of the record.
constexpr const char* kSource = "dispc/uistring";
constexpr int kVersionLine = 77;
constexpr unsigned char kVersion = 0;

constexpr long kInitialDefaultFontId = -1;

// The default font cell: null until the first defaultFontId call, then never
// freed. Constant-initialised, so it is valid before any static constructor.
std::atomic<std::atomic<long>*> gDefaultFontCell{nullptr};

std::atomic<long>& defaultFontCell() {
  std::atomic<long>* cell = gDefaultFontCell.load(std::memory_order_acquire);
  if (cell) return *cell;
  kcLock lock(kcMutex::global());
  // Another thread may have made it while this one waited for the lock.
  cell = gDefaultFontCell.load(std::memory_order_acquire);
  if (!cell) {
    cell = new std::atomic<long>(kInitialDefaultFontId);
    gDefaultFontCell.store(cell, std::memory_order_release);
  }
  return *cell;
}
}  // namespace

// --- construction and default font ---

kcUIFormat::kcUIFormat(Alignment alignment) : fontId_(defaultFontId()), alignment_(alignment) {}

long kcUIFormat::defaultFontId() { return defaultFontCell().load(std::memory_order_relaxed); }

void kcUIFormat::defaultFontId(long id) { defaultFontCell().store(id, std::memory_order_relaxed); }

// --- alignment ---

kcUIRect kcUIFormat::alignRect(const kcUIRect& r) const noexcept {
  long left = r.left();
  long top = r.top();
  switch (alignment_) {
    case topCenter:
    case center:
    case bottomCenter:
      left -= r.width() / 2;
      break;
    case topRight:
    case middleRight:
    case bottomRight:
      left -= r.width();
      break;
    default:
      break;
  }
  switch (alignment_) {
    case middleLeft:
    case center:
    case middleRight:
      top -= r.height() / 2;
      break;
    case bottomLeft:
    case bottomCenter:
    case bottomRight:
      top -= r.height();
      break;
    default:
      break;
  }
  return kcUIRect(kcUIRect::Pair(left, top), r.sz());
}

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcUIFormat& f) {
  unsigned char version = kVersion;
  ar || version;
  if (version != kVersion) throw kcArchive::UnknownVersion(kSource, kVersionLine);
  long fontId = f.fontId_;
  std::int32_t alignment = f.alignment_;
  ar || fontId || alignment;
  if (ar.isLoading()) {
    f.fontId_ = fontId;
    f.alignment_ = static_cast<kcUIFormat::Alignment>(alignment);
  }
  return ar;
}
