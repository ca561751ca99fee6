// Convolution over a grid of lengths against a direct loop built -O3 -march=native and an
// overlap-add over FFTW (FFTW_MEASURE plans made before timing); and the resamplers against the
// library's Copy, per element written. Names:
//   conv/<contender>/a:A/b:B  contenders ours (the exported work-buffer form, natural level),
//                             direct and transform (the engine forced to one method), loop, fftw
//   down/<contender>/<type>/factor:F/n:N, up/..., copy/ours/<type>/n:N  (N elements written,
//                             contenders ours and loop, type f32 or f64)
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/convolution_contenders.h"
#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "engine/primitives/convolution/convolution_plan.h"
#include "zalaccelerate/utility.h"

namespace zal::bench {
namespace {

namespace utility = zalaccelerate::utility;

bool Smoke() {
  return std::getenv("ZAL_BENCH_SMOKE") != nullptr;
}

std::vector<float> Signal(int n, double rate) {
  std::vector<float> v(n);
  for (int i = 0; i < n; ++i) v[i] = static_cast<float>(std::sin(rate * i) + 0.25);
  return v;
}

struct Operands {
  Operands(int len_a, int len_b)
      : a(Signal(len_a, 0.1)), b(Signal(len_b, 0.37)), dst(len_a + len_b - 1) {}
  std::vector<float> a;
  std::vector<float> b;
  std::vector<float> dst;
};

void SetCounters(benchmark::State& state, int len_a, int len_b) {
  state.counters["a"] = len_a;
  state.counters["b"] = len_b;
}

void Ours(benchmark::State& state, int len_a, int len_b) {
  Operands o(len_a, len_b);
  std::vector<float> work(utility::ConvolutionWorkBufferSize(len_a, len_b) + 1);
  for (auto _ : state) {
    utility::Convolve(len_a, o.a.data(), len_b, o.b.data(), o.dst.data(), work.data());
    benchmark::ClobberMemory();
  }
  SetCounters(state, len_a, len_b);
}

void Method(benchmark::State& state, int len_a, int len_b, int method) {
  Operands o(len_a, len_b);
  int bytes = 0;
  engine::dispatch::ConvolutionGetSize(len_a, len_b, engine::kConvolutionDataF32, method, &bytes);
  std::vector<unsigned char> work(bytes + 1);
  for (auto _ : state) {
    engine::dispatch::ConvolveF32(o.a.data(), len_a, o.b.data(), len_b, o.dst.data(), method,
                                  work.data());
    benchmark::ClobberMemory();
  }
  SetCounters(state, len_a, len_b);
}

void Loop(benchmark::State& state, int len_a, int len_b) {
  Operands o(len_a, len_b);
  for (auto _ : state) {
    PlainConvolve(o.a.data(), len_a, o.b.data(), len_b, o.dst.data());
    benchmark::ClobberMemory();
  }
  SetCounters(state, len_a, len_b);
}

void Fftw(benchmark::State& state, int len_a, int len_b) {
  Operands o(len_a, len_b);
  FftwOverlapAdd peer(len_a, len_b, !Smoke());
  for (auto _ : state) {
    peer.Run(o.a.data(), o.b.data(), o.dst.data());
    benchmark::ClobberMemory();
  }
  SetCounters(state, len_a, len_b);
}

template <class T>
std::vector<T> Samples(int n) {
  const std::vector<float> v = Signal(n, 0.1);
  return std::vector<T>(v.begin(), v.end());
}

template <class T>
void Down(benchmark::State& state, bool ours, int factor, int outputs) {
  const std::vector<T> src = Samples<T>(outputs * factor);
  std::vector<T> dst(outputs);
  for (auto _ : state) {
    unsigned phase = 0;
    if (ours) {
      utility::DownSample(outputs * factor, src.data(), dst.data(), factor, &phase);
    } else {
      PlainDownSample(src.data(), dst.data(), outputs, factor);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * outputs);
}

template <class T>
void Up(benchmark::State& state, bool ours, int factor, int outputs) {
  const std::vector<T> src = Samples<T>(outputs / factor);
  std::vector<T> dst(outputs);
  for (auto _ : state) {
    unsigned phase = 0;
    if (ours) {
      utility::UpSample(outputs / factor, src.data(), dst.data(), factor, &phase);
    } else {
      PlainUpSample(src.data(), dst.data(), outputs / factor, factor);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * outputs);
}

template <class T>
void CopyPeer(benchmark::State& state, int outputs) {
  const std::vector<T> src = Samples<T>(outputs);
  std::vector<T> dst(outputs);
  for (auto _ : state) {
    utility::Copy(outputs, src.data(), dst.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * outputs);
}

template <class T>
void RegisterResampling(const std::string& type) {
  const std::vector<int> sizes = Smoke() ? std::vector<int>{1024} : std::vector<int>{4096, 1 << 20};
  for (int outputs : sizes) {
    const std::string n = "/n:" + std::to_string(outputs);
    for (int factor : {2, 3, 4, 5, 8}) {
      // UpSample writes whole groups of factor outputs.
      const int written = outputs / factor * factor;
      const std::string tail = "/" + type + "/factor:" + std::to_string(factor);
      for (bool ours : {true, false}) {
        const std::string who = ours ? "ours" : "loop";
        benchmark::RegisterBenchmark(("down/" + who + tail + n).c_str(), [=](benchmark::State& s) {
          Down<T>(s, ours, factor, outputs);
        });
        benchmark::RegisterBenchmark(("up/" + who + tail + "/n:" + std::to_string(written)).c_str(),
                                     [=](benchmark::State& s) { Up<T>(s, ours, factor, written); });
      }
    }
    benchmark::RegisterBenchmark(("copy/ours/" + type + n).c_str(),
                                 [=](benchmark::State& s) { CopyPeer<T>(s, outputs); });
  }
}

void RegisterAll() {
  benchmark::AddCustomContext("natural_level",
                              engine::kLevelNames[(engStartDispatch(), engGetDispatchIndex())]);
  const std::vector<int> longer =
      Smoke() ? std::vector<int>{16, 256} : std::vector<int>{16, 64, 256, 1024, 4096, 16384, 65536};
  const std::vector<int> shorter =
      Smoke() ? std::vector<int>{16, 64} : std::vector<int>{16, 32, 64, 128, 256, 512, 1024, 4096};
  for (int len_a : longer) {
    for (int len_b : shorter) {
      if (len_b > len_a) continue;
      const std::string cell = "/a:" + std::to_string(len_a) + "/b:" + std::to_string(len_b);
      benchmark::RegisterBenchmark(("conv/ours" + cell).c_str(),
                                   [=](benchmark::State& s) { Ours(s, len_a, len_b); });
      benchmark::RegisterBenchmark(("conv/direct" + cell).c_str(), [=](benchmark::State& s) {
        Method(s, len_a, len_b, engine::kConvolutionDirect);
      });
      benchmark::RegisterBenchmark(("conv/transform" + cell).c_str(), [=](benchmark::State& s) {
        Method(s, len_a, len_b, engine::kConvolutionTransform);
      });
      benchmark::RegisterBenchmark(("conv/loop" + cell).c_str(),
                                   [=](benchmark::State& s) { Loop(s, len_a, len_b); });
      benchmark::RegisterBenchmark(("conv/fftw" + cell).c_str(),
                                   [=](benchmark::State& s) { Fftw(s, len_a, len_b); });
    }
  }
  RegisterResampling<float>("f32");
  RegisterResampling<double>("f64");
}

}  // namespace
}  // namespace zal::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  zal::bench::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
