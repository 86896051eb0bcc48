// SPDX-License-Identifier: GPL-2.0-or-later
// One reflectivity curve over qz at one energy.
#pragma once

#include <cstdint>

#include "engine/curve/companion.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Updates the state (optical tables, script), builds the profile and calculates dataset_R0 on the
/// grid dataset_qz in the number type T. The exact path calculates nine samples of the resolution for each
/// point; with fastresolution the curve is calculated once, into dataset_Rp, and folded.
/// Returns 1, also after the silent stop of the exact path: at a sample with |qz / (2 k0)| >= 1 or NaN, or at
/// an exception of algorithm 0 or 1, the curve ends there, without the finishing step. Returns 2 on the fast
/// path for a point with |qz / (2 k0)| >= 1. An exception of algorithm 2 reaches the caller.
/// companion: may give each point samples of its own, which are then calculated on the exact path,
/// independent of fastresolution; null for none.
template <class T>
std::int32_t CalcReflectivityCurve(CSolution& solution, CState& state, CurveCompanion* companion = nullptr);

}  // namespace tolvik::engine
