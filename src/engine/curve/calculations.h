// SPDX-License-Identifier: GPL-2.0-or-later
// The calculations of tolvik.h, with a companion.
#pragma once

#include <cstdint>

#include "engine/algorithms/options.h"
#include "engine/curve/companion.h"
#include "engine/profile/layer.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

// Each calculates as its namesake ending in DLL: same columns, same codes, same changes of the state.
// companion may be null.

std::int32_t CalcReflectivity(CSolution& solution, CState& state, CurveCompanion* companion);
std::int32_t CalcAsymmetry(CSolution& solution, CState& state, CurveCompanion* companion);
/// In the caller's thread.
std::int32_t CalcEScan(CSolution& solution, CState& state, CurveCompanion* companion);
std::int32_t CalcDicEScan(CSolution& solution, CState& state, CurveCompanion* companion);

/// What a curve over qz is calculated from, in double.
struct Stage {
  Profile<double> profile;
  double k0 = 0;  ///< Å⁻¹
  IntensityOptions<double> options;
};

/// Brings the state up to date as a curve does, with tables and script, and sets the stage.
void SetStage(CState& state, Stage& stage, CurveCompanion* companion);

}  // namespace tolvik::engine
