// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/escan_parallel.h"

#include <mpfr.h>

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

#include "engine/curve/energy_run.h"
#include "engine/curve/escan.h"
#include "engine/curve/processors.h"
#include "engine/curve/with_number_type.h"

namespace tolvik::engine {
namespace {

/// The one lock of all scans of the process. It guards the counters of the next point, and is held for an
/// increment only.
class ScanLock {
 public:
  ScanLock() { pthread_spin_init(&lock_, PTHREAD_PROCESS_SHARED); }
  void Lock() { pthread_spin_lock(&lock_); }
  void Unlock() { pthread_spin_unlock(&lock_); }

 private:
  pthread_spinlock_t lock_;
};

// Points that a thread takes at once. In a long scan it is a cache line of results: threads that write next
// to each other, and a lock taken every few microseconds, cost a twentieth of the speed.
constexpr std::int32_t kPointsPerTurn = 8;
constexpr std::int32_t kLongScan = 1024;

std::int32_t PointsPerTurn(std::int32_t points) {
  return points < kLongScan ? 1 : kPointsPerTurn;
}

std::int32_t TakePoints(std::int32_t& next, std::int32_t count) {
  static ScanLock lock;
  lock.Lock();
  const std::int32_t first = next;
  next += std::min(count, INT32_MAX - next);
  lock.Unlock();
  return first;
}

void AppendElement(CArray<double>& to, const CArray<double>& from, std::int32_t i) {
  if (i < from.size) to.Append(from[i]);
}

void CalcPoint(CSolution& solution, std::int32_t i, CState& state) {
  CSolution point;
  AppendElement(point.dataset_qz, solution.dataset_qz, i);
  AppendElement(point.dataset_A, solution.dataset_A, i);
  AppendElement(point.dataset_R0, solution.dataset_R0, i);
  AppendElement(point.dataset_Rp, solution.dataset_Rp, i);
  AppendElement(point.dataset_Rm, solution.dataset_Rm, i);
  AppendElement(point.dataset_eng, solution.dataset_eng, i);
  WithNumberType(state.precision, [&]<class T>() { return CalcEScanCurve<T>(point, state); });
  if (i < solution.dataset_R0.size) solution.dataset_R0[i] = point.dataset_R0[0];
}

/// What a thread works on where points share energies.
struct RunContext : CEScanContext {
  const EnergyRuns* runs = nullptr;
};

// Enough points to fill the lanes, and few enough that no processor waits long for the last run.
std::int32_t LongestRun(std::int32_t points, std::int32_t processors) {
  constexpr std::int32_t kShortest = 16, kLongest = 512, kRunsPerProcessor = 8;
  return std::clamp(points / kRunsPerProcessor / processors, kShortest, kLongest);
}

void CalcRun(CSolution& solution, std::span<const std::int32_t> indices, CState& state) {
  const auto count = static_cast<std::int32_t>(indices.size());
  CSolution points;
  points.dataset_qz.Assign(count, 0.0);
  points.dataset_eng.Assign(count, solution.dataset_eng[indices[0]]);
  points.dataset_R0.Assign(count, 0.0);
  for (std::int32_t k = 0; const std::int32_t i : indices) {
    points.dataset_qz[k] = solution.dataset_qz[i];
    points.dataset_R0[k++] = solution.dataset_R0[i];
  }
  CalcRunOfPoints(points, state);
  for (std::int32_t k = 0; const std::int32_t i : indices) solution.dataset_R0[i] = points.dataset_R0[k++];
}

/// Body of a thread that takes runs of points.
void* EnergyRunThread(void* context) {
  auto& scan = *static_cast<RunContext*>(context);
  const auto count = static_cast<std::int32_t>(scan.runs->runs.size());
  for (;;) {
    const std::int32_t next = TakePoints(*scan.nextindex, 1);
    if (next >= count) break;
    const EnergyRun run = scan.runs->runs[static_cast<std::size_t>(next)];
    try {
      CalcRun(*scan.solution, {scan.runs->points.data() + run.begin, scan.runs->points.data() + run.end},
              scan.state);
    } catch (...) {  // want of memory: the points keep their values, the process goes on
    }
  }
  mpfr_free_cache2(MPFR_FREE_LOCAL_CACHE);
  return nullptr;
}

void* RunScan(RunContext& context) {
  return context.runs != nullptr ? EnergyRunThread(&context) : EScanThread(&context);
}

// Scans leave the foreground to others. Policies without priorities refuse this, and the thread runs as any.
void LowerPriority(pthread_attr_t& attributes) {
  sched_param parameters;
  if (pthread_attr_getschedparam(&attributes, &parameters) != 0) return;
  parameters.sched_priority -= 2;
  pthread_attr_setschedparam(&attributes, &parameters);
}

bool StartThread(ThreadStarter start, pthread_t& handle, RunContext& context) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  LowerPriority(attributes);
  const auto body = [](void* each) { return RunScan(*static_cast<RunContext*>(each)); };
  const bool started = start(&handle, &attributes, body, &context) == 0;
  pthread_attr_destroy(&attributes);
  return started;
}

/// The threads of one scan, joined at the end whatever happens.
class ScanThreads {
 public:
  ScanThreads(std::size_t count, ThreadStarter start) : start_(start), contexts_(count) {
    handles_.reserve(count);
  }
  ~ScanThreads() {
    for (const pthread_t handle : handles_) pthread_join(handle, nullptr);
  }
  ScanThreads(const ScanThreads&) = delete;
  ScanThreads& operator=(const ScanThreads&) = delete;

