#include <zalcore/memory_recycler.h>
#include <zalcore/stl_allocator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <list>
#include <map>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using zalcore::STLAllocator;
using zalcore::allocator::MemoryRecycler;

bool Aligned(const void* p) {
  return reinterpret_cast<std::uintptr_t>(p) % MemoryRecycler::kAlignment == 0;
}

class MemoryRecyclerTest : public ::testing::Test {
 protected:
  void SetUp() override { recycler_.ReleaseCached(); }
  void TearDown() override { recycler_.ReleaseCached(); }
  MemoryRecycler& recycler_ = MemoryRecycler::Instance();
};

TEST_F(MemoryRecyclerTest, BlocksAreAlignedAndWritableToTheirFullSize) {
  for (std::size_t bytes :
       {std::size_t{0}, std::size_t{1}, std::size_t{63}, std::size_t{64}, std::size_t{65},
        std::size_t{4096}, std::size_t{100000}, MemoryRecycler::kLargestRecycled,
        MemoryRecycler::kLargestRecycled + 1}) {
    void* block = recycler_.Allocate(bytes);
    ASSERT_NE(block, nullptr) << bytes;
    EXPECT_TRUE(Aligned(block)) << bytes;
    std::memset(block, 0xA5, bytes);
    recycler_.Recycle(block, bytes);
  }
}

// Sizes that round to the same class share blocks; other classes and oversized requests do not.
TEST_F(MemoryRecyclerTest, RecycledBlockServesTheNextRequestOfItsClass) {
  struct Reuse {
    std::size_t recycled;
    std::size_t requested;
    bool same_block;
  };
  const Reuse cases[] = {
      {100, 100, true},
      {100, 128, true},
      {65, 127, true},
      {1, 64, true},
      {0, 1, true},
      {128, 129, false},
      {4096, 2048, false},
      {MemoryRecycler::kLargestRecycled + 1, MemoryRecycler::kLargestRecycled + 1, false},
  };
  for (const Reuse& c : cases) {
    void* first = recycler_.Allocate(c.recycled);
    recycler_.Recycle(first, c.recycled);
    void* second = recycler_.Allocate(c.requested);
    if (c.same_block) {
      EXPECT_EQ(second, first) << c.recycled << " then " << c.requested;
    } else {
      EXPECT_EQ(recycler_.CachedBlocks(), c.recycled > MemoryRecycler::kLargestRecycled ? 0u : 1u)
          << c.recycled << " then " << c.requested;
    }
    recycler_.Recycle(second, c.requested);
    recycler_.ReleaseCached();
  }
}

TEST_F(MemoryRecyclerTest, EachClassKeepsABoundedNumberOfBlocks) {
  std::vector<void*> blocks;
  for (int i = 0; i < 2 * MemoryRecycler::kBlocksKeptPerClass; ++i) {
    blocks.push_back(recycler_.Allocate(256));
  }
  for (void* block : blocks) recycler_.Recycle(block, 256);
  EXPECT_EQ(recycler_.CachedBlocks(),
            static_cast<std::size_t>(MemoryRecycler::kBlocksKeptPerClass));
  recycler_.Recycle(nullptr, 256);
  EXPECT_EQ(recycler_.CachedBlocks(),
            static_cast<std::size_t>(MemoryRecycler::kBlocksKeptPerClass));
  recycler_.ReleaseCached();
  EXPECT_EQ(recycler_.CachedBlocks(), 0u);
}

TEST_F(MemoryRecyclerTest, AllocatorServesStandardContainers) {
  std::vector<double, STLAllocator<double>> samples(1000, 0.5);
  EXPECT_TRUE(Aligned(samples.data()));
  samples.resize(5000, 2.0);
  samples.push_back(3.0);
  EXPECT_EQ(samples.front(), 0.5);
  EXPECT_EQ(samples[4999], 2.0);
  EXPECT_EQ(samples.back(), 3.0);
  std::vector<float, STLAllocator<float>> copy(samples.begin(), samples.end());
  EXPECT_EQ(copy.size(), samples.size());

  // Node containers rebind the allocator to their node types.
  std::list<int, STLAllocator<int>> list{1, 2, 3};
  std::map<int, int, std::less<>, STLAllocator<std::pair<const int, int>>> map{{1, 2}, {3, 4}};
  EXPECT_EQ(list.back(), 3);
  EXPECT_EQ(map.at(3), 4);
}

TEST_F(MemoryRecyclerTest, AllocatorsOfAnyTypeCompareEqualAndFreeEachOthersBlocks) {
  STLAllocator<float> floats;
  STLAllocator<double> doubles(floats);
  using Rebound = std::allocator_traits<STLAllocator<double>>::rebind_alloc<short>;
  static_assert(std::is_same_v<Rebound, STLAllocator<short>>);
  EXPECT_TRUE(floats == doubles);
  EXPECT_FALSE(floats != doubles);
  double* block = doubles.allocate(10);
  STLAllocator<double>(floats).deallocate(block, 10);
}

TEST_F(MemoryRecyclerTest, AllocatorThrowsWhenTheSizeCannotBeMet) {
  STLAllocator<double> doubles;
  EXPECT_THROW(static_cast<void>(doubles.allocate(std::numeric_limits<std::size_t>::max() / 4)),
               std::bad_array_new_length);
  EXPECT_THROW(static_cast<void>(doubles.allocate(std::numeric_limits<std::size_t>::max() / 8)),
               std::bad_alloc);
  using Vector = std::vector<double, STLAllocator<double>>;
  EXPECT_THROW(Vector(Vector().max_size() + 1), std::length_error);
}

// Many threads take and return blocks of a few classes at once, each filling its blocks with its
// own pattern and checking it before handing them back: a block given to two threads at a time,
// or a free list corrupted by a race, shows as a foreign pattern (or as a data race under the
// thread sanitizer).
TEST(RecyclerThreads, ConcurrentAllocationsNeverShareABlock) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 2000;
  constexpr std::size_t kSizes[] = {48, 200, 1000, 5000};
  std::vector<int> failures(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures, &kSizes] {
      MemoryRecycler& recycler = MemoryRecycler::Instance();
      const auto pattern = static_cast<unsigned char>(0x10 + t);
      for (int round = 0; round < kRounds; ++round) {
        const std::size_t bytes = kSizes[(round + t) % std::size(kSizes)];
        std::vector<unsigned char, STLAllocator<unsigned char>> held(bytes, pattern);
        auto* block = static_cast<unsigned char*>(recycler.Allocate(bytes));
        std::memset(block, pattern, bytes);
        std::this_thread::yield();
        for (std::size_t i = 0; i < bytes; ++i) {
          failures[t] += (block[i] != pattern) + (held[i] != pattern);
        }
        recycler.Recycle(block, bytes);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}

}  // namespace
