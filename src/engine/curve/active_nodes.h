// SPDX-License-Identifier: GPL-2.0-or-later
// The nodes of a curve that have an angle within reach, point by point.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/curve/grazing.h"
#include "engine/curve/jacobian.h"

namespace tolvik::engine {

class ActiveNodes {
 public:
  explicit ActiveNodes(const CurveNodes& nodes) : out_of_reach_(nodes.end.size(), false) {
    std::int32_t node = 0;
    begin_.reserve(nodes.end.size() + 1);
    begin_.push_back(0);
    for (std::size_t point = 0; point < nodes.end.size(); ++point) {
      for (; node < nodes.end[point]; ++node) Add(nodes, static_cast<std::size_t>(node), point);
      begin_.push_back(static_cast<std::int32_t>(node_.size()));
    }
  }

  std::int32_t points() const { return static_cast<std::int32_t>(out_of_reach_.size()); }
  bool IsOutOfReach(std::int32_t point) const { return out_of_reach_[static_cast<std::size_t>(point)]; }
  /// Of each point its first active node, and the end of the last one.
  const std::vector<std::int32_t>& Begin() const { return begin_; }
  // Of each active node: its place among all nodes, its sine and its weight.
  const std::vector<std::int32_t>& Nodes() const { return node_; }
  const std::vector<double>& Sines() const { return sine_; }
  const std::vector<double>& Weights() const { return weight_; }

 private:
  void Add(const CurveNodes& nodes, std::size_t node, std::size_t point) {
    const double s = nodes.sine[node];
    if (!HasAngle(s)) return;
    if (engine::IsOutOfReach(s)) {
      out_of_reach_[point] = true;
      return;
    }
    node_.push_back(static_cast<std::int32_t>(node));
    sine_.push_back(s);
    weight_.push_back(nodes.weight[node]);
  }

  std::vector<bool> out_of_reach_;
  std::vector<std::int32_t> begin_, node_;
  std::vector<double> sine_, weight_;
};

}  // namespace tolvik::engine
