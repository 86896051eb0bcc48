// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/curve/curve.tpp"
#include "engine/curve/dichroism.h"
#include "engine/curve/escan.tpp"

namespace tolvik::engine {

namespace dichroism_detail {

inline void SizeCurves(CSolution& solution) {
  SizeCurve(solution.dataset_R0, solution.dataset_qz.size, 1.0);
  SizeCurve(solution.dataset_Rp, solution.dataset_qz.size, 1.0);
  SizeCurve(solution.dataset_Rm, solution.dataset_qz.size, 1.0);
  SizeCurve(solution.dataset_A, solution.dataset_qz.size, 0.0);
}

/// The points begin .. end - 1 by the samples of their rules.
template <Number T, class Rules>
std::int32_t CalcPoints(CSolution& solution, std::int32_t begin, std::int32_t end, const Rules& rules,
                        const WalkSetting<T>& setting) {
  const auto refuse = [](const T& s) { return s > T(1.0); };
  const auto store = [&](std::int32_t i, const T& plus, const T& minus, bool whole) {
    if (!whole) return;
    solution.dataset_Rp[i] = static_cast<double>(plus);
    solution.dataset_Rm[i] = static_cast<double>(minus);
  };
  return CodeOf(WalkSamples<T>(setting, {solution.dataset_qz, begin, end}, rules, refuse, store));
}

/// Point i, with its profile and wavenumber.
template <class T>
struct PointAndProfile {
  std::int32_t i;
  Profile<T>& profile;
  const T& k0;
};

template <Number T, class Rules>
std::int32_t CalcPoint(const CState& state, const PointAndProfile<T>& point, const Rules& rules,
                       CSolution& solution) {
  SampleBlock<T> block(true);
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  return CalcPoints<T>(solution, point.i, point.i + 1, rules, {point.profile, point.k0, options, block});
}

/// One sample of weight 1 at qz itself.
template <Number T>
UniformRules<T> BareRule() {
  return {RuleOfResolution<T>(0.0)};
}

/// All points of the grid once; points without an angle keep their values.
template <Number T>
std::int32_t CalcOnce(CSolution& solution, const WalkSetting<T>& setting) {
  const auto refuse = [](const T& s) { return s >= T(1.0); };
  const auto store = [&](std::int32_t i, const T& plus, const T& minus) {
    solution.dataset_Rp[i] = static_cast<double>(plus);
    solution.dataset_Rm[i] = static_cast<double>(minus);
  };
  return CodeOf(WalkOnce<T>(setting, solution.dataset_qz, refuse, store));
}

template <Number T>
void FoldCurves(CSolution& solution, double resolution) {
  CSolution once;
  once.dataset_qz = solution.dataset_qz;
  once.dataset_Rp = solution.dataset_Rp;
  once.dataset_Rm = solution.dataset_Rm;
  const ResolutionRule<T> rule = FullRule<T>(resolution);
  for (std::int32_t i = 0; i < once.dataset_qz.size; ++i) {
    const InterpolatedPoint<T> folded = FoldResolution(once, i, rule);
    solution.dataset_Rp[i] = static_cast<double>(folded.Rp);
    solution.dataset_Rm[i] = static_cast<double>(folded.Rm);
  }
}

}  // namespace dichroism_detail

template <Number T>
std::int32_t CalcDichroicPoint(const CState& state, Profile<T>& profile, std::int32_t i, const T& k0,
                               CSolution& solution) {
  const UniformRules<T> rules{RuleOfResolution<T>(state.resolution)};
  return dichroism_detail::CalcPoint<T>(state, {i, profile, k0}, rules, solution);
}

template <Number T>
std::int32_t CalcDichroicPointFast(const CState& state, Profile<T>& profile, std::int32_t i, const T& k0,
                                   CSolution& solution) {
  return dichroism_detail::CalcPoint<T>(state, {i, profile, k0}, dichroism_detail::BareRule<T>(), solution);
}

template <class T>
std::int32_t CalcAsymmetryCurve(CSolution& solution, CState& state, CurveCompanion* companion) {
  BringUpToDate(state, companion);
  dichroism_detail::SizeCurves(solution);
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  const T k0 = WavevectorFromLambda(T(state.lambda));
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  SampleBlock<T> block(true);
  const WalkSetting<T> setting{profile, k0, options, block};

  const PointRules* rules = curve_detail::RulesOf(companion, state);
  const bool fast = state.fastresolution && rules == nullptr;
  const auto exact = [&](const auto& each) {
    return dichroism_detail::CalcPoints<T>(solution, 0, solution.dataset_qz.size, each, setting);
  };
  const std::int32_t code = fast ? dichroism_detail::CalcOnce<T>(solution, setting)
                                 : curve_detail::WithRules<T>(state, rules, exact);
  if (code != ReturnCode::kSuccess) return code;
  if (fast) dichroism_detail::FoldCurves<T>(solution, state.resolution);
  FinishSolution(solution, state.mulqz4, state.polcorrection, state.averaging);
  return ReturnCode::kSuccess;
}

template <class T>
std::int32_t CalcDicEScanCurve(CSolution& solution, CState& state, CurveCompanion* companion) {
  dichroism_detail::SizeCurves(solution);
  ScriptSession script(state);
  RunScript(script, companion);
  Profile<T> profile;
  const auto point = [&](std::int32_t i, double lambda) {
    PrepareProfile<T>(state, profile);
    const T k0 = WavevectorFromLambda(T(lambda));
    const PointRules* rules = curve_detail::RulesOf(companion, state);
    return curve_detail::WithRules<T>(state, rules, [&](const auto& each) {
      return dichroism_detail::CalcPoint<T>(state, {i, profile, k0}, each, solution);
    });
  };
  const std::int32_t code = ScanEnergies(solution, state, script, companion, point);
  if (code == ReturnCode::kSuccess) {
    FinishSolution(solution, state.mulqz4, state.polcorrection, state.averaging);
  }
  return code;
}

}  // namespace tolvik::engine
