// SPDX-License-Identifier: GPL-2.0-or-later
// Samples of the resolution that each point of a curve has for itself.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "engine/curve/resolution.h"

namespace tolvik::engine {

/// The samples of one point: their places relative to the point, Å⁻¹, and their weights.
template <class Value>
struct PointRule {
  std::int32_t samples;
  const Value* shift;
  const Value* weight;
};

/// Samples of all points of a curve, one point after the other. The weights are taken as they are: their sum
/// need not be 1.
struct PointRules {
  std::vector<double> shift;      ///< Å⁻¹, relative to the qz of the point
  std::vector<double> weight;     ///< as long as shift
  std::vector<std::int32_t> end;  ///< of each point, the end of its samples

  PointRule<double> At(std::int32_t point) const {
    const auto i = static_cast<std::size_t>(point);
    const std::int32_t begin = i == 0 ? 0 : end[i - 1];
    return {end[i] - begin, shift.data() + begin, weight.data() + begin};
  }
  /// Samples of the points begin .. end_point - 1 together.
  std::int32_t Count(std::int32_t begin, std::int32_t end_point) const {
    if (end_point <= begin) return 0;
    return end[static_cast<std::size_t>(end_point) - 1] -
           (begin == 0 ? 0 : end[static_cast<std::size_t>(begin) - 1]);
  }
};

/// One rule for all points.
template <class T>
struct UniformRules {
  ResolutionRule<T> rule;

  PointRule<T> At(std::int32_t) const { return {rule.samples, rule.shift, rule.weight}; }
  std::int32_t Count(std::int32_t begin, std::int32_t end_point) const {
    return (end_point - begin) * rule.samples;
  }
};

}  // namespace tolvik::engine
