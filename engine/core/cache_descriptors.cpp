#include "engine/core/cache_size.h"

namespace zal::engine {
namespace {

struct CacheDescriptor {
  std::uint8_t code;
  int bytes;
  int line_bytes;
};

constexpr int kKiB = 1024;
constexpr int kMiB = 1024 * kKiB;

// The data and unified caches of the vendor's leaf-2 descriptor table, including the sectored L2
// entries (0x39-0x3E, 0x81) that older manual editions list for parts still answering leaf 2.
// Instruction caches, trace caches, TLBs, prefetch hints and the 0x40/0xFE/0xFF markers name no
// data cache and are left out. 0x49 is an L3 on one family and an L2 elsewhere: 4 MiB either way.
constexpr CacheDescriptor kCacheDescriptors[] = {
    {0x0A, 8 * kKiB, 32},   {0x0C, 16 * kKiB, 32},   {0x0D, 16 * kKiB, 64},  {0x0E, 24 * kKiB, 64},
    {0x1D, 128 * kKiB, 64}, {0x21, 256 * kKiB, 64},  {0x22, 512 * kKiB, 64}, {0x23, 1 * kMiB, 64},
    {0x24, 1 * kMiB, 64},   {0x25, 2 * kMiB, 64},    {0x29, 4 * kMiB, 64},   {0x2C, 32 * kKiB, 64},
    {0x39, 128 * kKiB, 64}, {0x3A, 192 * kKiB, 64},  {0x3B, 128 * kKiB, 64}, {0x3C, 256 * kKiB, 64},
    {0x3D, 384 * kKiB, 64}, {0x3E, 512 * kKiB, 64},  {0x41, 128 * kKiB, 32}, {0x42, 256 * kKiB, 32},
    {0x43, 512 * kKiB, 32}, {0x44, 1 * kMiB, 32},    {0x45, 2 * kMiB, 32},   {0x46, 4 * kMiB, 64},
    {0x47, 8 * kMiB, 64},   {0x48, 3 * kMiB, 64},    {0x49, 4 * kMiB, 64},   {0x4A, 6 * kMiB, 64},
    {0x4B, 8 * kMiB, 64},   {0x4C, 12 * kMiB, 64},   {0x4D, 16 * kMiB, 64},  {0x4E, 6 * kMiB, 64},
    {0x60, 16 * kKiB, 64},  {0x66, 8 * kKiB, 64},    {0x67, 16 * kKiB, 64},  {0x68, 32 * kKiB, 64},
    {0x78, 1 * kMiB, 64},   {0x79, 128 * kKiB, 64},  {0x7A, 256 * kKiB, 64}, {0x7B, 512 * kKiB, 64},
    {0x7C, 1 * kMiB, 64},   {0x7D, 2 * kMiB, 64},    {0x7F, 512 * kKiB, 64}, {0x80, 512 * kKiB, 64},
    {0x81, 128 * kKiB, 32}, {0x82, 256 * kKiB, 32},  {0x83, 512 * kKiB, 32}, {0x84, 1 * kMiB, 32},
    {0x85, 2 * kMiB, 32},   {0x86, 512 * kKiB, 64},  {0x87, 1 * kMiB, 64},   {0xD0, 512 * kKiB, 64},
    {0xD1, 1 * kMiB, 64},   {0xD2, 2 * kMiB, 64},    {0xD6, 1 * kMiB, 64},   {0xD7, 2 * kMiB, 64},
    {0xD8, 4 * kMiB, 64},   {0xDC, 1536 * kKiB, 64}, {0xDD, 3 * kMiB, 64},   {0xDE, 6 * kMiB, 64},
    {0xE2, 2 * kMiB, 64},   {0xE3, 4 * kMiB, 64},    {0xE4, 8 * kMiB, 64},   {0xEA, 12 * kMiB, 64},
    {0xEB, 18 * kMiB, 64},  {0xEC, 24 * kMiB, 64},
};

constexpr const CacheDescriptor* FindCacheDescriptor(std::uint8_t code) {
  for (const CacheDescriptor& d : kCacheDescriptors) {
    if (d.code == code) return &d;
  }
  return nullptr;
}

constexpr std::uint32_t kNoDescriptors = 0x80000000u;

}  // namespace

CacheSize MaxCacheFromDescriptors(const CpuidRegisters& leaf2) {
  CacheSize largest{-1, engStsNoErr, 0};
  const std::uint32_t registers[] = {leaf2.eax, leaf2.ebx, leaf2.ecx, leaf2.edx};
  for (int r = 0; r < 4; ++r) {
    if (registers[r] & kNoDescriptors) continue;
    // EAX's low byte is the repeat count; the other registers carry four descriptors each.
    for (int byte = r == 0 ? 1 : 0; byte < 4; ++byte) {
      const auto code = static_cast<std::uint8_t>(registers[r] >> (8 * byte));
      const CacheDescriptor* d = FindCacheDescriptor(code);
      if (d && d->bytes > largest.bytes) largest = {d->bytes, engStsNoErr, d->line_bytes};
    }
  }
  return largest;
}

}  // namespace zal::engine
