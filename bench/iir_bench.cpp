// Recursive filters against plain per-sample transposed-direct-form-II loops built -O3
// -march=native: biquad cascades of 1, 4 and 8 sections and an order-8 direct form, float and
// double, on 1 Ki-sample blocks of one stream (the state carried from call to call). Two loops:
// section by section over the block, and sample by sample through every section (which lets the
// processor overlap sections); the comparison takes the faster. Items are samples.
//
// Decay8/Steady8: an 8-section cascade over 2^20 samples in 1 Ki blocks, the first an impulse
// followed by zeros (the state decays through the subnormal range), the other noise; the
// caller's flush-to-zero and denormals-are-zero both off.
//
// ZAL_BENCH_LEVEL=<level> runs ours at that level instead of the natural one.
#include <benchmark/benchmark.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "bench/iir_plain_loops.h"
#include "bench/requested_level.h"
#include "zalaccelerate/core.h"
#include "zalaccelerate/filter.h"

namespace zal::bench::iir {
namespace {

using zalaccelerate::IIRState_Double;
using zalaccelerate::IIRState_Float;
namespace filter = zalaccelerate::filter;

constexpr int kBlock = 1024;
constexpr int kDecayLength = 1 << 20;

// A Butterworth-like lowpass section (Q = 1/sqrt 2) at a quarter of the rate, normalised:
// b0 b1 b2 1 a1 a2. Well conditioned also as an order-8 direct form.
std::vector<double> Section() {
  const double w = 2 * 3.141592653589793 * 0.25 / 2;
  const double alpha = std::sin(w) / std::sqrt(2.0);
  const double cw = std::cos(w);
  const double a0 = 1 + alpha;
  return {(1 - cw) / 2 / a0, (1 - cw) / a0, (1 - cw) / 2 / a0, 1, -2 * cw / a0, (1 - alpha) / a0};
}

// Sections multiplied out: b0..bN, a0..aN.
std::vector<double> DirectForm(int sections) {
  const std::vector<double> s = Section();
  std::vector<double> b{1}, a{1};
  for (int k = 0; k < sections; ++k) {
    std::vector<double> nb(b.size() + 2, 0), na(a.size() + 2, 0);
    for (size_t i = 0; i < b.size(); ++i) {
      for (int j = 0; j < 3; ++j) {
        nb[i + j] += b[i] * s[j];
        na[i + j] += a[i] * s[3 + j];
      }
    }
    b = nb;
    a = na;
  }
  b.insert(b.end(), a.begin(), a.end());
  return b;
}

template <class T>
std::vector<T> Noise(size_t n) {
  std::mt19937 rng(1);
  std::uniform_real_distribution<T> dist(-1, 1);
  std::vector<T> v(n);
  for (auto& x : v) x = dist(rng);
  return v;
}

template <class T>
struct Filter {
  virtual ~Filter() = default;
  virtual void Run(const T* src, T* dst, int n) = 0;
  virtual void Reset() = 0;
};

template <class T>
using StateOf = std::conditional_t<sizeof(T) == 4, IIRState_Float, IIRState_Double>;

template <class T>
struct Ours : Filter<T> {
  StateOf<T>* state = nullptr;
  std::vector<T> zeros;
  Ours(int sections, bool direct) {
    if (direct) {
      const std::vector<double> taps = DirectForm(sections);
      const std::vector<T> t(taps.begin(), taps.end());
      filter::IIRInit(&state, t.data(), static_cast<unsigned>(2 * sections), nullptr);
      zeros.assign(2 * sections, 0);
    } else {
      std::vector<T> t;
      for (int s = 0; s < sections; ++s) {
        for (double v : Section()) t.push_back(static_cast<T>(v));
      }
      filter::IIRInit_BiQuad(&state, t.data(), static_cast<unsigned>(sections), nullptr);
      zeros.assign(2 * sections, 0);
    }
  }
  ~Ours() override { filter::IIRFree(state); }
  void Run(const T* src, T* dst, int n) override {
    filter::IIR(static_cast<unsigned>(n), src, dst, state);
  }
  void Reset() override { filter::IIRSetDlyLine(state, zeros.data()); }
};

template <class T>
struct Plain : Filter<T> {
  int sections;
  bool direct;
  bool by_sample;
  std::vector<T> taps;
  std::vector<T> state;
  Plain(int sections_, bool direct_, bool by_sample_)
      : sections(sections_), direct(direct_), by_sample(by_sample_), state(2 * sections_, 0) {
    if (direct) {
      const std::vector<double> t = DirectForm(sections);
      const int order = 2 * sections;
      for (int k = 0; k <= order; ++k) taps.push_back(static_cast<T>(t[k]));
      for (int k = 1; k <= order; ++k) taps.push_back(static_cast<T>(t[order + 1 + k]));
    } else {
      const std::vector<double> s = Section();
      for (int k = 0; k < sections; ++k) {
        for (int j : {0, 1, 2, 4, 5}) taps.push_back(static_cast<T>(s[j]));
      }
    }
  }
  void Run(const T* src, T* dst, int n) override {
    if (direct) {
      PlainDirect(taps.data(), state.data(), 2 * sections, src, dst, n);
    } else if (by_sample) {
      PlainCascadeBySample(taps.data(), state.data(), sections, src, dst, n);
    } else {
      PlainCascadeBySection(taps.data(), state.data(), sections, src, dst, n);
    }
  }
  void Reset() override { std::fill(state.begin(), state.end(), T(0)); }
};

template <class T>
void Blocks(benchmark::State& bench, Filter<T>& filter) {
  const std::vector<T> src = Noise<T>(kBlock);
  std::vector<T> dst(kBlock);
  for (auto _ : bench) {
    filter.Run(src.data(), dst.data(), kBlock);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  bench.SetItemsProcessed(static_cast<std::int64_t>(bench.iterations()) * kBlock);
}

// The whole signal from rest, in 1 Ki blocks, with the caller's flush modes off.
template <class T>
void Signal(benchmark::State& bench, Filter<T>& filter, bool decaying) {
  std::vector<T> src = decaying ? std::vector<T>(kDecayLength, 0) : Noise<T>(kDecayLength);
  if (decaying) src[0] = 1;
  std::vector<T> dst(kBlock);
  const unsigned int saved = _mm_getcsr();
  _mm_setcsr(saved & ~0x8040u);
  for (auto _ : bench) {
    filter.Reset();
    for (int at = 0; at < kDecayLength; at += kBlock) {
      filter.Run(src.data() + at, dst.data(), kBlock);
      benchmark::DoNotOptimize(dst.data());
    }
    benchmark::ClobberMemory();
  }
  _mm_setcsr(saved);
  bench.SetItemsProcessed(static_cast<std::int64_t>(bench.iterations()) * kDecayLength);
}

template <class T>
void Register(const char* type) {
  struct Member {
    const char* name;
    int sections;
    bool direct;
  };
  for (const Member& m : {Member{"Biquad1", 1, false}, Member{"Biquad4", 4, false},
                          Member{"Biquad8", 8, false}, Member{"Direct8", 4, true}}) {
    const std::string base = std::string(type) + "." + m.name + "/";
    benchmark::RegisterBenchmark((base + "ours").c_str(),
                                 [m](benchmark::State& s) {
                                   Ours<T> f(m.sections, m.direct);
                                   Blocks(s, f);
                                 })
        ->Arg(kBlock)
        ->ArgName("n");
    benchmark::RegisterBenchmark((base + "loop_section").c_str(),
                                 [m](benchmark::State& s) {
                                   Plain<T> f(m.sections, m.direct, false);
                                   Blocks(s, f);
                                 })
        ->Arg(kBlock)
        ->ArgName("n");
    if (!m.direct) {
      benchmark::RegisterBenchmark((base + "loop_sample").c_str(),
                                   [m](benchmark::State& s) {
                                     Plain<T> f(m.sections, m.direct, true);
                                     Blocks(s, f);
                                   })
          ->Arg(kBlock)
          ->ArgName("n");
    }
  }
  for (bool decaying : {true, false}) {
    const std::string base = std::string(type) + (decaying ? ".Decay8/" : ".Steady8/");
    benchmark::RegisterBenchmark((base + "ours").c_str(),
                                 [decaying](benchmark::State& s) {
                                   Ours<T> f(8, false);
                                   Signal(s, f, decaying);
                                 })
        ->Arg(kDecayLength)
        ->ArgName("n");
    benchmark::RegisterBenchmark((base + "loop_section").c_str(),
                                 [decaying](benchmark::State& s) {
                                   Plain<T> f(8, false, false);
                                   Signal(s, f, decaying);
                                 })
        ->Arg(kDecayLength)
        ->ArgName("n");
  }
}

}  // namespace
}  // namespace zal::bench::iir

int main(int argc, char** argv) {
  using namespace zal::bench::iir;
  const char* level = zal::bench::SelectRequestedLevel();
  if (level == nullptr) {
    std::fprintf(stderr, "zal_bench_iir: ZAL_BENCH_LEVEL names no level this processor runs\n");
    return 1;
  }
  benchmark::AddCustomContext("level", level);
  benchmark::AddCustomContext("contender ours", "zalaccelerate::filter::IIR");
  benchmark::AddCustomContext("contender loop_section",
                              "per-sample TDF-II, section by section, -O3 -march=native");
  benchmark::AddCustomContext("contender loop_sample",
                              "per-sample TDF-II, every section per sample, -O3 -march=native");
  Register<float>("f32");
  Register<double>("f64");
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
