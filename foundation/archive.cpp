#include "foundation/archive.h"

#include <atomic>
#include <memory>
#include <ostream>

namespace {
// Each archive is one pass; ids start at 1 so that 0 never matches.
std::atomic<std::uint64_t> gNextPass{1};

constexpr std::uint8_t kTagNull = 0;
constexpr std::uint8_t kTagShared = 1;
constexpr std::uint8_t kTagBackRef = 2;
constexpr std::uint8_t kTagOwned = 3;
// Longer than any C++ class name this library registers.
constexpr std::uint32_t kMaxClassName = 1024;
}  // namespace

// --- errors ---

KC_DEFINE_EXCEPTION(kcArchive::UnknownVersion, 0x10000301, kcArchive::UnknownVersion);

void kcArchive::UnknownVersion::message_(std::wostream& out) const {
  out << L"unknown archive version in " << std::wstring(file_.begin(), file_.end()) << L" line " << line_;
}

void kcArchive::UnknownVersion::serialize_(kcArchive& ar, unsigned char version) {
  kcException::serialize_(ar, version);
  ar || file_ || line_;
}

KC_DEFINE_EXCEPTION(kcArchive::Corrupt, 0x10000302, kcExceptionWithString);

void kcArchive::Corrupt::message_(std::wostream& out) const {
  out << L"corrupt archive";
  if (!text().empty()) out << L": " << text();
}

KC_DEFINE_EXCEPTION(kcArchive::ValueOutOfRange, 0x10000303, kcException);

void kcArchive::ValueOutOfRange::message_(std::wostream& out) const {
  out << L"value out of the range its archive form can hold";
}

KC_DEFINE_EXCEPTION(kcArchive::FileError, 0x10000304, kcExceptionWithString);

void kcArchive::FileError::message_(std::wostream& out) const { out << L"archive file error: " << text(); }

// --- kcArchive ---

kcArchive::kcArchive(Mode mode) : mode_(mode), passId_(gNextPass++) {}

kcArchive::~kcArchive() = default;

void kcArchive::rawTransfer(void* data, std::size_t n) {
  if (n == 0) return;
  if (isStoring()) {
    write_(data, n);
    return;
  }
  if (n > remaining()) throw Corrupt(L"data ends early");
  read_(data, n);
}

void kcArchive::checkCount(std::uint64_t count, std::uint64_t minSize) const {
  if (isLoading() && count > remaining() / (minSize ? minSize : 1))
    throw Corrupt(L"count larger than the remaining data");
}

void kcArchive::transferShared(kcPersistent*& p) {
  if (isStoring()) {
    std::uint8_t tag = kTagNull;
    if (!p) {
      *this || tag;
      return;
    }
    if (auto it = storedIds_.find(p); it != storedIds_.end()) {
      tag = kTagBackRef;
      std::uint32_t id = it->second;
      *this || tag || id;
      return;
    }
    storedIds_.emplace(p, static_cast<std::uint32_t>(storedIds_.size() + 1));
    storeNew_(p, kTagShared);
    return;
  }
  std::uint8_t tag = 0;
  *this || tag;
  switch (tag) {
    case kTagNull:
      p = nullptr;
      return;
    case kTagShared:
      p = loadNew_(true);
      return;
    case kTagBackRef: {
      std::uint32_t id = 0;
      *this || id;
      if (id == 0 || id > loaded_.size()) throw Corrupt(L"back-reference to an unknown object");
      if (!loaded_[id - 1]) throw Corrupt(L"object refers to itself");
      p = loaded_[id - 1];
      return;
    }
    default:
      throw Corrupt(L"bad object tag");
  }
}

void kcArchive::transferObject(kcPersistent*& p) {
  if (isStoring()) {
    std::uint8_t tag = kTagNull;
    if (p)
      storeNew_(p, kTagOwned);
    else
      *this || tag;
    return;
  }
  std::uint8_t tag = 0;
  *this || tag;
  if (tag == kTagNull)
    p = nullptr;
  else if (tag == kTagOwned)
    p = loadNew_(false);
  else
    throw Corrupt(L"bad object tag");
}

void kcArchive::storeNew_(kcPersistent* p, std::uint8_t tag) {
  std::string name = p->className();
  *this || tag || name;
  p->dispatchSerialize(*this);
}

kcPersistent* kcArchive::loadNew_(bool shared) {
  std::uint32_t length = 0;
  *this || length;
  if (length == 0 || length > kMaxClassName) throw Corrupt(L"bad class name");
  std::string name(length, '\0');
  rawTransfer(name.data(), length);
  std::unique_ptr<kcPersistent> p(kcPersistenceRegistry::make(name));
  if (!p) throw Corrupt(L"unknown class " + std::wstring(name.begin(), name.end()));
  if (!shared) {
    p->dispatchSerialize(*this);
    return p.release();
  }
  // Only reference-counted objects can be shared by handles.
  auto* rep = dynamic_cast<kcRepBase*>(p.get());
  if (!rep) throw Corrupt(L"shared object of a class without handles");
  std::size_t slot = loaded_.size();
  loaded_.push_back(nullptr);
  p->dispatchSerialize(*this);
  loaded_[slot] = p.get();
  keepAlive_.emplace_back(rep);
  return p.release();
}

