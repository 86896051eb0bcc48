// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/residuals.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace tolvik::analysis {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// ln(1 + x) - x without loss of digits where x is small.
double LogExcess(double x) {
  if (std::abs(x) > 1e-2) return std::log1p(x) - x;
  double power = x, sum = 0;
  for (int k = 2; k <= 9; ++k) {
    power *= -x;
    sum += power / k;
  }
  return sum;
}

double LogPoisson(double y, double model) {
  return y * std::log(model) - model - std::lgamma(y + 1);
}

}  // namespace

Residual NormalResidual(double y, double model, double sigma) {
  const double r = (y - model) / sigma;
  return {r, -1 / sigma, -0.5 * r * r - std::log(sigma) - 0.5 * std::log(2 * std::numbers::pi)};
}

Residual PoissonResidual(double y, double model) {
  if (y == 0 && model >= 0) {
    const double root = std::sqrt(2 * model);
    return {-root, root > 0 ? -1 / root : -kInfinity, -model};
  }
  if (!(model > 0)) return {kNaN, kNaN, -kInfinity};
  // With x = (y - m) / m: m - y + y ln(y / m) = m (x² + (1 + x) (ln(1 + x) - x)).
  const double x = (y - model) / model;
  const double half_deviance = model * (x * x + (1 + x) * LogExcess(x));
  const double r = std::copysign(std::sqrt(2 * std::fmax(half_deviance, 0.0)), x);
  const double slope = std::abs(x) < 1e-7 ? -1 / std::sqrt(model) : -x / r;
  return {r, slope, LogPoisson(y, model)};
}

Residual LogResidual(double y, double model) {
  if (!(y > 0 && model > 0)) return {kNaN, kNaN, -kInfinity};
  const double r = std::log10(y / model);
  return {r, -1 / (model * std::numbers::ln10), -0.5 * r * r};
}

}  // namespace tolvik::analysis
