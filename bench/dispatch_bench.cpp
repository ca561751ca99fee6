// What dispatch costs: a call of the selected level's kernel directly, through the engine's
// dispatcher, and through the exported function, on the cheapest primitive there is.
#include <benchmark/benchmark.h>

#include "engine/core/dispatch.h"

namespace {

using zal::engine::g_dispatch_tables;

void DirectKernel(benchmark::State& state) {
  engStartDispatch();
  // Through a pointer the compiler cannot see through, as a caller binding the level itself would.
  auto* volatile kernel = g_dispatch_tables.LibraryVersion[1 + engGetDispatchIndex()];
  for (auto _ : state) benchmark::DoNotOptimize(kernel());
}

void Dispatched(benchmark::State& state) {
  engStartDispatch();
  for (auto _ : state) benchmark::DoNotOptimize(zal::engine::dispatch::LibraryVersion());
}

void Exported(benchmark::State& state) {
  engStartDispatch();
  for (auto _ : state) benchmark::DoNotOptimize(engLibraryVersion());
}

BENCHMARK(DirectKernel);
BENCHMARK(Dispatched);
BENCHMARK(Exported);

}  // namespace

BENCHMARK_MAIN();
