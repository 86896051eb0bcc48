// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>

#include "engine/algorithms/options.h"
#include "optics/rays.h"

namespace tolvik::engine {

template <Number T>
IntensityOptions<T> OptionsOfState(const CState& state) {
  IntensityOptions<T> options;
  options.algorithm = state.algorithm;
  options.transmission = state.scattering != Scattering::kReflection;
  options.magnetic = state.magnetizationmode != MagnetizationMode::kNone;
  options.maggamma = T(state.maggamma);
  options.magphi = T(state.magphi);
  std::ranges::copy(FirstRay(state), options.polarisation);
  std::ranges::copy(SecondRay(state), options.polarisation + 4);
  options.tolerance = T(state.epsilon);
  return options;
}

}  // namespace tolvik::engine
