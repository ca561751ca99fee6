// Transforms against FFTW (FFTW_MEASURE plans; Debian's libfftw3, or whichever build of the same
// soname LD_LIBRARY_PATH puts first), every kind, N = 16 .. 2^20, out of place, warm caches. Names:
// <kind>.<direction>/<contender>[/level:L]/n:N, kinds r32 r64 (real), c32 c64 (interleaved), s32
// s64 (split); ours at level -1 is the exported interface with natural dispatch, at 0..5 that
// level's kernels called directly. FFTW runs the same kind and layout: r2c, interleaved dft, and
// its guru split interface. Counter MFlops = 5 N log2 N / t for complex kinds, 2.5 N log2 N / t for
// real ones.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

#if defined(__linux__)
#include <dlfcn.h>
#endif

#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "engine/primitives/fft/fft_spec.h"
#include "zalaccelerate/transform.h"
#include "zalaccelerate/utility.h"

namespace zal::bench {
namespace {

namespace transform = zalaccelerate::transform;
using engine::FFTSpec;

constexpr int kMinOrder = 4;
constexpr int kMaxOrder = 20;

// The smoke test (ZAL_BENCH_SMOKE set) only checks that everything runs: short lengths, and
// FFTW plans without measuring.
bool Smoke() {
  return std::getenv("ZAL_BENCH_SMOKE") != nullptr;
}

enum class Layout { kReal, kInterleaved, kSplit };

// Scalars per side of one transform: inputs and outputs sized for the larger direction.
size_t Scalars(Layout layout, size_t n) {
  return layout == Layout::kReal ? n + 2 : 2 * n;
}

// Aligned buffers of random data, reused by every iteration.
template <class T>
struct Buffers {
  Buffers(size_t scalars, bool fftw) : fftw(fftw) {
    const size_t bytes = scalars * sizeof(T);
    src = static_cast<T*>(fftw ? fftw_malloc(bytes) : zalaccelerate::utility::Malloc_Byte(bytes));
    dst = static_cast<T*>(fftw ? fftw_malloc(bytes) : zalaccelerate::utility::Malloc_Byte(bytes));
  }
  ~Buffers() {
    if (fftw) {
      fftw_free(src);
      fftw_free(dst);
    } else {
      zalaccelerate::utility::Free(reinterpret_cast<unsigned char*>(src));
      zalaccelerate::utility::Free(reinterpret_cast<unsigned char*>(dst));
    }
  }
  void Fill(size_t scalars) {
    for (size_t i = 0; i < scalars; ++i) src[i] = static_cast<T>(std::sin(0.1 * i) + 0.25);
  }
  bool fftw;
  T* src;
  T* dst;
};

void SetCounters(benchmark::State& state, Layout layout, size_t n) {
  const double flops = (layout == Layout::kReal ? 2.5 : 5.0) * n * std::log2(double(n));
  state.counters["MFlops"] =
      benchmark::Counter(flops * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["n"] = static_cast<double>(n);
}

// ---- Ours: the exported interface at the natural level ----

// The overload the state type selects: split, interleaved or real.
template <class State, class T>
void RunExported(State* s, bool inverse, const T* src, T* dst, size_t n, unsigned char* work) {
  using C = std::complex<T>;
  if constexpr (requires { transform::FFTFwd(src, src, dst, dst, s, work); }) {
    inverse ? transform::FFTInv(src, src + n, dst, dst + n, s, work)
            : transform::FFTFwd(src, src + n, dst, dst + n, s, work);
  } else if constexpr (requires(const C* a, C* b) { transform::FFTFwd(a, b, s, work); }) {
    const auto* a = reinterpret_cast<const C*>(src);
    auto* b = reinterpret_cast<C*>(dst);
    inverse ? transform::FFTInv(a, b, s, work) : transform::FFTFwd(a, b, s, work);
  } else {
    inverse ? transform::FFTInv(src, dst, s, work) : transform::FFTFwd(src, dst, s, work);
  }
}

template <class State, class T>
void Exported(benchmark::State& state, Layout layout, bool inverse, int order) {
  const size_t n = size_t{1} << order;
  State* s = nullptr;
  transform::FFTInit(&s, static_cast<unsigned>(order));
  unsigned int size = 0;
  transform::FFTGetBufSize(s, &size);
  unsigned char* work = zalaccelerate::utility::Malloc_Byte(size);
  Buffers<T> buffers(Scalars(layout, n), false);
  buffers.Fill(Scalars(layout, n));
  if (inverse && layout == Layout::kReal) buffers.src[1] = buffers.src[n + 1] = 0;
  for (auto _ : state) {
    RunExported(s, inverse, buffers.src, buffers.dst, n, work);
    benchmark::ClobberMemory();
  }
  SetCounters(state, layout, n);
  transform::FFTFree(s);
  zalaccelerate::utility::Free(work);
  delete s;
}

// ---- Ours: one level's kernels, called directly ----

template <class Transform, class T>
EngStatus CallLevel(Transform* fn, const T* src, T* dst, size_t n, const FFTSpec* spec,
                    unsigned char* work) {
  if constexpr (std::is_same_v<Transform, engine::FFTSplitTransform<T>>) {
    return fn(src, src + n, dst, dst + n, spec, work);
  } else if constexpr (std::is_same_v<Transform, engine::FFTTransform<T>>) {
    return fn(src, dst, spec, work);
  } else {
    using C = std::conditional_t<std::is_same_v<T, float>, engine::Complex32, engine::Complex64>;
    return fn(reinterpret_cast<const C*>(src), reinterpret_cast<C*>(dst), spec, work);
  }
}

template <class T, class Transform>
void AtLevel(benchmark::State& state, Layout layout, bool inverse, int order, int level,
             engine::DispatchTable<engine::FFTGetSize>& get_size,
             engine::DispatchTable<engine::FFTInit>& init, engine::DispatchTable<Transform>& fwd,
             engine::DispatchTable<Transform>& inv) {
  const size_t n = size_t{1} << order;
  int spec_size = 0, init_size = 0, work_size = 0;
  get_size[level + 1](order, engine::kFFTDivInvByN, 1, &spec_size, &init_size, &work_size);
  std::vector<unsigned char> block(static_cast<size_t>(spec_size));
  unsigned char* work = zalaccelerate::utility::Malloc_Byte(static_cast<unsigned>(work_size));
  FFTSpec* spec = nullptr;
  init[level + 1](&spec, order, engine::kFFTDivInvByN, 1, block.data(), nullptr);
  Buffers<T> buffers(Scalars(layout, n), false);
  buffers.Fill(Scalars(layout, n));
  if (inverse && layout == Layout::kReal) buffers.src[1] = buffers.src[n + 1] = 0;
  Transform* fn = (inverse ? inv : fwd)[level + 1];
  for (auto _ : state) {
    CallLevel(fn, buffers.src, buffers.dst, n, spec, work);
    benchmark::ClobberMemory();
  }
  SetCounters(state, layout, n);
  zalaccelerate::utility::Free(work);
}

// ---- FFTW ----

template <class T>
struct Fftw;
#define ZAL_FFTW_API(T, prefix)                                                                    \
  template <>                                                                                      \
  struct Fftw<T> {                                                                                 \
    using Plan = prefix##_plan;                                                                    \
    static Plan Make(Layout layout, int n, T* src, T* dst) {                                       \
      const unsigned flags = Smoke() ? FFTW_ESTIMATE : FFTW_MEASURE;                               \
      if (layout == Layout::kReal) {                                                               \
        return prefix##_plan_dft_r2c_1d(n, src, reinterpret_cast<prefix##_complex*>(dst), flags);  \
      }                                                                                            \
      if (layout == Layout::kInterleaved) {                                                        \
        return prefix##_plan_dft_1d(n, reinterpret_cast<prefix##_complex*>(src),                   \
                                    reinterpret_cast<prefix##_complex*>(dst), FFTW_FORWARD,        \
                                    flags);                                                        \
      }                                                                                            \
      prefix##_iodim dim{n, 1, 1};                                                                 \
      return prefix##_plan_guru_split_dft(1, &dim, 0, nullptr, src, src + n, dst, dst + n, flags); \
    }                                                                                              \
    static void Execute(Plan plan) { prefix##_execute(plan); }                                     \
    static void Destroy(Plan plan) { prefix##_destroy_plan(plan); }                                \
  };
ZAL_FFTW_API(float, fftwf)
ZAL_FFTW_API(double, fftw)
#undef ZAL_FFTW_API

template <class T>
void Peer(benchmark::State& state, Layout layout, int order) {
  const size_t n = size_t{1} << order;
  Buffers<T> buffers(Scalars(layout, n), true);
  auto plan = Fftw<T>::Make(layout, static_cast<int>(n), buffers.src, buffers.dst);
  buffers.Fill(Scalars(layout, n));
  for (auto _ : state) {
    Fftw<T>::Execute(plan);
    benchmark::ClobberMemory();
  }
  SetCounters(state, layout, n);
  Fftw<T>::Destroy(plan);
}

bool LevelRuns(int level) {
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  return (features & engine::kLevelNeeds[level]) == engine::kLevelNeeds[level];
}

template <class State, class T, class Transform>
void RegisterKind(const char* kind, Layout layout,
                  engine::DispatchTable<engine::FFTGetSize>& get_size,
                  engine::DispatchTable<engine::FFTInit>& init,
                  engine::DispatchTable<Transform>& fwd, engine::DispatchTable<Transform>& inv) {
  for (int order = kMinOrder; order <= (Smoke() ? 8 : kMaxOrder); ++order) {
    const std::string n = "/n:" + std::to_string(1 << order);
    for (bool inverse : {false, true}) {
      const std::string prefix = std::string(kind) + (inverse ? ".inv" : ".fwd");
      benchmark::RegisterBenchmark(
          (prefix + "/ours/level:-1" + n).c_str(),
          [=](benchmark::State& s) { Exported<State, T>(s, layout, inverse, order); });
      for (int level = 0; level < engine::kLevelCount; ++level) {
        if (!LevelRuns(level)) continue;
        benchmark::RegisterBenchmark((prefix + "/ours/level:" + std::to_string(level) + n).c_str(),
                                     [=, &get_size, &init, &fwd, &inv](benchmark::State& s) {
                                       AtLevel<T>(s, layout, inverse, order, level, get_size, init,
                                                  fwd, inv);
                                     });
      }
      if (!inverse) {
        benchmark::RegisterBenchmark((prefix + "/fftw" + n).c_str(),
                                     [=](benchmark::State& s) { Peer<T>(s, layout, order); });
      }
    }
  }
}

// The file the loader took FFTW's single-precision library from, so that a report tells which
// FFTW it measured.
std::string FftwLibrary() {
#if defined(__linux__)
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&fftwf_execute), &info) && info.dli_fname) {
    return info.dli_fname;
  }
#endif
  return "unknown";
}

void RegisterAll() {
  auto& t = engine::g_dispatch_tables;
  benchmark::AddCustomContext("natural_level",
                              engine::kLevelNames[(engStartDispatch(), engGetDispatchIndex())]);
  benchmark::AddCustomContext("fftw_library", FftwLibrary());
  RegisterKind<transform::FFTState_Float, float>("r32", Layout::kReal, t.FFTGetSizeRealF32,
                                                 t.FFTInitRealF32, t.FFTFwdRealF32,
                                                 t.FFTInvRealF32);
  RegisterKind<transform::FFTState_Double, double>("r64", Layout::kReal, t.FFTGetSizeRealF64,
                                                   t.FFTInitRealF64, t.FFTFwdRealF64,
                                                   t.FFTInvRealF64);
  RegisterKind<transform::FFTState_Complex_Float_Interleaved, float>(
      "c32", Layout::kInterleaved, t.FFTGetSizeComplexF32, t.FFTInitComplexF32, t.FFTFwdComplexF32,
      t.FFTInvComplexF32);
  RegisterKind<transform::FFTState_Complex_Double_Interleaved, double>(
      "c64", Layout::kInterleaved, t.FFTGetSizeComplexF64, t.FFTInitComplexF64, t.FFTFwdComplexF64,
      t.FFTInvComplexF64);
  RegisterKind<transform::FFTState_Complex_Float_Deinterleaved, float>(
      "s32", Layout::kSplit, t.FFTGetSizeSplitF32, t.FFTInitSplitF32, t.FFTFwdSplitF32,
      t.FFTInvSplitF32);
  RegisterKind<transform::FFTState_Complex_Double_Deinterleaved, double>(
      "s64", Layout::kSplit, t.FFTGetSizeSplitF64, t.FFTInitSplitF64, t.FFTFwdSplitF64,
      t.FFTInvSplitF64);
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
