// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/energy_given.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "optics/energy.h"

namespace tolvik {
namespace {

TEST(EnergyGivenAs, FindsTheEnergyThatWasGiven) {
  for (const double energy : {8100.0, 8048.0, 778.1, 1.0, 12398.326, 8047.8261}) {
    EXPECT_EQ(EnergyGivenAs(LambdaFromEnergy(energy)), energy);
  }
}

TEST(EnergyGivenAs, LeadsBackToTheSameWavelengthForEveryEnergy) {
  std::mt19937_64 random(17);
  std::uniform_real_distribution<double> energies(10, 1e5);
  for (int i = 0; i < 100000; ++i) {
    const double lambda = LambdaFromEnergy(energies(random));
    ASSERT_EQ(LambdaFromEnergy(EnergyGivenAs(lambda)), lambda) << i;
  }
}

// Two roundings part many of them from the plain quotient.
TEST(EnergyGivenAs, FindsEveryEnergyOfOneDecimal) {
  int changed_by_the_quotient = 0;
  for (int tenths = 100; tenths < 100000; ++tenths) {
    const double energy = tenths / 10.0, lambda = LambdaFromEnergy(energy);
    ASSERT_EQ(EnergyGivenAs(lambda), energy);
    if (EnergyFromLambda(lambda) != energy) ++changed_by_the_quotient;
  }
  EXPECT_GT(changed_by_the_quotient, 0) << "the plain quotient would do";
}

TEST(EnergyGivenAs, PassesOnWhatHasNoEnergy) {
  EXPECT_TRUE(std::isinf(EnergyGivenAs(0.0)));
  EXPECT_TRUE(std::isnan(EnergyGivenAs(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(EnergyGivenAs(LambdaFromEnergy(-1000.0)), -1000.0);
}

}  // namespace
}  // namespace tolvik
