#include "dispc/uisketch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

#include "dispc/sketchop.h"
#include "dispc/uierror.h"
#include "foundation/archive.h"

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

kcUISketch::kcUISketch(const unsigned char* bytes, long n) { append(bytes, n); }

kcUISketch::~kcUISketch() { std::free(data_); }

void kcUISketch::swap_(kcUISketch& o) noexcept {
  std::swap(data_, o.data_);
  std::swap(length_, o.length_);
  std::swap(capacity_, o.capacity_);
  std::swap(props_, o.props_);
}

bool kcUISketch::operator==(const kcUISketch& o) const noexcept {
  return length_ == o.length_ &&
         (length_ == 0 || std::memcmp(data_, o.data_, static_cast<std::size_t>(length_)) == 0);
}

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

unsigned char* kcUISketch::grow_(long n) {
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

void kcUISketch::changeProps_(signed char op, const kcGraphicProps& props) {
  const std::int32_t before = length_;
  try {
    *append(1) = static_cast<unsigned char>(op);
    kcGraphicProps::opcode(this, props);
  } catch (...) {
    length_ = before;  // no half-written record
    throw;
  }
  props_ = props;
}

void kcUISketch::propsRecord_(const kcGraphicProps& props) {
  const std::int32_t before = length_;
  try {
    *append(1) = static_cast<unsigned char>(kPropsOpcode);
    kcGraphicProps::opcode(this, props);
  } catch (...) {
    length_ = before;
    throw;
  }
  props_ = props;
}

// --- cutting and pasting ---

void kcUISketch::insert(const kcUISketch& s, kcUISketchMark m) {
  if (s.length_ == 0) return;
  if (&s == this) {
    const kcUISketch copy(*this);
    insert(copy, m);
    return;
  }
  const std::int32_t at = m.mark();
  const std::int32_t tail = length_ - at;
  append(s.length_);
  std::memmove(data_ + at + s.length_, data_ + at, static_cast<std::size_t>(tail));
  std::memcpy(data_ + at, s.data_, static_cast<std::size_t>(s.length_));
}

void kcUISketch::remove(kcUISketchMark from, kcUISketchMark to) {
  if (from.mark() >= to.mark()) return;
  std::memmove(data_ + from.mark(), data_ + to.mark(), static_cast<std::size_t>(length_ - to.mark()));
  length_ -= to.mark() - from.mark();
}

kcUISketch kcUISketch::subSketch(kcUISketchMark from, kcUISketchMark to) const {
  if (from.mark() >= to.mark()) return {};
  return {data_ + from.mark(), static_cast<long>(to.mark() - from.mark())};
}

kcUISketch& kcUISketch::operator+=(const kcUISketch& s) {
  append(s.data_, s.length_);
  return *this;
}

kcUISketch kcUISketch::operator+(const kcUISketch& s) const {
  kcUISketch sum;
  sum.reserve_(static_cast<long>(length_) + s.length_);
  sum += *this;
  sum += s;
  return sum;
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

// --- archive ---

namespace {
constexpr signed char kSketchVersion = 1;
constexpr int kSketchVersionLine = 286;
// The fewest bytes a stored header or payload object takes (tag, class name
// length, version byte).
constexpr std::uint64_t kStoredObjectBytes = 6;

// Takes ownership of an object the archive made.
template <class T>
kcPtrHandle<T> loadedAs(kcPersistent* p) {
  T* typed = dynamic_cast<T*>(p);
  if (!typed) {
    delete p;
    throw kcArchive::Corrupt(L"sketch record of the wrong class");
  }
  return kcPtrHandle<T>(typed);
}

void storeRecords(kcArchive& ar, const kcUISketch& s) {
  std::int32_t count = 0;
  for (kcUISketchParser records(s); records.next();) ++count;
  ar || count;
  for (kcUISketchParser records(s); records.next();) {
    kcPersistent* header = const_cast<kc_UISketchOpHeader*>(&records.header());
    ar.transferObject(header);
    kcPersistent* data = &records.data();
    ar.transferObject(data);
  }
}

void loadRecords(kcArchive& ar, kcUISketch& out) {
  std::int32_t count = 0;
  ar || count;
  if (count < 0) throw kcArchive::Corrupt(L"negative sketch record count");
  ar.checkCount(static_cast<std::uint64_t>(count), 2 * kStoredObjectBytes);
  for (std::int32_t i = 0; i < count; ++i) {
    kcPersistent* p = nullptr;
    ar.transferObject(p);
    const kcPtrHandle<kc_UISketchOpHeader> header = loadedAs<kc_UISketchOpHeader>(p);
    p = nullptr;
    ar.transferObject(p);
    const kcPtrHandle<kc_UISketchOpData> data = loadedAs<kc_UISketchOpData>(p);
    // The payload's class must be the one its opcode names.
    const kcPtrHandle<kc_UISketchOpData> expected(kfCreateUISketchOpData(header->opcode()));
    if (std::strcmp(expected->className(), data->className()) != 0)
      throw kcArchive::Corrupt(L"sketch payload of the wrong class for its opcode");
    header->populateSketch(out);
    data->populateSketch(out);
  }
}

void loadVersion0(kcArchive& ar, kcUISketch& out) {
  std::int32_t length = 0;
  ar || length;
  if (length < 0) throw kcArchive::Corrupt(L"negative sketch length");
  ar.checkCount(static_cast<std::uint64_t>(length));
  if (length == 0) return;
  std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
  ar.rawTransfer(bytes.data(), bytes.size());
  for (kcUISketchParser records(bytes, true); records.next();) {
    records.header().populateSketch(out);
    records.data().populateSketch(out);
  }
}
}  // namespace

kcArchive& operator||(kcArchive& ar, kcUISketch& s) {
  kcArchive::Transfer transfer(ar);
  signed char version = kSketchVersion;
  ar || version;
  if (ar.isStoring()) {
    storeRecords(ar, s);
    return ar;
  }
  kcUISketch loaded;
  if (version == 1)
    loadRecords(ar, loaded);
  else if (version == 0)
    loadVersion0(ar, loaded);
  else
    throw kcArchive::UnknownVersion("dispc/uisketch", kSketchVersionLine);
  s.swap_(loaded);
  return ar;
}

kcArchive& operator||(kcArchive& ar, kcUISketchMark& m) { return ar || m.position_; }
