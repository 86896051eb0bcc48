// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that calculate curves of a state and print them.
#pragma once

#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik {

/// -refl: runs the state's script, calculates the reflectivity and prints "qz R" for each point to standard
/// output. The script runs once more inside the calculation, on the changes of its first run.
void CalcReflectivityCommand(CState& state);

/// -dicrefl: calculates both polarisations and prints "qz Rp Rm" for each point to standard output. The
/// script runs inside the calculation only.
void CalcDichroicCommand(CState& state);

/// A copy of the active measurement; without a dataset at activedatasetindex the result has no points.
CSolution ActiveMeasurement(const CState& state);

}  // namespace tolvik
