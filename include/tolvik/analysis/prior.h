// SPDX-License-Identifier: GPL-2.0-or-later
// The prior of a parameter: its bounds and the probability density inside.
#pragma once

#include <cstdint>
#include <limits>

namespace tolvik::analysis {

/// Closed interval of allowed values.
struct Bounds {
  double lower = -std::numeric_limits<double>::infinity();
  double upper = std::numeric_limits<double>::infinity();

  bool Hold(double x) const { return lower <= x && x <= upper; }
  bool AreFinite() const { return upper - lower < std::numeric_limits<double>::infinity(); }
};

enum class PriorKind : std::uint8_t {
  kUniform,    ///< flat between the bounds
  kNormal,     ///< of mean and sigma, cut at the bounds
  kLogUniform  ///< density as 1 / x; bounds above 0
};

/// A density over an interval.
struct Prior {
  PriorKind kind = PriorKind::kUniform;
  double mean = 0;
  double sigma = 1;
};

/// Whether the prior can be used with the bounds: sigma > 0 and finite, bounds of a log-uniform prior above 0
/// and finite, bounds not crossed and not NaN.
bool IsValid(const Prior& prior, const Bounds& bounds);

/// Logarithm of the density at x, normalised over the bounds; -infinity outside, also for NaN. A uniform
/// prior without finite bounds has no norm; its density counts as 1.
double LogPrior(const Prior& prior, const Bounds& bounds, double x);

/// d LogPrior / dx inside the bounds.
double LogPriorSlope(const Prior& prior, double x);

/// The value below which the share u of the probability lies, 0 <= u <= 1. NaN for a uniform prior without
/// finite bounds.
double PriorQuantile(const Prior& prior, const Bounds& bounds, double u);

}  // namespace tolvik::analysis
