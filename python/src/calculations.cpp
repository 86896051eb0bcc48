// SPDX-License-Identifier: GPL-2.0-or-later
#include "calculations.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <vector>

#include "engine/curve/calculations.h"
#include "engine/threads/worker_pool.h"
#include "script/host.h"

namespace tolvik::python {
namespace {

// A NaN that no calculation makes: a point that still holds it was not reached.
constexpr std::uint64_t kUntouchedBits = 0x7ff8'546f'6c76'696bu;
const double kUntouched = std::bit_cast<double>(kUntouchedBits);

std::int32_t FirstUntouched(const CArray<double>& curve) {
  for (std::int32_t i = 0; i < curve.size; ++i) {
    if (std::bit_cast<std::uint64_t>(curve[i]) == kUntouchedBits) return i;
  }
  return curve.size - 1;
}

// No asymmetry has this value, so a different one shows that the finishing step has run.
constexpr double kUnfinished = 42;

// Points times layers that are worth a thread: about a millisecond of the Parratt recursion on one core.
constexpr std::int64_t kWorthAThread = 20000;

std::int32_t CountParts(const CSolution& curve, const CState& state, std::int32_t threads) {
  if (state.averaging != 0 || state.fastresolution || state.ocautomatic != 0 || !IsScriptIdle(state))
    return 1;
  const std::int64_t work = std::int64_t{curve.dataset_qz.size} * state.layers.size;
  const auto worth = static_cast<std::int32_t>(std::min<std::int64_t>(work / kWorthAThread, 1024));
  return worth < 2 ? 1 : engine::CountWorkers(worth, threads);
}

}  // namespace

bool CheckReach(std::span<const double> q, const CState& state, double lambda, Outcome& outcome) {
  const double limit = 2 * (2 * std::numbers::pi / lambda);
  const double width = state.fastresolution ? 0 : std::abs(state.resolution);
  for (std::size_t i = 0; i < q.size(); ++i) {
    if (std::abs(q[i]) + width < limit && std::isfinite(limit)) continue;  // false for NaN
    outcome.code = ReturnCode::kWrongDataPoints;
    outcome.index = static_cast<std::int32_t>(i);
    outcome.value = q[i];
    outcome.width = width;
    outcome.limit = limit;
    return false;
  }
  return true;
}

void CalcCurve(CSolution& curve, CState& state, bool both_rays, Outcome& outcome) {
  const std::int32_t points = curve.dataset_qz.size;
  if (points == 0) return;
  const std::span<const double> q(curve.dataset_qz.data, static_cast<std::size_t>(points));
  if (!CheckReach(q, state, state.lambda, outcome)) return;
  curve.dataset_R0.Assign(points, kUntouched);
  curve.dataset_Rp.Assign(points, both_rays ? kUntouched : 1.0);
  curve.dataset_Rm.Assign(both_rays ? points : 1, both_rays ? kUntouched : 1.0);
  curve.dataset_A.Assign(both_rays ? points : 1, kUnfinished);
  ScriptNotes notes(outcome);
  outcome.code = both_rays ? engine::CalcAsymmetry(curve, state, &notes)
                           : engine::CalcReflectivity(curve, state, &notes);
  if (outcome.code == ReturnCode::kSuccess && curve.dataset_A[0] != kUnfinished) return;
  // The script may have moved the wavelength or widened the resolution.
  if (!CheckReach(q, state, state.lambda, outcome)) return;
  outcome.code = ReturnCode::kUnknownError;
  outcome.index = FirstUntouched(both_rays ? curve.dataset_Rp : curve.dataset_R0);
}

void CalcCurveInThreads(CSolution& curve, CState& state, bool both_rays, std::int32_t threads,
                        Outcome& outcome) {
  const std::int32_t parts = CountParts(curve, state, threads);
  if (parts == 1) return CalcCurve(curve, state, both_rays, outcome);
  const std::int32_t points = curve.dataset_qz.size;
  const auto begin_of = [&](std::int32_t part) {
    return static_cast<std::int32_t>(std::int64_t{points} * part / parts);
  };
  std::vector<CSolution> curves(static_cast<std::size_t>(parts));
  std::vector<Outcome> outcomes(static_cast<std::size_t>(parts));
  engine::RunTasks(
      parts,
      [&](std::int32_t part, std::int32_t) {
        const std::int32_t begin = begin_of(part);
        CSolution& mine = curves[static_cast<std::size_t>(part)];
        mine.dataset_qz.Assign(begin_of(part + 1) - begin, 0.0);
        std::copy_n(curve.dataset_qz.begin() + begin, mine.dataset_qz.size, mine.dataset_qz.begin());
        CState copy = state;
        CalcCurve(mine, copy, both_rays, outcomes[static_cast<std::size_t>(part)]);
      },
      threads);
  using Column = CArray<double> CSolution::*;
  for (const Column column :
       {&CSolution::dataset_R0, &CSolution::dataset_Rp, &CSolution::dataset_Rm, &CSolution::dataset_A}) {
    if (!both_rays && column != &CSolution::dataset_R0) continue;
    (curve.*column).Assign(points, 0.0);
    for (std::int32_t part = 0; part < parts; ++part) {
      const CArray<double>& mine = curves[static_cast<std::size_t>(part)].*column;
      std::copy(mine.begin(), mine.end(), (curve.*column).begin() + begin_of(part));
    }
  }
  for (std::int32_t part = 0; part < parts; ++part) {
    outcome = outcomes[static_cast<std::size_t>(part)];
    if (outcome.code == ReturnCode::kSuccess) continue;
    if (outcome.index >= 0) outcome.index += begin_of(part);
    return;
  }
}

}  // namespace tolvik::python
