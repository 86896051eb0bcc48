// SPDX-License-Identifier: GPL-2.0-or-later
// The matrix algorithms by lanes against the plain 4x4 ones of the same precision.
#include <gtest/gtest.h>

#include <cmath>

#include "precision/lanes_comparison.h"

namespace tolvik::testing {
namespace {

using engine::lanes::LaneSet;

template <class T>
class LanesMatrix : public ::testing::Test {
 protected:
  template <class Make>
  void Compare(std::uint64_t seed, Make make) {
    for (const LaneSet set : LaneSetsHere()) {
      RandomCases random(seed);
      for (int number = 0; number < kCases / 4; ++number) {
        RandomCase test = make(random);
        RoundTo<T>(test);
        Comparison<T>(test, set, number).Run();
        if (this->HasFailure()) return;
      }
    }
  }
};
using LaneNumbers = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LanesMatrix, LaneNumbers);

TYPED_TEST(LanesMatrix, OrdinaryStacksAreNeverWorseThanPlain) {
  this->Compare(11, [](RandomCases& random) {
    RandomCase test = random.Ordinary(kAngles);
    random.GiveTensors(test);
    return test;
  });
}

TYPED_TEST(LanesMatrix, OddStacksGiveNumbersWherePlainDoes) {
  this->Compare(12, [](RandomCases& random) {
    RandomCase test = random.Odd(kAngles);
    random.GiveTensors(test);
    return test;
  });
}

TYPED_TEST(LanesMatrix, MagneticStacksAreNeverWorseThanPlain) {
  this->Compare(13, [](RandomCases& random) {
    RandomCase test = random.Ordinary(kAngles);
    random.Magnetise(test);
    return test;
  });
}

TYPED_TEST(LanesMatrix, OddMagneticStacksGiveNumbersWherePlainDoes) {
  this->Compare(14, [](RandomCases& random) {
    RandomCase test = random.Ordinary(kAngles);
    random.Magnetise(test);
    random.MakeOdd(test);
    return test;
  });
}

TYPED_TEST(LanesMatrix, ResultsDoNotDependOnTheBatch) {
  RandomCases random(16);
  for (int number = 0; number < 100 && !this->HasFailure(); ++number) {
    RandomCase test = random.Ordinary(70);
    random.Magnetise(test);
    if (number % 2 != 0) random.MakeOdd(test);
    for (const LaneSet set : LaneSetsHere()) ExpectSameInAnyBatch<TypeParam>(test, set, number);
  }
}

// The error of lanes relative to that of the plain path, over many intensities.
class ErrorRatios {
 public:
  void Add(double lane, double plain, double exact, double share) {
    if (lane == plain || !std::isfinite(plain) || !std::isfinite(exact)) return;
    const double rounding = 1e-16 * std::abs(exact) + 1e-19 * share;
    const double ratio = (std::abs(lane - exact) + rounding) / (std::abs(plain - exact) + rounding);
    ++count_;
    logarithms_ += std::log(ratio);
    if (ratio > 10.0) ++worse_;
    if (ratio < 0.1) ++better_;
  }
  int Count() const { return count_; }
  int Worse() const { return worse_; }
  int Better() const { return better_; }
  double Typical() const { return std::exp(logarithms_ / count_); }

 private:
  int count_ = 0, worse_ = 0, better_ = 0;
  double logarithms_ = 0;
};

// A single intensity may be worse by chance, most may not.
TEST(LanesMatrixErrors, AreOnTheWholeSmallerThanPlain) {
  for (const LaneSet set : LaneSetsHere()) {
    for (const int algorithm : {Algorithm::kMatrixOne, Algorithm::kMatrixTwo}) {
      RandomCases random(15);
      ErrorRatios ratios;
      for (int number = 0; number < 300; ++number) {
        RandomCase test = random.Ordinary(kAngles);
        random.Magnetise(test);
        test.options.algorithm = algorithm;
        RoundTo<double>(test);
        const auto exact = Calculate<long double>(test, LaneSet::kPlain);
        const auto plain = Calculate<double>(test, LaneSet::kPlain);
        const auto lane = Calculate<double>(test, set);
        for (std::size_t i = 0; i < test.sines.size(); ++i) {
          ratios.Add(lane.first[i], plain.first[i], static_cast<double>(exact.first[i]), Share(test, 1));
          ratios.Add(lane.second[i], plain.second[i], static_cast<double>(exact.second[i]), Share(test, 2));
        }
      }
      EXPECT_GT(ratios.Count(), 10000) << NameOf(set);
      EXPECT_LT(ratios.Typical(), 1.0) << NameOf(set) << " algorithm " << algorithm;
      EXPECT_LT(ratios.Worse(), ratios.Better()) << NameOf(set) << " algorithm " << algorithm;
      EXPECT_LT(ratios.Worse(), 0.05 * ratios.Count()) << NameOf(set) << " algorithm " << algorithm;
    }
  }
}

// One wave at a time through a thick absorber: the growing waves of the matrices overflow first, and where
// they do the result is NaN, with lanes as without.
TYPED_TEST(LanesMatrix, OverflowOfTheGrowingWavesStays) {
  RandomCase test;
  test.k0 = 4.0;
  test.layers.resize(3);
  for (int j : {0, 1}) test.layers[static_cast<std::size_t>(j)].layer_delta = 1e-5;
  test.layers[1].layer_beta = 1e-6;
  test.sines = {0.001, 0.003, 0.01, 0.1};
  test.options.algorithm = Algorithm::kMatrixOne;
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
}  // namespace tolvik::testing
