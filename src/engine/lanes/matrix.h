// SPDX-License-Identifier: GPL-2.0-or-later
// From a profile to the stack of the matrix kernels, and the decision whether lanes may calculate it.
#pragma once

#include <span>
#include <vector>

#include "engine/algorithms/options.h"
#include "engine/lanes/kernels.h"
#include "engine/profile/layer.h"

namespace tolvik::engine::lanes {

/// The matrix algorithms by lanes, in double: magnetic entries and full tensors, reflection and transmission.
///
/// Lanes accept stacks of ordinary matter near vacuum, like ParrattLanes: |ε - 1| below 0.2, absorption not
/// negative, thicknesses not negative, all of it finite. The plain algorithms define the results of all
/// others, of a scalar slab without thickness, which repeats the propagation above it, and of a tensor that
/// hardly couples x with y or z, such as of a magnetisation along x: the fields of its waves are rounding
/// noise.
class MatrixLanes {
 public:
  /// Lays out the stack for k0, Å⁻¹. False: the plain algorithm has to calculate this stack. The options must
  /// live until Calculate.
  bool Prepare(const Profile<double>& profile, double k0, const IntensityOptions<double>& options);

  /// Intensities of both rays at angles given as s = sin θ, 0 <= s <= 1; second may be null. The plain path
  /// has to calculate each angle whose intensity is not finite.
  void Calculate(const Kernels& kernels, std::span<const double> s, double* first, double* second) const;

 private:
  bool SetEntry(const CLayer<double>& layer, const IntensityOptions<double>& options, MatrixEntry& entry);
  bool SetFirstOrder(const CLayer<double>& layer, MatrixEntry& entry);
  bool SetTensor(const CLayer<double>& layer, double tolerance, MatrixEntry& entry);
  bool SetScalar(std::complex<double> n, std::complex<double> chi, MatrixEntry& entry);
  bool SetGeometry(const Profile<double>& profile);

  std::vector<MatrixEntry> entries_;
  MatrixStack stack_{};
  Direction<double> direction_{};  // of the magnetisation
  double largest_chi_ = 0.0;
};

}  // namespace tolvik::engine::lanes
