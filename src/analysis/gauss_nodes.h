// SPDX-License-Identifier: GPL-2.0-or-later
// Nodes and weights of Gauss quadratures.
#pragma once

#include <cstdint>
#include <vector>

namespace tolvik::analysis {

struct QuadratureRule {
  std::vector<double> node;    ///< ascending
  std::vector<double> weight;  ///< the sum is 1
};

/// Gauss-Hermite for the standard normal density: exact for polynomials up to the degree 2 n - 1. n >= 1.
/// (G. H. Golub and J. H. Welsch, Math. Comp. 23, 221 (1969), for the weights.)
QuadratureRule GaussHermite(std::int32_t n);

/// Gauss-Legendre on 0 .. 1. n >= 1.
QuadratureRule GaussLegendre(std::int32_t n);

}  // namespace tolvik::analysis
