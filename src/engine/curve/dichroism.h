// SPDX-License-Identifier: GPL-2.0-or-later
// Dichroism: the reflectivity of two polarisations, or of two opposite magnetisations.
//
// dataset_Rp is the first ray with the magnetisation of the state, dataset_Rm the second ray; in algorithm 0
// the magnetisation is reversed for the second ray. The finishing step calculates dataset_A = (Rp - Rm) / (Rp
// + Rm).
#pragma once

#include <cstdint>

#include "engine/curve/companion.h"
#include "engine/curve/walk.h"
#include "engine/profile/layer.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Point i of both curves by the samples of the resolution, into dataset_Rp and dataset_Rm, which must be as
/// long as the grid. Samples without an angle add nothing; with an unknown algorithm both values are 0.
/// Returns 1; 2 for a sample with qz / (2 k0) > 1 (exactly 1 passes, and there is no such test below 0); 5 at
/// an exception. With 2 and 5 the point keeps its values.
template <Number T>
std::int32_t CalcDichroicPoint(const CState& state, Profile<T>& profile, std::int32_t i, const T& k0,
                               CSolution& solution);

/// The same for exactly one sample at the point's qz, without the resolution.
template <Number T>
std::int32_t CalcDichroicPointFast(const CState& state, Profile<T>& profile, std::int32_t i, const T& k0,
                                   CSolution& solution);

/// Both curves on the grid dataset_qz at the state's energy, with optical constants (ocautomatic), script and
/// profile as for a reflectivity curve. With fastresolution both curves are calculated once and folded.
/// Returns 1, or the code of the point that ended it, without the finishing step; on the fast path 2 for a
/// point with qz / (2 k0) >= 1. dataset_R0 is sized only. companion: as for CalcReflectivityCurve.
template <class T>
std::int32_t CalcAsymmetryCurve(CSolution& solution, CState& state, CurveCompanion* companion = nullptr);

/// Both curves at the pairs of dataset_qz and dataset_eng, as an energy scan; maprange is not read.
template <class T>
std::int32_t CalcDicEScanCurve(CSolution& solution, CState& state, CurveCompanion* companion = nullptr);

}  // namespace tolvik::engine
