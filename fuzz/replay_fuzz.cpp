// Bytes taken as a sketch and played on a recording tablet with trace
// devices on both layers, on the layer the first byte chooses: a clean
// replay, or kcUIError::InvalidUISketch and the tablet as it was; the replay
// recorded as one nested record that parses again. Anything else is a bug.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "dispc/sketchop.h"
#include "dispc/tablet.h"
#include "dispc/tracescope.h"
#include "dispc/uierror.h"

namespace {
[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "replay_fuzz: %s\n", what);
  std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto layer = static_cast<kcUITablet::Layers>(data[0] % 3);
  kcUISketch s;
  s.append(data + 1, static_cast<long>(size - 1));
  kcUITraceScope main;
  kcUITraceScope overlay;
  kcUITablet tablet(&main, &overlay);
  tablet.scopeRect(kcUIRect(0, 0, 640, 480));
  tablet.recordOn() = true;
  try {
    tablet.draw(s, kcPoint(3.5, -2.25), layer);
  } catch (const kcUIError::InvalidUISketch&) {
    if (tablet.recordOn().depth() != 1 || tablet.screenUpdatesLocked(kcUITablet::bothLayers) ||
        !tablet.sketch().isNull())
      fail("a refused replay changed the tablet");
    return 0;
  }
  if (s.isNull()) return 0;
  kcUISketchParser records(tablet.sketch());
  if (!records.next() || records.header().opcode() != 15 || records.next())
    fail("a replay was not recorded as one nested sketch");
  return 0;
}
