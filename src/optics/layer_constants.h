// SPDX-License-Identifier: GPL-2.0-or-later
// Optical constants of layers and elements at one photon energy, from the tables of their materials.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// Sets the optical constants and tensors of all layers (or the scattering factors of all elements in element
/// mode) to the values of their tables at the energy of state.lambda. A layer without a table, or whose .db
/// table does not reach the energy, keeps its constants; the result is false when that happened to any. The
/// tensor of a .e table is not changed, any other is built for the magnetisation of the state. Moves the
/// table cursors.
bool SetLayerConstantsForEnergy(CState& state);

/// Outcome of PrepareLayerConstants.
enum class LayerConstantsStatus {
  kReady,
  kMissingTables,          ///< a .db or .ff file is missing or empty; nothing was set
  kMissingMagneticTables,  ///< magnetisation is on and a material has no .m table; nothing was set
  kEnergyOutOfRange,       ///< set where the tables reach; the other layers keep their former constants
};

/// Prepares the constants of a fit: loads the tables when none is loaded, checks the magnetic ones, and sets
/// the constants for the state's energy. The caller words the failure.
[[nodiscard]] LayerConstantsStatus PrepareLayerConstants(CState& state);

}  // namespace tolvik
