// SPDX-License-Identifier: GPL-2.0-or-later
// The children of a generation: every gene is compared with the draws that decide it.
#include "fit/evolution.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/searches.h"

namespace tolvik {
namespace {

using testing::DrawsOf;
using testing::Genes;
using testing::GenesOf;
using testing::Iterate;
using testing::MakeSearch;

TEST(EvolutionChildren, CrossoverFollowsTheDraws) {
  CEvolution evolution(MakeSearch(4));
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

TEST(EvolutionChildren, MixingMutationAndRestriction) {
  CState settings = MakeSearch(4);
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

TEST(EvolutionChildren, WithoutRestrictionAMutationMayLeaveTheBounds) {
  CState settings = MakeSearch(30);
  settings.evo_probability = 99;  // always
  settings.evo_range = 200;
  CEvolution evolution(settings);
  Iterate(evolution);
  int outside = 0;
  for (const Genes& genes : GenesOf(evolution)) outside += genes[0] < 1 || genes[0] > 2;
  EXPECT_GT(outside, 5);
}

// The number of first genes of a large population that come from no parent after a generation.
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

TEST(EvolutionChildren, ProbabilityZeroStillFiresForADrawOfZero) {
  const CState never = MakeSearch(300);
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

TEST(EvolutionChildren, GeneOfZeroNeverMutates) {
  CState settings = MakeSearch(10);
  settings.evo_probability = 99;
  for (CFitVariable& variable : settings.fitvariables)
    variable.fit_lower_boundary = variable.fit_upper_boundary = 0;
  CEvolution evolution(settings);
  Iterate(evolution);
  for (const Genes& genes : GenesOf(evolution)) EXPECT_EQ(genes, (Genes{0, 0}));
}

TEST(EvolutionChildren, AllElitePassUnchangedInRankingOrder) {
  CState settings = MakeSearch(5);
  settings.evo_elite = 100;
  CEvolution evolution(settings);
  const std::vector<Genes> before = GenesOf(evolution);
  Iterate(evolution);
  EXPECT_EQ(GenesOf(evolution), before);  // all errors are equal
  const std::uint32_t next = evolution.integergenerator.Draw();
  EXPECT_EQ(next, DrawsOf(31, 11)[10]);  // no child, no draw
}

TEST(EvolutionChildren, ParentsBehindTheElite) {
  CState settings = MakeSearch(4);
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

// After one generation all are copies of the best.
void ExpectTheBestIsCopied(const CState& settings) {
  CEvolution evolution(settings);
  const Genes best = GenesOf(evolution.population[0]);
  Iterate(evolution);
  for (const Genes& genes : GenesOf(evolution)) EXPECT_EQ(genes, best);
}

TEST(EvolutionChildren, WithoutElitePoolStartsAtTheBestAnyway) {
  CState settings = MakeSearch(4);
  settings.evo_parents = 25;
  settings.evo_takeeliteasparents = false;
  ExpectTheBestIsCopied(settings);
}

TEST(EvolutionChildren, PoolOfNoneCountsAsTheBestOne) {
  CState settings = MakeSearch(4);
  settings.evo_parents = 0;
  ExpectTheBestIsCopied(settings);
}

TEST(EvolutionChildren, PoolBehindTheWorstCountsAsTheWorst) {
  CState settings = MakeSearch(4);
  settings.evo_elite = 75;
  settings.evo_parents = 100;
  settings.evo_takeeliteasparents = false;
  CEvolution evolution(settings);
  const Genes worst = GenesOf(evolution.population[3]);
  Iterate(evolution);
  EXPECT_EQ(GenesOf(evolution.population[3]), worst);
}

TEST(EvolutionChildren, SettingsWithoutMeaningDoNotFail) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const double elite : {0.0, 50.0, 100.0, 1000.0, -50.0, 1e300, -1e300, kNaN}) {
    for (const double parents : {0.0, 10.0, 100.0, 1000.0, -10.0, 1e300, kNaN}) {
      for (const bool take : {false, true}) {
        CState settings = MakeSearch(4);
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

}  // namespace
}  // namespace tolvik
