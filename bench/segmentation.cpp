// SPDX-License-Identifier: GPL-2.0-or-later
// How long does a slice take? 50 layers of 20 Å sliced at 0.5 Å, by each model, compared with the plain sum
// over all interfaces with the error function of the C++ library, five evaluations per slice as in the
// adaptive grid.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "engine/profile/profile.h"
#include "optics/tensor.h"
#include "tolvik/state.h"

namespace {

using namespace tolvik;

CState Stack(std::int32_t model) {
  CState state;
  state.layers.Clear();
  for (int i = 0; i < 50; ++i) {
    CLayer layer;
    layer.layer_d = 20;
    layer.layer_delta = i % 2 == 0 ? 0.004 : 0.006;
    layer.layer_beta = i % 2 == 0 ? 0.002 : 0.004;
    layer.layer_sigma = 3;
    BuildEpsilonTensor(layer, 0, 0, 0);
    state.layers.Append(layer);
  }
  state.layers.Last() = CLayer();
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.segmentationmodel = model;
  state.minlayerthickness = state.maxlayerthickness = 0.5;
  return state;
}

void CountSlices(benchmark::State& run, double slices) {
  run.counters["slices"] = slices;
  run.counters["time/slice"] = benchmark::Counter(static_cast<double>(run.iterations()) * slices,
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Slice(benchmark::State& run) {
  const CState state = Stack(static_cast<std::int32_t>(run.range(0)));
  engine::Profile<double> profile;
  for (auto _ : run) engine::PrepareProfile<double>(state, profile);
  CountSlices(run, profile.size);
}
BENCHMARK(Slice)->ArgName("model")->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void SliceTextbook(benchmark::State& run) {
  const CState state = Stack(2);
  double slices = 0;
  for (auto _ : run) {
    std::vector<double> heights(1, 0.0), profile;
    for (std::int32_t i = 1; i + 1 < state.layers.size; ++i)
      heights.push_back(heights.back() + state.layers[i].layer_d);
    for (double z = -30; z <= heights.back() + 30; z += 0.5) {
      for (int evaluation = 0; evaluation < 5; ++evaluation) {
        double fields[22] = {};
        for (std::size_t j = 0; j < heights.size(); ++j) {
          const CLayer& lower = state.layers[static_cast<std::int32_t>(j)];
          const CLayer& upper = state.layers[static_cast<std::int32_t>(j) + 1];
          const double share =
              0.5 * (1 + std::erf((heights[j] - z) / lower.layer_sigma * 0.7071067811865475));
          fields[0] += share * (lower.layer_delta - upper.layer_delta);
          fields[1] += share * (lower.layer_beta - upper.layer_beta);
          for (int k = 0; k < 9; ++k) {
            const auto step = share * (lower.Epsilon(k / 3, k % 3) - upper.Epsilon(k / 3, k % 3));
            fields[4 + 2 * k] += step.real();
            fields[5 + 2 * k] += step.imag();
          }
        }
        if (evaluation == 4) profile.insert(profile.end(), fields, fields + 22);
      }
    }
    benchmark::DoNotOptimize(profile.data());
    slices = static_cast<double>(profile.size()) / 22;
  }
  CountSlices(run, slices);
}
BENCHMARK(SliceTextbook)->Unit(benchmark::kMillisecond);

}  // namespace
