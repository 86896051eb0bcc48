// SPDX-License-Identifier: GPL-2.0-or-later
// All inputs of a curve at one point of the parameters, without the curve.
#pragma once

#include <span>
#include <vector>

#include "analysis/curve_model.h"
#include "engine/curve/calculations.h"

namespace tolvik::analysis {

/// The numbers that determine the positions of the nodes.
struct NodeKey {
  double lambda = 0, resolution = 0, q_shift = 0, offset = 0;
  std::vector<double> edges;
  bool operator==(const NodeKey&) const = default;
};

/// The numbers that determine the factors and constants of the points.
struct ScaleKey {
  QuantityValues quantities{};
  double multiplicator = 1, translator = 0;
  bool operator==(const ScaleKey&) const = default;
};

/// A measured value is factor * R + constant, R the sum over the nodes of weight times intensity.
struct Snapshot {
  engine::Stage stage;
  NodeKey node_key;
  ScaleKey scale_key;
  std::vector<double> sine, weight;  ///< of all nodes
  std::vector<std::int32_t> end;     ///< of each point, one past its last node
  std::vector<double> factor[2];     ///< of each point and ray
  double constant = 0;
};

/// Takes a snapshot of the model at x. before: one of the same model, null for none; unchanged members are
/// not calculated again but left empty: sine, weight and end where the nodes stay, and factor where the
/// points keep theirs. False when the script fails.
bool TakeSnapshot(CurveModel& model, std::span<const double> x, const Snapshot* before, Snapshot& snapshot);

}  // namespace tolvik::analysis
