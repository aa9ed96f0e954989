// Writes the seed corpus of archive_fuzz: valid archives of each form the
// target loads, one owned object of every registered persistent class (and a
// shared handle to it where the class is reference counted), and a few
// archives cut short.
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
#include "foundation/xform.h"

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

fs::path gFolder;
int gWritten = 0;

void write(const std::string& name, const Bytes& bytes) {
  std::ofstream out(gFolder / name, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "cannot write %s\n", (gFolder / name).c_str());
    std::exit(1);
  }
  ++gWritten;
}

// A valid seed and, for the interesting ones, the same seed cut in half.
void writeSeed(const std::string& name, const Bytes& bytes, bool alsoTruncated) {
  write(name, bytes);
  if (alsoTruncated && bytes.size() > 1)
    write(name + "_cut", Bytes(bytes.begin(), bytes.begin() + bytes.size() / 2));
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

  // --- each form alone ---
  kcPtrHandle<kc2XformBase> xform(new kc2XformLinear(
      kcXform<2>(kcMatrix<2>::rotation(kcRadian(kcDegree(30.0))), kcVector<2>(3.5, -2.0))));
  writeSeed("handle_xform", stored(xform), true);
  kcPtrHandle<kc2XformBase> null;
  writeSeed("handle_null", stored(null), false);

  std::vector<std::string> strings{"alpha", "", "gamma delta", std::string(1, '\0')};
  writeSeed("strings", stored(strings), true);

  std::wstring text = L"wide \u00e9\u2713 \U0001F600 end";
  writeSeed("wstring", stored(text), true);

  kcExceptionWithString error(L"lens cap still on");
  writeSeed("object_exception", storedObject(&error), true);

  // --- all four in one archive, as the target's last pass reads them ---
  {
    kcMemArchive ar;
    ar || xform || strings || text;
    kcPersistent* object = &error;
    ar.transferObject(object);
    writeSeed("sequence", ar.bytes(), true);
  }

  // --- one default object of every registered class ---
  for (const std::string& name : kcPersistenceRegistry::names()) {
    std::unique_ptr<kcPersistent> object(kcPersistenceRegistry::make(name));
    if (!object) continue;
    try {
      writeSeed("class_" + fileName(name), storedObject(object.get()), false);
      if (auto* rep = dynamic_cast<kcRepBase*>(object.get())) {
        // The handle takes the object over and deletes it with the last reference.
        object.release();
        kcPtrHandle<kcRepBase> handle(rep);
        kcMemArchive ar;
        kcPersistent* shared = dynamic_cast<kcPersistent*>(rep);
        ar.transferShared(shared);
        writeSeed("shared_" + fileName(name), ar.bytes(), false);
      }
    } catch (const kcException& e) {
      std::fprintf(stderr, "skipped %s: %s\n", name.c_str(), e.what());
    }
  }
  std::printf("wrote %d seeds to %s\n", gWritten, gFolder.c_str());
  return 0;
}
