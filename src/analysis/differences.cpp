// SPDX-License-Identifier: GPL-2.0-or-later
// Central differences of the residuals.
#include <algorithm>
#include <cmath>

#include "analysis/differentiator.h"

namespace tolvik::analysis {
namespace {

// Points and weights of a derivative; the step at a bound goes inwards only.
struct Stencil {
  double at[3];
  double weight[3];
};

Stencil StencilAt(const Parameter& parameter, double x) {
  const double h = parameter.step;
  const double up = (x + h) - x, down = x - (x - h);
  if (x + h > parameter.bounds.upper && x - 2 * h >= parameter.bounds.lower) {
    return {{x, x - down, x - 2 * down}, {1.5 / down, -2 / down, 0.5 / down}};
  }
  if (x - h < parameter.bounds.lower && x + 2 * h <= parameter.bounds.upper) {
    return {{x, x + up, x + 2 * up}, {-1.5 / up, 2 / up, -0.5 / up}};
  }
  return {{x + up, x - up, x}, {0.5 / up, -0.5 / up, 0}};
}

}  // namespace

void Differentiator::ByDifferences(std::span<const double> x, const RowBlock& block, RowValues& values) {
  if (!worker_.EvaluateOne(measurement_, x, block.residuals, values)) return;
  std::vector<double> point(x.begin(), x.end()), shifted(block.residuals.size());
  for (std::size_t k = 0; k < x.size(); ++k) {
    const Stencil stencil = StencilAt(parameters_[k], x[k]);
    for (std::size_t i = 0; i < shifted.size(); ++i) block.jacobian(block.first_row + i, k) = 0;
    for (int s = 0; s < 3; ++s) {
      if (stencil.weight[s] == 0) continue;
      point[k] = stencil.at[s];
      if (!worker_.EvaluateOne(measurement_, point, shifted, values)) return;
      for (std::size_t i = 0; i < shifted.size(); ++i) {
        block.jacobian(block.first_row + i, k) += stencil.weight[s] * shifted[i];
      }
    }
    point[k] = x[k];
  }
}

}  // namespace tolvik::analysis
