// Bytes read as a sketch stream, record by record. Each record that parses
// must write back the very bytes it was read from; a stream that parses
// whole must dump, and (unless it nests a sketch, which is not archived)
// store into an archive and load back the same bytes. Anything but
// kcUIError::InvalidUISketch from a malformed stream is a bug.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "dispc/sketchop.h"
#include "dispc/uierror.h"
#include "foundation/archive.h"

namespace {
[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "sketch_fuzz: %s\n", what);
  std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kcUISketch s;
  s.append(data, static_cast<long>(size));
  kcUISketch again;
  try {
    for (kcUISketchParser records(s); records.next();) {
      const long before = again.length();
      records.header().populateSketch(again);
      records.data().populateSketch(again);
      const long n = records.offset() - records.recordOffset();
      if (again.length() - before != n ||
          std::memcmp(again.data() + before, s.data() + records.recordOffset(),
                      static_cast<std::size_t>(n)) != 0)
        fail("a record wrote back other bytes than it was read from");
    }
  } catch (const kcUIError::InvalidUISketch&) {
    return 0;
  }
  std::ostringstream dump;
  kfDumpUISketch(s, dump);
  kcMemArchive out;
  try {
    out || s;
  } catch (const kcUIError::NotImplemented&) {
    return 0;  // a nested sketch
  }
  kcMemArchive in(out.bytes());
  kcUISketch back;
  in || back;
  if (!(back == s) || !in.atEnd()) fail("a stored sketch loaded back other bytes");
  return 0;
}
