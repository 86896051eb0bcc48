// SPDX-License-Identifier: GPL-2.0-or-later
// The options of the algorithms, read from a state.
#pragma once

#include <cstdint>

#include "engine/number/number.h"
#include "tolvik/state.h"

namespace tolvik::engine {

using enum Algorithm::Value;

/// Whether the number is that of an algorithm; with any other a curve keeps its start values.
inline bool IsAlgorithm(std::int32_t algorithm) {
  return algorithm >= kParratt && algorithm <= kMatrixTwo;
}

/// The options of the algorithms, besides the profile, k0 and the angle.
template <class T>
struct IntensityOptions {
  std::int32_t algorithm = kParratt;
  bool transmission = false;    ///< scattering non-zero; not used by algorithm 0
  bool magnetic = false;        ///< magnetizationmode non-zero
  T maggamma{};                 ///< azimuth of the magnetisation, degrees
  T magphi{};                   ///< polar angle against z, degrees
  double polarisation[8] = {};  ///< both rays: sigma and pi part, real and imaginary
  T tolerance{};                ///< tolerance of the tensor classes of algorithm 1
};

/// The present options of a state, after its script.
template <Number T>
IntensityOptions<T> OptionsOfState(const CState& state);

}  // namespace tolvik::engine
