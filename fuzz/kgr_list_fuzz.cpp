// Reads arbitrary bytes as a graphics-list byte stream (kgr_list_fromBytes)
// and walks the same bytes record by record without validating them first.
// Reading may only fail with a negative code; a crash, a sanitizer report, a
// leak or an exception is a bug.
//
// A stream that is accepted must also be usable: kgr_list_validate passes,
// every record decodes with its own type's decoder, the decoded values build
// the foundation shapes the graphic list makes of them (which may refuse
// degenerate geometry, but only with a kcException), and writing the list
// back gives the input bytes exactly. The display core then reads it both
// ways: as graphics, drawn on a trace device, and drawn on another straight
// from the records; the two traces must agree.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "dispc/glist.h"
#include "dispc/tracescope.h"
#include "foundation/kgr/kgr_list.h"
#include "foundation/shapes/affinerect.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/line.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/linesegset.h"
#include "foundation/shapes/point.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/rect.h"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "kgr_list_fuzz: %s\n", what);
  std::abort();
}

kcVector<2> vec(const kgr_point& p) { return {p.x, p.y}; }
kcXform<2> xform(const kgr_xform& x) { return {kcMatrix<2>(x.a00, x.a01, x.a10, x.a11), {x.tx, x.ty}}; }

// Decodes one record with its type's decoder and builds its shape. Returns
// the decoder's code; shapes may still refuse the values with a kcException.
long decodeAndBuild(const kgr_record& rec) {
  kgr_point a{}, b{};
  long code = KGR_OK;
  try {
    switch (rec.type) {
      case KGR_LINESEG:
        if ((code = kgr_record_lineSeg(&rec, &a, &b)) == KGR_OK) (void)kcLineSeg(vec(a), vec(b));
        break;
      case KGR_LINE:
        if ((code = kgr_record_line(&rec, &a, &b)) == KGR_OK) (void)kcLine(vec(a), vec(b));
        break;
      case KGR_RECT:
        if ((code = kgr_record_rect(&rec, &a, &b)) == KGR_OK) (void)kcRect(vec(a), vec(b));
        break;
      case KGR_GENRECT: {
        kgr_xform x{};
        double rx = 0, ry = 0;
        if ((code = kgr_record_genRect(&rec, &x, &rx, &ry)) == KGR_OK) (void)kcGenRect(xform(x), rx, ry);
        break;
      }
      case KGR_CIRCLE:
      case KGR_ELLIPSE: {
        kmath_ellipse e{};
        // The raw record reads whenever the list validated; its image may not exist.
        code = kgr_record_ellipseImage(&rec, &e);
        if (code == KGR_OK)
          (void)kcEllipse2(e.radiusX, e.radiusY, kcRadian(e.rotation), {e.centreX, e.centreY});
        if (code == KGR_ERR_BAD_GEOMETRY || code == KGR_ERR_NOT_FINITE) code = KGR_OK;
        break;
      }
      case KGR_POLYLINE: {
        std::vector<kgr_point> v;
        if ((code = kgr_record_polyline(&rec, &v)) == KGR_OK) {
          std::vector<kcVector<2>> pts;
          for (const kgr_point& p : v) pts.push_back(vec(p));
          (void)kcPolyline(pts);
        }
        break;
      }
      case KGR_AFFINERECT: {
        kmath_shapeAffineRect r{};
        if ((code = kgr_record_affineRect(&rec, &r)) == KGR_OK) {
          kcVector<2> c0(r.corners[0].x, r.corners[0].y);
          (void)kcAffineRectangle(c0, kcVector<2>(r.corners[1].x, r.corners[1].y) - c0,
                                  kcVector<2>(r.corners[3].x, r.corners[3].y) - c0);
        }
        break;
      }
      case KGR_TEXT: {
        kgr_text t{};
        code = kgr_record_text(&rec, &t);
        break;
      }
      case KGR_LINESEGSET: {
        std::vector<kgr_segment> s;
        if ((code = kgr_record_lineSegSet(&rec, &s)) == KGR_OK) {
          std::vector<kcLineSeg> segs;
          for (const kgr_segment& g : s) segs.emplace_back(vec(g.p1), vec(g.p2));
          (void)kcLineSegSet(segs);
        }
        break;
      }
      default:
        if ((code = kgr_record_point(&rec, &a)) == KGR_OK) (void)kcPoint(vec(a));
        break;
    }
  } catch (const kcException&) {
  }
  return code;
}

// The records as graphics drawn through a list, and drawn straight from the
// records: the same device calls, and the same error where drawing stops
// (a shape too large for the device's numbers). Reading an accepted list as
// graphics must succeed.
void drawBothWays(const kgr_list* list) {
  kcGraphicList graphics;
  try {
    kfGraphicListAppend(graphics, list);
  } catch (const kcException& e) {
    std::fprintf(stderr, "%s\n", e.what());
    fail("an accepted list does not read as graphics");
  }
  const auto drawn = [&](const auto& draw) {
    kcUITraceScope device;
    kcUITablet tablet(&device);
    std::string error;
    try {
      draw(tablet);
    } catch (const kcException& e) {
      error = e.what();
    }
    std::vector<std::string> lines = device.lines();
    lines.push_back(error);
    return lines;
  };
  const auto viaGraphics = drawn([&](kcUITablet& t) { graphics.draw(t, kcUITablet::mainLayer); });
  const auto direct = drawn([&](kcUITablet& t) { kfUITabletDraw(t, list, kcUITablet::mainLayer); });
  if (viaGraphics != direct) fail("graphics and records draw differently");
  // Writing them back may meet a shape the library cannot express (an
  // affine rectangle whose far corner overflows as the library computes it),
  // which it refuses with its code; anything else is a bug.
  kgr_list* out = kgr_list_create();
  try {
    kfGraphicListAppend(out, graphics);
  } catch (const kcFoundationError::LibraryFailure&) {
  } catch (const kcException& e) {
    kgr_list_free(out);
    std::fprintf(stderr, "%s\n", e.what());
    fail("graphics read from a list cannot be written back");
  }
  kgr_list_free(out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The unchecked walk: the records after the count, read as far as they go.
  if (size >= 4) {
    const kgr_list view{0, const_cast<std::uint8_t*>(data + 4), size - 4, 0};
    std::size_t offset = 0;
    kgr_record rec{};
    while (kgr_list_readRecord(&view, &offset, &rec) == KGR_OK) {
      if (offset > view.size) fail("a record reaches past the data");
      (void)decodeAndBuild(rec);
    }
  }

  kgr_list* list = nullptr;
  const long code = kgr_list_fromBytes(data, size, &list);
  if (code >= 0 && !list) fail("success without a list");
  if (code < 0) {
    if (list) fail("a list despite failure");
    return 0;
  }
  if (kgr_list_validate(list) != KGR_OK) fail("an accepted list does not validate");
  std::size_t offset = 0;
  for (std::int32_t i = 0; i < list->count; ++i) {
    kgr_record rec{};
    if (kgr_list_readRecord(list, &offset, &rec) != KGR_OK) fail("an accepted record does not read");
    if (decodeAndBuild(rec) != KGR_OK) fail("an accepted record does not decode");
  }
  std::vector<std::uint8_t> again(kgr_list_byteSize(list));
  if (kgr_list_toBytes(list, again.data(), again.size()) != KGR_OK)
    fail("an accepted list cannot be written");
  if (again != std::vector<std::uint8_t>(data, data + size))
    fail("writing an accepted list changes its bytes");
  drawBothWays(list);
  kgr_list_free(list);
  return 0;
}
