// SPDX-License-Identifier: GPL-2.0-or-later
// Restores the start of an evaluation.
#pragma once

#include "tolvik/state.h"

namespace tolvik::analysis {

/// Restores all numbers of a copy of base that fit variables, scripts, tables and calculations change.
/// Texts, columns of datasets and rows of tables stay; nothing is allocated.
void RestoreNumbers(const CState& base, CState& state);

}  // namespace tolvik::analysis
