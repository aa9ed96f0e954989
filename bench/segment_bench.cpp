// Wireframe segment queries that the poly code calls in its inner loops:
// closest points, range tests and intersections on unmapped segments.
// Each iteration makes one call; the inputs cycle through a fixed table so
// that nothing folds into a constant.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/lineseg.h"

namespace {

constexpr std::size_t kCount = 256;  // a power of two: the index wraps with a mask

using V = kcVector<2>;

// Points scattered around the unit square, deterministic.
std::vector<V> points() {
  std::vector<V> out;
  for (std::size_t i = 0; i < kCount; ++i) {
    double a = 2.399963 * static_cast<double>(i);  // golden angle
    double r = 0.2 + 1.6 * std::fmod(0.618034 * static_cast<double>(i), 1.0);
    out.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  return out;
}

// Chords through the origin, which cross the segments below (and the unit
// circle when they start outside it); or the same chords moved far away,
// which cross nothing, so that no result vector is allocated.
std::vector<kc2SegmentLine> lines(bool crossing) {
  std::vector<kc2SegmentLine> out;
  V shift = crossing ? V() : V(5, 5);
  for (const V& p : points()) out.emplace_back(p + shift, -p + shift);
  return out;
}

std::vector<kc2SegmentArc> arcs() {
  std::vector<kc2SegmentArc> out;
  const std::vector<V> pts = points();
  for (std::size_t i = 0; i < kCount; ++i) {
    const V& p = pts[i];
    out.emplace_back(p * 0.5, 0.4 + 0.1 * static_cast<double>(i % 7), kcDegree(17.0 * static_cast<double>(i)),
                     kcDegree(i % 2 ? 120.0 : -200.0));
  }
  return out;
}

void BM_ArcClosestPoint_(benchmark::State& state) {
  kc2SegmentArc arc(V(0, 0), 1.0, kcDegree(30.0), kcDegree(200.0));
  auto pts = points();
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(arc.closestPoint_(pts[i++ & (kCount - 1)]));
}
BENCHMARK(BM_ArcClosestPoint_);

void BM_ArcValidAngle_(benchmark::State& state) {
  kc2SegmentArc arc(V(0, 0), 1.0, kcDegree(30.0), kcDegree(200.0));
  std::vector<kcDegree> angles;
  for (const V& p : points()) angles.emplace_back(kcDegree(p.angle()));
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(arc.validAngle_(angles[i++ & (kCount - 1)], true));
}
BENCHMARK(BM_ArcValidAngle_);

void BM_LineClosestPoint(benchmark::State& state) {
  kc2SegmentLine line(V(-0.7, -0.3), V(0.9, 0.6));
  auto pts = points();
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(line.closestPoint(pts[i++ & (kCount - 1)]));
}
BENCHMARK(BM_LineClosestPoint);

// Argument 1: chords that cross; 0: chords that miss.
void BM_LineLineIntersection(benchmark::State& state) {
  kc2SegmentLine segment(V(-0.7, -0.3), V(0.9, 0.6));
  auto others = lines(state.range(0) == 1);
  std::size_t i = 0, hits = 0;
  for (auto _ : state) {
    auto x = segment.intersection(others[i++ & (kCount - 1)], true);
    hits += x.size();
    benchmark::DoNotOptimize(x.data());
  }
  state.counters["points"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_LineLineIntersection)->Arg(0)->Arg(1);

void BM_ArcLineIntersection(benchmark::State& state) {
  kc2SegmentArc arc(V(0, 0), 1.0, kcDegree(30.0), kcDegree(200.0));
  auto others = lines(state.range(0) == 1);
  std::size_t i = 0, hits = 0;
  for (auto _ : state) {
    auto x = arc.intersection(others[i++ & (kCount - 1)], true);
    hits += x.size();
    benchmark::DoNotOptimize(x.data());
  }
  state.counters["points"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ArcLineIntersection)->Arg(0)->Arg(1);

void BM_ArcArcIntersection(benchmark::State& state) {
  kc2SegmentArc arc(V(0.1, 0), 0.8, kcDegree(-40.0), kcDegree(250.0));
  auto others = arcs();
  std::size_t i = 0, hits = 0;
  for (auto _ : state) {
    auto x = arc.intersection(others[i++ & (kCount - 1)], true);
    hits += x.size();
    benchmark::DoNotOptimize(x.data());
  }
  state.counters["points"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ArcArcIntersection);

}  // namespace
