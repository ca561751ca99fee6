// engGetCpuFeatures: the feature word, and raw identification leaves for the diagnostics report.
#include <cstring>

#include "engine/core/cpu_features.h"
#include "engine/core/platform.h"
#include "zalaccelerate/core.h"

namespace {

// A caller that places these eight bytes in the feature word asks for any leaf it names.
constexpr char kAnyLeafRequest[] = "getinfoa";

bool AsksForAnyLeaf(std::uint64_t word) {
  std::uint64_t request = 0;
  std::memcpy(&request, kAnyLeafRequest, sizeof(request));
  return word == request;
}

}  // namespace

EngStatus engGetCpuFeatures(std::uint64_t* features, std::uint32_t cpuidInfo[4]) {
  if (!features) return engStsNullPtrErr;
  const bool any_leaf = AsksForAnyLeaf(*features);
  std::uint64_t word = 0;
  const bool identified = zal::engine::DetectedFeatures(&word);
  *features = word;
  if (cpuidInfo) {
    const std::uint32_t leaf = any_leaf ? cpuidInfo[0] : 1;
    const std::uint32_t subleaf = any_leaf ? cpuidInfo[2] : 0;
    const zal::engine::CpuidRegisters r = zal::engine::platform::Cpuid(leaf, subleaf);
    cpuidInfo[0] = r.eax;
    cpuidInfo[1] = r.ebx;
    cpuidInfo[2] = r.ecx;
    cpuidInfo[3] = r.edx;
  }
  return identified ? engStsNoErr : engStsNotSupportedCpu;
}
