// SPDX-License-Identifier: GPL-2.0-or-later
// Energy scans: reflectivity point by point, each at an energy of its own.
#pragma once

#include <cstdint>

#include "engine/curve/companion.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Calculates dataset_R0 at the pairs of dataset_qz and dataset_eng in the number type T. The script runs
/// once for the scan and again for each point. For each point lambda is set to its energy, where it stays
/// after the last one; optical constants, script and profile follow. With maprange.keeplambda the profile and
/// k0 use the wavelength before the scan instead. A point whose tables fail, or without an energy, keeps its
/// value. Returns 1; 2 at a sample with |qz / (2 k0)| >= 1; 5 at an exception of a sample. 2 and 5 end the
/// scan without the finishing step, with the partial sum in the present point. companion: as for
/// CalcReflectivityCurve.
template <class T>
std::int32_t CalcEScanCurve(CSolution& solution, CState& state, CurveCompanion* companion = nullptr);

}  // namespace tolvik::engine
