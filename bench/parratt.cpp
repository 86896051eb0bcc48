// SPDX-License-Identifier: GPL-2.0-or-later
// How long does an angle and an interface take in the Parratt recursion, in each precision? Curves of 1000
// angles at λ 1.54 Å, qz 0.001 to 0.6 Å⁻¹, both polarisations, compared with the textbook loop.
#include <benchmark/benchmark.h>

#include "bench/textbook.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr double kLambda = 1.54;
constexpr int kAngles = 1000;

enum Stack { kThreeRough, kHundredRough, kThousandSlices };

void AppendLayer(CState& state, double delta, double beta, double d, double sigma) {
  CLayer layer;
  layer.layer_delta = delta;
  layer.layer_beta = beta;
  layer.layer_d = d;
  layer.layer_sigma = sigma;
  state.layers.Append(layer);
}

CState MakeStack(Stack stack) {
  CState state;
  state.layers.Clear();
  state.lambda = kLambda;
  state.disablescript = 1;
  const int layers = stack == kThreeRough ? 3 : stack == kHundredRough ? 100 : 1000;
  const double sigma = stack == kThousandSlices ? 0 : 3;
  AppendLayer(state, 7.6e-6, 1.7e-7, 0, sigma);
  for (int i = 0; i < layers; ++i) {
    const double depth = static_cast<double>(i) / layers;
    AppendLayer(state, (i % 2 == 0 ? 2.9e-5 : 8e-6) * (1 - 0.3 * depth), 2e-6 * (1 + depth),
                stack == kThousandSlices ? 0.5 : 20 + i % 7, sigma);
  }
  state.layers.Append(CLayer());
  return state;
}

CSolution MakeGrid() {
  CSolution solution;
  for (int i = 0; i < kAngles; ++i) solution.dataset_qz.Append(0.001 + 0.599 * i / (kAngles - 1));
  return solution;
}

void Report(benchmark::State& bench, const CState& state) {
  const double work = static_cast<double>(kAngles) * (state.layers.size - 1);
  bench.counters["angle_interface"] =
      benchmark::Counter(work, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void Textbook(benchmark::State& bench) {
  const CState state = MakeStack(static_cast<Stack>(bench.range(0)));
  const CSolution grid = MakeGrid();
  std::vector<bench::TextbookLayer> layers;
  for (const CLayer& layer : state.layers) {
    layers.push_back({{1 - layer.layer_delta, layer.layer_beta}, layer.layer_d, layer.layer_sigma});
  }
  std::vector<std::complex<double>> kz(layers.size());
  const double k0 = 6.283185307179586 / kLambda;
  for (auto _ : bench) {
    double sum = 0;
    for (double qz : grid.dataset_qz) {
      const bench::TextbookResult r = bench::TextbookParratt(layers, k0, std::asin(qz / (2 * k0)), kz);
      sum += r.sigma + r.pi;
    }
    benchmark::DoNotOptimize(sum);
  }
  Report(bench, state);
}

void Curve(benchmark::State& bench, int precision) {
  CState state = MakeStack(static_cast<Stack>(bench.range(0)));
  state.precision = precision;
  state.ray1pire = 1;  // both polarisations count
  CSolution solution = MakeGrid();
  for (auto _ : bench) {
    CalcReflectivityDLL(&solution, &state);
    benchmark::DoNotOptimize(solution.dataset_R0.data);
  }
  Report(bench, state);
}

void Stacks(benchmark::internal::Benchmark* bench) {
  bench->ArgName("stack")->Arg(kThreeRough)->Arg(kHundredRough)->Arg(kThousandSlices);
  bench->Unit(benchmark::kMicrosecond);
}

// Stack 0: 3 rough layers; 1: 100 rough layers; 2: 1000 slices without roughness.
BENCHMARK(Textbook)->Apply(Stacks);
BENCHMARK_CAPTURE(Curve, float, 0)->Apply(Stacks);
BENCHMARK_CAPTURE(Curve, double, 1)->Apply(Stacks);
BENCHMARK_CAPTURE(Curve, long_double, 2)->Apply(Stacks);
BENCHMARK_CAPTURE(Curve, mpfr, 3)->Apply(Stacks);

}  // namespace
}  // namespace tolvik
