// SPDX-License-Identifier: GPL-2.0-or-later
// From the sample of a state to the profile on which the algorithms run.
#pragma once

#include "engine/number/number.h"
#include "engine/profile/layer.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Builds the profile of a state in the number type T: its layers with heights, sliced by the settings of the
/// state, or the element profile. Replaces the content of profile; its block is used again where the number
/// of entries is the same. Throws std::bad_alloc for a profile beyond memory (CheckProfileSize).
template <Number T>
void PrepareProfile(const CState& state, Profile<T>& profile);

}  // namespace tolvik::engine
