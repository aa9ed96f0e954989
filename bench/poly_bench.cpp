// SMD poly validation: closed outlines of 8 to 4096 vertices built vertex by
// vertex (every append validated) and validated whole, for a convex outline
// (a circle of points) and a star (every other vertex pulled inwards). Beside
// them, when Boost.Geometry is there, its is_valid on the same outlines as
// plain polygons: the ratio of the two is the figure to watch.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dispc/smd/poly.h"

#ifdef DISPC_HAVE_BOOST_GEOMETRY
#include <boost/geometry.hpp>
#endif

namespace {

using V = kcVector<2>;

std::vector<kcSMDGDPolyVertex> outline(int n, bool star) {
  std::vector<kcSMDGDPolyVertex> vs;
  vs.reserve(n);
  for (int i = 0; i < n; ++i) {
    const double a = 2 * std::numbers::pi * i / n;
    const double r = star && i % 2 == 1 ? 70.0 : 100.0;
    vs.emplace_back(V(r * std::cos(a), r * std::sin(a)), 0.5, 0.5, -1);
  }
  return vs;
}

void BM_PolyAppend(benchmark::State& state, bool star) {
  const auto vs = outline(static_cast<int>(state.range(0)), star);
  for (auto _ : state) {
    kcSMDGDPoly p;
    for (const kcSMDGDPolyVertex& v : vs) p << v;
    p.close();
    benchmark::DoNotOptimize(p.numVertices());
  }
  state.SetComplexityN(state.range(0));
}

void BM_PolyValidateWhole(benchmark::State& state, bool star) {
  const auto vs = outline(static_cast<int>(state.range(0)), star);
  kcSMDGDPoly p;
  p << vs[0] << vs[1];
  p.close();
  for (auto _ : state) {
    p.vertices(vs);
    benchmark::DoNotOptimize(p.numVertices());
  }
  state.SetComplexityN(state.range(0));
}

BENCHMARK_CAPTURE(BM_PolyAppend, convex, false)->RangeMultiplier(8)->Range(8, 4096)->Complexity();
BENCHMARK_CAPTURE(BM_PolyAppend, star, true)->RangeMultiplier(8)->Range(8, 4096)->Complexity();
BENCHMARK_CAPTURE(BM_PolyValidateWhole, convex, false)->RangeMultiplier(8)->Range(8, 4096)->Complexity();
BENCHMARK_CAPTURE(BM_PolyValidateWhole, star, true)->RangeMultiplier(8)->Range(8, 4096)->Complexity();

#ifdef DISPC_HAVE_BOOST_GEOMETRY
namespace bg = boost::geometry;
using BoostPoint = bg::model::d2::point_xy<double>;
// Counter-clockwise and open, as the outlines are.
using BoostPolygon = bg::model::polygon<BoostPoint, false, false>;

void BM_BoostIsValid(benchmark::State& state, bool star) {
  BoostPolygon polygon;
  for (const kcSMDGDPolyVertex& v : outline(static_cast<int>(state.range(0)), star))
    bg::append(polygon.outer(), BoostPoint(v.point().x(), v.point().y()));
  if (!bg::is_valid(polygon)) state.SkipWithError("the outline is not valid");
  for (auto _ : state) benchmark::DoNotOptimize(bg::is_valid(polygon));
  state.SetComplexityN(state.range(0));
}
BENCHMARK_CAPTURE(BM_BoostIsValid, convex, false)->RangeMultiplier(8)->Range(8, 4096)->Complexity();
BENCHMARK_CAPTURE(BM_BoostIsValid, star, true)->RangeMultiplier(8)->Range(8, 4096)->Complexity();
#endif

}  // namespace
