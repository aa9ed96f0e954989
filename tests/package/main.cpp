// Stores a value and an exception object through the installed library and
// reads them back; exits 0 only when both come back equal.
#include <cstdio>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "foundation/foundation.h"

int main() {
  std::vector<double> values{1.5, -2.25, 1e300};
  kcExceptionWithString error(L"stored through the installed library");

  kcMemArchive out;
  out || values || error;

  std::vector<double> valuesBack;
  kcExceptionWithString errorBack;
  kcMemArchive in(out.bytes());
  in || valuesBack || errorBack;

  if (valuesBack != values || errorBack.text() != error.text() || !in.atEnd()) {
    std::fprintf(stderr, "package test: the archive did not round-trip\n");
    return 1;
  }
  std::printf("dispc %s: %zu archive bytes round-tripped\n", kfDispcVersion(), out.bytes().size());
  return 0;
}
