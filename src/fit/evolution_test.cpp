// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/evolution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/film.h"

namespace tolvik {
namespace {

using Genes = std::vector<double>;

// A search whose objective is 0 everywhere, so that the ranking is the order of the population and only the
// draws decide: variables between 1 and 2 and between 10 and 20.
CState MakeSettings(std::int32_t population) {
  CState state = testing::MakeFilm();
  state.fitasymmetry = 6;
  state.evo_population = population;
  state.evo_random = 31;
  state.evo_parents = 50;
  state.evo_takeeliteasparents = true;
  state.evo_range = 10;
  state.evo_mixing = -1;  // never
  state.evo_probability = -1;
  testing::Vary(state, 0, 1, 0, 1, 1, 2);
  testing::Vary(state, 3, 1, 0, 1, 10, 20);
  return state;
}

Genes GenesOf(const CState& individual) {
  Genes genes;
  for (const CFitVariable& variable : individual.fitvariables) genes.push_back(variable.fit_value);
  return genes;
}

std::vector<Genes> GenesOf(const CEvolution& evolution) {
  std::vector<Genes> genes;
  for (const CState& individual : evolution.population) genes.push_back(GenesOf(individual));
  return genes;
}

// Runs a generation and gives what it prints.
std::string Iterate(CEvolution& evolution) {
  ::testing::internal::CaptureStdout();
  evolution.Iterate();
  return ::testing::internal::GetCapturedStdout();
}

// The numbers that a search with the given seed draws, in order.
std::vector<std::uint32_t> DrawsOf(std::uint32_t seed, int count) {
  MTRand_int32 stream;
  stream.Seed(&seed, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  std::vector<std::uint32_t> draws;
  for (int i = 0; i < count; ++i) draws.push_back(stream.Draw());
  return draws;
}

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
  const CEvolution evolution(MakeSettings(1));
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
  const auto behind = 8 * array + static_cast<std::ptrdiff_t>(sizeof(CState));
  EXPECT_EQ(offset(evolution.integergenerator), behind);
  EXPECT_EQ(offset(evolution.realgenerator), behind + 8);
  EXPECT_EQ(offset(evolution.generation), behind + 16);
}

TEST(Evolution, StartsBetweenTheBounds) {
  const CEvolution evolution(MakeSettings(3));
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

TEST(Evolution, CrossoverFollowsTheDraws) {
  CEvolution evolution(MakeSettings(4));
  const std::vector<Genes> parents = GenesOf(evolution);
  EXPECT_EQ(Iterate(evolution), "Calculate 0\nCalculate 1\nCalculate 2\nCalculate 3\n");
  EXPECT_EQ(evolution.generation, 1);
  const std::vector<std::uint32_t> d = DrawsOf(31, 8 + 4 * 8);
  std::size_t next = 8;
  bool differ = false;
  for (std::int32_t i = 0; i < 4; ++i) {
    const Genes& a = parents[d[next] % 2];  // the pool is half of the population
    const Genes& b = parents[d[next + 1] % 2];
    next += 2;
    Genes expected;
    for (std::size_t j = 0; j < 2; ++j, next += 3) expected.push_back(d[next] % 2 == 0 ? b[j] : a[j]);
    EXPECT_EQ(GenesOf(evolution.population[i]), expected) << i;
    EXPECT_EQ(evolution.population[i].layers[1].layer_d, expected[0]);
    differ = differ || a != b;
  }
  EXPECT_TRUE(differ);
}

TEST(Evolution, MixingMutationAndRestriction) {
  CState settings = MakeSettings(4);
  settings.evo_mixing = 30;
  settings.evo_probability = 60;
  settings.evo_range = 80;
  settings.evo_evorestrictfitparameters = true;
  CEvolution evolution(settings);
  const std::vector<Genes> parents = GenesOf(evolution);
  Iterate(evolution);
  const std::vector<std::uint32_t> d = DrawsOf(31, 100);
  std::size_t next = 8;
  int mixed = 0, mutated = 0, redrawn = 0;
  const double lower[] = {1, 10}, upper[] = {2, 20};
  for (std::int32_t i = 0; i < 4; ++i) {
    const Genes& a = parents[d[next++] % 2];
    const Genes& b = parents[d[next++] % 2];
    for (std::size_t j = 0; j < 2; ++j) {
      double g = d[next++] % 2 == 0 ? b[j] : a[j];
      if (d[next++] % 100 <= 30) {
        g = 0.5 * (b[j] + a[j]);
        ++mixed;
      }
      if (d[next++] % 100 <= 60) {
        const double r = 80 * g * 0.01;
        g = (g - r) + ((g + r) - (g - r)) * 0x1p-32 * d[next++];
        ++mutated;
      }
      if (g < lower[j] || g > upper[j]) {
        g = lower[j] + (upper[j] - lower[j]) * 0x1p-32 * d[next++];
        ++redrawn;
      }
      EXPECT_DOUBLE_EQ(GenesOf(evolution.population[i])[j], g) << i << " " << j;
    }
  }
  EXPECT_GT(mixed, 0);
  EXPECT_GT(mutated, 0);
  EXPECT_GT(redrawn, 0);
  EXPECT_LT(redrawn, mutated);
}

TEST(Evolution, WithoutRestrictionAMutationMayLeaveTheBounds) {
  CState settings = MakeSettings(30);
  settings.evo_probability = 99;  // always
  settings.evo_range = 200;
  CEvolution evolution(settings);
  Iterate(evolution);
  int outside = 0;
  for (const Genes& genes : GenesOf(evolution)) outside += genes[0] < 1 || genes[0] > 2;
  EXPECT_GT(outside, 5);
}

// How many first genes of a large population are none of its parents' after a generation.
int CountNewGenes(CState settings) {
  settings.evo_parents = 100;
  CEvolution evolution(settings);
  const std::vector<Genes> before = GenesOf(evolution);
  Iterate(evolution);
  int changed = 0;
  for (const Genes& genes : GenesOf(evolution)) {
    bool known = false;
    for (const Genes& parent : before) known = known || parent[0] == genes[0];
    changed += !known;
  }
  return changed;
}

TEST(Evolution, ProbabilityZeroStillFiresForADrawOfZero) {
  const CState never = MakeSettings(300);
  EXPECT_EQ(CountNewGenes(never), 0);
  CState mutating = never;
  mutating.evo_probability = 0;
  EXPECT_GT(CountNewGenes(mutating), 0);  // three of 300 are expected
  EXPECT_LT(CountNewGenes(mutating), 15);
  CState mixing = never;
  mixing.evo_mixing = 0;
  EXPECT_GT(CountNewGenes(mixing), 0);
  EXPECT_LT(CountNewGenes(mixing), 15);
}

TEST(Evolution, GeneOfZeroNeverMutates) {
  CState settings = MakeSettings(10);
  settings.evo_probability = 99;
  for (CFitVariable& variable : settings.fitvariables)
    variable.fit_lower_boundary = variable.fit_upper_boundary = 0;
  CEvolution evolution(settings);
  Iterate(evolution);
  for (const Genes& genes : GenesOf(evolution)) EXPECT_EQ(genes, (Genes{0, 0}));
}

TEST(Evolution, AllElitePassUnchangedInRankingOrder) {
  CState settings = MakeSettings(5);
  settings.evo_elite = 100;
  CEvolution evolution(settings);
  const std::vector<Genes> before = GenesOf(evolution);
  Iterate(evolution);
  EXPECT_EQ(GenesOf(evolution), before);  // all errors are equal
  const std::uint32_t next = evolution.integergenerator.Draw();
  EXPECT_EQ(next, DrawsOf(31, 11)[10]);  // no child, no draw
}

TEST(Evolution, ParentsBehindTheElite) {
  CState settings = MakeSettings(4);
  settings.evo_elite = 50;
  settings.evo_takeeliteasparents = false;
  CEvolution evolution(settings);
  const std::vector<Genes> before = GenesOf(evolution);
  Iterate(evolution);
  const std::vector<Genes> after = GenesOf(evolution);
  EXPECT_EQ(after[0], before[0]);
  EXPECT_EQ(after[1], before[1]);
  for (std::size_t i = 2; i < 4; ++i) {
    for (std::size_t j = 0; j < 2; ++j)
      EXPECT_TRUE(after[i][j] == before[2][j] || after[i][j] == before[3][j]);
  }
}

TEST(Evolution, WithoutElitePoolStartsAtTheBestAnyway) {
  CState settings = MakeSettings(4);
  settings.evo_parents = 25;
  settings.evo_takeeliteasparents = false;
  CEvolution evolution(settings);
  const Genes best = GenesOf(evolution.population[0]);
  Iterate(evolution);
  for (const Genes& genes : GenesOf(evolution)) EXPECT_EQ(genes, best);
}

TEST(Evolution, SettingsWithoutMeaningDoNotFail) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const double elite : {0.0, 50.0, 100.0, 1000.0, -50.0, 1e300, -1e300, kNaN}) {
    for (const double parents : {0.0, 10.0, 100.0, 1000.0, -10.0, 1e300, kNaN}) {
      for (const bool take : {false, true}) {
        CState settings = MakeSettings(4);
        settings.evo_elite = elite;
        settings.evo_parents = parents;
        settings.evo_takeeliteasparents = take;
        CEvolution evolution(settings);
        Iterate(evolution);
        Iterate(evolution);
        EXPECT_EQ(evolution.population.size, 4);
        for (const Genes& genes : GenesOf(evolution)) EXPECT_TRUE(genes[0] >= 1 && genes[0] <= 2);
      }
    }
  }
}

TEST(Evolution, PoolOfNoneCountsAsTheBestOne) {
  CState settings = MakeSettings(4);
  settings.evo_parents = 0;
  CEvolution evolution(settings);
  const Genes best = GenesOf(evolution.population[0]);
  Iterate(evolution);
  for (const Genes& genes : GenesOf(evolution)) EXPECT_EQ(genes, best);
}

TEST(Evolution, PoolBehindTheWorstCountsAsTheWorst) {
  CState settings = MakeSettings(4);
  settings.evo_elite = 75;
  settings.evo_parents = 100;
  settings.evo_takeeliteasparents = false;
  CEvolution evolution(settings);
  const Genes worst = GenesOf(evolution.population[3]);
  Iterate(evolution);
  EXPECT_EQ(GenesOf(evolution.population[3]), worst);
}

TEST(Evolution, EmptyAndNegativePopulation) {
  for (const std::int32_t n : {0, -1, INT32_MIN}) {
    CEvolution evolution(MakeSettings(n));
    EXPECT_EQ(Iterate(evolution), "");
    evolution.EvaluatePopulationParallel();
    evolution.SortRankingQuick();
    EXPECT_EQ(evolution.generation, 1);
    EXPECT_TRUE(evolution.population.IsEmpty());
    EXPECT_TRUE(evolution.besthistory.IsEmpty());
  }
}

TEST(Evolution, NoVariables) {
  CState settings = MakeSettings(3);
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
  testing::Vary(state, 0, 1, 60, 1, 50, 70);
  testing::Vary(state, 3, 1, 5, 1, 2, 8);
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
    copy.fitvariables.Clear();  // they play no part
    EXPECT_EQ(CalcIndividualError(individual), CalcIndividualError(copy));
  }
  CState truth = MakeFilmSearch();
  EXPECT_EQ(CalcIndividualError(truth), 0);
  truth.fitpenalty = 1e9;  // nor do penalties
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

TEST(Evolution, ParallelErrorsEqualTheOrderedOnes) {
  CEvolution evolution(MakeFilmSearch());
  evolution.EvaluatePopulationParallel();
  const CArray<double> parallel = evolution.errors;
  ::testing::internal::CaptureStdout();
  evolution.EvaluatePopulation();
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(parallel, evolution.errors);
}

CEvolution MakeRanked(std::initializer_list<double> errors) {
  CEvolution evolution(MakeSettings(0));
  for (const double error : errors) evolution.errors.Append(error);
  return evolution;
}

std::vector<std::int32_t> RankingOf(const CEvolution& evolution) {
  return {evolution.ranking.begin(), evolution.ranking.end()};
}

TEST(Ranking, BestFirstAndTiesInOrder) {
  CEvolution evolution = MakeRanked({3, 1, 2, 1, 0, 3});
  evolution.SortRanking();
  EXPECT_EQ(RankingOf(evolution), (std::vector<std::int32_t>{4, 1, 3, 2, 0, 5}));
}

TEST(Ranking, ErrorThatIsNoNumberIsExchangedByEveryPass) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  // A pair with a NaN is always exchanged: of two entries the two passes restore the order.
  CEvolution two = MakeRanked({kNaN, 1});
  two.SortRanking();
  EXPECT_EQ(RankingOf(two), (std::vector<std::int32_t>{0, 1}));
  // By hand, N the NaN: 2 N 1, N 2 1, N 1 2 | 1 N 2, 1 2 N | 1 2 N, 1 N 2.
  CEvolution three = MakeRanked({2, kNaN, 1});
  three.SortRanking();
  EXPECT_EQ(RankingOf(three), (std::vector<std::int32_t>{2, 1, 0}));
}

