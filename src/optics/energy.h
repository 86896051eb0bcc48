// SPDX-License-Identifier: GPL-2.0-or-later
// Photon energy and wavelength.
#pragma once

namespace tolvik {

/// Planck's constant times the speed of light, eV Å, as this system uses it everywhere.
inline constexpr double kEnergyTimesLambda = 12398.326;

/// Photon energy in eV of a wavelength in Å. Not guarded: 0 gives infinity.
inline double EnergyFromLambda(double lambda) {
  return kEnergyTimesLambda / lambda;
}
/// Wavelength in Å of a photon energy in eV. Not guarded: 0 gives infinity.
inline double LambdaFromEnergy(double energy) {
  return kEnergyTimesLambda / energy;
}

}  // namespace tolvik
