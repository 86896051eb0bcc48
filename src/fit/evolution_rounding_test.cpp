// SPDX-License-Identifier: GPL-2.0-or-later
// Percentages of the population are truncated, and the order of the products decides on which side: of 50
// individuals, 58 percent are 28 as 50 (0.01 58) and as (58 0.01) 50, but 29 as (50 58) 0.01 in doubles.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fit/evolution.h"
#include "support/film.h"

namespace tolvik {
namespace {

constexpr std::size_t kPopulation = 50;
constexpr std::uint32_t kSeed = 31;

// Without curves all errors are 0, so the ranking is the order of the individuals.
CState MakeSettings() {
  CState state = testing::MakeFilm();
  state.fitasymmetry = 6;
  state.evo_population = static_cast<std::int32_t>(kPopulation);
  state.evo_random = kSeed;
  state.evo_mixing = -1;  // never
  state.evo_probability = -1;
  testing::Vary(state, FitKind::kThickness, 1, 0, 1, 1, 2);
  return state;
}

std::vector<double> GenesOf(const CEvolution& evolution) {
  std::vector<double> genes;
  for (const CState& individual : evolution.population) genes.push_back(individual.fitvariables[0].fit_value);
  return genes;
}

std::vector<double> NextGenes(CEvolution& evolution) {
  ::testing::internal::CaptureStdout();
  evolution.Iterate();
  ::testing::internal::GetCapturedStdout();
  return GenesOf(evolution);
}

TEST(EvolutionRounding, TheEliteIsOneLessThanWhatParentsLeaveOut) {
  CState settings = MakeSettings();
  settings.evo_elite = 58;
  settings.evo_parents = 2;  // a pool of one
  CEvolution evolution(settings);
  const std::vector<double> before = GenesOf(evolution);
  const std::vector<double> after = NextGenes(evolution);
  for (std::size_t i = 0; i < 28; ++i) EXPECT_EQ(after[i], before[i]) << i;
  for (std::size_t i = 28; i < kPopulation; ++i) EXPECT_EQ(after[i], before[29]) << i;
}

TEST(EvolutionRounding, ThePoolOfParentsIsRoundedLikeTheElite) {
  CState settings = MakeSettings();
  settings.evo_parents = 58;
  settings.evo_takeeliteasparents = true;
  CEvolution evolution(settings);
  const std::vector<double> before = GenesOf(evolution);
  const std::vector<double> after = NextGenes(evolution);
  MTRand_int32 stream;
  stream.Seed(&kSeed, 1);
  for (std::size_t i = 0; i < 2000 + kPopulation; ++i) stream.Draw();
  for (std::size_t i = 0; i < kPopulation; ++i) {
    const double a = before[stream.Draw() % 28];
    const double b = before[stream.Draw() % 28];
    EXPECT_EQ(after[i], stream.Draw() % 2 == 0 ? b : a) << i;
    stream.Draw();  // mixing
    stream.Draw();  // mutation
  }
}

}  // namespace
}  // namespace tolvik
