// The tests' own reading of the processor, independent of the engine's.
#pragma once

#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace zal::test {

struct CpuidRegisters {
  unsigned eax, ebx, ecx, edx;
};

inline CpuidRegisters Cpuid(unsigned leaf, unsigned subleaf) {
#if defined(_MSC_VER)
  int r[4] = {};
  __cpuidex(r, static_cast<int>(leaf), static_cast<int>(subleaf));
  return {static_cast<unsigned>(r[0]), static_cast<unsigned>(r[1]), static_cast<unsigned>(r[2]),
          static_cast<unsigned>(r[3])};
#else
  CpuidRegisters r{};
  __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
  return r;
#endif
}

}  // namespace zal::test
