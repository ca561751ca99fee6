// The math functions against their peers, in one binary: the library at its natural level (and,
// as contenders ours_<level>, at every level this processor runs),
// SLEEF, the C library's scalar loop and its vector library (a loop built with -O3 -march=native
// -ffast-math), and VOLK where it has the function. Every contender gets the same 64-byte aligned
// buffers of arguments inside each function's usual domain. Items are elements; bytes each element
// read and written.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/math_contenders.h"
#include "engine/core/level.h"
#include "zalaccelerate/core.h"

namespace zal::bench::math {
namespace {

constexpr std::int64_t kSizes[] = {64, 4096};
// A peer's benchmark leaves the dispatch index alone.
constexpr int kPeerLevel = -2;

struct MemberInfo {
  const char* name;
  bool binary;
};
constexpr MemberInfo kMembers[kMemberCount] = {
    {"Abs", false},
    {"Sqr", false},
    {"Sqrt", false},
    {"Inverse", false},
    {"Round", false},
    {"Exp", false},
    {"Ln", false},
    {"Ln_Prec24", false},
    {"Ln_Prec21", false},
    {"Ln_Prec11", false},
    {"Pow", true},
    {"Pow_Prec26", true},
    {"Inverse_Prec26", false},
};

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  double Uniform(double lo, double hi) {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    z ^= z >> 31;
    return lo + (hi - lo) * static_cast<double>(z >> 11) * 0x1p-53;
  }

 private:
  std::uint64_t state_;
};

// Arguments where the function has finite, normal results: what a signal chain feeds it.
template <class T>
void Arguments(Member member, std::vector<T>& a, std::vector<T>& b) {
  Random random(member + 1);
  const double exp_reach = sizeof(T) == 4 ? 80.0 : 700.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    switch (member) {
      case kExp:
        a[i] = static_cast<T>(random.Uniform(-exp_reach, exp_reach));
        break;
      case kLn:
      case kLnPrec24:
      case kLnPrec21:
      case kLnPrec11:
      case kSqrt:
        a[i] = static_cast<T>(std::exp2(random.Uniform(-60, 60)));
        break;
      case kPow:
      case kPowPrec26:
        a[i] = static_cast<T>(std::exp2(random.Uniform(-8, 8)));
        b[i] = static_cast<T>(random.Uniform(-10, 10));
        break;
      case kRound:
        a[i] = static_cast<T>(random.Uniform(-1000, 1000));
        break;
      default:
        a[i] = static_cast<T>(random.Uniform(0.5, 2) * (random.Uniform(0, 1) < 0.5 ? -1 : 1));
    }
  }
}

template <class T>
T* Aligned(std::size_t n) {
  return static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
}

constexpr int kNaturalLevel = -1;

// The dispatch index is process-wide: every benchmark of ours puts its level in force, the natural
// one included, so that no level is left over from the benchmark before.
bool SelectLevel(int level) {
  engStartDispatch();
  static const int natural = engGetDispatchIndex();
  const int wanted = level == kNaturalLevel ? natural : level;
  int selected = -1;
  engSelectCpuFeatures(engine::kLevelNeeds[wanted], &selected);
  engSetDispatchIndex(selected);
  return engGetDispatchIndex() == wanted;
}

bool LevelRuns(int level) {
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  return (features & engine::kLevelNeeds[level]) == engine::kLevelNeeds[level];
}

template <class T>
void Run(benchmark::State& state, Runner<T> runner, Member member, int level) {
  if (level != kPeerLevel && !SelectLevel(level)) {
    state.SkipWithError("the level could not be selected");
    return;
  }
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<T> a_values(n), b_values(n);
  Arguments(member, a_values, b_values);
  T* a = Aligned<T>(n);
  T* b = Aligned<T>(n);
  T* d = Aligned<T>(n);
  for (std::size_t i = 0; i < n; ++i) {
    a[i] = a_values[i];
    b[i] = b_values[i];
    d[i] = 0;
  }
  for (auto _ : state) {
    runner(a, b, d, static_cast<int>(n));
    benchmark::DoNotOptimize(d);
    benchmark::ClobberMemory();
  }
  const auto items = static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(n);
  state.SetItemsProcessed(items);
  state.SetBytesProcessed(items * static_cast<std::int64_t>(sizeof(T)) *
                          (kMembers[member].binary ? 3 : 2));
  std::free(a);
  std::free(b);
  std::free(d);
}

template <class T>
void Register(const char* type, const std::string& contender, const Runners<T>& runners,
              int level) {
  for (int m = 0; m < kMemberCount; ++m) {
    if (!runners[m]) continue;
    const std::string name = std::string(type) + "." + kMembers[m].name + "/" + contender;
    auto* b = benchmark::RegisterBenchmark(
        name.c_str(), [runner = runners[m], m, level](benchmark::State& state) {
          Run<T>(state, runner, static_cast<Member>(m), level);
        });
    for (std::int64_t n : kSizes) b->Arg(n);
    b->ArgName("n");
  }
}

}  // namespace
}  // namespace zal::bench::math

int main(int argc, char** argv) {
  using namespace zal::bench::math;
  const Contender* ours = Ours();
  for (const Contender* c : {ours, Sleef(), LibmLoop(), LibmvecLoop(), Volk()}) {
    if (!c) continue;
    benchmark::AddCustomContext(std::string("contender ") + c->name, c->about);
    const int level = c == ours ? kNaturalLevel : kPeerLevel;
    Register<float>("f32", c->name, c->f32, level);
    Register<double>("f64", c->name, c->f64, level);
  }
  for (int level = 0; level < zal::engine::kLevelCount; ++level) {
    if (!LevelRuns(level)) continue;
    const std::string name = std::string("ours_") + zal::engine::kLevelNames[level];
    Register<float>("f32", name, ours->f32, level);
    Register<double>("f64", name, ours->f64, level);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
