#include "engine/core/streaming.h"

#include <atomic>

#include "engine/core/cache_size.h"
#include "engine/core/cpu_features.h"
#include "engine/core/cpuid_source.h"

namespace zal::engine {
namespace {

constexpr std::int64_t kUnknownCacheThresholdBytes = 1024 * 1024;
constexpr std::uint32_t kExtendedBase = 0x80000000u;
constexpr std::uint32_t kExtendedCacheLeaf = 0x8000001Du;
constexpr std::uint32_t kExtendedCacheSizesLeaf = 0x80000006u;
constexpr std::uint32_t kTopologyExtensionsBit = 1u << 22;  // leaf 0x80000001 ECX

// The leaf that lists the caches in leaf 4's layout: leaf 4 itself at the reference vendor;
// elsewhere leaf 4 is reserved, and processors with topology extensions give the same layout at
// 0x8000001D. 0 when neither is there.
std::uint32_t CacheParametersLeaf(const CpuidSource& cpu) {
  if (IsReferenceVendor(cpu)) return cpu.Query(0, 0).eax >= 4 ? 4 : 0;
  if (cpu.Query(kExtendedBase, 0).eax < kExtendedCacheLeaf) return 0;
  return (cpu.Query(kExtendedBase + 1, 0).ecx & kTopologyExtensionsBit) ? kExtendedCacheLeaf : 0;
}

struct DataCaches {
  std::int64_t level_two = 0;
  std::int64_t last_level = 0;
};

DataCaches FromParametersLeaf(const CpuidSource& cpu, std::uint32_t leaf) {
  constexpr std::uint32_t kTypeNull = 0;
  constexpr std::uint32_t kTypeInstruction = 2;
  DataCaches caches;
  std::uint32_t last_level = 0;
  for (std::uint32_t subleaf = 0; subleaf < 32; ++subleaf) {
    const CpuidRegisters r = cpu.Query(leaf, subleaf);
    const std::uint32_t type = r.eax & 0x1F;
    if (type == kTypeNull) break;
    const std::uint32_t level = (r.eax >> 5) & 0x7;
    if (type == kTypeInstruction) continue;
    const std::int64_t bytes = DeterministicCacheBytes(r);
    if (level == 2) caches.level_two = bytes;
    if (level >= last_level) {
      last_level = level;
      caches.last_level = bytes;
    }
  }
  return caches;
}

// Older processors of other vendors: level-2 KiB in ECX bits 16-31, level-3 512 KiB units in EDX
// bits 18-31. The reference vendor leaves EDX reserved there.
DataCaches FromSizesLeaf(const CpuidSource& cpu) {
  if (IsReferenceVendor(cpu) || cpu.Query(kExtendedBase, 0).eax < kExtendedCacheSizesLeaf)
    return {};
  const CpuidRegisters r = cpu.Query(kExtendedCacheSizesLeaf, 0);
  const std::int64_t level_two = static_cast<std::int64_t>(r.ecx >> 16) * 1024;
  const std::int64_t level_three = static_cast<std::int64_t>(r.edx >> 18) * 512 * 1024;
  return {level_two, level_three > 0 ? level_three : level_two};
}

DataCaches FindDataCaches(const CpuidSource& cpu) {
  const std::uint32_t leaf = CacheParametersLeaf(cpu);
  const DataCaches listed = leaf ? FromParametersLeaf(cpu, leaf) : DataCaches{};
  return listed.level_two > 0 ? listed : FromSizesLeaf(cpu);
}

// 0 until the first lookup. Racing first lookups store the same value.
std::atomic<std::int64_t> g_threshold_bytes{0};
std::atomic<std::int64_t> g_fill_threshold_bytes{0};

}  // namespace

// Streaming pays once an elementwise kernel's working set (a destination and one or two sources
// of its size) no longer fits the core's own level-2 cache: measured on a 2 MiB one, streamed
// stores lost 40% with 512 KiB destinations and won 15 to 40% from 1 MiB on. The largest cache
// is no basis: a last-level cache shared by many cores, or one a virtual machine reports whole,
// overstates what a core can keep.
std::int64_t StreamingThresholdFor(const CpuidSource& cpu) {
  const std::int64_t level_two = FindDataCaches(cpu).level_two;
  const std::int64_t threshold = level_two > 0 ? level_two / 2 : kUnknownCacheThresholdBytes;
  return threshold > kStreamingStoreMinBytes ? threshold : kStreamingStoreMinBytes;
}

// A fill reads nothing, and the string store writes lines without reading them, so a destination
// kept in the last-level cache costs no more to write than a streamed one and is there for the
// caller's next read. Three quarters leave room for what else the cache holds.
std::int64_t FillStreamingThresholdFor(const CpuidSource& cpu) {
  const std::int64_t kept = FindDataCaches(cpu).last_level / 4 * 3;
  const std::int64_t elementwise = StreamingThresholdFor(cpu);
  return kept > elementwise ? kept : elementwise;
}

std::int64_t StreamingStoreThresholdBytes() {
  std::int64_t threshold = g_threshold_bytes.load(std::memory_order_relaxed);
  if (threshold == 0) {
    threshold = StreamingThresholdFor(ThisProcessor());
    g_threshold_bytes.store(threshold, std::memory_order_relaxed);
  }
  return threshold;
}

std::int64_t FillStreamingThresholdBytes() {
  std::int64_t threshold = g_fill_threshold_bytes.load(std::memory_order_relaxed);
  if (threshold == 0) {
    threshold = FillStreamingThresholdFor(ThisProcessor());
    g_fill_threshold_bytes.store(threshold, std::memory_order_relaxed);
  }
  return threshold;
}

}  // namespace zal::engine
