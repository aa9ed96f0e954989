// Bytes read as a run of edits on a poly (fuzz/poly_edits.h): a refused edit
// must leave the poly as it was, an accepted one a poly that validates whole,
// with the roundings a whole validation computes, and that can be drawn.
// Anything but a kcException from an edit is a bug.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/poly_edits.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  polyedits::Reader in({data, size});
  kcSMDGDPoly p(L"fuzz");
  polyedits::run(in, p, 64, [](const std::string& what) {
    std::fprintf(stderr, "poly_edit_fuzz: %s\n", what.c_str());
    std::abort();
  });
  return 0;
}
