// Real processors as published identification dumps show them, each with what the engine should
// make of it, worked out by hand from the registers rather than by running the engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/cpuid_source.h"
#include "zalaccelerate/core.h"

namespace zal::test {

struct CpuidRecord {
  std::uint32_t leaf;
  std::uint32_t subleaf;
  engine::CpuidRegisters regs;
};

class RecordedProcessor final : public engine::CpuidSource {
 public:
  RecordedProcessor(std::string name, std::vector<CpuidRecord> records, std::uint64_t xcr0);

  // Zeros above the highest basic or extended leaf, and for a leaf that the dump does not hold.
  engine::CpuidRegisters Query(std::uint32_t leaf, std::uint32_t subleaf) const override;
  std::uint64_t Xcr0() const override { return xcr0_; }

  const std::string& name() const { return name_; }

  // For tests that change one register of a real processor; adds a zero record when absent.
  engine::CpuidRegisters& Registers(std::uint32_t leaf, std::uint32_t subleaf);
  void set_xcr0(std::uint64_t xcr0) { xcr0_ = xcr0; }
  // Leaf 0 (or 0x80000000) reports `max_leaf` while the leaves above it still answer, as under
  // firmware that limits the reported maximum for old operating systems.
  void LimitReportedMaxLeaf(std::uint32_t max_leaf);

 private:
  const CpuidRecord* Find(std::uint32_t leaf, std::uint32_t subleaf) const;

  std::string name_;
  std::vector<CpuidRecord> records_;
  std::uint64_t xcr0_;
  std::optional<std::uint32_t> reported_max_basic_;
  std::optional<std::uint32_t> reported_max_extended_;
};

struct ExpectedOutcome {
  std::uint64_t features;  // DetectFeatures
  // SelectFeatures(features, features): what the processor runs on by itself.
  int level;
  std::uint64_t in_force;
  EngStatus selection_status;
  bool reference_vendor;  // else engStartDispatch answers 20 whatever the selection gave
  // MeasureMaxCacheSize
  int cache_bytes;
  EngStatus cache_status;
  int cache_line_bytes;
};

struct RecordedCase {
  RecordedProcessor cpu;
  ExpectedOutcome expected;
};

const std::vector<RecordedCase>& RecordedProcessors();

// A copy of the named processor, to edit; throws std::invalid_argument for an unknown name.
RecordedProcessor Recorded(std::string_view name);

}  // namespace zal::test
