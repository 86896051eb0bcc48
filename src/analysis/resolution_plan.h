// SPDX-License-Identifier: GPL-2.0-or-later
// How many nodes each point needs for a stated accuracy.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "analysis/resolution_rules.h"
#include "engine/curve/calculations.h"
#include "tolvik/analysis/report.h"

namespace tolvik::analysis {

/// What is to be planned.
struct ResolutionTask {
  engine::Stage& stage;
  bool both_rays;
  std::span<const double> edges;  ///< as CriticalEdges gives them
  std::span<const double> q, dq;
  double tolerance;  ///< of the relative deviation
};

/// The fewest nodes for each point whose value deviates from a dense quadrature of the Gaussian by a quarter
/// of the tolerance at most, tried on the curve of the stage itself. Not fewer than a plane wave through 1.1
/// times the thickness that light reaches needs, so that a fit may change the thickness.
std::vector<PointPlan> PlanResolution(const ResolutionTask& task, ResolutionReport& report);

/// Nodes for fringes of a thickness where no curve is tried, as in energy scans.
PointPlan PlanForThickness(double thickness, double sigma, double tolerance);

}  // namespace tolvik::analysis
