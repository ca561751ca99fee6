// When elementwise kernels write their destination with non-temporal stores. Baseline code that
// level kernels call: a plain function, no inline code shared between levels.
#pragma once

#include <cstdint>

namespace zal::engine {

// No threshold is below this: kernels compare against it first, so small calls never ask.
constexpr std::int64_t kStreamingStoreMinBytes = 256 * 1024;

// Destinations of at least this many bytes are streamed. Derived once from the processor's caches.
std::int64_t StreamingStoreThresholdBytes();

}  // namespace zal::engine
