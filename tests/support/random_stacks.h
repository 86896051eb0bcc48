// SPDX-License-Identifier: GPL-2.0-or-later
// Random layer stacks for comparisons of number types.
#pragma once

#include <cmath>
#include <random>

#include "tolvik/state.h"

namespace tolvik::testing {

/// Random x-ray stacks: contrasts from 1e-7 to 1e-2, 0 to 200 Å thick, half of them smooth. The same seed
/// gives the same stacks.
class RandomStacks {
 public:
  explicit RandomStacks(unsigned seed) : random_(seed) {}

  double Uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double Logarithmic(double low, double high) { return std::exp(Uniform(std::log(low), std::log(high))); }
  int Count(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

  CState Next(int most_layers) {
    CState state;
    state.layers.Clear();
    state.lambda = Logarithmic(0.7, 20);
    const double contrast = Logarithmic(1e-6, 1e-2);
    const bool rough = Uniform(0, 1) < 0.5;
    const int layers = Count(1, most_layers);
    for (int i = 0; i < layers; ++i) {
      CLayer layer;
      layer.layer_delta = contrast * Uniform(0.1, 1);
      layer.layer_beta = layer.layer_delta * Logarithmic(1e-3, 0.5);
      layer.layer_d = Uniform(0, 200);
      layer.layer_sigma = rough ? Uniform(0, 6) : 0;
      state.layers.Append(layer);
    }
    state.layers.Append(CLayer());
    return state;
  }

 private:
  std::mt19937_64 random_;
};

}  // namespace tolvik::testing
