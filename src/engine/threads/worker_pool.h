// SPDX-License-Identifier: GPL-2.0-or-later
// Work on several processors: energy scans, the population of an evolution, repeated fits.
//
// Threads run at a priority 2 below that of the caller, where the scheduling policy has priorities, and free
// the caches that MPFR keeps for each thread when they end.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <functional>

namespace tolvik::engine {

/// Calls body(task, worker) once for every task from 0 to tasks - 1 and returns when all have ended. Tasks
/// are taken in ascending order by min(tasks, workers) threads; workers 0 means one thread per processor. A
/// single worker is the caller's own thread.
///
/// worker: from 0 to the number of threads - 1; two calls with the same worker never overlap, so each worker
/// may own a state. A task that throws does not stop the others; at the end the exception of the lowest such
/// task is thrown. Where threads or memory are short there are fewer workers, down to the caller's thread.
void RunTasks(std::int32_t tasks, const std::function<void(std::int32_t task, std::int32_t worker)>& body,
              std::int32_t workers = 0);

/// The number of workers that RunTasks uses at most.
std::int32_t CountWorkers(std::int32_t tasks, std::int32_t workers = 0);

/// Takes count consecutive indices from a counter that several threads share, and returns the first. The
/// counter stops at INT32_MAX. One lock serves all counters of the process; it is held for an addition only.
std::int32_t TakeIndices(std::int32_t& next, std::int32_t count = 1);

/// Starts a thread; as pthread_create.
using ThreadStarter = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

/// The loop of one worker; must not throw.
using WorkerBody = std::function<void()>;

/// Runs make(0)(), make(1)(), ... in up to count threads and waits for all. make is called in the caller's
/// thread and gives each body its own data. When a thread cannot be started, or make throws, no more are
/// tried; if no thread runs, the first body runs in the caller's. False when not even make(0) returned a
/// body.
bool RunWorkers(std::int32_t count, const std::function<WorkerBody(std::int32_t worker)>& make,
                ThreadStarter start = pthread_create) noexcept;

}  // namespace tolvik::engine
