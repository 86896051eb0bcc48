// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/table_erf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

namespace tolvik {
namespace {

constexpr double kStep = 10.0 / 19999.0;

TEST(IncompleteGamma, SeriesHasTheClosedFormOfOrderOne) {
  // P(1, x) = 1 - exp(-x)
  for (double x : {1e-6, 0.1, 0.5, 1.0, 1.9}) {
    EXPECT_NEAR(IncompleteGammaSeries(1, x), 1 - std::exp(-x), 4e-7) << x;
  }
}

TEST(IncompleteGamma, FractionHasTheClosedFormOfOrderOne) {
  // Q(1, x) = exp(-x)
  for (double x : {2.0, 3.5, 10.0, 50.0}) {
    EXPECT_NEAR(IncompleteGammaFraction(1, x) / std::exp(-x), 1, 4e-7) << x;
  }
}

TEST(IncompleteGamma, HalfOrderIsTheErrorFunction) {
  // P(1/2, x²) = erf(x), Abramowitz and Stegun 6.5.16
  EXPECT_NEAR(IncompleteGammaSeries(0.5, 0.25), std::erf(0.5), 3e-7);
  EXPECT_NEAR(IncompleteGammaFraction(0.5, 4.0) / std::erfc(2.0), 1, 3e-7);
  // Relative accuracy holds deep in the tail, where 1 - P would have none left.
  EXPECT_NEAR(IncompleteGammaFraction(0.5, 25.0) / std::erfc(5.0), 1, 3e-7);
}

TEST(IncompleteGamma, BothExpansionsMeetAtTheSeam) {
  EXPECT_NEAR(IncompleteGammaSeries(0.5, 1.5), 1 - IncompleteGammaFraction(0.5, 1.5), 6e-7);
}

TEST(IncompleteGamma, SeriesOfZeroIsZero) {
  EXPECT_EQ(IncompleteGammaSeries(0.5, 0), 0);
  EXPECT_EQ(IncompleteGammaSeries(3, 0), 0);
}

TEST(TableErf, FollowsTheErrorFunction) {
  // 3e-7 of the expansions and h²/8 max|erf''| = 3e-8 of the grid
  for (int i = -50000; i <= 50000; ++i) {
    const double x = i * 1e-4;
    ASSERT_NEAR(TableErf(x), std::erf(x), 4e-7) << x;
  }
}

TEST(TableErf, IsZeroAtZeroThoughZeroIsNoGridPoint) {
  EXPECT_NEAR(TableErf(0), 0, 4e-7);
}

TEST(TableErf, EndsOfTheTable) {
  const double first = -(1 - IncompleteGammaFraction(0.5, 25.0));
  EXPECT_EQ(TableErf(-5), first);
  EXPECT_NEAR(TableErf(5), std::erf(5.0), 1e-12);
  EXPECT_LE(TableErf(5), 1);
  EXPECT_NEAR(TableErf(std::nextafter(5.0, 0.0)), std::erf(5.0), 1e-12);
  EXPECT_NEAR(TableErf(std::nextafter(-5.0, 0.0)), first, 1e-12);
}

TEST(TableErf, IsConstantOutside) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double x : {5.1, 1e300, infinity, std::nextafter(5.0, 6.0)}) EXPECT_EQ(TableErf(x), 1) << x;
  for (double x : {-5.1, -1e300, -infinity, std::nextafter(-5.0, -6.0)}) EXPECT_EQ(TableErf(x), -1) << x;
}

TEST(TableErf, TakesNaNForFarBelow) {
  EXPECT_EQ(TableErf(std::numeric_limits<double>::quiet_NaN()), -1);
}

TEST(TableErf, InterpolatesLinearlyBetweenGridPoints) {
  // Half way between two grid points the value is their mean, not erf itself (which is 3e-8 away).
  const int i = 11414;  // x near 0.707, where erf bends most
  const double low = IncompleteGammaSeries(0.5, std::pow(i * kStep - 5, 2));
  const double high = IncompleteGammaSeries(0.5, std::pow((i + 1) * kStep - 5, 2));
  EXPECT_NEAR(TableErf((i + 0.5) * kStep - 5), (low + high) / 2, 1e-12);
}

TEST(TableErf, GrowsEverywhere) {
  double before = TableErf(-5);
  for (int i = 1; i < 20000; ++i) {
    const double value = TableErf(-5 + i * kStep);
    ASSERT_GE(value, before - 3e-7) << i;
    before = value;
  }
}

TEST(TableErf, ServesThreadsFromTheFirstCall) {
  std::vector<double> found(4);
  std::vector<std::thread> threads;
  for (auto& value : found) threads.emplace_back([&value] { value = TableErf(1.25); });
  for (auto& thread : threads) thread.join();
  for (double value : found) EXPECT_NEAR(value, std::erf(1.25), 4e-7);
}

}  // namespace
}  // namespace tolvik
