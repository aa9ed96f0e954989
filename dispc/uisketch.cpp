#include "dispc/uisketch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

#include "dispc/uierror.h"

namespace {
constexpr long kMaxBytes = std::numeric_limits<std::int32_t>::max();
}  // namespace

// --- construction ---

kcUISketch::kcUISketch(const kcUISketch& other) {
  if (other.capacity_ == 0) return;
  data_ = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(other.capacity_)));
  if (!data_) throw std::bad_alloc();
  if (other.length_ > 0) std::memcpy(data_, other.data_, static_cast<std::size_t>(other.length_));
  length_ = other.length_;
  capacity_ = other.capacity_;
}

kcUISketch& kcUISketch::operator=(const kcUISketch& other) {
  if (this == &other) return *this;
  reserve_(other.length_);
  if (other.length_ > 0) std::memcpy(data_, other.data_, static_cast<std::size_t>(other.length_));
  length_ = other.length_;
  return *this;
}

kcUISketch::~kcUISketch() { std::free(data_); }

// --- growth ---

void kcUISketch::reserve_(long needed) {
  if (needed <= capacity_) return;
  if (needed > kMaxBytes) throw std::bad_alloc();
  long grown = std::max(needed, 2 * static_cast<long>(capacity_));
  if (grown > kMaxBytes) grown = kMaxBytes;
  // realloc leaves the old block alone when it fails.
  void* block = std::realloc(data_, static_cast<std::size_t>(grown));
  if (!block) throw std::bad_alloc();
  data_ = static_cast<unsigned char*>(block);
  capacity_ = static_cast<std::int32_t>(grown);
}

unsigned char* kcUISketch::append(long n) {
  if (n < 0) throw kcUIError::BadParams();
  if (n > kMaxBytes - length_) throw std::bad_alloc();
  reserve_(length_ + n);
  if (!data_) return nullptr;
  unsigned char* end = data_ + length_;
  length_ += static_cast<std::int32_t>(n);
  return end;
}

void kcUISketch::append(const void* p, long n) {
  // A source inside this block may move when the block grows: keep its offset.
  const auto* src = static_cast<const unsigned char*>(p);
  const bool inside = data_ && n > 0 && !std::less<const unsigned char*>()(src, data_) &&
                      std::less<const unsigned char*>()(src, data_ + length_);
  const long offset = inside ? static_cast<long>(src - data_) : 0;
  unsigned char* out = append(n);
  if (n == 0) return;
  if (inside) src = data_ + offset;
  std::memmove(out, src, static_cast<std::size_t>(n));
}

// --- properties records ---

void kcUISketch::opcode(signed char op, const kcGraphicProps& props) {
  // The colour is not part of the record, so it does not count as a change.
  kcGraphicProps withOldColor(props);
  withOldColor.penColor(props_.penColor());
  if (withOldColor != props_) {
    const std::int32_t before = length_;
    try {
      *append(1) = static_cast<unsigned char>(op);
      kcGraphicProps::opcode(this, props);
    } catch (...) {
      length_ = before;  // no half-written record
      throw;
    }
  }
  props_ = props;
}

// --- erasing ---

void kcUISketch::erase() noexcept {
  length_ = 0;
  props_ = kcGraphicProps();
}

void kcUISketch::eraseAndDelete() noexcept {
  std::free(data_);
  data_ = nullptr;
  length_ = 0;
  capacity_ = 0;
  props_ = kcGraphicProps();
}
