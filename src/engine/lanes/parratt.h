// SPDX-License-Identifier: GPL-2.0-or-later
// From a profile to the stack of the lane kernels, and the judgement whether lanes may calculate it.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/lanes/kernels.h"
#include "engine/layer.h"

namespace tolvik::engine::lanes {

/// The recursion of Parratt by lanes, for float and double.
///
/// Lanes take stacks of ordinary matter: 0.5 <= 1 - delta <= 1.5, 0 <= beta <= 0.5 and not -0, thicknesses
/// not negative, all of it finite. Anything else is left to the plain recursion, which defines how odd
/// values, infinities and NaNs travel.
template <class T>
class ParrattLanes {
 public:
  /// Lays out the stack for k0, Å⁻¹. sign: sense of the magnetic shift, 0 without. False: the plain recursion
  /// has to do this stack.
  bool Prepare(const Profile<T>& profile, T k0, T sign);

  /// |Y|² sigma_share + |X|² pi_share with the amplitude ratios Y of sigma and X of pi, at count angles given
  /// as s = sin θ, 0 <= s <= 1. The plain recursion has to do each angle whose intensity is not finite.
  void Calculate(const Kernels& kernels, const T* s, std::int32_t count, T sigma_share, T pi_share,
                 T* intensity);

 private:
  void ShareEqualEntries();

  std::vector<ParrattEntry<T>> entries_;
  std::vector<T> sigma_, pi_;
  ParrattStack<T> stack_{};
  bool near_vacuum_ = false;
};

extern template class ParrattLanes<float>;
extern template class ParrattLanes<double>;

}  // namespace tolvik::engine::lanes
