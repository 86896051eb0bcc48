// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers of 200 bits for the tests of our replacements of MPFR's functions.
#pragma once

#include <gtest/gtest.h>
#include <mpfr.h>

#include <random>

#include "engine/number/cnumber_functions.h"

namespace tolvik::engine::cnumber_tests {

inline constexpr unsigned kSeed = 1999;

/// A number without operators.
struct Bits {
  Bits() { mpfr_init2(value, kFunctionBits); }
  explicit Bits(double x) : Bits() { mpfr_set_d(value, x, MPFR_RNDN); }
  Bits(const Bits&) = delete;
  Bits& operator=(const Bits&) = delete;
  ~Bits() { mpfr_clear(value); }

  mpfr_t value;
};

inline ::testing::AssertionResult AreSame(const Bits& a, const Bits& b) {
  const bool both_nan = mpfr_nan_p(a.value) != 0 && mpfr_nan_p(b.value) != 0;
  const bool equal =
      mpfr_equal_p(a.value, b.value) != 0 && (mpfr_signbit(a.value) != 0) == (mpfr_signbit(b.value) != 0);
  if (both_nan || equal) return ::testing::AssertionSuccess();
  char text[300];
  mpfr_snprintf(text, sizeof text, "%.70Rg and %.70Rg", a.value, b.value);
  return ::testing::AssertionFailure() << text;
}

/// Random bits times 2^exponent with either sign.
class RandomNumbers {
 public:
  RandomNumbers() {
    gmp_randinit_default(state_);
    gmp_randseed_ui(state_, kSeed);
  }
  RandomNumbers(const RandomNumbers&) = delete;
  RandomNumbers& operator=(const RandomNumbers&) = delete;
  ~RandomNumbers() { gmp_randclear(state_); }

  void Next(int least_exponent, int largest_exponent, Bits& x) {
    mpfr_urandomb(x.value, state_);
    const int exponent = std::uniform_int_distribution<int>(least_exponent, largest_exponent)(random_);
    mpfr_mul_2si(x.value, x.value, exponent, MPFR_RNDN);
    if (random_() % 2 != 0) mpfr_neg(x.value, x.value, MPFR_RNDN);
  }

 private:
  std::mt19937_64 random_{kSeed};
  gmp_randstate_t state_;
};

}  // namespace tolvik::engine::cnumber_tests
