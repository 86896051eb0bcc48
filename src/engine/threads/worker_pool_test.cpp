// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/threads/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/threads/processors.h"

namespace tolvik::engine {
namespace {

TEST(Processors, AreAtLeastOneAndCanBeForced) {
  SystemInfo info;
  info.processors = 0;
  GetSystemInfo(info);
  EXPECT_GE(info.processors, 1);
  ForceProcessorCount(17);
  GetSystemInfo(info);
  EXPECT_EQ(info.processors, 17);
  ForceProcessorCount(0);
}

class WorkerPool : public ::testing::Test {
 protected:
  ~WorkerPool() override { ForceProcessorCount(0); }
};

TEST_F(WorkerPool, EveryTaskRunsOnce) {
  for (const int workers : {1, 2, 7}) {
    for (const int tasks : {0, 1, 5, 1000}) {
      std::vector<std::atomic<int>> calls(static_cast<std::size_t>(tasks));
      RunTasks(
          tasks, [&](std::int32_t task, std::int32_t) { ++calls[static_cast<std::size_t>(task)]; }, workers);
      for (const auto& count : calls) EXPECT_EQ(count, 1);
    }
  }
}

// Counts without a lock: an overlap of two calls with one worker loses counts here, and the thread sanitizer
// reports it.
TEST_F(WorkerPool, AWorkerIsOneThreadAtATime) {
  constexpr int kWorkers = 4, kTasks = 20000;
  std::vector<int> counts(kWorkers);
  RunTasks(
      kTasks, [&](std::int32_t, std::int32_t worker) { ++counts.at(static_cast<std::size_t>(worker)); },
      kWorkers);
  int sum = 0;
  for (const int count : counts) sum += count;
  EXPECT_EQ(sum, kTasks);
}

TEST_F(WorkerPool, OneWorkerTakesTasksInOrderInTheCallersThread) {
  const pthread_t caller = pthread_self();
  std::vector<std::int32_t> order;
  RunTasks(
      5,
      [&](std::int32_t task, std::int32_t worker) {
        EXPECT_TRUE(pthread_equal(caller, pthread_self()));
        EXPECT_EQ(worker, 0);
        order.push_back(task);
      },
      1);
  EXPECT_EQ(order, (std::vector<std::int32_t>{0, 1, 2, 3, 4}));
}

TEST_F(WorkerPool, TheFirstFailureIsThrownWhenAllOthersHaveRun) {
  for (const int workers : {1, 3}) {
    std::atomic<int> calls = 0;
    const auto body = [&](std::int32_t task, std::int32_t) {
      ++calls;
      if (task == 3 || task == 7) throw std::runtime_error(std::to_string(task));
    };
    try {
      RunTasks(20, body, workers);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& failure) {
      EXPECT_STREQ(failure.what(), "3");
    }
    EXPECT_EQ(calls, 20);
  }
}

TEST_F(WorkerPool, ThereAreNoMoreWorkersThanTasksOrProcessors) {
  ForceProcessorCount(4);
  EXPECT_EQ(CountWorkers(100), 4);
  EXPECT_EQ(CountWorkers(3), 3);
  EXPECT_EQ(CountWorkers(100, 6), 6) << "as many as asked for";
  EXPECT_EQ(CountWorkers(0), 1);
  EXPECT_EQ(CountWorkers(-5, -2), 1);
}

TEST_F(WorkerPool, ACounterStopsAtItsEnd) {
  std::int32_t next = INT32_MAX - 5;
  EXPECT_EQ(TakeIndices(next, 3), INT32_MAX - 5);
  EXPECT_EQ(TakeIndices(next, 8), INT32_MAX - 2);
  EXPECT_EQ(TakeIndices(next, 8), INT32_MAX);
  EXPECT_EQ(next, INT32_MAX);
}

int threads_left = 0;

int StartSomeThreads(pthread_t* handle, const pthread_attr_t* attributes, void* (*body)(void*),
                     void* context) {
  return threads_left-- > 0 ? pthread_create(handle, attributes, body, context) : EAGAIN;
}

TEST_F(WorkerPool, AsManyBodiesRunAsThreadsStartAndAtLeastOne) {
  for (const int available : {0, 1, 2, 4}) {
    threads_left = available;
    std::atomic<int> ran = 0;
    EXPECT_TRUE(RunWorkers(
        4, [&](std::int32_t) { return [&] { ++ran; }; }, StartSomeThreads));
    EXPECT_EQ(ran, std::max(available, 1)) << available;
  }
}

TEST_F(WorkerPool, MemoryForSomeWorkersIsEnough) {
  for (const int possible : {0, 1, 3}) {
    std::atomic<int> ran = 0;
    const auto make = [&](std::int32_t worker) -> WorkerBody {
      if (worker >= possible) throw std::bad_alloc();
      return [&] { ++ran; };
    };
    EXPECT_EQ(RunWorkers(5, make), possible > 0);
    EXPECT_EQ(ran, possible);
  }
}

}  // namespace
}  // namespace tolvik::engine
