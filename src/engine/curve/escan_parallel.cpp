// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/escan_parallel.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <span>

#include "engine/curve/energy_run.h"
#include "engine/curve/escan.h"
#include "engine/curve/with_number_type.h"
#include "engine/threads/processors.h"

namespace tolvik::engine {
namespace {

// Points that a thread takes at once. In a long scan it is a cache line of results: threads that write next
// to each other, and a lock taken every few microseconds, cost a twentieth of the speed.
constexpr std::int32_t kPointsPerTurn = 8;
constexpr std::int32_t kLongScan = 1024;

std::int32_t PointsPerTurn(std::int32_t points) {
  return points < kLongScan ? 1 : kPointsPerTurn;
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

/// The data of a thread where points share energies.
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

/// Takes runs of points until none is left.
void CalcRuns(RunContext& scan) {
  const auto count = static_cast<std::int32_t>(scan.runs->runs.size());
  for (;;) {
    const std::int32_t next = TakeIndices(*scan.nextindex);
    if (next >= count) break;
    const EnergyRun run = scan.runs->runs[static_cast<std::size_t>(next)];
    try {
      CalcRun(*scan.solution, {scan.runs->points.data() + run.begin, scan.runs->points.data() + run.end},
              scan.state);
    } catch (...) {  // out of memory: the points keep their values, the process continues
    }
  }
}

/// Collects the runs of a scan, where it has some.
const EnergyRuns* FindRuns(const CSolution& solution, const CState& state, std::int32_t processors,
                           EnergyRuns& runs) {
  if (!MayReorderPoints(state)) return nullptr;
  const std::int32_t longest = LongestRun(solution.dataset_qz.size, processors);
  return CollectEnergyRuns(solution, longest, runs) ? &runs : nullptr;
}

}  // namespace

void* EScanThread(void* context) {
  auto& scan = *static_cast<CEScanContext*>(context);
  const std::int32_t turn = PointsPerTurn(scan.pointcount);
  for (;;) {
    const std::int32_t first = TakeIndices(*scan.nextindex, turn);
    if (first >= scan.pointcount) break;
    const std::int32_t end = first + std::min(turn, scan.pointcount - first);
    for (std::int32_t i = first; i < end; ++i) {
      try {
        CalcPoint(*scan.solution, i, scan.state);
      } catch (...) {  // out of memory: the point keeps its value, the process continues
      }
    }
  }
  return nullptr;
}

void ScanInThreads(CSolution& solution, const CState& state, ThreadStarter start) noexcept {
  std::int32_t next = 0;
  EnergyRuns runs;
  const EnergyRuns* found = nullptr;
  SystemInfo info;
  GetSystemInfo(info);
  try {
    found = FindRuns(solution, state, info.processors, runs);
  } catch (...) {  // out of memory: point by point then
  }
  const auto make = [&](std::int32_t) -> WorkerBody {
    const auto context = std::make_shared<RunContext>();
    context->pointcount = solution.dataset_qz.size;
    context->nextindex = &next;
    context->solution = &solution;
    context->state = state;
    context->runs = found;
    return [context] { context->runs != nullptr ? CalcRuns(*context) : void(EScanThread(context.get())); };
  };
  RunWorkers(info.processors, std::ref(make),
             start);  // without memory for one copy all points keep their values
}

}  // namespace tolvik::engine
