// Loads arbitrary bytes through kcMemArchive. The first two bytes (little
// endian) choose what is loaded: every class of the persistence registry in
// turn (sorted by name), its archive form (the body its dispatchSerialize
// reads) taken from the rest of the input; then the forms a reader of stored
// data meets: a handle to a shared persistent object, a vector of strings, a
// wide string, an owned object, all four in one archive, and a graphic list.
// Loading may only
// fail with a kcException; anything else (a crash, a sanitizer report, a
// leak, another exception type) is a bug.
//
// Whatever loads is also stored again, reloaded and stored once more: the two
// stored forms must be equal, so a class whose loader and storer disagree on a
// field shows up even when nothing crashes. A poly or a model that loads must
// validate whole and equal its reload; a graphic that loads is drawn, mapped
// and measured, where only a kcException may stop it.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "dispc/glist.h"
#include "dispc/smd/model.h"
#include "dispc/smd/polyprivate.h"
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
void transfer(kcArchive& ar, kcGraphicList& value) { ar || value; }
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

// A loaded poly validates whole.
void checkPoly(const kcSMDGDPoly& p) {
  try {
    (void)kcSMDGDPolyPrivate::validated(p);
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s\n", e.what());
    fail("a loaded poly does not validate");
  }
}

// What a program does with graphics it loaded: draw them on a device, map
// and measure them.
void use(const kcGraphicList& list) {
  kcUITraceScope device;
  kcUITablet tablet(&device);
  tablet.recordOn() = true;
  const kcXform<2> turn(kcMatrix<2>(0.0, -2.0, 2.0, 0.0), kcVector<2>(3.0, 4.0));
  for (const kcGraphicPtr& g : list.items()) {
    if (!g) continue;
    try {
      kcGraphicList one;
      one.append(g);
      one.draw(tablet, kcUITablet::mainLayer);
      (void)g->encloseRect();
      (void)g->distToPoint(kcVector<2>(1.0, 2.0));
      (void)g->map(turn);
    } catch (const kcException&) {
    }
  }
}

// The body of a new object of the named class, loaded from the input; then
// stored, reloaded into another new object and stored again.
void loadClass(const std::string& name, const Bytes& input) {
  std::unique_ptr<kcPersistent> object(kcPersistenceRegistry::make(name));
  if (!object) fail("a registered class makes no object");
  try {
    kcMemArchive ar(input);
    ar || *object;
  } catch (const kcException&) {
    return;
  }
  Bytes first;
  try {
    kcMemArchive out;
    out || *object;
    first = out.bytes();
  } catch (const kcException&) {
    return;  // a loaded value may still be one that cannot be stored
  }
  std::unique_ptr<kcPersistent> again(kcPersistenceRegistry::make(name));
  try {
    kcMemArchive in(first);
    in || *again;
    if (!in.atEnd()) fail("reloading a stored object left bytes unread");
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), e.what());
    fail("an object stored after loading cannot be loaded again");
  }
  kcMemArchive out;
  out || *again;
  if (out.bytes() != first) fail("storing a reloaded object gives different bytes");
  if (const auto* poly = dynamic_cast<const kcSMDGDPoly*>(object.get())) {
    checkPoly(*poly);
    if (!(*poly == dynamic_cast<const kcSMDGDPoly&>(*again))) fail("a reloaded poly differs");
  }
  if (const auto* model = dynamic_cast<const kcSMDGDModel*>(object.get())) {
    for (const kcSMDGDPoly& p : model->polys()) checkPoly(p);
    if (!(*model == dynamic_cast<const kcSMDGDModel&>(*again))) fail("a reloaded model differs");
  }
  if (auto* graphic = dynamic_cast<kcGraphic*>(object.get())) {
    // The object stays the unique_ptr's: the reference taken here is never
    // given back, so the list's handle cannot delete it.
    graphic->addRef_();
    kcGraphicList list;
    list.append(kcGraphicPtr(graphic));
    use(list);
  }
}

// The forms after the classes.
enum Form { kHandle, kStrings, kWString, kOwned, kSequence, kGraphicList, kForms };

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Referencing the display-core library keeps it loaded, so its classes
  // are registered and reachable by name.
  static const std::vector<std::string> classes = [] {
    (void)kfDispcVersion();
    return kcPersistenceRegistry::names();
  }();
  if (size < 2) return 0;
  const std::size_t choice = (data[0] | data[1] << 8) % (classes.size() + kForms);
  const Bytes input(data + 2, data + size);
  if (choice < classes.size()) {
    loadClass(classes[choice], input);
    return 0;
  }
  switch (choice - classes.size()) {
    case kHandle:
      loadAlone<Handle>(input);
      break;
    case kStrings:
      loadAlone<std::vector<std::string>>(input);
      break;
    case kWString:
      loadAlone<std::wstring>(input);
      break;
    case kOwned:
      loadAlone<Owned>(input);
      break;
    case kGraphicList:
      loadAlone<kcGraphicList>(input);
      try {
        kcMemArchive ar(input);
        kcGraphicList list;
        ar || list;
        use(list);
      } catch (const kcException&) {
      }
      break;
    default:
      // All four in one archive, so later values meet the object ids of
      // earlier ones.
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
  }
  return 0;
}
