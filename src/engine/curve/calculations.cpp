// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/calculations.h"

#include "engine/curve/curve.h"
#include "engine/curve/dichroism.h"
#include "engine/curve/escan.h"
#include "engine/curve/grazing.h"
#include "engine/curve/with_number_type.h"
#include "engine/profile/profile.h"

namespace tolvik::engine {

std::int32_t CalcReflectivity(CSolution& solution, CState& state, CurveCompanion* companion) {
  return WithNumberType(state.precision,
                        [&]<class T>() { return CalcReflectivityCurve<T>(solution, state, companion); });
}

std::int32_t CalcAsymmetry(CSolution& solution, CState& state, CurveCompanion* companion) {
  return WithNumberType(state.precision,
                        [&]<class T>() { return CalcAsymmetryCurve<T>(solution, state, companion); });
}

std::int32_t CalcEScan(CSolution& solution, CState& state, CurveCompanion* companion) {
  return WithNumberType(state.precision,
                        [&]<class T>() { return CalcEScanCurve<T>(solution, state, companion); });
}

std::int32_t CalcDicEScan(CSolution& solution, CState& state, CurveCompanion* companion) {
  return WithNumberType(state.precision,
                        [&]<class T>() { return CalcDicEScanCurve<T>(solution, state, companion); });
}

void SetStage(CState& state, Stage& stage, CurveCompanion* companion) {
  BringUpToDate(state, companion);
  PrepareProfile<double>(state, stage.profile);
  stage.k0 = WavevectorFromLambda(state.lambda);
  stage.options = OptionsOfState<double>(state);
}

}  // namespace tolvik::engine
