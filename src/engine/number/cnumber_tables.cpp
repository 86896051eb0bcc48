// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/number/cnumber_tables.h"

#include <mpfr.h>

#include <algorithm>

namespace tolvik::engine::cnumber_functions {

namespace {

// floor(x 2^(64 below)) of an 0 <= x of MPFR into limbs, saturated.
template <std::size_t kSize>
std::array<mp_limb_t, kSize> ToLimbs(mpfr_t x, int below) {
  mpz_t integer;
  mpz_init(integer);
  mpfr_mul_2si(x, x, 64L * below, MPFR_RNDN);
  mpfr_get_z(integer, x, MPFR_RNDD);
  std::array<mp_limb_t, kSize> limbs = {};
  if (mpz_size(integer) > kSize) {
    limbs.fill(~mp_limb_t{0});
  } else {
    std::copy_n(mpz_limbs_read(integer), mpz_size(integer), limbs.begin());
  }
  mpz_clear(integer);
  return limbs;
}

}  // namespace

Tables::Tables() {
  mpfr_t x, y;
  mpfr_inits2(2 * kFractionBits, x, y, static_cast<mpfr_ptr>(nullptr));
  mpfr_const_log2(x, MPFR_RNDN);
  ln2 = ToLimbs<kLimbs + 2>(x, kLimbs + 1);
  mpfr_const_pi(x, MPFR_RNDN);
  mpfr_div_2ui(x, x, 1, MPFR_RNDN);
  half_pi = ToLimbs<kLimbs + 2>(x, kLimbs + 1);
  for (unsigned long k = 2; k < kTerms; ++k) {
    mpfr_fac_ui(x, k, MPFR_RNDN);
    mpfr_ui_div(x, 1, x, MPFR_RNDN);
    inverse_factorial[k] = ToLimbs<kLimbs>(x, kLimbs);
  }
  for (std::size_t i = 0; i < half_exp.size(); ++i) {
    mpfr_set_ui_2exp(x, i, -kStepBits, MPFR_RNDN);
    mpfr_exp(x, x, MPFR_RNDN);
    mpfr_div_2ui(x, x, 1, MPFR_RNDN);
    half_exp[i] = ToLimbs<kLimbs>(x, kLimbs);
  }
  for (std::size_t i = 0; i < sine.size(); ++i) {
    mpfr_set_ui_2exp(x, i, -kStepBits, MPFR_RNDN);
    mpfr_sin_cos(x, y, x, MPFR_RNDN);
    sine[i] = ToLimbs<kLimbs>(x, kLimbs);
    cosine[i] = ToLimbs<kLimbs>(y, kLimbs);
  }
  mpfr_clears(x, y, static_cast<mpfr_ptr>(nullptr));
}

const Tables& TheTables() {
  static const Tables tables;
  return tables;
}

}  // namespace tolvik::engine::cnumber_functions
