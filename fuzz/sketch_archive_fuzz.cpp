// Bytes loaded as the archive of a sketch. Anything but a kcException is a
// bug; a sketch that loads must parse whole, and (unless it nests a sketch)
// store and load back the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "dispc/sketchop.h"
#include "dispc/uierror.h"
#include "foundation/archive.h"

namespace {
[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "sketch_archive_fuzz: %s\n", what);
  std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kcUISketch s;
  try {
    kcMemArchive in(std::vector<std::uint8_t>(data, data + size));
    in || s;
  } catch (const kcException&) {
    if (!s.isNull()) fail("a failed load changed the sketch");
    return 0;
  }
  try {
    for (kcUISketchParser records(s); records.next();) {
    }
  } catch (const kcUIError::InvalidUISketch&) {
    fail("a loaded sketch does not parse");
  }
  kcMemArchive out;
  try {
    out || s;
  } catch (const kcUIError::NotImplemented&) {
    return 0;  // a nested sketch, which a raw stream can hold
  }
  kcMemArchive in(out.bytes());
  kcUISketch back;
  in || back;
  if (!(back == s) || !in.atEnd()) fail("a stored sketch loaded back other bytes");
  return 0;
}
