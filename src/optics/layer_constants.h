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

/// Which tables PrepareTables loads.
enum class TablesToLoad {
  kMissing,  ///< those that the list lacks
  kIfNone,   ///< all when the list is empty, else none
};

/// Outcome of PrepareTables and PrepareLayerConstants.
enum class LayerConstantsStatus {
  kReady,
  kMissingTables,          ///< a .db or .ff file is missing or empty; nothing was set
  kMissingMagneticTables,  ///< magnetisation is on and a material has no .m table; nothing was set
  kEnergyOutOfRange,       ///< set where the tables reach; the other layers keep their former constants
};

/// Loads tables and checks the magnetic ones; the layers do not change. Never kEnergyOutOfRange. The caller
/// words the failure.
[[nodiscard]] LayerConstantsStatus PrepareTables(CState& state, TablesToLoad load);

/// PrepareTables, then SetLayerConstantsForEnergy at the state's energy.
[[nodiscard]] LayerConstantsStatus PrepareLayerConstants(CState& state, TablesToLoad load);

}  // namespace tolvik
