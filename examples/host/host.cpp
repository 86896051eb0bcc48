// SPDX-License-Identifier: GPL-2.0-or-later
// A front end in one file: loads a state, shows it on the page of the server, steps a fit and hands each new model to
// the page.
//
//   tolvik_host STATE [STEPS]
#include <tolvik/state_file.h>
#include <tolvik/tolvik.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

constexpr int kDefaultSteps = 20;

// Steps the fit and shows the model after each step.
void StepFit(tolvik::CState& state, int steps) {
  FitNewDLL(&state);
  for (int i = 0; i < steps; ++i) {
    FitIterateDLL();
    std::printf("step %d: error %e\n", i, FitGetLastErrorDLL());
    tolvik::CState* fitted = nullptr;
    FitGetFitStateDLL(&fitted);
    if (fitted != nullptr) StartWebserver(fitted);
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2) {
    std::fputs("usage: tolvik_host STATE [STEPS]\n", stderr);
    return 1;
  }
  tolvik::CState state;  // the host owns it; the library works on copies
  if (!tolvik::LoadState(state, argv[1])) {
    std::fprintf(stderr, "%s cannot be loaded\n", argv[1]);
    return 1;
  }
  StartWebserver(&state);
  if (!state.fitvariables.IsEmpty()) StepFit(state, argc > 2 ? std::atoi(argv[2]) : kDefaultSteps);
  std::puts("The page stays until this program is stopped (Ctrl-C).");
  std::fflush(stdout);
  pause();
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "the calculation failed: %s\n", error.what());
  return 1;
}
