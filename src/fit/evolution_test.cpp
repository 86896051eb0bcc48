// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/evolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "fit/fit_variables.h"
#include "support/searches.h"

namespace tolvik {
namespace {

using testing::DrawsOf;
using testing::Genes;
using testing::GenesOf;
using testing::Iterate;
using testing::MakeSearch;

TEST(Evolution, MembersStandWhereAFrontEndReadsThem) {
  struct Expected {
    CArray<CState> population, nextgeneration;
    CArray<CSolution> solutions;
    CArray<double> errors;
    CArray<std::int32_t> ranking;
    CArray<double> worsthistory, besthistory, meanhistory;
    CState settings;
    void *integergenerator, *realgenerator;
    std::int32_t generation;
  };
  static_assert(sizeof(CEvolution) == sizeof(Expected));
  static_assert(std::is_standard_layout_v<CArray<double>> && !std::is_polymorphic_v<CEvolution>);
  const CEvolution evolution(MakeSearch(1));
  const auto offset = [&evolution](const auto& member) {
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&evolution);
  };
  const auto array = static_cast<std::ptrdiff_t>(sizeof(CArray<double>));
  EXPECT_EQ(offset(evolution.population), 0);
  EXPECT_EQ(offset(evolution.nextgeneration), array);
  EXPECT_EQ(offset(evolution.solutions), 2 * array);
  EXPECT_EQ(offset(evolution.errors), 3 * array);
  EXPECT_EQ(offset(evolution.ranking), 4 * array);
  EXPECT_EQ(offset(evolution.worsthistory), 5 * array);
  EXPECT_EQ(offset(evolution.besthistory), 6 * array);
  EXPECT_EQ(offset(evolution.meanhistory), 7 * array);
  EXPECT_EQ(offset(evolution.settings), 8 * array);
  const auto after = 8 * array + static_cast<std::ptrdiff_t>(sizeof(CState));
  EXPECT_EQ(offset(evolution.integergenerator), after);
  EXPECT_EQ(offset(evolution.realgenerator), after + 8);
  EXPECT_EQ(offset(evolution.generation), after + 16);
}

TEST(Evolution, StartsBetweenTheBounds) {
  const CEvolution evolution(MakeSearch(3));
  const std::vector<std::uint32_t> d = DrawsOf(31, 6);
  ASSERT_EQ(evolution.population.size, 3);
  ASSERT_EQ(evolution.nextgeneration.size, 3);
  EXPECT_EQ(evolution.generation, 0);
  for (std::size_t i = 0; i < 3; ++i) {
    const CState& individual = evolution.population.data[i];
    const Genes expected = {1 + 0x1p-32 * d[2 * i], 10 + 10 * 0x1p-32 * d[2 * i + 1]};
    EXPECT_EQ(GenesOf(individual), expected);
    EXPECT_EQ(individual.layers[1].layer_d, expected[0]);  // applied to the model
    EXPECT_EQ(individual.layers[1].layer_sigma, expected[1]);
  }
}

TEST(Evolution, EmptyAndNegativePopulation) {
  for (const std::int32_t n : {0, -1, INT32_MIN}) {
    CEvolution evolution(MakeSearch(n));
    EXPECT_EQ(Iterate(evolution), "");
    evolution.EvaluatePopulationParallel();
    evolution.SortRankingQuick();
    EXPECT_EQ(evolution.generation, 1);
    EXPECT_TRUE(evolution.population.IsEmpty());
    EXPECT_TRUE(evolution.besthistory.IsEmpty());
  }
}

TEST(Evolution, NoVariables) {
  CState settings = MakeSearch(3);
  settings.fitvariables.Clear();
  CEvolution evolution(settings);
  Iterate(evolution);
  EXPECT_EQ(evolution.besthistory.size, 1);
  const std::uint32_t next = evolution.integergenerator.Draw();
  EXPECT_EQ(next, DrawsOf(31, 7)[6]);  // two parents for each child
}

// A population that measures real curves.
CState MakeFilmSearch() {
  CState state = testing::MakeFilm();
  testing::Measure(state, 30, 0, 1);
  state.evo_population = 8;
  state.evo_elite = 25;
  state.evo_parents = 50;
  state.evo_takeeliteasparents = true;
  state.evo_mixing = 20;
  state.evo_probability = 30;
  state.evo_range = 5;
  state.evo_random = 5;
  state.evo_evorestrictfitparameters = true;
  testing::Vary(state, FitKind::kThickness, 1, 60, 1, 50, 70);
  testing::Vary(state, FitKind::kSigma, 1, 5, 1, 2, 8);
  return state;
}

TEST(Evolution, RanksAndKeepsHistory) {
  CEvolution evolution(MakeFilmSearch());
  const std::vector<Genes> before = GenesOf(evolution);
  Iterate(evolution);
  ASSERT_EQ(evolution.errors.size, 8);
  ASSERT_EQ(evolution.solutions.size, 8);
  EXPECT_TRUE(evolution.solutions[0].dataset_qz.IsEmpty());  // default records
  double sum = 0;
  for (std::int32_t i = 0; i < 8; ++i) {
    sum += evolution.errors[i];
    EXPECT_GT(evolution.errors[i], 0);
  }
  for (std::int32_t i = 1; i < 8; ++i) {
    EXPECT_LE(evolution.errors[evolution.ranking[i - 1]], evolution.errors[evolution.ranking[i]]);
  }
  EXPECT_EQ(evolution.besthistory[0], evolution.errors[evolution.ranking[0]]);
  EXPECT_EQ(evolution.worsthistory[0], evolution.errors[evolution.ranking[7]]);
  EXPECT_DOUBLE_EQ(evolution.meanhistory[0], sum / 8);
  // The two best pass unchanged, and are evaluated to the same errors in the next generation.
  EXPECT_EQ(GenesOf(evolution.population[0]), before[static_cast<std::size_t>(evolution.ranking[0])]);
  EXPECT_EQ(GenesOf(evolution.population[1]), before[static_cast<std::size_t>(evolution.ranking[1])]);
  const double best = evolution.besthistory[0];
  Iterate(evolution);
  EXPECT_EQ(evolution.errors[0], best);
  EXPECT_LE(evolution.besthistory[1], best);
}

TEST(Evolution, ErrorIsThatOfTheModel) {
  CEvolution evolution(MakeFilmSearch());
  for (CState& individual : evolution.population) {
    CState copy(individual);
    copy.fitvariables.Clear();  // they have no effect
    EXPECT_EQ(CalcIndividualError(individual), CalcIndividualError(copy));
  }
  CState truth = MakeFilmSearch();
  EXPECT_EQ(CalcIndividualError(truth), 0);
  truth.fitpenalty = 1e9;  // nor have penalties
  EXPECT_EQ(CalcIndividualError(truth), 0);
}

TEST(Evolution, SameSeedGivesTheSameGenerations) {
  std::vector<std::vector<Genes>> runs[2];
  for (auto& run : runs) {
    CEvolution evolution(MakeFilmSearch());
    for (int i = 0; i < 5; ++i) {
      Iterate(evolution);
      run.push_back(GenesOf(evolution));
    }
  }
  EXPECT_EQ(runs[0], runs[1]);
}

TEST(Evolution, AQuietGenerationIsTheSameAndPrintsNothing) {
  CEvolution loud(MakeSearch(6)), quiet(MakeSearch(6));
  CArray<CFitVariable> best;
  double best_error = 1e99;
  for (int i = 0; i < 3; ++i) {
    Iterate(loud);
    ::testing::internal::CaptureStdout();
    quiet.IterateQuietly(best, best_error);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(quiet.errors, loud.errors);
    EXPECT_EQ(quiet.besthistory, loud.besthistory);
  }
  const CArray<double>& history = loud.besthistory;
  EXPECT_EQ(best_error, *std::min_element(history.begin(), history.end()));
  CState individual = MakeSearch(6);
  individual.fitvariables = best;
  ApplyFitVariables(individual);
  EXPECT_EQ(CalcIndividualError(individual), best_error);
}

TEST(Evolution, ParallelErrorsEqualTheOrderedOnes) {
  CEvolution evolution(MakeFilmSearch());
  evolution.EvaluatePopulationParallel();
  const CArray<double> parallel = evolution.errors;
  ::testing::internal::CaptureStdout();
  evolution.EvaluatePopulation();
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(parallel, evolution.errors);
}

}  // namespace
}  // namespace tolvik
