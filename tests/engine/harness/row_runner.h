// Runs one row's kernel at one level over the grid against the portable variant, and through the
// argument refusals. Generic over the shape through its driver.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "engine/core/shapes.h"
#include "tests/engine/harness/accuracy.h"
#include "tests/engine/harness/buffers.h"
#include "tests/engine/harness/case_memory.h"
#include "tests/engine/harness/elements.h"
#include "tests/engine/harness/fp_environment.h"
#include "tests/engine/harness/grid.h"
#include "tests/engine/harness/rows.h"
#include "tests/engine/harness/shape_drivers.h"
#include "tests/engine/harness/values.h"

namespace zal::test::harness {

// Failures reported per row and level before the rest of its grid is skipped.
inline constexpr int kReportedFailures = 3;

inline const char* OperandName(Operand operand) {
  switch (operand) {
    case Operand::kFirst:
      return "first";
    case Operand::kSecond:
      return "second";
    case Operand::kConstant:
      return "constant";
    case Operand::kDst:
      return "dst";
  }
  return "?";
}

template <class Driver>
class RowRunner {
  using Shape = typename Driver::Function;
  using T = typename Driver::Element;

 public:
  static std::vector<Case> Grid(const char* row_name) {
    return BuildGrid(
        {static_cast<int>(sizeof(T)), Driver::kAliasings, VariantSweep(), kFloating<T>}, row_name);
  }

  static void MatchPortable(engine::Accuracy accuracy, Rounding rounding, Shape* kernel,
                            Shape* portable, const std::vector<Case>& grid) {
    int failures = 0;
    for (const Case& c : grid) {
      const std::string failure = Run(accuracy, rounding, kernel, portable, c);
      if (failure.empty()) continue;
      ADD_FAILURE() << Describe(c) << ": " << failure;
      if (++failures == kReportedFailures) {
        ADD_FAILURE() << "the rest of the grid skipped";
        return;
      }
    }
  }

  // Null in each pointer position gives -8 whatever the length; then a length of zero or below
  // gives -6; neither writes anything.
  static void RefuseBadArguments(Shape* kernel) {
    constexpr int kLength = 17;
    const CaseMemory<T> memory({kLength,
                                0,
                                {0, 0},
                                Aliasing::kNone,
                                ValueProfile::kModerate,
                                0,
                                kConstantVariants - 1,
                                kLength},
                               Driver::kSources, Driver::kConstant, WholeLength<Driver>(),
                               ResultCells<Driver>());
    const std::vector<T> dst_before(memory.Got().begin(), memory.Got().end());
    auto untouched = [&] {
      return memory.Disturbance().empty() && SameBytes<T>(memory.Got(), dst_before);
    };
    for (Operand null_operand : Driver::kPointers) {
      for (int n : {kLength, 0, -1}) {
        Operands<T> operands = memory.KernelOperands();
        operands.n = n;
        SetNull(operands, null_operand);
        EXPECT_EQ(Driver::Call(kernel, operands), engStsNullPtrErr)
            << "null " << OperandName(null_operand) << ", n " << n;
        EXPECT_TRUE(untouched()) << "null " << OperandName(null_operand) << ", n " << n;
      }
    }
    for (int n : {0, -1, INT_MIN}) {
      Operands<T> operands = memory.KernelOperands();
      operands.n = n;
      EXPECT_EQ(Driver::Call(kernel, operands), engStsSizeErr) << "n " << n;
      EXPECT_TRUE(untouched()) << "n " << n;
    }
  }

 private:
  static constexpr int VariantSweep() {
    switch (Driver::kConstant) {
      case ConstantKind::kNone:
        return 0;
      case ConstantKind::kByValue:
      case ConstantKind::kByPointer:
        return kConstantVariants;
      case ConstantKind::kScaled:
        return kConstantVariants * kScaleCount;
    }
    return 0;
  }

  static void SetNull(Operands<T>& operands, Operand operand) {
    switch (operand) {
      case Operand::kFirst:
        operands.first = nullptr;
        break;
      case Operand::kSecond:
        operands.second = nullptr;
        break;
      case Operand::kConstant:
        operands.constant_ref = nullptr;
        break;
      case Operand::kDst:
        operands.dst = nullptr;
        break;
    }
  }

  // Empty when the kernel agrees with the portable variant, otherwise what differs. The row's
  // rounding behaviour says under which mode the portable variant gives the expected results,
  // and whether there are any under a directed mode.
  static std::string Run(engine::Accuracy accuracy, Rounding rounding, Shape* kernel,
                         Shape* portable, const Case& c) {
    const CaseMemory<T> memory(c, Driver::kSources, Driver::kConstant, WholeLength<Driver>(),
                               ResultCells<Driver>());
    EngStatus expected_status;
    EngStatus got_status;
    unsigned control_before;
    unsigned control_after;
    {
      FpModes modes(rounding == Rounding::kIndependent ? c.fp_modes & ~kRoundingControl
                                                       : c.fp_modes);
      expected_status = Driver::Call(portable, memory.PortableOperands());
    }
    {
      FpModes modes(c.fp_modes);
      control_before = MxcsrControl();
      got_status = Driver::Call(kernel, memory.KernelOperands());
      control_after = MxcsrControl();
    }
    if (control_after != control_before) {
      char text[64];
      std::snprintf(text, sizeof text, "MXCSR control bits changed from 0x%04x to 0x%04x",
                    control_before, control_after);
      return text;
    }
    if (std::string disturbance = memory.Disturbance(); !disturbance.empty()) return disturbance;
    if (got_status != expected_status) {
      return "status " + std::to_string(got_status) + ", portable " +
             std::to_string(expected_status);
    }
    const bool directed = (c.fp_modes & kRoundingControl) != kRoundToNearest;
    if (directed && rounding == Rounding::kNearestOnly) return {};
    return Departure(accuracy, memory.Expected(), memory.Got());
  }

  // Every period of `got` against the portable variant's one.
  static std::string Departure(engine::Accuracy accuracy, std::span<const T> expected,
                               std::span<const T> got) {
    for (std::size_t start = 0; start < got.size(); start += expected.size()) {
      const std::span<const T> block =
          got.subspan(start, std::min(got.size() - start, expected.size()));
      const std::ptrdiff_t i = FirstDeparture<T>(accuracy, expected.first(block.size()), block);
      if (i >= 0) {
        return "element " + std::to_string(start + static_cast<std::size_t>(i)) + ": portable " +
               Show(expected[i]) + ", got " + Show(block[i]);
      }
    }
    return {};
  }
};

}  // namespace zal::test::harness
