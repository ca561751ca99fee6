// Runs every dispatched primitive once through the public API and reports the level the engine
// chose, as one line: "level=<0..5> features=0x<detected word> target=<4-char code>".
// Meant for emulated processors: an instruction above the emulated level kills it with SIGILL,
// a wrong result makes it exit 1.
#include <xmmintrin.h>

#include <cfloat>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace {

namespace utility = zalaccelerate::utility;

constexpr unsigned kDaz = 0x40;
constexpr unsigned kUnderflowMask = 0x800;
constexpr unsigned kFtz = 0x8000;
constexpr unsigned kDefaultCsr = 0x1F80;

// What each level's instructions need, read from the level list in core.h.
constexpr std::uint64_t kSse2 = engCpuSSE | engCpuSSE2;
constexpr std::uint64_t kSsse3 = kSse2 | engCpuSSSE3;
constexpr std::uint64_t kSse42 = kSsse3 | engCpuSSE41 | engCpuSSE42;
constexpr std::uint64_t kAvx = kSse42 | engCpuAVX | engCpuEnabledByOS;
constexpr std::uint64_t kAvx2 = kAvx | engCpuAVX2;
constexpr std::uint64_t kAvx512 = kAvx2 | engCpuAVX512F | engCpuAVX512CD | engCpuAVX512BW |
                                  engCpuAVX512DQ | engCpuAVX512VL | engCpuAVX512EnabledByOS;
constexpr std::uint64_t kLevelNeeds[] = {kSse2, kSsse3, kSse42, kAvx, kAvx2, kAvx512};
constexpr const char* kTargetCodes[] = {"SSE2", "SSS3", "SE42", "AVX ", "AVX2", "A512"};

// The largest block the allocator hands out: 2^31 - 1 less its 72 bytes of overhead.
constexpr std::uint64_t kMaxBlockBytes = 0x7FFFFFFFu - 72;

int g_failures = 0;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "FAIL: %s\n", what);
  ++g_failures;
}

// Through volatile so the compiler cannot fold the arithmetic at build time.
float Product(float a, float b) {
  volatile float x = a;
  volatile float y = b;
  return x * y;
}

// Normal operands, denormal result: only flush-to-zero turns it into zero.
bool FlushesResults() {
  return Product(FLT_MIN, 0.5f) == 0.0f;
}
// Denormal operand, normal result: only denormals-are-zero turns it into zero.
bool ZeroesOperands() {
  return Product(FLT_MIN / 4, 1e10f) == 0.0f;
}

template <class T>
using Allocator = T* (*)(unsigned int);

// Alignment, the whole block writable and readable back, and the refused counts.
template <class T>
void CheckAllocator(const char* name, Allocator<T> allocate) {
  char what[96];
  for (unsigned int count : {1u, 17u, 4099u}) {
    T* buffer = allocate(count);
    std::snprintf(what, sizeof what, "%s(%u) gives a 64-byte aligned block", name, count);
    Check(buffer && reinterpret_cast<std::uintptr_t>(buffer) % 64 == 0, what);
    if (!buffer) continue;
    unsigned char* bytes = reinterpret_cast<unsigned char*>(buffer);
    const std::size_t size = std::size_t{count} * sizeof(T);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7 + 1);
    bool intact = true;
    for (std::size_t i = 0; i < size; ++i) {
      intact = intact && bytes[i] == static_cast<unsigned char>(i * 7 + 1);
    }
    std::snprintf(what, sizeof what, "%s(%u) block holds what was written", name, count);
    Check(intact, what);
    utility::Free(buffer);
  }
  const unsigned int too_many = static_cast<unsigned int>(kMaxBlockBytes / sizeof(T) + 1);
  for (unsigned int count : {0u, too_many, 0x80000000u, 0xFFFFFFFFu}) {
    T* buffer = allocate(count);
    std::snprintf(what, sizeof what, "%s(%u) is refused", name, count);
    Check(buffer == nullptr, what);
    utility::Free(buffer);
  }
  utility::Free(static_cast<T*>(nullptr));
}

