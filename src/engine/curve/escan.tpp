// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/curve/curve.tpp"
#include "engine/curve/escan.h"
#include "engine/curve/finish.h"
#include "engine/curve/grazing.h"
#include "engine/curve/intensity.tpp"
#include "engine/curve/resolution.tpp"
#include "engine/curve/walk.h"
#include "engine/profile/profile.tpp"
#include "model/status.h"
#include "optics/energy.h"
#include "optics/layer_constants.h"
#include "script/host.h"

namespace tolvik::engine {

inline std::int32_t CodeOf(const WalkEnd& end) {
  if (end.error) return ReturnCode::kUnknownError;
  return end.out_of_reach ? ReturnCode::kWrongDataPoints : ReturnCode::kSuccess;
}

/// Loops over the points of a scan: point(i) calculates point i and returns its code. Optical constants,
/// script and wavelength are set for the point's energy before. Returns the code of the last point called.
template <class Point>
std::int32_t ScanEnergies(const CSolution& solution, CState& state, ScriptSession& script,
                          CurveCompanion* companion, Point point) {
  std::int32_t code = ReturnCode::kSuccess;
  for (std::int32_t i = 0; i < solution.dataset_qz.size && code <= ReturnCode::kSuccess; ++i) {
    if (i >= solution.dataset_eng.size) break;
    state.lambda = LambdaFromEnergy(solution.dataset_eng[i]);
    const double point_lambda = state.lambda;  // a script that changes the energy does not move k0
    if (!SetLayerConstantsForEnergy(state)) continue;
    RunScript(script, companion);
    code = point(i, point_lambda);
  }
  return code;
}

template <class T>
std::int32_t CalcEScanCurve(CSolution& solution, CState& state, CurveCompanion* companion) {
  SizeCurve(solution.dataset_R0, solution.dataset_qz.size, 1.0);
  const double start_lambda = state.lambda;
  ScriptSession script(state);
  RunScript(script, companion);
  Profile<T> profile;
  SampleBlock<T> block(false);
  const auto point = [&](std::int32_t i, double lambda) {
    if (state.maprange.keeplambda != 0) state.lambda = lambda = start_lambda;
    const T k0 = WavevectorFromLambda(T(lambda));
    PrepareProfile<T>(state, profile);
    const IntensityOptions<T> options = OptionsOfState<T>(state);
    const auto store = [&](std::int32_t index, const T& sum, const T&, bool) {
      solution.dataset_R0[index] = static_cast<double>(sum);
    };
    const PointRules* rules = curve_detail::RulesOf(companion, state);
    return curve_detail::WithRules<T>(state, rules, [&](const auto& each) {
      return CodeOf(WalkSamples<T>({profile, k0, options, block}, {solution.dataset_qz, i, i + 1}, each,
                                   IsOutOfReach<T>, store));
    });
  };
  const std::int32_t code = ScanEnergies(solution, state, script, companion, point);
  if (code == ReturnCode::kSuccess) {
    FinishSolution(solution, state.mulqz4, state.polcorrection, state.averaging);
  }
  return code;
}

}  // namespace tolvik::engine
