// SPDX-License-Identifier: GPL-2.0-or-later
// The Jacobian of the residuals of one measurement.
//
// Parameters act on the curve through scripts, tables, ties, slices and functions of the depth. Differences
// are taken of the inputs of the curve only: the profile, the nodes, the factor and the constant of each
// point. They cost no recursion, and are exact where an input is linear in the parameter. The derivatives of
// the curve by all of these inputs come from one sweep (engine/curve/jacobian.h).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "analysis/worker.h"
#include "tolvik/analysis/matrix.h"

namespace tolvik::analysis {

/// The rows of one measurement.
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
  /// scan, a curve that is convolved after its calculation, the weights of the program, or a parameter that
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
