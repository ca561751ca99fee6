// The size of the processor's largest data or unified cache.
#pragma once

#include <cstdint>

#include "engine/core/cpuid_source.h"
#include "zalaccelerate/core.h"

namespace zal::engine {

struct CacheSize {
  int bytes;  // -1 with status 36, 0 with status 37
  EngStatus status;
  int line_bytes;  // of the largest cache; 0 when unknown
};

// The size of the cache one sub-leaf of leaf 4 describes: ways x partitions x line x sets.
std::int64_t DeterministicCacheBytes(const CpuidRegisters& leaf4);

// From the deterministic cache leaf 4, or on older processors from the leaf-2 descriptors.
CacheSize MeasureMaxCacheSize(const CpuidSource& cpu);

// The largest data or unified cache named by the descriptor bytes of leaf 2 (its EAX low byte is
// the repeat count, not a descriptor; a register with bit 31 set holds none). -1 when no
// descriptor names one.
CacheSize MaxCacheFromDescriptors(const CpuidRegisters& leaf2);

}  // namespace zal::engine
