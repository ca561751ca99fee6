#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "engine/core/level.h"
#include "tests/support/forced_level.h"

namespace zal::test {
namespace {

using zal::engine::kLevelCount;
using zal::engine::kLevelNeeds;

int g_forced_level = -1;

int ParseLevel(const char* text) {
  char* end = nullptr;
  const long level = std::strtol(text, &end, 10);
  if (*text == '\0' || *end != '\0' || level < 0 || level >= kLevelCount) return -1;
  return static_cast<int>(level);
}

}  // namespace

int ForcedLevel() {
  return g_forced_level;
}

void RestoreForcedLevel() {
  if (g_forced_level < 0) return;
  // The bypass replaces the detected features by the word in force, which must be this
  // processor's: select naturally first.
  engStartDispatch();
  int level = -1;
  engSelectCpuFeatures(kLevelNeeds[g_forced_level] | engCpuBypassChecks, &level);
  engSetDispatchIndex(level);
}

}  // namespace zal::test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (const char* requested = std::getenv("ZAL_TEST_LEVEL")) {
    const int level = zal::test::ParseLevel(requested);
    if (level < 0) {
      std::fprintf(stderr, "ZAL_TEST_LEVEL must be 0..5, not '%s'\n", requested);
      return 2;
    }
    std::uint64_t features = 0;
    engGetCpuFeatures(&features, nullptr);
    if ((features & zal::engine::kLevelNeeds[level]) != zal::engine::kLevelNeeds[level]) {
      std::printf("level %d: this processor cannot run it, skipped\n", level);
      return zal::test::kSkipExitCode;
    }
    zal::test::g_forced_level = level;
    zal::test::RestoreForcedLevel();
    if (engGetDispatchIndex() != level) {
      std::fprintf(stderr, "level %d could not be forced\n", level);
      return 1;
    }
    std::printf("running at forced level %d\n", level);
  }
  return RUN_ALL_TESTS();
}
