// The six variant levels and what each requires of the processor.
#pragma once

#include <cstdint>

#include "zalaccelerate/core.h"

namespace zal::engine {

inline constexpr int kLevelCount = 6;

// Level tokens, also the names of the level namespaces: sse2 ssse3 sse42 avx avx2 avx512.
inline constexpr const char* kLevelNames[kLevelCount] = {"sse2", "ssse3", "sse42",
                                                         "avx",  "avx2",  "avx512"};

// What a processor must have (beyond the selection's required mask) to run a level: the OS
// must save the vector state the level's registers use.
inline constexpr std::uint64_t kLevelNeeds[kLevelCount] = {
    0x7,
    0x1F,
    0xDF,
    0x1DF | engCpuEnabledByOS,
    0x81DF | engCpuEnabledByOS,
    0x73081DF | engCpuEnabledByOS | engCpuAVX512EnabledByOS,
};

}  // namespace zal::engine
