// SPDX-License-Identifier: GPL-2.0-or-later
// From a measured value and its model to a residual and a likelihood.
#pragma once

#include <cstdint>

namespace tolvik::analysis {

/// One comparison of a value with its model.
struct Residual {
  double value;           ///< the residual, whose square least squares minimises
  double slope;           ///< d value / d model
  double log_likelihood;  ///< of this point
};

/// (y - model) / sigma, with the normal density.
Residual NormalResidual(double y, double model, double sigma);

/// The signed root of the deviance of Poisson statistics, sign(y - model) √(2 (model - y + y ln(y / model))),
/// with the probability of y counts at the mean model (W. Cash, Astrophys. J. 228, 939 (1979)). NaN for a
/// model that is not above 0, except 0 counts at a model of 0.
Residual PoissonResidual(double y, double model);

/// log10 y - log10 model; its likelihood is that of a normal density of sigma 1 without its constant. NaN
/// where a value is not above 0.
Residual LogResidual(double y, double model);

}  // namespace tolvik::analysis
