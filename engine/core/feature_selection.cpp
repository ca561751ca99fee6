#include "engine/core/feature_selection.h"

namespace zal::engine {
namespace {

struct LevelRule {
  std::uint64_t condition;  // all of these bits
  int level;
  std::uint64_t required;
};

// First match wins. A word without SSE2 still runs, on level 0.
constexpr LevelRule kRules[] = {
    {engCpuAVX512F | engCpuAVX512CD | engCpuAVX512BW | engCpuAVX512DQ | engCpuAVX512VL, 5,
     0x73081DF},
    {engCpuAVX512F | engCpuAVX512CD | engCpuAVX512ER | engCpuAVX512PF, 4, 0xF081DF},
    {engCpuAVX2, 4, 0x81DF},
    {engCpuAVX, 3, 0x1DF},
    {engCpuSSE42, 2, 0xDF},
    {engCpuSSE41, 1, 0x5F},
    {engCpuMOVBE, 1, 0x3F},
    {engCpuSSSE3, 1, 0x1F},
    {engCpuSSE3, 0, 0xF},
    {engCpuSSE2, 0, 0x7},
};

constexpr std::uint64_t kKnownFeatures = 0xFFFFFFFFF;
constexpr std::uint64_t kUnknownFeatures = 0x7FFFFFF000000000;
constexpr std::uint64_t kAvxClass = engCpuAVX | engCpuAVX2;
constexpr std::uint64_t kAvx512Class = 0xC6FF00000;

}  // namespace

Selection SelectUnchecked(std::uint64_t requested) {
  for (const LevelRule& rule : kRules) {
    if ((requested & rule.condition) == rule.condition) {
      const EngStatus status =
          (requested & rule.required) == rule.required ? engStsNoErr : engStsFeaturesCombination;
      return {rule.level, requested | rule.required, status};
    }
  }
  const std::uint64_t required = (requested & engCpuSSE) ? 0x3 : 0x1;
  return {0, requested | required, engStsNotSupportedCpu};
}

Selection SelectFeatures(std::uint64_t requested, std::uint64_t actual) {
  EngStatus warning = engStsNoErr;
  if (requested & kUnknownFeatures) warning = engStsUnknownFeature;
  if ((requested & kAvxClass) && !(actual & engCpuEnabledByOS)) {
    requested &= ~kAvxClass;
    warning = engStsFeatureNotSupported;
  }
  if ((requested & kAvx512Class) && !(actual & engCpuAVX512EnabledByOS)) {
    requested &= ~kAvx512Class;
    warning = engStsFeatureNotSupported;
  }
  // Unknown bits are reported as unknown, not as missing.
  if (requested & ~actual & kKnownFeatures) warning = engStsFeatureNotSupported;

  Selection selection = SelectUnchecked(requested);
  if (warning != engStsNoErr) selection.status = warning;
  return selection;
}

}  // namespace zal::engine
