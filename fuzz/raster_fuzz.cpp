// A poly built by a run of edits (fuzz/poly_edits.h), then drawn under
// transforms read from the remaining bytes into small windows of a larger
// image: no pel outside the window may change, and every pel set must lie
// within a pel of the outline's bounding box under the same transform.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/poly_edits.h"

namespace {

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "raster_fuzz: %s\n", what.c_str());
  std::abort();
}

// The guard band around the window, in pels.
constexpr long kGuard = 8;

void drawAndCheck(const kcSMDGDPoly& p, polyedits::Reader& in) {
  // A transform of entries in [-4, 4) and a move within the window's reach.
  // (Each read in its own statement, in a fixed order.)
  double e[6];
  for (int k = 0; k < 4; ++k) e[k] = static_cast<std::int8_t>(in.byte()) / 32.0;
  for (int k = 4; k < 6; ++k) e[k] = in.coordinate() / 2 + 16;
  const kcXform<2> x(kcMatrix<2>(e[0], e[1], e[2], e[3]), kcVector<2>(e[4], e[5]));
  const long w = 1 + in.byte() % 32;
  const long h = 1 + in.byte() % 32;
  const bool fillClosedOnly = (in.byte() & 1) != 0;
  kcPelBuffer<unsigned char> image(w + 2 * kGuard, h + 2 * kGuard);
  kcPelBuffer<unsigned char> window = image.window(kGuard, kGuard, w, h);
  // The window's pels are image pels less the guard; the client maps into the
  // image through x.
  kcSMDGDPolyPrivate::drawSynthetic(p, x, window, 200, fillClosedOnly, true);
  // The box of the mapped outline; a singular transform, which the box
  // refuses (kcMathError::Singular), flattens the outline onto a line, and
  // then only the window is checked.
  bool boxed = false;
  kcRect box;
  try {
    if (!p.vertices().empty()) box = p.boundingBox(x);
    boxed = true;
  } catch (const kcException&) {
  }
  // A pel, and what a box held as corner and size loses to rounding far
  // from the origin (edits can scale an outline to 1e17 and beyond).
  const double far =
      std::max({std::fabs(box.xMin()), std::fabs(box.xMax()), std::fabs(box.yMin()), std::fabs(box.yMax())});
  const double margin = 1.0 + 1e-12 * (std::isfinite(far) ? far : 0.0);
  for (long y = 0; y < image.height(); ++y)
    for (long xx = 0; xx < image.width(); ++xx) {
      if (image.get(xx, y) == 0) continue;
      if (xx < kGuard || y < kGuard || xx >= kGuard + w || y >= kGuard + h)
        fail("a pel outside the window was written");
      if (!boxed) continue;
      if (p.vertices().empty() || xx < std::floor(box.xMin()) - margin || xx > box.xMax() + margin ||
          y < std::floor(box.yMin()) - margin || y > box.yMax() + margin)
        fail("a pel was set away from the outline's bounding box");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  polyedits::Reader in({data, size});
  kcSMDGDPoly p(L"fuzz");
  polyedits::run(in, p, in.byte() % 24, fail);
  for (int k = 0; k < 4 && !in.done(); ++k) drawAndCheck(p, in);
  return 0;
}
