// What the engine sees and chooses on this machine.
#include <cstdint>
#include <cstdio>

#include "zalaccelerate/core.h"

namespace {

struct FeatureName {
  std::uint64_t bit;
  const char* name;
};

constexpr FeatureName kFeatures[] = {
    {engCpuMMX, "MMX"},
    {engCpuSSE, "SSE"},
    {engCpuSSE2, "SSE2"},
    {engCpuSSE3, "SSE3"},
    {engCpuSSSE3, "SSSE3"},
    {engCpuMOVBE, "MOVBE"},
    {engCpuSSE41, "SSE4.1"},
    {engCpuSSE42, "SSE4.2"},
    {engCpuAVX, "AVX"},
    {engCpuEnabledByOS, "AVX state saved by the OS"},
    {engCpuAES, "AES"},
    {engCpuCLMUL, "PCLMULQDQ"},
    {engCpuRDRAND, "RDRAND"},
    {engCpuF16C, "F16C"},
    {engCpuAVX2, "AVX2 with FMA, BMI1, BMI2"},
    {engCpuADCOX, "ADCX/ADOX"},
    {engCpuRDSEED, "RDSEED"},
    {engCpuPREFETCHW, "PREFETCHW"},
    {engCpuSHA, "SHA"},
    {engCpuAVX512F, "AVX-512 F"},
    {engCpuAVX512CD, "AVX-512 CD"},
    {engCpuAVX512ER, "AVX-512 ER"},
    {engCpuAVX512PF, "AVX-512 PF"},
    {engCpuAVX512BW, "AVX-512 BW"},
    {engCpuAVX512DQ, "AVX-512 DQ"},
    {engCpuAVX512VL, "AVX-512 VL"},
    {engCpuAVX512VBMI, "AVX-512 VBMI"},
    {engCpuMPX, "MPX"},
    {engCpuAVX512_4FMAPS, "AVX-512 4FMAPS"},
    {engCpuAVX512_4VNNIW, "AVX-512 4VNNIW"},
    {engCpuKNC, "many-core coprocessor"},
    {engCpuAVX512IFMA, "AVX-512 IFMA"},
    {engCpuAVX512EnabledByOS, "AVX-512 state saved by the OS"},
    {engCpuAVX512VPOPCNTDQ, "AVX-512 VPOPCNTDQ"},
    {engCpuAVX512BITALG, "AVX-512 BITALG"},
};

constexpr const char* kLevelNames[] = {"SSE2", "SSSE3", "SSE4.2", "AVX", "AVX2", "AVX-512"};

}  // namespace

int main() {
  const EngLibraryVersion* version = engLibraryVersion();
  std::printf("%s %s, built %s\n", version->name, version->version, version->buildDate);

  std::uint64_t features = 0;
  const EngStatus status = engGetCpuFeatures(&features, nullptr);
  std::printf("\nprocessor features 0x%016llX (%s)\n", static_cast<unsigned long long>(features),
              engStatusMessage(status));
  for (const FeatureName& feature : kFeatures) {
    std::printf("  [%c] %s\n", (features & feature.bit) ? 'x' : ' ', feature.name);
  }

  int cache = 0;
  engGetMaxCacheSizeB(&cache);
  std::printf("\nlargest cache %d KiB\n", cache / 1024);

  const int level = engGetDispatchIndex();
  std::printf("level chosen: %d (%s), target code \"%.4s\", features in force 0x%llX\n", level,
              level >= 0 ? kLevelNames[level] : "none", version->targetCpu,
              static_cast<unsigned long long>(engGetSelectedCpuFeatures()));
  return 0;
}
