// Aligned allocation. Blocks are 64-byte aligned (the widest vector), with the heap's own pointer
// stored in the 8 bytes below the returned address; nothing else is stored.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "engine/core/primitive_declarations.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr std::int64_t kMaxBlockBytes = 0x7FFFFFFF;
constexpr int kAlignment = 64;
constexpr int kOverhead = kAlignment + 8;  // alignment slack and the heap pointer

void* AllocateElements(int count, int element_bytes) {
  if (count <= 0) return nullptr;
  const std::int64_t bytes = static_cast<std::int64_t>(count) * element_bytes;
  if (bytes > kMaxBlockBytes) return nullptr;
  return Malloc(static_cast<int>(bytes));
}

}  // namespace

void* Malloc(int bytes) {
  if (bytes <= 0 || bytes > kMaxBlockBytes - kOverhead) return nullptr;
  void* block = std::malloc(static_cast<std::size_t>(bytes) + kOverhead);
  if (!block) return nullptr;
  const std::uintptr_t heap = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t aligned =
      (heap + kOverhead - 1) & ~static_cast<std::uintptr_t>(kAlignment - 1);
  std::memcpy(reinterpret_cast<void*>(aligned - sizeof(void*)), &block, sizeof(void*));
  return reinterpret_cast<void*>(aligned);
}

void* MallocU8(int count) {
  return AllocateElements(count, 1);
}
void* MallocS16(int count) {
  return AllocateElements(count, 2);
}
void* MallocF32(int count) {
  return AllocateElements(count, 4);
}
void* MallocF64(int count) {
  return AllocateElements(count, 8);
}
void* MallocC32(int count) {
  return AllocateElements(count, 8);
}
void* MallocC64(int count) {
  return AllocateElements(count, 16);
}

void Free(void* aligned) {
  if (!aligned) return;
  void* block = nullptr;
  std::memcpy(&block, static_cast<unsigned char*>(aligned) - sizeof(void*), sizeof(void*));
  std::free(block);
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_MEMORY_PRIMITIVES(ZAL_CHECK_SHAPE)
