// The multirate filter against its peers at three rates: 2/1 and 1/2 (a half-band pair) and
// 147/160 (48 kHz to 44.1 kHz), with 32, 48 and 64 taps per phase. Peers: the plain polyphase
// loop built with -O3 -march=native, liquid-dsp's polyphase objects over the same filter length
// per output (firinterp, firdecim, rresamp: float only), and, for orientation, libsoxr and
// libsamplerate at their default quality (their own filters, so not the same work). Items are
// output samples; each run processes about 4096 of them per call on one core.
#include <benchmark/benchmark.h>
#include <liquid/liquid.h>
#include <samplerate.h>
#include <soxr.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/multirate_plain_loop.h"
#include "engine/core/cpu_features.h"
#include "engine/core/cpuid_source.h"
#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "zalaccelerate/filter.h"

namespace zal::bench::multirate {
namespace {

struct Rate {
  const char* name;
  int up;
  int down;
};
constexpr Rate kRates[] = {{"up2", 2, 1}, {"down2", 1, 2}, {"r147over160", 147, 160}};
constexpr int kPhaseTaps[] = {32, 48, 64};
constexpr int kOutputsPerCall = 4096;
constexpr double kPi = 3.14159265358979323846;

int ItersOf(const Rate& rate) {
  return (kOutputsPerCall + rate.up - 1) / rate.up;
}

// A windowed-sinc lowpass at the narrower band of the pair: the values only have to be
// realistic, every contender gets the same ones.
template <class T>
std::vector<T> Lowpass(const Rate& rate, int length) {
  const double cutoff = 0.5 / (rate.up > rate.down ? rate.up : rate.down);
  std::vector<T> h(static_cast<std::size_t>(length));
  const double middle = (length - 1) / 2.0;
  for (int k = 0; k < length; ++k) {
    const double x = k - middle;
    const double sinc = x == 0 ? 2 * cutoff : std::sin(2 * kPi * cutoff * x) / (kPi * x);
    const double window = 0.54 - 0.46 * std::cos(2 * kPi * k / (length - 1));
    h[static_cast<std::size_t>(k)] = static_cast<T>(sinc * window * rate.up);
  }
  return h;
}

template <class T>
std::vector<T> Signal(std::size_t n) {
  std::vector<T> x(n);
  for (std::size_t i = 0; i < n; ++i)
    x[i] = static_cast<T>(std::sin(0.01 * static_cast<double>(i)));
  return x;
}

template <class T>
struct StateOf;
template <>
struct StateOf<float> {
  using Type = zalaccelerate::MRFState_Float;
};
template <>
struct StateOf<double> {
  using Type = zalaccelerate::MRFState_Double;
};

void Count(benchmark::State& state, std::int64_t outputs_per_call) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * outputs_per_call);
}

