// SPDX-License-Identifier: GPL-2.0-or-later
#include "analysis/residuals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tolvik::analysis {
namespace {

template <class Call>
void ExpectSlope(Call residual, double model) {
  const double h = 1e-5 * model;
  const double slope = (residual(model + h).value - residual(model - h).value) / (2 * h);
  EXPECT_NEAR(residual(model).slope, slope, 1e-6 * std::abs(slope)) << model;
}

TEST(Residuals, Normal) {
  const Residual r = NormalResidual(5, 4, 2);
  EXPECT_EQ(r.value, 0.5);
  EXPECT_EQ(r.slope, -0.5);
  EXPECT_NEAR(r.log_likelihood, std::log(std::exp(-0.125) / (2 * std::sqrt(2 * std::numbers::pi))), 1e-15);
}

TEST(Residuals, PoissonSquaresAreTheDeviance) {
  for (const double y : {1.0, 7.0, 4e6}) {
    for (const double ratio : {0.3, 0.97, 0.999999, 1.0000003, 1.2, 9.0}) {
      const double model = ratio * y;
      const Residual r = PoissonResidual(y, model);
      const long double exact = 2 * (model - (long double)y + y * std::log((long double)y / model));
      EXPECT_NEAR(r.value * r.value, static_cast<double>(exact),
                  1e-9 * static_cast<double>(exact) + 1e-18 * y)
          << y << " " << ratio;
      EXPECT_EQ(r.value > 0, y > model);
      if (std::abs(ratio - 1) > 1e-4) ExpectSlope([&](double m) { return PoissonResidual(y, m); }, model);
    }
    EXPECT_EQ(PoissonResidual(y, y).value, 0);
    EXPECT_NEAR(PoissonResidual(y, y).slope, -1 / std::sqrt(y), 1e-12);
  }
}

TEST(Residuals, PoissonLikelihoodIsAProbability) {
  double sum = 0;
  for (int y = 0; y < 60; ++y) sum += std::exp(PoissonResidual(y, 9.5).log_likelihood);
  EXPECT_NEAR(sum, 1, 1e-12);
}

TEST(Residuals, NoCountsAndNoModel) {
  EXPECT_NEAR(PoissonResidual(0, 8).value, -4, 1e-15);
  ExpectSlope([](double m) { return PoissonResidual(0, m); }, 8);
  EXPECT_TRUE(std::isnan(PoissonResidual(3, 0).value));
  EXPECT_EQ(PoissonResidual(3, -1).log_likelihood, -INFINITY);
  EXPECT_TRUE(std::isnan(PoissonResidual(0, -1).value));
}

TEST(Residuals, Logarithm) {
  EXPECT_NEAR(LogResidual(1e-3, 1e-5).value, 2, 1e-14);
  ExpectSlope([](double m) { return LogResidual(1e-3, m); }, 1e-5);
  EXPECT_TRUE(std::isnan(LogResidual(-1, 1).value));
}

}  // namespace
}  // namespace tolvik::analysis
