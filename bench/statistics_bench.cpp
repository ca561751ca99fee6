// Reductions and complex-domain helpers against their peers, in one binary: the library at its
// natural level (level -1 in the names), plain loops, Eigen and VOLK, each over the same 64-byte
// aligned buffers, plus a read-bandwidth probe for the memory-bound sizes. Counters: items are
// elements; bytes count each element read and each element written once.
#include <benchmark/benchmark.h>

#include <complex>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "bench/statistics_contenders.h"
#include "engine/core/level.h"
#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::statistics {
namespace {

namespace utility = zalaccelerate::utility;

constexpr std::int64_t kSizes[] = {64, 1 << 12, 1 << 22};

struct MemberInfo {
  const char* name;  // <type>.<member> in the benchmark names
  int bytes;         // read and written per element
};
constexpr MemberInfo kMembers[kMemberCount] = {
    {"f32.Sum", 4},          {"f32.DotProduct", 8},   {"f32.NormL2", 4},
    {"f32.MaxIndex", 4},     {"f32.MinMaxIndex", 4},  {"c32.Magnitude", 12},
    {"c32.PowerSpectr", 12}, {"c32.CartToPolar", 16}, {"f32.Read", 4},
};

// Values in [-1, 1) from a fixed splitmix64 stream, filled once for the largest size.
struct Data {
  explicit Data(unsigned n)
      : a(utility::Malloc_Float(n)),
        b(utility::Malloc_Float(n)),
        z(utility::Malloc_Complex_Float(n)),
        first(utility::Malloc_Float(n)),
        second(utility::Malloc_Float(n)) {
    std::uint64_t state = 0x5EED;
    const auto next = [&state] {
      std::uint64_t x = (state += 0x9E3779B97F4A7C15);
      x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
      x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
      return static_cast<float>(static_cast<double>((x ^ (x >> 31)) >> 11) * 0x1p-52 - 1.0);
    };
    for (unsigned i = 0; i < n; ++i) {
      a[i] = next();
      b[i] = next();
      z[i] = {next(), next()};
      first[i] = second[i] = 0;
    }
  }
  ~Data() {
    utility::Free(a);
    utility::Free(b);
    utility::Free(z);
    utility::Free(first);
    utility::Free(second);
  }
  float* a;
  float* b;
  std::complex<float>* z;
  float* first;
  float* second;
};

Data& TheData() {
  static Data data(static_cast<unsigned>(kSizes[std::size(kSizes) - 1]));
  return data;
}

void Measure(benchmark::State& state, Kernel kernel, Member member) {
  engStartDispatch();
  const auto n = static_cast<unsigned>(state.range(0));
  Data& data = TheData();
  const Buffers buffers{n, data.a, data.b, data.z, data.first, data.second};
  for (auto _ : state) {
    kernel(buffers);
    benchmark::ClobberMemory();
  }
  const auto elements = static_cast<std::int64_t>(state.iterations()) * n;
  state.SetItemsProcessed(elements);
  state.SetBytesProcessed(elements * kMembers[member].bytes);
}

void RegisterAll() {
  const std::vector<std::int64_t> sizes(std::begin(kSizes), std::end(kSizes));
  const Contender contenders[] = {Ours(), PlainLoops(), EigenContender(), VolkContender()};
  engStartDispatch();
  benchmark::AddCustomContext("natural_level", engine::kLevelNames[engGetDispatchIndex()]);
  for (int m = 0; m < kMemberCount; ++m) {
    const auto member = static_cast<Member>(m);
    for (const Contender& contender : contenders) {
      const Kernel kernel = contender.kernels[member];
      if (!kernel) continue;
      std::string name = std::string(kMembers[member].name) + "/" + contender.name;
      if (&contender == &contenders[0]) name += "/level:-1";
      benchmark::RegisterBenchmark(
          name.c_str(),
          [kernel, member](benchmark::State& state) { Measure(state, kernel, member); })
          ->ArgName("n")
          ->ArgsProduct({sizes});
    }
  }
}

}  // namespace
}  // namespace zal::bench::statistics

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  zal::bench::statistics::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
