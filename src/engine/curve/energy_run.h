// SPDX-License-Identifier: GPL-2.0-or-later
// Points of a scan that share one energy.
//
// A scan evaluates tables, tensors and profile at the energy of each point. In a map hundreds of points share
// an energy and need only one profile.
#pragma once

#include <cstdint>
#include <vector>

#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::engine {

/// Points of one energy: from begin to end - 1 of EnergyRuns::points.
struct EnergyRun {
  std::int32_t begin, end;
};

/// All points of a scan, ordered by their energies.
struct EnergyRuns {
  std::vector<std::int32_t> points;  ///< indices into the scan; points of equal energy keep their order
  std::vector<EnergyRun> runs;       ///< the energies in the order of their first points
};

/// Whether the order of points has no effect: no script that remembers, a wavelength of its own for each
/// point, and tables whose values depend on the energy only.
bool MayReorderPoints(const CState& state);

/// Collects the points of equal energies in runs of at most longest points. False, with unspecified runs,
/// where energies hardly repeat, or where a point has no energy or no value. Throws std::bad_alloc.
bool CollectEnergyRuns(const CSolution& scan, std::int32_t longest, EnergyRuns& runs);

/// Calculates dataset_R0 of points that share the energy dataset_eng[0], each as CalcEScanDLL calculates a
/// scan of this point alone on a state whose tables were not used yet. For a state that passes
/// MayReorderPoints; it is left at that energy.
template <class T>
void CalcEnergyRun(CSolution& points, CState& state);

/// CalcEnergyRun in the number type of the state's precision.
void CalcRunOfPoints(CSolution& points, CState& state);

}  // namespace tolvik::engine
