// SPDX-License-Identifier: GPL-2.0-or-later
// How fast are the lanes? Prints for each kind of work and each instruction set of this processor the time
// for one angle and one interface, and the ratio of the time of the textbook loop for the same work in the
// same run to it.
//
//   speed            a table
//   speed --tsv      one line for each row and set: name, set, ns, ratio, separated by tabs
//   speed --check    no times: checks that all contestants of a row calculate the same; prints the largest
//                    differences
//
// A row whose contestants disagree gets no figures, and the run fails.
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "bench/speed/gradient_rows.h"
#include "bench/speed/rows.h"
#include "bench/speed/turns.h"

namespace {

using namespace tolvik::bench;
using tolvik::engine::lanes::ChooseLanes;
using tolvik::engine::lanes::LaneSet;
using tolvik::engine::lanes::NameOf;

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
  row.measure(expected);
  for (const LaneSet set : SetsHere()) {
    ChooseLanes(set);
    row.work(actual);
    const double difference = LargestDifference(expected, actual);
    const bool same = difference <= row.tolerance;
    if (verbose || !same) {
      std::fprintf(verbose ? stdout : stderr, "%s\t%s\t%.1e%s\n", row.name, NameOf(set), difference,
                   same ? "" : "\tdiffers from the textbook loop");
    }
    agree = agree && same;
  }
  return agree;
}

void Print(const Row& row, bool tsv) {
  const std::vector<LaneSet> sets = SetsHere();
  std::vector<double> intensities;
  std::vector<std::function<void()>> contestants = {[&] { row.measure(intensities); }};
  for (const LaneSet set : sets) {
    contestants.push_back([&, set] {
      ChooseLanes(set);
      row.work(intensities);
    });
  }
  const std::vector<double> times = ShortestTimes(contestants);
  if (!tsv) std::printf("| %s | %.1f |", row.title, 1e9 * times[0] / row.steps);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const double ns = 1e9 * times[i + 1] / row.steps;
    const double ratio = times[0] / times[i + 1];
    if (tsv) {
      std::printf("%s\t%s\t%.3f\t%.2f\n", row.name, NameOf(sets[i]), ns, ratio);
    } else {
      std::printf(" %.2f ns, %.1f |", ns, ratio);
    }
  }
  if (!tsv) std::printf("\n");
  std::fflush(stdout);
}

// ns of value and Jacobian, and their multiple of the value.
void Print(const GradientRow& row, bool tsv) {
  if (!tsv) std::printf("| %s |", row.title);
  for (const LaneSet set : SetsHere()) {
    ChooseLanes(set);
    const std::vector<double> times = ShortestTimes({row.value, row.gradient});
    const double ns = 1e9 * times[1] / row.steps, ratio = times[1] / times[0];
    if (tsv) {
      std::printf("%s\t%s\t%.3f\t%.2f\n", row.name, NameOf(set), ns, ratio);
    } else {
      std::printf(" %.2f ns, %.2f |", ns, ratio);
    }
  }
  if (!tsv) std::printf("\n");
  std::fflush(stdout);
}

void PrintHead(std::string head, std::string line) {
  for (const LaneSet set : SetsHere()) {
    head += std::string(" ") + NameOf(set) + " |";
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
  if (!tsv && !check) PrintHead("| work | textbook, ns |", "|---|---|");
  bool all_agree = true;
  for (const Row& row : AllRows()) {
    const bool agree = Agree(row, check);
    all_agree = all_agree && agree;
    if (!check && agree) Print(row, tsv);
  }
  if (!check) {
    if (!tsv) std::printf("\n");
    if (!tsv) PrintHead("| value and Jacobian, as a multiple of the value |", "|---|");
    for (const GradientRow& row : GradientRows()) Print(row, tsv);
  }
  return all_agree ? 0 : 1;
}
