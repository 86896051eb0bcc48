// SPDX-License-Identifier: GPL-2.0-or-later
// An energy scan on all processors.
#pragma once

#include <cstdint>

#include "engine/threads/worker_pool.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// The data of one thread of a scan.
struct CEScanContext {
  std::int32_t pointcount = 0;        ///< points of the scan
  std::int32_t* nextindex = nullptr;  ///< next point that any thread takes; by TakeIndices
  CSolution* solution = nullptr;      ///< the whole scan; a thread writes dataset_R0 of its own points only
  CState state;                       ///< a copy of its own
};

/// Body of a thread: takes points in order, in a long scan several at a time, until none is left, calculates
/// each by CalcEScanDLL as a scan of one point and writes its dataset_R0 back, for any return code. Takes a
/// CEScanContext and returns null. Throws nothing; a point that fails by an exception keeps its value.
void* EScanThread(void* context);

/// Calculates a scan by EScanThread in one thread for each processor, with a copy of the state each, and
/// waits for all. Where energies repeat and the order of points does not matter (energy_run.h), the threads
/// take runs of points of one energy instead. When threads or memory are short there are fewer, down to the
/// caller's own. Never throws.
void ScanInThreads(CSolution& solution, const CState& state, ThreadStarter start = pthread_create) noexcept;

}  // namespace tolvik::engine
