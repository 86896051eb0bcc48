// SPDX-License-Identifier: GPL-2.0-or-later
// A genetic algorithm with elite, crossover, mixing and mutation of real genes; for the family of methods see
// D. E. Goldberg, Genetic Algorithms in Search, Optimization and Machine Learning, Addison-Wesley (1989).
//
// The order of the draws is part of the result: the same seed gives the same sequence of generations.
#include "fit/evolution.h"

#include <algorithm>
#include <cstdio>

#include "fit/dataset_errors.h"
#include "fit/fit_variables.h"

namespace tolvik {
namespace {

constexpr double kPercent = 0.01;

// Truncation toward zero; a number out of the 32-bit range becomes its nearer end, NaN becomes 0.
std::int32_t Truncate(double value) {
  if (!(value == value)) return 0;
  return static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0));
}

}  // namespace

double CalcIndividualError(CState& individual) {
  CSolution solution;
  CArray<double> no_residuals;
  return SumDatasetErrors(individual, solution, no_residuals);
}

CEvolution::CEvolution(const CState& given) : settings(given) {
  const std::uint32_t key = settings.evo_random;
  integergenerator.Seed(&key, 1);
  realgenerator.Seed(&key, 1);
  for (int i = 0; i < 1000; ++i) {
    integergenerator.Draw();
    realgenerator.Draw();
  }
  population.Assign(settings.evo_population, settings);
  nextgeneration.Assign(settings.evo_population, settings);
  for (CState& individual : population) {
    for (CFitVariable& gene : individual.fitvariables) {
      gene.fit_value = DrawBetween(gene.fit_lower_boundary, gene.fit_upper_boundary);
    }
    ApplyFitVariables(individual);
  }
}

double CEvolution::DrawBetween(double lower, double upper) {
  return lower + (upper - lower) * 0x1p-32 * integergenerator.Draw();
}

void CEvolution::EvaluatePopulation() {
  errors.Assign(population.size, 0.0);
  solutions.Assign(population.size, CSolution());
  for (std::int32_t i = 0; i < population.size; ++i) {
    std::printf("Calculate %i\n", i);
    errors[i] = CalcIndividualError(population[i]);
  }
}

void CEvolution::SortRanking() {
  const std::int32_t n = errors.size;
  ranking.Assign(n, 0);
  for (std::int32_t i = 0; i < n; ++i) ranking[i] = i;
  for (std::int32_t pass = 0; pass < n; ++pass) {
    for (std::int32_t i = 0; i + 1 < n; ++i) {
      // Written with "not >=": every pass exchanges a NaN error.
      if (!(errors[ranking[i + 1]] >= errors[ranking[i]])) std::swap(ranking[i], ranking[i + 1]);
    }
  }
}

void CEvolution::KeepHistory() {
  const std::int32_t n = population.size;
  double sum = 0;
  for (const double error : errors) sum += error;
  worsthistory.Append(errors[ranking[n - 1]]);
  besthistory.Append(errors[ranking[0]]);
  meanhistory.Append(sum / n);
}

std::int32_t CEvolution::CountElite() const {
  const std::int32_t n = population.size;
  return std::clamp(Truncate(n * (kPercent * settings.evo_elite)), 0, n);
}

void CEvolution::Iterate() {
  ++generation;
  EvaluatePopulation();
  SortRanking();
  Breed();
}

void CEvolution::IterateQuietly(CArray<CFitVariable>& best, double& best_error) {
  ++generation;
  EvaluatePopulationParallel();
  SortRanking();
  if (!population.IsEmpty() && errors[ranking[0]] < best_error) {
    best = population[ranking[0]].fitvariables;
    best_error = errors[ranking[0]];
  }
  Breed();
}

void CEvolution::Breed() {
  if (population.IsEmpty()) return;
  KeepHistory();
  const std::int32_t elite = CountElite();
  for (std::int32_t i = 0; i < elite; ++i) {
    nextgeneration[i].fitvariables = population[ranking[i]].fitvariables;
  }
  for (std::int32_t i = elite; i < nextgeneration.size; ++i) MakeChild(nextgeneration[i]);
  TakeNextGeneration();
}

const CState& CEvolution::DrawParent(std::int32_t pool, std::int32_t offset) {
  const auto drawn = std::int64_t{integergenerator.Draw() % static_cast<std::uint32_t>(pool)};
  const std::int64_t rank = std::clamp<std::int64_t>(drawn + offset, 0, ranking.size - 1);
  return population[ranking[static_cast<std::int32_t>(rank)]];
}

void CEvolution::MakeChild(CState& child) {
  const std::int32_t n = population.size;
  const std::int32_t pool = std::max(Truncate(settings.evo_parents * kPercent * n), 1);
  // Not CountElite: the products are rounded in another order here, which can move the pool by one.
  const std::int32_t offset =
      settings.evo_takeeliteasparents ? 0 : Truncate(n * settings.evo_elite * kPercent);
  const CState& a = DrawParent(pool, offset);
  const CState& b = DrawParent(pool, offset);
  child.fitvariables = a.fitvariables;
  MixGenes(child.fitvariables, a.fitvariables, b.fitvariables);
}

void CEvolution::MixGenes(CArray<CFitVariable>& child, const CArray<CFitVariable>& a,
                          const CArray<CFitVariable>& b) {
  for (std::int32_t j = 0; j < std::min(child.size, b.size); ++j) {
    double& gene = child[j].fit_value;
    if (integergenerator.Draw() % 2 == 0) gene = b[j].fit_value;
    // A probability of 0 still acts for a draw of 0, and 99 always acts.
    if (integergenerator.Draw() % 100 <= settings.evo_mixing) gene = 0.5 * (b[j].fit_value + a[j].fit_value);
    if (integergenerator.Draw() % 100 <= settings.evo_probability) {
      const double range = settings.evo_range * gene * kPercent;
      gene = DrawBetween(gene - range, gene + range);
    }
    const bool inside = child[j].fit_lower_boundary <= gene && gene <= child[j].fit_upper_boundary;
    if (settings.evo_evorestrictfitparameters && !inside) {
      gene = DrawBetween(child[j].fit_lower_boundary, child[j].fit_upper_boundary);
    }
  }
}

void CEvolution::TakeNextGeneration() {
  for (std::int32_t i = 0; i < nextgeneration.size; ++i) {
    population[i].fitvariables = nextgeneration[i].fitvariables;
    ApplyFitVariables(population[i]);
  }
}

}  // namespace tolvik
