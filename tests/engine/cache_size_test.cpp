#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "engine/core/cache_size.h"
#include "engine/core/streaming.h"
#include "tests/support/recorded_processors.h"

namespace {

using zal::engine::CacheSize;
using zal::engine::CpuidRegisters;
using zal::engine::FillStreamingThresholdFor;
using zal::engine::MaxCacheFromDescriptors;
using zal::engine::MeasureMaxCacheSize;
using zal::engine::StreamingThresholdFor;
using zal::test::Recorded;
using zal::test::RecordedCase;
using zal::test::RecordedProcessor;
using zal::test::RecordedProcessors;

constexpr int kKiB = 1024;
constexpr int kMiB = 1024 * kKiB;

void ExpectCacheSize(const CacheSize& found, int bytes, EngStatus status, int line_bytes) {
  EXPECT_EQ(found.bytes, bytes);
  EXPECT_EQ(found.status, status);
  EXPECT_EQ(found.line_bytes, line_bytes);
}

TEST(CacheSize, RecordedProcessorsGiveTheirLargestCache) {
  for (const RecordedCase& c : RecordedProcessors()) {
    SCOPED_TRACE(c.cpu.name());
    ExpectCacheSize(MeasureMaxCacheSize(c.cpu), c.expected.cache_bytes, c.expected.cache_status,
                    c.expected.cache_line_bytes);
  }
}

struct CacheEdit {
  const char* processor;
  const char* change;
  std::function<void(RecordedProcessor&)> edit;
  int bytes;
  EngStatus status;
  int line_bytes;
};

// Leaf-4 sub-leaf EBX from its fields, each stored less one.
constexpr std::uint32_t CacheGeometry(std::uint32_t ways, std::uint32_t partitions,
                                      std::uint32_t line) {
  return (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1);
}

const CacheEdit kCacheEdits[] = {
    {"2013 desktop, family 6 model 60, AVX2", "highest basic leaf reported 1",
     [](auto& p) { p.LimitReportedMaxLeaf(1); }, -1, engStsNotSupportedCpu, 0},
    {"2013 desktop, family 6 model 60, AVX2", "highest basic leaf 0",
     [](auto& p) { p.Registers(0, 0).eax = 0; }, -1, engStsNotSupportedCpu, 0},
    // Below leaf 4 the descriptors count, and this one's name no data cache (0xFF: see leaf 4).
    {"2013 desktop, family 6 model 60, AVX2", "highest basic leaf reported 3",
     [](auto& p) { p.LimitReportedMaxLeaf(3); }, 0, engStsUnknownCacheSize, 0},
    {"2008 desktop, family 6 model 26, SSE4.2", "highest basic leaf reported 2",
     [](auto& p) { p.LimitReportedMaxLeaf(2); }, 8 * kMiB, engStsNoErr, 64},
    {"2004 desktop, family 15 model 3, SSE3", "highest basic leaf 2",
     [](auto& p) { p.Registers(0, 0).eax = 2; }, 1 * kMiB, engStsNoErr, 64},
    {"2002 desktop, family 15 model 2, SSE2", "no descriptors",
     [](auto& p) {
       p.Registers(2, 0) = {1, 0, 0, 0};
     },
     0, engStsUnknownCacheSize, 0},
    {"2002 desktop, family 15 model 2, SSE2", "another vendor",
     [](auto& p) { p.Registers(0, 0).ecx = 0; }, -1, engStsNotSupportedCpu, 0},
    // Leaf 4: a null type ends the walk, instruction caches do not count.
    {"2013 desktop, family 6 model 60, AVX2", "leaf 4 empty",
     [](auto& p) { p.Registers(4, 0) = {}; }, 0, engStsUnknownCacheSize, 0},
    {"2013 desktop, family 6 model 60, AVX2", "leaf 4 holding an instruction cache only",
     [](auto& p) {
       p.Registers(4, 0) = p.Registers(4, 1);
       p.Registers(4, 1) = {};
     },
     0, engStsUnknownCacheSize, 0},
    {"2008 desktop, family 6 model 26, SSE4.2", "walk ends before L3",
     [](auto& p) { p.Registers(4, 2) = {}; }, 32 * kKiB, engStsNoErr, 64},
    {"2013 desktop, family 6 model 60, AVX2", "huge instruction cache",
     [](auto& p) {
       p.Registers(4, 1).ebx = CacheGeometry(16, 1, 64);
       p.Registers(4, 1).ecx = 65535;
     },
     8 * kMiB, engStsNoErr, 64},
    {"2013 desktop, family 6 model 60, AVX2", "L3 in two partitions",
     [](auto& p) { p.Registers(4, 3).ebx = CacheGeometry(16, 2, 64); }, 16 * kMiB, engStsNoErr, 64},
    {"2013 desktop, family 6 model 60, AVX2", "L1 as large as L3, with 128-byte lines",
     [](auto& p) {
       p.Registers(4, 0).ebx = CacheGeometry(16, 1, 128);
       p.Registers(4, 0).ecx = 4095;
     },
     8 * kMiB, engStsNoErr, 128},
    {"2013 desktop, family 6 model 60, AVX2", "L3 with 128-byte lines",
     [](auto& p) { p.Registers(4, 3).ebx = CacheGeometry(16, 1, 128); }, 16 * kMiB, engStsNoErr,
     128},
    // Level and sharing fields play no part.
    {"2013 desktop, family 6 model 60, AVX2", "L2 reported as a level-3 cache",
     [](auto& p) { p.Registers(4, 2).eax = 0x00000063; }, 8 * kMiB, engStsNoErr, 64},
};

TEST(CacheSize, EditedProcessorsFollowTheirCacheLeaves) {
  for (const CacheEdit& e : kCacheEdits) {
    SCOPED_TRACE(std::string(e.processor) + ": " + e.change);
    RecordedProcessor cpu = Recorded(e.processor);
    e.edit(cpu);
    ExpectCacheSize(MeasureMaxCacheSize(cpu), e.bytes, e.status, e.line_bytes);
  }
}

struct DescriptorCase {
  const char* name;
  CpuidRegisters leaf2;
  int bytes;
  int line_bytes;
};

// Sizes and lines from the vendor's descriptor table.
const DescriptorCase kDescriptorCases[] = {
    {"L1 data 8 KiB, 32-byte lines", {0x01, 0, 0, 0x0A}, 8 * kKiB, 32},
    {"L1 data 24 KiB", {0x01, 0, 0, 0x0E}, 24 * kKiB, 64},
    {"L1 data 32 KiB", {0x01, 0, 0, 0x2C}, 32 * kKiB, 64},
    {"L1 data 16 KiB sectored", {0x01, 0, 0, 0x60}, 16 * kKiB, 64},
    {"L2 128 KiB", {0x01, 0, 0, 0x1D}, 128 * kKiB, 64},
    {"L2 192 KiB sectored", {0x01, 0, 0, 0x3A}, 192 * kKiB, 64},
    {"L3 512 KiB sectored", {0x01, 0, 0, 0x22}, 512 * kKiB, 64},
    {"L3 4 MiB sectored", {0x01, 0, 0, 0x29}, 4 * kMiB, 64},
    {"L2 2 MiB, 32-byte lines", {0x01, 0, 0, 0x45}, 2 * kMiB, 32},
    {"L2 3 MiB", {0x01, 0, 0, 0x48}, 3 * kMiB, 64},
    {"L3 or L2 4 MiB", {0x01, 0, 0, 0x49}, 4 * kMiB, 64},
    {"L3 16 MiB", {0x01, 0, 0, 0x4D}, 16 * kMiB, 64},
    {"L2 6 MiB", {0x01, 0, 0, 0x4E}, 6 * kMiB, 64},
    {"L2 512 KiB 2-way", {0x01, 0, 0, 0x7F}, 512 * kKiB, 64},
    {"L2 256 KiB, 32-byte lines", {0x01, 0, 0, 0x82}, 256 * kKiB, 32},
    {"L2 1 MiB", {0x01, 0, 0, 0x87}, 1 * kMiB, 64},
    {"L3 1.5 MiB", {0x01, 0, 0, 0xDC}, 1536 * kKiB, 64},
    {"L3 6 MiB", {0x01, 0, 0, 0xDE}, 6 * kMiB, 64},
    {"L3 18 MiB", {0x01, 0, 0, 0xEB}, 18 * kMiB, 64},
    {"L3 24 MiB", {0x01, 0, 0, 0xEC}, 24 * kMiB, 64},
    // The largest wins wherever it stands; an equal size does not replace the first.
    {"largest in EBX", {0x01, 0x000021E4, 0, 0x0000002C}, 8 * kMiB, 64},
    {"largest in EAX's top byte", {0x49000001, 0x00000021, 0, 0}, 4 * kMiB, 64},
    {"equal sizes: first kept", {0x01, 0x00008744, 0, 0}, 1 * kMiB, 32},
    {"equal sizes: first kept, other order", {0x01, 0x00004487, 0, 0}, 1 * kMiB, 64},
    // Not data caches: instruction and trace caches, TLBs, prefetch, markers, unknown codes.
    {"instruction caches", {0x01, 0x00000630, 0x00000908, 0x00000070}, -1, 0},
    {"TLBs, prefetch and markers", {0x03025B01, 0x0000F0CA, 0x0000FEFF, 0x00000040}, -1, 0},
    {"unknown codes", {0x01, 0x00009F11, 0x000000A1, 0x000000F3}, -1, 0},
    {"nothing", {0x01, 0, 0, 0}, -1, 0},
    // Bit 31 empties a register; EAX's low byte is the repeat count.
    {"EDX with bit 31 set", {0x01, 0, 0, 0x8000212C}, -1, 0},
    {"EBX with bit 31 set beside a valid EDX", {0x01, 0x80E40000, 0, 0x0000002C}, 32 * kKiB, 64},
    {"EAX with bit 31 set", {0x80E40001, 0, 0, 0}, -1, 0},
    {"repeat count looks like a cache", {0x000000E4, 0, 0, 0}, -1, 0},
};

TEST(CacheSize, DescriptorsNameTheLargestDataCache) {
  for (const DescriptorCase& c : kDescriptorCases) {
    SCOPED_TRACE(c.name);
    ExpectCacheSize(MaxCacheFromDescriptors(c.leaf2), c.bytes, engStsNoErr, c.line_bytes);
  }
}

}  // namespace

