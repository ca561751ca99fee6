#include <gtest/gtest.h>

#include <cstdint>

#include "engine/core/feature_selection.h"

namespace {

using zal::engine::SelectFeatures;
using zal::engine::Selection;
using zal::engine::SelectUnchecked;

constexpr std::uint64_t kBit36 = std::uint64_t{1} << 36;
constexpr std::uint64_t kBit40 = std::uint64_t{1} << 40;
constexpr std::uint64_t kBit62 = std::uint64_t{1} << 62;

struct RuleCase {
  const char* name;
  std::uint64_t requested;
  int level;
  std::uint64_t in_force;
  EngStatus status;
};

// Every row of the level rules, met in full and with the required mask incomplete; the in-force
// word is the request with the row's required mask added.
const RuleCase kRuleCases[] = {
    {"1: AVX-512 F/CD/BW/DQ/VL", 0x73081DF, 5, 0x73081DF, engStsNoErr},
    {"1 before 2: both AVX-512 sets", 0x7F081DF, 5, 0x7F081DF, engStsNoErr},
    {"1 incomplete", 0x7300007, 5, 0x73081DF, engStsFeaturesCombination},
    {"2: AVX-512 F/CD/ER/PF without BW", 0xF081DF, 4, 0xF081DF, engStsNoErr},
    {"2 incomplete", 0xF00000, 4, 0xF081DF, engStsFeaturesCombination},
    {"3: AVX-512 F/CD/BW/DQ without VL", 0x33081DF, 4, 0x33081DF, engStsNoErr},
    {"3: AVX2", 0x81DF, 4, 0x81DF, engStsNoErr},
    {"3 incomplete: AVX2 alone", 0x8000, 4, 0x81DF, engStsFeaturesCombination},
    {"3 incomplete: AVX2 without AVX", 0x80DF, 4, 0x81DF, engStsFeaturesCombination},
    {"4: AVX", 0x1DF, 3, 0x1DF, engStsNoErr},
    {"4 incomplete", 0x107, 3, 0x1DF, engStsFeaturesCombination},
    {"5: SSE4.2", 0xDF, 2, 0xDF, engStsNoErr},
    {"5 incomplete", 0x87, 2, 0xDF, engStsFeaturesCombination},
    {"6: SSE4.1", 0x5F, 1, 0x5F, engStsNoErr},
    {"6 before 7: SSE4.1 and MOVBE without SSSE3", 0x67, 1, 0x7F, engStsFeaturesCombination},
    {"7: MOVBE", 0x3F, 1, 0x3F, engStsNoErr},
    {"7 incomplete", 0x27, 1, 0x3F, engStsFeaturesCombination},
    {"8: SSSE3", 0x1F, 1, 0x1F, engStsNoErr},
    {"8 incomplete", 0x17, 1, 0x1F, engStsFeaturesCombination},
    {"9: SSE3", 0xF, 0, 0xF, engStsNoErr},
    {"9 incomplete", 0xB, 0, 0xF, engStsFeaturesCombination},
    {"10: SSE2", 0x7, 0, 0x7, engStsNoErr},
    {"10 incomplete", 0x5, 0, 0x7, engStsFeaturesCombination},
    {"11: SSE", 0x3, 0, 0x3, engStsNotSupportedCpu},
    {"11: SSE without MMX", 0x2, 0, 0x3, engStsNotSupportedCpu},
    {"12: MMX", 0x1, 0, 0x1, engStsNotSupportedCpu},
    {"12: nothing", 0x0, 0, 0x1, engStsNotSupportedCpu},
    {"12: AES alone", 0x400, 0, 0x401, engStsNotSupportedCpu},
    {"bits outside the rules stay in force", 0x4DF | kBit40, 2, 0x4DF | kBit40, engStsNoErr},
};

TEST(FeatureSelection, UncheckedRequestFollowsTheFirstRuleItMeets) {
  for (const RuleCase& c : kRuleCases) {
    SCOPED_TRACE(c.name);
    const Selection s = SelectUnchecked(c.requested);
    EXPECT_EQ(s.level, c.level);
    EXPECT_EQ(s.in_force, c.in_force) << std::hex << s.in_force;
    EXPECT_EQ(s.status, c.status);
  }
}

TEST(FeatureSelection, RequestOfTheProcessorsOwnWordFollowsTheRules) {
  for (const RuleCase& c : kRuleCases) {
    SCOPED_TRACE(c.name);
    if (c.requested & kBit40) continue;  // unknown bits warn when checked
    // A processor that saves every vector state, so nothing is dropped.
    const std::uint64_t actual = c.requested | engCpuEnabledByOS | engCpuAVX512EnabledByOS;
    const Selection s = SelectFeatures(c.requested, actual);
    EXPECT_EQ(s.level, c.level);
    EXPECT_EQ(s.in_force, c.in_force) << std::hex << s.in_force;
    EXPECT_EQ(s.status, c.status);
  }
}

struct CheckedCase {
  const char* name;
  std::uint64_t requested;
  std::uint64_t actual;
  int level;
  std::uint64_t in_force;
  EngStatus status;
};

// Requests checked against a processor's word: AVX and AVX-512 requests dropped when the OS does
// not save their state, warnings for unknown and missing bits, and which warning wins.
const CheckedCase kCheckedCases[] = {
    {"AVX2 processor, OS without AVX state", 0xEDFF, 0xEDFF, 2, 0x6CFF, engStsFeatureNotSupported},
    {"AVX request, OS without AVX state", 0x1DF, 0xDDF, 2, 0xDF, engStsFeatureNotSupported},
    {"AVX request naming ENABLEDBYOS, OS without AVX state", 0x3DF, 0xDDF, 2, 0x2DF,
     engStsFeatureNotSupported},
    {"SSE4.2 request, OS without AVX state", 0xDF, 0xDDF, 2, 0xDF, engStsNoErr},
    {"AVX request without ENABLEDBYOS, OS with AVX state", 0x1DF, 0xFDF, 3, 0x1DF, engStsNoErr},
    {"lower level than the processor's", 0xDF, 0xEFFF, 2, 0xDF, engStsNoErr},
    {"2017 server with AVX-512 F/CD/BW/DQ/VL, OS without AVX-512 state", 0x01737EFFF, 0x01737EFFF,
     4, 0x1007EFFF, engStsFeatureNotSupported},
    {"2021 server with AVX-512 VBMI and IFMA, OS without AVX-512 state: IFMA is not dropped",
     0xD0F3FEFFF, 0xD0F3FEFFF, 4, 0x1000FEFFF, engStsFeatureNotSupported},
    {"2016 many-core with AVX-512 F/CD/ER/PF, OS without AVX-512 state", 0xF7EFFF, 0xF7EFFF, 4,
     0x7EFFF, engStsFeatureNotSupported},
    {"AVX-512 class bit dropped without AVX-512 state", 0x800000007, 0x7, 0, 0x7,
     engStsFeatureNotSupported},
    {"AVX-512 class bit kept with AVX-512 state, but missing", 0x800000007, 0x200000007, 0,
     0x800000007, engStsFeatureNotSupported},
    {"IFMA without AVX-512 state", 0x100000007, 0x100000007, 0, 0x100000007, engStsNoErr},
    {"AVX-512 BW request on the 2016 many-core: warned, not dropped", 0x2073083DF, 0x200F7EFFF, 5,
     0x2073083DF, engStsFeatureNotSupported},
    {"AVX-512 request need not name the OS state bit", 0x73083DF, 0x21737EFFF, 5, 0x73083DF,
     engStsNoErr},
    {"missing KNC bit", 0x800000DF, 0xDF, 2, 0x800000DF, engStsFeatureNotSupported},
    {"ABR is never detected", 0x10DF, 0xEFFF, 2, 0x10DF, engStsFeatureNotSupported},
    {"bit 36 unknown", 0xDF | kBit36, 0xDF, 2, 0xDF | kBit36, engStsUnknownFeature},
    {"bit 40 unknown", 0x7 | kBit40, 0x7, 0, 0x7 | kBit40, engStsUnknownFeature},
    {"bit 62 unknown", 0xDF | kBit62, 0xDF, 2, 0xDF | kBit62, engStsUnknownFeature},
    {"unknown bit over incomplete mask", 0x80 | kBit40, 0xDF, 2, 0xDF | kBit40,
     engStsUnknownFeature},
    {"unknown bit over no SSE2", 0x1 | kBit40, 0x1, 0, 0x1 | kBit40, engStsUnknownFeature},
    {"missing bit over unknown bit", 0x407 | kBit40, 0x7, 0, 0x407 | kBit40,
     engStsFeatureNotSupported},
    {"AVX dropped over unknown bit", 0xEDFF | kBit40, 0xEDFF, 2, 0x6CFF | kBit40,
     engStsFeatureNotSupported},
    {"missing bit over incomplete mask", 0x1087, 0xDF, 2, 0x10DF, engStsFeatureNotSupported},
    {"missing bit over no SSE2", 0x403, 0x3, 0, 0x403, engStsFeatureNotSupported},
    {"incomplete mask on a processor that has it all", 0x8007, 0xEFFF, 4, 0x81DF,
     engStsFeaturesCombination},
};

TEST(FeatureSelection, CheckedRequestIsTrimmedAndWarned) {
  for (const CheckedCase& c : kCheckedCases) {
    SCOPED_TRACE(c.name);
    const Selection s = SelectFeatures(c.requested, c.actual);
    EXPECT_EQ(s.level, c.level);
    EXPECT_EQ(s.in_force, c.in_force) << std::hex << s.in_force;
    EXPECT_EQ(s.status, c.status);
  }
}

}  // namespace
