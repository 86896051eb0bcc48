// SPDX-License-Identifier: GPL-2.0-or-later
// Each function of the lanes, number by number, against the library function of a wider type.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "engine/lanes/kernels.h"

namespace tolvik::testing {
namespace {

using namespace engine::lanes;

template <class T>
class LanesFunctions : public ::testing::Test {
 protected:
  using Wider = std::conditional_t<std::is_same_v<T, float>, double, long double>;

  struct Values {
    explicit Values(std::size_t n) : exp(n), sine(n), cosine(n), root(n), inverse(n), quotient(n) {}
    std::vector<T> exp, sine, cosine, root, inverse, quotient;
  };

  static Values Calculate(const Kernels& kernels, const std::vector<T>& x) {
    Values v(x.size());
    const FunctionValues<T> out = {v.exp.data(),  v.sine.data(),    v.cosine.data(),
                                   v.root.data(), v.inverse.data(), v.quotient.data()};
    const auto count = static_cast<std::int32_t>(x.size());
    if constexpr (std::is_same_v<T, float>) {
      kernels.functions_float(x.data(), count, out);
    } else {
      kernels.functions_double(x.data(), count, out);
    }
    return v;
  }

  // Distance in units of the last place of the exact value.
  static double Ulps(T value, Wider exact) {
    const T rounded = static_cast<T>(exact);
    const Wider place =
        static_cast<Wider>(std::nextafter(std::abs(rounded), std::numeric_limits<T>::infinity())) -
        static_cast<Wider>(std::abs(rounded));
    return static_cast<double>(std::abs(static_cast<Wider>(value) - exact) / place);
  }

  static std::vector<T> Numbers(double low, double high, bool logarithmic) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> uniform(logarithmic ? std::log(low) : low,
                                                   logarithmic ? std::log(high) : high);
    std::vector<T> x(40003);
    for (T& value : x) {
      const double u = uniform(random);
      value = static_cast<T>(logarithmic ? std::exp(u) : u);
    }
    return x;
  }

  static std::vector<const Kernels*> Sets() {
    std::vector<const Kernels*> sets;
    for (const LaneSet set : kAllLaneSets) {
      if (KernelsOf(set) != nullptr) sets.push_back(KernelsOf(set));
    }
    return sets;
  }

  // Argument ranges of the two scalar types: the exponential without overflow, phases as FunctionConstants
  // has them.
  static constexpr double kLowestExp = std::is_same_v<T, float> ? -86.9 : -707.9;
  static constexpr double kHighestExp = std::is_same_v<T, float> ? 87.9 : 708.9;
  static constexpr double kMaxPhase = std::is_same_v<T, float> ? 1e4 : 1e6;
};
using LaneNumbers = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LanesFunctions, LaneNumbers);

TYPED_TEST(LanesFunctions, ExponentialIsWithinOneAndAHalfPlaces) {
  for (const Kernels* kernels : this->Sets()) {
    for (const double range : {0.3, 3.0, 1e9}) {
      const auto x =
          this->Numbers(std::max(this->kLowestExp, -range), std::min(this->kHighestExp, range), false);
      const auto values = this->Calculate(*kernels, x);
      double worst = 0;
      for (std::size_t i = 0; i < x.size(); ++i) {
        worst = std::max(worst,
                         this->Ulps(values.exp[i], std::exp(static_cast<typename TestFixture::Wider>(x[i]))));
      }
      EXPECT_LT(worst, 1.5) << kernels->name << " " << range;
      EXPECT_GT(worst, 0.1) << "nothing compared";
    }
  }
}

TYPED_TEST(LanesFunctions, SineAndCosineAreWithinOneAndAHalfPlaces) {
  // Near a zero of the result the reduced argument decides: the error is measured against 1e-3 at least.
  const double epsilon = static_cast<double>(std::numeric_limits<TypeParam>::epsilon());
  for (const Kernels* kernels : this->Sets()) {
    for (const double range : {0.7, 10.0, this->kMaxPhase}) {
      const auto x = this->Numbers(-range, range, false);
      const auto values = this->Calculate(*kernels, x);
      double worst = 0;
      for (std::size_t i = 0; i < x.size(); ++i) {
        const auto wide = static_cast<typename TestFixture::Wider>(x[i]);
        for (const auto& [value, exact] :
             {std::pair(values.sine[i], std::sin(wide)), std::pair(values.cosine[i], std::cos(wide))}) {
          const double size = std::max(1e-3, static_cast<double>(std::abs(exact)));
          const double error =
              static_cast<double>(std::abs(static_cast<typename TestFixture::Wider>(value) - exact));
          worst = std::max(worst, error / (epsilon * size));
        }
      }
      EXPECT_LT(worst, 1.5) << kernels->name << " " << range;
      EXPECT_GT(worst, 0.1) << "nothing compared";
    }
  }
}

TYPED_TEST(LanesFunctions, RootIsWithinOnePlaceAndItsInverseWithinTwo) {
  for (const Kernels* kernels : this->Sets()) {
    const auto x = this->Numbers(1e-30, 1e8, true);
    const auto values = this->Calculate(*kernels, x);
    double root = 0, inverse = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      const auto exact = std::sqrt(static_cast<typename TestFixture::Wider>(x[i]));
      root = std::max(root, this->Ulps(values.root[i], exact));
      inverse = std::max(inverse, this->Ulps(values.inverse[i], 1 / exact));
    }
    EXPECT_LT(root, 1.0) << kernels->name;
    EXPECT_LT(inverse, 1.6) << kernels->name;
    EXPECT_GT(std::min(root, inverse), 0.1) << "nothing compared";
  }
}

// √x / x and not x / x, so that the numerators vary.
TYPED_TEST(LanesFunctions, QuotientIsWithinOnePlace) {
  using Exact = typename TestFixture::Wider;
  for (const Kernels* kernels : this->Sets()) {
    const auto x = this->Numbers(1e-30, 1e30, true);
    const auto values = this->Calculate(*kernels, x);
    double worst = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      const Exact exact = static_cast<Exact>(values.root[i]) / static_cast<Exact>(x[i]);
      worst = std::max(worst, this->Ulps(values.quotient[i], exact));
    }
    EXPECT_LT(worst, 1.0) << kernels->name;
    EXPECT_GT(worst, 0.1) << "nothing compared";
  }
}

// Below the range of the exponential the result is 0, at the very end and far beyond it.
TYPED_TEST(LanesFunctions, ExponentialVanishesBelowItsRange) {
  for (const Kernels* kernels : this->Sets()) {
    const std::vector<TypeParam> x = {TypeParam(-800), TypeParam(-1e30),
                                      -std::numeric_limits<TypeParam>::infinity(), TypeParam(0),
                                      TypeParam(-0.0)};
    const auto values = this->Calculate(*kernels, x);
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(values.exp[static_cast<std::size_t>(i)], TypeParam(0)) << kernels->name;
    EXPECT_EQ(values.exp[3], TypeParam(1));
    EXPECT_EQ(values.exp[4], TypeParam(1));
  }
}

}  // namespace
}  // namespace tolvik::testing
