#include "engine/core/cpu_features.h"

#include <atomic>

#include "zalaccelerate/core.h"

namespace zal::engine {
namespace {

constexpr bool Bit(std::uint32_t reg, int bit) {
  return (reg >> bit) & 1u;
}

struct FeatureSource {
  std::uint64_t feature;
  int bit;
};

constexpr FeatureSource kLeaf1Edx[] = {
    {engCpuMMX, 23},
    {engCpuSSE, 25},
    {engCpuSSE2, 26},
};
constexpr FeatureSource kLeaf1Ecx[] = {
    {engCpuSSE3, 0}, {engCpuSSSE3, 9}, {engCpuMOVBE, 22}, {engCpuSSE41, 19},  {engCpuSSE42, 20},
    {engCpuAVX, 28}, {engCpuAES, 25},  {engCpuCLMUL, 1},  {engCpuRDRAND, 30}, {engCpuF16C, 29},
};
constexpr FeatureSource kLeaf7Ebx[] = {
    {engCpuADCOX, 19},    {engCpuRDSEED, 18},   {engCpuSHA, 29},      {engCpuAVX512F, 16},
    {engCpuAVX512CD, 28}, {engCpuAVX512ER, 27}, {engCpuAVX512PF, 26}, {engCpuAVX512BW, 30},
    {engCpuAVX512DQ, 17}, {engCpuAVX512VL, 31}, {engCpuMPX, 14},      {engCpuAVX512IFMA, 21},
};
constexpr FeatureSource kLeaf7Ecx[] = {
    {engCpuAVX512VBMI, 1},
    {engCpuAVX512VPOPCNTDQ, 14},
    {engCpuAVX512BITALG, 12},
};
constexpr FeatureSource kLeaf7Edx[] = {
    {engCpuAVX512_4FMAPS, 3},
    {engCpuAVX512_4VNNIW, 2},
};

constexpr int kOsxsaveBit = 27;
constexpr std::uint64_t kXcr0SseAvxState = 0x6;
constexpr std::uint64_t kXcr0Avx512State = 0xE0;

template <std::size_t N>
std::uint64_t Collect(std::uint32_t reg, const FeatureSource (&sources)[N]) {
  std::uint64_t word = 0;
  for (const FeatureSource& s : sources) {
    if (Bit(reg, s.bit)) word |= s.feature;
  }
  return word;
}

// The memo: a plain word and its flag. Racing first calls store the same values, so relaxed
// stores suffice for the word; the flag is published after it.
std::atomic<std::uint64_t> g_detected_word{0};
std::atomic<std::uint32_t> g_detected_valid{0};

}  // namespace

bool DetectFeatures(const CpuidSource& cpu, std::uint64_t* features) {
  const std::uint32_t max_basic = cpu.Query(0, 0).eax;
  if (max_basic < 1) return false;
  const std::uint32_t max_extended = cpu.Query(0x80000000u, 0).eax;
  const CpuidRegisters leaf1 = cpu.Query(1, 0);

  std::uint64_t word = Collect(leaf1.edx, kLeaf1Edx) | Collect(leaf1.ecx, kLeaf1Ecx);

  const bool osxsave = Bit(leaf1.ecx, kOsxsaveBit);
  const std::uint64_t xcr0 = osxsave ? cpu.Xcr0() : 0;
  if (osxsave && Bit(leaf1.ecx, 28) && (xcr0 & kXcr0SseAvxState) == kXcr0SseAvxState) {
    word |= engCpuEnabledByOS;
  }
  if (osxsave && (xcr0 & kXcr0Avx512State) == kXcr0Avx512State) word |= engCpuAVX512EnabledByOS;

  if (max_basic >= 7) {
    const CpuidRegisters leaf7 = cpu.Query(7, 0);
    word |= Collect(leaf7.ebx, kLeaf7Ebx) | Collect(leaf7.ecx, kLeaf7Ecx) |
            Collect(leaf7.edx, kLeaf7Edx);
    const bool fma = Bit(leaf1.ecx, 12);
    if (fma && Bit(leaf7.ebx, 5) && Bit(leaf7.ebx, 3) && Bit(leaf7.ebx, 8)) word |= engCpuAVX2;
  }
  if (max_extended >= 0x80000001u && Bit(cpu.Query(0x80000001u, 0).ecx, 8)) {
    word |= engCpuPREFETCHW;
  }
  if ((leaf1.eax & 0xFF0) == 0xB10) word |= engCpuKNC;
  *features = word;
  return true;
}

bool IsReferenceVendor(const CpuidSource& cpu) {
  const CpuidRegisters leaf0 = cpu.Query(0, 0);
  return leaf0.ebx == 0x756E6547 && leaf0.edx == 0x49656E69 && leaf0.ecx == 0x6C65746E;
}

bool DetectedFeatures(std::uint64_t* features) {
  if (g_detected_valid.load(std::memory_order_acquire)) {
    *features = g_detected_word.load(std::memory_order_relaxed);
    return true;
  }
  if (!DetectFeatures(ThisProcessor(), features)) return false;
  ReplaceDetectedFeatures(*features);
  return true;
}

void ReplaceDetectedFeatures(std::uint64_t features) {
  g_detected_word.store(features, std::memory_order_relaxed);
  g_detected_valid.store(1, std::memory_order_release);
}

}  // namespace zal::engine
