// Reads arbitrary bytes as a dispc file (kfLoadBytes): the magic, version and
// kind, then a sketch, a graphic list, an SMD poly or an SMD model in its
// archive form. Loading may only fail with a kcException; a crash, a
// sanitizer report, a leak or another exception is a bug.
//
// A file that loads is saved again; those bytes must load, and save to the
// same bytes once more, so that what an application stores after reading a
// file is what it reads next time.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include "dispc/dispcfile.h"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "dispcfile_fuzz: %s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kcDispcFileContent content;
  try {
    content = kfLoadBytes(std::span<const std::uint8_t>(data, size));
  } catch (const kcException&) {
    return 0;
  }
  std::vector<std::uint8_t> saved;
  try {
    saved = kfSaveBytes(content);
  } catch (const kcException&) {
    return 0;  // a loaded value may still be one that cannot be stored
  }
  try {
    const kcDispcFileContent again = kfLoadBytes(saved);
    if (again.index() != content.index()) fail("a saved file comes back as another kind");
    if (kfSaveBytes(again) != saved) fail("saving a reloaded file gives different bytes");
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s\n", e.what());
    fail("a file saved after loading cannot be loaded again");
  }
  return 0;
}