// Ours through the exported function (natural level), or one level's kernel on the same state.
template <class T>
void Ours(benchmark::State& state, Rate rate, int level) {
  const int taps = static_cast<int>(state.range(0));
  const int length = taps * rate.up;
  const std::vector<T> h = Lowpass<T>(rate, length);
  using Line = std::vector<T, zalcore::STLAllocator<T>>;
  typename StateOf<T>::Type* filter_state = nullptr;
  zalaccelerate::filter::MRFInit(&filter_state, rate.up, rate.down, h.data(), length,
                                 Line(static_cast<std::size_t>(taps), T(0)), 0, 0);
  const int iters = ItersOf(rate);
  const std::vector<T> src = Signal<T>(static_cast<std::size_t>(iters) * rate.down);
  std::vector<T> dst(static_cast<std::size_t>(iters) * rate.up);
  for (auto _ : state) {
    if (level < 0) {
      zalaccelerate::filter::MRFProcess(src.data(), dst.data(), iters, filter_state);
    } else {
      const auto address = reinterpret_cast<std::uintptr_t>(filter_state->spec);
      const auto* spec =
          reinterpret_cast<const engine::MRFSpec*>((address + 63) & ~std::uintptr_t{63});
      T* line = filter_state->dlyLine.data;
      if constexpr (sizeof(T) == 4) {
        engine::g_dispatch_tables.MultirateFirF32[1 + level](src.data(), dst.data(), iters, spec,
                                                             line, line, filter_state->workBuffer);
      } else {
        engine::g_dispatch_tables.MultirateFirF64[1 + level](src.data(), dst.data(), iters, spec,
                                                             line, line, filter_state->workBuffer);
      }
    }
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  Count(state, static_cast<std::int64_t>(dst.size()));
  zalaccelerate::filter::MRFFree(filter_state);
}

template <class T>
void Plain(benchmark::State& state, Rate rate) {
  const int taps = static_cast<int>(state.range(0));
  const std::vector<T> h = Lowpass<T>(rate, taps * rate.up);
  PlainPolyphase<T> plain{rate.up, rate.down, taps, {}, {}};
  plain.bank.resize(h.size());
  for (int p = 0; p < rate.up; ++p) {
    for (int q = 0; q < taps; ++q) plain.bank[p * taps + q] = h[p + rate.up * q];
  }
  const int iters = ItersOf(rate);
  plain.buffer.assign(static_cast<std::size_t>(taps + iters * rate.down), T(0));
  const std::vector<T> src = Signal<T>(static_cast<std::size_t>(iters) * rate.down);
  std::vector<T> dst(static_cast<std::size_t>(iters) * rate.up);
  for (auto _ : state) {
    plain.Run(src.data(), dst.data(), iters);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  Count(state, static_cast<std::int64_t>(dst.size()));
}

// liquid-dsp's objects for the rate, over the same filter: taps x up coefficients.
void Liquid(benchmark::State& state, Rate rate) {
  const int taps = static_cast<int>(state.range(0));
  std::vector<float> h = Lowpass<float>(rate, taps * rate.up);
  const int iters = ItersOf(rate);
  const std::vector<float> src = Signal<float>(static_cast<std::size_t>(iters) * rate.down);
  std::vector<float> dst(static_cast<std::size_t>(iters) * rate.up);
  if (rate.down == 1) {
    firinterp_rrrf q = firinterp_rrrf_create(rate.up, h.data(), h.size());
    for (auto _ : state) {
      firinterp_rrrf_execute_block(q, const_cast<float*>(src.data()), iters, dst.data());
      benchmark::DoNotOptimize(dst.data());
      benchmark::ClobberMemory();
    }
    firinterp_rrrf_destroy(q);
  } else if (rate.up == 1) {
    firdecim_rrrf q = firdecim_rrrf_create(rate.down, h.data(), h.size());
    for (auto _ : state) {
      firdecim_rrrf_execute_block(q, const_cast<float*>(src.data()), iters, dst.data());
      benchmark::DoNotOptimize(dst.data());
      benchmark::ClobberMemory();
    }
    firdecim_rrrf_destroy(q);
  } else {
    // Coefficients 2 m up long: m = taps / 2 gives the same taps per phase.
    rresamp_rrrf q = rresamp_rrrf_create(rate.up, rate.down, taps / 2, h.data());
    for (auto _ : state) {
      rresamp_rrrf_execute_block(q, const_cast<float*>(src.data()), iters, dst.data());
      benchmark::DoNotOptimize(dst.data());
      benchmark::ClobberMemory();
    }
    rresamp_rrrf_destroy(q);
  }
  Count(state, static_cast<std::int64_t>(dst.size()));
}

// libsoxr at its default (high) quality, one thread, float samples.
void Soxr(benchmark::State& state, Rate rate) {
  const int iters = ItersOf(rate);
  const std::vector<float> src = Signal<float>(static_cast<std::size_t>(iters) * rate.down);
  std::vector<float> dst(static_cast<std::size_t>(iters) * rate.up + 1024);
  const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  soxr_error_t error = nullptr;
  soxr_t q =
      soxr_create(48000.0 * rate.down, 48000.0 * rate.up, 1, &error, nullptr, nullptr, &runtime);
  std::int64_t produced = 0;
  for (auto _ : state) {
    std::size_t used = 0;
    std::size_t done = 0;
    soxr_process(q, src.data(), src.size(), &used, dst.data(), dst.size(), &done);
    produced += static_cast<std::int64_t>(done);
    benchmark::DoNotOptimize(dst.data());
  }
  soxr_delete(q);
  state.SetItemsProcessed(produced);
}

// libsamplerate's middle sinc converter.
void SampleRate(benchmark::State& state, Rate rate) {
  const int iters = ItersOf(rate);
  const std::vector<float> src = Signal<float>(static_cast<std::size_t>(iters) * rate.down);
  std::vector<float> dst(static_cast<std::size_t>(iters) * rate.up + 1024);
  int error = 0;
  SRC_STATE* q = src_new(SRC_SINC_MEDIUM_QUALITY, 1, &error);
  std::int64_t produced = 0;
  for (auto _ : state) {
    SRC_DATA data{};
    data.data_in = src.data();
    data.data_out = dst.data();
    data.input_frames = static_cast<long>(src.size());
    data.output_frames = static_cast<long>(dst.size());
    data.src_ratio = static_cast<double>(rate.up) / rate.down;
    src_process(q, &data);
    produced += data.output_frames_gen;
    benchmark::DoNotOptimize(dst.data());
  }
  src_delete(q);
  state.SetItemsProcessed(produced);
}

template <class F>
void Add(const std::string& name, F body, bool per_phase_taps) {
  auto* b = benchmark::RegisterBenchmark(name.c_str(), body);
  if (per_phase_taps) {
    for (int taps : kPhaseTaps) b->Arg(taps);
  } else {
    b->Arg(0);
  }
  b->ArgName("taps");
}

template <class T>
void RegisterType(const char* type, int levels_available) {
  for (const Rate& rate : kRates) {
    const std::string prefix = std::string(type) + "." + rate.name + "/";
    Add(
        prefix + "ours", [rate](benchmark::State& s) { Ours<T>(s, rate, -1); }, true);
    for (int level = 0; level < engine::kLevelCount; ++level) {
      if (!(levels_available & (1 << level))) continue;
      Add(
          prefix + "ours_" + engine::kLevelNames[level],
          [rate, level](benchmark::State& s) { Ours<T>(s, rate, level); }, true);
    }
    Add(
        prefix + "plain", [rate](benchmark::State& s) { Plain<T>(s, rate); }, true);
    if constexpr (sizeof(T) == 4) {
      Add(
          prefix + "liquid", [rate](benchmark::State& s) { Liquid(s, rate); }, true);
      Add(
          prefix + "soxr", [rate](benchmark::State& s) { Soxr(s, rate); }, false);
      Add(
          prefix + "samplerate", [rate](benchmark::State& s) { SampleRate(s, rate); }, false);
    }
  }
}

}  // namespace
}  // namespace zal::bench::multirate

int main(int argc, char** argv) {
  using namespace zal;
  std::uint64_t features = 0;
  engine::DetectFeatures(engine::ThisProcessor(), &features);
  int levels = 0;
  for (int level = 0; level < engine::kLevelCount; ++level) {
    if ((features & engine::kLevelNeeds[level]) == engine::kLevelNeeds[level]) levels |= 1 << level;
  }
  bench::multirate::RegisterType<float>("f32", levels);
  bench::multirate::RegisterType<double>("f64", levels);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
