// Data movement against its peers, in one binary: the library at its natural level, the C
// library's memcpy, memmove and memset, and plain loops built with -O3 -march=native. Names are
// <type>.<member>/<contender>[/level:-1]/n:<n>; n counts elements (frames for the interleaving
// members, whose numbers name the channel count). Bytes count each element read and written once.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "bench/movement_contenders.h"
#include "engine/core/level.h"
#include "zalaccelerate/utility.h"

namespace zal::bench {
namespace {

namespace utility = zalaccelerate::utility;
using zalcore::utility::int24_t;

// 4 Ki in the level-1 cache, 4 Mi past the level-2 one, 64 Mi (256 MB of floats) past every
// cache of the machines we measure on.
constexpr unsigned kCopySizes[] = {1u << 12, 1u << 22, 1u << 26};
constexpr unsigned kPastCaches = 1u << 26;
constexpr unsigned kLayoutSizes[] = {1u << 12, 1u << 18};
constexpr unsigned kChannelCounts[] = {2, 6, 8};

// 64-byte aligned, pages touched once, kept for the next benchmark.
class Arena {
 public:
  unsigned char* Get(std::size_t slot, std::size_t bytes) {
    if (slots_.size() <= slot) slots_.resize(slot + 1);
    std::vector<unsigned char>& s = slots_[slot];
    if (s.size() < bytes + 64) {
      s.assign(bytes + 64, 0);
      for (std::size_t i = 0; i < s.size(); ++i) s[i] = static_cast<unsigned char>(i * 37 + slot);
    }
    const auto address = reinterpret_cast<std::uintptr_t>(s.data());
    return s.data() + (64 - address % 64) % 64;
  }