TEST(Ranking, QuicksortOrdersByError) {
  CEvolution evolution(MakeSettings(0));
  MTRand_int32 stream;
  stream.Seed(3u);
  for (std::int32_t i = 0; i < 500; ++i) {
    evolution.errors.Append(stream.Draw() % 100);
    evolution.ranking.Append(499 - i);
  }
  evolution.SortRankingQuick();
  std::vector<bool> seen(500);
  for (std::int32_t i = 0; i < 500; ++i) {
    seen[static_cast<std::size_t>(evolution.ranking[i])] = true;
    if (i > 0) {
      ASSERT_LE(evolution.errors[evolution.ranking[i - 1]], evolution.errors[evolution.ranking[i]]);
    }
  }
  for (const bool entry : seen) EXPECT_TRUE(entry);
}

TEST(Ranking, QuicksortSurvivesErrorsThatAreNoNumbers) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  CEvolution evolution = MakeRanked({kNaN, 3, kNaN, 1, kNaN, 2, kNaN});
  for (std::int32_t i = 0; i < 7; ++i) evolution.ranking.Append(i);
  evolution.SortRankingQuick();
  std::vector<bool> seen(7);
  for (const std::int32_t i : evolution.ranking) seen[static_cast<std::size_t>(i)] = true;
  for (const bool entry : seen) EXPECT_TRUE(entry);
}

}  // namespace
}  // namespace tolvik
