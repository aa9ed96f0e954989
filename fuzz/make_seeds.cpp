// Writes the seed corpus of archive_fuzz, each input the two bytes that
// choose what the target loads, then its archive form: the body of a default
// object of every registered persistent class (and of a few richer ones:
// polys with roundings and arcs, a model), valid archives of each of the
// other forms (an owned object and a shared handle of every class among
// them), and a few archives cut short. The choice of a class is its place
// among the sorted names, so the seeds are written again when classes are
// added.
//   archive_fuzz_seeds <folder>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "dispc/glist.h"
#include "dispc/smd/model.h"
#include "foundation/xform.h"

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

fs::path gFolder;
int gWritten = 0;
std::vector<std::string> gClasses;

// The two bytes that choose a class, or a form after the classes (in the
// target's order: handle, strings, wide string, owned object, sequence).
enum Form { kHandle, kStrings, kWString, kOwned, kSequence, kGraphicList };
Bytes choice(std::size_t k) {
  return {static_cast<std::uint8_t>(k & 0xff), static_cast<std::uint8_t>(k >> 8)};
}
Bytes form(Form f) { return choice(gClasses.size() + f); }
Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

void write(const std::string& name, const Bytes& bytes) {
  std::ofstream out(gFolder / name, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "cannot write %s\n", (gFolder / name).c_str());
    std::exit(1);
  }
  ++gWritten;
}

// A valid seed and, for the interesting ones, the same seed cut in half (the
// choice kept).
void writeSeed(const std::string& name, const Bytes& bytes, bool alsoTruncated) {
  write(name, bytes);
  if (alsoTruncated && bytes.size() > 3)
    write(name + "_cut", Bytes(bytes.begin(), bytes.begin() + 2 + (bytes.size() - 2) / 2));
}

// Class names hold "::" and "<>"; file names keep letters, digits and '_'.
std::string fileName(const std::string& className) {
  std::string out;
  for (char c : className) out += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return out;
}

template <class T>
Bytes stored(T& value) {
  kcMemArchive ar;
  ar || value;
  return ar.bytes();
}

