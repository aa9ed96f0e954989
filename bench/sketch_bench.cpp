// Sketch throughput: recording line records beside a raw append of the same
// bytes (the limit) and beside Cairo's recording surface (a peer, when
// installed); parsing a sketch of mixed records record by record beside a
// plain read of the same bytes; storing and loading the sketch through an
// archive.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "dispc/sketchop.h"
// The tablet records through these inline transfers; so does this program.
#include "dispc/sketchshapes_p.h"
#include "foundation/archive.h"

#ifdef DISPC_HAVE_CAIRO
#include <cairo.h>
#endif

namespace {

constexpr int kLines = 100'000;
constexpr int kRecords = 1'000'000;

std::vector<kcLineSeg> makeLines() {
  std::vector<kcLineSeg> lines;
  lines.reserve(kLines);
  for (int i = 0; i < kLines; ++i)
    lines.emplace_back(kcVector<2>(i % 640, i % 480), kcVector<2>(i % 500 + 3.5, 7.25));
  return lines;
}

const kcGraphicProps kProps(kcColor::green, 2, kcGraphicProps::penSolid, false);

// What a recording tablet writes for a line: the properties (only when they
// changed), the header, the two end points.
void BM_RecordLines(benchmark::State& state) {
  const std::vector<kcLineSeg> lines = makeLines();
  kcUISketch s;
  for (auto _ : state) {
    s.erase();
    for (const kcLineSeg& line : lines) kc_UISketchOpLineSeg::record(s, 2, 0, kProps, line);
    benchmark::DoNotOptimize(s.data());
  }
  state.SetItemsProcessed(state.iterations() * kLines);
  state.counters["bytesPerLine"] = static_cast<double>(s.length()) / kLines;
}
BENCHMARK(BM_RecordLines)->Unit(benchmark::kMicrosecond);

// The limit: the same 40 bytes a line appended to a reused byte vector
// (cleared, never shrunk), as a hand-written display list would.
void BM_RawAppendLines(benchmark::State& state) {
  const std::vector<kcLineSeg> lines = makeLines();
  std::vector<unsigned char> buffer;
  unsigned char header[8] = {2, 0};
  kfStoreSketchColor(header + 2, kProps.penColor());
  for (auto _ : state) {
    buffer.clear();
    for (const kcLineSeg& line : lines) {
      unsigned char record[40];
      const double points[4] = {line.p1().x(), line.p1().y(), line.p2().x(), line.p2().y()};
      std::memcpy(record, header, 8);
      std::memcpy(record + 8, points, 32);
      buffer.insert(buffer.end(), record, record + 40);
    }
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_RawAppendLines)->Unit(benchmark::kMicrosecond);

#ifdef DISPC_HAVE_CAIRO
// The peer: the same lines stroked onto a Cairo recording surface.
void BM_CairoRecordLines(benchmark::State& state) {
  const std::vector<kcLineSeg> lines = makeLines();
  for (auto _ : state) {
    cairo_surface_t* surface = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr);
    cairo_t* cr = cairo_create(surface);
    for (const kcLineSeg& line : lines) {
      cairo_set_source_rgb(cr, 0.0, 1.0, 0.0);
      cairo_set_line_width(cr, 2.0);
      cairo_move_to(cr, line.p1().x(), line.p1().y());
      cairo_line_to(cr, line.p2().x(), line.p2().y());
      cairo_stroke(cr);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_CairoRecordLines)->Unit(benchmark::kMillisecond);
#endif

// kRecords records of eight kinds, the properties changing now and then.
const kcUISketch& mixedSketch() {
  static const kcUISketch sketch = [] {
    kcUISketch s;
    kcGraphicProps props = kProps;
    const std::vector<kcVector<2>> square = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    for (int i = 0; i < kRecords; ++i) {
      if (i % 97 == 0) props.penWidth(1 + i % 3);
      s.opcode(kcUISketch::kPropsOpcode, props);
      const double x = i % 640;
      const double y = i % 480;
      const signed char layer = static_cast<signed char>(i % 2);
      switch (i % 8) {
        case 0:
        case 1:
        case 2:
          s.opcode(2, layer, kcColor::red);
          kc_UISketchOpLineSeg::write(s, kcLineSeg({x, y}, {x + 10, y + 3}));
          break;
        case 3:
          s.opcode(0, layer, kcColor::blue);
          kc_UISketchOpPoint::write(s, kcPoint(x, y));
          break;
        case 4:
          s.opcode(4, layer, kcColor::yellow);
          kc_UISketchOpCircle::write(s, kcCircle({x, y}, 5));
          break;
        case 5:
          s.opcode(32, layer, kcColor::white);
          kc_UISketchOpRect::write(s, kcRect({x, y}, {20, 10}));
          break;
        case 6:
          s.opcode(37, layer, kcColor::cyan);
          kc_UISketchOpCross::write(s, kcCross({x, y}, 3));
          break;
        default:
          s.opcode(44, layer, kcColor::green);
          kc_UISketchOpPolyline::write(s, kcPolyline(square));
          break;
      }
    }
    return s;
  }();
  return sketch;
}

void BM_ParseMixed(benchmark::State& state) {
  const kcUISketch& s = mixedSketch();
  for (auto _ : state) {
    long records = 0;
    for (kcUISketchParser parser(s); parser.next();) ++records;
    benchmark::DoNotOptimize(records);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
  state.SetBytesProcessed(state.iterations() * s.length());
}
BENCHMARK(BM_ParseMixed)->Unit(benchmark::kMillisecond);

// The floor: every 8 bytes of the same stream read once.
void BM_ReadBackMixed(benchmark::State& state) {
  const kcUISketch& s = mixedSketch();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    const unsigned char* p = s.data();
    for (long i = 0; i + 8 <= s.length(); i += 8) {
      std::uint64_t word;
      std::memcpy(&word, p + i, 8);
      sum += word;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
  state.SetBytesProcessed(state.iterations() * s.length());
}
BENCHMARK(BM_ReadBackMixed)->Unit(benchmark::kMillisecond);

void BM_StoreMixed(benchmark::State& state) {
  kcUISketch s = mixedSketch();
  std::size_t bytes = 0;
  for (auto _ : state) {
    kcMemArchive ar;
    ar || s;
    bytes = ar.bytes().size();
    benchmark::DoNotOptimize(ar.bytes().data());
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
  state.counters["archiveBytesPerRecord"] = static_cast<double>(bytes) / kRecords;
}
BENCHMARK(BM_StoreMixed)->Unit(benchmark::kMillisecond);

void BM_LoadMixed(benchmark::State& state) {
  kcUISketch s = mixedSketch();
  kcMemArchive out;
  out || s;
  for (auto _ : state) {
    kcMemArchive ar(out.bytes());
    kcUISketch loaded;
    ar || loaded;
    benchmark::DoNotOptimize(loaded.data());
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_LoadMixed)->Unit(benchmark::kMillisecond);

}  // namespace
