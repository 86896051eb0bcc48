// SPDX-License-Identifier: GPL-2.0-or-later
// The last step of every curve: display corrections, asymmetry, smoothing.
#pragma once

#include <cstdint>

#include "tolvik/dataset.h"

namespace tolvik::engine {

/// Finishes a calculated curve in place, in this order.
/// mulqz4 non-zero: R0, Rp and Rm times qz⁴.
/// polcorrection non-zero: where a ray of the record itself is pure pi, its curves over cos²(2θ): R0 and Rp
/// belong to ray one, Rm to ray two. The energy is that of the point, or datasetenergy without dataset_eng.
/// With both Rp and Rm: dataset_A = (Rp - Rm) / (Rp + Rm), 0 where the sum is 0. The caller sizes dataset_A.
/// averaging a non-zero: each curve becomes the mean over the points i - a .. i + a, fewer at the ends; so
/// the asymmetry is smoothed, not calculated again. No index at all, as with a negative a, gives NaN. Works
/// in double in all precisions, since the record holds doubles.
void FinishSolution(CSolution& solution, std::int32_t mulqz4, std::int32_t polcorrection,
                    std::int32_t averaging);

}  // namespace tolvik::engine
