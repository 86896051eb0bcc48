// SPDX-License-Identifier: GPL-2.0-or-later
// How long do the 4×4 algorithms take per angle and interface in a curve? 100 layers × 200 angles of soft x
// rays, where the contrasts are large, each compared with the plain textbook loop.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/textbook_matrices.h"
#include "optics/tensor.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"
#include "tolvik/tolvik.h"

namespace {

using namespace tolvik;

constexpr int kLayers = 100, kAngles = 200;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kWavevector = 0.39;            // Å⁻¹, near 770 eV
constexpr double kMagGamma = 60, kMagPhi = 40;  // degrees

// A periodic stack with rough interfaces; magnetic: tensors and magnetic constants are in use.
CState Stack(bool magnetic) {
  CState state;
  state.layers.Clear();
  for (int i = 0; i < kLayers; ++i) {
    CLayer layer;
    layer.layer_d = 15;
    layer.layer_sigma = 3;
    layer.layer_delta = i % 2 == 0 ? 0.004 : 0.006;
    layer.layer_beta = i % 2 == 0 ? 0.002 : 0.004;
    layer.layer_ddelta = i % 2 == 0 ? 0.0005 : -0.0008;
    layer.layer_dbeta = i % 2 == 0 ? 0.0003 : 0.0006;
    state.layers.Append(layer);
  }
  state.layers.Append(CLayer());
  state.lambda = kTwoPi / kWavevector;
  state.magnetizationmode = magnetic ? 1 : 0;
  state.maggamma = kMagGamma;
  state.magphi = kMagPhi;
  BuildAllEpsilonTensors(state);
  state.layers.Last().magnetic = 0;  // vacuum
  return state;
}

std::vector<double> Sines() {
  std::vector<double> s(kAngles);
  for (int i = 0; i < kAngles; ++i) s[static_cast<std::size_t>(i)] = 0.02 + 0.9 * i / kAngles;
  return s;
}

void CountInterfaces(benchmark::State& run) {
  run.counters["time/interface"] =
      benchmark::Counter(static_cast<double>(run.iterations()) * kLayers * kAngles,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Ours(benchmark::State& run, std::int32_t algorithm, bool magnetic) {
  CState state = Stack(magnetic);
  state.algorithm = algorithm;
  CSolution solution;
  for (double s : Sines()) solution.dataset_qz.Append(2 * kWavevector * s);
  for (auto _ : run) {
    CalcReflectivityDLL(&solution, &state);
    benchmark::DoNotOptimize(solution.dataset_R0.data);
  }
  CountInterfaces(run);
}
BENCHMARK_CAPTURE(Ours, MatrixOneIsotropic, 1, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixOneMagnetic, 1, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixTwoIsotropic, 2, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ours, MatrixTwoMagnetic, 2, true)->Unit(benchmark::kMillisecond);

std::vector<bench::TextbookSlab> TextbookStack(const CState& state) {
  std::vector<bench::TextbookSlab> slabs;
  for (const CLayer& layer : state.layers) {
    bench::TextbookSlab slab;
    slab.n = {1 - layer.layer_delta, layer.layer_beta};
    slab.d = layer.layer_d;
    slab.sigma = layer.layer_sigma;
    slab.magnetic = layer.magnetic != 0;
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) slab.eps[r][c] = layer.Epsilon(r, c);
    }
    if (state.magnetizationmode != MagnetizationMode::kNone)
      slab.Q = {-2 * layer.layer_ddelta, 2 * layer.layer_dbeta};
    slabs.push_back(slab);
  }
  return slabs;
}

template <class Algorithm>
void Textbook(benchmark::State& run, const Algorithm& algorithm, bool magnetic) {
  const auto slabs = TextbookStack(Stack(magnetic));
  const auto sines = Sines();
  for (auto _ : run) {
    double sum = 0;
    for (double s : sines) sum += bench::TextbookReflectivity(slabs, algorithm, std::asin(s), 1.0, 0.0);
    benchmark::DoNotOptimize(sum);
  }
  CountInterfaces(run);
}
constexpr bench::TextbookTensor kTensor{kWavevector};
constexpr bench::TextbookFirstOrder kFirstOrder{kWavevector, kMagGamma* kTwoPi / 360, kMagPhi* kTwoPi / 360};
BENCHMARK_CAPTURE(Textbook, MatrixOneIsotropic, kTensor, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Textbook, MatrixOneMagnetic, kTensor, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Textbook, MatrixTwoIsotropic, kFirstOrder, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Textbook, MatrixTwoMagnetic, kFirstOrder, true)->Unit(benchmark::kMillisecond);

}  // namespace
