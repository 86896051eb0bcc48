// SPDX-License-Identifier: GPL-2.0-or-later
// One ray of some points with all derivatives: by lanes, and by duals for angles that lanes cannot decide.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/curve/active_nodes.h"
#include "engine/curve/jacobian.h"

namespace tolvik::engine {

/// Points begin .. end - 1.
struct PointRange {
  std::int32_t begin, end;
};

class RayDerivatives {
 public:
  RayDerivatives(const GradientTask& task, const ActiveNodes& active, GradientWork& work);

  /// A good number of points for one call of Calculate.
  std::int32_t PointsAtOnce() const;

  /// Values and derivatives of ray 1 or 2; value: [point], jacobian: [point][parameter], of the range alone.
  void Calculate(int ray, const PointRange& points, double* value, double* jacobian);

 private:
  // A term of the chain in the terms of the lanes.
  struct Line {
    std::int32_t parameter, entry;
    int row;
    double factor;
  };

  void SetLines();
  void SweepByLanes(int ray, const PointRange& points, double* value, double* jacobian);
  void ApplyChain(const PointRange& points, double* jacobian);
  void AddNode(std::int32_t active_node, double intensity, double weighted_slope, double* jacobian) const;
  void AddLost(int ray, const PointRange& points, double* value, double* jacobian);

  const GradientTask& task_;
  const ActiveNodes& active_;
  GradientWork& work_;
  const lanes::Kernels* kernels_;  // null: all by duals
  std::vector<Line> lines_;
};

}  // namespace tolvik::engine
