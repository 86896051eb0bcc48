// SPDX-License-Identifier: GPL-2.0-or-later
// The Parratt recursion by lanes, against the plain recursion of the same precision. Where the two differ the
// plain recursion of a wider type is the reference: the 200-bit one for some cases, the next wider built-in
// one, which is a hundred times faster, for the rest.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "precision/lanes_comparison.h"

namespace tolvik::testing {
namespace {

using engine::lanes::LaneSet;

template <class T>
class LanesParratt : public ::testing::Test {};
using LaneNumbers = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LanesParratt, LaneNumbers);

TYPED_TEST(LanesParratt, OrdinaryStacksAreNeverWorseThanPlain) {
  for (const LaneSet set : LaneSetsHere()) {
    RandomCases random(1);
    for (int number = 0; number < kCases; ++number) {
      RandomCase test = random.Ordinary(kAngles);
      RoundTo<TypeParam>(test);
      Comparison<TypeParam>(test, set, number).Run();
      if (this->HasFailure()) return;
    }
  }
}

TYPED_TEST(LanesParratt, OddStacksGiveNumbersWherePlainDoes) {
  for (const LaneSet set : LaneSetsHere()) {
    RandomCases random(2);
    for (int number = 0; number < kCases; ++number) {
      RandomCase test = random.Odd(kAngles);
      RoundTo<TypeParam>(test);
      Comparison<TypeParam>(test, set, number).Run();
      if (this->HasFailure()) return;
    }
  }
}

TYPED_TEST(LanesParratt, ResultsDoNotDependOnTheBatch) {
  RandomCases random(3);
  for (int number = 0; number < 200 && !this->HasFailure(); ++number) {
    const RandomCase test = number % 2 == 0 ? random.Ordinary(150) : random.Odd(150);
    for (const LaneSet set : LaneSetsHere()) ExpectSameInAnyBatch<TypeParam>(test, set, number);
  }
}

// A contrast below the spacing of T at 1 is lost: the interface vanishes, as in the plain form.
TYPED_TEST(LanesParratt, ContrastThatTheTypeCannotHoldVanishes) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(3);
  test.layers[0].layer_delta = test.layers[1].layer_delta = std::numeric_limits<TypeParam>::epsilon() / 8;
  test.layers[1].layer_d = 50.0;
  test.sines = {0.01, 0.02, 0.05, 0.3};
  test.options.polarisation[0] = test.options.polarisation[6] = 1.0;
  for (const LaneSet set : LaneSetsHere()) {
    const Intensities<TypeParam> lane = Calculate<TypeParam>(test, set);
    for (const TypeParam intensity : lane.first) EXPECT_EQ(intensity, TypeParam(0));
    for (const TypeParam intensity : lane.second) EXPECT_EQ(intensity, TypeParam(0));
  }
}

// Against the closed form of one rough interface, so that not only agreement with the plain path counts:
// R = |(a - b) / (a + b) exp(-2 σ² a b)|² with real wavevectors (no absorption, above the critical angle).
TYPED_TEST(LanesParratt, OneInterfaceIsTheFresnelCoefficient) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(2);
  test.layers[0].layer_delta = 0x1p-14;
  test.layers[0].layer_sigma = 2.0;
  test.sines = {0.0125, 0.03, 0.06, 0.1, 0.25};
  test.options.polarisation[0] = test.options.polarisation[6] = 1.0;
  const double n2 = (1 - 0x1p-14) * (1 - 0x1p-14);
  for (const LaneSet set : LaneSetsHere()) {
    const Intensities<TypeParam> lane = Calculate<TypeParam>(test, set);
    for (std::size_t i = 0; i < test.sines.size(); ++i) {
      const double s = test.sines[i];
      const double a = 4.0 * s, b = 4.0 * std::sqrt(s * s - 0x1p-13 + 0x1p-28);
      const double factor = std::exp(-8.0 * a * b);
      const double sigma = (a - b) / (a + b) * factor, pi = (n2 * a - b) / (n2 * a + b) * factor;
      const double bound = 1e5 * static_cast<double>(std::numeric_limits<TypeParam>::epsilon());
      EXPECT_NEAR(lane.first[i] / (sigma * sigma), 1.0, bound);
      EXPECT_NEAR(lane.second[i] / (pi * pi), 1.0, bound);
    }
  }
}

}  // namespace
}  // namespace tolvik::testing
