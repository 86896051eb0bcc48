// SPDX-License-Identifier: GPL-2.0-or-later
// Derivatives of single angles by dual numbers through the templates of the algorithms: the plain way, which
// is the reference of the fast one, and its fallback for angles that lanes cannot decide.
#pragma once

#include <cstdint>
#include <span>

#include "engine/curve/jacobian.h"

namespace tolvik::engine {

/// Derivatives of the intensity of a ray, 1 or 2, at some nodes of a task, all of which have an angle.
/// rows: [place in nodes][parameters + 1]: by each parameter of the chain, and last by the sine of the angle,
/// NaN at the sine 0. Terms that move nodes are not used.
void CalcDualRows(const GradientTask& task, int ray, std::span<const std::int32_t> nodes, double* rows);

}  // namespace tolvik::engine
