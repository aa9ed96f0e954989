// Archives: one symmetric operator|| stores a value into, or loads it from, a
// byte stream.
//
// Wire format. Every multi-byte value is little-endian and unaligned. Integers
// keep their width, except that long and unsigned long are always 32 bits
// (a value outside that range is ValueOutOfRange when stored). Mind that on
// LP64 platforms std::int64_t and std::size_t are long types: use long long
// for a 64-bit field. bool is one
// byte, 0 or 1. A string is a 32-bit byte count then the bytes; a wide string
// is a 32-bit count of UTF-16 code units then the units. A vector is a 32-bit
// element count then the elements.
//
// Persistent objects held by handle start with a one-byte tag:
//   0  null handle
//   1  a new object: its class name (a string) then its dispatchSerialize body;
//      it takes the next object id of this archive, counting from 1
//   2  a back-reference: the 32-bit id of an object already complete in this
//      archive, so shared objects come back shared
// Objects transferred by raw pointer (transferObject) use tag 0 or
//   3  a new unshared object: class name then body; it gets no id.
// A back-reference to an id not yet given, or to an object whose body is still
// being read (an object that would contain itself), is Corrupt.
//
// Loading never reads past the end of the data and never allocates more than
// the remaining bytes could hold.
//
// Storing the same object twice writes it twice; storing the same handle twice
// writes a back-reference the second time. A storing archive keeps every object
// it gave an id alive until it ends, so a freed address reused by a new object
// is never taken for the old one. A store that throws at the top level (a
// value, a handle or a vector handed to the archive by its user) takes back
// everything it wrote, so the archive is left as it was before it.
#pragma once

#include <concepts>
#include <cstdint>
#include <exception>
#include <fstream>
#include <limits>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/exception.h"
#include "foundation/handle.h"

class kcArchive {
 public:
  enum class Mode { load, store };

  // Errors of loading and storing.
  class UnknownVersion : public kcException {
   public:
    KC_DECLARE_EXCEPTION(UnknownVersion);
    UnknownVersion() = default;
    // file: the source (or class) that met the version; line: where.
    UnknownVersion(const char* file, int line) : file_(file ? file : ""), line_(line) {}
    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    [[nodiscard]] int line() const noexcept { return line_; }
    void message_(std::wostream& out) const override;

   protected:
    void serialize_(kcArchive& ar, unsigned char version);

   private:
    std::string file_;
    int line_ = 0;
  };
  class Corrupt : public kcExceptionWithString {
   public:
    KC_DECLARE_EXCEPTION(Corrupt);
    Corrupt() = default;
    explicit Corrupt(std::wstring why) : kcExceptionWithString(std::move(why)) {}
    void message_(std::wostream& out) const override;
  };
  class ValueOutOfRange : public kcException {
   public:
    KC_DECLARE_EXCEPTION(ValueOutOfRange);
    void message_(std::wostream& out) const override;
  };
  // A file could not be opened, read or written.
  class FileError : public kcExceptionWithString {
   public:
    KC_DECLARE_EXCEPTION(FileError);
    FileError() = default;
    explicit FileError(std::wstring why) : kcExceptionWithString(std::move(why)) {}
    void message_(std::wostream& out) const override;
  };

  explicit kcArchive(Mode mode);
  kcArchive(const kcArchive&) = delete;
  kcArchive& operator=(const kcArchive&) = delete;
  virtual ~kcArchive();

  [[nodiscard]] bool isStoring() const noexcept { return mode_ == Mode::store; }
  [[nodiscard]] bool isLoading() const noexcept { return mode_ == Mode::load; }

  // Moves n raw bytes in the archive's direction; loading past the end is Corrupt.
  void rawTransfer(void* data, std::size_t n) {
    if (isStoring())
      writer_.putBytes(data, n);
    else if (!reader_.readBytes(data, n))
      throwShort_();
  }
  // One scalar, little-endian.
  template <kcWireScalar T>
  void transferScalar(T& value) {
    if (isStoring())
      writer_.put(value);
    else if (!reader_.read(value))
      throwShort_();
  }
  // A run of scalars, with one bounds test for all of them when loading.
  template <kcWireScalar T, std::size_t N>
  void transferScalars(T (&values)[N]) {
    if (isStoring()) {
      std::uint8_t* at = writer_.grow(N * sizeof(T));
      for (std::size_t i = 0; i < N; ++i) kfStoreLE(at + i * sizeof(T), values[i]);
      return;
    }
    auto bytes = reader_.take(N * sizeof(T));
    if (!bytes) throwShort_();
    for (std::size_t i = 0; i < N; ++i) values[i] = kfLoadLE<T>(bytes->data() + i * sizeof(T));
  }
  // Loading: bytes not yet read. Storing: 0.
  [[nodiscard]] std::uint64_t remaining() const noexcept { return isLoading() ? reader_.remaining() : 0; }
  [[nodiscard]] bool atEnd() const noexcept { return remaining() == 0; }

