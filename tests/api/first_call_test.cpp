// A fresh process with natural dispatch: the index is unset until the first call of a primitive,
// and many threads making their first calls at once all reach the same level.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace {

int g_index_at_start = -2;

TEST(FirstCall, ThreadsRacingThroughTheFirstCallAgree) {
  ASSERT_EQ(g_index_at_start, -1);
  constexpr int kThreads = 16;
  std::atomic<int> waiting{kThreads};
  std::vector<const EngLibraryVersion*> versions(kThreads);
  std::vector<char> aligned(kThreads);  // not vector<bool>: threads write neighbouring bits
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      waiting.fetch_sub(1);
      while (waiting.load() > 0) {
      }
      float* block = zalaccelerate::utility::Malloc_Float(16);
      aligned[t] = block && reinterpret_cast<std::uintptr_t>(block) % 64 == 0;
      zalaccelerate::utility::Free(block);
      versions[t] = engLibraryVersion();
    });
  }
  for (std::thread& thread : threads) thread.join();

  const int level = engGetDispatchIndex();
  ASSERT_GE(level, 0);
  ASSERT_LE(level, 5);
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_TRUE(aligned[t]) << "thread " << t;
    EXPECT_EQ(versions[t], versions[0]) << "thread " << t;
  }
  // The selection the first calls made is the one this processor's features give.
  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  int expected = -1;
  engSelectCpuFeatures(features, &expected);
  EXPECT_EQ(level, expected);
  EXPECT_EQ(engLibraryVersion(), versions[0]);
}

}  // namespace

int main(int argc, char** argv) {
  g_index_at_start = engGetDispatchIndex();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
