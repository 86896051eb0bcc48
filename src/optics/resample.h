// SPDX-License-Identifier: GPL-2.0-or-later
// A thinner grid in a window of a table, finer where the curve bends.
#pragma once

#include <cstdint>

#include "tolvik/tables.h"

namespace tolvik {

/// The largest size of ResampleColumnTable; larger than any table in practice.
inline constexpr std::int32_t kMostResampledPoints = 1000000;

/// Replaces the rows between emin and emax by a grid of that step, refined to `target` rows where linear
/// interpolation on the grid is farthest from the table: again and again the interval with the largest sum of
/// squared differences at each 0.1 eV, divided by its width, gets its midpoint. Energies in eV.
/// The table does not change when grid and table agree everywhere before `target` is reached, when there is
/// no window (emin < emax and step > 0 finite, at least one step) or the grid or the sampling would have more
/// than kMostResampledPoints points.
void ResampleColumnTable(CColumnTable& table, double emin, double emax, double step, std::int32_t target);

}  // namespace tolvik
