// Sample format conversion against its peers, in one binary: the library at its natural level and
// at each level this processor runs (arguments level x n, level -1 being the natural one), and
// plain loops, VOLK and the two-pass deinterleaving once per n. Every contender gets the same
// 64-byte aligned buffers. Counters: items are samples, bytes each sample read plus written.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/conversion_contenders.h"
#include "engine/core/level.h"
#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::conversion {
namespace {

using engine::kLevelCount;
using engine::kLevelNames;
using engine::kLevelNeeds;

constexpr int kNaturalLevel = -1;
constexpr std::int64_t kSizes[] = {64, 1 << 12, 1 << 16, 1 << 22};
constexpr unsigned kLargest = 1 << 22;
constexpr int kMaxChannels = 6;

enum class Type { kS16, kS24, kS32, kF16, kF32, kF64 };

constexpr int Bytes(Type type) {
  constexpr int kBytes[] = {2, 3, 4, 2, 4, 8};
  return kBytes[static_cast<int>(type)];
}

struct MemberInfo {
  const char* name;
  Type from;
  Type to;
  int channels;  // 0: elementwise
};
constexpr std::array<MemberInfo, kMemberCount> kMembers = {{
    {"S16ToF32", Type::kS16, Type::kF32, 0},
    {"F32ToS16", Type::kF32, Type::kS16, 0},
    {"S32ToF32", Type::kS32, Type::kF32, 0},
    {"F32ToS32", Type::kF32, Type::kS32, 0},
    {"S24ToF32", Type::kS24, Type::kF32, 0},
    {"F32ToS24Truncate", Type::kF32, Type::kS24, 0},
    {"F32ToS24Round", Type::kF32, Type::kS24, 0},
    {"F16ToF32", Type::kF16, Type::kF32, 0},
    {"F32ToF16", Type::kF32, Type::kF16, 0},
    {"F32ToF64", Type::kF32, Type::kF64, 0},
    {"F64ToF32", Type::kF64, Type::kF32, 0},
    {"DeinterleaveS16x2", Type::kS16, Type::kF32, 2},
    {"DeinterleaveS24x6", Type::kS24, Type::kF32, 6},
    {"S24ToF32Unscaled", Type::kS24, Type::kF32, 0},
}};

class Random {
 public:
  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

 private:
  std::uint64_t state_ = 1;
};

// Audio-like values of the type: floats within +-1, integers over their whole range, halves of
// the same magnitudes.
void FillSamples(unsigned char* p, Type type, unsigned n) {
  Random random;
  for (unsigned i = 0; i < n; ++i) {
    const std::uint64_t bits = random.Next();
    const float unit = static_cast<float>(static_cast<std::int32_t>(bits >> 32)) * 0x1p-31f;
    switch (type) {
      case Type::kF32:
        std::memcpy(p + 4 * i, &unit, 4);
        break;
      case Type::kF64: {
        const double wide = unit;
        std::memcpy(p + 8 * i, &wide, 8);
        break;
      }
      case Type::kF16: {
        const auto half = static_cast<std::uint16_t>((bits & 0x8000) | (bits % 0x3C00));
        std::memcpy(p + 2 * i, &half, 2);
        break;
      }
      default:
        std::memcpy(p + Bytes(type) * i, &bits, static_cast<std::size_t>(Bytes(type)));
    }
  }
}

// One set of buffers for the whole run, sized for the widest member; refilled when a member with
// another source type starts. Large blocks start on page boundaries: each buffer is moved a
// different number of cache lines into its block, so that no two streams share their address
// bits below 4 KiB (which would make loads wait on unrelated stores, a cost of the layout, not of
// the code).
constexpr unsigned kStagger = 1024;
struct Memory {
  Memory()
      : src(reinterpret_cast<unsigned char*>(
            zalaccelerate::utility::Malloc_Double(kLargest + kStagger))),
        dst(reinterpret_cast<unsigned char*>(
                zalaccelerate::utility::Malloc_Double(kLargest + kStagger)) +
            320) {
    for (int c = 0; c < kMaxChannels; ++c) {
      planar[c] = zalaccelerate::utility::Malloc_Float(kLargest + 2 * kStagger) + 528 + 176 * c;
    }
  }
  unsigned char* src;
  unsigned char* dst;
  float* planar[kMaxChannels];
  int filled = -1;
};

Memory& TheMemory() {
  static Memory memory;
  return memory;
}

bool LevelRuns(int level) {
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  return (features & kLevelNeeds[level]) == kLevelNeeds[level];
}

bool SelectLevel(int level) {
  engStartDispatch();
  if (level == kNaturalLevel) return true;
  int selected = -1;
  engSelectCpuFeatures(kLevelNeeds[level], &selected);
  engSetDispatchIndex(selected);
  return engGetDispatchIndex() == level;
}

void Measure(benchmark::State& state, Kernel kernel, Member member, int level, unsigned n) {
  if (!SelectLevel(level)) {
    state.SkipWithError("the level could not be selected");
    return;
  }
  Memory& memory = TheMemory();
  const MemberInfo& info = kMembers[member];
  if (memory.filled != static_cast<int>(info.from)) {
    FillSamples(memory.src, info.from, kLargest);
    memory.filled = static_cast<int>(info.from);
  }
  const Buffers buffers{n, memory.src, memory.dst, memory.planar};
  for (auto _ : state) {
    kernel(buffers);
    benchmark::ClobberMemory();
  }
  const auto samples = static_cast<std::int64_t>(state.iterations()) * n;
  state.SetItemsProcessed(samples);
  state.SetBytesProcessed(samples * (Bytes(info.from) + Bytes(info.to)));
}

void RegisterAll() {
  std::vector<std::int64_t> levels = {kNaturalLevel};
  for (int level = 0; level < kLevelCount; ++level) {
    if (LevelRuns(level)) levels.push_back(level);
  }
  engStartDispatch();
  benchmark::AddCustomContext("natural_level", kLevelNames[engGetDispatchIndex()]);
  const Contender ours = OursContender();
  const std::vector<Contender> peers = {TwoPassContender(), PlainLoopsContender(),
                                        PlainLoopsNativeContender(), VolkContender()};
  benchmark::AddCustomContext(std::string("contender.") + ours.name, ours.about);
  for (const Contender& peer : peers) {
    benchmark::AddCustomContext(std::string("contender.") + peer.name, peer.about);
  }
  const std::vector<std::int64_t> sizes(std::begin(kSizes), std::end(kSizes));
  for (int m = 0; m < kMemberCount; ++m) {
    const auto member = static_cast<Member>(m);
    const std::string prefix = std::string("cvt.") + kMembers[m].name + "/";
    if (const Kernel kernel = ours.kernels[m]) {
      benchmark::RegisterBenchmark((prefix + ours.name).c_str(),
                                   [kernel, member](benchmark::State& state) {
                                     Measure(state, kernel, member,
                                             static_cast<int>(state.range(0)),
                                             static_cast<unsigned>(state.range(1)));
                                   })
          ->ArgNames({"level", "n"})
          ->ArgsProduct({levels, sizes});
    }
    for (const Contender& peer : peers) {
      const Kernel kernel = peer.kernels[m];
      if (!kernel) continue;
      benchmark::RegisterBenchmark((prefix + peer.name).c_str(),
                                   [kernel, member](benchmark::State& state) {
                                     Measure(state, kernel, member, kNaturalLevel,
                                             static_cast<unsigned>(state.range(0)));
                                   })
          ->ArgName("n")
          ->ArgsProduct({sizes});
    }
  }
}

}  // namespace
}  // namespace zal::bench::conversion

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  zal::bench::conversion::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
