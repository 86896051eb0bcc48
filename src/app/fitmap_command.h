// SPDX-License-Identifier: GPL-2.0-or-later
// The command that fits a state to each curve of a measured map.
#pragma once

#include "app/map_curves.h"

namespace tolvik {

/// -fitmap: fits the state of the map to each curve of constenergy separately, from the same start values,
/// with the optical constants of the tables at its energy. Prints one line for each curve: energy,
/// multiplicator, thickness of layer 1, roughness of layers 0 to 2, delta and beta of layers 0 to 2, error,
/// points, standard deviations of variables 0 and 1; missing values print as nan. The calculated curves are
/// appended to fitdatasets and to constenergy.
void FitMapCommand(CMapFile& map);

}  // namespace tolvik
