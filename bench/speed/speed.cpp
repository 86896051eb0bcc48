// SPDX-License-Identifier: GPL-2.0-or-later
// How fast are the lanes? For each kind of work and each instruction set of this processor the time for one
// angle and one interface, and how many times less that is than the textbook loop takes for the same work in
// the same run.
//
//   speed          a table
//   speed --tsv    one line for each row and set: name, set, ns, ratio, separated by tabs
//
// Each figure is the shortest processor time of many runs, and the contestants take turns, so that a busy
// machine disturbs all of them alike.
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "bench/speed/rows.h"
#include "engine/lanes/kernels.h"

namespace {

using namespace tolvik::bench;
using tolvik::engine::lanes::ChooseLanes;
using tolvik::engine::lanes::IsSupported;
using tolvik::engine::lanes::kAllLaneSets;
using tolvik::engine::lanes::LaneSet;
using tolvik::engine::lanes::NameOf;

constexpr double kSecondsPerRow = 2.0;
constexpr int kFewestRuns = 7;

double ProcessorSeconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double SecondsOf(const std::function<void()>& work) {
  const double start = ProcessorSeconds();
  work();
  return ProcessorSeconds() - start;
}

struct Contestant {
  LaneSet set;  // kPlain: the measure
  double seconds = std::numeric_limits<double>::infinity();
};

std::vector<Contestant> Measure(const Row& row) {
  std::vector<Contestant> contestants = {{LaneSet::kPlain}};
  for (const LaneSet set : kAllLaneSets) {
    if (set != LaneSet::kPlain && IsSupported(set)) contestants.push_back({set});
  }
  double spent = 0;
  for (int run = 0; run < kFewestRuns || spent < kSecondsPerRow; ++run) {
    for (Contestant& contestant : contestants) {
      ChooseLanes(contestant.set);
      const double seconds = SecondsOf(contestant.set == LaneSet::kPlain ? row.measure : row.work);
      contestant.seconds = std::min(contestant.seconds, seconds);
      spent += seconds;
    }
  }
  return contestants;
}

void Print(const Row& row, bool tsv) {
  const std::vector<Contestant> contestants = Measure(row);
  const double measure = contestants.front().seconds;
  if (!tsv) std::printf("| %s | %.1f |", row.title, 1e9 * measure / row.steps);
  for (const Contestant& contestant : contestants) {
    const double ns = 1e9 * contestant.seconds / row.steps;
    const double ratio = measure / contestant.seconds;
    if (tsv) {
      const char* set = contestant.set == LaneSet::kPlain ? "textbook" : NameOf(contestant.set);
      std::printf("%s\t%s\t%.3f\t%.2f\n", row.name, set, ns, ratio);
    } else if (contestant.set != LaneSet::kPlain) {
      std::printf(" %.2f ns, %.1f |", ns, ratio);
    }
  }
  if (!tsv) std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const bool tsv = argc == 2 && std::strcmp(argv[1], "--tsv") == 0;
  if (argc > 1 && !tsv) {
    std::fprintf(stderr, "usage: %s [--tsv]\n", argv[0]);
    return 1;
  }
  if (!tsv) {
    std::string head = "| work | textbook, ns |", line = "|---|---|";
    for (const LaneSet set : kAllLaneSets) {
      if (set == LaneSet::kPlain || !IsSupported(set)) continue;
      head += std::string(" ") + NameOf(set) + " |";
      line += "---|";
    }
    std::printf("%s\n%s\n", head.c_str(), line.c_str());
  }
  for (const Row& row : AllRows()) Print(row, tsv);
  return 0;
}