Bytes storedObject(kcPersistent* p) {
  kcMemArchive ar;
  ar.transferObject(p);
  return ar.bytes();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <folder>\n", argv[0]);
    return 2;
  }
  gFolder = argv[1];
  fs::create_directories(gFolder);
  std::printf("dispc %s\n", kfDispcVersion());
  gClasses = kcPersistenceRegistry::names();

  // --- each form alone ---
  kcPtrHandle<kc2XformBase> xform(new kc2XformLinear(
      kcXform<2>(kcMatrix<2>::rotation(kcRadian(kcDegree(30.0))), kcVector<2>(3.5, -2.0))));
  writeSeed("handle_xform", form(kHandle) + stored(xform), true);
  kcPtrHandle<kc2XformBase> null;
  writeSeed("handle_null", form(kHandle) + stored(null), false);

  std::vector<std::string> strings{"alpha", "", "gamma delta", std::string(1, '\0')};
  writeSeed("strings", form(kStrings) + stored(strings), true);

  std::wstring text = L"wide \u00e9\u2713 \U0001F600 end";
  writeSeed("wstring", form(kWString) + stored(text), true);

  kcExceptionWithString error(L"lens cap still on");
  writeSeed("object_exception", form(kOwned) + storedObject(&error), true);

  // --- all four in one archive, as the target's last pass reads them ---
  {
    kcMemArchive ar;
    ar || xform || strings || text;
    kcPersistent* object = &error;
    ar.transferObject(object);
    writeSeed("sequence", form(kSequence) + ar.bytes(), true);
  }

  // --- every registered class: its body, and as an owned and a shared object ---
  for (std::size_t k = 0; k < gClasses.size(); ++k) {
    const std::string& name = gClasses[k];
    std::unique_ptr<kcPersistent> object(kcPersistenceRegistry::make(name));
    if (!object) continue;
    try {
      kcMemArchive body;
      body || *object;
      writeSeed("body_" + fileName(name), choice(k) + body.bytes(), false);
      writeSeed("class_" + fileName(name), form(kOwned) + storedObject(object.get()), false);
      if (auto* rep = dynamic_cast<kcRepBase*>(object.get())) {
        // The handle takes the object over and deletes it with the last reference.
        object.release();
        kcPtrHandle<kcRepBase> handle(rep);
        kcMemArchive ar;
        kcPersistent* shared = dynamic_cast<kcPersistent*>(rep);
        ar.transferShared(shared);
        writeSeed("shared_" + fileName(name), form(kHandle) + ar.bytes(), false);
      }
    } catch (const kcException& e) {
      std::fprintf(stderr, "skipped %s: %s\n", name.c_str(), e.what());
    }
  }
  // --- richer bodies: a rounded pad with an arc, an open lead, a model ---
  auto classIndex = [](const std::string& name) {
    for (std::size_t k = 0; k < gClasses.size(); ++k)
      if (gClasses[k] == name) return k;
    std::fprintf(stderr, "no class %s\n", name.c_str());
    std::exit(1);
  };
  using V = kcVector<2>;
  kcSMDGDPoly pad(L"pad");
  pad << kcSMDGDPolyVertex(V(0, 0), 0.5, 0.5, 0.5, 1) << kcSMDGDPolyVertex(V(4, 0), 0.5, 0.5, 0.5, 1)
      << kcSMDGDPolyVertex(V(4, 2), 0.5, kcDegree(60), 0.5, 0.5, 1, kcDimTol())
      << kcSMDGDPolyVertex(V(0, 2), 0.5, 0.5, 0.5, 2);
  pad.close();
  kcSMDGDPoly lead(L"lead");
  lead << kcSMDGDPolyVertex(V(0, 0), 0.5, 0.5, -1) << kcSMDGDPolyVertex(V(3, 0), -1.0, 0.5, 0.5, -1)
       << kcSMDGDPolyVertex(V(3, 3), 0.5, 0.5, -1);
  kcSMDGDModel model(L"part");
  model << pad << lead;
  const std::size_t polyClass = classIndex("kcSMDGDPoly"), modelClass = classIndex("kcSMDGDModel");
  writeSeed("body_pad", choice(polyClass) + stored(pad), true);
  writeSeed("body_lead", choice(polyClass) + stored(lead), true);
  writeSeed("body_model", choice(modelClass) + stored(model), true);

  // --- graphics: a list of every kind with a nested group sharing a member ---
  const kcGraphicProps props(kcColor(10, 20, 30), 2, kcGraphicProps::penDash, true);
  kcGraphicList list;
  list.append(kcGraphic::makeShapeGraphic(kcCircle(V(1, 2), 3), props));
  list.append(kcGraphic::makeShapeGraphic(kcGenPoly(pad), props));
  list.append(kfMakeHandle<kcGraphicText>(L"pin 1", kcPoint(4, 5), kcColor::red, kcColor::black,
                                          kcUIFormat(1, kcUIFormat::center), V(2.5, -1)));
  list.append(kfMakeHandle<kcGraphicCross>(kcCross(V(3, 3), 2), props));
  list.append(kfMakeHandle<kcGraphicPointIcon>(kcPoint(7, 8), kcColor::green));
  list.append(kfMakeHandle<kcGraphicEllipseAnnulusSection>(
      kcEllipseAnnulusSection(kcEllipseAnnulus(kcEllipse2(4, 2, kcRadian(0.5), V(0, 0)), 0.5), kcRadian(0.25),
                              kcRadian(2.0)),
      kcColor::blue, true, false));
  auto inner = kfMakeHandle<kcGraphicGroup>();
  inner->items(std::vector<kcGraphicPtr>{list.items()[0], kcGraphicPtr(), list.items()[2]});
  auto outer = kfMakeHandle<kcGraphicGroup>();
  outer->items(std::vector<kcGraphicPtr>{inner, list.items()[0]});
  list.append(outer);
  list.append(kcGraphicPtr());
  writeSeed("graphic_list", form(kGraphicList) + stored(list), true);
  writeSeed("body_group", choice(classIndex("kcGraphicGroup")) + stored(*outer), true);
  // A group whose one member refers back to the group while it loads (the
  // count of an empty group's items, the last four bytes before its null
  // flag, made 1, then a back-reference to object 1).
  {
    kcGraphicPtr empty = kfMakeHandle<kcGraphicGroup>();
    Bytes bytes = stored(empty);
    const std::uint8_t isNull = bytes.back();
    bytes.resize(bytes.size() - 5);
    bytes = bytes + Bytes{1, 0, 0, 0, 2, 1, 0, 0, 0, isNull};
    writeSeed("handle_group_holding_itself", form(kHandle) + bytes, false);
  }
  std::printf("wrote %d seeds to %s\n", gWritten, gFolder.c_str());
  return 0;
}
