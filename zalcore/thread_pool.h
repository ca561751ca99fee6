// The host framework's executors: a small pool of worker threads that runs posted tasks in the
// order they were posted (each on whichever worker is free).
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace zalcore::threads {

class ThreadPool {
 public:
  // At least one worker, whatever `workers` says.
  explicit ThreadPool(unsigned workers);
  // Shuts down.
  ~ThreadPool();

  // Queues a task; false (and the task is dropped) once shutdown has begun or for an empty task.
  // A task that throws ends the process, as an exception leaving any thread does.
  bool Post(std::function<void()> task);

  // Refuses new tasks, lets the workers run every task already queued, and joins them. Later
  // calls do nothing. Must not be called from one of the pool's own tasks.
  void Shutdown();

  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

 private:
  void Work();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> queue_;
  bool stopping_ = false;
  std::vector<std::thread> workers_;
};

// The process's pool for CPU-bound work: one worker per hardware thread (at least two), started
// at the first call. It shuts down, draining its queue, when static objects are destroyed at exit;
// on Windows, where the process has ended the workers by then, it is left as it is, and a host
// that needs the queue drained calls Shutdown() before it exits.
ThreadPool& GetCPUBoundExecutor();

}  // namespace zalcore::threads
