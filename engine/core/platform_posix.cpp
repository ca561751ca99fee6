#include <cpuid.h>

#include <ctime>

#include "engine/core/platform.h"

namespace zal::engine::platform {

CpuidRegisters Cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
  CpuidRegisters r{};
  __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
  return r;
}

// Inline assembly rather than _xgetbv, which GCC only offers in code compiled for XSAVE.
std::uint64_t Xgetbv0() {
  std::uint32_t eax = 0;
  std::uint32_t edx = 0;
  __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
  return (static_cast<std::uint64_t>(edx) << 32) | eax;
}

std::uint64_t ReadTimeStampCounter() {
  return __builtin_ia32_rdtsc();
}

std::int64_t CalendarSeconds() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

std::uint32_t FxsaveMxcsrMask() {
  alignas(16) unsigned char image[512] = {};
  __asm__ volatile("fxsave %0" : "=m"(image));
  return static_cast<std::uint32_t>(image[28]) | static_cast<std::uint32_t>(image[29]) << 8 |
         static_cast<std::uint32_t>(image[30]) << 16 | static_cast<std::uint32_t>(image[31]) << 24;
}

void StoreRepeatedQwords(void* dst, std::uint64_t pattern, std::size_t count) {
  __asm__ volatile("rep stosq" : "+D"(dst), "+c"(count) : "a"(pattern) : "memory");
}

}  // namespace zal::engine::platform
