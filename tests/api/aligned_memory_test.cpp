#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "zalaccelerate/utility.h"

namespace {

namespace utility = zalaccelerate::utility;

// Each typed allocator seen through one signature, with the matching Free.
struct Allocator {
  const char* name;
  std::size_t element_bytes;
  void* (*allocate)(unsigned int count);
  void (*release)(void* block);
};

template <class T, T* (*kAllocate)(unsigned int)>
Allocator Typed(const char* name) {
  return {name, sizeof(T), [](unsigned int count) -> void* { return kAllocate(count); },
          [](void* block) { utility::Free(static_cast<T*>(block)); }};
}

const Allocator kAllocators[] = {
    Typed<unsigned char, utility::Malloc_Byte>("Byte"),
    Typed<short, utility::Malloc_Int16>("Int16"),
    Typed<float, utility::Malloc_Float>("Float"),
    Typed<double, utility::Malloc_Double>("Double"),
    Typed<std::complex<float>, utility::Malloc_Complex_Float>("Complex_Float"),
    Typed<std::complex<double>, utility::Malloc_Complex_Double>("Complex_Double"),
};

constexpr std::int64_t kLargestBlock = 2147483575;  // 2^31 - 1 - 72 bytes of overhead

TEST(AlignedMemory, RefusesEmptyAndNegativeCounts) {
  for (const Allocator& a : kAllocators) {
    SCOPED_TRACE(a.name);
    for (unsigned int count : {0u, 0x80000000u, 0x80000001u, UINT_MAX}) {
      EXPECT_EQ(a.allocate(count), nullptr) << "count " << count;
    }
  }
}

TEST(AlignedMemory, RefusesBlocksBeyondTheLargest) {
  for (const Allocator& a : kAllocators) {
    SCOPED_TRACE(a.name);
    // The first count whose block no longer fits, and the first that overflows 2^31 bytes.
    const auto too_many = static_cast<unsigned int>(kLargestBlock / a.element_bytes + 1);
    const auto overflowing = static_cast<unsigned int>(0x80000000ull / a.element_bytes);
    EXPECT_EQ(a.allocate(too_many), nullptr);
    EXPECT_EQ(a.allocate(overflowing), nullptr);
  }
  EXPECT_EQ(utility::Malloc_Complex_Double(134217728), nullptr);
  EXPECT_EQ(utility::Malloc_Complex_Double(134217727), nullptr);
}

TEST(AlignedMemory, GivesTheLargestBlock) {
  unsigned char* block = utility::Malloc_Byte(static_cast<unsigned int>(kLargestBlock));
  ASSERT_NE(block, nullptr);
  block[0] = 1;
  block[kLargestBlock - 1] = 2;
  utility::Free(block);
}

TEST(AlignedMemory, BlocksAre64ByteAlignedAndWholeWritable) {
  for (const Allocator& a : kAllocators) {
    SCOPED_TRACE(a.name);
    for (unsigned int count : {1u, 3u, 64u, 1000u, 65537u}) {
      void* block = a.allocate(count);
      ASSERT_NE(block, nullptr) << "count " << count;
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
      std::memset(block, 0xA5, count * a.element_bytes);
      a.release(block);
    }
  }
}

TEST(AlignedMemory, FreeIgnoresNull) {
  for (const Allocator& a : kAllocators) a.release(nullptr);
}

TEST(AlignedMemory, ManyBlocksStayDistinct) {
  constexpr int kBlocks = 256;
  float* blocks[kBlocks];
  for (int i = 0; i < kBlocks; ++i) {
    blocks[i] = utility::Malloc_Float(static_cast<unsigned int>(1 + i % 17));
    ASSERT_NE(blocks[i], nullptr);
    blocks[i][0] = static_cast<float>(i);
  }
  for (int i = 0; i < kBlocks; ++i) {
    EXPECT_EQ(blocks[i][0], static_cast<float>(i));
    utility::Free(blocks[i]);
  }
}

}  // namespace
