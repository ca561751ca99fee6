// When elementwise kernels write their destination with non-temporal stores. Level kernels call
// this baseline function; nothing here is inline code that levels could end up sharing.
#pragma once

#include <cstdint>

namespace zal::engine {

// No threshold is below this: kernels compare with it first, so that small calls never look the
// threshold up.
constexpr std::int64_t kStreamingStoreMinBytes = 256 * 1024;

// Destinations of at least this many bytes are streamed: half the level-2 cache (1 MiB where it
// is unknown), measured once.
std::int64_t StreamingStoreThresholdBytes();

}  // namespace zal::engine
