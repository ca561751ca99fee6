// Elementwise arithmetic against its peers, in one binary: the library at its natural level and
// at each level this processor runs (arguments level × n, level -1 being the natural one), and
// plain loops, VOLK and Eigen once per n. Every contender gets the same 64-byte aligned buffers.
// Counters: items are elements, bytes each element read plus each element written.
#include <benchmark/benchmark.h>

#include <array>
#include <bit>
#include <complex>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "bench/arithmetic_contenders.h"
#include "engine/core/level.h"
#include "zalaccelerate/utility.h"

namespace zal::bench {
namespace {

namespace utility = zalaccelerate::utility;
using engine::kLevelCount;
using engine::kLevelNames;
using engine::kLevelNeeds;

constexpr int kNaturalLevel = -1;
constexpr std::int64_t kSizes[] = {64, 1 << 10, 1 << 14, 1 << 20, 1 << 22};

struct MemberInfo {
  const char* name;
  int elements_moved;  // read and written, per element of the vector
  bool reads_dst;
};
constexpr std::array<MemberInfo, kMemberCount> kMembers = {{
    {"Add", 3, false},
    {"Sub", 3, false},
    {"Mul", 3, false},
    {"Div", 3, false},
    {"AddProduct", 4, true},
    {"AddConstant", 2, false},
    {"MulConstant", 2, false},
    {"DivConstant", 2, false},
    {"Add_InPlace", 3, true},
    {"Mul_InPlace", 3, true},
    {"MulConstant_InPlace", 2, true},
}};

constexpr Member kFloatMembers[] = {kAdd,        kSub,         kMul,         kDiv,
                                    kAddProduct, kAddConstant, kMulConstant, kDivConstant,
                                    kAddInPlace, kMulInPlace};
constexpr Member kDoubleMembers[] = {kAdd, kMul, kDiv, kMulConstant};
constexpr Member kComplexMembers[] = {kAdd, kMul, kDiv, kMulConstant};
constexpr Member kInt16Members[] = {kMulConstantInPlace};

// splitmix64: fast enough that filling 4 Mi elements costs little beside the measurement.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

 private:
  std::uint64_t state_;
};

// Magnitudes in [0.5, 2) of either sign: never zero, denormal, infinite or NaN, and safe divisors.
template <class T>
T Operand(Random& random) {
  const std::uint64_t bits = random.Next();
  if constexpr (std::is_same_v<T, float>) {
    const auto exponent = static_cast<std::uint32_t>(126 + (bits >> 62 & 1)) << 23;
    const auto sign = static_cast<std::uint32_t>(bits >> 63) << 31;
    return std::bit_cast<float>(sign | exponent | static_cast<std::uint32_t>(bits & 0x7FFFFF));
  } else if constexpr (std::is_same_v<T, double>) {
    const std::uint64_t exponent = (1022 + (bits >> 62 & 1)) << 52;
    return std::bit_cast<double>((bits >> 63 << 63) | exponent | (bits & 0xFFFFFFFFFFFFF));
  } else if constexpr (std::is_same_v<T, short>) {
    return static_cast<short>(bits >> 48);
  } else {
    using Real = typename T::value_type;
    return {Operand<Real>(random), Operand<Real>(random)};
  }
}

// Factors of magnitude exactly one: a vector multiplied by the same factors in place, once per
// iteration, keeps every magnitude however long the benchmark runs, never nearing overflow or
// denormals.
template <class T>
T UnitFactor(Random& random) {
  const std::uint64_t bits = random.Next();
  const int sign = bits >> 63 ? -1 : 1;
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(sign);
  } else {
    using Real = typename T::value_type;
    return bits >> 62 & 1 ? T(Real(sign), 0) : T(0, Real(sign));
  }
}

template <class T>
T Constant() {
  if constexpr (std::is_same_v<T, short>) {
    return kInt16Constant;
  } else if constexpr (std::is_floating_point_v<T>) {
    return T(0.8125);
  } else {
    return {0.6f, -0.8f};
  }
}

template <class T>
T* Allocate(unsigned n) {
  if constexpr (std::is_same_v<T, float>) return utility::Malloc_Float(n);
  if constexpr (std::is_same_v<T, double>) return utility::Malloc_Double(n);
  if constexpr (std::is_same_v<T, std::complex<float>>) return utility::Malloc_Complex_Float(n);
  if constexpr (std::is_same_v<T, std::complex<double>>) return utility::Malloc_Complex_Double(n);
  if constexpr (std::is_same_v<T, short>) return utility::Malloc_Int16(n);
}

template <class T>
using Generator = T (*)(Random& random);