struct ThresholdCase {
  const char* processor;
  const char* change;
  std::function<void(RecordedProcessor&)> edit;
  std::int64_t elementwise;  // half the level-2 cache, at least 256 KiB; 1 MiB when unknown
  std::int64_t fill;         // three quarters of the last level, at least the elementwise one
};

constexpr std::uint32_t kOtherVendorTopologyBit = 1u << 22;
constexpr std::uint32_t kOtherVendorSizesLeaf = 0x80000006;

const ThresholdCase kThresholdCases[] = {
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "as recorded", [](auto&) {},
     512 * kKiB, 27 * kMiB / 4 * 3 + 384 * kKiB},
    {"2000 desktop, family 6 model 8, SSE", "no cache parameter leaf", [](auto&) {}, kMiB, kMiB},
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "as recorded", [](auto&) {},
     256 * kKiB, 12 * kMiB},
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "without topology extensions",
     [](auto& p) { p.Registers(0x80000001, 0).ecx &= ~kOtherVendorTopologyBit; }, 256 * kKiB,
     24 * kMiB},
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "highest extended leaf 0x80000005",
     [](auto& p) { p.LimitReportedMaxLeaf(0x80000005); }, kMiB, kMiB},
    // The cache leaf of a 2024 server, family 26 model 2, under a hypervisor: 1 MiB L2, 32 MiB L3.
    {"2019 desktop, family 23 model 113, AVX2, another vendor", "2024 server's cache leaf",
     [](auto& p) {
       p.Registers(0x8000001D, 2) = {0x00000143, 0x03C0003F, 0x000003FF, 0x00000002};
       p.Registers(0x8000001D, 3) = {0x00004163, 0x03C0003F, 0x00007FFF, 0x00000001};
     },
     512 * kKiB, 24 * kMiB},
    // The reference vendor's leaf 0x80000006 has no level-3 field: it is not read there.
    {"2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL", "leaf 4 empty, sizes leaf set",
     [](auto& p) {
       p.Registers(4, 0) = {};
       p.Registers(kOtherVendorSizesLeaf, 0) = {0, 0, 0x04006140, 0x01009140};
       p.Registers(0x80000000, 0).eax = kOtherVendorSizesLeaf;
     },
     kMiB, kMiB},
};

TEST(StreamingThreshold, FollowsTheLevelTwoAndLastLevelCaches) {
  for (const ThresholdCase& c : kThresholdCases) {
    SCOPED_TRACE(std::string(c.processor) + ": " + c.change);
    RecordedProcessor cpu = Recorded(c.processor);
    c.edit(cpu);
    EXPECT_EQ(StreamingThresholdFor(cpu), c.elementwise);
    EXPECT_EQ(FillStreamingThresholdFor(cpu), c.fill);
  }
}
