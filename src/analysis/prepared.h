// SPDX-License-Identifier: GPL-2.0-or-later
// A measurement prepared for many evaluations: the data that stay the same for all of them.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/resolution_plan.h"
#include "analysis/screening.h"
#include "tolvik/analysis/measurement.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

/// The method of comparison of a measurement.
struct ComparisonRules {
  Weights weights = Weights::kErrors;
  Resolution resolution = Resolution::kState;
  double tolerance = 1e-4;
};

/// A measurement with the points in use, and the state under its conditions.
struct PreparedMeasurement {
  Measurement source;
  ComparisonRules rules;
  PointCount count;
  std::vector<std::int32_t> points;    ///< those in use, as indices into the columns of source
  std::vector<double> q, dq;           ///< of these points
  std::vector<double> y[2], error[2];  ///< the second pair for kinds with two curves
  CState state;                        ///< start of each evaluation: the dataset placed, tables loaded
  std::int32_t dataset = 0;            ///< of state
  std::vector<PointPlan> plan;         ///< nodes of the points, for Resolution::kPoints
  ResolutionReport nodes;
  std::vector<std::int32_t> edge_layers;  ///< whose critical edges the nodes follow

  bool HasPlan() const { return !plan.empty(); }
  int curves() const { return HasTwoCurves(source.kind) ? 2 : 1; }
};

/// Prepares measurement `number`. Warnings about omitted points and nodes are appended. Throws DataError,
/// TablesError for missing tables, ScriptError for a script that fails.
PreparedMeasurement Prepare(const CState& state, const Measurement& measurement, std::size_t number,
                            const ComparisonRules& rules, std::vector<std::string>& warnings);

}  // namespace tolvik::analysis
