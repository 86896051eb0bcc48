// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/fit_commands.h"

#include <cstdio>
#include <exception>

#include "app/long_run.h"
#include "app/startup.h"
#include "fit/fit_variables.h"
#include "fit/multi_fit.h"
#include "script/host.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

constexpr int kSaveEvery = 10;
constexpr int kMapFitSteps = 500;
constexpr int kGridSteps = 20;
constexpr double kLargeError = 1e99;

void PrintFitSetup(const CState& state) {
  std::printf("size datasets = %i\n", state.datasets.size);
  std::printf("activedatasetindex = %i\n", state.activedatasetindex);
  for (std::int32_t i = 0; i < state.datasets.size; ++i)
    std::printf("title[%i] = %s\n", i, state.datasets[i].datasettitle.CStr());
  std::printf("size fitvariables = %i\n", state.fitvariables.size);
  for (std::int32_t i = 0; i < state.fitvariables.size; ++i)
    std::printf("%i: %i\n", i, state.fitvariables[i].fit_id);
}

// A state that cannot be written, for instance on a full disk, is tried again at the next save.
void SaveStates(const std::vector<CState>& states, const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size() && i < states.size(); ++i) {
    const std::string name = names[i] + ".new";
    std::printf(" Saving state %s\n", name.c_str());
    std::fflush(stdout);
    SaveState(states[i], name);
  }
}

// The point of a grid of 21 between the bounds of a variable.
void SetOnGrid(CArray<CFitVariable>& variables, std::int32_t index, int point) {
  if (index >= variables.size) return;
  CFitVariable& variable = variables[index];
  variable.fit_value = variable.fit_lower_boundary +
                       0.05 * point * (variable.fit_upper_boundary - variable.fit_lower_boundary);
}

}  // namespace

bool TryFitStep(const std::function<void()>& step) {
  try {
    step();
    return true;
  } catch (const std::exception&) {
    std::printf("Error in Fit-routine\n");
    std::fflush(stdout);
    return false;
  }
}

void FitCommand(std::vector<CState>& states, const std::vector<std::string>& names) {
  PrintFitSetup(states[0]);
  BeginLongRun();
  if (states[0].ocautomatic != 0) PrepareLayerConstantsOrExit(states[0]);
  CMultiFit fit(states[0]);
  fit.RestartFit();
  for (long long i = 0;; ++i) {
    if (!TryFitStep([&] { fit.Iterate(); })) return;
    std::printf("iteration=%lli: error=%e\n", i, fit.lasterror);
    std::fflush(stdout);
    if (i % kSaveEvery != 0) continue;
    states[0] = fit.state;
    SaveStates(states, names);
  }
}

void BruteForceFitCommand(const CState& state) {
  CMultiFit fit(state);
  CArray<CFitVariable> variables = state.fitvariables;
  double best = kLargeError;
  std::fprintf(stderr, "number of fit parameters = %i\n", variables.size);
  std::fprintf(stderr, "current error %e\n", best);
  for (int k = 0; k <= kGridSteps; ++k) {
    std::fprintf(stderr, "%i\n", k);
    for (int j = 0; j <= kGridSteps; ++j) {
      for (int i = 0; i <= kGridSteps; ++i) {
        SetOnGrid(variables, 0, i);
        SetOnGrid(variables, 1, j);
        SetOnGrid(variables, 3, k);  // not 2: variable 2 keeps its value
        if (!(fit.CalcError(variables) < best)) continue;
        best = fit.CalcError(variables);
        std::fprintf(stderr, "current error %e\n", best);
      }
    }
  }
}

bool RunFitSteps(CState& state) {
  if (state.ocautomatic != 0) PrepareLayerConstantsOrExit(state);
  CMultiFit fit(state);
  fit.RestartFit();
  for (int i = 0; i < kMapFitSteps; ++i)
    if (!TryFitStep([&] { fit.Iterate(); })) return false;
  state.fitvariables = fit.fitvariables;
  ApplyFitVariables(state);
  if (state.disablescript == 0) ScriptSession(state).Run();
  // The script may have changed the list of variables.
  for (std::int32_t i = 0; i < fit.fitvariables.size && i < state.fitvariables.size; ++i)
    state.fitvariables[i].fit_sigma = fit.fitvariables[i].fit_sigma;
  return true;
}

}  // namespace tolvik
