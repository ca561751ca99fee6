// The avx512 kernels with a 24-bit source take their byte-permute path by the feature word in
// force, which the cross-level runs do not control: each such row at that level, with the word
// holding the byte permutes and without them, against the portable variant.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/core/level.h"
#include "tests/engine/harness/rows.h"
#include "tests/support/forced_level.h"
#include "zalaccelerate/core.h"

namespace zal::test::harness {
namespace {

constexpr int kAvx512 = 5;

bool HasInt24Source(std::string_view name) {
  return name.starts_with("ConvertS24") || name.starts_with("DeinterleaveConvertS24");
}

TEST(BytePermutes, Int24SourcesMatchPortableWithAndWithoutThem) {
  if (ForcedLevel() >= 0 && ForcedLevel() != kAvx512) GTEST_SKIP() << "runs at avx512 only";
  std::uint64_t detected = 0;
  engGetCpuFeatures(&detected, nullptr);
  if ((detected & engine::kLevelNeeds[kAvx512]) != engine::kLevelNeeds[kAvx512]) {
    GTEST_SKIP() << "this processor cannot run avx512";
  }
  std::uint64_t words[] = {detected & ~std::uint64_t{engCpuAVX512VBMI}, detected};
  const int checked_words = (detected & engCpuAVX512VBMI) ? 2 : 1;
  int rows = 0;
  for (int w = 0; w < checked_words; ++w) {
    engSelectCpuFeatures(words[w], nullptr);
    ASSERT_EQ(engGetSelectedCpuFeatures() & engCpuAVX512VBMI, words[w] & engCpuAVX512VBMI);
    for (const Row& row : ComparedRows()) {
      if (!HasInt24Source(row.name)) continue;
      SCOPED_TRACE(std::string(row.name) + (w ? " with" : " without") + " byte permutes");
      row.match_portable(row, kAvx512);
      ++rows;
    }
  }
  EXPECT_EQ(rows, 3 * checked_words);
  if (ForcedLevel() >= 0) {
    RestoreForcedLevel();
  } else {
    engSelectCpuFeatures(detected, nullptr);
  }
}

}  // namespace
}  // namespace zal::test::harness
