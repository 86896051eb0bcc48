// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/fitmap_command.h"

#include <cstdio>
#include <limits>

#include "app/fit_commands.h"
#include "app/long_run.h"
#include "app/startup.h"
#include "fit/fit_variables.h"
#include "fit/multi_fit.h"
#include "model/find.h"
#include "optics/energy.h"
#include "optics/material.h"
#include "optics/rays.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

void ReportVariables(const CArray<CFitVariable>& variables) {
  for (const CFitVariable& variable : variables) {
    const int index = variable.fit_additional_id;
    switch (variable.fit_id) {
      case FitKind::kThickness:
        std::fprintf(stderr, "Fit thickness %i\n", index);
        break;
      case FitKind::kDelta:
        std::fprintf(stderr, "Fit delta %i\n", index);
        break;
      case FitKind::kBeta:
        std::fprintf(stderr, "Fit beta %i\n", index);
        break;
      case FitKind::kSigma:
        std::fprintf(stderr, "Fit sigma %i\n", index);
        break;
      case FitKind::kMultiplicator:
        std::fprintf(stderr, "Fit measurement multiplicator %i\n", index);
        break;
      default:
        std::fprintf(stderr, "Fit %i %i\n", variable.fit_id, index);
    }
  }
}

// The state as it measures one curve of the map.
void SelectCurve(CState& state, const CDataset& curve, const CArray<CFitVariable>& start) {
  CopyRays(curve, state);
  state.resolution = curve.datasetresolution;
  state.lambda = LambdaFromEnergy(curve.datasetenergy);
  state.datasets.Clear();
  state.datasets.Append(curve);
  state.activedatasetindex = 0;
  state.fitvariables = start;
}

// The line is made for three layers and two variables. Missing values are NaN: a zero would look like a
// result.
template <class Record>
double Field(const CArray<Record>& records, std::int32_t index, double Record::*field) {
  const double* found = Find(records, index, field);
  return found != nullptr ? *found : std::numeric_limits<double>::quiet_NaN();
}

void PrintResult(const CState& state, const CDataset& curve, double error) {
  const auto layer = [&](std::int32_t index, double CLayer::*field) {
    return Field(state.layers, index, field);
  };
  std::printf("%e %e %e %e %e %e ", curve.datasetenergy, curve.datasetmultiplicator,
              layer(1, &CLayer::layer_d), layer(0, &CLayer::layer_sigma), layer(1, &CLayer::layer_sigma),
              layer(2, &CLayer::layer_sigma));
  for (std::int32_t i = 0; i < 3; ++i)
    std::printf("%e %e ", layer(i, &CLayer::layer_delta), layer(i, &CLayer::layer_beta));
  std::printf("%e %i %e %e\n", error, curve.dataset_qz.size,
              Field(state.fitvariables, 0, &CFitVariable::fit_sigma),
              Field(state.fitvariables, 1, &CFitVariable::fit_sigma));
}

void FitCurve(CMapFile& map, CDataset& curve, const CArray<CFitVariable>& start) {
  CState& state = *map.state;
  curve.datasetactive = 1;
  SelectCurve(state, curve, start);
  PrepareLayerConstantsOrExit(state);
  ReadFitVariables(state, true);
  std::fprintf(stderr, "Fit e=%lf p=%s\n", curve.datasetenergy, GetRayName(FirstRay(curve)).c_str());
  RunFitSteps(state);

  CMultiFit fit(state);
  CArray<CFitVariable> none;  // leaves the model where the fit ended
  const double error = fit.CalcError(none);
  CDataset result = fit.solution;
  result.datasetenergy = curve.datasetenergy;
  CopyRays(curve, result);
  curve.datasetmultiplicator = state.datasets[0].datasetmultiplicator;
  result.datasetmultiplicator = curve.datasetmultiplicator;
  map.fitdatasets.Append(std::move(result));
  PrintResult(state, curve, error);
  curve.datasetactive = 0;
  std::fflush(stdout);
  std::fflush(stderr);
}

}  // namespace

void FitMapCommand(CMapFile& map) {
  BeginLongRun();
  CState& state = *map.state;
  if (!LoadOpticalTables(state)) {
    std::fputs("You need .db-files or .e-files for all layers\n", stderr);
    return;
  }
  state.datasets = map.constenergy;
  std::fputs("save state\n", stderr);
  SaveState(state, "test.all");
  ReportVariables(state.fitvariables);
  const CArray<CFitVariable> start = state.fitvariables;
  for (CDataset& curve : map.constenergy) FitCurve(map, curve, start);
  for (CDataset& result : map.fitdatasets) {
    result.datasetmultiplicator = 1.0;
    map.constenergy.Append(result);
  }
}

}  // namespace tolvik
