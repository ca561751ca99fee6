#include "bench/requested_level.h"

#include <cstdlib>
#include <cstring>

#include "engine/core/level.h"
#include "zalaccelerate/core.h"

namespace zal::bench {

const char* SelectRequestedLevel() {
  engStartDispatch();
  const char* requested = std::getenv("ZAL_BENCH_LEVEL");
  if (requested == nullptr) return zal::engine::kLevelNames[engGetDispatchIndex()];
  for (int level = 0; level < zal::engine::kLevelCount; ++level) {
    if (std::strcmp(requested, zal::engine::kLevelNames[level]) != 0) continue;
    int selected = -1;
    engSelectCpuFeatures(zal::engine::kLevelNeeds[level], &selected);
    engSetDispatchIndex(selected);
    return engGetDispatchIndex() == level ? requested : nullptr;
  }
  return nullptr;
}

}  // namespace zal::bench
