// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/objective.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "fit/multi_fit.h"
#include "support/measured_film.h"
#include "tolvik/analysis/errors.h"

namespace tolvik::analysis {
namespace {

using testing::MakeFreeFilm;
using testing::MakeMeasurement;

double SumOfSquares(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value * value;
  return sum;
}

TEST(Objective, ResidualsAreDifferencesInUnitsOfTheError) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 50, 0.02);
  for (double& r : measurement.R) r *= 1.06;  // three errors too high
  for (double& e : measurement.dR) e *= 1.0;
  Objective objective(state, {measurement});
  ASSERT_EQ(objective.residual_count(), 50u);
  const std::vector<double> residuals = objective.ResidualsAt(objective.Start());
  for (const double r : residuals) EXPECT_NEAR(r, 3, 1e-9);
}

TEST(Objective, ChiSquareAndLikelihoodFollowFromTheResiduals) {
  const CState state = MakeFreeFilm();
  const Measurement measurement = MakeMeasurement(state, 30, 0.05);
  Objective objective(state, {measurement});
  std::vector<double> x = objective.Start();
  x[0] += 0.5;
  const std::vector<double> residuals = objective.ResidualsAt(x);
  const RowValues values = objective.Evaluate(x)[0];
  EXPECT_NEAR(values.chi_square, SumOfSquares(residuals), 1e-9 * values.chi_square);
  // the normal density of each point
  double expected = 0;
  for (std::size_t i = 0; i < residuals.size(); ++i) {
    expected -=
        0.5 * residuals[i] * residuals[i] + std::log(measurement.dR[i] * std::sqrt(2 * std::numbers::pi));
  }
  EXPECT_NEAR(values.log_likelihood, expected, 1e-9 * std::abs(expected));
  // flat priors over 60 Å, 20 Å and 3.9e-5
  EXPECT_NEAR(values.log_prior, -std::log(60.0 * 20.0 * 3.9e-5), 1e-12);
  EXPECT_EQ(values.log_posterior(), values.log_prior + values.log_likelihood);
}

TEST(Objective, ProgramWeightsGiveTheErrorOfTheProgram) {
  for (const std::int32_t function : {0, 1, 2}) {
    CState state = MakeFreeFilm();
    testing::Measure(state, 60, 0.05, 3);
    state.fiterrorfunction = function;
    state.averaging = function == 0 ? 1 : 0;
    state.datasets[0].datasetmultiplicator = 1.3;
    state.fitvariables[0].fit_value = 63;
    CMultiFit fit(state);
    const double expected = fit.CalcError(fit.fitvariables);
    Objective objective(state, ActiveDatasets(state), {.weights = Weights::kProgram});
    const RowValues values = objective.Evaluate(objective.Start())[0];
    EXPECT_EQ(values.chi_square, expected) << "error function " << function;
    if (function == 1) continue;  // writes no residuals
    const std::vector<double> residuals = objective.ResidualsAt(objective.Start());
    for (std::size_t i = 0; i < residuals.size(); ++i) {
      EXPECT_EQ(residuals[i], fit.residuals[static_cast<std::int32_t>(i)]);
    }
  }
}

TEST(Objective, StateResolutionIsThatOfTheProgram) {
  CState state = MakeFreeFilm();
  const Measurement measurement = [&] {
    Measurement made = MakeMeasurement(state, 40, 0.01);
    made.resolution = 3e-3;
    return made;
  }();
  CState smeared = state;
  smeared.resolution = 3e-3;
  const std::vector<double> expected = testing::CurveOf(smeared, measurement.q);
  Objective objective(state, {measurement});
  EXPECT_EQ(objective.ModelAt(objective.Start(), 0).values[0], expected);
}

TEST(Objective, ManyPointsDoNotDependOnThreadsNorOrder) {
  CState state = MakeFreeFilm();
  state.disablescript = 0;
  state.scriptlines.Append("if count == nil then count = 0 end");  // a script that remembers
  state.scriptlines.Append("count = count + 1");
  state.scriptlines.Append("thickness[1] = thickness[1] + 0.1 * count");
  state.scriptlines.Append("energy = energy");
  const Measurement measurement = MakeMeasurement(state, 40, 0.02);
  std::vector<double> x;
  testing::Noise noise(5);
  constexpr int kRows = 64;
  for (int i = 0; i < kRows; ++i) {
    x.insert(x.end(), {40 + 40 * noise.Uniform(), 10 * noise.Uniform(), 1e-5 + 1e-5 * noise.Uniform()});
  }
  Objective one(state, {measurement}, {.threads = 1}), two(state, {measurement}, {.threads = 3});
  const Matrix first = one.Residuals(x);
  EXPECT_EQ(first.values, two.Residuals(x).values);
  for (const std::size_t i : {63u, 0u, 17u}) {
    const std::vector<double> alone = one.ResidualsAt(std::span(x).subspan(3 * i, 3));
    const auto row = first.Row(i);
    EXPECT_EQ(alone, std::vector<double>(row.begin(), row.end())) << i;
  }
}

TEST(Objective, PointsOutsideOfTheBoundsHaveNoPosterior) {
  const CState state = MakeFreeFilm();
  Objective objective(state, {MakeMeasurement(state, 20, 0.02)});
  std::vector<double> x = objective.Start();
  x[1] = -0.1;
  const RowValues all = objective.Evaluate(x)[0];
  EXPECT_EQ(all.log_prior, -INFINITY);
  EXPECT_EQ(all.log_posterior(), -INFINITY);
  EXPECT_TRUE(std::isfinite(all.chi_square));
  EXPECT_EQ(objective.Evaluate(x, true)[0].chi_square, INFINITY);
}

