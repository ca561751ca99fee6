// ZAL_BENCH_LEVEL=<level name> runs a benchmark binary's own contenders at that level.
#pragma once

namespace zal::bench {

// The level named by ZAL_BENCH_LEVEL put in force (the natural one when it is unset); its name,
// or null where it cannot run here.
const char* SelectRequestedLevel();

}  // namespace zal::bench
