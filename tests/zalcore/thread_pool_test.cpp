#include <zalcore/thread_pool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using zalcore::threads::ThreadPool;

TEST(ThreadPoolThreads, RunsEveryTaskPostedFromManyThreads) {
  std::atomic<int> ran{0};
  {
    ThreadPool pool(3);
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t) {
      posters.emplace_back([&] {
        for (int i = 0; i < 250; ++i) EXPECT_TRUE(pool.Post([&] { ++ran; }));
      });
    }
    for (std::thread& poster : posters) poster.join();
  }
  EXPECT_EQ(ran.load(), 1000);
}

TEST(ThreadPoolThreads, ShutdownDrainsTheQueueThenRefuses) {
  std::atomic<int> ran{0};
  ThreadPool pool(1);
  std::atomic<bool> release{false};
  // The one worker is held while more tasks queue up behind it.
  ASSERT_TRUE(pool.Post([&] {
    while (!release) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ++ran;
  }));
  for (int i = 0; i < 10; ++i) ASSERT_TRUE(pool.Post([&] { ++ran; }));
  std::thread releaser([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    release = true;
  });
  pool.Shutdown();
  releaser.join();
  EXPECT_EQ(ran.load(), 11);
  EXPECT_FALSE(pool.Post([&] { ++ran; }));
  EXPECT_FALSE(ThreadPool(0).Post({}));
  pool.Shutdown();
  EXPECT_EQ(ran.load(), 11);
}

TEST(ThreadPoolThreads, CpuBoundExecutorIsOneSharedPool) {
  EXPECT_EQ(&zalcore::threads::GetCPUBoundExecutor(), &zalcore::threads::GetCPUBoundExecutor());
  std::atomic<bool> ran{false};
  ASSERT_TRUE(zalcore::threads::GetCPUBoundExecutor().Post([&] { ran = true; }));
  while (!ran) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace
