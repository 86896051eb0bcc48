// SPDX-License-Identifier: GPL-2.0-or-later
// The Jacobian of the residuals of one measurement.
//
// Parameters reach the curve through scripts, tables, ties, slices and functions of the depth. What they move
// is taken by differences of everything but the curve: the profile, the nodes, the factor and the constant of
// each point. These cost no recursion, and are exact where a number moves in proportion. The derivatives of
// the curve by all of these come from one sweep (engine/curve/jacobian.h).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "analysis/worker.h"
#include "tolvik/analysis/matrix.h"

namespace tolvik::analysis {

/// Where the rows of one measurement stand.
struct RowBlock {
  std::span<double> residuals;
  Matrix& jacobian;
  std::size_t first_row;
};

class Differentiator {
 public:
  /// All must outlive it.
  Differentiator(ObjectiveWorker& worker, const std::vector<Parameter>& parameters, std::size_t measurement)
      : worker_(worker), parameters_(parameters), measurement_(measurement) {}

  /// Residuals and exact derivatives. False where there are none: another algorithm than Parratt's, an energy
  /// scan, a curve that is folded after it was calculated, the weights of the program, or a parameter that
  /// changes the number of slices or nodes.
  bool Exact(std::span<const double> x, const RowBlock& block, RowValues& values);

  /// Residuals, and central differences of the whole; one-sided ones at a bound.
  void ByDifferences(std::span<const double> x, const RowBlock& block, RowValues& values);

 private:
  ObjectiveWorker& worker_;
  const std::vector<Parameter>& parameters_;
  std::size_t measurement_;
};

}  // namespace tolvik::analysis
