// SPDX-License-Identifier: GPL-2.0-or-later
// How fast are the lanes? For each kind of work and each instruction set of this processor the time for one
// angle and one interface, and how many times less that is than the textbook loop takes for the same work in
// the same run.
//
//   speed            a table
//   speed --tsv      one line for each row and set: name, set, ns, ratio, separated by tabs
//   speed --check    no times: whether all contestants of a row calculate the same, with the largest
//   differences
//
// Each figure is the shortest processor time of many runs, and the contestants take turns, so that a busy
// machine disturbs all of them alike. A row whose contestants disagree gets no figures but fails the run.
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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

double SecondsOf(const Work& work) {
  static std::vector<double> intensities;
  const double start = ProcessorSeconds();
  work(intensities);
  return ProcessorSeconds() - start;
}

struct Contestant {
  LaneSet set;  // kPlain: the measure
  double seconds = std::numeric_limits<double>::infinity();
};

std::vector<Contestant> ContestantsHere() {
  std::vector<Contestant> contestants = {{LaneSet::kPlain}};
  for (const LaneSet set : kAllLaneSets) {
    if (set != LaneSet::kPlain && IsSupported(set)) contestants.push_back({set});
  }
  return contestants;
}

const Work& WorkOf(const Row& row, LaneSet set) {
  return set == LaneSet::kPlain ? row.measure : row.work;
}

// Infinity where one of them has no number.
double LargestDifference(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size() || a.empty()) return std::numeric_limits<double>::infinity();
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double difference = std::abs(a[i] - b[i]) / std::abs(a[i]);
    if (!(difference <= largest)) largest = difference;
    if (std::isnan(largest)) return std::numeric_limits<double>::infinity();
  }
  return largest;
}

// Whether all sets calculate what the textbook loop does.
bool Agree(const Row& row, bool verbose) {
  bool agree = true;
  std::vector<double> expected, actual;
  for (const Contestant& contestant : ContestantsHere()) {
    ChooseLanes(contestant.set);
    if (contestant.set == LaneSet::kPlain) {
      row.measure(expected);
      continue;
    }
    row.work(actual);
    const double difference = LargestDifference(expected, actual);
    const bool same = difference <= row.tolerance;
    if (verbose || !same) {
      std::fprintf(verbose ? stdout : stderr, "%s\t%s\t%.1e%s\n", row.name, NameOf(contestant.set),
                   difference, same ? "" : "\tdiffers from the textbook loop");
    }
    agree = agree && same;
  }
  return agree;
}

std::vector<Contestant> Measure(const Row& row) {
  std::vector<Contestant> contestants = ContestantsHere();
  double spent = 0;
  for (int run = 0; run < kFewestRuns || spent < kSecondsPerRow; ++run) {
    for (Contestant& contestant : contestants) {
      ChooseLanes(contestant.set);
      const double seconds = SecondsOf(WorkOf(row, contestant.set));
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
    if (contestant.set == LaneSet::kPlain) continue;
    const double ns = 1e9 * contestant.seconds / row.steps;
    const double ratio = measure / contestant.seconds;
    if (tsv) {
      std::printf("%s\t%s\t%.3f\t%.2f\n", row.name, NameOf(contestant.set), ns, ratio);
    } else {
      std::printf(" %.2f ns, %.1f |", ns, ratio);
    }
  }
  if (!tsv) std::printf("\n");
  std::fflush(stdout);
}

void PrintHead() {
  std::string head = "| work | textbook, ns |", line = "|---|---|";
  for (const Contestant& contestant : ContestantsHere()) {
    if (contestant.set == LaneSet::kPlain) continue;
    head += std::string(" ") + NameOf(contestant.set) + " |";
    line += "---|";
  }
  std::printf("%s\n%s\n", head.c_str(), line.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  const bool tsv = option == "--tsv", check = option == "--check";
  if (argc > 2 || (argc == 2 && !tsv && !check)) {
    std::fprintf(stderr, "usage: %s [--tsv|--check]\n", argv[0]);
    return 1;
  }
  if (!tsv && !check) PrintHead();
  bool all_agree = true;
  for (const Row& row : AllRows()) {
    const bool agree = Agree(row, check);
    all_agree = all_agree && agree;
    if (!check && agree) Print(row, tsv);
  }
  return all_agree ? 0 : 1;
}
