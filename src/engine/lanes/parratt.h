// SPDX-License-Identifier: GPL-2.0-or-later
// From a profile to the stack of the lane kernels, and the decision whether lanes may calculate it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/lanes/kernels.h"
#include "engine/profile/layer.h"

namespace tolvik::engine::lanes {

/// The Parratt recursion by lanes, for float and double.
///
/// Lanes accept stacks of ordinary matter: 0.5 <= 1 - delta <= 1.5, 0 <= beta <= 0.5 and not -0, thicknesses
/// not negative, all of it finite. Other stacks are left to the plain recursion, which defines how unusual
/// values, infinities and NaNs travel.
template <class T>
class ParrattLanes {
 public:
  /// Lays out the stack for k0, Å⁻¹; magnetic: with the magnetic shift. False: the plain recursion has to
  /// calculate this stack.
  bool Prepare(const Profile<T>& profile, T k0, bool magnetic);

  /// Lays out a stack of scalar entries for the matrix algorithms, which then reflect as the recursion does:
  /// sigma and pi waves do not mix, and the quotient of their roughness factors is the Névot-Croce factor.
  /// tensors: entries with `magnetic` set take their index from exx (algorithm 1). False as for Prepare; also
  /// for an entry that is not scalar within the tolerance, and for a slab without thickness.
  bool PrepareMatrix(const Profile<T>& profile, T k0, bool tensors, T tolerance);

  /// |Y|² ray.sigma + |X|² ray.pi with the amplitude ratios Y of sigma and X of pi, at angles given as
  /// s = sin θ, 0 <= s <= 1, of one ray or two. The second one has the reversed magnetic shift. The plain
  /// path has to calculate each angle whose intensity is not finite; true when there is none.
  bool Calculate(const Kernels& kernels, std::span<const T> s, std::span<const ParrattRay<T>> rays);

  /// The stack as prepared, with what one ray wants of it in one sense of the magnetic shift, 0 or 1. It
  /// holds until the next preparation.
  ParrattStack<T> StackFor(const ParrattRay<T>& ray, int sense);

 private:
  bool PrepareEntries(const Profile<T>& profile, T k0);
  void SetWanted(std::span<const ParrattRay<T>> rays);

  std::vector<ParrattEntry<T>> entries_;
  std::vector<ParrattJoint<T>> joints_;
  ParrattStack<T> stack_{};
  bool near_vacuum_ = false;
  T largest_chi_{};
};

extern template class ParrattLanes<float>;
extern template class ParrattLanes<double>;

}  // namespace tolvik::engine::lanes
