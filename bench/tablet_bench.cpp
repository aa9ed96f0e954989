// Tablet throughput on a device that does nothing: 10^6 line segments drawn
// directly, drawn while recording (record + map + dispatch), and the recorded
// sketch played back; the first is the yardstick of the other two. On a null
// device playback shows its whole cost (reading each record back); on a
// device that strokes the lines (Cairo, when installed) it shows what that
// cost is beside real drawing.
#include <benchmark/benchmark.h>

#include <span>
#include <vector>

#include "dispc/tablet.h"

#ifdef DISPC_HAVE_CAIRO
#include <cairo.h>
#endif

namespace {

constexpr int kLines = 1'000'000;

// Takes every call and does nothing with it.
class NullScope : public kcUIScope {
 public:
  void clipRect(const kcRect& r) override { clip_ = r; }
  [[nodiscard]] kcRect clipRect() const override { return clip_; }
  void point(const kcVector<2>&, const kcGraphicProps&) override {}
  void pixel(const kcPair<long>&, const kcColor&) override {}
  void lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps&) override {
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(b);
  }
  void polyline(const std::vector<kcVector<2>>&, bool, const kcGraphicProps&) override {}
  void ellipse(const kcEllipse&, const kcGraphicProps&) override {}
  void ellipseArc(const kcEllipseArc&, const kcGraphicProps&) override {}
  void bezier(const std::array<kcVector<2>, 4>&, const kcGraphicProps&) override {}
  void path(const kcUIPath&, const kcGraphicProps&) override {}
  void arrowHead(const kcVector<2>&, const kcVector<2>&, double, const kcGraphicProps&) override {}
  void text(const std::wstring&, const kcVector<2>&, const kcColor&, const kcColor&,
            const kcUIFormat&) override {}
  [[nodiscard]] kcUIRect textRect(const std::wstring&, const kcVector<2>&, const kcUIFormat&) override {
    return {};
  }
  void set(const kcColor&) override {}
  void set(const kcUIRect&, const kcColor&) override {}
  void setComplement(const kcUIRect&, const kcColor&) override {}
  void erase(const kcUIRect&) override {}
  void fill(const kcPair<long>&, const kcColor&, const kcColor&, keFillType) override {}
  void outline3D(const kcUIRect&, const kcColor&, const kcColor&, long) override {}
  void image(const kcPelBuffer_const<unsigned char>&, const kcVector<2>&, const std::vector<unsigned char>&,
             bool, unsigned char) override {}
  void image(const kcRLEBuffer&, const kcVector<2>&, const std::vector<unsigned char>&, bool,
             unsigned char) override {}
  void moveTo(const kcVector<2>&) override {}
  void lineTo(const kcVector<2>&, const kcGraphicProps&) override {}
  void moveRelPels(long, long) override {}
  void lineRelPels(long, long, const kcGraphicProps&) override {}
  [[nodiscard]] kcVector<2> penPosition() const override { return {}; }

 private:
  kcRect clip_;
};

const std::vector<kcLineSeg>& lines() {
  static const std::vector<kcLineSeg> all = [] {
    std::vector<kcLineSeg> v;
    v.reserve(kLines);
    for (int i = 0; i < kLines; ++i)
      v.emplace_back(kcVector<2>(i % 640, i % 480), kcVector<2>(i % 500 + 3.5, 7.25));
    return v;
  }();
  return all;
}

// Plain lines (arg 0) or lines with their arrow heads, as the defaults draw them (arg 1).
kcGraphicProps propsFor(const benchmark::State& state) {
  kcGraphicProps p(kcColor::green, 1, kcGraphicProps::penSolid, false);
  p.arrowHead(state.range(0) != 0);
  return p;
}

kcXform<2> view() { return {kcMatrix<2>(1.5, 0.0, 0.0, 1.5), kcVector<2>(10.0, 20.0)}; }

void BM_DrawDirect(benchmark::State& state) {
  NullScope scope;
  kcUITablet t(&scope);
  t.baseMap(view());
  const kcGraphicProps props = propsFor(state);
  for (auto _ : state)
    for (const kcLineSeg& line : lines()) t.draw(line, props, kcUITablet::mainLayer);
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_DrawDirect)->ArgName("arrows")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_DrawRecording(benchmark::State& state) {
  NullScope scope;
  kcUITablet t(&scope);
  t.baseMap(view());
  t.recordOn() = true;
  const kcGraphicProps props = propsFor(state);
  for (auto _ : state) {
    t.sketch().erase();
    for (const kcLineSeg& line : lines()) t.draw(line, props, kcUITablet::mainLayer);
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_DrawRecording)->ArgName("arrows")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Replay(benchmark::State& state) {
  kcUITablet recorder;
  recorder.recordOn() = true;
  const kcGraphicProps props = propsFor(state);
  for (const kcLineSeg& line : lines()) recorder.draw(line, props, kcUITablet::mainLayer);
  NullScope scope;
  kcUITablet t(&scope);
  t.baseMap(view());
  for (auto _ : state) t.draw(recorder.sketch(), kcPoint(0, 0), kcUITablet::mainLayer);
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_Replay)->ArgName("arrows")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

#ifdef DISPC_HAVE_CAIRO
// Strokes every line onto a 640 x 480 image surface: the least a device that
// draws must do. Stroking costs microseconds a line, so these runs take the
// first kStrokeLines lines.
constexpr int kStrokeLines = 10'000;

class StrokeScope final : public NullScope {
 public:
  StrokeScope()
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 640, 480)), cr_(cairo_create(surface_)) {}
  ~StrokeScope() override {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
  }
  StrokeScope(const StrokeScope&) = delete;
  StrokeScope& operator=(const StrokeScope&) = delete;

  void lineSeg(const kcVector<2>& a, const kcVector<2>& b, const kcGraphicProps& props) override {
    const kcRGB& c = props.penColor().rgbStruct();
    cairo_set_source_rgb(cr_, c.r() / 255.0, c.g() / 255.0, c.b() / 255.0);
    cairo_set_line_width(cr_, static_cast<double>(props.penWidth()));
    cairo_move_to(cr_, a.x(), a.y());
    cairo_line_to(cr_, b.x(), b.y());
    cairo_stroke(cr_);
  }

 private:
  cairo_surface_t* surface_;
  cairo_t* cr_;
};

std::span<const kcLineSeg> strokeLines() { return std::span(lines()).first(kStrokeLines); }

void BM_StrokeDirect(benchmark::State& state) {
  StrokeScope scope;
  kcUITablet t(&scope);
  t.baseMap(view());
  const kcGraphicProps props = propsFor(state);
  for (auto _ : state)
    for (const kcLineSeg& line : strokeLines()) t.draw(line, props, kcUITablet::mainLayer);
  state.SetItemsProcessed(state.iterations() * kStrokeLines);
}
BENCHMARK(BM_StrokeDirect)->ArgName("arrows")->Arg(0)->Unit(benchmark::kMillisecond);

void BM_StrokeReplay(benchmark::State& state) {
  kcUITablet recorder;
  recorder.recordOn() = true;
  const kcGraphicProps props = propsFor(state);
  for (const kcLineSeg& line : strokeLines()) recorder.draw(line, props, kcUITablet::mainLayer);
  StrokeScope scope;
  kcUITablet t(&scope);
  t.baseMap(view());
  for (auto _ : state) t.draw(recorder.sketch(), kcPoint(0, 0), kcUITablet::mainLayer);
  state.SetItemsProcessed(state.iterations() * kStrokeLines);
}
BENCHMARK(BM_StrokeReplay)->ArgName("arrows")->Arg(0)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
