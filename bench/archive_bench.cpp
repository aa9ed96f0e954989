// Archive throughput: plain numbers, and shared objects held by handle (class
// name lookup, object ids and back-references).
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/archive.h"
#include "foundation/xform.h"

namespace {

constexpr int kDoubles = 10'000;
constexpr int kObjects = 1'000;

std::vector<double> makeDoubles() {
  std::vector<double> values(kDoubles);
  for (int i = 0; i < kDoubles; ++i) values[i] = i * 0.25 - 17.0;
  return values;
}

// kObjects distinct transforms, each held by `repeats` consecutive handles:
// with more than one, the later handles travel as back-references.
std::vector<kcPtrHandle<kc2XformBase>> makeHandles(int repeats) {
  std::vector<kcPtrHandle<kc2XformBase>> handles;
  handles.reserve(static_cast<std::size_t>(kObjects) * repeats);
  for (int i = 0; i < kObjects; ++i) {
    kcXform<2> x(kcMatrix<2>::rotation(kcRadian(i * 0.001)), kcVector<2>(i, -i));
    kcPtrHandle<kc2XformBase> handle(new kc2XformLinear(x));
    for (int r = 0; r < repeats; ++r) handles.push_back(handle);
  }
  return handles;
}

template <class T>
std::vector<std::uint8_t> stored(T& value) {
  kcMemArchive ar;
  ar || value;
  return ar.bytes();
}

void BM_StoreDoubles(benchmark::State& state) {
  auto values = makeDoubles();
  for (auto _ : state) {
    kcMemArchive ar;
    ar || values;
    benchmark::DoNotOptimize(ar.bytes().data());
  }
  state.SetBytesProcessed(state.iterations() * kDoubles * static_cast<std::int64_t>(sizeof(double)));
}
BENCHMARK(BM_StoreDoubles);

void BM_LoadDoubles(benchmark::State& state) {
  auto values = makeDoubles();
  const auto bytes = stored(values);
  for (auto _ : state) {
    kcMemArchive ar(bytes);
    std::vector<double> back;
    ar || back;
    benchmark::DoNotOptimize(back.data());
  }
  state.SetBytesProcessed(state.iterations() * kDoubles * static_cast<std::int64_t>(sizeof(double)));
}
BENCHMARK(BM_LoadDoubles);

void BM_StoreSharedHandles(benchmark::State& state) {
  auto handles = makeHandles(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    kcMemArchive ar;
    ar || handles;
    benchmark::DoNotOptimize(ar.bytes().data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(handles.size()));
}
BENCHMARK(BM_StoreSharedHandles)->ArgName("handlesPerObject")->Arg(1)->Arg(2);

void BM_LoadSharedHandles(benchmark::State& state) {
  auto handles = makeHandles(static_cast<int>(state.range(0)));
  const auto bytes = stored(handles);
  for (auto _ : state) {
    kcMemArchive ar(bytes);
    std::vector<kcPtrHandle<kc2XformBase>> back;
    ar || back;
    benchmark::DoNotOptimize(back.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(handles.size()));
}
BENCHMARK(BM_LoadSharedHandles)->ArgName("handlesPerObject")->Arg(1)->Arg(2);

}  // namespace