  // Loading: throws Corrupt unless count elements of at least minSize bytes
  // each could still follow.
  void checkCount(std::uint64_t count, std::uint64_t minSize = 1) const;

  // Persistent objects held by handles (a handle must hold p when storing).
  // Storing writes p (shared ones once, then by id); loading replaces p by a
  // new or shared object.
  void transferShared(kcPersistent*& p);
  // An object owned by the caller: stored or loaded whole, never shared.
  void transferObject(kcPersistent*& p);

  // One transfer the archive's user started, or one nested in it. At the top
  // level a store that ends by an exception is taken back. Every transfer of
  // an object, handle or vector opens one; a user may open one around a group
  // of values that must be stored whole or not at all.
  class Transfer {
   public:
    explicit Transfer(kcArchive& ar);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

   private:
    kcArchive& ar_;
    std::size_t visits_;
    bool top_;
    // Top-level stores: where to go back to, and the exceptions in flight at the start.
    std::size_t bytes_ = 0;
    std::size_t shared_ = 0;
    int uncaught_ = 0;
  };

 protected:
  // Storing: what has been written and not yet handed on (exactly, once
  // finishWriting_() has run). Loading: all the data; a subclass that fills it
  // later calls startLoading_().
  mutable std::vector<std::uint8_t> data_;
  mutable kcByteWriter writer_{data_};
  void finishWriting_() const {
    if (isStoring()) writer_.finish();
  }
  void startLoading_() noexcept { reader_ = kcByteReader(data_); }
  // Storing: called after each complete top-level transfer, when nothing can
  // be taken back any more; a file archive writes data_ out here.
  virtual void settled_() {}

 private:
  friend class kcPersistent;
  struct Visit {
    const kcPersistent* object;
    unsigned mark;
  };
  struct Shared {
    kcPersistent* object;  // loading: null while its body is still being read
    kcPtrHandle<kcRepBase> hold;
  };

  [[noreturn]] static void throwShort_();
  [[nodiscard]] bool visited_(const kcPersistent* object, unsigned mark) const noexcept;
  [[nodiscard]] bool inTransfer_(const kcPersistent* object) const noexcept;
  void visit_(const kcPersistent* object, unsigned mark) { visits_.push_back({object, mark}); }
  kcPersistent* loadNew_(bool shared);
  void storeNew_(kcPersistent* p, std::uint8_t tag);
  void rollback_(std::size_t bytes, std::size_t shared) noexcept;

  Mode mode_;
  kcByteReader reader_;
  // Open transfers, and the marks of the objects being transferred.
  int depth_ = 0;
  std::vector<Visit> visits_;
  // Objects given an id, by id - 1; storing also finds them by address.
  std::vector<Shared> shared_;
  std::unordered_map<const kcPersistent*, std::uint32_t> storedIds_;
};

template <class Self, class Body>
void kcPersistent::dispatchOnce_(kcArchive& ar, const Self*, unsigned char current, Body&& body) {
  const unsigned mark = markOf<Self>();
  if (ar.visited_(this, mark)) return;
  auto run = [&] {
    ar.visit_(this, mark);
    unsigned char version = current;
    ar.transferScalar(version);
    body(version);
  };
  // A base of an object already in transfer adds its mark to the object's; the
  // outermost dispatch opens the transfer, and its end clears them all.
  if (ar.inTransfer_(this)) {
    run();
  } else {
    kcArchive::Transfer transfer(ar);
    run();
  }
}

// --- scalars ---

namespace kcArchiveDetail {
// long is stored in 32 bits wherever the platform makes it wider.
template <class Wide, class Narrow>
void transferNarrowed(kcArchive& ar, Wide& value) {
  Narrow narrow{};
  if (ar.isStoring()) {
    if (value < static_cast<Wide>(std::numeric_limits<Narrow>::min()) ||
        value > static_cast<Wide>(std::numeric_limits<Narrow>::max()))
      throw kcArchive::ValueOutOfRange();
    narrow = static_cast<Narrow>(value);
  }
  ar.transferScalar(narrow);
  if (ar.isLoading()) value = static_cast<Wide>(narrow);
}

template <class T>
concept PlainInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, long> &&
                       !std::same_as<T, unsigned long> && !std::same_as<T, wchar_t>;
}  // namespace kcArchiveDetail

