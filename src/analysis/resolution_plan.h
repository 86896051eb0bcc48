// SPDX-License-Identifier: GPL-2.0-or-later
// The number of nodes of each point for a given accuracy.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "analysis/resolution_rules.h"
#include "engine/curve/calculations.h"
#include "tolvik/analysis/report.h"

namespace tolvik::analysis {

/// The input of a plan.
struct ResolutionTask {
  engine::Stage& stage;
  bool both_rays;
  std::span<const double> edges;  ///< as CriticalEdges gives them
  std::span<const double> q, dq;
  double tolerance;  ///< of the relative deviation
};

/// The fewest nodes for each point whose value deviates from a dense quadrature of the Gaussian by at most a
/// quarter of the tolerance, tested on the curve itself. Not fewer than a plane wave needs through 1.1 times
/// the thickness that light reaches, so that a fit may change the thickness.
std::vector<PointPlan> PlanResolution(const ResolutionTask& task, ResolutionReport& report);

/// Nodes for fringes of a thickness where no curve is tested, as in energy scans.
PointPlan PlanForThickness(double thickness, double sigma, double tolerance);

}  // namespace tolvik::analysis
