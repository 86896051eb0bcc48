// SPDX-License-Identifier: GPL-2.0-or-later
// The library as a front end loads it: by dlopen, each function by its name.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <string>

#include "support/http_client.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr double kTwoPi = 6.283185307179586;

class Exports : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    library_ = dlopen(TOLVIK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library_, nullptr) << dlerror();
  }

  // The type of the function is that of the header; only its address comes from the library.
  template <class Function>
  static Function* Find(const char* name, Function*) {
    auto* found = reinterpret_cast<Function*>(dlsym(library_, name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }

  static void* library_;
};

void* Exports::library_ = nullptr;

#define FIND(name) Find(#name, static_cast<decltype(&name)>(nullptr))

CState Substrate() {
  CState state;
  state.lambda = 1.54;
  state.layers[0].layer_delta = 7.6e-6;
  state.layers[0].layer_beta = 1.7e-7;
  state.disablescript = 1;
  return state;
}

// Fresnel reflectivity of the bare substrate for sigma light (Born and Wolf, Principles of Optics, 1.5.2).
double Fresnel(const CState& state, double qz) {
  const double k0 = kTwoPi / state.lambda;
  const std::complex<double> n(1 - state.layers[0].layer_delta, state.layers[0].layer_beta);
  const double k1 = qz / 2;
  const std::complex<double> k2 = std::sqrt(k1 * k1 - (1.0 - n * n) * k0 * k0);
  return std::norm((k1 - k2) / (k1 + k2));
}

CSolution Grid() {
  CSolution solution;
  for (int i = 1; i <= 5; ++i) solution.dataset_qz.Append(0.02 * i);
  return solution;
}

// A measurement calculated from the substrate itself, so that an error of 0 can be reached.
CState WithMeasurement() {
  CState state = Substrate();
  CDataset data = Grid();
  for (const double qz : data.dataset_qz) data.dataset_R0.Append(Fresnel(state, qz));
  data.datasetenergy = 12398.326 / state.lambda;
  data.datasetactive = 1;
  state.datasets.Append(data);
  CFitVariable delta;
  delta.fit_id = FitKind::kDelta;
  delta.fit_additional_id = 0;
  delta.fit_value = 9e-6;
  delta.fit_delta = 1e-6;
  delta.fit_lower_boundary = 1e-6;
  delta.fit_upper_boundary = 2e-5;
  state.fitvariables.Append(delta);
  return state;
}

TEST_F(Exports, ReflectivityIsThatOfFresnel) {
  CState state = Substrate();
  CSolution solution = Grid();
  EXPECT_EQ(FIND(CalcReflectivityDLL)(&solution, &state), ReturnCode::kSuccess);
  for (int i = 0; i < 5; ++i)
    EXPECT_NEAR(solution.dataset_R0[i] / Fresnel(state, solution.dataset_qz[i]), 1, 1e-9);
}

TEST_F(Exports, AsymmetryOfEqualRaysIsZero) {
  CState state = Substrate();
  state.ray2sigmare = 1;
  state.ray2pire = 0;
  CSolution solution = Grid();
  EXPECT_EQ(FIND(CalcAsymmetryDLL)(&solution, &state), ReturnCode::kSuccess);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(solution.dataset_A[i], 0);
}

TEST_F(Exports, ScansWithoutTablesKeepTheirPoints) {
  CState state = Substrate();
  CSolution solution = Grid();
  for (int i = 0; i < 5; ++i) solution.dataset_eng.Append(8000);
  solution.dataset_R0.Assign(5, 1.0);
  EXPECT_EQ(FIND(CalcEScanDLL)(&solution, &state), ReturnCode::kSuccess);
  EXPECT_EQ(FIND(CalcEScanParallelDLL)(&solution, &state), ReturnCode::kSuccess);
  EXPECT_EQ(FIND(CalcDicEScanDLL)(&solution, &state), ReturnCode::kSuccess);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(solution.dataset_R0[i], 1.0);
}

// Before a fit or an evolution exists, getters return null or change nothing.
TEST_F(Exports, WithoutAFitOrAnEvolutionThereIsNothingToRead) {
  CState given = Substrate();
  CState* model = &given;
  CSolution other;
  CSolution* curve = &other;
  CMultiFit* fit = reinterpret_cast<CMultiFit*>(&given);
  CEvolution* evolution = reinterpret_cast<CEvolution*>(&given);
  EXPECT_EQ(FIND(FitIterateDLL)(), ReturnCode::kDone);
  EXPECT_EQ(FIND(FitGetFitStateDLL)(&model), ReturnCode::kDone);
  EXPECT_EQ(model, &given);  // unchanged
  EXPECT_EQ(FIND(FitGetFitDataDLL)(&curve), ReturnCode::kDone);
  EXPECT_EQ(curve, nullptr);
  EXPECT_EQ(FIND(FitGetFitDLL)(&fit), ReturnCode::kDone);
  EXPECT_EQ(fit, nullptr);
  EXPECT_TRUE(std::isnan(FIND(FitGetLastErrorDLL)()));
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(FIND(EvolutionIterateDLL)(), ReturnCode::kSuccess);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(FIND(EvolutionGetEvolutionDLL)(&evolution), ReturnCode::kSuccess);
  EXPECT_EQ(evolution, nullptr);
}

TEST_F(Exports, AFitFindsTheMeasuredSubstrate) {
  CState given = WithMeasurement();
  CState* model = nullptr;
  CSolution* curve = nullptr;
  CMultiFit* fit = nullptr;
  EXPECT_EQ(FIND(FitNewDLL)(&given), ReturnCode::kDone);
  for (int i = 0; i < 60; ++i) EXPECT_EQ(FIND(FitIterateDLL)(), ReturnCode::kDone);
  EXPECT_LT(FIND(FitGetLastErrorDLL)(), 1e-9);
  EXPECT_EQ(FIND(FitGetFitStateDLL)(&model), ReturnCode::kDone);
  EXPECT_NEAR(model->layers[0].layer_delta, 7.6e-6, 1e-9);
  EXPECT_EQ(given.layers[0].layer_delta, 7.6e-6);  // the given state does not change
  FIND(FitGetFitDataDLL)(&curve);
  EXPECT_EQ(curve->dataset_R0.size, 5);
  FIND(FitGetFitDLL)(&fit);
  EXPECT_NE(fit, nullptr);

  const CState* first = model;
  FIND(FitNewDLL)(&given);
  FIND(FitGetFitStateDLL)(&model);
  EXPECT_NE(model, first);
  EXPECT_NEAR(first->layers[0].layer_delta, 7.6e-6, 1e-9);  // the old object still exists
}

TEST_F(Exports, AnEvolutionRunsGenerations) {
  CState given = WithMeasurement();
  given.evo_population = 4;
  given.evo_parents = 100;
  CEvolution* evolution = nullptr;
  EXPECT_EQ(FIND(EvolutionNewDLL)(&given), ReturnCode::kSuccess);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(FIND(EvolutionIterateDLL)(), ReturnCode::kSuccess);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Calculate 0\nCalculate 1\nCalculate 2\nCalculate 3\n");
  EXPECT_EQ(FIND(EvolutionGetEvolutionDLL)(&evolution), ReturnCode::kSuccess);
  EXPECT_NE(evolution, nullptr);
}

TEST_F(Exports, TheScriptActsOnTheState) {
  CState state = Substrate();
  state.disablescript = 0;
  state.scriptlines.Append(CCharArray("energy = 700"));
  EXPECT_EQ(FIND(StartScriptDLL)(&state), ReturnCode::kSuccess);
  EXPECT_EQ(state.lambda, 12398.326 / 700);
  state.disablescript = 1;
  state.lambda = 2;
  EXPECT_EQ(FIND(StartScriptDLL)(&state), ReturnCode::kSuccess);
  EXPECT_EQ(state.lambda, 2);
}

TEST_F(Exports, ASecondStartHandsTheModelToTheSameServer) {
  CState state = Substrate();
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(FIND(StartWebserver)(&state), ReturnCode::kDone);
  ::testing::internal::GetCapturedStdout();
  const std::string request = "GET / HTTP/1.0\r\n\r\n";
  EXPECT_NE(testing::Request(8080, request).find("value=\"8050.86\""), std::string::npos);
  state.lambda = 12398.326 / 700;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(FIND(StartWebserver)(&state), ReturnCode::kDone);
  const std::string printed = ::testing::internal::GetCapturedStdout();
  EXPECT_NE(printed.find("webserver not null\n"), std::string::npos);
  EXPECT_EQ(printed.find("Listening"), std::string::npos);
  ::testing::internal::CaptureStdout();
  EXPECT_NE(testing::Request(8080, request).find("value=\"700\""), std::string::npos);
  ::testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace tolvik
