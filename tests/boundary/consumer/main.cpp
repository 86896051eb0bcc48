// SPDX-License-Identifier: GPL-2.0-or-later
// Calculates the Fresnel reflectivity of a bare substrate through the installed library.
#include <tolvik/tolvik.h>

#include <cmath>
#include <complex>
#include <cstdio>

int main() {
  tolvik::CState state;  // two layers: substrate and ambient
  state.disablescript = 1;
  state.lambda = 1.54;
  state.resolution = 0;
  state.layers[0].layer_delta = 7.6e-6;
  state.layers[0].layer_beta = 1.7e-7;
  state.layers[0].layer_sigma = 0;
  state.layers[1].layer_delta = 0;
  state.layers[1].layer_beta = 0;
  tolvik::CSolution solution;
  const double qz = 0.05;
  solution.dataset_qz.Append(qz);

  const int code = CalcReflectivityDLL(&solution, &state);
  // Born and Wolf, Principles of Optics, 1.5.2, sigma: r = (k1 - k2) / (k1 + k2) with k2² = k1² - (1 - n²)
  // k0².
  const double k0 = 2 * 3.14159265358979323846 / state.lambda;
  const std::complex<double> n(1 - 7.6e-6, 1.7e-7);
  const double k1 = qz / 2;
  const std::complex<double> k2 = std::sqrt(k1 * k1 - (1.0 - n * n) * k0 * k0);
  const double expected = std::norm((k1 - k2) / (k1 + k2));
  const double got = solution.dataset_R0[0];
  std::printf("code %d, R = %.12e, expected %.12e\n", code, got, expected);
  return code == 1 && std::abs(got - expected) < 1e-9 * expected ? 0 : 1;
}
