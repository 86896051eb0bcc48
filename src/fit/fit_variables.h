// SPDX-License-Identifier: GPL-2.0-or-later
// Transfers values between the fit variables of a state and the numbers of its model, in both directions.
#pragma once

#include "tolvik/state.h"

namespace tolvik {

/// Writes the fit_value of all variables, in list order, into the model of the state, and rebuilds the
/// tensors of the layers whose optical constants were written. "delta" and "beta" with a fit_dataset1 are
/// written only while that dataset or fit_dataset2 is the active one. The Kramers-Kronig kinds start from a
/// fresh copy of kktable and leave its table in plain form. A variable with an index out of range changes
/// nothing.
void ApplyFitVariables(CState& state);

/// Reads the model back into the fit_value of the variables; with onlyoptical only the optical constants of
/// layers and the scattering factors of elements. The Kramers-Kronig kinds are read from the plain table
/// named by fit_element_id. A variable with an index out of range keeps its value.
void ReadFitVariables(CState& state, bool onlyoptical);

}  // namespace tolvik
