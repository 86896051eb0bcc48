// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>

#include "engine/curve.h"
#include "engine/finish.h"
#include "engine/grazing.h"
#include "engine/intensity.tpp"
#include "engine/profile.tpp"
#include "engine/resolution.tpp"
#include "engine/samples.h"
#include "engine/status.h"
#include "optics/layer_constants.h"
#include "script/host.h"

namespace tolvik::engine {

namespace curve_detail {

/// How the walk over the grid ended.
enum class Walk { kComplete, kOutOfReach, kStopped };

/// Old values stay in a curve that has the right size already.
inline void SizeCurve(CArray<double>& curve, std::int32_t points, double value) {
  if (curve.size != points) curve.Assign(points, value);
}

inline void RunScriptOnce(CState& state) {
  ScriptSession script(state);
  script.Run();
}

/// The exception of a batch ends a curve silently, but that of algorithm 2 travels on.
template <Number T>
Walk StopAt(const std::exception_ptr& error, const IntensityOptions<T>& options) {
  if (options.algorithm == kMatrixTwo) std::rethrow_exception(error);
  return Walk::kStopped;
}

template <Number T>
Walk WalkExact(CSolution& solution, const CState& state, Profile<T>& profile, const T& k0) {
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  const ResolutionRule<T> rule = RuleOfResolution<T>(state.resolution);
  const auto stops = [](const T& s) { return IsOutOfReach(s) || isnan(s); };
  SampleBlock<T> block(false);
  Walk walk = Walk::kComplete;
  for (std::int32_t begin = 0; begin < solution.dataset_qz.size && walk == Walk::kComplete;) {
    const std::int32_t end = std::min(solution.dataset_qz.size - begin, kPointsPerBlock) + begin;
    block.Clear();
    for (std::int32_t i = begin; i < end && walk == Walk::kComplete; ++i) {
      if (!block.GatherPoint(T(solution.dataset_qz[i]), rule, k0, stops)) walk = Walk::kStopped;
    }
    const std::exception_ptr error = block.Calculate(profile, k0, options);
    block.Sum([&](std::int32_t point, const T& sum, const T&, bool) {
      solution.dataset_R0[begin + point] = static_cast<double>(sum);
    });
    if (error) return StopAt(error, options);
    begin = end;
  }
  return walk;
}

/// The curve without resolution, into dataset_Rp. Points without an angle keep their value.
template <Number T>
Walk WalkOnce(CSolution& solution, const CState& state, Profile<T>& profile, const T& k0) {
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  SampleBlock<T> block(false);
  CArray<std::int32_t> points;
  points.Assign(kPointsPerBlock, 0);
  Walk walk = Walk::kComplete;
  for (std::int32_t i = 0; i < solution.dataset_qz.size && walk == Walk::kComplete;) {
    block.Clear();
    std::int32_t count = 0;
    for (; i < solution.dataset_qz.size && count < kPointsPerBlock; ++i) {
      const T s = GrazingSine(T(solution.dataset_qz[i]), k0);
      if (IsOutOfReach(s)) {
        walk = Walk::kOutOfReach;
        break;
      }
      if (!HasAngle(s) || !IsAlgorithm(options.algorithm)) continue;
      points[count++] = i;
      block.BeginPoint();
      block.Add(s, T(1.0));
    }
    const std::exception_ptr error = block.Calculate(profile, k0, options);
    block.Sum([&](std::int32_t point, const T& value, const T&, bool complete) {
      if (complete) solution.dataset_Rp[points[point]] = static_cast<double>(value);
    });
    if (error) return StopAt(error, options);
  }
  return walk;
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
std::int32_t CalcReflectivityCurve(CSolution& solution, CState& state) {
  using curve_detail::Walk;
  if (state.ocautomatic != 0) SetLayerConstantsForEnergy(state);
  curve_detail::RunScriptOnce(state);
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  curve_detail::SizeCurve(solution.dataset_R0, solution.dataset_qz.size, 1.0);
  curve_detail::SizeCurve(solution.dataset_Rp, solution.dataset_qz.size, 1.0);
  const T k0 = WavevectorFromLambda(T(state.lambda));

  const Walk walk = state.fastresolution ? curve_detail::WalkOnce<T>(solution, state, profile, k0)
                                         : curve_detail::WalkExact<T>(solution, state, profile, k0);
  if (walk == Walk::kOutOfReach) return kWrongDataPoints;
  if (walk == Walk::kStopped) return kSuccess;
  if (state.fastresolution) curve_detail::FoldCurve<T>(solution, state.resolution);
  FinishSolution(solution, state.mulqz4, state.polcorrection, state.averaging);
  return kSuccess;
}

}  // namespace tolvik::engine
