// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>

#include "engine/algorithms/options.h"

namespace tolvik::engine {

template <Number T>
IntensityOptions<T> OptionsOfState(const CState& state) {
  IntensityOptions<T> options;
  options.algorithm = state.algorithm;
  options.transmission = state.scattering != Scattering::kReflection;
  options.magnetic = state.magnetizationmode != MagnetizationMode::kNone;
  options.maggamma = T(state.maggamma);
  options.magphi = T(state.magphi);
  const double rays[8] = {state.ray1sigmare, state.ray1sigmaim, state.ray1pire, state.ray1piim,
                          state.ray2sigmare, state.ray2sigmaim, state.ray2pire, state.ray2piim};
  std::copy_n(rays, 8, options.polarisation);
  options.tolerance = T(state.epsilon);
  return options;
}

}  // namespace tolvik::engine
