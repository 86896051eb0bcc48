// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/prior.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tolvik::analysis {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Share of a normal distribution between a and b, in units of sigma; from the smaller tail, so that no digits
// are lost there.
double NormalShare(double a, double b) {
  constexpr double kRootHalf = 1 / std::numbers::sqrt2;
  if (a > 0) return 0.5 * (std::erfc(a * kRootHalf) - std::erfc(b * kRootHalf));
  return 0.5 * (std::erfc(-b * kRootHalf) - std::erfc(-a * kRootHalf));
}

struct Standardised {
  double lower, upper;
  Standardised(const Prior& prior, const Bounds& bounds)
      : lower((bounds.lower - prior.mean) / prior.sigma), upper((bounds.upper - prior.mean) / prior.sigma) {}
};

double LogNormalDensity(const Prior& prior, const Bounds& bounds, double x) {
  const Standardised cut(prior, bounds);
  const double z = (x - prior.mean) / prior.sigma;
  const double norm = prior.sigma * std::sqrt(2 * std::numbers::pi) * NormalShare(cut.lower, cut.upper);
  return -0.5 * z * z - std::log(norm);
}

// The share increases with z: bisection finds z to the last digit that matters.
double NormalQuantile(const Prior& prior, const Bounds& bounds, double u) {
  constexpr double kFarthest = 40;
  const Standardised cut(prior, bounds);
  double low = std::max(cut.lower, -kFarthest), high = std::min(cut.upper, kFarthest);
  const double whole = NormalShare(cut.lower, cut.upper);
  for (int i = 0; i < 80 && low < high; ++i) {
    const double middle = 0.5 * (low + high);
    (NormalShare(cut.lower, middle) < u * whole ? low : high) = middle;
  }
  return std::clamp(prior.mean + prior.sigma * 0.5 * (low + high), bounds.lower, bounds.upper);
}

}  // namespace

bool IsValid(const Prior& prior, const Bounds& bounds) {
  if (!(bounds.lower <= bounds.upper)) return false;
  switch (prior.kind) {
    case PriorKind::kUniform:
      return true;
    case PriorKind::kNormal:
      return std::isfinite(prior.mean) && prior.sigma > 0 && prior.sigma < kInfinity;
    case PriorKind::kLogUniform:
      return bounds.lower > 0 && bounds.upper < kInfinity;
  }
  return false;
}

double LogPrior(const Prior& prior, const Bounds& bounds, double x) {
  if (!bounds.Hold(x)) return -kInfinity;
  if (bounds.lower == bounds.upper) return 0;
  switch (prior.kind) {
    case PriorKind::kUniform:
      return bounds.AreFinite() ? -std::log(bounds.upper - bounds.lower) : 0.0;
    case PriorKind::kNormal:
      return LogNormalDensity(prior, bounds, x);
    case PriorKind::kLogUniform:
      return -std::log(x) - std::log(std::log(bounds.upper / bounds.lower));
  }
  return -kInfinity;
}

double LogPriorSlope(const Prior& prior, double x) {
  switch (prior.kind) {
    case PriorKind::kUniform:
      return 0;
    case PriorKind::kNormal:
      return -(x - prior.mean) / (prior.sigma * prior.sigma);
    case PriorKind::kLogUniform:
      return -1 / x;
  }
  return 0;
}

double PriorQuantile(const Prior& prior, const Bounds& bounds, double u) {
  switch (prior.kind) {
    case PriorKind::kUniform:
      if (!bounds.AreFinite()) break;
      return std::clamp(bounds.lower + u * (bounds.upper - bounds.lower), bounds.lower, bounds.upper);
    case PriorKind::kNormal:
      return NormalQuantile(prior, bounds, u);
    case PriorKind::kLogUniform:
      return std::clamp(bounds.lower * std::pow(bounds.upper / bounds.lower, u), bounds.lower, bounds.upper);
  }
  return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tolvik::analysis
