// The rows of the primitive list that the cross-level harness compares, and the levels it
// compares them at.
#pragma once

#include <ostream>
#include <vector>

#include "engine/core/shapes.h"

namespace zal::test::harness {

// How a row's results relate to the caller's rounding mode.
enum class Rounding {
  // Every result exact (moves, sign changes, selections, Round): the same bits under every mode,
  // so a kernel under any mode must give the portable variant's results under rounding to nearest.
  kIndependent,
  // A fixed sequence of IEEE operations, each rounded by the mode: a kernel must give the
  // portable variant's results under the same mode.
  kFollowsMode,
  // Approximations (exponentials, logarithms, powers, trigonometry) whose accuracy holds under
  // rounding to nearest only: under other modes only the status, the untouched memory around the
  // results and the mode are checked.
  kNearestOnly,
};

struct Row {
  const char* family;
  const char* name;
  engine::Accuracy accuracy;
  Rounding rounding;
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