// --- scalars and strings ---

kcArchive& operator||(kcArchive& ar, bool& value) {
  std::uint8_t byte = value ? 1 : 0;
  ar || byte;
  if (ar.isLoading()) {
    if (byte > 1) throw kcArchive::Corrupt(L"bool is not 0 or 1");
    value = byte == 1;
  }
  return ar;
}

kcArchive& operator||(kcArchive& ar, long& value) {
  kcArchiveDetail::transferNarrowed<long, std::int32_t>(ar, value);
  return ar;
}

kcArchive& operator||(kcArchive& ar, unsigned long& value) {
  kcArchiveDetail::transferNarrowed<unsigned long, std::uint32_t>(ar, value);
  return ar;
}

kcArchive& operator||(kcArchive& ar, std::string& value) {
  std::uint32_t length = 0;
  if (ar.isStoring()) {
    if (value.size() > UINT32_MAX) throw kcArchive::ValueOutOfRange();
    length = static_cast<std::uint32_t>(value.size());
    ar || length;
    ar.rawTransfer(value.data(), length);
    return ar;
  }
  ar || length;
  ar.checkCount(length);
  std::string loaded(length, '\0');
  ar.rawTransfer(loaded.data(), length);
  value = std::move(loaded);
  return ar;
}

// Wide strings travel as UTF-16 whatever the width of wchar_t.
kcArchive& operator||(kcArchive& ar, std::wstring& value) {
  if (ar.isStoring()) {
    std::vector<std::uint16_t> units;
    units.reserve(value.size());
    for (wchar_t c : value) {
      auto u = static_cast<std::uint32_t>(c);
      if (u >= 0x10000 && u <= 0x10FFFF) {
        u -= 0x10000;
        units.push_back(static_cast<std::uint16_t>(0xD800 | (u >> 10)));
        units.push_back(static_cast<std::uint16_t>(0xDC00 | (u & 0x3FF)));
      } else if (u > 0x10FFFF) {
        throw kcArchive::ValueOutOfRange();
      } else {
        units.push_back(static_cast<std::uint16_t>(u));
      }
    }
    return ar || units;
  }
  std::vector<std::uint16_t> units;
  ar || units;
  std::wstring loaded;
  loaded.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    std::uint32_t u = units[i];
    bool pair = sizeof(wchar_t) >= 4 && u >= 0xD800 && u < 0xDC00 && i + 1 < units.size() &&
                units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
    if (pair) u = 0x10000 + ((u - 0xD800) << 10) + (units[++i] - 0xDC00);
    // A lone surrogate comes back as the code unit it was.
    loaded.push_back(static_cast<wchar_t>(u));
  }
  value = std::move(loaded);
  return ar;
}

// --- kcMemArchive ---

kcMemArchive::kcMemArchive() : kcArchive(Mode::store) {}

kcMemArchive::kcMemArchive(std::vector<std::uint8_t> bytes)
    : kcArchive(Mode::load), bytes_(std::move(bytes)) {}

std::uint64_t kcMemArchive::remaining() const noexcept { return isLoading() ? bytes_.size() - pos_ : 0; }

void kcMemArchive::write_(const void* data, std::size_t n) {
  auto* p = static_cast<const std::uint8_t*>(data);
  bytes_.insert(bytes_.end(), p, p + n);
}

void kcMemArchive::read_(void* data, std::size_t n) {
  std::memcpy(data, bytes_.data() + pos_, n);
  pos_ += n;
}

// --- kcFileArchive ---

namespace {
std::wstring widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }
}  // namespace

kcFileArchive::kcFileArchive(const std::string& path, kcArchive::Mode mode) : kcArchive(mode), path_(path) {
  if (mode == Mode::load) {
    file_.open(path, std::ios::in | std::ios::binary | std::ios::ate);
    if (!file_) throw FileError(L"cannot open " + widen(path) + L" for reading");
    auto size = file_.tellg();
    file_.seekg(0);
    if (size < 0 || !file_) throw FileError(L"cannot read " + widen(path));
    remaining_ = static_cast<std::uint64_t>(size);
  } else {
    file_.open(path, std::ios::out | std::ios::binary | std::ios::trunc);
    if (!file_) throw FileError(L"cannot open " + widen(path) + L" for writing");
  }
}

std::uint64_t kcFileArchive::remaining() const noexcept { return isLoading() ? remaining_ : 0; }

void kcFileArchive::flush() {
  file_.flush();
  if (!file_) throw FileError(L"cannot write " + widen(path_));
}

void kcFileArchive::write_(const void* data, std::size_t n) {
  file_.write(static_cast<const char*>(data), static_cast<std::streamsize>(n));
  if (!file_) throw FileError(L"cannot write " + widen(path_));
}

void kcFileArchive::read_(void* data, std::size_t n) {
  file_.read(static_cast<char*>(data), static_cast<std::streamsize>(n));
  if (!file_) throw FileError(L"cannot read " + widen(path_));
  remaining_ -= n;
}
