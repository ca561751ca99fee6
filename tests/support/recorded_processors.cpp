#include "tests/support/recorded_processors.h"

#include <stdexcept>
#include <utility>

namespace zal::test {
namespace {

// Leaf 0 EBX, ECX, EDX of the reference vendor and of another vendor, as the engine compares them.
constexpr std::uint32_t kReferenceVendorEbx = 0x756E6547, kReferenceVendorEcx = 0x6C65746E,
                        kReferenceVendorEdx = 0x49656E69;
constexpr std::uint32_t kOtherVendorEbx = 0x68747541, kOtherVendorEcx = 0x444D4163,
                        kOtherVendorEdx = 0x69746E65;

constexpr CpuidRecord ReferenceVendorLeaf0(std::uint32_t max_basic) {
  return {0, 0, {max_basic, kReferenceVendorEbx, kReferenceVendorEcx, kReferenceVendorEdx}};
}

constexpr std::uint32_t kExtendedBase = 0x80000000u;

constexpr int kKiB = 1024;
constexpr int kMiB = 1024 * kKiB;

// Registers as {EAX, EBX, ECX, EDX}. EBX of leaf 1 is the first logical processor's (APIC id 0).
// Leaves the engine never reads (brand string, topology, power) are left out; so is leaf 2 where
// the deterministic cache leaf supersedes it and no dump of it is at hand.
std::vector<RecordedCase> MakeRecordedProcessors() {
  std::vector<RecordedCase> cases;

  // Family 6 model 8: MMX and SSE only; leaf 3 (serial number) disabled, so leaf 2 is the last.
  cases.push_back({RecordedProcessor("2000 desktop, family 6 model 8, SSE",
                                     {
                                         ReferenceVendorLeaf0(2),
                                         {1, 0, {0x00000686, 0x00000002, 0x00000000, 0x0383FBFF}},
                                         {2, 0, {0x03020101, 0x00000000, 0x00000000, 0x0C040882}},
                                     },
                                     0),
                   {.features = 0x3,
                    .level = 0,
                    .in_force = 0x3,
                    .selection_status = engStsNotSupportedCpu,
                    .reference_vendor = true,
                    .cache_bytes = 256 * kKiB,  // 0x82: L2 256 KiB, 32-byte lines
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 32}});

  cases.push_back({RecordedProcessor("2002 desktop, family 15 model 2, SSE2",
                                     {
                                         ReferenceVendorLeaf0(2),
                                         {1, 0, {0x00000F29, 0x00020809, 0x00004400, 0xBFEBFBFF}},
                                         {2, 0, {0x665B5001, 0x00000000, 0x00000000, 0x007B7040}},
                                         {kExtendedBase, 0, {0x80000004, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0, 0}},
                                     },
                                     0),
                   {.features = 0x7,
                    .level = 0,
                    .in_force = 0x7,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 512 * kKiB,  // 0x7B: sectored L2
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2004 laptop, family 6 model 13, SSE2",
                                     {
                                         ReferenceVendorLeaf0(2),
                                         {1, 0, {0x000006D8, 0x00000816, 0x00000180, 0xAFE9FBFF}},
                                         {2, 0, {0x02B3B001, 0x000000F0, 0x00000000, 0x2C04307D}},
                                         {kExtendedBase, 0, {0x80000004, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0, 0x00100000}},
                                     },
                                     0),
                   {.features = 0x7,
                    .level = 0,
                    .in_force = 0x7,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 2 * kMiB,  // 0x7D
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2004 desktop, family 15 model 3, SSE3",
                                     {
                                         ReferenceVendorLeaf0(5),
                                         {1, 0, {0x00000F34, 0x00020800, 0x0000441D, 0xBFEBFBFF}},
                                         {2, 0, {0x605B5001, 0x00000000, 0x00000000, 0x007C7040}},
                                         {4, 0, {0x00004121, 0x01C0003F, 0x0000001F, 0}},
                                         {4, 1, {0x00004143, 0x01C0003F, 0x000007FF, 0}},
                                         {kExtendedBase, 0, {0x80000004, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0, 0}},
                                     },
                                     0),
                   {.features = 0xF,
                    .level = 0,
                    .in_force = 0xF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 1 * kMiB,  // 8 ways x 64 B x 2048 sets
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2008 netbook, family 6 model 28, SSSE3 and MOVBE",
                                     {
                                         ReferenceVendorLeaf0(0xA),
                                         {1, 0, {0x000106C2, 0x00020800, 0x0040E39D, 0xBFE9FBFF}},
                                         {2, 0, {0x4FBA5901, 0x0E3080C0, 0x00000000, 0x00000000}},
                                         {4, 0, {0x00004121, 0x0140003F, 0x0000003F, 0}},
                                         {4, 1, {0x00004122, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 2, {0x00004143, 0x01C0003F, 0x000003FF, 0}},
                                         {7, 0, {0, 0, 0, 0}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000001, 0x00100000}},
                                     },
                                     0),
                   {.features = 0x3F,
                    .level = 1,  // by MOVBE: no SSE4.1
                    .in_force = 0x3F,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 512 * kKiB,
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2008 desktop, family 6 model 26, SSE4.2",
                                     {
                                         ReferenceVendorLeaf0(0xB),
                                         {1, 0, {0x000106A5, 0x00100800, 0x0098E3BD, 0xBFEBFBFF}},
                                         {2, 0, {0x55035A01, 0x00F0B2E4, 0x00000000, 0x09CA212C}},
                                         {4, 0, {0x1C004121, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 1, {0x1C004122, 0x00C0003F, 0x0000007F, 0}},
                                         {4, 2, {0x1C004143, 0x01C0003F, 0x000001FF, 0}},
                                         {4, 3, {0x1C03C163, 0x03C0003F, 0x00001FFF, 0x00000002}},
                                         {7, 0, {0, 0, 0, 0}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000001, 0x28100800}},
                                     },
                                     0),
                   {.features = 0xDF,
                    .level = 2,
                    .in_force = 0xDF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 8 * kMiB,
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  const std::vector<CpuidRecord> family6_model42_caches = {
      {2, 0, {0x76035A01, 0x00F0B0FF, 0x00000000, 0x00CA0000}},
      {4, 0, {0x1C004121, 0x01C0003F, 0x0000003F, 0}},
      {4, 1, {0x1C004122, 0x01C0003F, 0x0000003F, 0}},
      {4, 2, {0x1C004143, 0x01C0003F, 0x000001FF, 0}},
      {4, 3, {0x1C03C163, 0x03C0003F, 0x00001FFF, 0x00000006}},
      {7, 0, {0, 0, 0, 0}},
      {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
      {0x80000001, 0, {0, 0, 0x00000001, 0x28100800}},
  };
  auto family6_model42 = [&](std::uint32_t leaf1_ecx) {
    std::vector<CpuidRecord> records = {ReferenceVendorLeaf0(0xD),
                                        {1, 0, {0x000206A7, 0x00100800, leaf1_ecx, 0xBFEBFBFF}}};
    records.insert(records.end(), family6_model42_caches.begin(), family6_model42_caches.end());
    return records;
  };
  // An operating system from before AVX: OSXSAVE clear, so the AVX state is not saved.
  cases.push_back({RecordedProcessor("2011 desktop, family 6 model 42, AVX, OS without XSAVE",
                                     family6_model42(0x17BAE3FF), 0),
                   {.features = 0xDDF,
                    .level = 2,  // AVX dropped by the selection
                    .in_force = 0xCDF,
                    .selection_status = engStsFeatureNotSupported,
                    .reference_vendor = true,
                    .cache_bytes = 8 * kMiB,
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});
  cases.push_back(
      {RecordedProcessor("2011 desktop, family 6 model 42, AVX", family6_model42(0x1FBAE3FF), 0x7),
       {.features = 0xFDF,
        .level = 3,
        .in_force = 0xFDF,
        .selection_status = engStsNoErr,
        .reference_vendor = true,
        .cache_bytes = 8 * kMiB,
        .cache_status = engStsNoErr,
        .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2013 desktop, family 6 model 60, AVX2",
                                     {
                                         ReferenceVendorLeaf0(0xD),
                                         {1, 0, {0x000306C3, 0x00100800, 0x7FFAFBFF, 0xBFEBFBFF}},
                                         {2, 0, {0x76036301, 0x00F0B5FF, 0x00000000, 0x00C30000}},
                                         {4, 0, {0x1C004121, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 1, {0x1C004122, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 2, {0x1C004143, 0x01C0003F, 0x000001FF, 0}},
                                         {4, 3, {0x1C03C163, 0x03C0003F, 0x00001FFF, 0x00000006}},
                                         {7, 0, {0, 0x000027AB, 0, 0x9C000400}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000021, 0x2C100800}},
                                     },
                                     0x7),
                   {.features = 0xEFFF,
                    .level = 4,
                    .in_force = 0xEFFF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 8 * kMiB,
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  // AVX-512 F, CD, ER and PF without BW, DQ or VL.
  cases.push_back({RecordedProcessor("2016 many-core, family 6 model 87, AVX-512 F/CD/ER/PF",
                                     {
                                         ReferenceVendorLeaf0(0xD),
                                         {1, 0, {0x00050671, 0x00000800, 0x7FF8F3BF, 0xBFEBFBFF}},
                                         {4, 0, {0xFC00C121, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 1, {0xFC00C122, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 2, {0xFC01C143, 0x03C0003F, 0x000003FF, 0}},
                                         {7, 0, {0, 0x1C0D23AB, 0x00000001, 0}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000121, 0x2C100800}},
                                     },
                                     0xE7),
                   {.features = 0x200F7EFFF,
                    .level = 4,
                    .in_force = 0x200F7EFFF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 1 * kMiB,  // the L2 of a tile; there is no L3
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2017 server, family 6 model 85, AVX-512 F/CD/BW/DQ/VL",
                                     {
                                         ReferenceVendorLeaf0(0x16),
                                         {1, 0, {0x00050654, 0x00400800, 0x7FFEFBFF, 0xBFEBFBFF}},
                                         {2, 0, {0x00FEFF01, 0x000000F0, 0x00000000, 0x00000000}},
                                         {4, 0, {0x7C004121, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 1, {0x7C004122, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 2, {0x7C004143, 0x03C0003F, 0x000003FF, 0}},
                                         {4, 3, {0x7C0FC163, 0x0280003F, 0x00009FFF, 0x00000004}},
                                         {7, 0, {0, 0xD39FFFFB, 0x00000018, 0xBC000000}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000121, 0x2C100800}},
                                     },
                                     0x2E7),
                   {.features = 0x21737EFFF,
                    .level = 5,
                    .in_force = 0x21737EFFF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 27 * kMiB + 512 * kKiB,  // 11 ways x 64 B x 40960 sets
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  cases.push_back({RecordedProcessor("2021 server, family 6 model 106, AVX-512 with VBMI and IFMA",
                                     {
                                         ReferenceVendorLeaf0(0x1B),
                                         {1, 0, {0x000606A6, 0x00800800, 0x7FFEFBFF, 0xBFEBFBFF}},
                                         {2, 0, {0x00FEFF01, 0x000000F0, 0x00000000, 0x00000000}},
                                         {4, 0, {0xFC004121, 0x02C0003F, 0x0000003F, 0}},
                                         {4, 1, {0xFC004122, 0x01C0003F, 0x0000003F, 0}},
                                         {4, 2, {0xFC004143, 0x04C0003F, 0x000003FF, 0}},
                                         {4, 3, {0xFC1FC163, 0x02C0003F, 0x00013FFF, 0x00000004}},
                                         {7, 0, {0, 0xF3BFBFFF, 0x40417F5E, 0xBC040410}},
                                         {kExtendedBase, 0, {0x80000008, 0, 0, 0}},
                                         {0x80000001, 0, {0, 0, 0x00000121, 0x2C100800}},
                                     },
                                     0x2E7),
                   {.features = 0xF0F3FEFFF,
                    .level = 5,
                    .in_force = 0xF0F3FEFFF,
                    .selection_status = engStsNoErr,
                    .reference_vendor = true,
                    .cache_bytes = 60 * kMiB,
                    .cache_status = engStsNoErr,
                    .cache_line_bytes = 64}});

  // Another vendor: leaf 2 and leaf 4 are reserved there and read as zeros.
  cases.push_back(
      {RecordedProcessor(
           "2019 desktop, family 23 model 113, AVX2, another vendor",
           {
               {0, 0, {0x00000010, kOtherVendorEbx, kOtherVendorEcx, kOtherVendorEdx}},
               {1, 0, {0x00870F10, 0x00100800, 0x7ED8320B, 0x178BFBFF}},
               {7, 0, {0, 0x219C91A9, 0x00400004, 0}},
               {kExtendedBase, 0, {0x8000001F, kOtherVendorEbx, kOtherVendorEcx, kOtherVendorEdx}},
               {0x80000001, 0, {0x00870F10, 0x20000000, 0x75C237FF, 0x2FD3FBFF}},
               // L2 512 KiB, L3 32 MiB in all (this leaf) or 16 MiB per core complex (0x8000001D).
               {0x80000006, 0, {0x48006400, 0x68006400, 0x02006140, 0x01009140}},
               {0x8000001D, 0, {0x00004121, 0x01C0003F, 0x0000003F, 0}},
               {0x8000001D, 1, {0x00004122, 0x01C0003F, 0x0000003F, 0}},
               {0x8000001D, 2, {0x00004143, 0x01C0003F, 0x000003FF, 0x00000002}},
               {0x8000001D, 3, {0x0001C163, 0x03C0003F, 0x00003FFF, 0x00000001}},
           },
           0x7),
       {.features = 0xFEFFF,
        .level = 4,
        .in_force = 0xFEFFF,
        .selection_status = engStsNoErr,
        .reference_vendor = false,
        .cache_bytes = -1,
        .cache_status = engStsNotSupportedCpu,
        .cache_line_bytes = 0}});

  return cases;
}

}  // namespace

RecordedProcessor::RecordedProcessor(std::string name, std::vector<CpuidRecord> records,
                                     std::uint64_t xcr0)
    : name_(std::move(name)), records_(std::move(records)), xcr0_(xcr0) {}

const CpuidRecord* RecordedProcessor::Find(std::uint32_t leaf, std::uint32_t subleaf) const {
  for (const CpuidRecord& r : records_) {
    if (r.leaf == leaf && r.subleaf == subleaf) return &r;
  }
  return nullptr;
}

engine::CpuidRegisters RecordedProcessor::Query(std::uint32_t leaf, std::uint32_t subleaf) const {
  const bool extended = leaf >= kExtendedBase;
  const std::uint32_t range_base = extended ? kExtendedBase : 0;
  const CpuidRecord* top = Find(range_base, 0);
  if (leaf == range_base) {
    engine::CpuidRegisters regs = top ? top->regs : engine::CpuidRegisters{};
    const std::optional<std::uint32_t>& reported =
        extended ? reported_max_extended_ : reported_max_basic_;
    if (reported) regs.eax = *reported;
    return regs;
  }
  if (!top || leaf > top->regs.eax) return {};
  const CpuidRecord* record = Find(leaf, subleaf);
  return record ? record->regs : engine::CpuidRegisters{};
}

void RecordedProcessor::LimitReportedMaxLeaf(std::uint32_t max_leaf) {
  (max_leaf >= kExtendedBase ? reported_max_extended_ : reported_max_basic_) = max_leaf;
}

engine::CpuidRegisters& RecordedProcessor::Registers(std::uint32_t leaf, std::uint32_t subleaf) {
  for (CpuidRecord& r : records_) {
    if (r.leaf == leaf && r.subleaf == subleaf) return r.regs;
  }
  records_.push_back({leaf, subleaf, {}});
  return records_.back().regs;
}

const std::vector<RecordedCase>& RecordedProcessors() {
  static const std::vector<RecordedCase> cases = MakeRecordedProcessors();
  return cases;
}

RecordedProcessor Recorded(std::string_view name) {
  for (const RecordedCase& c : RecordedProcessors()) {
    if (c.cpu.name() == name) return c.cpu;
  }
  throw std::invalid_argument("no recorded processor named " + std::string(name));
}

}  // namespace zal::test
