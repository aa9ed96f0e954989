// Writes the seed corpora of sketch_fuzz and sketch_archive_fuzz: a sketch of
// one record for every opcode, one of every opcode with properties records
// between them, and their archives (version 1, and version 0 holding the
// raw stream).
//   sketch_fuzz_seeds <sketch folder> <sketch archive folder>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "foundation/archive.h"
#include "fuzz/sketch_samples.h"

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

void write(const fs::path& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    std::exit(1);
  }
}

Bytes bytesOf(const kcUISketch& s) { return Bytes(s.bytes().begin(), s.bytes().end()); }

// Version 1 when the sketch can be archived, else nothing.
Bytes archived(kcUISketch s) {
  kcMemArchive ar;
  try {
    ar || s;
  } catch (const kcException&) {
    return {};
  }
  return ar.bytes();
}

// Version 0: the byte length and the raw stream.
Bytes archivedRaw(const kcUISketch& s) {
  Bytes b{0};
  const auto n = static_cast<std::uint32_t>(s.length());
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(n >> (8 * i)));
  const Bytes raw = bytesOf(s);
  b.insert(b.end(), raw.begin(), raw.end());
  return b;
}

void writeBoth(const fs::path& sketches, const fs::path& archives, const std::string& name,
               const kcUISketch& s) {
  write(sketches / name, bytesOf(s));
  const Bytes v1 = archived(s);
  if (!v1.empty()) write(archives / (name + "_v1"), v1);
  write(archives / (name + "_v0"), archivedRaw(s));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: sketch_fuzz_seeds <sketch folder> <sketch archive folder>\n");
    return 2;
  }
  const fs::path sketches = argv[1];
  const fs::path archives = argv[2];
  int written = 0;
  for (const kcUISketchOps::Entry& e : kcUISketchOps::kTable) {
    kcUISketch s;
    sketchsamples::appendSample(s, e.opcode);
    writeBoth(sketches, archives, "op" + std::to_string(e.opcode) + "_" + e.name, s);
    ++written;
  }
  writeBoth(sketches, archives, "every_opcode", sketchsamples::everyOpcode());
  std::printf("wrote %d seeds of each kind\n", written + 1);
  return 0;
}
