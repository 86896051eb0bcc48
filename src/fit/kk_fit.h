// SPDX-License-Identifier: GPL-2.0-or-later
// A fit of an absorption spectrum whose delta follows by the Kramers-Kronig relation.
#pragma once

#include "fit/chi_square_fit.h"
#include "optics/kramers_kronig.h"
#include "tolvik/tables.h"

namespace tolvik {

/// Fits values of beta at rows of a table so that beta and the delta that belongs to it match a measured
/// table.
///
/// All tables have two columns. starttable is in transform form (see optics/kramers_kronig.h): beta E²
/// without the rows to be fitted, and its transform. measuredtable and worktable are delta and beta. Energies
/// in eV. The rows to be fitted are variables: fit_id 17 is beta of the row fit_additional_id, whose hat is
/// added to delta of all rows; 18 is delta of that row, without any relation. Others are ignored, and so are
/// rows that the table does not have and, for beta, its two end rows.
class CKKFit final : public CChiSquareFit {
 public:
  CColumnTable starttable;     ///< start of every evaluation
  CColumnTable measuredtable;  ///< the table to match
  CColumnTable worktable{2};   ///< result of the latest evaluation
  double energymin = 0;        ///< fit window, kept for the caller
  double energymax = 0;

  /// residuals gets two entries for each measured row: first all of delta, then all of beta.
  /// Throws std::invalid_argument when a table does not have two columns.
  CKKFit(double lowest, double highest, const CColumnTable& start, const CColumnTable& measured);

  /// Sum of the squared residuals, measured minus calculated, over all rows and both columns.
  double CalcError(CArray<CFitVariable>& variables) override;

 private:
  void ApplyVariable(const CFitVariable& variable);

  KramersKronigSum delta_;  // column 0 of worktable during an evaluation
};

/// Constant of delta E² from all absorption outside the table.
inline constexpr double kKramersKronigOffset = 1206.095;

}  // namespace tolvik