void CheckAllocators() {
  CheckAllocator<unsigned char>("Malloc_Byte", utility::Malloc_Byte);
  CheckAllocator<short>("Malloc_Int16", utility::Malloc_Int16);
  CheckAllocator<float>("Malloc_Float", utility::Malloc_Float);
  CheckAllocator<double>("Malloc_Double", utility::Malloc_Double);
  CheckAllocator<std::complex<float>>("Malloc_Complex_Float", utility::Malloc_Complex_Float);
  CheckAllocator<std::complex<double>>("Malloc_Complex_Double", utility::Malloc_Complex_Double);
}

void CheckVersion(int level) {
  const EngLibraryVersion* version = engLibraryVersion();
  Check(version != nullptr, "engLibraryVersion gives a record");
  if (!version) return;
  Check(std::strcmp(version->name, "zalaccelerate engine") == 0, "version record names the engine");
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "%d.%d.", version->major, version->minor);
  Check(std::strncmp(version->version, prefix, std::strlen(prefix)) == 0,
        "version text starts with major.minor");
  Check(level >= 0 && level <= 5 && std::memcmp(version->targetCpu, kTargetCodes[level], 4) == 0,
        "version record's target code names the chosen level");
}

// Each way of switching a mode, checked by the arithmetic it changes. Every case starts from the
// default register.
struct ModeCase {
  const char* name;
  bool (*set)(bool on);  // false when the setter reports a failure
  bool (*active)();
};

constexpr ModeCase kModeCases[] = {
    {"SetFlushDenormalsToZero",
     [](bool on) {
       utility::SetFlushDenormalsToZero(on);
       return true;
     },
     FlushesResults},
    {"engSetFlushToZeroMode",
     [](bool on) { return engSetFlushToZeroMode(on ? 1 : 0, nullptr) == engStsNoErr; },
     FlushesResults},
    {"SetDenormalsAreZero",
     [](bool on) {
       utility::SetDenormalsAreZero(on);
       return true;
     },
     ZeroesOperands},
    {"engSetDenormalsAreZeroMode",
     [](bool on) { return engSetDenormalsAreZeroMode(on ? 1 : 0) == engStsNoErr; }, ZeroesOperands},
};

void CheckFloatingPointModes() {
  const unsigned saved_csr = _mm_getcsr();
  char what[96];
  for (const ModeCase& mode : kModeCases) {
    _mm_setcsr(kDefaultCsr);
    std::snprintf(what, sizeof what, "%s(true) takes effect", mode.name);
    Check(mode.set(true) && mode.active(), what);
    std::snprintf(what, sizeof what, "%s(false) takes effect", mode.name);
    Check(mode.set(false) && !mode.active(), what);
  }

  _mm_setcsr(kDefaultCsr);
  unsigned int saved_mask = 1;
  Check(engSetFlushToZeroMode(1, &saved_mask) == engStsNoErr && saved_mask == kUnderflowMask &&
            _mm_getcsr() == (kDefaultCsr | kFtz),
        "engSetFlushToZeroMode(1) saves the underflow mask and sets FTZ only");
  unsigned int unmask = 0;
  Check(engSetFlushToZeroMode(0, &unmask) == engStsNoErr &&
            _mm_getcsr() == (kDefaultCsr & ~kUnderflowMask),
        "engSetFlushToZeroMode(0) with a saved 0 unmasks underflow");
  _mm_setcsr(kDefaultCsr);
  Check(engSetDenormalsAreZeroMode(1) == engStsNoErr && _mm_getcsr() == (kDefaultCsr | kDaz),
        "engSetDenormalsAreZeroMode(1) sets DAZ only");
  _mm_setcsr(saved_csr);
}

}  // namespace

int main() {
  Check(engGetDispatchIndex() == -1, "no level is chosen before the first call");
  CheckAllocators();

  const int level = engGetDispatchIndex();
  Check(level >= 0 && level <= 5, "the first call chooses a level");
  std::uint64_t features = 0;
  Check(engGetCpuFeatures(&features, nullptr) == engStsNoErr, "engGetCpuFeatures succeeds");
  Check(level >= 0 && level <= 5 && (features & kLevelNeeds[level]) == kLevelNeeds[level],
        "the processor has every feature the chosen level needs");

  CheckVersion(level);
  CheckFloatingPointModes();

  const EngLibraryVersion* version = engLibraryVersion();
  std::printf("level=%d features=0x%llX target=%.4s\n", level,
              static_cast<unsigned long long>(features), version ? version->targetCpu : "????");
  return g_failures == 0 ? 0 : 1;
}
