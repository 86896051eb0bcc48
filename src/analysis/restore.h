// SPDX-License-Identifier: GPL-2.0-or-later
// Back to where an evaluation begins.
#pragma once

#include "tolvik/state.h"

namespace tolvik::analysis {

/// Sets all numbers of a copy of base back that fit variables, scripts, tables and calculations change.
/// Texts, columns of datasets and rows of tables stay; nothing is allocated.
void RestoreNumbers(const CState& base, CState& state);

}  // namespace tolvik::analysis
