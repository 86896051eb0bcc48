// SPDX-License-Identifier: GPL-2.0-or-later
// Derivatives of single angles by dual numbers through the templates of the algorithms: the plain way, which
// defines what the fast one must give, and the fallback for angles that lanes can't do.
#pragma once

#include <cstdint>
#include <span>

#include "engine/curve/jacobian.h"

namespace tolvik::engine {

/// Derivatives of the intensity of a ray, 1 or 2, at some nodes of a task, all of which have an angle.
/// rows: [place in nodes][parameters + 1]: by each parameter of the chain, and last by the sine of the angle,
/// NaN at the sine 0. Terms that move nodes have no part in it.
void CalcDualRows(const GradientTask& task, int ray, std::span<const std::int32_t> nodes, double* rows);

}  // namespace tolvik::engine
