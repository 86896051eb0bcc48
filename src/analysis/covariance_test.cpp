// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/covariance.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tolvik::analysis {
namespace {

std::vector<Parameter> Free(std::size_t count) {
  std::vector<Parameter> parameters(count);
  for (Parameter& each : parameters) each.bounds = {-10, 10};
  return parameters;
}

Matrix Line(int points) {
  Matrix jacobian(static_cast<std::size_t>(points), 2);
  for (int i = 0; i < points; ++i) {
    jacobian(static_cast<std::size_t>(i), 0) = 1;
    jacobian(static_cast<std::size_t>(i), 1) = i;
  }
  return jacobian;
}

// Errors of a straight line a + b i through points of unit error (P. R. Bevington, Data Reduction and Error
// Analysis, 6.3): with S0 = n, S1 = sum of i, S2 = sum of i², D = S0 S2 - S1²: var a = S2 / D, var b = S0 /
// D, cov = -S1 / D.
TEST(Covariance, StraightLine) {
  const int n = 7;
  const double s0 = n, s1 = 21, s2 = 91, d = s0 * s2 - s1 * s1;
  const std::vector<double> residuals(7, 2.0), x = {1, 2};
  const Covariance result = CalcCovariance(Line(n), residuals, Free(2), x);
  EXPECT_NEAR(result.covariance(0, 0), s2 / d, 1e-13);
  EXPECT_NEAR(result.covariance(1, 1), s0 / d, 1e-13);
  EXPECT_NEAR(result.covariance(0, 1), -s1 / d, 1e-13);
  EXPECT_NEAR(result.errors[0], std::sqrt(s2 / d), 1e-13);
  EXPECT_NEAR(result.correlation(1, 0), -s1 / std::sqrt(s0 * s2), 1e-13);
  EXPECT_NEAR(result.chi_square, 28, 1e-13);
  EXPECT_NEAR(result.reduced, 28.0 / 5, 1e-13);
}

TEST(Covariance, AParameterAtItsBoundIsLeftOut) {
  std::vector<Parameter> parameters = Free(2);
  const std::vector<double> residuals(7, 1.0), x = {10, 2};
  const Covariance result = CalcCovariance(Line(7), residuals, parameters, x);
  EXPECT_TRUE(result.at_bound[0]);
  EXPECT_TRUE(std::isnan(result.errors[0]));
  EXPECT_NEAR(result.errors[1], 1 / std::sqrt(91.0), 1e-13) << "the slope of a line through a known point";
  EXPECT_NEAR(result.reduced, 7.0 / 6, 1e-13);
}

TEST(Covariance, MoreParametersThanPoints) {
  Matrix jacobian(2, 3);
  jacobian(0, 0) = 1;
  jacobian(1, 1) = 2;
  jacobian(1, 2) = 4;  // the second and the third in one combination only
  const std::vector<double> residuals(2, 1.0), x = {0, 0, 0};
  const Covariance result = CalcCovariance(jacobian, residuals, Free(3), x);
  EXPECT_EQ(result.not_determined, (std::vector<bool>{false, true, true}));
  EXPECT_NEAR(result.errors[0], 1, 1e-13);
  EXPECT_TRUE(std::isnan(result.errors[1]));
  EXPECT_TRUE(std::isnan(result.errors[2]));
  EXPECT_TRUE(std::isnan(result.reduced)) << "no degree of freedom";
}

TEST(Covariance, ColumnsOfZerosAndOfOtherMagnitudes) {
  Matrix jacobian = Line(7);
  for (std::size_t i = 0; i < 7; ++i) jacobian(i, 1) *= 1e9;
  Matrix wide(7, 3);
  for (std::size_t i = 0; i < 7; ++i) {
    wide(i, 0) = jacobian(i, 0);
    wide(i, 2) = jacobian(i, 1);
  }
  const std::vector<double> residuals(7, 1.0), x = {0, 0, 0};
  const Covariance result = CalcCovariance(wide, residuals, Free(3), x);
  EXPECT_TRUE(result.no_effect[1]);
  EXPECT_TRUE(std::isnan(result.errors[1]));
  EXPECT_NEAR(result.errors[2], 1e-9 * std::sqrt(7.0 / (7 * 91 - 21 * 21)), 1e-20);
}

}  // namespace
}  // namespace tolvik::analysis
