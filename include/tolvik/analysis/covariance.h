// SPDX-License-Identifier: GPL-2.0-or-later
// Errors of fitted parameters from the Jacobian at the minimum.
#pragma once

#include <span>
#include <vector>

#include "tolvik/analysis/matrix.h"
#include "tolvik/analysis/parameters.h"

namespace tolvik::analysis {

/// Errors and correlations. A parameter at a bound, without effect or not determined has the error NaN, and
/// the others are calculated without it.
struct Covariance {
  Matrix covariance;                 ///< (m, m)
  std::vector<double> errors;        ///< (m,): roots of the diagonal
  Matrix correlation;                ///< (m, m)
  std::vector<bool> at_bound;        ///< (m,)
  std::vector<bool> no_effect;       ///< (m,): its column of the Jacobian is zero or not finite
  std::vector<bool> not_determined;  ///< (m,): the data fix only a combination with others
  double chi_square = 0;
  double reduced = 0;  ///< chi_square over points minus parameters; NaN without a degree of freedom
};

/// (JᵀJ)⁻¹ by a QR decomposition with pivots (G. H. Golub, Numer. Math. 7, 206 (1965)). jacobian: (N, m) of
/// residuals whose squares sum to chi square, residuals: (N,). x: the point, for the bounds.
Covariance CalcCovariance(const Matrix& jacobian, std::span<const double> residuals,
                          std::span<const Parameter> parameters, std::span<const double> x);

}  // namespace tolvik::analysis
