// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/calc_commands.h"

#include <cstdio>

#include "app/report.h"
#include "script/host.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

// numberofpoints values from 0 to qzmax. One point divides 0 by 0, which the curve carries on.
CSolution RegularGrid(const CState& state) {
  CSolution solution;
  const double step = 1.0 / (static_cast<double>(state.numberofpoints) - 1);
  solution.dataset_qz.Assign(state.numberofpoints, 0.0);
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) solution.dataset_qz[i] = state.qzmax * step * i;
  return solution;
}

}  // namespace

CSolution MeasuredGrid(const CState& state) {
  if (state.activedatasetindex < 0 || state.activedatasetindex >= state.datasets.size) return {};
  CSolution solution = state.datasets[state.activedatasetindex];
  for (double& qz : solution.dataset_qz) qz += solution.datasetqztranslation;
  return solution;
}

void CalcReflectivityCommand(CState& state) {
  ScriptSession(state).Run();
  CSolution solution = state.usemeasurementqz ? MeasuredGrid(state) : RegularGrid(state);
  const std::int32_t code = CalcReflectivityDLL(&solution, &state);
  if (code != kSuccess) {
    ReportFailure(code);
    return;
  }
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    std::printf("%e %e\n", solution.dataset_qz[i], solution.dataset_R0[i]);
  }
}

}  // namespace tolvik
