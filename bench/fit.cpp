// SPDX-License-Identifier: GPL-2.0-or-later
// How fast do fits step, and how much of an evaluation is not the reflectivity kernel? The film has three
// layers and 200 points with nine resolution samples each.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench/film_fit.h"
#include "fit/evolution.h"

namespace tolvik {
namespace {

using bench::MakeFilmFit;

CState MakeState() {
  CState state = MakeFilmFit();
  state.evo_elite = 4;
  state.evo_parents = 40;
  state.evo_takeeliteasparents = true;
  state.evo_mixing = 20;
  state.evo_probability = 20;
  state.evo_range = 5;
  return state;
}

void Evaluation(benchmark::State& run) {
  CMultiFit fit(MakeState());
  for (auto _ : run) benchmark::DoNotOptimize(fit.CalcError(fit.fitvariables));
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(Evaluation);

// All of an evaluation but the kernel.
void EvaluationWithoutKernel(benchmark::State& run) {
  CMultiFit fit(MakeFilmFit(bench::kUnreachableEnergy));
  for (auto _ : run) benchmark::DoNotOptimize(fit.CalcError(fit.fitvariables));
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(EvaluationWithoutKernel);

void TextbookLoop(benchmark::State& run) {
  const CState state = MakeState();
  for (auto _ : run) benchmark::DoNotOptimize(bench::TextbookCurve(state, state.datasets[0].dataset_qz, 0));
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(TextbookLoop);

void SimplexSteps(benchmark::State& run) {
  CMultiFit fit(MakeState());
  fit.RestartFit();
  for (auto _ : run) fit.SimplexStep();
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(SimplexSteps);

void LevenbergRun(benchmark::State& run) {
  CMultiFit fit(MakeState());
  for (auto _ : run) {
    fit.fitvariables = MakeState().fitvariables;
    fit.RestartFit();
    fit.LevenbergStep();
  }
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(LevenbergRun)->Unit(benchmark::kMillisecond);

// Discards its output, so that it does not mix with the figures.
void GenerationOfFifty(benchmark::State& run) {
  CEvolution evolution(MakeState());
  std::fflush(stdout);
  std::FILE* const standard_output = stdout;
  std::FILE* const nowhere = std::fopen("/dev/null", "w");
  if (nowhere != nullptr) stdout = nowhere;
  for (auto _ : run) evolution.Iterate();
  stdout = standard_output;
  if (nowhere != nullptr) std::fclose(nowhere);
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(GenerationOfFifty)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tolvik
