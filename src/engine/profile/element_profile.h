// SPDX-License-Identifier: GPL-2.0-or-later
// The profile of a sample that is described by the depth distributions of its chemical elements.
#pragma once

#include "engine/profile/layer.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Replaces the profile by slices of 0.5 Å from -30 Å up to 30 Å above the inner slices of the first element.
/// Each element adds its density (mol/cm³) times its scattering factors at state.lambda; there is no magnetic
/// part. An element without slices makes all constants NaN. A length without entries, or NaN, gives an empty
/// profile. Throws std::bad_alloc when the entries need more than 2 GiB.
template <class T>
void CalcElementProfile(const CState& state, Profile<T>& profile);

}  // namespace tolvik::engine
