// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/curve/curve.h"
#include "engine/curve/finish.h"
#include "engine/curve/grazing.h"
#include "engine/curve/intensity.tpp"
#include "engine/curve/resolution.tpp"
#include "engine/curve/walk.h"
#include "engine/profile/profile.tpp"
#include "model/status.h"
#include "optics/layer_constants.h"
#include "script/host.h"

namespace tolvik::engine {

namespace curve_detail {

inline const PointRules* RulesOf(CurveCompanion* companion, const CState& state) {
  return companion != nullptr ? companion->RulesFor(state) : nullptr;
}

template <Number T, class Rules>
WalkEnd WalkExact(CSolution& solution, const Rules& rules, const WalkSetting<T>& setting) {
  const auto refuse = [](const T& s) { return IsOutOfReach(s) || isnan(s); };
  const auto store = [&](std::int32_t i, const T& sum, const T&, bool) {
    solution.dataset_R0[i] = static_cast<double>(sum);
  };
  return WalkSamples<T>(setting, {solution.dataset_qz, 0, solution.dataset_qz.size}, rules, refuse, store);
}

/// The curve without resolution, into dataset_Rp. Points without an angle keep their value.
template <Number T>
WalkEnd WalkFast(CSolution& solution, const WalkSetting<T>& setting) {
  const auto store = [&](std::int32_t i, const T& value, const T&) {
    if (IsAlgorithm(setting.options.algorithm)) solution.dataset_Rp[i] = static_cast<double>(value);
  };
  return WalkOnce<T>(setting, solution.dataset_qz, IsOutOfReach<T>, store);
}

/// Calls call(rules) with the samples given, or else with those of the state's resolution.
template <Number T, class Call>
auto WithRules(const CState& state, const PointRules* rules, Call call) {
  return rules != nullptr ? call(*rules) : call(UniformRules<T>{RuleOfResolution<T>(state.resolution)});
}

template <Number T>
void FoldCurve(CSolution& solution, double resolution) {
  const ResolutionRule<T> rule = FullRule<T>(resolution);
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    solution.dataset_R0[i] = static_cast<double>(FoldResolution(solution, i, rule).Rp);
  }
}

}  // namespace curve_detail

template <class T>
std::int32_t CalcReflectivityCurve(CSolution& solution, CState& state, CurveCompanion* companion) {
  BringUpToDate(state, companion);
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  SizeCurve(solution.dataset_R0, solution.dataset_qz.size, 1.0);
  SizeCurve(solution.dataset_Rp, solution.dataset_qz.size, 1.0);
  const T k0 = WavevectorFromLambda(T(state.lambda));
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  SampleBlock<T> block(false);
  const WalkSetting<T> setting{profile, k0, options, block};

  const PointRules* rules = curve_detail::RulesOf(companion, state);
  const bool fast = state.fastresolution && rules == nullptr;
  const auto exact = [&](const auto& each) { return curve_detail::WalkExact<T>(solution, each, setting); };
  const WalkEnd end =
      fast ? curve_detail::WalkFast<T>(solution, setting) : curve_detail::WithRules<T>(state, rules, exact);
  if (end.error && options.algorithm == kMatrixTwo) std::rethrow_exception(end.error);
  if (end.error) return ReturnCode::kSuccess;
  if (end.out_of_reach) return fast ? ReturnCode::kWrongDataPoints : ReturnCode::kSuccess;
  if (fast) curve_detail::FoldCurve<T>(solution, state.resolution);
  FinishSolution(solution, state.mulqz4, state.polcorrection, state.averaging);
  return ReturnCode::kSuccess;
}

}  // namespace tolvik::engine
