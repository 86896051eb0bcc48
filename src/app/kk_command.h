// SPDX-License-Identifier: GPL-2.0-or-later
// -fitkk: tests how well a measured absorption edge is recovered from noisy optical constants.
#pragma once

#include <string>

#include "tolvik/tables.h"

namespace tolvik {

/// The command on one table file of energy, delta, beta (eV). Resamples it from 800 to 900 eV, sets beta to
/// zero there, and fits it by Levenberg-Marquardt to the table itself with multiplicative noise of 20 %, the
/// same in every run. Prints each iteration to standard error and replaces "fitdb.txt" by the present delta
/// and beta. Runs until the process is stopped; returns only after an exception.
void FitKramersKronigCommand(const std::string& path);

/// Multiplies both columns of each row by one random factor of the standard `rand`, 0.8 to 1.2.
void AddMultiplicativeNoise(CColumnTable& table);

}  // namespace tolvik
