// A standard allocator over the process-wide MemoryRecycler: std::vector<T, STLAllocator<T>>
// takes its storage from recycled 64-byte-aligned blocks. Stateless, so every instance can free
// what any other allocated.
#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <type_traits>

#include "zalcore/memory_recycler.h"

namespace zalcore {

template <class T>
class STLAllocator {
 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using propagate_on_container_move_assignment = std::true_type;
  using is_always_equal = std::true_type;

  template <class U>
  struct rebind {
    using other = STLAllocator<U>;
  };

  constexpr STLAllocator() noexcept = default;
  template <class U>
  constexpr STLAllocator(const STLAllocator<U>&) noexcept {}  // NOLINT: converting, as required

  // Throws std::bad_array_new_length when n elements do not fit in size_t bytes, std::bad_alloc
  // when the memory is not there.
  [[nodiscard]] T* allocate(std::size_t n) {
    static_assert(alignof(T) <= allocator::MemoryRecycler::kAlignment,
                  "the recycler aligns blocks to 64 bytes");
    if (n > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_array_new_length();
    void* block = allocator::MemoryRecycler::Instance().Allocate(n * sizeof(T));
    if (!block) throw std::bad_alloc();
    return static_cast<T*>(block);
  }

  void deallocate(T* p, std::size_t n) noexcept {
    allocator::MemoryRecycler::Instance().Recycle(p, n * sizeof(T));
  }

  template <class U>
  friend constexpr bool operator==(const STLAllocator&, const STLAllocator<U>&) noexcept {
    return true;
  }
};

}  // namespace zalcore
