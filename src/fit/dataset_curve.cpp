// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/dataset_curve.h"

#include <algorithm>

#include "engine/curve/calculations.h"
#include "model/dataset.h"
#include "optics/energy.h"
#include "optics/rays.h"
#include "tolvik/return_code.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

void FillColumn(const CSolution& solution, CArray<double>& column, double value) {
  const std::int32_t points = solution.dataset_qz.size;
  if (column.size == points) {
    std::fill(column.begin(), column.end(), value);
  } else {
    column.Assign(points, value);
  }
}

void FillBothRays(CSolution& solution, double value, double asymmetry) {
  FillColumn(solution, solution.dataset_R0, value);
  FillColumn(solution, solution.dataset_Rp, value);
  FillColumn(solution, solution.dataset_Rm, value);
  FillColumn(solution, solution.dataset_A, asymmetry);
}

std::int32_t CalcReflectivityColumn(CState& state, CSolution& solution, const CurveSettings& settings) {
  FillColumn(solution, solution.dataset_R0, settings.untouched);
  FillColumn(solution, solution.dataset_Rp, settings.untouched);
  return engine::CalcReflectivity(solution, state, settings.companion);
}

std::int32_t CalcEnergyScan(CState& state, CSolution& solution, const CurveSettings& settings) {
  FillColumn(solution, solution.dataset_R0, settings.untouched);
  if (settings.one_thread || settings.companion != nullptr) {
    return engine::CalcEScan(solution, state, settings.companion);
  }
  return CalcEScanParallelDLL(&solution, &state);
}

}  // namespace

void TakeConditions(CState& state, std::int32_t index) {
  const CDataset& dataset = state.datasets[index];
  CopyRays(dataset, state);
  state.resolution = dataset.datasetresolution;
  state.lambda = LambdaFromEnergy(dataset.datasetenergy);
  state.activedatasetindex = index;
}

std::int32_t CalcDatasetCurve(CState& state, CSolution& solution, const CDataset& measured,
                              const CurveSettings& settings) {
  solution = measured;
  TranslateGrid(solution);
  const bool marked = settings.untouched != 1.0;
  switch (state.fitasymmetry) {
    case FitAsymmetry::kReflectivity:
      return CalcReflectivityColumn(state, solution, settings);
    case FitAsymmetry::kAsymmetry:
    case FitAsymmetry::kBothRays:
      FillBothRays(solution, settings.untouched, settings.untouched);
      return engine::CalcAsymmetry(solution, state, settings.companion);
    case FitAsymmetry::kEnergyScan:
      return CalcEnergyScan(state, solution, settings);
    case FitAsymmetry::kBothRaysOverEnergy:
    case FitAsymmetry::kAsymmetryOverEnergy:
      FillBothRays(solution, settings.untouched, marked ? settings.untouched : 0.0);
      return engine::CalcDicEScan(solution, state, settings.companion);
  }
  return ReturnCode::kSuccess;
}

}  // namespace tolvik
