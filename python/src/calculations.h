// SPDX-License-Identifier: GPL-2.0-or-later
// Curves of a working copy, with the checks that the calculation itself does not make.
#pragma once

#include <cstdint>
#include <span>

#include "tolvik/dataset.h"
#include "tolvik/state.h"
#include "working_copy.h"

namespace tolvik::python {

/// Whether every qz is finite and |qz| plus the half width of the resolution below 2 k0 at that wavelength;
/// false with the first point that is not in outcome. A state without a wavelength fails at once.
bool CheckReach(std::span<const double> q, const CState& state, double lambda, Outcome& outcome);

/// One curve: dataset_R0, or dataset_Rp and dataset_Rm with both_rays, on dataset_qz. A calculation that
/// stops in silence ends in outcome, too.
void CalcCurve(CSolution& curve, CState& state, bool both_rays, Outcome& outcome);

/// CalcCurve with the points split between threads where that pays and where no point depends on its
/// neighbours; the result is the same. threads: the most to use, 0 as many as the process may.
void CalcCurveInThreads(CSolution& curve, CState& state, bool both_rays, std::int32_t threads,
                        Outcome& outcome);

}  // namespace tolvik::python
