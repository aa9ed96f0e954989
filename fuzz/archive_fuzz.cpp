// Loads arbitrary bytes through kcMemArchive in the forms a reader of stored
// data meets: a handle to a shared persistent object, a vector of strings, a
// wide string and an owned object. Loading may only fail with a kcException;
// anything else (a crash, a sanitizer report, a leak, another exception
// type) is a bug.
//
// The handle is a kcPtrHandle<kc2XformBase>, but the archive makes whatever
// registered class the data names and loads its body before the handle
// checks the class, so every class's loader is reached through it.
//
// Whatever loads is also stored again, reloaded and stored once more: the two
// stored forms must be equal, so a class whose loader and storer disagree on a
// field shows up even when nothing crashes.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "foundation/xform.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Handle = kcPtrHandle<kc2XformBase>;

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "archive_fuzz: %s\n", what);
  std::abort();
}

// An owned object as transferObject gives it back; deletes it at the end.
struct Owned {
  kcPersistent* p = nullptr;
  Owned() = default;
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { delete p; }
};

void transfer(kcArchive& ar, Owned& value) { ar.transferObject(value.p); }
template <class T>
void transfer(kcArchive& ar, T& value) {
  ar || value;
}

template <class T>
Bytes store(T& value) {
  kcMemArchive ar;
  transfer(ar, value);
  return ar.bytes();
}

// Store, reload, store again: both stored forms must match, and the reload
// must read exactly what was stored.
template <class T>
void checkRoundTrip(T& loaded) {
  Bytes first;
  try {
    first = store(loaded);
  } catch (const kcException&) {
    return;  // a loaded value may still be one that cannot be stored
  }
  T again{};
  try {
    kcMemArchive in(first);
    transfer(in, again);
    if (!in.atEnd()) fail("reloading a stored value left bytes unread");
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s\n", e.what());
    fail("a value stored after loading cannot be loaded again");
  }
  if (store(again) != first) fail("storing a reloaded value gives different bytes");
}

// Loads one value of type T from the whole input and checks its round trip.
template <class T>
void loadAlone(const Bytes& input) {
  try {
    kcMemArchive ar(input);
    T value{};
    transfer(ar, value);
    checkRoundTrip(value);
  } catch (const kcException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Referencing the display-core library keeps it loaded, so its classes
  // are registered and reachable by name.
  static const char* const version = kfDispcVersion();
  (void)version;

  const Bytes input(data, data + size);
  loadAlone<Handle>(input);
  loadAlone<std::vector<std::string>>(input);
  loadAlone<std::wstring>(input);
  loadAlone<Owned>(input);

  // All four in one archive, so later values meet the object ids of earlier ones.
  try {
    kcMemArchive ar(input);
    Handle handle;
    std::vector<std::string> strings;
    std::wstring text;
    Owned object;
    ar || handle || strings || text;
    ar.transferObject(object.p);
  } catch (const kcException&) {
  }
  return 0;
}
