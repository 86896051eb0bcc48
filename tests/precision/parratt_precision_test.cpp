// SPDX-License-Identifier: GPL-2.0-or-later
// Float, double and long double against MPFR on random stacks.
//
// Source of the tolerance: a result in floating point is the exact one of slightly wrong numbers; here the
// numbers are the indices (n² - cos²θ cancels, so an error of one rounding of 1 is magnified), thicknesses
// and roughnesses, each wrong by a few roundings. The slopes of R with respect to all of them, taken in MPFR,
// give the expected error.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "engine/curve/grazing.h"
#include "engine/curve/intensity.h"
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "engine/profile/profile.h"
#include "support/random_stacks.h"

namespace tolvik::engine {
namespace {

constexpr unsigned kSeed = 20260;
constexpr int kStacks = 120;
constexpr int kAngles = 4;

template <class T>
T Reflect(Profile<T>& profile, const CState& state, double s) {
  IntensityWork<T> work;
  T first;
  const T sine(static_cast<float>(s));
  const T k0 = WavevectorFromLambda(T(state.lambda));
  CalcIntensities<T>({profile, k0, OptionsOfState<T>(state), {&sine, 1}, &first}, work);
  return first;
}

template <class T>
double Reflect(const CState& state, double s) {
  Profile<T> profile;
  PrepareProfile<T>(state, profile);
  return static_cast<double>(Reflect<T>(profile, state, s));
}

/// |R(x + h) - R(x)| / h for one number of the profile.
double Slope(Profile<CNumber>& profile, CNumber& x, const CState& state, double s, const CNumber& r) {
  const CNumber before = x;
  const CNumber step(1e-25);
  x += step;
  const auto slope = static_cast<double>(abs(Reflect<CNumber>(profile, state, s) - r) / step);
  x = before;
  return slope;
}

struct Expectation {
  double r = 0;
  double slopes = 0;  ///< error of R for a relative error of 1 in every operand
  int interfaces = 0;

  double Error(double epsilon) const {
    return epsilon * (slopes + interfaces * (r + 2 * std::sqrt(r) + epsilon));
  }
};

Expectation Expect(const CState& state, double s) {
  Profile<CNumber> profile;
  PrepareProfile<CNumber>(state, profile);
  const CNumber r = Reflect<CNumber>(profile, state, s);
  Expectation expected;
  expected.r = static_cast<double>(r);
  expected.interfaces = profile.size - 1;
  for (CLayer<CNumber>& entry : profile) {
    expected.slopes += Slope(profile, entry.layer_delta, state, s, r);
    expected.slopes += Slope(profile, entry.layer_beta, state, s, r);
    expected.slopes += static_cast<double>(entry.layer_d) * Slope(profile, entry.layer_d, state, s, r);
    expected.slopes +=
        static_cast<double>(entry.layer_sigma) * Slope(profile, entry.layer_sigma, state, s, r);
  }
  return expected;
}

/// Errors in units of the expected one.
struct Tally {
  double worst = 0;
  double sum = 0;
  int count = 0;

  void Add(double value, const Expectation& expected, double expected_error) {
    const double ratio = std::abs(value - expected.r) / expected_error;
    worst = std::max(worst, ratio);
    sum += ratio;
    ++count;
    EXPECT_LT(ratio, 1) << "R " << value << " MPFR " << expected.r << " seed " << kSeed;
  }
  void Print(const char* name) const {
    std::printf("%-12s error over expectation: mean %.3f, worst %.2f (%d points, seed %u)\n", name,
                sum / count, worst, count, kSeed);
  }
};

TEST(ParrattPrecision, ErrsAsTheConditioningSays) {
  testing::RandomCases stacks(kSeed);
  Tally in_float, in_double, in_long_double;
  for (int i = 0; i < kStacks; ++i) {
    CState state = stacks.Moderate(8);
    if (i % 2 != 0) {
      state.ray1sigmare = 0;
      state.ray1pire = 1;
    }
    for (int k = 0; k < kAngles; ++k) {
      const double s = stacks.Logarithmic(2e-3, 0.9);
      const Expectation expected = Expect(state, s);
      if (expected.r < 1e-30) continue;  // near the underflow of float
      constexpr double kFloat = std::numeric_limits<float>::epsilon();
      constexpr double kDouble = std::numeric_limits<double>::epsilon();
      constexpr auto kLongDouble = static_cast<double>(std::numeric_limits<long double>::epsilon());
      in_double.Add(Reflect<double>(state, s), expected, expected.Error(kDouble));
      // The result is a double, whose rounding is added to that of long double.
      in_long_double.Add(Reflect<long double>(state, s), expected,
                         expected.Error(kLongDouble) + kDouble * expected.r);
      // In float the slopes are valid where the rounding of 1 is small compared with n² - cos²θ.
      if (s > 0.05) in_float.Add(Reflect<float>(state, s), expected, expected.Error(kFloat));
    }
  }
  in_float.Print("float");
  in_double.Print("double");
  in_long_double.Print("long double");
  EXPECT_GT(in_double.count, kStacks * kAngles / 2);
  EXPECT_GT(in_float.count, kStacks);
  // An expectation far above the errors would accept any result.
  EXPECT_GT(in_double.sum / in_double.count, 0.01);
  EXPECT_GT(in_float.sum / in_float.count, 0.01);
}

}  // namespace
}  // namespace tolvik::engine
