// SPDX-License-Identifier: GPL-2.0-or-later
// The base of all fits: the variables with their bounds, the random stream, and the state of the optimisers.
//
// A derived class defines CalcError; the optimisers (simplex.cpp, annealing.cpp, levenberg.cpp) are steps on
// this class. None of them stops by itself: the caller decides how many steps to run.
#pragma once

#include <cstdint>
#include <memory>

#include "fit/mt_rand.h"
#include "tolvik/array.h"
#include "tolvik/state.h"

namespace tolvik {

/// A fit of variables to measurements. The members in this order, one virtual operation and a destructor that
/// is not virtual are the contract with a front end. Objects of derived classes are deleted by their own
/// type.
class CChiSquareFit {
 public:
  double fittemp = 0;                          ///< temperature of the annealing simplex
  double fitdtemp = 0;                         ///< change of fittemp per step
  double lasterror = 0;                        ///< value of the most recent objective call
  CArray<CFitVariable> fitvariables;           ///< the working variables, those of the objective
  CArray<double> parameters;                   ///< present parameter vector, one entry per variable
  CArray<double> residuals;                    ///< filled by the objective, minimised by LevenbergStep
  bool restart = false;                        ///< the next simplex step builds a new simplex
  std::unique_ptr<CArray<double>[]> vertices;  ///< the simplex: one point more than there are parameters
  CArray<double> bestparameters;               ///< best point of the annealing simplex so far
  CArray<double> vertexerrors;                 ///< objective at each vertex
  CArray<double> vertexsum;                    ///< per coordinate, the sum over all vertices
  double besterror = kLargeError;              ///< error of bestparameters
  CArray<CFitVariable> bestvariables;          ///< variables of the best random restart
  double restartbesterror = kLargeError;       ///< error of bestvariables
  MTRand_int32 integergenerator;
  MTRand realgenerator;

  /// Error of the model at the given variables; a derived class also fills residuals here. Not const: the
  /// objective leaves the model and its curve at this point. May throw any exception of a calculation.
  virtual double CalcError(CArray<CFitVariable>& variables) = 0;

  /// Starts a search from the present fit_value of the variables: rebuilds parameters and sets restart.
  void RestartFit();
  /// Moves a point of fitvariables.size entries into the bounds and leaves the variables there. A NaN becomes
  /// the lower bound; of crossed bounds the upper one wins.
  void ClampParameters(CArray<double>& vector);

  /// One step of the downhill simplex; the first after RestartFit builds the simplex and makes no move.
  /// Afterwards parameters, the model and lasterror are those of the best vertex at the start of the step.
  void SimplexStep();
  /// One step of the simplex with thermal noise. Afterwards the model and lasterror are those of the last
  /// trial; bestparameters is the best point so far.
  void AnnealingStep();
  /// One Levenberg-Marquardt run of at most 100 iterations on residuals; sets fit_sigma of the variables.
  /// Afterwards parameters, the model and lasterror are those of levmar's last evaluation.
  void LevenbergStep();
  /// LevenbergStep with at most 10 iterations.
  void LevenbergShortStep();
  /// A random start between the bounds and 300 simplex steps from it; bestvariables and restartbesterror are
  /// the best of all such searches.
  void RandomRestartSearch();
  /// Moves along one coordinate after the other by fit_delta; a step that made the error worse is undone and
  /// its fit_delta multiplied by -0.3.
  void CoordinateStep();

 protected:
  /// Seeds the stream with a key of one word and advances it by 2000 numbers.
  explicit CChiSquareFit(std::uint32_t seed);
  /// The same with given variables and a key of four words; sets restart.
  CChiSquareFit(const CArray<CFitVariable>& variables, const std::uint32_t (&key)[4]);
  CChiSquareFit(const CChiSquareFit&) = delete;
  CChiSquareFit& operator=(const CChiSquareFit&) = delete;
  ~CChiSquareFit() = default;

 private:
  static constexpr double kLargeError = 1e90;

  void SeedStream(const std::uint32_t* key, int length);
  double EvaluateAt(CArray<double>& vector);
  void BuildSimplex(bool flush_errors);
  void SumVertices();
  void ShrinkTowards(std::int32_t low);
  CArray<double> TrialPoint(std::int32_t worst, double factor) const;
  void ReplaceVertex(std::int32_t index, double error, CArray<double>&& point);
  double SimplexTrialPoint(std::int32_t worst, double factor);
  double AnnealingTrialPoint(std::int32_t worst, double& highest, double factor);
  double DrawNoise();
  void RunLevenberg(int iterations);
};

/// The fit that LevenbergStep drives: only one such run is active in a process.
extern CChiSquareFit* currentfit;

}  // namespace tolvik
