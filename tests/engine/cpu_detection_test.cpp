#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "engine/core/cpu_features.h"
#include "engine/core/feature_selection.h"
#include "tests/support/recorded_processors.h"

namespace {

using zal::engine::DetectFeatures;
using zal::engine::IsReferenceVendor;
using zal::engine::SelectFeatures;
using zal::engine::Selection;
using zal::test::Recorded;
using zal::test::RecordedCase;
using zal::test::RecordedProcessor;
using zal::test::RecordedProcessors;

TEST(CpuDetection, RecordedProcessorsGiveTheirFeatureWordAndVendor) {
  for (const RecordedCase& c : RecordedProcessors()) {
    SCOPED_TRACE(c.cpu.name());
    std::uint64_t features = 0;
    ASSERT_TRUE(DetectFeatures(c.cpu, &features));
    EXPECT_EQ(features, c.expected.features) << std::hex << features;
    EXPECT_EQ(IsReferenceVendor(c.cpu), c.expected.reference_vendor);
  }
}

TEST(CpuDetection, RecordedProcessorsSelectTheirNaturalLevel) {
  for (const RecordedCase& c : RecordedProcessors()) {
    SCOPED_TRACE(c.cpu.name());
    const Selection s = SelectFeatures(c.expected.features, c.expected.features);
    EXPECT_EQ(s.level, c.expected.level);
    EXPECT_EQ(s.in_force, c.expected.in_force) << std::hex << s.in_force;
    EXPECT_EQ(s.status, c.expected.selection_status);
  }
}

constexpr std::uint32_t Bit(int n) {
  return 1u << n;
}

struct RegisterEdit {
  const char* processor;
  const char* change;
  std::function<void(RecordedProcessor&)> edit;
  std::uint64_t features;  // the word after the change, from the bit table
};

// One register changed on a real processor, for the features that depend on several sources.
const RegisterEdit kRegisterEdits[] = {
    // ENABLEDBYOS: OSXSAVE, AVX and XCR0 bits 1 and 2 together.
    {"2013 desktop, family 6 model 60, AVX2", "OSXSAVE clear",
     [](auto& p) { p.Registers(1, 0).ecx &= ~Bit(27); }, 0xEDFF},
    {"2013 desktop, family 6 model 60, AVX2", "AVX clear",
     [](auto& p) { p.Registers(1, 0).ecx &= ~Bit(28); }, 0xECFF},
    {"2013 desktop, family 6 model 60, AVX2", "XCR0 without YMM state",
     [](auto& p) { p.set_xcr0(0x3); }, 0xEDFF},
    {"2013 desktop, family 6 model 60, AVX2", "XCR0 without SSE state",
     [](auto& p) { p.set_xcr0(0x5); }, 0xEDFF},
    // Bit 33: OSXSAVE and XCR0 bits 5, 6 and 7 together.
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "XCR0 without AVX-512 state",
     [](auto& p) { p.set_xcr0(0x7); }, 0x01737EFFF},
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "XCR0 without Hi16_ZMM",
     [](auto& p) { p.set_xcr0(0x67); }, 0x01737EFFF},
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "OSXSAVE clear",
     [](auto& p) { p.Registers(1, 0).ecx &= ~Bit(27); }, 0x01737EDFF},
    {"2016 many-core, family 6 model 87, AVX-512 F/CD/ER/PF", "XCR0 without AVX-512 state",
     [](auto& p) { p.set_xcr0(0x7); }, 0xF7EFFF},
    // AVX2: FMA, AVX2, BMI1 and BMI2 together.
    {"2013 desktop, family 6 model 60, AVX2", "FMA clear",
     [](auto& p) { p.Registers(1, 0).ecx &= ~Bit(12); }, 0x6FFF},
    {"2013 desktop, family 6 model 60, AVX2", "AVX2 clear",
     [](auto& p) { p.Registers(7, 0).ebx &= ~Bit(5); }, 0x6FFF},
    {"2013 desktop, family 6 model 60, AVX2", "BMI1 clear",
     [](auto& p) { p.Registers(7, 0).ebx &= ~Bit(3); }, 0x6FFF},
    {"2013 desktop, family 6 model 60, AVX2", "BMI2 clear",
     [](auto& p) { p.Registers(7, 0).ebx &= ~Bit(8); }, 0x6FFF},
    // PREFETCHW only when leaf 0x80000001 exists; leaf 7 only when the highest basic leaf
    // reaches it, and only its sub-leaf 0. A limited maximum leaves the higher leaves answering.
    {"2019 desktop, family 23 model 113, AVX2, another vendor",
     "highest extended leaf reported 0x80000000",
     [](auto& p) { p.LimitReportedMaxLeaf(0x80000000u); }, 0xBEFFF},
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "PREFETCHW clear",
     [](auto& p) { p.Registers(0x80000001u, 0).ecx &= ~Bit(8); }, 0xBEFFF},
    {"2013 desktop, family 6 model 60, AVX2", "PREFETCHW set",
     [](auto& p) { p.Registers(0x80000001u, 0).ecx |= Bit(8); }, 0x4EFFF},
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "highest basic leaf reported 6",
     [](auto& p) { p.LimitReportedMaxLeaf(6); }, 0x200046FFF},
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "highest basic leaf reported 6",
     [](auto& p) { p.LimitReportedMaxLeaf(6); }, 0x46FFF},
    {"2013 desktop, family 6 model 60, AVX2", "highest basic leaf reported 2",
     [](auto& p) { p.LimitReportedMaxLeaf(2); }, 0x6FFF},
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "leaf 7 sub-leaf 1 all ones",
     [](auto& p) {
       p.Registers(7, 1) = {~0u, ~0u, ~0u, ~0u};
     },
     0x21737EFFF},
    // The other leaf-7 words.
    {"2021 server, family 6 model 106, AVX-512 with VBMI and IFMA", "VBMI clear",
     [](auto& p) { p.Registers(7, 0).ecx &= ~Bit(1); }, 0xF073FEFFF},
    {"2016 many-core, family 6 model 87, AVX-512 F/CD/ER/PF", "4FMAPS and 4VNNIW set",
     [](auto& p) { p.Registers(7, 0).edx |= Bit(2) | Bit(3); }, 0x260F7EFFF},
    // KNC: family 0Bh model 1 from leaf 1 EAX bits 4 to 11.
    {"2008 desktop, family 6 model 26, SSE4.2", "family 0Bh model 1",
     [](auto& p) { p.Registers(1, 0).eax = 0x00000B11; }, 0x800000DF},
    {"2008 desktop, family 6 model 26, SSE4.2", "family 0Bh model 1, extended model set",
     [](auto& p) { p.Registers(1, 0).eax = 0x00010B10; }, 0x800000DF},
    {"2008 desktop, family 6 model 26, SSE4.2", "family 0Bh model 2",
     [](auto& p) { p.Registers(1, 0).eax = 0x00000B21; }, 0xDF},
    {"2008 desktop, family 6 model 26, SSE4.2", "family 0Fh model 1",
     [](auto& p) { p.Registers(1, 0).eax = 0x00000F11; }, 0xDF},
    // Leaf 1 is all detection needs.
    {"2002 desktop, family 15 model 2, SSE2", "highest basic leaf reported 1",
     [](auto& p) { p.LimitReportedMaxLeaf(1); }, 0x7},
};

