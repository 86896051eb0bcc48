// SPDX-License-Identifier: GPL-2.0-or-later
// The three algorithms against each other, from the state to the curve.
#include <gtest/gtest.h>

#include "optics/tensor.h"
#include "support/states.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"
#include "tolvik/tolvik.h"

namespace tolvik::testing {
namespace {

CState SoftXrayState(std::initializer_list<Slab> slabs) {
  CState state = MakeState(slabs);
  state.lambda = 19.5;
  return state;
}

void SetRay(CState& state, double sigma, double pi_re, double pi_im) {
  state.ray1sigmare = sigma;
  state.ray1pire = pi_re;
  state.ray1piim = pi_im;
}

CArray<double> Curve(CState state, std::int32_t algorithm) {
  BuildAllEpsilonTensors(state);
  state.algorithm = algorithm;
  CSolution solution;
  for (int i = 1; i <= 40; ++i) solution.dataset_qz.Append(0.015 * i);
  EXPECT_EQ(CalcReflectivityDLL(&solution, &state), ReturnCode::kSuccess);
  return solution.dataset_R0;
}

void ExpectSame(const CArray<double>& a, const CArray<double>& b, double relative) {
  ASSERT_EQ(a.size, b.size);
  for (std::int32_t i = 0; i < a.size; ++i) EXPECT_NEAR(a[i], b[i], relative * b[i]) << "point " << i;
}

CState RoughFilms() {
  return SoftXrayState({{0, 0.004, 0.002, 4}, {60, 0.009, 0.004, 3}, {25, 0.003, 0.001, 2}, {}});
}

TEST(Algorithms, AgreeForPureRaysWithoutMagnetism) {
  for (bool sigma : {true, false}) {
    CState state = RoughFilms();
    SetRay(state, sigma ? 1 : 0, sigma ? 0 : 1, 0);
    const auto parratt = Curve(state, Algorithm::kParratt);
    ExpectSame(Curve(state, Algorithm::kMatrixOne), parratt, 1e-9);
    ExpectSame(Curve(state, Algorithm::kMatrixTwo), parratt, 1e-9);
  }
}

TEST(Algorithms, AgreeInAllNumberTypes) {
  CState state = RoughFilms();
  const auto reference = Curve(state, Algorithm::kParratt);
  for (std::int32_t precision : {Precision::kDouble, Precision::kLongDouble, Precision::kMpfr}) {
    state.precision = precision;
    ExpectSame(Curve(state, Algorithm::kMatrixOne), reference, 1e-9);
    ExpectSame(Curve(state, Algorithm::kMatrixTwo), reference, 1e-9);
  }
  state.precision = Precision::kFloat;
  ExpectSame(Curve(state, Algorithm::kMatrixTwo), Curve(state, Algorithm::kMatrixOne), 1e-6);
}

TEST(Algorithms, AgreeOnSlices) {
  CState state = RoughFilms();
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.minlayerthickness = state.maxlayerthickness = 1;
  const auto parratt = Curve(state, Algorithm::kParratt);
  ExpectSame(Curve(state, Algorithm::kMatrixOne), parratt, 1e-7);
  ExpectSame(Curve(state, Algorithm::kMatrixTwo), parratt, 1e-7);
}

TEST(Algorithms, OneAndTwoAgreeForCircularLightOnWeakMagnetism) {
  // Without roughness: its factors know the magnetic part of the wavevectors in algorithm one only.
  CState state = SoftXrayState({{0, 0.004, 0.002}, {60, 0.009, 0.004, 0, 2e-5, 1e-5}, {}});
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.maggamma = 90;
  state.magphi = 30;
  state.epsilon = 1e-9;
  SetRay(state, std::sqrt(0.5), 0, std::sqrt(0.5));
  ExpectSame(Curve(state, Algorithm::kMatrixOne), Curve(state, Algorithm::kMatrixTwo), 5e-6);
}

TEST(Algorithms, ParrattTakesLeftCircularLightAndMagnetisationAlongTheBeam) {
  CState state = SoftXrayState({{0, 0.004, 0.002}, {40, 0.009, 0.004, 0, 1e-4, 6e-5}, {}});
  state.maggamma = state.magphi = 90;
  state.epsilon = 1e-9;
  SetRay(state, std::sqrt(0.5), 0, std::sqrt(0.5));
  const auto plain = Curve(state, Algorithm::kParratt);
  state.magnetizationmode = MagnetizationMode::kLayers;
  const auto scalar = Curve(state, Algorithm::kParratt), tensor = Curve(state, Algorithm::kMatrixOne);
  for (std::int32_t i = 0; i < 20; ++i) {  // θ up to 0.5
    const double effect = tensor[i] / plain[i] - 1;
    EXPECT_NEAR(scalar[i] / plain[i] - 1, effect, 0.15 * std::abs(effect)) << i;
    EXPECT_GT(std::abs(effect), 1e-4);
  }
}

TEST(Algorithms, WeakMagnetismBelowTheToleranceIsIsotropic) {
  CState state = SoftXrayState({{0, 0.004, 0.002}, {60, 0.009, 0.004, 0, 2e-5, 1e-5}, {}});
  state.magnetizationmode = MagnetizationMode::kLayers;
  SetRay(state, std::sqrt(0.5), 0, std::sqrt(0.5));
  const auto blind = Curve(state, Algorithm::kMatrixOne);
  state.epsilon = 1e-9;
  const auto seeing = Curve(state, Algorithm::kMatrixOne);
  state.magnetizationmode = MagnetizationMode::kNone;
  const auto without = Curve(state, Algorithm::kMatrixOne);
  ExpectSame(blind, without, 1e-9);
  EXPECT_GT(std::abs(seeing[20] / without[20] - 1), 1e-4);
}

TEST(Algorithms, GaussFunctionsReachTwoButNotOne) {
  CState state = SoftXrayState({{0, 0.004, 0.002, 2}, {60, 0.009, 0.004, 3, 2e-3, 1e-3}, {}});
  state.magnetizationmode = MagnetizationMode::kGaussFunctions;
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.minlayerthickness = state.maxlayerthickness = 1;
  SetRay(state, std::sqrt(0.5), 0, std::sqrt(0.5));
  CState modulated = state;
  CGaussFunction function;
  function.gauss_delta = function.gauss_beta = 1;
  function.gauss_z = 30;
  function.gauss_variance = 10;
  modulated.gaussfunctions.Append(function);
  ExpectSame(Curve(modulated, 1), Curve(state, Algorithm::kMatrixOne), 0);
  EXPECT_GT(std::abs(Curve(modulated, 2)[20] / Curve(state, Algorithm::kMatrixTwo)[20] - 1), 1e-3);
}

}  // namespace
}  // namespace tolvik::testing
