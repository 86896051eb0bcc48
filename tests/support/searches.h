// SPDX-License-Identifier: GPL-2.0-or-later
// Genetic searches whose every draw a test can follow.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fit/evolution.h"
#include "fit/mt_rand.h"
#include "support/film.h"

namespace tolvik::testing {

using Genes = std::vector<double>;

// A search whose objective is 0 everywhere, so that the ranking is the order of the population and only the
// draws decide: variables between 1 and 2 and between 10 and 20.
inline CState MakeSearch(std::int32_t population) {
  CState state = MakeFilm();
  state.fitasymmetry = 6;
  state.evo_population = population;
  state.evo_random = 31;
  state.evo_parents = 50;
  state.evo_takeeliteasparents = true;
  state.evo_range = 10;
  state.evo_mixing = -1;  // never
  state.evo_probability = -1;
  Vary(state, FitKind::kThickness, 1, 0, 1, 1, 2);
  Vary(state, FitKind::kSigma, 1, 0, 1, 10, 20);
  return state;
}

inline Genes GenesOf(const CState& individual) {
  Genes genes;
  for (const CFitVariable& variable : individual.fitvariables) genes.push_back(variable.fit_value);
  return genes;
}

inline std::vector<Genes> GenesOf(const CEvolution& evolution) {
  std::vector<Genes> genes;
  for (const CState& individual : evolution.population) genes.push_back(GenesOf(individual));
  return genes;
}

// Runs a generation and returns its output.
inline std::string Iterate(CEvolution& evolution) {
  ::testing::internal::CaptureStdout();
  evolution.Iterate();
  return ::testing::internal::GetCapturedStdout();
}

// The numbers that a search with the given seed draws, in order.
inline std::vector<std::uint32_t> DrawsOf(std::uint32_t seed, int count) {
  MTRand_int32 stream;
  stream.Seed(&seed, 1);
  for (int i = 0; i < 2000; ++i) stream.Draw();
  std::vector<std::uint32_t> draws;
  for (int i = 0; i < count; ++i) draws.push_back(stream.Draw());
  return draws;
}

}  // namespace tolvik::testing
