// SPDX-License-Identifier: GPL-2.0-or-later
// A foreign front end: loads a state, calculates its curve, steps a fit and an evolution, all through the
// installed package.
#include <tolvik/state_file.h>
#include <tolvik/tolvik.h>

#include <cmath>
#include <complex>
#include <cstdio>

namespace {

int faults = 0;

void Check(bool holds, const char* what) {
  std::printf("%s: %s\n", what, holds ? "ok" : "WRONG");
  if (!holds) ++faults;
}

// Born and Wolf, Principles of Optics, 1.5.2, sigma: r = (k1 - k2) / (k1 + k2) with k2² = k1² - (1 - n²) k0².
double Fresnel(const tolvik::CState& state, double qz) {
  const double k0 = 2 * 3.14159265358979323846 / state.lambda;
  const std::complex<double> n(1 - state.layers[0].layer_delta, state.layers[0].layer_beta);
  const double k1 = qz / 2;
  const std::complex<double> k2 = std::sqrt(k1 * k1 - (1.0 - n * n) * k0 * k0);
  return std::norm((k1 - k2) / (k1 + k2));
}

void CheckCurve(tolvik::CState& state) {
  tolvik::CSolution curve;
  curve.dataset_qz.Append(0.05);
  Check(CalcReflectivityDLL(&curve, &state) == tolvik::ReturnCode::kSuccess, "a curve");
  const double expected = Fresnel(state, 0.05);
  Check(std::abs(curve.dataset_R0[0] - expected) < 1e-9 * expected, "its value is that of Fresnel");
}

void CheckFit(tolvik::CState& state) {
  Check(FitNewDLL(&state) == tolvik::ReturnCode::kDone, "a fit");
  FitIterateDLL();
  const double first = FitGetLastErrorDLL();
  for (int i = 0; i < 60; ++i) FitIterateDLL();
  Check(FitGetLastErrorDLL() < first, "its error falls");
  tolvik::CState* model = nullptr;
  FitGetFitStateDLL(&model);
  Check(model != nullptr && std::abs(model->layers[0].layer_delta - 7.6e-6) < 1e-8, "it finds the substrate");
}

}  // namespace

int main(int argc, char** argv) {
  tolvik::CState state;
  Check(argc == 2 && tolvik::LoadState(state, argv[1]), "a state");
  CheckCurve(state);
  tolvik::CDataset& data = state.datasets[1];
  for (int i = 0; i < data.dataset_qz.size; ++i) data.dataset_R0[i] = Fresnel(state, data.dataset_qz[i]);
  CheckFit(state);
  Check(EvolutionNewDLL(&state) == tolvik::ReturnCode::kSuccess &&
            EvolutionIterateDLL() == tolvik::ReturnCode::kSuccess,
        "an evolution");
  return faults == 0 ? 0 : 1;
}