// Grown to the largest n asked for and then kept, so that pages are faulted in once per element
// type rather than by every benchmark; so are the values, unless the caller asks for fresh ones:
// no member writes its sources, and a destination that is only written needs no particular values.
template <class T>
class Buffer {
 public:
  explicit Buffer(std::uint64_t seed) : random_(seed) {}
  ~Buffer() { utility::Free(data_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  // At least n elements drawn by generate; null when the memory cannot be had.
  T* Fill(unsigned n, Generator<T> generate, bool fresh) {
    if (n > capacity_) {
      utility::Free(data_);
      data_ = Allocate<T>(n);
      capacity_ = data_ ? n : 0;
      filled_ = 0;
    }
    if (data_ && (fresh || generate != generator_ || n > filled_)) {
      for (unsigned i = 0; i < n; ++i) data_[i] = generate(random_);
      generator_ = generate;
      filled_ = n;
    }
    return data_;
  }

 private:
  T* data_ = nullptr;
  unsigned capacity_ = 0;
  unsigned filled_ = 0;
  Generator<T> generator_ = nullptr;
  Random random_;
};

template <class T>
struct Buffers {
  Buffer<T> a{1};
  Buffer<T> b{2};
  Buffer<T> dst{3};
};

template <class T>
Buffers<T>& BuffersOf() {
  static Buffers<T> buffers;
  return buffers;
}

bool LevelRuns(int level) {
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  return (features & kLevelNeeds[level]) == kLevelNeeds[level];
}

// The dispatch index is process-wide: every benchmark sets the level it runs at, peers natural.
bool SelectLevel(int level) {
  engStartDispatch();
  if (level == kNaturalLevel) return true;
  int selected = -1;
  engSelectCpuFeatures(kLevelNeeds[level], &selected);
  engSetDispatchIndex(selected);
  return engGetDispatchIndex() == level;
}

template <class T>
void Measure(benchmark::State& state, Runner<T> run, Member member, int level, unsigned n) {
  if (!SelectLevel(level)) {
    state.SkipWithError("the level could not be selected");
    return;
  }
  Generator<T> first_source = Operand<T>;
  if constexpr (!std::is_integral_v<T>) {
    if (member == kMulInPlace) first_source = UnitFactor<T>;
  }
  Buffers<T>& buffers = BuffersOf<T>();
  const T* a = buffers.a.Fill(n, first_source, false);
  const T* b = buffers.b.Fill(n, Operand<T>, false);
  T* dst = buffers.dst.Fill(n, Operand<T>, kMembers[member].reads_dst);
  if (!a || !b || !dst) {
    state.SkipWithError("out of memory");
    return;
  }

  run(state, {n, a, b, dst, Constant<T>()});

  const auto elements = static_cast<std::int64_t>(state.iterations()) * n;
  state.SetItemsProcessed(elements);
  state.SetBytesProcessed(elements * kMembers[member].elements_moved *
                          static_cast<std::int64_t>(sizeof(T)));
}

template <class T>
void Register(const char* type, std::span<const Member> members, Runners<T> Contender::*runners,
              const Contender& ours, std::span<const Contender> peers,
              const std::vector<std::int64_t>& levels) {
  const std::vector<std::int64_t> sizes(std::begin(kSizes), std::end(kSizes));
  for (const Member member : members) {
    const std::string prefix = std::string(type) + "." + kMembers[member].name + "/";
    if (const Runner<T> run = (ours.*runners)[member]) {
      benchmark::RegisterBenchmark((prefix + ours.name).c_str(),
                                   [run, member](benchmark::State& state) {
                                     Measure(state, run, member, static_cast<int>(state.range(0)),
                                             static_cast<unsigned>(state.range(1)));
                                   })
          ->ArgNames({"level", "n"})
          ->ArgsProduct({levels, sizes});
    }
    for (const Contender& peer : peers) {
      const Runner<T> run = (peer.*runners)[member];
      if (!run) continue;
      benchmark::RegisterBenchmark((prefix + peer.name).c_str(),
                                   [run, member](benchmark::State& state) {
                                     Measure(state, run, member, kNaturalLevel,
                                             static_cast<unsigned>(state.range(0)));
                                   })
          ->ArgName("n")
          ->ArgsProduct({sizes});
    }
  }
}

void RegisterAll() {
  std::vector<std::int64_t> levels = {kNaturalLevel};
  for (int level = 0; level < kLevelCount; ++level) {
    if (LevelRuns(level)) levels.push_back(level);
  }
  engStartDispatch();
  benchmark::AddCustomContext("natural_level", kLevelNames[engGetDispatchIndex()]);

  const Contender ours = OursContender();
  const std::vector<Contender> peers = {PlainLoopsContender(), PlainLoopsNativeContender(),
                                        VolkContender(), EigenContender()};
  benchmark::AddCustomContext(std::string("contender.") + ours.name, ours.about);
  for (const Contender& peer : peers) {
    benchmark::AddCustomContext(std::string("contender.") + peer.name, peer.about);
  }

  Register("f32", kFloatMembers, &Contender::f32, ours, peers, levels);
  Register("f64", kDoubleMembers, &Contender::f64, ours, peers, levels);
  Register("c32", kComplexMembers, &Contender::c32, ours, peers, levels);
  Register("c64", kComplexMembers, &Contender::c64, ours, peers, levels);
  Register("s16", kInt16Members, &Contender::s16, ours, peers, levels);
}

}  // namespace
}  // namespace zal::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  zal::bench::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
