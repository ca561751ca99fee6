// The windows against a plain loop with the C library's cos, and against the library's own Mul on
// the same length (a window applied from a stored table costs that). Every contender gets the
// same 64-byte aligned buffers; Blackman runs with alpha = -0.16, Kaiser with beta = 8.6 (alpha =
// 2 beta / (N - 1)). Items are elements; bytes each element read and written.
// ZAL_BENCH_LEVEL=<name> (sse2 ... avx512) runs the library, windows and Mul alike, at that level
// instead of the natural one.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "bench/requested_level.h"
#include "bench/window_contenders.h"
#include "zalaccelerate/core.h"

namespace zal::bench::window {
namespace {

constexpr std::int64_t kSizes[] = {64, 1024, 4096, 16384};
constexpr const char* kMemberNames[kMemberCount] = {"Bartlett", "Hann",   "Hamming",
                                                    "Blackman", "Kaiser", "Mul"};
constexpr double kKaiserBeta = 8.6;

template <class T>
T* Aligned(std::size_t n) {
  return static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
}

template <class T>
void Run(benchmark::State& state, Runner<T> runner, Member member) {
  const auto n = static_cast<std::size_t>(state.range(0));
  T* src = Aligned<T>(n);
  T* dst = Aligned<T>(n);
  for (std::size_t i = 0; i < n; ++i) {
    src[i] = static_cast<T>(0.25 + 0.5 * static_cast<double>(i % 17) / 17);
    dst[i] = 1;
  }
  const T alpha = member == kKaiser ? static_cast<T>(2 * kKaiserBeta / static_cast<double>(n - 1))
                                    : static_cast<T>(-0.16);
  for (auto _ : state) {
    runner(src, dst, static_cast<int>(n), alpha);
    benchmark::DoNotOptimize(dst);
    benchmark::ClobberMemory();
  }
  const auto items = static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(n);
  state.SetItemsProcessed(items);
  state.SetBytesProcessed(items * static_cast<std::int64_t>(sizeof(T)) * (member == kMul ? 3 : 2));
  std::free(src);
  std::free(dst);
}

template <class T>
void Register(const char* type, const Contender& contender, const Runners<T>& runners) {
  for (int m = 0; m < kMemberCount; ++m) {
    if (!runners[m]) continue;
    const std::string name = std::string(type) + "." + kMemberNames[m] + "/" + contender.name;
    auto* b = benchmark::RegisterBenchmark(name.c_str(),
                                           [runner = runners[m], m](benchmark::State& state) {
                                             Run<T>(state, runner, static_cast<Member>(m));
                                           });
    for (std::int64_t n : kSizes) b->Arg(n);
    b->ArgName("n");
  }
}

}  // namespace
}  // namespace zal::bench::window

int main(int argc, char** argv) {
  using namespace zal::bench::window;
  const char* level = zal::bench::SelectRequestedLevel();
  if (level == nullptr) {
    std::fprintf(stderr, "zal_bench_window: ZAL_BENCH_LEVEL names no level this processor runs\n");
    return 1;
  }
  benchmark::AddCustomContext("level", level);
  for (const Contender* c : {Ours(), PlainLoops()}) {
    benchmark::AddCustomContext(std::string("contender ") + c->name, c->about);
    Register<float>("f32", *c, c->f32);
    Register<double>("f64", *c, c->f64);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
