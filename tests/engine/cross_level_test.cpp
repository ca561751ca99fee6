// Every compared row of the primitive list, at every level under test, against its portable
// variant: one test per row, named after the primitive.
#include <gtest/gtest.h>

#include <string>

#include "tests/engine/harness/rows.h"

namespace zal::test::harness {
namespace {

class CrossLevel : public testing::TestWithParam<Row> {};

TEST_P(CrossLevel, MatchesPortable) {
  const Row& row = GetParam();
  for (int level : LevelsUnderTest()) {
    SCOPED_TRACE(std::string(row.name) + " at " + LevelName(level));
    row.match_portable(row, level);
  }
}

TEST_P(CrossLevel, RefusesNullPointersThenBadLengths) {
  const Row& row = GetParam();
  std::vector<int> levels = LevelsUnderTest();
  levels.push_back(kPortable);
  for (int level : levels) {
    SCOPED_TRACE(std::string(row.name) + " at " + LevelName(level));
    row.refuse_bad_arguments(level);
  }
}

INSTANTIATE_TEST_SUITE_P(Primitives, CrossLevel, testing::ValuesIn(ComparedRows()),
                         [](const testing::TestParamInfo<Row>& info) { return info.param.name; });

}  // namespace
}  // namespace zal::test::harness
