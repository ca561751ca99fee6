#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/cpuid.h"
#include "tests/support/forced_level.h"
#include "zalaccelerate/core.h"

namespace {

using zal::test::Cpuid;
using Registers = zal::test::CpuidRegisters;

// The reference vendor's leaf-0 registers, as the engine compares them.
bool IsReferenceVendor() {
  const Registers leaf0 = Cpuid(0, 0);
  return leaf0.ebx == 0x756E6547 && leaf0.edx == 0x49656E69 && leaf0.ecx == 0x6C65746E;
}

std::uint64_t AnyLeafRequest() {
  std::uint64_t word = 0;
  std::memcpy(&word, "getinfoa", 8);
  return word;
}

TEST(ProcessorInfo, FeatureWordAgreesWithTheProcessor) {
  const Registers leaf1 = Cpuid(1, 0);
  const Registers leaf7 = Cpuid(7, 0);
  struct Expectation {
    std::uint64_t feature;
    bool present;
  };
  const Expectation expectations[] = {
      {engCpuSSE2, (leaf1.edx >> 26 & 1) != 0},     {engCpuSSE3, (leaf1.ecx & 1) != 0},
      {engCpuSSSE3, (leaf1.ecx >> 9 & 1) != 0},     {engCpuSSE42, (leaf1.ecx >> 20 & 1) != 0},
      {engCpuAVX, (leaf1.ecx >> 28 & 1) != 0},      {engCpuAVX512F, (leaf7.ebx >> 16 & 1) != 0},
      {engCpuAVX512BW, (leaf7.ebx >> 30 & 1) != 0}, {engCpuSHA, (leaf7.ebx >> 29 & 1) != 0},
  };
  std::uint64_t features = 0;
  EXPECT_EQ(engGetCpuFeatures(&features, nullptr), engStsNoErr);
  for (const Expectation& e : expectations) {
    EXPECT_EQ((features & e.feature) != 0, e.present) << std::hex << e.feature;
  }
  EXPECT_EQ(features & engCpuBypassChecks, 0u);
}

TEST(ProcessorInfo, FeatureQueryReturnsLeafOneOrTheLeafAskedFor) {
  std::uint64_t features = 0;
  EXPECT_EQ(engGetCpuFeatures(nullptr, nullptr), engStsNullPtrErr);

  std::uint32_t regs[4] = {7, 7, 7, 7};
  ASSERT_EQ(engGetCpuFeatures(&features, regs), engStsNoErr);
  const Registers leaf1 = Cpuid(1, 0);
  // EBX of leaf 1 carries the APIC id of whichever core ran the query.
  EXPECT_EQ(regs[0], leaf1.eax);
  EXPECT_EQ(regs[2], leaf1.ecx);
  EXPECT_EQ(regs[3], leaf1.edx);

  struct Request {
    unsigned leaf, subleaf;
  };
  for (const Request& request : {Request{0, 0}, Request{7, 0}, Request{0x80000000u, 0}}) {
    std::uint64_t word = AnyLeafRequest();
    std::uint32_t leaf_regs[4] = {request.leaf, 0, request.subleaf, 0};
    ASSERT_EQ(engGetCpuFeatures(&word, leaf_regs), engStsNoErr);
    const Registers expected = Cpuid(request.leaf, request.subleaf);
    EXPECT_EQ(leaf_regs[0], expected.eax) << "leaf " << std::hex << request.leaf;
    EXPECT_EQ(leaf_regs[1], expected.ebx);
    EXPECT_EQ(leaf_regs[2], expected.ecx);
    EXPECT_EQ(leaf_regs[3], expected.edx);
    EXPECT_EQ(word, features);
  }
}

TEST(ProcessorInfo, CacheSizeIsMemoised) {
  EXPECT_EQ(engGetMaxCacheSizeB(nullptr), engStsNullPtrErr);
  int first = -2;
  const EngStatus first_status = engGetMaxCacheSizeB(&first);
  for (int i = 0; i < 3; ++i) {
    int again = -2;
    EXPECT_EQ(engGetMaxCacheSizeB(&again), first_status);
    EXPECT_EQ(again, first);
  }
  if (IsReferenceVendor()) {
    EXPECT_EQ(first_status, engStsNoErr);
    EXPECT_GE(first, 32 * 1024);
  } else {
    EXPECT_EQ(first_status, engStsNotSupportedCpu);
    EXPECT_EQ(first, -1);
  }
}

TEST(ProcessorInfo, ClockRateIsPlausible) {
  EXPECT_EQ(engGetCpuFreqMhz(nullptr), engStsNullPtrErr);
  // It takes two to three seconds and does not depend on the level: measure it once.
  if (zal::test::ForcedLevel() >= 0) GTEST_SKIP() << "measured in the natural run";
  int mhz = 0;
  EXPECT_EQ(engGetCpuFreqMhz(&mhz), engStsNoErr);
  EXPECT_GT(mhz, 100);
  EXPECT_LT(mhz, 10000);
}

TEST(ProcessorInfo, VersionRecordNamesTheRunningLevel) {
  constexpr const char* kCodes[] = {"SSE2", "SSS3", "SE42", "AVX ", "AVX2", "A512"};
  const EngLibraryVersion* version = engLibraryVersion();
  ASSERT_NE(version, nullptr);
  const int level = engGetDispatchIndex();
  ASSERT_GE(level, 0);
  if (zal::test::ForcedLevel() >= 0) {
    EXPECT_EQ(level, zal::test::ForcedLevel());
  }
  EXPECT_EQ(std::string(version->targetCpu, 4), kCodes[level]);
  EXPECT_STREQ(version->name, "zalaccelerate engine");
  const std::string release = std::to_string(version->major) + "." +
                              std::to_string(version->minor) + "." +
                              std::to_string(version->majorBuild) + " (";
  EXPECT_EQ(std::string(version->version).rfind(release, 0), 0u) << version->version;
  EXPECT_EQ(std::string(version->version).back(), ')');
  EXPECT_EQ(std::strlen(version->buildDate), 11u) << version->buildDate;  // "Mmm dd yyyy"
}

TEST(ProcessorInfo, StartDispatchSelectsThisProcessorsLevel) {
  const EngStatus status = engStartDispatch();
  EXPECT_EQ(status, IsReferenceVendor() ? engStsNoErr : engStsNonReferenceVendorCpu);
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  EXPECT_EQ(engGetSelectedCpuFeatures() & features, features);
  const int natural = engGetDispatchIndex();
  int level = -1;
  engSelectCpuFeatures(features, &level);
  EXPECT_EQ(natural, level);
  zal::test::RestoreForcedLevel();
}

TEST(ProcessorInfo, BypassTakesTheWordAndReplacesTheDetectedOne) {
  engStartDispatch();
  std::uint64_t detected = 0;
  engGetCpuFeatures(&detected, nullptr);
  const std::uint64_t in_force = engGetSelectedCpuFeatures();

  int level = -1;
  EXPECT_EQ(engSelectCpuFeatures(engCpuSSE2 | engCpuBypassChecks, &level),
            engStsFeaturesCombination);
  EXPECT_EQ(level, 0);
  EXPECT_EQ(engGetSelectedCpuFeatures(), engCpuMMX | engCpuSSE | engCpuSSE2);
  std::uint64_t after = 0;
  engGetCpuFeatures(&after, nullptr);
  EXPECT_EQ(after, in_force);
  // The index is the caller's to store: the selection alone leaves it.
  EXPECT_NE(engGetDispatchIndex(), -1);

  engStartDispatch();
  zal::test::RestoreForcedLevel();
  engGetCpuFeatures(&after, nullptr);
  EXPECT_EQ(after & detected, detected);
}

TEST(ProcessorInfo, DispatchIndexIgnoresLevelsThatDoNotExist) {
  const int level = engGetDispatchIndex();
  for (int bad : {-2, 6, 7, 1000, -1000}) {
    engSetDispatchIndex(bad);
    EXPECT_EQ(engGetDispatchIndex(), level);
  }
}

}  // namespace
