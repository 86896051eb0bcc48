// SPDX-License-Identifier: GPL-2.0-or-later
// The heights of a stack.
#pragma once

#include "engine/number/number.h"
#include "engine/profile/layer.h"

namespace tolvik::engine {

/// Heights of the interfaces from the thicknesses: each entry lies on the one below it. Entry 0 keeps its
/// height, and its thickness is not used.
template <Number T>
void StackHeights(Profile<T>& profile) {
  for (std::int32_t i = 1; i < profile.size; ++i) {
    profile[i].layer_z = profile[i - 1].layer_z + profile[i].layer_d;
  }
}

}  // namespace tolvik::engine
