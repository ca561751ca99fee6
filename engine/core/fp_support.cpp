#include "engine/core/fp_support.h"

#include "engine/core/cpu_features.h"
#include "engine/core/platform.h"
#include "zalaccelerate/core.h"

namespace zal::engine {

bool ProcessorHasSse() {
  std::uint64_t features = 0;
  return DetectedFeatures(&features) && (features & engCpuSSE);
}

bool ProcessorHasDenormalsAreZero() {
  const std::uint32_t mask = platform::FxsaveMxcsrMask();
  return mask != 0 && (mask & 0x40);
}

}  // namespace zal::engine
