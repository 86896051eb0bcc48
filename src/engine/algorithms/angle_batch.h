// SPDX-License-Identifier: GPL-2.0-or-later
// A batch: the angles of one profile in one call, and the place for their intensities.
#pragma once

#include <span>

#include "engine/algorithms/options.h"
#include "engine/profile/layer.h"

namespace tolvik::engine {

template <class T>
struct AngleBatch {
  Profile<T>& profile;  ///< the recursion writes its scalarindex
  T k0;                 ///< wavenumber in vacuum, Å⁻¹
  const IntensityOptions<T>& options;
  std::span<const T> s;  ///< sin θ of each angle, 0 <= s <= 1
  T* first;              ///< intensities of ray one, as many as angles
  T* second = nullptr;   ///< of ray two; null leaves it out
};

}  // namespace tolvik::engine
