// SPDX-License-Identifier: GPL-2.0-or-later
// The dielectric tensor of a magnetised layer.
#pragma once

#include <cstdint>

#include "tolvik/layer.h"
#include "tolvik/state.h"

namespace tolvik {

/// Rebuilds layer.epsilon and layer.magnetic from the layer's four optical constants, to first order in the
/// magnetic ones. gamma, phi: azimuth and polar angle of the magnetisation against z, degrees. Without a
/// magnetisation only the diagonal is set.
void BuildEpsilonTensor(CLayer& layer, double gamma, double phi, std::int32_t magnetizationmode);

/// BuildEpsilonTensor on every layer with the state's maggamma, magphi and magnetizationmode.
void BuildAllEpsilonTensors(CState& state);

}  // namespace tolvik
