// SPDX-License-Identifier: GPL-2.0-or-later
// Optical constants of layers and elements at one photon energy, from the tables of their materials.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// Sets the optical constants and tensors of all layers (or the scattering factors of all elements in element
/// mode) to the values of their tables at the energy of state.lambda. A layer without a table, or whose table
/// does not reach the energy, keeps its constants; the result is false when that happened to any.
bool SetLayerConstantsForEnergy(CState& state);

}  // namespace tolvik