 private:
  std::vector<std::vector<unsigned char>> slots_;
};

Arena& Memory() {
  static Arena arena;
  return arena;
}

template <class T>
T* Slot(std::size_t slot, std::size_t elements) {
  return reinterpret_cast<T*>(Memory().Get(slot, elements * sizeof(T)));
}

using Body = std::function<void()>;

void Register(const std::string& name, unsigned n, std::size_t bytes_per_element,
              std::function<Body(unsigned)> prepare) {
  benchmark::RegisterBenchmark(
      name.c_str(), [n, bytes_per_element, prepare](benchmark::State& state) {
        const Body body = prepare(n);
        for (auto _ : state) {
          body();
          benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * n);
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * n *
                                static_cast<std::int64_t>(bytes_per_element));
      });
}

std::string Name(const char* member, const char* contender, unsigned n, const char* type = "f32") {
  const bool ours = std::strcmp(contender, "ours") == 0;
  return std::string(type) + "." + member + "/" + contender + (ours ? "/level:-1" : "") +
         "/n:" + std::to_string(n);
}

// The smoke run in CI leaves out the arrays past every cache.
bool Smoke() {
  return std::getenv("ZAL_BENCH_SMOKE") != nullptr;
}

void CopyFamily() {
  // Set writes the bytes memset writes: 0x3F repeated, as a float.
  float pattern;
  const std::uint32_t bits = 0x3F3F3F3F;
  std::memcpy(&pattern, &bits, 4);
  for (unsigned n : kCopySizes) {
    if (Smoke() && n > (1u << 22)) continue;
    const std::size_t bytes = std::size_t{n} * 4;
    Register(Name("Copy", "ours", n), n, 8, [](unsigned n) -> Body {
      const float* src = Slot<float>(0, n);
      float* dst = Slot<float>(1, n);
      return [n, src, dst] { utility::Copy(n, src, dst); };
    });
    Register(Name("Copy", "libc", n), n, 8, [bytes](unsigned n) -> Body {
      const float* src = Slot<float>(0, n);
      float* dst = Slot<float>(1, n);
      return [bytes, src, dst] { std::memcpy(dst, src, bytes); };
    });
    Register(Name("Copy", "plain-native", n), n, 8, [](unsigned n) -> Body {
      const float* src = Slot<float>(0, n);
      float* dst = Slot<float>(1, n);
      return [n, src, dst] { PlainCopy(n, src, dst); };
    });
    Register(Name("Move", "ours", n), n, 8, [](unsigned n) -> Body {
      const float* src = Slot<float>(0, n);
      float* dst = Slot<float>(1, n);
      return [n, src, dst] { utility::Move(n, src, dst); };
    });
    Register(Name("Move", "libc", n), n, 8, [bytes](unsigned n) -> Body {
      const float* src = Slot<float>(0, n);
      float* dst = Slot<float>(1, n);
      return [bytes, src, dst] { std::memmove(dst, src, bytes); };
    });
    Register(Name("Set", "ours", n), n, 4, [pattern](unsigned n) -> Body {
      float* dst = Slot<float>(1, n);
      return [n, dst, pattern] { utility::Set(n, dst, pattern); };
    });
    Register(Name("Set", "libc", n), n, 4, [bytes](unsigned n) -> Body {
      float* dst = Slot<float>(1, n);
      return [bytes, dst] { std::memset(dst, 0x3F, bytes); };
    });
    Register(Name("Set", "plain-native", n), n, 4, [pattern](unsigned n) -> Body {
      float* dst = Slot<float>(1, n);
      return [n, dst, pattern] { PlainSet(n, dst, pattern); };
    });
    if (n >= kPastCaches) {
      Register(Name("Set", "streamed", n), n, 4, [pattern](unsigned n) -> Body {
        float* dst = Slot<float>(1, n);
        return [n, dst, pattern] { StreamedSet(n, dst, pattern); };
      });
      Register(Name("Set", "string", n), n, 4, [pattern](unsigned n) -> Body {
        float* dst = Slot<float>(1, n);
        return [n, dst, pattern] { StringSet(n, dst, pattern); };
      });
    }
    Register(Name("Zero", "ours", n), n, 4, [](unsigned n) -> Body {
      float* dst = Slot<float>(1, n);
      return [n, dst] { utility::Zero(n, dst); };
    });
    Register(Name("Zero", "libc", n), n, 4, [bytes](unsigned n) -> Body {
      float* dst = Slot<float>(1, n);
      return [bytes, dst] { std::memset(dst, 0, bytes); };
    });
  }
}

template <class Ours, class Plain>
void SwapMember(const char* type, std::size_t width) {
  for (unsigned n : kLayoutSizes) {
    Register(Name("SwapBytes", "ours", n, type), n, 2 * width, [](unsigned n) -> Body {
      const Ours* src = Slot<Ours>(0, n);
      Ours* dst = Slot<Ours>(1, n);
      return [n, src, dst] { utility::SwapBytes(n, src, dst); };
    });
    Register(Name("SwapBytes", "plain-native", n, type), n, 2 * width, [](unsigned n) -> Body {
      const Plain* src = Slot<Plain>(0, n);
      Plain* dst = Slot<Plain>(1, n);
      return [n, src, dst] { PlainSwapBytes(n, src, dst); };
    });
  }
}

void LayoutFamily() {
  SwapMember<unsigned short, std::uint16_t>("u16", 2);
  SwapMember<int24_t, Sample24>("s24", 3);
  SwapMember<unsigned int, std::uint32_t>("u32", 4);
  SwapMember<std::uint64_t, std::uint64_t>("u64", 8);
  for (unsigned n : kLayoutSizes) {
    Register(Name("Interleave", "ours", n), n, 16, [](unsigned n) -> Body {
      const float* a = Slot<float>(0, n);
      const float* b = Slot<float>(2, n);
      float* dst = Slot<float>(1, 2 * std::size_t{n});
      return [n, a, b, dst] { utility::Interleave(n, a, b, dst); };
    });
    Register(Name("Interleave", "plain-native", n), n, 16, [](unsigned n) -> Body {
      const float* a = Slot<float>(0, n);
      const float* b = Slot<float>(2, n);
      float* dst = Slot<float>(1, 2 * std::size_t{n});
      return [n, a, b, dst] { PlainInterleave(n, a, b, dst); };
    });
    Register(Name("Deinterleave", "ours", n), n, 16, [](unsigned n) -> Body {
      const float* src = Slot<float>(0, 2 * std::size_t{n});
      float* a = Slot<float>(1, n);
      float* b = Slot<float>(2, n);
      return [n, src, a, b] { utility::Deinterleave(n, src, a, b); };
    });
    Register(Name("Deinterleave", "plain-native", n), n, 16, [](unsigned n) -> Body {
      const float* src = Slot<float>(0, 2 * std::size_t{n});
      float* a = Slot<float>(1, n);
      float* b = Slot<float>(2, n);
      return [n, src, a, b] { PlainDeinterleave(n, src, a, b); };
    });
    for (unsigned channels : kChannelCounts) {
      const std::string interleave = "Interleave" + std::to_string(channels) + "ch";
      const std::string deinterleave = "Deinterleave" + std::to_string(channels) + "ch";
      const std::size_t bytes = 8 * std::size_t{channels};
      // Channel c in slot 2 + c, the interleaved buffer in slot 0.
      const auto planes = [channels](unsigned n) {
        std::vector<float*> p;
        for (unsigned c = 0; c < channels; ++c) p.push_back(Slot<float>(2 + c, n));
        return p;
      };
      Register(Name(interleave.c_str(), "ours", n), n, bytes, [channels, planes](unsigned n) {
        const std::vector<float*> planar = planes(n);
        const std::vector<const float*> src(planar.begin(), planar.end());
        float* dst = Slot<float>(0, std::size_t{channels} * n);
        return Body([channels, n, src, dst] { utility::Interleave(channels, n, src.data(), dst); });
      });
      Register(
          Name(interleave.c_str(), "plain-native", n), n, bytes, [channels, planes](unsigned n) {
            const std::vector<float*> planar = planes(n);
            const std::vector<const float*> src(planar.begin(), planar.end());
            float* dst = Slot<float>(0, std::size_t{channels} * n);
            return Body([channels, n, src, dst] { PlainInterleave(channels, n, src.data(), dst); });
          });
      Register(Name(deinterleave.c_str(), "ours", n), n, bytes, [channels, planes](unsigned n) {
        const std::vector<float*> dst = planes(n);
        const float* src = Slot<float>(0, std::size_t{channels} * n);
        return Body(
            [channels, n, src, dst] { utility::Deinterleave(channels, n, src, dst.data()); });
      });
      Register(Name(deinterleave.c_str(), "plain-native", n), n, bytes,
               [channels, planes](unsigned n) {
                 const std::vector<float*> dst = planes(n);
                 const float* src = Slot<float>(0, std::size_t{channels} * n);
                 return Body(
                     [channels, n, src, dst] { PlainDeinterleave(channels, n, src, dst.data()); });
               });
    }
  }
}

}  // namespace
}  // namespace zal::bench

int main(int argc, char** argv) {
  zal::bench::CopyFamily();
  zal::bench::LayoutFamily();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  engStartDispatch();
  benchmark::AddCustomContext("natural_level", zal::engine::kLevelNames[engGetDispatchIndex()]);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
