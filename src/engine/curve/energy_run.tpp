// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/curve/energy_run.h"
#include "engine/curve/escan.tpp"
#include "optics/column_table.h"

namespace tolvik::engine {

namespace energy_run_detail {

inline void MoveCursorsBelow(CState& state, double energy) {
  for (COpticalTable& material : state.opticaltables) {
    for (CColumnTable* table : {&material.db, &material.m, &material.e, &material.ff}) {
      MoveCursorBelow(*table, energy);
    }
  }
}

/// A value that the finishing step ignores.
struct StoppedPoint {
  std::int32_t index;
  double value;
};

/// The points from `first` on, until one ends the walk. Returns the point after the last one calculated.
template <Number T>
std::int32_t CalcPointsFrom(std::int32_t first, CSolution& points, const CState& state,
                            const WalkSetting<T>& setting, std::vector<StoppedPoint>& stopped) {
  std::int32_t last = first;
  const auto store = [&](std::int32_t i, const T& sum, const T&, bool) {
    points.dataset_R0[i] = static_cast<double>(sum);
    last = i;
  };
  const UniformRules<T> rules{RuleOfResolution<T>(state.resolution)};
  const WalkEnd end = WalkSamples<T>(setting, {points.dataset_qz, first, points.dataset_qz.size}, rules,
                                     IsOutOfReach<T>, store);
  if (!end.Complete()) stopped.push_back({last, points.dataset_R0[last]});
  return last + 1;
}

template <Number T>
void CalcPoints(CSolution& points, const CState& state, double lambda, std::vector<StoppedPoint>& stopped) {
  const T k0 = WavevectorFromLambda(T(lambda));
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  const IntensityOptions<T> options = OptionsOfState<T>(state);
  SampleBlock<T> block(false);
  for (std::int32_t i = 0; i < points.dataset_qz.size;) {
    i = CalcPointsFrom<T>(i, points, state, {profile, k0, options, block}, stopped);
  }
}

}  // namespace energy_run_detail

template <class T>
void CalcEnergyRun(CSolution& points, CState& state) {
  using namespace energy_run_detail;
  state.lambda = LambdaFromEnergy(points.dataset_eng[0]);
  const double lambda = state.lambda;
  MoveCursorsBelow(state, EnergyFromLambda(lambda));
  std::vector<StoppedPoint> stopped;
  if (SetLayerConstantsForEnergy(state)) {
    ScriptSession(state).Run();
    CalcPoints<T>(points, state, lambda, stopped);
  }
  FinishSolution(points, state.mulqz4, state.polcorrection, 0);  // there is nothing to average at one point
  for (const StoppedPoint& point : stopped) points.dataset_R0[point.index] = point.value;
}

}  // namespace tolvik::engine
