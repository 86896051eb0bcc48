// SPDX-License-Identifier: GPL-2.0-or-later
// The commands that fit a state without a front end.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/map_curves.h"
#include "tolvik/state.h"

namespace tolvik {

/// Runs one step of a fit. False after an exception, which is told on standard output.
bool TryFitStep(const std::function<void()>& step);

/// -fit: fits the first state, one line of error for each step, and every tenth step saves all states, each
/// to its file name with ".new" behind it; only the first has changed. Runs until the process is stopped;
/// comes back only after an exception in a step. Missing optical tables end the process. names: the state
/// files by the index of states.
void FitCommand(std::vector<CState>& states, const std::vector<std::string>& names);

/// -bruteforcefit: the error of the state on a grid of 21 points between the bounds of each of the variables
/// 0, 1 and 3. Prints each error that is lower than all before to standard error. The state stays as it is; a
/// variable that the state does not have is left out.
void BruteForceFitCommand(const CState& state);

/// -fitmap: fits the state of the map to each curve of constenergy on its own, from the same start values but
/// the optical constants of the tables at its energy. Prints one line for each curve: energy, multiplicator,
/// thickness of layer 1, roughness of layers 0 to 2, delta and beta of layers 0 to 2, error, points, standard
/// deviations of variables 0 and 1; what the state does not have prints as nan. The calculated curves go to
/// fitdatasets and behind constenergy.
void FitMapCommand(CMapFile& map);

/// 500 steps of a fit of the state, whose variables, their deviations and the model take the result; then one
/// run of its script. False after an exception in a step.
bool RunFitSteps(CState& state);

}  // namespace tolvik
