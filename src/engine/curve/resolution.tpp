// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/curve/resolution.h"

namespace tolvik::engine {

template <Number T>
ResolutionRule<T> FullRule(double resolution) {
  ResolutionRule<T> rule;
  rule.samples = kResolutionSamples;
  for (int j = 0; j < kResolutionSamples; ++j) {
    rule.shift[j] = T(resolution) * T(kResolutionRule[j].offset);
    rule.weight[j] = T(kResolutionRule[j].weight);
  }
  return rule;
}

template <Number T>
ResolutionRule<T> RuleOfResolution(double resolution) {
  ResolutionRule<T> rule = FullRule<T>(resolution);
  if (!(T(resolution) >= T(1e-10))) {
    rule.samples = 1;
    rule.weight[0] = T(1.0);
  }
  return rule;
}

namespace resolution_detail {

/// A position to read: between the points a and b, at a + fraction (b - a); a = b reads one point.
template <class T>
struct Place {
  std::int32_t a = 0;
  std::int32_t b = 0;
  T fraction{};
};

// Neighbours of q above point i. The last interval of the grid is never reached.
template <Number T>
Place<T> FindAbove(const T& q, std::int32_t i, const CArray<double>& grid) {
  const std::int32_t last = grid.size - 1;
  std::int32_t k = i + 1;
  while (k < last && q >= T(grid[k])) ++k;
  if (k >= last) return {i, i, T(0.0)};
  return {k - 1, k, T(0.0)};
}

template <Number T>
Place<T> FindBelow(const T& q, std::int32_t i, const CArray<double>& grid) {
  std::int32_t k = i - 1;
  while (k >= 0 && q <= T(grid[k])) --k;
  if (k < 0) return {i, i, T(0.0)};
  return {k, k + 1, T(0.0)};
}

template <Number T>
void Read(const CArray<double>& curve, const CArray<double>& grid, const Place<T>& place, T& out) {
  if (curve.size < grid.size) return;
  const T below = T(curve[place.a]);
  out = place.a == place.b ? below : below + place.fraction * (T(curve[place.b]) - below);
}

}  // namespace resolution_detail

template <Number T>
void InterpolateSolution(InterpolatedPoint<T>& out, const CSolution& solution, const T& q, std::int32_t i,
                         const CArray<double>& grid) {
  auto place =
      q > T(grid[i]) ? resolution_detail::FindAbove(q, i, grid) : resolution_detail::FindBelow(q, i, grid);
  if (place.a != place.b) {
    const T qa = T(grid[place.a]);
    place.fraction = (qa - q) / (qa - T(grid[place.b]));
  }
  resolution_detail::Read(solution.dataset_R0, grid, place, out.R0);
  resolution_detail::Read(solution.dataset_Rp, grid, place, out.Rp);
  resolution_detail::Read(solution.dataset_Rm, grid, place, out.Rm);
}

template <Number T>
InterpolatedPoint<T> FoldResolution(const CSolution& solution, std::int32_t i,
                                    const ResolutionRule<T>& full_rule) {
  InterpolatedPoint<T> sum;
  InterpolatedPoint<T> value;
  for (int j = 0; j < full_rule.samples; ++j) {
    const T q = T(solution.dataset_qz[i]) + full_rule.shift[j];
    if (!(q >= T(0.0))) continue;
    InterpolateSolution(value, solution, q, i, solution.dataset_qz);
    sum.R0 += full_rule.weight[j] * value.R0;
    sum.Rp += full_rule.weight[j] * value.Rp;
    sum.Rm += full_rule.weight[j] * value.Rm;
  }
  return sum;
}

}  // namespace tolvik::engine
