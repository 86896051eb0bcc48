// SPDX-License-Identifier: GPL-2.0-or-later
// The functions of 200 bits against MPFR's, which are rounded correctly: every bit has to agree.
#include "engine/number/cnumber_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/number/cnumber_test_numbers.h"

namespace tolvik::engine {
namespace {

using cnumber_tests::AreSame;
using cnumber_tests::Bits;
using cnumber_tests::RandomNumbers;

void ExpectAsMpfr(const Bits& x) {
  Bits actual, expected, cosine, expected_cosine;
  ExpOf(actual.value, x.value);
  mpfr_exp(expected.value, x.value, MPFR_RNDN);
  EXPECT_TRUE(AreSame(actual, expected)) << "exp of " << mpfr_get_d(x.value, MPFR_RNDN);
  SinCosOf(actual.value, cosine.value, x.value);
  mpfr_sin_cos(expected.value, expected_cosine.value, x.value, MPFR_RNDN);
  EXPECT_TRUE(AreSame(actual, expected)) << "sine of " << mpfr_get_d(x.value, MPFR_RNDN);
  EXPECT_TRUE(AreSame(cosine, expected_cosine)) << "cosine of " << mpfr_get_d(x.value, MPFR_RNDN);
}

TEST(CNumberFunctions, AgreeWithMpfrAtRandom) {
  RandomNumbers random;
  Bits x;
  for (int i = 0; i < 20000; ++i) {
    random.Next(-12, 6, x);
    ExpectAsMpfr(x);
  }
}

// Beyond both ends of the range of the tables.
TEST(CNumberFunctions, AgreeWithMpfrInAllMagnitudes) {
  RandomNumbers random;
  Bits x;
  for (int i = 0; i < 5000; ++i) {
    random.Next(-80, 40, x);
    ExpectAsMpfr(x);
  }
  for (int exponent = -70; exponent <= 34; ++exponent) {
    for (const double factor : {1.0, -1.0, 1.0 - 0x1p-53, 1.0 + 0x1p-52}) {
      ExpectAsMpfr(Bits(std::ldexp(factor, exponent)));
    }
  }
}

TEST(CNumberFunctions, AgreeWithMpfrAtTheStepsOfTheTables) {
  Bits x;
  for (int i = 1; i <= 256; ++i) {
    for (const double sign : {1.0, -1.0}) {
      ExpectAsMpfr(Bits(sign * i / 64));
      mpfr_set_d(x.value, sign * i / 64, MPFR_RNDN);
      mpfr_nextbelow(x.value);
      ExpectAsMpfr(x);
      mpfr_nextabove(x.value);
      mpfr_nextabove(x.value);
      ExpectAsMpfr(x);
    }
  }
}

// Where the reduced argument nearly vanishes or nearly is a whole period.
TEST(CNumberFunctions, AgreeWithMpfrBesideMultiplesOfTheirPeriods) {
  Bits x, unit;
  mpfr_t exact;
  mpfr_init2(exact, 2 * kFunctionBits);
  for (const bool of_sine : {true, false}) {
    for (long k = -400; k <= 400; ++k) {
      of_sine ? mpfr_const_pi(exact, MPFR_RNDN) : mpfr_const_log2(exact, MPFR_RNDN);
      mpfr_mul_si(exact, exact, k * (k % 7 == 0 ? 123457 : 1), MPFR_RNDN);
      if (of_sine) mpfr_div_2ui(exact, exact, 1, MPFR_RNDN);
      mpfr_set(x.value, exact, MPFR_RNDN);
      ExpectAsMpfr(x);
      for (const double offset : {0x1p-20, 0x1p-60, 0x1p-100, 0x1p-140}) {
        for (const double sign : {1.0, -1.0}) {
          mpfr_add_d(unit.value, x.value, sign * offset, MPFR_RNDN);
          ExpectAsMpfr(unit);
        }
      }
    }
  }
  mpfr_clear(exact);
}

// A small x has bits far below those of exp x and cos x near 1, so that these can be brought within 2^-256 of
// the middle between two numbers of 200 bits: by the logarithm or the arc cosine of that middle.
TEST(CNumberFunctions, AgreeWithMpfrNearTies) {
  RandomNumbers random;
  Bits near_one, x;
  mpfr_t tie;
  mpfr_init2(tie, kFunctionBits + 1);
  for (int i = 0; i < 2000; ++i) {
    random.Next(-60, -50, near_one);
    mpfr_add_ui(near_one.value, near_one.value, 1, MPFR_RNDN);
    mpfr_set(tie, near_one.value, MPFR_RNDN);
    mpfr_nextabove(tie);
    mpfr_log(x.value, tie, MPFR_RNDN);
    ExpectAsMpfr(x);
    if (mpfr_cmp_ui(tie, 1) > 0) continue;
    mpfr_acos(x.value, tie, MPFR_RNDN);
    ExpectAsMpfr(x);
  }
  mpfr_clear(tie);
}

TEST(CNumberFunctions, GiveTheSpecialValuesOfMpfr) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  for (const double x : {0.0, -0.0, kInf, -kInf, std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300,
                         1e-300, -1e-300, 5e-324}) {
    ExpectAsMpfr(Bits(x));
  }
}

TEST(CNumberFunctions, MayWriteOverTheirArgument) {
  for (const double x : {0.3, -20.0, 1e-30, 1e30}) {
    Bits expected, expected_cosine, other;
    Bits same(x);
    mpfr_exp(expected.value, same.value, MPFR_RNDN);
    ExpOf(same.value, same.value);
    EXPECT_TRUE(AreSame(same, expected));
    mpfr_set_d(same.value, x, MPFR_RNDN);
    mpfr_sin_cos(expected.value, expected_cosine.value, same.value, MPFR_RNDN);
    SinCosOf(same.value, other.value, same.value);
    EXPECT_TRUE(AreSame(same, expected));
    EXPECT_TRUE(AreSame(other, expected_cosine));
  }
}

}  // namespace
}  // namespace tolvik::engine
