// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/threads/worker_pool.h"

#include <mpfr.h>

#include <algorithm>
#include <exception>
#include <list>
#include <mutex>

#include "engine/threads/processors.h"

namespace tolvik::engine {
namespace {

/// The lock of all counters of the process.
class CounterLock {
 public:
  CounterLock() { pthread_spin_init(&lock_, PTHREAD_PROCESS_SHARED); }
  void lock() { pthread_spin_lock(&lock_); }
  void unlock() { pthread_spin_unlock(&lock_); }

 private:
  pthread_spinlock_t lock_;
};

// Gives long work a lower priority. Policies without priorities refuse this, and the thread runs like any
// other.
void LowerPriority(pthread_attr_t& attributes) {
  sched_param parameters;
  if (pthread_attr_getschedparam(&attributes, &parameters) != 0) return;
  parameters.sched_priority -= 2;
  pthread_attr_setschedparam(&attributes, &parameters);
}

void* RunBody(void* body) noexcept {
  (*static_cast<WorkerBody*>(body))();
  mpfr_free_cache2(MPFR_FREE_LOCAL_CACHE);
  return nullptr;
}

bool StartThread(ThreadStarter start, pthread_t& handle, WorkerBody& body) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  LowerPriority(attributes);
  const bool started = start(&handle, &attributes, RunBody, &body) == 0;
  pthread_attr_destroy(&attributes);
  return started;
}

/// The threads of one call, joined in the destructor, after exceptions too.
class Threads {
 public:
  Threads() = default;
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() {
    for (Thread& thread : threads_) pthread_join(thread.handle, nullptr);
  }

  /// Moves from body only when its thread has started.
  bool Start(WorkerBody& body, ThreadStarter start) {
    Thread& thread = threads_.emplace_back();
    thread.body.swap(body);
    if (StartThread(start, thread.handle, thread.body)) return true;
    thread.body.swap(body);
    threads_.pop_back();
    return false;
  }

 private:
  struct Thread {
    pthread_t handle{};
    WorkerBody body;
  };
  std::list<Thread> threads_;  // a body must not move while its thread runs
};

/// The exception of the lowest task that failed.
class FirstFailure {
 public:
  void Note(std::int32_t task, std::exception_ptr failure) {
    const std::lock_guard guard(mutex_);
    if (failure_ != nullptr && task_ < task) return;
    task_ = task;
    failure_ = std::move(failure);
  }
  void Throw() {
    if (failure_ != nullptr) std::rethrow_exception(failure_);
  }

 private:
  std::mutex mutex_;
  std::int32_t task_ = 0;
  std::exception_ptr failure_;
};

}  // namespace

std::int32_t TakeIndices(std::int32_t& next, std::int32_t count) {
  static CounterLock lock;
  const std::lock_guard guard(lock);
  const std::int32_t first = next;
  next += std::min(count, INT32_MAX - next);
  return first;
}

bool RunWorkers(std::int32_t count, const std::function<WorkerBody(std::int32_t)>& make,
                ThreadStarter start) noexcept {
  WorkerBody body;
  Threads threads;
  std::int32_t started = 0;
  try {
    for (; started < count; ++started) {
      body = make(started);
      if (!threads.Start(body, start)) break;
    }
  } catch (...) {  // out of memory for one more worker: the running ones do the work
  }
  if (started > 0) return true;
  if (body == nullptr) return false;
  body();
  return true;
}

std::int32_t CountWorkers(std::int32_t tasks, std::int32_t workers) {
  if (workers <= 0) {
    SystemInfo info;
    GetSystemInfo(info);
    workers = info.processors;
  }
  return std::clamp(tasks, 1, workers);
}

void RunTasks(std::int32_t tasks, const std::function<void(std::int32_t, std::int32_t)>& body,
              std::int32_t workers) {
  std::int32_t next = 0;
  FirstFailure failure;
  const auto run = [&](std::int32_t worker) {
    for (std::int32_t task = TakeIndices(next); task < tasks; task = TakeIndices(next)) {
      try {
        body(task, worker);
      } catch (...) {
        failure.Note(task, std::current_exception());
      }
    }
  };
  const std::int32_t count = CountWorkers(tasks, workers);
  const auto make = [&](std::int32_t worker) { return WorkerBody([&run, worker] { run(worker); }); };
  if (count == 1 || !RunWorkers(count, make)) run(0);
  failure.Throw();
}

}  // namespace tolvik::engine
