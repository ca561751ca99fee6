// Where detection reads processor identification from: the processor itself, or, in tests, the
// recorded registers of another one. Detection is a pure function of what a source answers.
#pragma once

#include <cstdint>

namespace zal::engine {

struct CpuidRegisters {
  std::uint32_t eax;
  std::uint32_t ebx;
  std::uint32_t ecx;
  std::uint32_t edx;
};

class CpuidSource {
 public:
  virtual CpuidRegisters Query(std::uint32_t leaf, std::uint32_t subleaf) const = 0;
  // Extended control register 0; asked only when leaf 1 reports OSXSAVE.
  virtual std::uint64_t Xcr0() const = 0;

 protected:
  ~CpuidSource() = default;
};

// The processor this code runs on.
const CpuidSource& ThisProcessor();

}  // namespace zal::engine
