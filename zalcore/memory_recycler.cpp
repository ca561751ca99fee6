#include "zalcore/memory_recycler.h"

#include <bit>
#include <cstdint>
#include <mutex>
#include <new>

namespace zalcore::allocator {
namespace {

constexpr std::size_t kSmallestClass = MemoryRecycler::kAlignment;
constexpr int kClassCount =
    std::countr_zero(MemoryRecycler::kLargestRecycled) - std::countr_zero(kSmallestClass) + 1;

// The class whose blocks hold `bytes`, for bytes <= kLargestRecycled.
int ClassIndex(std::size_t bytes) {
  if (bytes <= kSmallestClass) return 0;
  return std::bit_width(bytes - 1) - std::countr_zero(kSmallestClass);
}

std::size_t ClassBytes(int index) {
  return kSmallestClass << index;
}

void* SystemAllocate(std::size_t bytes) {
  return ::operator new (bytes, std::align_val_t{MemoryRecycler::kAlignment}, std::nothrow);
}

void SystemRelease(void* block) {
  ::operator delete (block, std::align_val_t{MemoryRecycler::kAlignment});
}

// A cached block holds the link to the next one in its first bytes.
struct FreeBlock {
  FreeBlock* next;
};

}  // namespace

struct MemoryRecycler::SizeClass {
  std::mutex mutex;
  FreeBlock* head = nullptr;
  int count = 0;
};

MemoryRecycler& MemoryRecycler::Instance() {
  static MemoryRecycler* const instance = new MemoryRecycler;
  return *instance;
}

MemoryRecycler::MemoryRecycler() : classes_(new SizeClass[kClassCount]) {}

void* MemoryRecycler::Allocate(std::size_t bytes) {
  // No object may span more than half the address space.
  if (bytes > static_cast<std::size_t>(PTRDIFF_MAX)) return nullptr;
  if (bytes > kLargestRecycled) return SystemAllocate(bytes);
  const int index = ClassIndex(bytes);
  SizeClass& size_class = classes_[index];
  {
    const std::lock_guard lock(size_class.mutex);
    if (FreeBlock* block = size_class.head) {
      size_class.head = block->next;
      --size_class.count;
      return block;
    }
  }
  return SystemAllocate(ClassBytes(index));
}

void MemoryRecycler::Recycle(void* block, std::size_t bytes) {
  if (!block) return;
  if (bytes > kLargestRecycled) {
    SystemRelease(block);
    return;
  }
  SizeClass& size_class = classes_[ClassIndex(bytes)];
  {
    const std::lock_guard lock(size_class.mutex);
    if (size_class.count < kBlocksKeptPerClass) {
      size_class.head = new (block) FreeBlock{size_class.head};
      ++size_class.count;
      return;
    }
  }
  SystemRelease(block);
}

void MemoryRecycler::ReleaseCached() {
  for (int i = 0; i < kClassCount; ++i) {
    FreeBlock* list;
    {
      const std::lock_guard lock(classes_[i].mutex);
      list = classes_[i].head;
      classes_[i].head = nullptr;
      classes_[i].count = 0;
    }
    while (list) {
      FreeBlock* next = list->next;
      SystemRelease(list);
      list = next;
    }
  }
}

std::size_t MemoryRecycler::CachedBlocks() const {
  std::size_t blocks = 0;
  for (int i = 0; i < kClassCount; ++i) {
    const std::lock_guard lock(classes_[i].mutex);
    blocks += static_cast<std::size_t>(classes_[i].count);
  }
  return blocks;
}

}  // namespace zalcore::allocator
