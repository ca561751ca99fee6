#include "zalcore/thread_pool.h"

#include <algorithm>
#include <utility>

namespace zalcore::threads {

ThreadPool::ThreadPool(unsigned workers) {
  workers = std::max(workers, 1u);
  workers_.reserve(workers);
  for (unsigned i = 0; i < workers; ++i) workers_.emplace_back([this] { Work(); });
}

ThreadPool::~ThreadPool() {
  Shutdown();
}

bool ThreadPool::Post(std::function<void()> task) {
  if (!task) return false;
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) return false;
    queue_.push_back(std::move(task));
  }
  wake_.notify_one();
  return true;
}

void ThreadPool::Shutdown() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& worker : workers_) {
    if (worker.joinable()) worker.join();
  }
}

void ThreadPool::Work() {
  for (;;) {
    std::function<void()> task;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      // Stopping workers still drain the queue.
      if (queue_.empty()) return;
      task = std::move(queue_.front());
      queue_.pop_front();
    }
    task();
  }
}

ThreadPool& GetCPUBoundExecutor() {
#ifdef _WIN32
  // Never destroyed: when a DLL's static objects are destroyed at exit, the process has already
  // ended every other thread, and joining the workers would wait forever.
  static ThreadPool& pool = *new ThreadPool(std::max(std::thread::hardware_concurrency(), 2u));
#else
  static ThreadPool pool(std::max(std::thread::hardware_concurrency(), 2u));
#endif
  return pool;
}

}  // namespace zalcore::threads
