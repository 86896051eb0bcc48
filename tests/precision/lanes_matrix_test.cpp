// SPDX-License-Identifier: GPL-2.0-or-later
// The matrix algorithms by lanes against the plain 4x4 ones of the same precision.
#include <gtest/gtest.h>

#include "precision/lanes_comparison.h"

namespace tolvik::test {
namespace {

using engine::lanes::LaneSet;

template <class T>
class LanesMatrix : public testing::Test {
 protected:
  template <class Make>
  void Compare(std::uint64_t seed, Make make) {
    for (const LaneSet set : LaneSetsHere()) {
      RandomCases random(seed);
      for (int number = 0; number < kCases / 2; ++number) {
        RandomCase test = make(random);
        random.GiveTensors(test);
        RoundTo<T>(test);
        Comparison<T>(test, set, number).Run();
        if (this->HasFailure()) return;
      }
    }
  }
};
using LaneNumbers = testing::Types<float, double>;
TYPED_TEST_SUITE(LanesMatrix, LaneNumbers);

TYPED_TEST(LanesMatrix, OrdinaryStacksAreNeverWorseThanPlain) {
  this->Compare(11, [](RandomCases& random) { return random.Ordinary(kAngles); });
}

TYPED_TEST(LanesMatrix, OddStacksGiveNumbersWherePlainDoes) {
  this->Compare(12, [](RandomCases& random) { return random.Odd(kAngles); });
}

// One wave at a time through a thick absorber: the growing waves of the matrices overflow first, and where
// they do the result is not a number, by lanes as without.
TYPED_TEST(LanesMatrix, OverflowOfTheGrowingWavesStays) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(3);
  for (int j : {0, 1}) test.layers[static_cast<std::size_t>(j)].layer_delta = 1e-5;
  test.layers[1].layer_beta = 1e-6;
  test.sines = {0.001, 0.003, 0.01, 0.1};
  test.options.algorithm = 1;
  test.options.polarisation[0] = test.options.polarisation[6] = 1.0;
  int numbers = 0, others = 0;
  for (double thickness = 10; thickness < 1e7; thickness *= 1.3) {
    test.layers[1].layer_d = thickness;
    const Intensities<TypeParam> plain = Calculate<TypeParam>(test, LaneSet::kPlain);
    for (const LaneSet set : LaneSetsHere()) {
      const Intensities<TypeParam> lane = Calculate<TypeParam>(test, set);
      for (std::size_t i = 0; i < test.sines.size(); ++i) {
        EXPECT_EQ(std::isfinite(plain.first[i]), std::isfinite(lane.first[i])) << thickness << " " << i;
        ++(std::isfinite(plain.first[i]) ? numbers : others);
      }
    }
  }
  EXPECT_GT(numbers, 0);
  EXPECT_GT(others, 0);
}

}  // namespace
}  // namespace tolvik::test
