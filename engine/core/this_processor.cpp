#include "engine/core/cpuid_source.h"
#include "engine/core/platform.h"

namespace zal::engine {
namespace {

class Processor final : public CpuidSource {
 public:
  CpuidRegisters Query(std::uint32_t leaf, std::uint32_t subleaf) const override {
    return platform::Cpuid(leaf, subleaf);
  }
  std::uint64_t Xcr0() const override { return platform::Xgetbv0(); }
};

const Processor kProcessor{};

}  // namespace

const CpuidSource& ThisProcessor() {
  return kProcessor;
}

}  // namespace zal::engine
