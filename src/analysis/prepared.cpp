// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/prepared.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>

#include "analysis/script_fault.h"
#include "fit/dataset_curve.h"
#include "fit/fit_variables.h"
#include "optics/energy.h"
#include "optics/layer_constants.h"
#include "optics/material.h"
#include "optics/rays.h"
#include "tolvik/analysis/errors.h"
#include "tolvik/analysis/parameters.h"

namespace tolvik::analysis {
namespace {

std::int32_t CurveKindOf(MeasurementKind kind) {
  switch (kind) {
    case MeasurementKind::kReflectivity:
      return FitAsymmetry::kReflectivity;
    case MeasurementKind::kSecondRay:
    case MeasurementKind::kBothRays:
      return FitAsymmetry::kBothRays;
    case MeasurementKind::kAsymmetry:
      return FitAsymmetry::kAsymmetry;
    case MeasurementKind::kEnergyScan:
      return FitAsymmetry::kEnergyScan;
    case MeasurementKind::kEnergyScanBothRays:
      return FitAsymmetry::kBothRaysOverEnergy;
    case MeasurementKind::kEnergyScanAsymmetry:
      return FitAsymmetry::kAsymmetryOverEnergy;
  }
  return FitAsymmetry::kReflectivity;
}

CArray<double> ToColumn(const std::vector<double>& values) {
  CArray<double> column;
  column.Assign(static_cast<std::int32_t>(values.size()), 0.0);
  std::ranges::copy(values, column.begin());
  return column;
}

// The columns in the form for the error functions of the program.
void FillColumns(const Measurement& measurement, CDataset& dataset) {
  dataset.dataset_qz = ToColumn(measurement.q);
  dataset.dataset_eng = ToColumn(measurement.energies);
  for (auto* column : {&dataset.dataset_R0, &dataset.dataset_Rp, &dataset.dataset_Rm, &dataset.dataset_A}) {
    column->Clear();
  }
  const CArray<double> values = ToColumn(measurement.R);
  if (HasTwoCurves(measurement.kind)) {
    dataset.dataset_Rp = values;
    dataset.dataset_Rm = ToColumn(measurement.R2);
  } else if (IsAsymmetry(measurement.kind)) {
    dataset.dataset_A = values;
  } else {
    dataset.dataset_R0 = values;
  }
}

CDataset ToDataset(const CState& state, const Measurement& measurement) {
  CDataset dataset;
  FillColumns(measurement, dataset);
  dataset.datasetenergy = measurement.energy.value_or(EnergyFromLambda(state.lambda));
  dataset.datasetresolution = measurement.resolution.value_or(state.resolution);
  dataset.datasetmultiplicator = measurement.multiplicator;
  dataset.datasettranslator = measurement.translator;
  dataset.datasetqztranslation = measurement.q_shift;
  std::ranges::copy(FirstRay(state), FirstRay(dataset).begin());
  std::ranges::copy(SecondRay(state), SecondRay(dataset).begin());
  if (measurement.rays) {
    std::copy_n(measurement.rays->begin(), 4, FirstRay(dataset).begin());
    std::copy_n(measurement.rays->begin() + 4, 4, SecondRay(dataset).begin());
  }
  dataset.datasetactive = 1;
  return dataset;
}

// The state of one measurement: only its dataset is active, and the others are dropped.
void PlaceDataset(const CState& state, PreparedMeasurement& result) {
  const Measurement& source = result.source;
  if (source.dataset >= state.datasets.size) {
    throw DataError("dataset = " + std::to_string(source.dataset) +
                    " names no dataset of the state, which has " + std::to_string(state.datasets.size) +
                    "; use -1 for a new one");
  }
  const CDataset dataset = ToDataset(state, source);
  for (CDataset& each : result.state.datasets) {
    each = CDataset();
    each.datasetactive = 0;
  }
  if (source.dataset < 0) result.state.datasets.Append(CDataset());
  result.dataset = source.dataset < 0 ? result.state.datasets.size - 1 : source.dataset;
  result.state.datasets[result.dataset] = dataset;
  result.state.fitasymmetry = CurveKindOf(source.kind);
  if (result.rules.weights != Weights::kProgram) result.state.averaging = 0;
}

std::vector<std::string> MissingFiles(const CState& state, bool magnetic) {
  std::vector<std::string> files;
  const auto add = [&](std::string_view stem, std::int32_t kind, const char* ending) {
    const std::int32_t found = FindOpticalTable(stem, state.opticaltables, kind);
    const bool there =
        found >= 0 && (magnetic                      ? state.opticaltables[found].m.count > 0
                       : kind == TableKind::kElement ? state.opticaltables[found].ff.count > 0
                                                     : state.opticaltables[found].db.count > 0);
    const std::string file = std::string(stem) + ending;
    if (!there && std::ranges::find(files, file) == files.end()) files.push_back(file);
  };
  if (state.mode == Mode::kElement) {
    for (const CElementLayer& each : state.elementlayers)
      add(each.element.View(), TableKind::kElement, ".ff");
  } else {
    for (const CLayer& each : state.layers)
      add(each.layer_db.View(), TableKind::kLayer, magnetic ? ".m" : ".db");
  }
  return files;
}

[[noreturn]] void RefuseTables(const CState& state, bool magnetic) {
  const std::vector<std::string> files = MissingFiles(state, magnetic);
  std::string list;
  for (const std::string& file : files) list += (list.empty() ? "" : ", ") + file;
  throw TablesError(
      "tables of optical constants are missing or empty: " + list + "; load them, or set ocautomatic to 0",
      files);
}

void LoadTables(PreparedMeasurement& result, const std::string& label, std::vector<std::string>& warnings) {
  CState& state = result.state;
  if (state.ocautomatic == 0 && !IsEnergyScan(result.source.kind)) return;
  switch (PrepareLayerConstants(state, TablesToLoad::kMissing)) {
    case LayerConstantsStatus::kReady:
      return;
    case LayerConstantsStatus::kMissingTables:
      RefuseTables(state, false);
    case LayerConstantsStatus::kMissingMagneticTables:
      RefuseTables(state, true);
    case LayerConstantsStatus::kEnergyOutOfRange:
      if (IsEnergyScan(result.source.kind)) return;  // the points have energies of their own
      warnings.push_back(label + ": a table does not reach its energy; these layers keep their constants");
  }
}

void CheckErrors(const Measurement& measurement, const ComparisonRules& rules, const std::string& label) {
  if (rules.resolution == Resolution::kPoints && measurement.dq.empty()) {
    throw DataError(label +
                    ": it has no dq; give a sigma for each point, or take the resolution of the state");
  }
  if (rules.weights == Weights::kErrors && measurement.dR.empty() && !measurement.counts) {
    throw DataError(label + ": it has no error bars; give dR, say that R are counts, or weigh by \"log\"");
  }
  if (measurement.counts && measurement.dR.empty() && IsAsymmetry(measurement.kind)) {
    throw DataError(label + ": an asymmetry is no count; give dR");
  }
}

ScreenRules RulesOfScreen(const PreparedMeasurement& result) {
  const CState& state = result.state;
  const CDataset& dataset = state.datasets[result.dataset];
  ScreenRules rules{};
  rules.window_min = state.fitqzmin;
  rules.window_max = state.fitqzmax;
  rules.reach = 4 * std::numbers::pi / LambdaFromEnergy(dataset.datasetenergy);
  rules.half_width = std::abs(dataset.datasetresolution) >= 1e-10 ? std::abs(dataset.datasetresolution) : 0;
  rules.needs_errors = result.rules.weights == Weights::kErrors && !result.source.dR.empty();
  rules.needs_widths = result.rules.resolution == Resolution::kPoints;
  rules.logarithmic = result.rules.weights == Weights::kLog;
  return rules;
}

void TakePoints(PreparedMeasurement& result) {
  const Measurement& source = result.source;
  const auto pick = [&](const std::vector<double>& column) {
    std::vector<double> picked;
    for (const std::int32_t i : result.points) {
      if (!column.empty()) picked.push_back(column[static_cast<std::size_t>(i)]);
    }
    return picked;
  };
  result.q = pick(source.q);
  result.dq = pick(source.dq);
  result.y[0] = pick(source.R);
  result.y[1] = pick(source.R2);
  result.error[0] = pick(source.dR);
  result.error[1] = pick(source.dR2);
  Measurement kept = source;
  kept.q = result.q;
  kept.R = result.y[0];
  kept.R2 = result.y[1];
  kept.energies = pick(source.energies);
  FillColumns(kept, result.state.datasets[result.dataset]);
}

double LargestThickness(const CState& state) {
  double thickness = 0;
  for (std::int32_t i = 1; i + 1 < state.layers.size; ++i) thickness += std::abs(state.layers[i].layer_d);
  return thickness;
}

// On the model where the parameters start.
void PlanNodes(PreparedMeasurement& result, const std::string& label, std::vector<std::string>& warnings) {
  if (result.rules.resolution != Resolution::kPoints || result.rules.weights == Weights::kProgram) return;
  if (IsEnergyScan(result.source.kind)) {
    // several passes through the stack count as well
    for (const double sigma : result.dq) {
      result.plan.push_back(
          PlanForThickness(2 * LargestThickness(result.state), sigma, result.rules.tolerance));
    }
    return;
  }
  CState state = result.state;
  TakeConditions(state, result.dataset);
  ApplyFitVariables(state);
  ScriptWatch watch;
  engine::Stage stage;
  SetStage(state, stage, &watch);
  watch.ThrowFault();
  result.edge_layers = LayersWithEdges(state);
  const std::vector<double> edges = CriticalEdges(state, result.edge_layers);
  const bool both = result.source.kind != MeasurementKind::kReflectivity;
  result.plan =
      PlanResolution({stage, both, edges, result.q, result.dq, result.rules.tolerance}, result.nodes);
  if (result.nodes.unresolved > 0) {
    std::ostringstream text;
    text << label << ": " << result.nodes.unresolved
         << " points need more nodes than allowed; their resolution is off by up to " << result.nodes.worst
         << " (relative)";
    warnings.push_back(text.str());
  }
}

}  // namespace

PreparedMeasurement Prepare(const CState& state, const Measurement& measurement, std::size_t number,
                            const ComparisonRules& rules, std::vector<std::string>& warnings) {
  const std::string label = LabelOf(number);
  CheckMeasurement(measurement, label);
  CheckErrors(measurement, rules, label);
  PreparedMeasurement result;
  result.source = measurement;
  result.rules = rules;
  result.state = state;
  PlaceDataset(state, result);
  LoadTables(result, label, warnings);
  if (rules.weights == Weights::kProgram) {
    // the error functions choose their points themselves
    for (std::int32_t i = 0; i < measurement.size(); ++i) result.points.push_back(i);
    result.count.used = measurement.size();
  } else {
    result.points = Screen(measurement, RulesOfScreen(result), result.count);
    if (result.count.used < measurement.size()) warnings.push_back(label + ": " + result.count.Text());
  }
  TakePoints(result);
  PlanNodes(result, label, warnings);
  return result;
}

}  // namespace tolvik::analysis