  /// False when no more threads are to be had.
  bool Start(const RunContext& shared, const CState& state) {
    auto context = std::make_unique<RunContext>(shared);
    context->state = state;
    pthread_t handle;
    if (!StartThread(start_, handle, *context)) return false;
    contexts_[handles_.size()] = std::move(context);
    handles_.push_back(handle);
    return true;
  }
  bool IsEmpty() const { return handles_.empty(); }

 private:
  ThreadStarter start_;
  std::vector<std::unique_ptr<RunContext>> contexts_;
  std::vector<pthread_t> handles_;
};

}  // namespace

void* EScanThread(void* context) {
  auto& scan = *static_cast<CEScanContext*>(context);
  const std::int32_t turn = PointsPerTurn(scan.pointcount);
  for (;;) {
    const std::int32_t first = TakePoints(*scan.nextindex, turn);
    if (first >= scan.pointcount) break;
    const std::int32_t end = first + std::min(turn, scan.pointcount - first);
    for (std::int32_t i = first; i < end; ++i) {
      try {
        CalcPoint(*scan.solution, i, scan.state);
      } catch (...) {  // want of memory: the point keeps its value, the process goes on
      }
    }
  }
  mpfr_free_cache2(MPFR_FREE_LOCAL_CACHE);  // constants that MPFR keeps for each thread
  return nullptr;
}

void ScanInThreads(CSolution& solution, const CState& state, ThreadStarter start) noexcept {
  std::int32_t next = 0;
  EnergyRuns runs;
  RunContext shared;
  shared.pointcount = solution.dataset_qz.size;
  shared.nextindex = &next;
  shared.solution = &solution;
  try {
    SystemInfo info;
    GetSystemInfo(info);
    if (MayReorderPoints(state) &&
        CollectEnergyRuns(solution, LongestRun(shared.pointcount, info.processors), runs)) {
      shared.runs = &runs;
    }
    ScanThreads threads(static_cast<std::size_t>(info.processors), start);
    for (std::int32_t t = 0; t < info.processors; ++t) {
      if (!threads.Start(shared, state)) break;
    }
    if (!threads.IsEmpty()) return;
  } catch (...) {  // want of memory for one more copy: the threads there are did the work
    if (next > 0 || shared.pointcount == 0) return;
  }
  try {
    shared.state = state;
    RunScan(shared);
  } catch (...) {  // not even one copy: all points keep their values
  }
}

}  // namespace tolvik::engine
