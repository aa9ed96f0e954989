// Archive throughput: plain numbers one at a time beside a memcpy stream of
// the same bytes, and shared objects held by handle (class name lookup, object
// ids and back-references).
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "foundation/archive.h"
#include "foundation/xform.h"

namespace {

constexpr int kValues = 1'000'000;
constexpr int kObjects = 1'000;

std::vector<double> makeDoubles() {
  std::vector<double> values(kValues);
  for (int i = 0; i < kValues; ++i) values[i] = i * 0.25 - 17.0;
  return values;
}

std::vector<kcVector<2>> makeVectors() {
  std::vector<kcVector<2>> values;
  values.reserve(kValues);
  for (int i = 0; i < kValues; ++i) values.emplace_back(i * 0.5, -i * 0.125);
  return values;
}

// Freeing one large block (under the 32 MiB cap) first raises the allocator's threshold for
// mapping fresh pages, so that every benchmark below reuses a warm heap rather
// than only those that happen to run after the first.
const bool kWarmHeap = [] {
  std::vector<std::uint8_t> block(std::size_t{30} << 20, 1);
  benchmark::DoNotOptimize(block.data());
  return true;
}();

// The yardstick: each value memcpy'd onto the end of a growing byte vector,
// and read back with a bounds check, as a hand-written stream would.
struct MemcpyStream {
  std::vector<std::uint8_t> bytes;
  std::size_t pos = 0;

  void put(const void* p, std::size_t n) {
    const std::size_t at = bytes.size();
    bytes.resize(at + n);
    std::memcpy(bytes.data() + at, p, n);
  }
  void get(void* p, std::size_t n) {
    if (n > bytes.size() - pos) throw std::out_of_range("stream ends early");
    std::memcpy(p, bytes.data() + pos, n);
    pos += n;
  }
};

void put(MemcpyStream& s, double v) { s.put(&v, sizeof v); }
void put(MemcpyStream& s, const kcVector<2>& v) {
  put(s, v.x());
  put(s, v.y());
}
void get(MemcpyStream& s, double& v) { s.get(&v, sizeof v); }
void get(MemcpyStream& s, kcVector<2>& v) {
  double x, y;
  get(s, x);
  get(s, y);
  v = kcVector<2>(x, y);
}

// A double and a 32-bit number, the mix of a typical record.
struct Tagged {
  double value = 0;
  std::int32_t tag = 0;
};
kcArchive& operator||(kcArchive& ar, Tagged& t) { return ar || t.value || t.tag; }
void put(MemcpyStream& s, const Tagged& t) {
  put(s, t.value);
  s.put(&t.tag, sizeof t.tag);
}
void get(MemcpyStream& s, Tagged& t) {
  get(s, t.value);
  s.get(&t.tag, sizeof t.tag);
}

template <class T>
std::vector<T> makeValues() {
  if constexpr (std::is_same_v<T, double>) {
    return makeDoubles();
  } else if constexpr (std::is_same_v<T, Tagged>) {
    std::vector<Tagged> values(kValues);
    for (int i = 0; i < kValues; ++i) values[i] = {i * 0.25 - 17.0, i};
    return values;
  } else {
    return makeVectors();
  }
}

// Storing kValues values one at a time, through the archive or the memcpy stream.
template <class T>
void BM_StoreArchive(benchmark::State& state) {
  auto values = makeValues<T>();
  for (auto _ : state) {
    kcMemArchive ar;
    for (T& v : values) ar || v;
    benchmark::DoNotOptimize(ar.bytes().data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}
template <class T>
void BM_StoreMemcpy(benchmark::State& state) {
  auto values = makeValues<T>();
  for (auto _ : state) {
    MemcpyStream s;
    for (const T& v : values) put(s, v);
    benchmark::DoNotOptimize(s.bytes.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

template <class T>
void BM_LoadArchive(benchmark::State& state) {
  auto values = makeValues<T>();
  kcMemArchive out;
  for (T& v : values) out || v;
  for (auto _ : state) {
    kcMemArchive ar(out.bytes());
    for (T& v : values) ar || v;
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}
template <class T>
void BM_LoadMemcpy(benchmark::State& state) {
  auto values = makeValues<T>();
  MemcpyStream out;
  for (const T& v : values) put(out, v);
  for (auto _ : state) {
    MemcpyStream s{out.bytes};
    for (T& v : values) get(s, v);
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

// Each pair side by side: the archive, then the memcpy stream of the same bytes.
BENCHMARK(BM_StoreArchive<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StoreMemcpy<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadArchive<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadMemcpy<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StoreArchive<Tagged>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StoreMemcpy<Tagged>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadArchive<Tagged>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadMemcpy<Tagged>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StoreArchive<kcVector<2>>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StoreMemcpy<kcVector<2>>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadArchive<kcVector<2>>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadMemcpy<kcVector<2>>)->Unit(benchmark::kMillisecond);

// kObjects distinct transforms, each held by `repeats` consecutive handles:
// with more than one, the later handles travel as back-references.
std::vector<kcPtrHandle<kc2XformBase>> makeHandles(int repeats) {
  std::vector<kcPtrHandle<kc2XformBase>> handles;
  handles.reserve(static_cast<std::size_t>(kObjects) * repeats);
  for (int i = 0; i < kObjects; ++i) {
    kcXform<2> x(kcMatrix<2>::rotation(kcRadian(i * 0.001)), kcVector<2>(i, -i));
    auto handle = kcPtrHandle<kc2XformBase>(kfMakeHandle<kc2XformLinear>(x));
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
