#include "engine/core/streaming.h"

#include <atomic>

#include "engine/core/cache_size.h"
#include "engine/core/cpu_features.h"
#include "engine/core/cpuid_source.h"

namespace zal::engine {
namespace {

constexpr std::int64_t kUnknownCacheThresholdBytes = 1024 * 1024;

// The level-2 data or unified cache; 0 when leaf 4 describes none.
std::int64_t LevelTwoCacheBytes(const CpuidSource& cpu) {
  if (!IsReferenceVendor(cpu) || cpu.Query(0, 0).eax < 4) return 0;
  constexpr std::uint32_t kTypeNull = 0;
  constexpr std::uint32_t kTypeInstruction = 2;
  for (std::uint32_t subleaf = 0; subleaf < 32; ++subleaf) {
    const CpuidRegisters r = cpu.Query(4, subleaf);
    const std::uint32_t type = r.eax & 0x1F;
    if (type == kTypeNull) break;
    const std::uint32_t level = (r.eax >> 5) & 0x7;
    if (type == kTypeInstruction || level != 2) continue;
    return DeterministicCacheBytes(r);
  }
  return 0;
}

// Streaming pays once an elementwise kernel's working set (a destination and one or two sources
// of its size) no longer fits the core's own level-2 cache: measured on a 2 MiB one, streamed
// stores lost 40% with 512 KiB destinations and won 15 to 40% from 1 MiB on. The largest cache
// is no basis: a last-level cache shared by many cores, or one a virtual machine reports whole,
// overstates what a core can keep.
std::int64_t MeasureThreshold() {
  const std::int64_t level_two = LevelTwoCacheBytes(ThisProcessor());
  const std::int64_t threshold = level_two > 0 ? level_two / 2 : kUnknownCacheThresholdBytes;
  return threshold > kStreamingStoreMinBytes ? threshold : kStreamingStoreMinBytes;
}

// 0 until the first lookup. Racing first lookups store the same value.
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
