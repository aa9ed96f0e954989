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
#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

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
  // Identifies this archive's pass for the objects' visited marks.
  [[nodiscard]] std::uint64_t passId() const noexcept { return passId_; }

  // Moves n raw bytes in the archive's direction; loading past the end is Corrupt.
  void rawTransfer(void* data, std::size_t n);
  // Loading: bytes not yet read. Storing: 0.
  [[nodiscard]] virtual std::uint64_t remaining() const noexcept = 0;
  [[nodiscard]] bool atEnd() const noexcept { return remaining() == 0; }

  // Loading: throws Corrupt unless count elements of at least minSize bytes
  // each could still follow.
  void checkCount(std::uint64_t count, std::uint64_t minSize = 1) const;

  // Persistent objects. Storing writes p (shared ones once, then by id);
  // loading replaces p by a new or shared object.
  void transferShared(kcPersistent*& p);
  // An object owned by the caller: stored or loaded whole, never shared.
  void transferObject(kcPersistent*& p);

 protected:
  virtual void write_(const void* data, std::size_t n) = 0;
  // Reads exactly n bytes; the caller has checked remaining().
  virtual void read_(void* data, std::size_t n) = 0;

 private:
  kcPersistent* loadNew_(bool shared);
  void storeNew_(kcPersistent* p, std::uint8_t tag);

  Mode mode_;
  std::uint64_t passId_;
  std::map<const kcPersistent*, std::uint32_t> storedIds_;
  // Loaded shared objects by id - 1; null while the body is still loading.
  std::vector<kcPersistent*> loaded_;
  // Keeps loaded shared objects alive until the archive ends, so a
  // back-reference never finds a freed object.
  std::vector<kcPtrHandle<kcRepBase>> keepAlive_;
};

// --- scalars ---

namespace kcArchiveDetail {
template <class T>
void transferLittleEndian(kcArchive& ar, T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  unsigned char bytes[sizeof(T)];
  if (ar.isStoring()) {
    std::memcpy(bytes, &value, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes, bytes + sizeof(T));
    ar.rawTransfer(bytes, sizeof(T));
  } else {
    ar.rawTransfer(bytes, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes, bytes + sizeof(T));
    std::memcpy(&value, bytes, sizeof(T));
  }
}

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
  transferLittleEndian(ar, narrow);
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
  kcArchiveDetail::transferLittleEndian(ar, value);
  return ar;
}
template <std::floating_point T>
  requires(sizeof(T) <= 8)
kcArchive& operator||(kcArchive& ar, T& value) {
  kcArchiveDetail::transferLittleEndian(ar, value);
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
  kcPersistent* p = handle.get();
  ar.transferShared(p);
  if (ar.isLoading()) {
    T* typed = dynamic_cast<T*>(p);
    if (p && !typed) throw kcArchive::Corrupt(L"object of the wrong class");
    handle = typed;
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

  [[nodiscard]] const std::vector<std::uint8_t>& bytes() const noexcept { return bytes_; }
  [[nodiscard]] std::uint64_t remaining() const noexcept override;

 protected:
  void write_(const void* data, std::size_t n) override;
  void read_(void* data, std::size_t n) override;

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t pos_ = 0;
};

// Stores into, or loads from, a file. A file that cannot be opened, read or
// written throws kcArchive::FileError.
class kcFileArchive : public kcArchive {
 public:
  kcFileArchive(const std::string& path, kcArchive::Mode mode);

  [[nodiscard]] std::uint64_t remaining() const noexcept override;
  // Storing: pushes what was written to the file (also done by the destructor).
  void flush();

 protected:
  void write_(const void* data, std::size_t n) override;
  void read_(void* data, std::size_t n) override;

 private:
  std::string path_;
  std::fstream file_;
  std::uint64_t remaining_ = 0;
};
