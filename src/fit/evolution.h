// SPDX-License-Identifier: GPL-2.0-or-later
// A genetic search over the fit variables: a population of whole states, one generation per call.
//
// Unlike the other searches it needs no start point: individuals are drawn between the bounds of the
// variables, so it needs sensible bounds.
#pragma once

#include <cstdint>

#include "fit/mt_rand.h"
#include "tolvik/array.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik {

/// A population and its history. The members in this order are the contract with a front end, which reads
/// them. The genes of an individual are the fit_value entries of its own fitvariables.
class CEvolution {
 public:
  CArray<CState> population;      ///< one full state per individual
  CArray<CState> nextgeneration;  ///< children are built here; same length
  CArray<CSolution> solutions;    ///< one default record per individual, remade every generation
  CArray<double> errors;          ///< error of each individual, by population index
  CArray<std::int32_t> ranking;   ///< population indices, best first
  CArray<double> worsthistory;    ///< worst error of each generation
  CArray<double> besthistory;     ///< best error of each generation
  CArray<double> meanhistory;     ///< mean error of each generation
  CState settings;                ///< copy of the given state: evo_* settings and bounds
  MTRand_int32 integergenerator;
  MTRand realgenerator;
  std::int32_t generation = 0;  ///< generations run

  /// Copies the state evo_population times, none for a population below 1, and draws all genes.
  explicit CEvolution(const CState& given);

  /// One generation: evaluates and ranks the population, then replaces it by its children, which are
  /// evaluated in the next call. Throws the exceptions of a calculation, with the generation half done.
  /// Settings without a meaning never fail: a pool of parents below one individual counts as one, a parent
  /// after the worst individual counts as the worst, an elite beyond the population as all of it, and an
  /// empty population only counts generations.
  void Iterate();

  /// The same generation on all processors, without a word; solutions stay as they are. The genes of an
  /// individual with an error below best_error are kept in best, and its error in best_error.
  void IterateQuietly(CArray<CFitVariable>& best, double& best_error);

  /// Fills errors and remakes solutions, in order; prints "Calculate %i" with the index on the standard
  /// output before each individual.
  void EvaluatePopulation();
  /// Fills errors on all processors and prints nothing; solutions do not change. When all have ended, the
  /// exception of the first individual that failed is thrown; the others have their errors.
  void EvaluatePopulationParallel();

  /// Fills ranking by errors with a bubble sort: ties keep their order.
  void SortRanking();
  /// Sorts ranking by errors with a recursive quicksort; ties in any order.
  void SortRankingQuick();

 private:
  double DrawBetween(double lower, double upper);
  std::int32_t CountElite() const;
  void Breed();
  void KeepHistory();
  void MakeChild(CState& child);
  const CState& DrawParent(std::int32_t pool, std::int32_t offset);
  void MixGenes(CArray<CFitVariable>& child, const CArray<CFitVariable>& a, const CArray<CFitVariable>& b);
  void TakeNextGeneration();
};

/// SumDatasetErrors of an individual on its own state, with a curve of its own and no residuals. The applied
/// model stays. Individuals are independent, so distinct ones may run in parallel.
double CalcIndividualError(CState& individual);

}  // namespace tolvik
