// SPDX-License-Identifier: GPL-2.0-or-later
// A film whose true model is known, measured with noise, for tests of fits.
#pragma once

#include <cmath>
#include <random>

#include "optics/energy.h"
#include "support/fit_variable.h"
#include "tolvik/state.h"
#include "tolvik/tolvik.h"

namespace tolvik::testing {

/// Silicon substrate, a metal film of 60 Å, an oxide cap of 25 Å, vacuum; optical constants as at 8 keV.
inline CState MakeFilm() {
  CState state;
  state.disablescript = 1;
  state.lambda = LambdaFromEnergy(8000);
  state.layers.Assign(4, CLayer());
  const auto set = [&state](std::int32_t i, double d, double delta, double beta, double sigma) {
    CLayer& layer = state.layers[i];
    layer.layer_d = d;
    layer.layer_delta = delta;
    layer.layer_beta = beta;
    layer.layer_sigma = sigma;
  };
  set(0, 0, 7.58e-6, 1.77e-7, 3);
  set(1, 60, 2.25e-5, 2.9e-6, 5);
  set(2, 25, 1.2e-5, 4e-7, 6);
  return state;
}

/// A dataset of points from qz 0.02 to 0.3 at 8 keV; without values.
inline CDataset MakeGrid(std::int32_t points) {
  CDataset dataset;
  dataset.datasetenergy = 8000;
  dataset.datasetactive = 1;
  for (std::int32_t i = 0; i < points; ++i) dataset.dataset_qz.Append(0.02 + 0.28 * i / (points - 1));
  return dataset;
}

/// Measures the reflectivity of the state's model with multiplicative noise of that relative width and
/// appends it.
inline void Measure(CState& state, std::int32_t points, double noise, std::uint32_t seed) {
  CSolution curve = MakeGrid(points);
  CalcReflectivityDLL(&curve, &state);
  curve.dataset_Rp.Clear();
  std::mt19937 generator(seed);
  // A sum of uniform numbers, since distributions differ between standard libraries.
  const auto normal = [&generator] {
    double sum = -6;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(generator()) / 4294967296.0;
    return sum;
  };
  for (double& r : curve.dataset_R0) r *= std::exp(noise * normal());
  state.datasets.Append(curve);
}

}  // namespace tolvik::testing
