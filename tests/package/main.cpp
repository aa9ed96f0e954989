// Stores a value and an exception object through the installed library and
// reads them back, and draws a rectangle through the installed Cairo device;
// exits 0 only when both come back equal, the rectangle's pels are lit, and
// the loaded library is the version the package metadata (CMake config or
// pkg-config file) claims.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "foundation/foundation.h"
#include "scopes/cairo/cairoscope.h"

#ifndef DISPC_EXPECTED_VERSION
#error "build with -DDISPC_EXPECTED_VERSION=\"<version the package claims>\""
#endif

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
  kcUICairoScope device(8, 8);
  kcUITablet tablet(&device, &device.overlay());
  tablet.draw(kcRect(kcVector<2>(2, 2), kcVector<2>(4, 4)),
              kcGraphicProps(kcColor::red, 1, kcGraphicProps::penSolid, true), kcUITablet::mainLayer);
  if (device.pel(3, 3) != 0xff0000 || device.pel(0, 0) != 0) {
    std::fprintf(stderr, "package test: the Cairo device did not draw\n");
    return 1;
  }
  if (std::strcmp(kfDispcVersion(), DISPC_EXPECTED_VERSION) != 0) {
    std::fprintf(stderr, "package test: library version %s, package says %s\n", kfDispcVersion(),
                 DISPC_EXPECTED_VERSION);
    return 1;
  }
  std::printf("dispc %s: %zu archive bytes round-tripped\n", kfDispcVersion(), out.bytes().size());
  return 0;
}
