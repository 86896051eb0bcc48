// SPDX-License-Identifier: GPL-2.0-or-later
// The energy that someone gave, from the wavelength that a state holds instead.
#pragma once

namespace tolvik {

/// The energy, eV, of which LambdaFromEnergy makes exactly this wavelength: of several the one with the
/// fewest decimal digits, as it was given. EnergyFromLambda where there is none, as for a wavelength that no
/// energy gives.
double EnergyGivenAs(double lambda);

}  // namespace tolvik
