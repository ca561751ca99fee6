// The matrix product against Eigen called directly (built -O3 -march=native), square d x d
// operands, both orders and all four element types, on 64-byte aligned buffers. Ours is the
// exported Multiply at the natural level; "ours-<level>" calls one level's kernel straight, by
// columns, to show what each instruction set is worth. Counters: items are multiply-adds (d^3).
#include <benchmark/benchmark.h>

#include <complex>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "bench/matrix_contenders.h"
#include "engine/core/level.h"
#include "engine/core/primitive_declarations.h"
#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::matrix {
namespace {

namespace utility = zalaccelerate::utility;
using zalaccelerate::ColumnMajor;
using zalaccelerate::MatrixDataOrder;
using zalaccelerate::RowMajor;

constexpr int kSizes[] = {4, 8, 16, 32, 64, 128, 256};
constexpr int kLargest = 256;

// The smoke test (ZAL_BENCH_SMOKE set) only checks that everything runs: sizes up to 16.
bool Smoke() {
  return std::getenv("ZAL_BENCH_SMOKE") != nullptr;
}

float Value(std::uint64_t& state) {
  std::uint64_t x = (state += 0x9E3779B97F4A7C15);
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
  return static_cast<float>(static_cast<double>((x ^ (x >> 31)) >> 11) * 0x1p-52 - 1.0);
}

float* Allocate(float*, unsigned n) {
  return utility::Malloc_Float(n);
}
double* Allocate(double*, unsigned n) {
  return utility::Malloc_Double(n);
}
std::complex<float>* Allocate(std::complex<float>*, unsigned n) {
  return utility::Malloc_Complex_Float(n);
}
std::complex<double>* Allocate(std::complex<double>*, unsigned n) {
  return utility::Malloc_Complex_Double(n);
}
template <class T>
T Make(std::uint64_t& state) {
  const auto re = Value(state);
  return T(re, Value(state));
}
template <>
float Make<float>(std::uint64_t& state) {
  return Value(state);
}
template <>
double Make<double>(std::uint64_t& state) {
  return Value(state);
}

// Operands of the largest size, filled once per type.
template <class T>
struct Data {
  Data() {
    constexpr unsigned n = kLargest * kLargest;
    a = Allocate(a, n);
    b = Allocate(b, n);
    c = Allocate(c, n);
    std::uint64_t state = 0x5EED;
    for (unsigned i = 0; i < n; ++i) {
      a[i] = Make<T>(state);
      b[i] = Make<T>(state);
      c[i] = T(0);
    }
  }
  ~Data() {
    utility::Free(a);
    utility::Free(b);
    utility::Free(c);
  }
  T* a = nullptr;
  T* b = nullptr;
  T* c = nullptr;
};
template <class T>
Data<T>& TheData() {
  static Data<T> data;
  return data;
}

template <class T, class Call>
void Measure(benchmark::State& state, Call call) {
  engStartDispatch();
  const int d = static_cast<int>(state.range(0));
  Data<T>& data = TheData<T>();
  for (auto _ : state) {
    call(d, data.a, data.b, data.c);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * d * d * d);
}

template <class T>
struct EngineType {
  using Type = T;
};
template <>
struct EngineType<std::complex<float>> {
  using Type = engine::Complex32;
};
template <>
struct EngineType<std::complex<double>> {
  using Type = engine::Complex64;
};

// Each level's kernel of the element type, called straight by columns.
template <class T>
engine::MatrixProduct<typename EngineType<T>::Type>* LevelKernel(int level) {
  using namespace zal::engine;
  if constexpr (std::is_same_v<T, float>) {
    constexpr MatrixProduct<float>* kernels[] = {sse2::MatrixProductF32,  ssse3::MatrixProductF32,
                                                 sse42::MatrixProductF32, avx::MatrixProductF32,
                                                 avx2::MatrixProductF32,  avx512::MatrixProductF32};
    return kernels[level];
  } else if constexpr (std::is_same_v<T, double>) {
    constexpr MatrixProduct<double>* kernels[] = {
        sse2::MatrixProductF64, ssse3::MatrixProductF64, sse42::MatrixProductF64,
        avx::MatrixProductF64,  avx2::MatrixProductF64,  avx512::MatrixProductF64};
    return kernels[level];
  } else if constexpr (std::is_same_v<T, std::complex<float>>) {
    constexpr MatrixProduct<Complex32>* kernels[] = {
        sse2::MatrixProductC32, ssse3::MatrixProductC32, sse42::MatrixProductC32,
        avx::MatrixProductC32,  avx2::MatrixProductC32,  avx512::MatrixProductC32};
    return kernels[level];
  } else {
    constexpr MatrixProduct<Complex64>* kernels[] = {
        sse2::MatrixProductC64, ssse3::MatrixProductC64, sse42::MatrixProductC64,
        avx::MatrixProductC64,  avx2::MatrixProductC64,  avx512::MatrixProductC64};
    return kernels[level];
  }
}

template <class T>
void Register(const char* type, int natural_level) {
  using E = typename EngineType<T>::Type;
  const auto add = [type](const char* order, const std::string& contender, auto call) {
    const std::string name = std::string(type) + "." + order + "/" + contender;
    auto* benchmark = benchmark::RegisterBenchmark(
        name.c_str(), [call](benchmark::State& state) { Measure<T>(state, call); });
    benchmark->ArgName("n");
    for (int d : kSizes) {
      if (!Smoke() || d <= 16) benchmark->Arg(d);
    }
  };
  for (MatrixDataOrder order : {ColumnMajor, RowMajor}) {
    const char* order_name = order == ColumnMajor ? "ColumnMajor" : "RowMajor";
    const bool rows = order == RowMajor;
    add(order_name, "ours", [order](int d, const T* a, const T* b, T* c) {
      utility::Multiply(order, d, d, d, a, b, c);
    });
    add(order_name, "eigen",
        [rows](int d, const T* a, const T* b, T* c) { EigenProduct(rows, d, a, b, c); });
  }
  for (int level = 0; level <= natural_level; ++level) {
    const auto kernel = LevelKernel<T>(level);
    add("ColumnMajor", std::string("ours-") + engine::kLevelNames[level],
        [kernel](int d, const T* a, const T* b, T* c) {
          kernel(reinterpret_cast<const E*>(a), reinterpret_cast<const E*>(b),
                 reinterpret_cast<E*>(c), d, d, d, 0);
        });
  }
}

void RegisterAll() {
  engStartDispatch();
  const int natural_level = engGetDispatchIndex();
  benchmark::AddCustomContext("natural_level", engine::kLevelNames[natural_level]);
  Register<float>("f32", natural_level);
  Register<double>("f64", natural_level);
  Register<std::complex<float>>("c32", natural_level);
  Register<std::complex<double>>("c64", natural_level);
}

}  // namespace
}  // namespace zal::bench::matrix

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  zal::bench::matrix::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
