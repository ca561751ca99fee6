#include "engine/core/cache_size.h"

#include <atomic>

#include "engine/core/cpu_features.h"

namespace zal::engine {
namespace {

constexpr std::uint32_t kCacheTypeNull = 0;
constexpr std::uint32_t kCacheTypeInstruction = 2;
constexpr std::uint32_t kMaxCacheSubleaves = 32;

CacheSize FromDeterministicLeaf(const CpuidSource& cpu) {
  CacheSize largest{-1, engStsNoErr, 0};
  for (std::uint32_t subleaf = 0; subleaf < kMaxCacheSubleaves; ++subleaf) {
    const CpuidRegisters r = cpu.Query(4, subleaf);
    const std::uint32_t type = r.eax & 0x1F;
    if (type == kCacheTypeNull) break;
    if (type == kCacheTypeInstruction) continue;
    const std::int64_t line = (r.ebx & 0xFFF) + 1;
    const std::int64_t bytes = DeterministicCacheBytes(r);
    if (bytes > largest.bytes)
      largest = {static_cast<int>(bytes), engStsNoErr, static_cast<int>(line)};
  }
  return largest;
}

}  // namespace

std::int64_t DeterministicCacheBytes(const CpuidRegisters& leaf4) {
  const std::int64_t ways = ((leaf4.ebx >> 22) & 0x3FF) + 1;
  const std::int64_t partitions = ((leaf4.ebx >> 12) & 0x3FF) + 1;
  const std::int64_t line = (leaf4.ebx & 0xFFF) + 1;
  const std::int64_t sets = static_cast<std::int64_t>(leaf4.ecx) + 1;
  return ways * partitions * line * sets;
}

CacheSize MeasureMaxCacheSize(const CpuidSource& cpu) {
  const std::uint32_t max_basic = cpu.Query(0, 0).eax;
  if (max_basic < 2 || !IsReferenceVendor(cpu)) return {-1, engStsNotSupportedCpu, 0};
  if (max_basic >= 4) {
    const CacheSize found = FromDeterministicLeaf(cpu);
    if (found.bytes >= 0) return found;
  } else {
    const CacheSize found = MaxCacheFromDescriptors(cpu.Query(2, 0));
    if (found.bytes >= 0) return found;
  }
  return {0, engStsUnknownCacheSize, 0};
}

}  // namespace zal::engine

namespace {

// Memo: size -1 and status 1 until the first measurement.
std::atomic<int> g_cache_bytes{-1};
std::atomic<EngStatus> g_cache_status{engStsNoOperation};

}  // namespace

EngStatus engGetMaxCacheSizeB(int* bytes) {
  if (!bytes) return engStsNullPtrErr;
  const int memo = g_cache_bytes.load(std::memory_order_acquire);
  const EngStatus memo_status = g_cache_status.load(std::memory_order_acquire);
  if (memo >= 0 || memo_status != engStsNoOperation) {
    *bytes = memo;
    return memo_status;
  }
  const zal::engine::CacheSize measured =
      zal::engine::MeasureMaxCacheSize(zal::engine::ThisProcessor());
  g_cache_status.store(measured.status, std::memory_order_relaxed);
  g_cache_bytes.store(measured.bytes, std::memory_order_release);
  *bytes = measured.bytes;
  return measured.status;
}
