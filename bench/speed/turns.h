// SPDX-License-Identifier: GPL-2.0-or-later
// Comparable times: each is the shortest of many runs, and the contestants take turns, so that a busy machine
// disturbs all of them alike.
#pragma once

#include <time.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "engine/lanes/kernels.h"

namespace tolvik::bench {

inline double SecondsOfClock(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The shortest time of each contestant, s, over at least seven rounds and as many more as fit into two
/// seconds. Each turn is a few runs: in the first the caches hold the data of another contestant, and the
/// processor needs some microseconds to change the width of its registers. clock: processor time of all
/// threads, or CLOCK_MONOTONIC.
inline std::vector<double> ShortestTimes(const std::vector<std::function<void()>>& contestants,
                                         clockid_t clock = CLOCK_PROCESS_CPUTIME_ID) {
  constexpr double kSeconds = 2.0;
  constexpr int kFewestRounds = 7;
  constexpr int kRunsOfTurn = 4;
  std::vector<double> shortest(contestants.size(), std::numeric_limits<double>::infinity());
  double spent = 0;
  for (int round = 0; round < kFewestRounds || spent < kSeconds; ++round) {
    for (std::size_t run = 0; run < kRunsOfTurn * contestants.size(); ++run) {
      const std::size_t i = run / kRunsOfTurn;
      const double start = SecondsOfClock(clock);
      contestants[i]();
      const double seconds = SecondsOfClock(clock) - start;
      shortest[i] = std::min(shortest[i], seconds);
      spent += seconds;
    }
  }
  return shortest;
}

/// The instruction sets of this processor.
inline std::vector<engine::lanes::LaneSet> SetsHere() {
  std::vector<engine::lanes::LaneSet> sets;
  for (const auto set : engine::lanes::kAllLaneSets) {
    if (set != engine::lanes::LaneSet::kPlain && engine::lanes::IsSupported(set)) sets.push_back(set);
  }
  return sets;
}

}  // namespace tolvik::bench