TEST(CpuDetection, FeaturesWithSeveralSourcesNeedAllOfThem) {
  for (const RegisterEdit& e : kRegisterEdits) {
    SCOPED_TRACE(std::string(e.processor) + ": " + e.change);
    RecordedProcessor cpu = Recorded(e.processor);
    e.edit(cpu);
    std::uint64_t features = 0;
    ASSERT_TRUE(DetectFeatures(cpu, &features));
    EXPECT_EQ(features, e.features) << std::hex << features;
  }
}

TEST(CpuDetection, XgetbvIsNotAskedWithoutOsxsave) {
  // XGETBV faults when the OS has not enabled XSAVE: whatever XCR0 would say must not count.
  RecordedProcessor cpu = Recorded("2011 desktop, family 6 model 42, AVX, OS without XSAVE");
  cpu.set_xcr0(0xE7);
  std::uint64_t features = 0;
  ASSERT_TRUE(DetectFeatures(cpu, &features));
  EXPECT_EQ(features, 0xDDFu) << std::hex << features;
}

TEST(CpuDetection, ProcessorWithoutLeafOneCannotBeIdentified) {
  RecordedProcessor cpu = Recorded("2008 desktop, family 6 model 26, SSE4.2");
  cpu.Registers(0, 0).eax = 0;
  std::uint64_t features = 0x5A5A;
  EXPECT_FALSE(DetectFeatures(cpu, &features));
}

TEST(CpuDetection, VendorIsReadFromAllThreeRegisters) {
  struct VendorEdit {
    const char* change;
    std::uint32_t zal::engine::CpuidRegisters::*reg;
    std::uint32_t value;
  };
  // The reference vendor's leaf 0 with one register changed at a time.
  const VendorEdit edits[] = {
      {"ECX", &zal::engine::CpuidRegisters::ecx, 0x6C65746F},
      {"EDX", &zal::engine::CpuidRegisters::edx, 0x6C65746E},
      {"EBX", &zal::engine::CpuidRegisters::ebx, 0x756E6947},
  };
  for (const VendorEdit& e : edits) {
    SCOPED_TRACE(e.change);
    RecordedProcessor cpu = Recorded("2013 desktop, family 6 model 60, AVX2");
    cpu.Registers(0, 0).*e.reg = e.value;
    EXPECT_FALSE(IsReferenceVendor(cpu));
  }
}

}  // namespace
