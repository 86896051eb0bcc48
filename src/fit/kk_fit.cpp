// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/kk_fit.h"

#include <stdexcept>

#include "optics/column_table.h"
#include "optics/kramers_kronig.h"

namespace tolvik {

CKKFit::CKKFit(double lowest, double highest, const CColumnTable& start, const CColumnTable& measured)
    : CChiSquareFit(0), starttable(start), measuredtable(measured), energymin(lowest), energymax(highest) {
  if (start.columns != 2 || measured.columns != 2)
    throw std::invalid_argument("CKKFit: tables of two columns");
  residuals.Assign(2 * static_cast<std::int32_t>(measured.count), 0.0);
}

void CKKFit::ApplyVariable(const CFitVariable& variable) {
  const std::int32_t index = variable.fit_additional_id;
  if (index < 0 || static_cast<std::uint32_t>(index) >= worktable.count) return;
  const CColumnRow& row = worktable.rows[index];
  const double scaled = row.energy * row.energy * variable.fit_value;
  if (variable.fit_id == FitKind::kBetaKK) delta_.Add(worktable, index, scaled);
  if (variable.fit_id == FitKind::kDeltaKK) delta_.Set(index, scaled);
}

double CKKFit::CalcError(CArray<CFitVariable>& variables) {
  worktable = starttable;
  delta_.Begin(worktable);
  for (const CFitVariable& variable : variables) ApplyVariable(variable);
  delta_.End(worktable);
  FromTransformForm(worktable, kKramersKronigOffset);

  const auto rows = static_cast<std::int32_t>(measuredtable.count);
  double sum = 0;
  for (std::int32_t i = 0; i < rows; ++i) {
    const CColumnRow& measured = measuredtable.rows[i];
    double calculated[2];
    InterpolateColumnTable(worktable, measured.energy, calculated);
    const double delta = measured.values[0] - calculated[0];
    const double beta = measured.values[1] - calculated[1];
    if (i + rows < residuals.size) {
      residuals[i] = delta;
      residuals[i + rows] = beta;
    }
    sum += delta * delta + beta * beta;
  }
  return sum;
}

}  // namespace tolvik
