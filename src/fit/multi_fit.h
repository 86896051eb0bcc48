// SPDX-License-Identifier: GPL-2.0-or-later
// The fit of a whole state to its active measurements.
#pragma once

#include "fit/chi_square_fit.h"
#include "tolvik/dataset.h"
#include "tolvik/state.h"

namespace tolvik {

/// A fit on a private deep copy of a state; the given state does not change. Call RestartFit once, then
/// steps. Not re-entrant, and not to be shared between threads.
class CMultiFit final : public CChiSquareFit {
 public:
  CState state;        ///< the model at the last evaluation
  CSolution solution;  ///< the curve of the dataset calculated last

  /// Takes seed, temperature and variables from the state. residuals gets one zero for each point of the
  /// active datasets.
  explicit CMultiFit(const CState& given);

  /// SumDatasetErrors at the given variables, plus two penalties where fitpenalty is set: one keeps the point
  /// near parameters, the other keeps neighbouring rows of a Kramers-Kronig table similar. An empty list does
  /// not change the model.
  double CalcError(CArray<CFitVariable>& variables) override;

  /// One step of the fit by the fitalgorithm of the copy: SimplexStep, LevenbergStep or AnnealingStep; any
  /// other value does nothing.
  void Iterate();

 private:
  double DistancePenalty() const;
  double NeighbourPenalty() const;
};

}  // namespace tolvik
