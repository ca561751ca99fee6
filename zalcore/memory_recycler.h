// A process-wide cache of aligned memory blocks, sorted by size class. Temporary buffers that come
// and go with every call (a conversion scratch vector, a filter's delay-line copy) are taken from
// and handed back to it, so that steady use reaches the system allocator only while the cache
// warms up. Thread-safe; each size class is guarded by its own short critical section, so it is
// meant for set-up and scratch paths, never for a real-time inner loop.
#pragma once

#include <cstddef>

namespace zalcore::allocator {

class MemoryRecycler {
 public:
  // Every block is aligned to this many bytes, enough for any vector register.
  static constexpr std::size_t kAlignment = 64;
  // Requests up to this size are rounded up to a power of two and recycled; larger ones go to
  // the system allocator and back on every call.
  static constexpr std::size_t kLargestRecycled = std::size_t{1} << 24;
  // Blocks each size class keeps for reuse; further recycled blocks are released at once.
  static constexpr int kBlocksKeptPerClass = 16;

  // The one instance of the process. It is never destroyed, so that recycling from a static
  // object's destructor stays valid; the blocks it holds at exit go back with the process.
  static MemoryRecycler& Instance();

  // A block of at least `bytes` bytes (one class size for 0), aligned to kAlignment; null if the
  // system allocator fails or bytes exceeds PTRDIFF_MAX.
  void* Allocate(std::size_t bytes);

  // Takes back a block that Allocate returned for the same `bytes`. Null is ignored.
  void Recycle(void* block, std::size_t bytes);

  // Releases every cached block to the system allocator.
  void ReleaseCached();

  // Blocks currently cached for reuse, over all classes.
  std::size_t CachedBlocks() const;

  MemoryRecycler(const MemoryRecycler&) = delete;
  MemoryRecycler& operator=(const MemoryRecycler&) = delete;

 private:
  MemoryRecycler();
  ~MemoryRecycler() = delete;
  struct SizeClass;
  SizeClass* classes_;
};

}  // namespace zalcore::allocator
