#include <gtest/gtest.h>

#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "tests/support/forced_level.h"

namespace zal::engine {
namespace {

struct TableView {
  const char* name;
  void* const* entries;
  const void* stub;
};

template <class Shape>
TableView View(const char* name, const DispatchTable<Shape>& table, Shape* stub) {
  return {name, reinterpret_cast<void* const*>(table), reinterpret_cast<const void*>(stub)};
}

std::vector<TableView> AllTables() {
  return {
#define ZAL_VIEW(family, name, shape, accuracy) \
  View<shape>(#name, g_dispatch_tables.name, &Dispatcher<&DispatchTables::name, shape>::Initialise),
      ZAL_PRIMITIVES(ZAL_VIEW)
#undef ZAL_VIEW
  };
}

TEST(DispatchTables, EachHoldsStubSixDistinctLevelsAndNull) {
  for (const TableView& table : AllTables()) {
    SCOPED_TRACE(table.name);
    EXPECT_EQ(table.entries[0], table.stub);
    for (int level = 0; level < kLevelCount; ++level) {
      ASSERT_NE(table.entries[1 + level], nullptr) << kLevelNames[level];
      for (int other = 0; other < level; ++other) {
        EXPECT_NE(table.entries[1 + level], table.entries[1 + other]);
      }
    }
    EXPECT_EQ(table.entries[kDispatchTableEntries - 1], nullptr);
  }
}

TEST(DispatchTables, LieBackToBackInOneArea) {
  const std::vector<TableView> tables = AllTables();
  for (std::size_t i = 1; i < tables.size(); ++i) {
    EXPECT_EQ(tables[i].entries, tables[i - 1].entries + kDispatchTableEntries) << tables[i].name;
  }
}

// The level reached through a table is the one its entry claims: each level's version record
// carries that level's code.
TEST(DispatchTables, EveryLevelEntryRunsThatLevelsKernel) {
  constexpr const char* kCodes[] = {"SSE2", "SSS3", "SE42", "AVX ", "AVX2", "A512"};
  for (int level = 0; level < kLevelCount; ++level) {
    const EngLibraryVersion* version = g_dispatch_tables.LibraryVersion[1 + level]();
    EXPECT_EQ(std::string(version->targetCpu, 4), kCodes[level]);
  }
}

TEST(DispatchTables, FirstCallThroughTheStubSelectsAndAnswers) {
  engSetDispatchIndex(-1);
  const EngLibraryVersion* first = dispatch::LibraryVersion();
  const int level = engGetDispatchIndex();
  ASSERT_GE(level, 0);
  EXPECT_EQ(first, dispatch::LibraryVersion());
  EXPECT_EQ(first, g_dispatch_tables.LibraryVersion[1 + level]());

  engSetDispatchIndex(-1);
  void* block = dispatch::MallocF32(8);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(engGetDispatchIndex(), level);
  dispatch::Free(block);
  test::RestoreForcedLevel();
}

}  // namespace
}  // namespace zal::engine
