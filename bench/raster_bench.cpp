// Synthetic images: filling outlines (with their outline pels) into 8-bit
// buffers, beside a memset of the same buffer (the physical limit) and, when
// OpenCV is installed, cv::fillPoly on the same outlines as polygons (arcs cut
// into 5-degree chords, points in 1/256 pel).
//   (a) one 64-vertex rounded outline in 512 x 512
//   (b) one 4096-vertex outline over most of 2048 x 2048
//   (c) 1000 small 8-vertex polys in 2048 x 2048
// The pels rate counts the pels the outlines cover (memset: the whole buffer).
// BM_DispcFillOnly draws the same without the outline pels, to show what
// each half costs. The machine's noise is large against these times: compare
// with --benchmark_repetitions and --benchmark_enable_random_interleaving.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <variant>
#include <vector>

#include "dispc/smd/model.h"
#include "dispc/smd/polygeom_p.h"
#include "dispc/smd/polyprivate.h"

#ifdef DISPC_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using V = kcVector<2>;
using Buffer = kcPelBuffer<unsigned char>;
constexpr double kPi = std::numbers::pi;

// n corners on a wobbly ring about centre, every corner rounded by radius.
kcSMDGDPoly ring(int n, const V& centre, double size, double wobble, double radius, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::vector<kcSMDGDPolyVertex> vs;
  for (int i = 0; i < n; ++i) {
    const double a = 2 * kPi * i / n;
    const double r = size * (1 + wobble * unit(rng));
    vs.emplace_back(centre + V(r * std::cos(a), r * std::sin(a)), radius, 0.5, 0.5, -1);
  }
  kcSMDGDPoly p;
  kcSMDGDPolyPrivate::assignVertices_(p, vs, false);
  p.vertices(vs);
  return p;
}

struct Scene {
  long width, height;
  kcSMDGDModel model;
};

Scene scene(int which) {
  Scene s{512, 512, kcSMDGDModel(L"bench")};
  if (which == 0) {
    s.model << ring(64, V(256, 256), 230, 0.04, 6.0, 1);
  } else if (which == 1) {
    s.width = s.height = 2048;
    s.model << ring(4096, V(1024, 1024), 980, 0.002, 0.0, 2);
  } else {
    s.width = s.height = 2048;
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> at(30.0, 2018.0);
    for (int k = 0; k < 1000; ++k) s.model << ring(8, V(at(rng), at(rng)), 18, 0.1, 2.0, 10 + k);
  }
  return s;
}

long covered(const Scene& s) {
  Buffer b(s.width, s.height);
  s.model.drawSynthetic(kcXform<2>(), b);
  long n = 0;
  for (long y = 0; y < b.height(); ++y)
    for (long x = 0; x < b.width(); ++x) n += b.get(x, y) != 0;
  return n;
}

void rate(benchmark::State& state, long pels) {
  state.counters["pels"] =
      benchmark::Counter(static_cast<double>(pels) * state.iterations(), benchmark::Counter::kIsRate);
}

void BM_Dispc(benchmark::State& state) {
  const Scene s = scene(static_cast<int>(state.range(0)));
  Buffer b(s.width, s.height);
  for (auto _ : state) {
    s.model.drawSynthetic(kcXform<2>(), b);
    benchmark::DoNotOptimize(b.row(0));
  }
  rate(state, covered(s));
}
BENCHMARK(BM_Dispc)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// The fill alone, without the outline pels.
void BM_DispcFillOnly(benchmark::State& state) {
  const Scene s = scene(static_cast<int>(state.range(0)));
  Buffer b(s.width, s.height);
  for (auto _ : state) {
    for (const kcSMDGDPoly& p : s.model.polys())
      kcSMDGDPolyPrivate::drawSynthetic(p, kcXform<2>(), b, 150, true, false);
    benchmark::DoNotOptimize(b.row(0));
  }
  rate(state, covered(s));
}
BENCHMARK(BM_DispcFillOnly)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void BM_Memset(benchmark::State& state) {
  const Scene s = scene(static_cast<int>(state.range(0)));
  Buffer b(s.width, s.height);
  for (auto _ : state) {
    std::memset(b.row(0), 150, static_cast<std::size_t>(s.width * s.height));
    benchmark::DoNotOptimize(b.row(0));
  }
  rate(state, s.width * s.height);
}
BENCHMARK(BM_Memset)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

#ifdef DISPC_HAVE_OPENCV
// Each poly's rounded outline as one polygon, in 1/256 pel.
std::vector<std::vector<cv::Point>> polygons(const Scene& s) {
  constexpr int kShift = 8;
  constexpr double kOne = 1 << kShift;
  std::vector<std::vector<cv::Point>> out;
  for (const kcSMDGDPoly& p : s.model.polys()) {
    std::vector<cv::Point>& pts = out.emplace_back();
    auto add = [&](const V& q) { pts.emplace_back(cvRound(q.x() * kOne), cvRound(q.y() * kOne)); };
    for (const kcSMDPiece_& piece : kfOutlinePieces_(p)) {
      if (const auto* line = std::get_if<kc2SegmentLine>(&piece)) {
        add(line->p1());
        continue;
      }
      const auto& arc = std::get<kc2SegmentArc>(piece);
      const int n = static_cast<int>(std::fabs(arc.angleSpan().toDouble()) / 5.0) + 1;
      for (int k = 0; k < n; ++k) add(arc.segPoint(static_cast<double>(k) / n));
    }
  }
  return out;
}

void BM_OpenCV(benchmark::State& state) {
  const Scene s = scene(static_cast<int>(state.range(0)));
  const std::vector<std::vector<cv::Point>> pts = polygons(s);
  std::vector<const cv::Point*> first;
  std::vector<int> counts;
  for (const std::vector<cv::Point>& poly : pts) {
    first.push_back(poly.data());
    counts.push_back(static_cast<int>(poly.size()));
  }
  cv::Mat image(static_cast<int>(s.height), static_cast<int>(s.width), CV_8UC1, cv::Scalar(0));
  for (auto _ : state) {
    // One call per poly, as each poly is drawn on its own.
    for (std::size_t k = 0; k < pts.size(); ++k)
      cv::fillPoly(image, &first[k], &counts[k], 1, cv::Scalar(150), cv::LINE_8, 8);
    benchmark::DoNotOptimize(image.data);
  }
  rate(state, covered(s));
}
BENCHMARK(BM_OpenCV)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace
