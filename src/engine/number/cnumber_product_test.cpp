// SPDX-License-Identifier: GPL-2.0-or-later
// The product of 200 bits against MPFR's, which is rounded correctly: every bit has to agree.
#include "engine/number/cnumber_functions.h"

#include <gtest/gtest.h>

#include <limits>

#include "engine/number/cnumber_test_numbers.h"

namespace tolvik::engine {
namespace {

using cnumber_tests::AreSame;
using cnumber_tests::Bits;
using cnumber_tests::RandomNumbers;

void ExpectProductAsMpfr(const Bits& a, const Bits& b) {
  Bits actual, expected;
  ProductOf(actual.value, a.value, b.value);
  mpfr_mul(expected.value, a.value, b.value, MPFR_RNDN);
  EXPECT_TRUE(AreSame(actual, expected))
      << mpfr_get_d(a.value, MPFR_RNDN) << " times " << mpfr_get_d(b.value, MPFR_RNDN);
}

TEST(CNumberProduct, AgreesWithMpfrAtRandom) {
  RandomNumbers random;
  Bits a, b;
  for (int i = 0; i < 50000; ++i) {
    random.Next(-80, 80, a);
    random.Next(-80, 80, b);
    ExpectProductAsMpfr(a, b);
    ExpectProductAsMpfr(a, a);
  }
}

// A factor of 2^m + 1 and one of 201 - m bits give products in the middle between two numbers; a pair of
// factors near 1 gives some that round up to a power of two.
TEST(CNumberProduct, AgreesWithMpfrAtTies) {
  RandomNumbers random;
  Bits a, b;
  int ties = 0;
  mpfr_t exact;
  mpfr_init2(exact, 2 * kFunctionBits);
  for (int i = 0; i < 20000; ++i) {
    random.Next(-3, 3, a);
    const int shift = 1 + i % 198, bits = kFunctionBits + 1 - shift;
    mpfr_set_ui_2exp(b.value, 1, static_cast<mpfr_exp_t>(shift), MPFR_RNDN);
    mpfr_add_ui(b.value, b.value, i % 2 == 0 ? 1 : 3, MPFR_RNDN);
    mpfr_prec_round(a.value, bits, MPFR_RNDN);
    mpfr_prec_round(a.value, kFunctionBits, MPFR_RNDN);
    ExpectProductAsMpfr(a, b);
    mpfr_mul(exact, a.value, b.value, MPFR_RNDN);
    if (mpfr_min_prec(exact) == kFunctionBits + 1) ++ties;
  }
  EXPECT_GT(ties, 1000);
  mpfr_clear(exact);

  // (1 + 2^-150) (1 + 2^-50 + 2^-120) ends with 2^-200, a half of the last bit, and 2^-270.
  mpfr_set_d(a.value, 0x1p-150, MPFR_RNDN);
  mpfr_add_ui(a.value, a.value, 1, MPFR_RNDN);
  mpfr_set_d(b.value, 0x1p-120, MPFR_RNDN);
  mpfr_add_d(b.value, b.value, 1 + 0x1p-50, MPFR_RNDN);
  ExpectProductAsMpfr(a, b);

  for (int exponent = 1; exponent < 200; ++exponent) {
    mpfr_set_ui_2exp(a.value, 1, -exponent, MPFR_RNDN);
    mpfr_ui_sub(b.value, 1, a.value, MPFR_RNDN);
    mpfr_add_ui(a.value, a.value, 1, MPFR_RNDN);
    ExpectProductAsMpfr(a, b);  // 1 - 2^(-2 exponent)
  }
}

TEST(CNumberProduct, GivesTheSpecialValuesOfMpfr) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const double values[] = {0.0, -0.0, 1.0, -2.5, kInf, -kInf, std::numeric_limits<double>::quiet_NaN()};
  for (const double x : values) {
    for (const double y : values) ExpectProductAsMpfr(Bits(x), Bits(y));
  }
  // At both ends of the range, where products overflow and underflow.
  Bits a(0.75), b(-0.75);
  for (const mpfr_exp_t far : {mpfr_get_emax(), mpfr_get_emax() / 2 + 1, mpfr_get_emax() / 2, mpfr_get_emin(),
                               mpfr_get_emin() / 2 - 1, mpfr_get_emin() / 2}) {
    mpfr_set_exp(a.value, far);
    mpfr_set_exp(b.value, far);
    ExpectProductAsMpfr(a, b);
    ExpectProductAsMpfr(a, Bits(3.0));
    ExpectProductAsMpfr(a, Bits(0.125));
  }
}

TEST(CNumberProduct, MayBeWrittenOverItsFactors) {
  Bits expected, same(0.7), other(-1.3);
  mpfr_mul(expected.value, same.value, other.value, MPFR_RNDN);
  ProductOf(other.value, same.value, other.value);
  EXPECT_TRUE(AreSame(other, expected));
  mpfr_mul(expected.value, other.value, other.value, MPFR_RNDN);
  ProductOf(other.value, other.value, other.value);
  EXPECT_TRUE(AreSame(other, expected));
}

}  // namespace
}  // namespace tolvik::engine