TEST(Objective, NoFreeParameterLeavesOnePoint) {
  const CState state = testing::MakeFilm();
  Objective objective(state, {MakeMeasurement(state, 20, 0.02)});
  EXPECT_EQ(objective.parameter_count(), 0u);
  EXPECT_NEAR(objective.Evaluate({})[0].chi_square, 0, 1e-20);
  EXPECT_EQ(objective.DerivativesAt({}).jacobian.columns, 0u);
  const Covariance covariance = objective.CovarianceAt({});
  EXPECT_TRUE(covariance.errors.empty());
}

TEST(Objective, ScaleAndBackgroundActOnTheModel) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 20, 0.02);
  measurement.scale = {.value = 2, .free = true};
  measurement.background = {.value = 1e-6, .free = true};
  measurement.multiplicator = 4;
  measurement.translator = 3e-7;
  Objective objective(state, {measurement});
  EXPECT_EQ(objective.parameters()[3].name, "data 0 scale");
  EXPECT_EQ(objective.parameters()[4].name, "data 0 background");
  const std::vector<double> model = objective.ModelAt(objective.Start(), 0).values[0];
  for (std::size_t i = 0; i < model.size(); ++i) {
    EXPECT_NEAR(model[i], measurement.R[i] / 2 + 1e-6 - 3e-7, 1e-12 * model[i]);
  }
}

TEST(Objective, AnOffsetShiftsTheAngle) {
  const CState state = MakeFreeFilm();
  Measurement measurement = MakeMeasurement(state, 20, 0.02);
  measurement.offset.value = 0.05;
  const double k0 = 2 * std::numbers::pi / state.lambda;
  std::vector<double> shifted;
  for (const double q : measurement.q) {
    shifted.push_back(2 * k0 * std::sin(std::asin(q / (2 * k0)) + 0.05 * std::numbers::pi / 180));
  }
  const std::vector<double> expected = testing::CurveOf(state, shifted);
  Objective objective(state, {measurement});
  const std::vector<double> model = objective.ModelAt(objective.Start(), 0).values[0];
  for (std::size_t i = 0; i < model.size(); ++i) EXPECT_NEAR(model[i], expected[i], 1e-10 * expected[i]);
}

TEST(Objective, DatasetsOfDifferentKindsSeeTheirOwnParameters) {
  CState state = MakeFreeFilm();
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.layers[1].layer_ddelta = 2e-6;
  state.layers[1].layer_dbeta = 1e-6;
  testing::Vary(state, FitKind::kDeltaM, 1, 2e-6, 1e-7, -1e-5, 1e-5);
  Measurement curve = MakeMeasurement(state, 15, 0.02);
  Measurement both = curve;
  both.kind = MeasurementKind::kBothRays;
  both.R2 = both.R;
  both.dR2 = both.dR;
  Measurement asymmetry = curve;
  asymmetry.kind = MeasurementKind::kAsymmetry;
  for (double& e : asymmetry.dR) e = 0.01;
  asymmetry.background = {.value = 0, .free = true};
  Objective objective(state, {curve, both, asymmetry});
  ASSERT_EQ(objective.residual_count(), 15u + 30u + 15u);
  const Derivatives at = objective.DerivativesAt(objective.Start());
  const std::size_t background = 4;
  EXPECT_EQ(objective.parameters()[background].name, "data 2 background");
  for (std::size_t i = 0; i < 45; ++i) EXPECT_EQ(at.jacobian(i, background), 0);
  for (std::size_t i = 45; i < 60; ++i) EXPECT_NEAR(at.jacobian(i, background), -100, 1e-9);
  EXPECT_FALSE(at.no_effect[background]);
}

TEST(Objective, TiedVariablesActOnTheirDatasetAlone) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 20, 0.0, 1);
  testing::Measure(state, 20, 0.0, 1);
  for (const std::int32_t dataset : {0, 1}) {
    testing::Vary(state, FitKind::kDelta, 1, 2.25e-5, 1e-7, 1e-5, 4e-5);
    state.fitvariables[dataset].fit_dataset1 = dataset;
  }
  std::vector<Measurement> measurements = ActiveDatasets(state);
  for (Measurement& each : measurements) {
    for (const double r : each.R) each.dR.push_back(0.01 * r);
  }
  Objective objective(state, measurements);
  EXPECT_EQ(objective.parameters()[1].name, "layer 1 delta (dataset 1)");
  const Derivatives at = objective.DerivativesAt(objective.Start());
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_NE(at.jacobian(i, 0), 0);
    EXPECT_EQ(at.jacobian(i, 1), 0);
    EXPECT_EQ(at.jacobian(i + 20, 0), 0);
    EXPECT_NE(at.jacobian(i + 20, 1), 0);
  }
}

TEST(Objective, StateAtHoldsTheFittedModel) {
  const CState state = MakeFreeFilm();
  Objective objective(state, {MakeMeasurement(state, 20, 0.02)});
  const CState fitted = objective.StateAt(std::vector<double>{55.0, 4.0, 1.1e-5});
  EXPECT_EQ(fitted.layers[1].layer_d, 55);
  EXPECT_EQ(fitted.layers[1].layer_sigma, 4);
  EXPECT_EQ(fitted.layers[2].layer_delta, 1.1e-5);
  EXPECT_EQ(fitted.fitvariables[0].fit_value, 55);
}

}  // namespace
}  // namespace tolvik::analysis
