// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/gauss_nodes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tolvik::analysis {
namespace {

template <class Function>
double Integrate(const QuadratureRule& rule, Function function) {
  double sum = 0;
  for (std::size_t i = 0; i < rule.node.size(); ++i) sum += rule.weight[i] * function(rule.node[i]);
  return sum;
}

// Moments of the normal density: (k - 1)!! for even k, 0 for odd k; n nodes are exact up to k = 2 n - 1.
TEST(GaussNodes, HermiteTakesPolynomialsExactly) {
  for (const std::int32_t n : {1, 2, 3, 8, 17}) {
    const QuadratureRule rule = GaussHermite(n);
    double moment = 1;
    for (int k = 0; k < 2 * n; ++k) {
      const double found = Integrate(rule, [k](double x) { return std::pow(x, k); });
      if (k > 0 && k % 2 == 0) moment *= k - 1;
      EXPECT_NEAR(found, k % 2 == 0 ? moment : 0, 1e-12 * moment + (k % 2) * 1e-12 * moment * k)
          << n << " " << k;
    }
  }
}

// Abramowitz and Stegun, table 25.10, three nodes: √(3/2) of exp(-x²) is √3 of the normal density, weight
// 1/6.
TEST(GaussNodes, ThreeHermiteNodes) {
  const QuadratureRule rule = GaussHermite(3);
  EXPECT_NEAR(rule.node[2], std::sqrt(3.0), 1e-15);
  EXPECT_EQ(rule.node[1], 0);
  EXPECT_NEAR(rule.weight[0], 1.0 / 6, 1e-15);
}

TEST(GaussNodes, LegendreTakesPolynomialsExactly) {
  for (const std::int32_t n : {1, 2, 9, 64, 400}) {
    const QuadratureRule rule = GaussLegendre(n);
    for (const int k : {0, 1, n, 2 * n - 1}) {
      EXPECT_NEAR(Integrate(rule, [k](double x) { return std::pow(x, k); }), 1.0 / (k + 1), 1e-13)
          << n << " " << k;
    }
  }
}

// The characteristic function of the normal density.
TEST(GaussNodes, ManyHermiteNodesTakeAWave) {
  for (const double t : {0.5, 2.0, 5.0}) {
    EXPECT_NEAR(Integrate(GaussHermite(41), [t](double x) { return std::cos(t * x); }), std::exp(-t * t / 2),
                1e-12);
  }
}

}  // namespace
}  // namespace tolvik::analysis
