// SPDX-License-Identifier: GPL-2.0-or-later
// How fast do fits step, and how much of an evaluation is not the reflectivity kernel? A film of three layers
// on 200 points with nine resolution samples each.
#include <benchmark/benchmark.h>

#include <complex>
#include <cstdio>
#include <numbers>

#include "fit/evolution.h"
#include "fit/multi_fit.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr double kEnergy = 8000;
constexpr double kLambda = 12398.326 / kEnergy;

CState MakeState() {
  CState state;
  state.disablescript = 1;
  state.layers.Assign(3, CLayer());
  state.layers[0].layer_delta = 7.58e-6;
  state.layers[0].layer_beta = 1.77e-7;
  state.layers[0].layer_sigma = 3;
  state.layers[1].layer_d = 150;
  state.layers[1].layer_delta = 2.25e-5;
  state.layers[1].layer_beta = 2.9e-6;
  state.layers[1].layer_sigma = 5;
  state.lambda = kLambda;
  state.resolution = 0.002;
  CDataset dataset;
  dataset.datasetenergy = kEnergy;
  dataset.datasetresolution = state.resolution;
  dataset.datasetactive = 1;
  for (int i = 0; i < 200; ++i) dataset.dataset_qz.Append(0.02 + 0.28 * i / 199);
  CSolution curve = dataset;
  CalcReflectivityDLL(&curve, &state);
  dataset.dataset_R0 = curve.dataset_R0;
  state.datasets.Append(dataset);
  const std::int32_t ids[] = {0, 1, 3};
  const double values[] = {150, 2.25e-5, 5};
  for (int k = 0; k < 3; ++k) {
    CFitVariable variable;
    variable.fit_id = ids[k];
    variable.fit_additional_id = 1;
    variable.fit_value = 1.02 * values[k];
    variable.fit_delta = 0.02 * values[k];
    variable.fit_lower_boundary = 0.5 * values[k];
    variable.fit_upper_boundary = 2 * values[k];
    state.fitvariables.Append(variable);
  }
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

// All of an evaluation but the kernel: at this energy the first point is out of reach, which stops the curve
// at once, while copies, profile and error function stay.
void EvaluationWithoutKernel(benchmark::State& run) {
  CState state = MakeState();
  state.datasets[0].datasetenergy = 1;
  CMultiFit fit(state);
  for (auto _ : run) benchmark::DoNotOptimize(fit.CalcError(fit.fitvariables));
  run.SetItemsProcessed(run.iterations());
}
BENCHMARK(EvaluationWithoutKernel);

// The same angles by the recursion of Parratt as a textbook has it, sigma only, in std::complex.
double TextbookIntensity(double qz) {
  constexpr double kK0 = 2 * std::numbers::pi / kLambda;
  using Number = std::complex<double>;
  const double sine = qz / (2 * kK0);
  const Number index[] = {{1 - 7.58e-6, 1.77e-7}, {1 - 2.25e-5, 2.9e-6}, 1.0};
  const double sigma[] = {3, 5};
  const double d[] = {0, 150};
  Number kz[3];
  for (int j = 0; j < 3; ++j) kz[j] = kK0 * std::sqrt(index[j] * index[j] - 1.0 + sine * sine);
  Number x = 0;
  for (int j = 0; j < 2; ++j) {
    const Number r =
        (kz[j + 1] - kz[j]) / (kz[j + 1] + kz[j]) * std::exp(-2.0 * sigma[j] * sigma[j] * kz[j + 1] * kz[j]);
    x *= std::exp(Number(0, 2) * kz[j] * d[j]);
    x = (r + x) / (1.0 + r * x);
  }
  return std::norm(x);
}

void TextbookLoop(benchmark::State& run) {
  const CState state = MakeState();
  for (auto _ : run) {
    double sum = 0;
    for (const double qz : state.datasets[0].dataset_qz) {
      for (int j = -4; j <= 4; ++j) sum += TextbookIntensity(qz + 0.0005 * j);
    }
    benchmark::DoNotOptimize(sum);
  }
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

// Its lines go nowhere, so that they do not mix with the figures.
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
