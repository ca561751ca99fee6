// The rows of the primitive list that the cross-level harness compares, and the levels it
// compares them at.
#pragma once

#include <ostream>
#include <vector>

#include "engine/core/shapes.h"

namespace zal::test::harness {

struct Row {
  const char* family;
  const char* name;
  engine::Accuracy accuracy;
  // Runs the grid through the row's kernel at `level` against its portable variant, reporting
  // through GoogleTest.
  void (*match_portable)(const Row& row, int level);
  // Checks the argument refusals of the kernel at `level`, or of the portable variant for
  // kPortable.
  void (*refuse_bad_arguments)(int level);
};

inline constexpr int kPortable = -1;

// Every row of the list but the service primitives, which have their own tests.
std::vector<Row> ComparedRows();

// The forced level in a forced run; otherwise every level this processor can run.
std::vector<int> LevelsUnderTest();

const char* LevelName(int level);

inline void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name;
}

}  // namespace zal::test::harness