kcArchive& operator||(kcArchive& ar, bool& value);
kcArchive& operator||(kcArchive& ar, long& value);
kcArchive& operator||(kcArchive& ar, unsigned long& value);

template <kcArchiveDetail::PlainInteger T>
kcArchive& operator||(kcArchive& ar, T& value) {
  ar.transferScalar(value);
  return ar;
}
template <std::floating_point T>
  requires(sizeof(T) <= 8)
kcArchive& operator||(kcArchive& ar, T& value) {
  ar.transferScalar(value);
  return ar;
}

kcArchive& operator||(kcArchive& ar, std::string& value);
kcArchive& operator||(kcArchive& ar, std::wstring& value);

// --- persistent values and handles ---

template <std::derived_from<kcPersistent> T>
kcArchive& operator||(kcArchive& ar, T& value) {
  value.dispatchSerialize(ar);
  return ar;
}

template <class T>
kcArchive& operator||(kcArchive& ar, kcPtrHandle<T>& handle) {
  kcArchive::Transfer transfer(ar);
  kcPersistent* p = handle.get();
  ar.transferShared(p);
  if (ar.isLoading()) {
    T* typed = dynamic_cast<T*>(p);
    if (p && !typed) throw kcArchive::Corrupt(L"object of the wrong class");
    handle = kcPtrHandle<T>(typed);
  }
  return ar;
}

template <class T>
kcArchive& operator||(kcArchive& ar, kcPtrHandle_const<T>& handle) {
  kcPtrHandle<T> h(const_cast<T*>(handle.get()));
  ar || h;
  if (ar.isLoading()) handle = h;
  return ar;
}

// --- vectors ---

namespace kcArchiveDetail {
// The fewest bytes one stored element can take.
template <class T>
constexpr std::uint64_t minStoredSize() {
  if constexpr (std::is_arithmetic_v<T>)
    return std::same_as<T, long> || std::same_as<T, unsigned long> ? 4 : sizeof(T);
  else
    return 1;
}
}  // namespace kcArchiveDetail

template <class T, class A>
kcArchive& operator||(kcArchive& ar, std::vector<T, A>& values) {
  kcArchive::Transfer transfer(ar);
  std::uint32_t count = 0;
  if (ar.isStoring()) {
    if (values.size() > UINT32_MAX) throw kcArchive::ValueOutOfRange();
    count = static_cast<std::uint32_t>(values.size());
  }
  ar || count;
  if (ar.isStoring()) {
    for (std::uint32_t i = 0; i < count; ++i) {
      if constexpr (std::same_as<T, bool>) {
        bool b = values[i];
        ar || b;
      } else {
        ar || values[i];
      }
    }
    return ar;
  }
  ar.checkCount(count, kcArchiveDetail::minStoredSize<T>());
  std::vector<T, A> loaded;
  // Only scalars have a known stored size; other elements grow the vector as
  // their bytes arrive, so memory never runs ahead of the data.
  if constexpr (std::is_arithmetic_v<T>) loaded.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    T element{};  // a fresh object each time: its visited marks are clear
    ar || element;
    loaded.push_back(std::move(element));
  }
  values = std::move(loaded);
  return ar;
}

template <class T>
kcArchive& operator<<(kcArchive& ar, const T& value) {
  ar || const_cast<T&>(value);
  return ar;
}
template <class T>
kcArchive& operator>>(kcArchive& ar, T& value) {
  return ar || value;
}

// --- concrete archives ---

// Stores into, or loads from, a byte vector in memory.
class kcMemArchive : public kcArchive {
 public:
  // An archive that stores.
  kcMemArchive();
  // An archive that loads the given bytes.
  explicit kcMemArchive(std::vector<std::uint8_t> bytes);

  // Storing: the bytes stored so far. Loading: all the bytes given.
  [[nodiscard]] const std::vector<std::uint8_t>& bytes() const {
    finishWriting_();
    return data_;
  }
};

// Stores into, or loads from, a file. A file that cannot be opened, read or
// written throws kcArchive::FileError. Loading reads the whole file at once;
// storing gathers bytes in memory and writes them out after a top-level
// transfer once a block has gathered, and on flush() and destruction.
class kcFileArchive : public kcArchive {
 public:
  kcFileArchive(const std::string& path, kcArchive::Mode mode);
  ~kcFileArchive() override;

  // Storing: writes out what was stored.
  void flush();

 protected:
  void settled_() override;

 private:
  void writeOut_();

  std::string path_;
  std::fstream file_;
};
