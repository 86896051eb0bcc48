// SPDX-License-Identifier: GPL-2.0-or-later
// The population on all processors, and the faster ranking.
#include <utility>

#include "engine/threads/worker_pool.h"
#include "fit/evolution.h"

namespace tolvik {
namespace {

void SortPart(CArray<std::int32_t>& ranking, const CArray<double>& errors, std::int32_t first,
              std::int32_t last) {
  if (first >= last) return;
  const double pivot = errors[ranking[first + (last - first) / 2]];
  std::int32_t i = first;
  std::int32_t j = last;
  while (i <= j) {
    while (i <= last && errors[ranking[i]] < pivot) ++i;
    while (j >= first && pivot < errors[ranking[j]]) --j;
    if (i <= j) std::swap(ranking[i++], ranking[j--]);
  }
  SortPart(ranking, errors, first, j);
  SortPart(ranking, errors, i, last);
}

}  // namespace

void CEvolution::EvaluatePopulationParallel() {
  errors.Assign(population.size, 0.0);
  // Every individual has a state of its own, so the errors need no lock.
  engine::RunTasks(population.size, [this](std::int32_t task, std::int32_t) {
    errors[task] = CalcIndividualError(population[task]);
  });
}

void CEvolution::SortRankingQuick() {
  SortPart(ranking, errors, 0, ranking.size - 1);
}

}  // namespace tolvik
