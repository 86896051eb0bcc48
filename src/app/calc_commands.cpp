// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/calc_commands.h"

#include <cstdio>

#include "app/memory_guard.h"
#include "app/report.h"
#include "model/dataset.h"
#include "model/find.h"
#include "script/host.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr std::int64_t kArraysOfACurve = 5;  // qz, R0, Rp, Rm, asymmetry

// numberofpoints values from 0 to qzmax. One point divides 0 by 0; the NaN travels into the curve.
template <class Formula>
CSolution RegularGrid(const CState& state, Formula qz) {
  CSolution solution;
  CheckCurveFits(state.numberofpoints, kArraysOfACurve);
  solution.dataset_qz.Assign(state.numberofpoints, 0.0);
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    solution.dataset_qz[i] = qz(i, static_cast<double>(state.numberofpoints) - 1);
  }
  return solution;
}

// The values stay: a point that is not calculated prints its measured one.
CSolution MeasuredGrid(const CState& state) {
  CSolution solution = ActiveMeasurement(state);
  TranslateGrid(solution);
  return solution;
}

}  // namespace

CSolution ActiveMeasurement(const CState& state) {
  const CDataset* active = Find(state.datasets, state.activedatasetindex);
  return active != nullptr ? *active : CSolution();
}

void CalcReflectivityCommand(CState& state) {
  ScriptSession(state).Run();
  const auto qz = [&](std::int32_t i, double last) { return state.qzmax * (1.0 / last) * i; };
  CSolution solution = state.usemeasurementqz ? MeasuredGrid(state) : RegularGrid(state, qz);
  const std::int32_t code = CalcReflectivityDLL(&solution, &state);
  if (code != ReturnCode::kSuccess) {
    ReportFailure(code);
    return;
  }
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    std::printf("%e %e\n", solution.dataset_qz[i], solution.dataset_R0[i]);
  }
}

void CalcDichroicCommand(CState& state) {
  // not quite the grid of -refl: the last bits differ
  const auto qz = [&](std::int32_t i, double last) { return i / last * state.qzmax; };
  CSolution solution = state.usemeasurementqz ? MeasuredGrid(state) : RegularGrid(state, qz);
  const std::int32_t code = CalcAsymmetryDLL(&solution, &state);
  if (code != ReturnCode::kSuccess) {
    ReportFailure(code);
    return;
  }
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    std::printf("%e %e %e\n", solution.dataset_qz[i], solution.dataset_Rp[i], solution.dataset_Rm[i]);
  }
}

}  // namespace tolvik
