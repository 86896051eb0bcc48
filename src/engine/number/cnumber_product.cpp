// SPDX-License-Identifier: GPL-2.0-or-later
// mpfr_mul has shortcuts up to three limbs; for the four of 200 bits its generality costs as much as the
// product.
#include <gmp.h>

#include <algorithm>

#include "engine/number/cnumber_functions.h"
#include "engine/number/cnumber_tables.h"

namespace tolvik::engine {

using namespace cnumber_functions;

namespace {

constexpr mpfr_exp_t kFarExponent = 1 << 28;  // two of them stay in the range of MPFR

bool IsOrdinary(mpfr_srcptr x) {
  return mpfr_regular_p(x) != 0 && mpfr_custom_get_exp(x) < kFarExponent &&
         mpfr_custom_get_exp(x) > -kFarExponent;
}

const mp_limb_t* LimbsOf(mpfr_srcptr x) {
  return static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
}

// Upper half of a product to 200 bits, to nearest, a tie to even. rest: whether the lower half is not 0.
// Returns the carry beyond the first bit.
mp_limb_t RoundProduct(mp_limb_t* upper, bool rest) {
  constexpr int kSpareBits = kFractionBits - kFunctionBits;
  constexpr mp_limb_t kHalf = mp_limb_t{1} << (kSpareBits - 1), kSpare = 2 * kHalf - 1;
  const mp_limb_t spare = upper[0] & kSpare;
  const bool odd = (upper[0] >> kSpareBits) % 2 != 0;
  upper[0] -= spare;
  if (spare < kHalf || (spare == kHalf && !rest && !odd)) return 0;
  return mpn_add_1(upper, upper, kLimbs, kSpare + 1);
}

}  // namespace

void ProductOf(mpfr_ptr result, mpfr_srcptr a, mpfr_srcptr b) {
  if (!IsOrdinary(a) || !IsOrdinary(b)) {
    mpfr_mul(result, a, b, MPFR_RNDN);
    return;
  }
  mp_limb_t product[2 * kLimbs];
  mpn_mul_n(product, LimbsOf(a), LimbsOf(b), kLimbs);
  mp_limb_t* upper = product + kLimbs;
  mpfr_exp_t exponent = mpfr_custom_get_exp(a) + mpfr_custom_get_exp(b);
  if (upper[kLimbs - 1] >> (GMP_NUMB_BITS - 1) == 0) {  // the product of two significands is at least 1/4
    mpn_lshift(upper - 1, upper - 1, kLimbs + 1, 1);
    --exponent;
  }
  const bool rest = std::any_of(product, upper, [](mp_limb_t limb) { return limb != 0; });
  if (RoundProduct(upper, rest) != 0) {
    upper[kLimbs - 1] = mp_limb_t{1} << (GMP_NUMB_BITS - 1);
    ++exponent;
  }
  const bool negative = (mpfr_signbit(a) != 0) != (mpfr_signbit(b) != 0);
  auto* limbs = static_cast<mp_limb_t*>(mpfr_custom_get_significand(result));
  std::copy_n(upper, kLimbs, limbs);
  mpfr_custom_init_set(result, negative ? -MPFR_REGULAR_KIND : MPFR_REGULAR_KIND, exponent, kFunctionBits,
                       limbs);
}

}  // namespace tolvik::engine
