// SPDX-License-Identifier: GPL-2.0-or-later
// The truth comes back: counts of a known film with background and scale, fitted with weights and a free
// background.
#include <gtest/gtest.h>

#include <cmath>

#include "support/measured_film.h"
#include "tolvik/analysis/objective.h"

namespace tolvik::analysis {
namespace {

constexpr double kTrueThickness = 300, kTrueRoughness = 4.5, kTrueScale = 1e7, kTrueBackground = 20;

// Nickel on silicon as at 8 keV.
CState MakeNickel(double thickness, double roughness) {
  CState state = testing::MakeFilm();
  state.layers.Assign(3, CLayer());
  state.layers[0].layer_delta = 7.58e-6;
  state.layers[0].layer_beta = 1.77e-7;
  state.layers[0].layer_sigma = 3;
  state.layers[1].layer_delta = 2.43e-5;
  state.layers[1].layer_beta = 5.1e-7;
  state.layers[1].layer_d = thickness;
  state.layers[1].layer_sigma = roughness;
  return state;
}

Measurement Counted(std::uint32_t seed) {
  Measurement measurement;
  measurement.q = testing::Grid(150, 0.02, 0.5);
  const std::vector<double> curve =
      testing::CurveOf(MakeNickel(kTrueThickness, kTrueRoughness), measurement.q);
  testing::Noise noise(seed);
  for (const double r : curve) measurement.R.push_back(noise.Poisson(kTrueScale * r + kTrueBackground));
  measurement.counts = true;
  measurement.scale = {.value = 0.95e7, .free = true, .bounds = {1e6, 1e8}};
  measurement.background = {.value = 1, .free = true, .bounds = {0, 100}};
  return measurement;
}

CState MakeStart() {
  CState state = MakeNickel(297, 6);
  testing::Vary(state, FitKind::kThickness, 1, 297, 1, 200, 400);
  testing::Vary(state, FitKind::kSigma, 1, 6, 1, 0, 20);
  return state;
}

// Steps of Gauss and Newton with the damping of Levenberg and Marquardt, for few parameters.
std::vector<double> Minimise(Objective& objective) {
  const std::size_t m = objective.parameter_count();
  std::vector<double> x = objective.Start();
  double damping = 1e-2, best = objective.Evaluate(x)[0].chi_square;
  for (int iteration = 0; iteration < 60; ++iteration) {
    const Derivatives at = objective.DerivativesAt(x);
    Matrix a(m, m + 1);
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t n = 0; n < at.residuals.size(); ++n) {
        for (std::size_t j = 0; j < m; ++j) a(i, j) += at.jacobian(n, i) * at.jacobian(n, j);
        a(i, m) -= at.jacobian(n, i) * at.residuals[n];
      }
      a(i, i) *= 1 + damping;
    }
    for (std::size_t k = 0; k < m; ++k) {  // Gauss and Jordan; the matrix is positive definite
      for (std::size_t i = 0; i < m; ++i) {
        if (i == k) continue;
        const double factor = a(i, k) / a(k, k);
        for (std::size_t j = k; j <= m; ++j) a(i, j) -= factor * a(k, j);
      }
    }
    std::vector<double> trial = x;
    for (std::size_t i = 0; i < m; ++i) {
      const Bounds& bounds = objective.parameters()[i].bounds;
      trial[i] = std::clamp(x[i] + a(i, m) / a(i, i), bounds.lower, bounds.upper);
    }
    const double error = objective.Evaluate(trial)[0].chi_square;
    damping = error < best ? damping / 10 : damping * 10;
    if (!(error < best)) continue;
    const bool done = best - error < 1e-9 * best;
    x = trial;
    best = error;
    if (done) break;
  }
  return x;
}

TEST(Recovery, CountsWithBackgroundAndScale) {
  const std::vector<double> truth = {kTrueThickness, kTrueRoughness, kTrueScale, kTrueBackground};
  double pulls = 0;
  constexpr int kSets = 10;
  for (std::uint32_t seed = 1; seed <= kSets; ++seed) {
    Objective objective(MakeStart(), {Counted(seed)});
    const std::vector<double> x = Minimise(objective);
    const Covariance errors = objective.CovarianceAt(x);
    for (std::size_t k = 0; k < truth.size(); ++k) {
      ASSERT_GT(errors.errors[k], 0) << objective.parameters()[k].name;
      const double pull = (x[k] - truth[k]) / errors.errors[k];
      EXPECT_LT(std::abs(pull), 4) << objective.parameters()[k].name << " of set " << seed;
      pulls += pull * pull;
    }
    EXPECT_LT(errors.errors[1], 0.3) << "Å of roughness";
    // chi square of 146 degrees of freedom: mean 146, width √(2 · 146)
    EXPECT_NEAR(errors.reduced, 1, 4 * std::sqrt(2 / 146.0));
  }
  // the sum of 40 squared normal numbers: 40 ± 9
  EXPECT_GT(pulls, 40 - 3 * 9);
  EXPECT_LT(pulls, 40 + 3 * 9);
}

TEST(Recovery, WithoutWeightsAndBackgroundTheRoughnessIsWrong) {
  // The fits of the program: logarithms, all points alike, no background.
  Measurement measurement = Counted(1);
  measurement.background = {};
  measurement.scale.bounds = {1e6, 1e8};
  Objective objective(MakeStart(), {measurement}, {.weights = Weights::kLog});
  const std::vector<double> x = Minimise(objective);
  EXPECT_GT(std::abs(x[1] - kTrueRoughness), 0.5) << "the weighted fit has an error of a tenth of that";
}

}  // namespace
}  // namespace tolvik::analysis
