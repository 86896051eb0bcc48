// SPDX-License-Identifier: GPL-2.0-or-later
// The film of the benchmarks of whole curves and of fits: three rough layers on a substrate, 200 points with
// nine resolution samples each, an empty script, both polarisations.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

#include "bench/textbook.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik::bench {

inline constexpr double kFilmEnergy = 8000;  // eV
inline constexpr double kFilmLambda = 12398.326 / kFilmEnergy;
inline constexpr double kFilmResolution = 0.002;

inline CState MakeFilm(bool magnetic = false) {
  CState state;
  state.layers.Assign(5, CLayer());
  const double delta[] = {7.58e-6, 2.25e-5, 1.2e-5, 2.9e-5}, beta[] = {1.77e-7, 2.9e-6, 4e-7, 2e-6};
  const double d[] = {0, 150, 80, 30}, sigma[] = {3, 5, 4, 3};
  for (int i = 0; i < 4; ++i) {
    state.layers[i].layer_delta = delta[i];
    state.layers[i].layer_beta = beta[i];
    state.layers[i].layer_d = d[i];
    state.layers[i].layer_sigma = sigma[i];
    if (magnetic && i > 0) {
      state.layers[i].layer_ddelta = 0.1 * delta[i];
      state.layers[i].layer_dbeta = 0.1 * beta[i];
    }
  }
  state.magnetizationmode = magnetic ? 1 : 0;
  state.lambda = kFilmLambda;
  state.resolution = kFilmResolution;
  state.ray1pire = state.ray2sigmare = 1;
  return state;
}

inline CArray<double> FilmPoints() {
  CArray<double> qz;
  for (int i = 0; i < 200; ++i) qz.Append(0.02 + 0.28 * i / 199);
  return qz;
}

/// The same samples by the textbook loop. sign: sense of the magnetic shift of the indices, 0 leaves it out.
inline double TextbookCurve(const CState& state, const CArray<double>& points, double sign) {
  const double k0 = 6.283185307179586 / kFilmLambda;
  std::vector<TextbookLayer> layers;
  for (const CLayer& layer : state.layers) {
    layers.push_back({{1 - layer.layer_delta, layer.layer_beta}, layer.layer_d, layer.layer_sigma});
  }
  std::vector<std::complex<double>> kz(layers.size());
  double sum = 0;
  for (const double qz : points) {
    for (int j = -4; j <= 4; ++j) {
      const double theta = std::asin((qz + kFilmResolution / 4 * j) / (2 * k0));
      if (sign != 0) {
        const double shift = sign * std::cos(theta);
        for (std::size_t i = 0; i < layers.size(); ++i) {
          const CLayer& layer = state.layers[static_cast<std::int32_t>(i)];
          layers[i].n = {1 - layer.layer_delta + shift * layer.layer_ddelta,
                         layer.layer_beta - shift * layer.layer_dbeta};
        }
      }
      const TextbookResult r = TextbookParratt(layers, k0, theta, kz);
      sum += r.sigma + r.pi;
    }
  }
  return sum;
}

}  // namespace tolvik::bench
