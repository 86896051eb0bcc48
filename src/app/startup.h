// SPDX-License-Identifier: GPL-2.0-or-later
// The start of a fit, which ends the process when tables are missing.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// Loads the optical tables when none is loaded and sets the layers for the state's energy. Missing tables
/// end the process with a message on standard error and exit value 1; an energy outside a table is only
/// reported there, and the layers concerned keep their constants.
void PrepareLayerConstantsOrExit(CState& state);

}  // namespace tolvik
