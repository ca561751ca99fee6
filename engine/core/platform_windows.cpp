// Windows, with MSVC, clang-cl or MinGW-w64. Both compiler families offer __cpuidex and __rdtsc
// in <intrin.h>; XGETBV and FXSAVE have MSVC intrinsics that GCC gives only to code compiled for
// XSAVE, so GCC-style compilers use inline assembly instead.
#include <intrin.h>
#include <time.h>

#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#define ZAL_MSVC_INTRINSICS 1
#else
#define ZAL_MSVC_INTRINSICS 0
#endif

#include "engine/core/platform.h"

namespace zal::engine::platform {

CpuidRegisters Cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
  int r[4] = {};
  __cpuidex(r, static_cast<int>(leaf), static_cast<int>(subleaf));
  return {static_cast<std::uint32_t>(r[0]), static_cast<std::uint32_t>(r[1]),
          static_cast<std::uint32_t>(r[2]), static_cast<std::uint32_t>(r[3])};
}

std::uint64_t Xgetbv0() {
#if ZAL_MSVC_INTRINSICS
  return _xgetbv(0);
#else
  std::uint32_t eax = 0;
  std::uint32_t edx = 0;
  __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
  return (static_cast<std::uint64_t>(edx) << 32) | eax;
#endif
}

std::uint64_t ReadTimeStampCounter() {
  return __rdtsc();
}

// _time64 rather than std::time: its width does not hang on the CRT's _USE_32BIT_TIME_T.
std::int64_t CalendarSeconds() {
  return static_cast<std::int64_t>(_time64(nullptr));
}

std::uint32_t FxsaveMxcsrMask() {
  alignas(16) unsigned char image[512] = {};
#if ZAL_MSVC_INTRINSICS
  _fxsave(image);
#else
  __asm__ volatile("fxsave %0" : "=m"(image));
#endif
  return static_cast<std::uint32_t>(image[28]) | static_cast<std::uint32_t>(image[29]) << 8 |
         static_cast<std::uint32_t>(image[30]) << 16 | static_cast<std::uint32_t>(image[31]) << 24;
}

void StoreRepeatedQwords(void* dst, std::uint64_t pattern, std::size_t count) {
  __stosq(static_cast<unsigned long long*>(dst), pattern, count);
}

}  // namespace zal::engine::platform

#undef ZAL_MSVC_INTRINSICS
