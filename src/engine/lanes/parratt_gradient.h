// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of points and their derivatives by the entries of a stack, by lanes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/lanes/parratt.h"

namespace tolvik::engine::lanes {

/// Some consecutive points and their nodes.
struct SweepPoints {
  const double* sine;                   ///< of each node, 0 <= s < 1
  const double* weight;                 ///< of each node
  std::span<const std::int32_t> begin;  ///< of each point its first node, and the end of the last one
};

/// What a sweep may leave out.
struct SweepWishes {
  int sense = 0;          ///< of the magnetic shift: 0 for the first ray, 1 for the second
  bool magnetic = false;  ///< the magnetic rows
  bool slopes = false;    ///< the slopes
};

class ParrattGradient {
 public:
  /// As ParrattLanes::Prepare.
  bool Prepare(const Profile<double>& profile, double k0, bool magnetic) {
    return lanes_.Prepare(profile, k0, magnetic);
  }

  /// Calculates all nodes of the points with their derivatives.
  void Calculate(const Kernels& kernels, const SweepPoints& points, const ParrattRay<double>& ray,
                 const SweepWishes& wishes);

  // Results, until the next call.

  /// Intensity of a node, counted from the first one of the points; NaN where the plain path has to do it.
  double Intensity(std::int32_t point, std::int32_t node) const { return intensity_[Place(point, node)]; }
  /// weight dR/ds of a node; 0 where its intensity is not finite.
  double Slope(std::int32_t point, std::int32_t node) const { return slope_[Place(point, node)]; }
  /// The sum of a row of an entry (SweepRow) over the nodes of a point, without those that have no intensity.
  /// Of the points of a strip, places() from one that is a multiple of it on, they stand side by side.
  const double* Sums(std::int32_t point, std::int32_t entry, int row) const;
  std::int32_t places() const { return places_; }

 private:
  void LayOut(const SweepPoints& points);
  std::size_t Place(std::int32_t point, std::int32_t node) const;

  ParrattLanes<double> lanes_;
  std::int32_t places_ = 1, entries_ = 0;
  std::vector<std::int32_t> strip_;           // of each register
  std::vector<std::int32_t> first_register_;  // of each strip
  std::vector<double> sine_, weight_, intensity_, slope_, rows_;
  std::vector<unsigned char> tape_;
};

}  // namespace tolvik::engine::lanes
