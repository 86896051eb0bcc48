// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/gauss_nodes.h"

#include <cmath>
#include <numbers>

namespace tolvik::analysis {
namespace {

// Hermite polynomials that are orthonormal under the normal density.
struct HermiteValue {
  double value;    // of degree n
  double slope;    // its derivative
  double squares;  // sum of the squares of the degrees below n
};

HermiteValue Hermite(std::int32_t n, double x) {
  double below = 0, value = 1, squares = 0;
  for (std::int32_t k = 0; k < n; ++k) {
    squares += value * value;
    const double above = (x * value - std::sqrt(double(k)) * below) / std::sqrt(double(k + 1));
    below = value;
    value = above;
  }
  return {value, std::sqrt(double(n)) * below, squares};
}

// The root between two numbers at which the polynomial has different signs.
double HermiteRoot(std::int32_t n, double low, double high) {
  const bool rises = Hermite(n, low).value < 0;
  for (int i = 0; i < 12; ++i) {
    const double middle = 0.5 * (low + high);
    ((Hermite(n, middle).value < 0) == rises ? low : high) = middle;
  }
  double x = 0.5 * (low + high);
  for (int i = 0; i < 5; ++i) {
    const HermiteValue at = Hermite(n, x);
    x -= at.value / at.slope;
  }
  return x;
}

}  // namespace

QuadratureRule GaussHermite(std::int32_t n) {
  // The roots of each degree lie between those of the degree below.
  std::vector<double> roots;
  for (std::int32_t degree = 1; degree <= n; ++degree) {
    const double beyond = 2 * std::sqrt(double(degree)) + 1;
    std::vector<double> next;
    for (std::size_t i = 0; i <= roots.size(); ++i) {
      const double low = i == 0 ? -beyond : roots[i - 1];
      const double high = i == roots.size() ? beyond : roots[i];
      next.push_back(HermiteRoot(degree, low, high));
    }
    roots = next;
  }
  QuadratureRule rule;
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const double x = 0.5 * (roots[i] - roots[roots.size() - 1 - i]);  // exactly symmetric
    rule.node.push_back(x);
    rule.weight.push_back(1 / Hermite(n, x).squares);
  }
  return rule;
}

QuadratureRule GaussLegendre(std::int32_t n) {
  const auto count = static_cast<std::size_t>(n);
  QuadratureRule rule{std::vector<double>(count), std::vector<double>(count)};
  for (std::size_t i = 0; i < count; ++i) {
    double x = -std::cos(std::numbers::pi * (double(i) + 0.75) / (double(n) + 0.5));
    double slope = 1;
    for (int step = 0; step < 6; ++step) {
      double below = 1, value = x;
      for (std::int32_t k = 1; k < n; ++k) {
        const double above = ((2 * k + 1) * x * value - k * below) / (k + 1);
        below = value;
        value = above;
      }
      slope = n * (x * value - below) / (x * x - 1);
      x -= value / slope;
    }
    rule.node[i] = 0.5 * (1 + x);
    rule.weight[i] = 1 / ((1 - x * x) * slope * slope);
  }
  return rule;
}

}  // namespace tolvik::analysis
