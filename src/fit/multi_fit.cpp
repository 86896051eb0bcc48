// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/multi_fit.h"

#include <algorithm>
#include <cmath>

#include "fit/dataset_errors.h"
#include "fit/fit_variables.h"

namespace tolvik {
namespace {

constexpr double kSmallestPenalised = 1e-6;
constexpr double kNeighbourFloor = 1e-5;

std::int32_t CountActivePoints(const CState& state) {
  std::int64_t points = 0;
  for (const CDataset& dataset : state.datasets) {
    if (dataset.datasetactive != 0) points += dataset.dataset_qz.size;
  }
  return static_cast<std::int32_t>(std::min<std::int64_t>(points, INT32_MAX));
}

// The last variable for the table row after that of the given one; -1 where there is none.
std::int32_t FindNextRow(const CArray<CFitVariable>& variables, const CFitVariable& given) {
  const std::int64_t wanted = std::int64_t{given.fit_additional_id} + 1;
  std::int32_t found = -1;
  for (std::int32_t j = 0; j < variables.size; ++j) {
    if (variables[j].fit_id == given.fit_id && variables[j].fit_additional_id == wanted) found = j;
  }
  return found;
}

}  // namespace

CMultiFit::CMultiFit(const CState& given) : CChiSquareFit(given.evo_random), state(given) {
  fittemp = state.fittemp;
  fitdtemp = state.fitdtemp;
  fitvariables = state.fitvariables;
  residuals.Assign(CountActivePoints(state), 0.0);
}

double CMultiFit::CalcError(CArray<CFitVariable>& variables) {
  if (&variables != &state.fitvariables) state.fitvariables = variables;
  ApplyFitVariables(state);
  double total = SumDatasetErrors(state, solution, residuals);
  if (state.fitpenalty != 0) {
    total += DistancePenalty();
    total += NeighbourPenalty();
  }
  return total;
}

double CMultiFit::DistancePenalty() const {
  const CArray<CFitVariable>& v = state.fitvariables;
  double penalty = 0;
  for (std::int32_t i = 0; i < std::min(parameters.size, v.size); ++i) {
    if (!(std::abs(v[i].fit_value) >= kSmallestPenalised)) continue;
    const double distance = parameters[i] - v[i].fit_value;
    penalty += state.fitpenalty * (distance * distance);
  }
  return penalty;
}

double CMultiFit::NeighbourPenalty() const {
  const CArray<CFitVariable>& v = state.fitvariables;
  const std::int32_t n = std::min(parameters.size, v.size);
  double penalty = 0;
  for (std::int32_t i = 0; i < n - 1; ++i) {
    if (v[i].fit_id != FitKind::kBetaKK) continue;
    if (!(std::abs(v[i].fit_value) >= kSmallestPenalised)) continue;
    const std::int32_t j = FindNextRow(v, v[i]);
    if (j < 0 || j >= n) continue;
    const double a = parameters[j] - v[j].fit_value;
    const double b = parameters[i] - v[i].fit_value;
    const double slope = std::abs(v[j].fit_value - v[i].fit_value) + kNeighbourFloor;
    penalty += state.fitpenalty * ((a - b) * (a - b)) / slope;
  }
  return penalty;
}

void CMultiFit::Iterate() {
  switch (state.fitalgorithm) {
    case FitAlgorithm::kSimplex:
      return SimplexStep();
    case FitAlgorithm::kLevenbergMarquardt:
      return LevenbergStep();
    case FitAlgorithm::kAnnealing:
      return AnnealingStep();
    default:
      return;
  }
}

}  // namespace tolvik
