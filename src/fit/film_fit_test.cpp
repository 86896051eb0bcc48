// SPDX-License-Identifier: GPL-2.0-or-later
// Every search finds a film whose model is known, from noisy data and a start ten percent off.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit/evolution.h"
#include "fit/multi_fit.h"
#include "support/film.h"

namespace tolvik {
namespace {

constexpr double kNoise = 0.03;
const std::vector<double> kTruth = {60, 2.25e-5, 5, 25, 6};

// 100 points of the film with 3 % noise, and five variables at 1.1 of their true values, which may change by
// a tenth.
CState MakeProblem(double freedom = 0.25) {
  CState state = testing::MakeFilm();
  testing::Measure(state, 100, kNoise, 20);
  const std::int32_t ids[] = {0, 1, 3, 0, 3};
  const std::int32_t layers[] = {1, 1, 1, 2, 2};
  for (std::size_t i = 0; i < kTruth.size(); ++i) {
    const double v = kTruth[i];
    testing::Vary(state, ids[i], layers[i], 1.1 * v, 0.05 * v, (1 - freedom) * v, (1 + freedom) * v);
  }
  return state;
}

// The least-squares result, started from the truth: reference values and standard deviations for the
// searches.
struct Reference {
  std::vector<double> value, sigma;
  double error;
};

Reference FindReference() {
  CMultiFit fit(MakeProblem());
  for (std::size_t i = 0; i < kTruth.size(); ++i) fit.fitvariables.data[i].fit_value = kTruth[i];
  fit.RestartFit();
  for (int i = 0; i < 3; ++i) fit.LevenbergStep();
  Reference reference;
  for (const CFitVariable& variable : fit.fitvariables) {
    reference.value.push_back(variable.fit_value);
    reference.sigma.push_back(variable.fit_sigma);
  }
  reference.error = fit.lasterror;
  return reference;
}

// Within `width` standard deviations of the least-squares answer, and within four of the truth.
template <class Values>
void ExpectFound(const Values& found, const Reference& reference, double width) {
  for (std::size_t i = 0; i < kTruth.size(); ++i) {
    const double value = found[static_cast<std::int32_t>(i)];
    EXPECT_NEAR(value, reference.value[i], width * reference.sigma[i]) << "variable " << i;
    EXPECT_NEAR(value, kTruth[i], 4 * reference.sigma[i]) << "variable " << i;
  }
}

TEST(FilmFit, StandardDeviationsAreThoseOfTheNoise) {
  // log10 of a factor with 3 % noise scatters by 0.03 / ln 10; the mean square of the residuals is that
  // squared, less the part of five fitted variables of 100 points, within the scatter of a chi-square of 95:
  // 2 sqrt(2 / 95).
  const Reference reference = FindReference();
  const double expected = std::pow(kNoise / std::log(10.0), 2) * 95 / 100;
  EXPECT_NEAR(reference.error / expected, 1, 2 * std::sqrt(2.0 / 95));
  for (std::size_t i = 0; i < kTruth.size(); ++i) {
    EXPECT_GT(reference.sigma[i], 0);
    EXPECT_LT(reference.sigma[i], 0.03 * kTruth[i]);
  }
}

TEST(FilmFit, Simplex) {
  CMultiFit fit(MakeProblem());
  fit.RestartFit();
  for (int i = 0; i < 500; ++i) fit.SimplexStep();
  ExpectFound(fit.parameters, FindReference(), 0.5);
}

TEST(FilmFit, LevenbergMarquardt) {
  // Its projected steps get stuck at near bounds, so it gets wide ones.
  CMultiFit fit(MakeProblem(0.99));
  fit.RestartFit();
  for (int i = 0; i < 5; ++i) fit.LevenbergStep();
  ExpectFound(fit.parameters, FindReference(), 0.5);
}

TEST(FilmFit, Annealing) {
  CState problem = MakeProblem();
  problem.fittemp = 0.02;
  problem.fitdtemp = -4e-5;
  problem.evo_random = 7;
  CMultiFit fit(problem);
  fit.RestartFit();
  for (int i = 0; i < 1000; ++i) fit.AnnealingStep();
  EXPECT_EQ(fit.fittemp, 0);
  const CArray<double> best = fit.bestparameters;
  ExpectFound(best, FindReference(), 0.5);
}

TEST(FilmFit, Evolution) {
  CState problem = MakeProblem();
  problem.evo_population = 60;
  problem.evo_elite = 5;
  problem.evo_parents = 30;
  problem.evo_takeeliteasparents = true;
  problem.evo_mixing = 20;
  problem.evo_probability = 30;
  problem.evo_range = 5;
  problem.evo_random = 3;
  problem.evo_evorestrictfitparameters = true;
  CEvolution evolution(problem);
  ::testing::internal::CaptureStdout();
  for (int i = 0; i < 120; ++i) evolution.Iterate();
  ::testing::internal::GetCapturedStdout();
  // The elite of the last ranking is first in the population.
  CArray<double> best;
  for (const CFitVariable& gene : evolution.population[0].fitvariables) best.Append(gene.fit_value);
  const Reference reference = FindReference();
  ExpectFound(best, reference, 1);
  EXPECT_LT(evolution.besthistory.Last(), 1.02 * reference.error);
}

}  // namespace
}  // namespace tolvik
