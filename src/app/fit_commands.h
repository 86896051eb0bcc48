// SPDX-License-Identifier: GPL-2.0-or-later
// The commands that fit a state without a front end.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tolvik/state.h"

namespace tolvik {

/// Runs one step of a fit. False after an exception, which is reported on standard output.
bool TryFitStep(const std::function<void()>& step);

/// -fit: fits the first state, prints one line of error per step, and saves all states every tenth step, each
/// to its file name with ".new" appended; only the first has changed. Runs until the process is stopped;
/// returns only after an exception in a step. Missing optical tables end the process. names: the state files
/// by the index of states.
void FitCommand(std::vector<CState>& states, const std::vector<std::string>& names);

/// -bruteforcefit: the error of the state on a grid of 21 points between the bounds of each of the variables
/// 0, 1 and 3. Prints each error that is lower than all before to standard error. The state does not change;
/// missing variables are left out.
void BruteForceFitCommand(const CState& state);

/// 500 steps of a fit of the state, whose variables, their deviations and the model get the result; then one
/// run of its script. False after an exception in a step.
bool RunFitSteps(CState& state);

}  // namespace tolvik
