// The block FIR against its peers on 1 Ki-sample blocks: VOLK's dot product once per output (what
// its users write) and liquid-dsp's firfilt_rrrf; the single-sample FIR; and the machine's fused
// multiply-add peak, measured in the same run, which bench/compare turns into a share of peak.
// Items are output samples; the flop count is 2 taps per sample. Ours also runs at each level this
// processor has (level/<name>/taps:N), for the processors whose widest level is not the best.
#include <benchmark/benchmark.h>
#include <liquid/liquid.h>
#include <volk/volk.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/fir_peak.h"
#include "engine/core/level.h"
#include "zalaccelerate/core.h"
#include "zalaccelerate/filter.h"

namespace zal::bench::fir {
namespace {

using namespace zalaccelerate;

constexpr int kBlock = 1024;
constexpr int kTapCounts[] = {32, 64, 128, 256, 1024};

std::vector<float> Signal(int n, int seed) {
  std::vector<float> v(n);
  for (int i = 0; i < n; ++i) v[i] = static_cast<float>(((i * 7919 + seed) % 1000) - 500) / 500;
  return v;
}

void Count(benchmark::State& state, int taps) {
  const auto samples = static_cast<std::int64_t>(state.iterations()) * kBlock;
  state.SetItemsProcessed(samples);
  state.counters["flops"] =
      benchmark::Counter(static_cast<double>(samples) * 2 * taps, benchmark::Counter::kIsRate);
}

// The level of first-call dispatch, which the benchmarks of ours at other levels move away from.
int NaturalLevel() {
  static const int natural = [] {
    engStartDispatch();
    return engGetDispatchIndex();
  }();
  return natural;
}

// The dispatch index is process-wide and repetitions interleave: every run of ours sets its level.
bool SelectLevel(int level) {
  int selected = level;
  if (level != NaturalLevel()) {
    engSelectCpuFeatures(zal::engine::kLevelNeeds[level], &selected);
  }
  engSetDispatchIndex(selected);
  return engGetDispatchIndex() == level;
}

bool LevelRuns(int level) {
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  return (features & zal::engine::kLevelNeeds[level]) == zal::engine::kLevelNeeds[level];
}

void OursAt(benchmark::State& state, int level) {
  if (!SelectLevel(level)) {
    state.SkipWithError("the level could not be selected");
    return;
  }
  const int taps = static_cast<int>(state.range(0));
  const auto h = Signal(taps, 1);
  const auto x = Signal(kBlock, 2);
  std::vector<float> y(kBlock);
  FIRState_Float* fir = nullptr;
  filter::FIRInit(&fir, h.data(), taps, nullptr);
  for (auto _ : state) {
    filter::FIR(fir, kBlock, x.data(), y.data());
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
  filter::FIRFree(fir);
  Count(state, taps);
}

void Ours(benchmark::State& state) {
  OursAt(state, NaturalLevel());
}

// One dot product per output over a line that keeps the history before the block.
void Volk(benchmark::State& state) {
  const int taps = static_cast<int>(state.range(0));
  const auto h = Signal(taps, 1);
  const std::vector<float> reversed(h.rbegin(), h.rend());
  auto* line =
      static_cast<float*>(volk_malloc(sizeof(float) * (taps - 1 + kBlock), volk_get_alignment()));
  const auto x = Signal(taps - 1 + kBlock, 2);
  std::copy(x.begin(), x.end(), line);
  std::vector<float> y(kBlock);
  for (auto _ : state) {
    for (int n = 0; n < kBlock; ++n) {
      volk_32f_x2_dot_prod_32f(&y[n], line + n, reversed.data(), taps);
    }
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
  volk_free(line);
  Count(state, taps);
}

void Liquid(benchmark::State& state) {
  const int taps = static_cast<int>(state.range(0));
  auto h = Signal(taps, 1);
  auto x = Signal(kBlock, 2);
  std::vector<float> y(kBlock);
  firfilt_rrrf q = firfilt_rrrf_create(h.data(), taps);
  for (auto _ : state) {
    firfilt_rrrf_execute_block(q, x.data(), kBlock, y.data());
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
  firfilt_rrrf_destroy(q);
  Count(state, taps);
}

// One call per sample, dispatch included; the inputs come from a signal, not from the previous
// output (a FIR has no feedback), so calls may overlap as they do in a caller's loop.
void OursSingle(benchmark::State& state) {
  SelectLevel(NaturalLevel());
  const int taps = static_cast<int>(state.range(0));
  const auto h = Signal(taps, 1);
  const auto x = Signal(kBlock, 2);
  FIRState_Float* fir = nullptr;
  filter::FIRInit(&fir, h.data(), taps, nullptr);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(filter::FIR(fir, x[i]));
    i = (i + 1) % kBlock;
  }
  filter::FIRFree(fir);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void Peak(benchmark::State& state) {
  constexpr std::int64_t kRounds = 1 << 16;
  for (auto _ : state) benchmark::DoNotOptimize(PeakProbe(kRounds));
  state.counters["flops"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kRounds * PeakFlopsPerRound(),
                         benchmark::Counter::kIsRate);
  state.counters["lanes"] = PeakLanes();
}

}  // namespace
}  // namespace zal::bench::fir

int main(int argc, char** argv) {
  using namespace zal::bench::fir;
  const struct {
    const char* name;
    void (*run)(benchmark::State&);
  } contenders[] = {{"ours", Ours}, {"volk", Volk}, {"liquid", Liquid}};
  for (const auto& c : contenders) {
    auto* b = benchmark::RegisterBenchmark((std::string("block/") + c.name).c_str(), c.run);
    for (int taps : kTapCounts) b->Arg(taps);
    b->ArgName("taps");
  }
  for (int level = 0; level < zal::engine::kLevelCount; ++level) {
    if (!LevelRuns(level)) continue;
    auto* b = benchmark::RegisterBenchmark(
        (std::string("level/") + zal::engine::kLevelNames[level]).c_str(),
        [level](benchmark::State& state) { OursAt(state, level); });
    for (int taps : kTapCounts) b->Arg(taps);
    b->ArgName("taps");
  }
  benchmark::RegisterBenchmark("single/ours", OursSingle)->Arg(32)->ArgName("taps");
  benchmark::RegisterBenchmark("peak/probe", Peak);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
