#include "engine/core/streaming.h"

#include <atomic>

#include "engine/core/cpu_features.h"
#include "engine/core/cpuid_source.h"

namespace zal::engine {
namespace {

constexpr std::int64_t kUnknownCacheThresholdBytes = 1024 * 1024;

// The level-2 data or unified cache, private to a core on every processor the engine targets;
// 0 when leaf 4 does not describe one.
std::int64_t LevelTwoCacheBytes(const CpuidSource& cpu) {
  if (!IsReferenceVendor(cpu) || cpu.Query(0, 0).eax < 4) return 0;
  for (std::uint32_t subleaf = 0; subleaf < 32; ++subleaf) {
    const CpuidRegisters r = cpu.Query(4, subleaf);
    const std::uint32_t type = r.eax & 0x1F;
    if (type == 0) break;
    if (type == 2 || ((r.eax >> 5) & 0x7) != 2) continue;
    const std::int64_t ways = ((r.ebx >> 22) & 0x3FF) + 1;
    const std::int64_t partitions = ((r.ebx >> 12) & 0x3FF) + 1;
    const std::int64_t line = (r.ebx & 0xFFF) + 1;
    const std::int64_t sets = static_cast<std::int64_t>(r.ecx) + 1;
    return ways * partitions * line * sets;
  }
  return 0;
}

std::int64_t MeasureThreshold() {
  const std::int64_t level_two = LevelTwoCacheBytes(ThisProcessor());
  const std::int64_t threshold = level_two > 0 ? level_two / 2 : kUnknownCacheThresholdBytes;
  return threshold > kStreamingStoreMinBytes ? threshold : kStreamingStoreMinBytes;
}

// 0 until the first call.
std::atomic<std::int64_t> g_threshold_bytes{0};

}  // namespace

std::int64_t StreamingStoreThresholdBytes() {
  std::int64_t threshold = g_threshold_bytes.load(std::memory_order_relaxed);
  if (threshold == 0) {
    threshold = MeasureThreshold();
    g_threshold_bytes.store(threshold, std::memory_order_relaxed);
  }
  return threshold;
}

}  // namespace zal::engine
