// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/prior.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tolvik::analysis {
namespace {

// Integral of the density from the lower bound to x, by the midpoint rule.
double ShareBelow(const Prior& prior, const Bounds& bounds, double from, double x) {
  constexpr int kSteps = 20000;
  const double h = (x - from) / kSteps;
  double sum = 0;
  for (int i = 0; i < kSteps; ++i) sum += std::exp(LogPrior(prior, bounds, from + (i + 0.5) * h)) * h;
  return sum;
}

TEST(Prior, DensitiesAreNormalisedAndQuantilesInvertThem) {
  const Bounds bounds{1, 5};
  const Prior priors[] = {
      {}, {PriorKind::kNormal, 2, 1.5}, {PriorKind::kNormal, 30, 2}, {PriorKind::kLogUniform}};
  for (const Prior& prior : priors) {
    EXPECT_NEAR(ShareBelow(prior, bounds, 1, 5), 1, 1e-6);
    for (const double u : {0.1, 0.5, 0.93}) {
      EXPECT_NEAR(ShareBelow(prior, bounds, 1, PriorQuantile(prior, bounds, u)), u, 1e-6);
    }
  }
}

TEST(Prior, QuantilesOfANormalWithoutBounds) {
  // Abramowitz and Stegun, table 26.5: the upper 2.5 % begin at 1.959964 sigma.
  EXPECT_NEAR(PriorQuantile({PriorKind::kNormal, 10, 2}, {}, 0.975), 10 + 2 * 1.959964, 1e-5);
}

TEST(Prior, NothingOutsideOfTheBounds) {
  for (const PriorKind kind : {PriorKind::kUniform, PriorKind::kNormal, PriorKind::kLogUniform}) {
    const Prior prior{kind, 2, 1};
    EXPECT_EQ(LogPrior(prior, {1, 3}, 0.5), -INFINITY);
    EXPECT_EQ(LogPrior(prior, {1, 3}, NAN), -INFINITY);
  }
  EXPECT_EQ(LogPrior({}, {}, 1e30), 0) << "no bounds, no norm";
  EXPECT_TRUE(std::isnan(PriorQuantile({}, {}, 0.5)));
}

TEST(Prior, SlopesAreDerivatives) {
  const Bounds bounds{1, 5};
  for (const Prior& prior : {Prior{}, Prior{PriorKind::kNormal, 2, 1.5}, Prior{PriorKind::kLogUniform}}) {
    const double h = 1e-5, x = 2.7;
    const double slope = (LogPrior(prior, bounds, x + h) - LogPrior(prior, bounds, x - h)) / (2 * h);
    EXPECT_NEAR(LogPriorSlope(prior, x), slope, 1e-8);
  }
}

TEST(Prior, WhatDoesNotFitIsFound) {
  EXPECT_TRUE(IsValid({}, {1, 1}));
  EXPECT_FALSE(IsValid({}, {2, 1}));
  EXPECT_FALSE(IsValid({}, {NAN, 1}));
  EXPECT_FALSE(IsValid({PriorKind::kNormal, 0, 0}, {}));
  EXPECT_FALSE(IsValid({PriorKind::kLogUniform}, {0, 1}));
  EXPECT_FALSE(IsValid({PriorKind::kLogUniform}, {1, INFINITY}));
}

}  // namespace
}  // namespace tolvik::analysis
