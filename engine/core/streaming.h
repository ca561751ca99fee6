// When elementwise kernels write their destination with non-temporal stores. Level kernels call
// this baseline function; nothing here is inline code that levels could end up sharing.
#pragma once

#include <cstdint>

#include "engine/core/cpuid_source.h"

namespace zal::engine {

// No threshold is below this: kernels compare with it first, so that small calls never look the
// threshold up.
constexpr std::int64_t kStreamingStoreMinBytes = 256 * 1024;

// Destinations of at least this many bytes are streamed: half the level-2 cache (1 MiB where it
// is unknown), measured once.
std::int64_t StreamingStoreThresholdBytes();

// Fills (Set, Zero) stream from this many bytes on: three quarters of the last-level cache, and
// never below the elementwise threshold. Below it, large fills use the string store.
std::int64_t FillStreamingThresholdBytes();

// Both thresholds for a given processor: its level-2 and last-level data caches from the cache
// parameter leaf (4, or 0x8000001D where leaf 4 is reserved) or from leaf 0x80000006.
std::int64_t StreamingThresholdFor(const CpuidSource& cpu);
std::int64_t FillStreamingThresholdFor(const CpuidSource& cpu);

}  // namespace zal::engine
