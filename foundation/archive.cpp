#include "foundation/archive.h"

#include <memory>
#include <ostream>

namespace {
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

kcArchive::kcArchive(Mode mode) : mode_(mode) {}

kcArchive::~kcArchive() = default;

void kcArchive::throwShort_() { throw Corrupt(L"data ends early"); }

void kcArchive::checkCount(std::uint64_t count, std::uint64_t minSize) const {
  if (isLoading() && count > remaining() / (minSize ? minSize : 1))
    throw Corrupt(L"count larger than the remaining data");
}

// --- transfers and visits ---

kcArchive::Transfer::Transfer(kcArchive& ar) : ar_(ar), visits_(ar.visits_.size()), top_(ar.depth_++ == 0) {
  if (top_ && ar.isStoring()) {
    bytes_ = ar.writer_.size();
    shared_ = ar.shared_.size();
    uncaught_ = std::uncaught_exceptions();
  }
}

kcArchive::Transfer::~Transfer() {
  --ar_.depth_;
  ar_.visits_.resize(visits_);
  if (!top_ || !ar_.isStoring()) return;
  if (std::uncaught_exceptions() > uncaught_) {
    ar_.rollback_(bytes_, shared_);
    return;
  }
  try {
    ar_.settled_();
  } catch (...) {
    // A destructor must not throw; the device error shows again on flush().
  }
}

void kcArchive::rollback_(std::size_t bytes, std::size_t shared) noexcept {
  writer_.truncate(bytes);
  for (std::size_t i = shared; i < shared_.size(); ++i) storedIds_.erase(shared_[i].object);
  shared_.resize(shared);
}

// Transfers nest a few levels deep, so the open visits are few: a scan beats
// any index here.
bool kcArchive::visited_(const kcPersistent* object, unsigned mark) const noexcept {
  for (const Visit& v : visits_)
    if (v.object == object && v.mark == mark) return true;
  return false;
}

bool kcArchive::inTransfer_(const kcPersistent* object) const noexcept {
  for (const Visit& v : visits_)
    if (v.object == object) return true;
  return false;
}

// --- persistent objects ---

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
    // Holding the object keeps its address from passing to another object
    // while this archive may still meet it.
    auto* rep = dynamic_cast<kcRepBase*>(p);
    if (!rep || rep->refCount() == 0) throw kcBadPointer();
    shared_.push_back({p, kcPtrHandle<kcRepBase>(rep)});
    storedIds_.emplace(p, static_cast<std::uint32_t>(shared_.size()));
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
      if (id == 0 || id > shared_.size()) throw Corrupt(L"back-reference to an unknown object");
      if (!shared_[id - 1].object) throw Corrupt(L"object refers to itself");
      p = shared_[id - 1].object;
      return;
    }
    default:
      throw Corrupt(L"bad object tag");
  }
}

void kcArchive::transferObject(kcPersistent*& p) {
  Transfer transfer(*this);
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
  const std::size_t slot = shared_.size();
  shared_.push_back({nullptr, {}});
  p->dispatchSerialize(*this);
  // Kept alive until the archive ends, so a back-reference never finds a freed object.
  shared_[slot] = {p.get(), kcPtrHandle<kcRepBase>(rep)};
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

// Wide strings travel as UTF-16 whatever the width of wchar_t; a lone
// surrogate travels as the code unit it is.
kcArchive& operator||(kcArchive& ar, std::wstring& value) {
  std::uint32_t count = 0;
  if (ar.isStoring()) {
    auto units = kfToUtf16(value, keSurrogates::keep);
    if (!units || units->size() > UINT32_MAX) throw kcArchive::ValueOutOfRange();
    count = static_cast<std::uint32_t>(units->size());
    ar || count;
    for (char16_t& unit : *units) ar || unit;
    return ar;
  }
  ar || count;
  ar.checkCount(count, sizeof(char16_t));
  std::u16string units(count, u'\0');
  for (char16_t& unit : units) ar || unit;
  value = kfFromUtf16(units);
  return ar;
}

// --- kcMemArchive ---

kcMemArchive::kcMemArchive() : kcArchive(Mode::store) {}

kcMemArchive::kcMemArchive(std::vector<std::uint8_t> bytes) : kcArchive(Mode::load) {
  data_ = std::move(bytes);
  startLoading_();
}

// --- kcFileArchive ---

namespace {
std::wstring widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }
// Storing writes out once this much has gathered.
constexpr std::size_t kFileBlock = std::size_t{1} << 20;
}  // namespace

kcFileArchive::kcFileArchive(const std::string& path, kcArchive::Mode mode) : kcArchive(mode), path_(path) {
  if (mode == Mode::store) {
    file_.open(path, std::ios::out | std::ios::binary | std::ios::trunc);
    if (!file_) throw FileError(L"cannot open " + widen(path) + L" for writing");
    return;
  }
  file_.open(path, std::ios::in | std::ios::binary | std::ios::ate);
  if (!file_) throw FileError(L"cannot open " + widen(path) + L" for reading");
  const auto size = file_.tellg();
  file_.seekg(0);
  if (size < 0 || !file_) throw FileError(L"cannot read " + widen(path));
  data_.resize(static_cast<std::size_t>(size));
  file_.read(reinterpret_cast<char*>(data_.data()), static_cast<std::streamsize>(data_.size()));
  if (!file_) throw FileError(L"cannot read " + widen(path));
  startLoading_();
}

kcFileArchive::~kcFileArchive() {
  if (!isStoring()) return;
  try {
    flush();
  } catch (...) {
    // Nothing to tell from a destructor; call flush() to see the error.
  }
}

void kcFileArchive::flush() {
  writeOut_();
  file_.flush();
  if (!file_) throw FileError(L"cannot write " + widen(path_));
}

void kcFileArchive::settled_() {
  if (writer_.size() >= kFileBlock) writeOut_();
}

void kcFileArchive::writeOut_() {
  finishWriting_();
  if (data_.empty()) return;
  file_.write(reinterpret_cast<const char*>(data_.data()), static_cast<std::streamsize>(data_.size()));
  if (!file_) throw FileError(L"cannot write " + widen(path_));
  writer_.truncate(0);
  data_.clear();
}
