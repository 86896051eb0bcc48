// SPDX-License-Identifier: GPL-2.0-or-later
// MPFR serves any precision; here it is always 200 bits, so integers of four limbs suffice: fractions of 256
// bits, a short table, a polynomial whose higher terms take fewer limbs, and a last rounding that leaves the
// rare undecided case to MPFR.
//
//   x = k ln 2 + r      exp x = 2^k exp(a) exp(t)                          a = i/64 <= r, t = r - a < 1/64
//   |x| = k π/2 + r     sin and cos by addition of a and t, then by the quadrant k mod 4
//
// Reduction by a table: P. T. P. Tang, ACM Trans. Math. Softw. 15, 144 (1989); with integers of few limbs:
// F. Johansson, 22nd IEEE Symp. Computer Arithmetic, 83 (2015). Rounding: A. Ziv, ACM Trans. Math. Softw. 17,
// 410 (1991).
//
// Each step errs by less than one unit of 2^-256, most of them weighted by a power of t: the results are
// wrong by less than ten units, by four at most of 200000 that were tried. kErrorBits has room.
//
// Of MPFR's time the exponential takes a quarter to a third, sine and cosine a fifth to a quarter. Arb with a
// last rounding takes 0.9 to 1.3 of ours (bench/arb/arb.cpp; figures in bench/README.md).
#include "engine/number/cnumber_functions.h"

#include <gmp.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "engine/number/cnumber_tables.h"

namespace tolvik::engine {

using namespace cnumber_functions;

namespace {

constexpr int kErrorBits = 8;                // results are wrong by less than 2^8 units of the last bit
constexpr mpfr_exp_t kLeastExponent = -63;   // of an x whose bits all lie above 2^-320
constexpr mpfr_exp_t kLeastOfSine = -32;     // below it a sine would keep too few of the 256 bits
constexpr mpfr_exp_t kLargestExponent = 20;  // far from where an exponential leaves the range

static_assert(kFunctionBits > kFractionBits - 64 && kFunctionBits <= kFractionBits);
static_assert(GMP_NUMB_BITS == 64, "limbs of 64 bits without nails");

// The product, cut to its upper limbs; only the upper `limbs` of the factors are used.
void Multiply(Fraction& result, const Fraction& a, const Fraction& b, int limbs = kLimbs) {
  mp_limb_t product[2 * kLimbs];
  const int skipped = kLimbs - limbs;
  mpn_mul_n(product, a.data() + skipped, b.data() + skipped, limbs);
  std::copy_n(product + limbs, limbs, result.begin() + skipped);
}

// The number of limbs that a coefficient of t^k needs, since t^k has 6 k leading zeros.
constexpr int LimbsOfTerm(std::size_t k) {
  return kLimbs - static_cast<int>(k) * kStepBits / 64;
}

// |x| less the largest multiple of a unit, and that multiple. unit_value: the unit as a double.
std::uint64_t Reduce(mpfr_srcptr x, const Reduced& unit, double unit_value, Reduced& remainder) {
  // In units of 2^-320 all of x is an integer, so nothing is lost.
  const auto shift = static_cast<unsigned>(mpfr_custom_get_exp(x) + 64);
  const auto* significand = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  remainder = {};
  mp_limb_t* low = remainder.data() + shift / 64;
  if (shift % 64 == 0) {
    std::copy_n(significand, kLimbs, low);
  } else {
    low[kLimbs] = mpn_lshift(low, significand, kLimbs, shift % 64);
  }
  const double value =
      static_cast<double>(remainder[kLimbs + 1]) + static_cast<double>(remainder[kLimbs]) * 0x1p-64;
  const auto count = static_cast<std::uint64_t>(value / unit_value);  // one too large or small at most
  if (mpn_submul_1(remainder.data(), unit.data(), kLimbs + 2, count) != 0) {
    mpn_add_n(remainder.data(), remainder.data(), unit.data(), kLimbs + 2);
    return count - 1;
  }
  if (mpn_cmp(remainder.data(), unit.data(), kLimbs + 2) < 0) return count;
  mpn_sub_n(remainder.data(), remainder.data(), unit.data(), kLimbs + 2);
  return count + 1;
}

// r = index/64 + t.
std::size_t SplitForTable(const Reduced& r, Fraction& t) {
  std::copy_n(r.begin() + 1, kLimbs, t.begin());
  mp_limb_t& top = t[kLimbs - 1];
  const std::size_t index = (r[kLimbs + 1] << kStepBits) | (top >> (64 - kStepBits));
  top = top << kStepBits >> kStepBits;
  return index;
}

// A value 2^exponent fraction, to be rounded to 200 bits.
struct Candidate {
  Fraction fraction;
  mpfr_exp_t exponent;
  bool negative = false;

  // Rounds to nearest. False where the error allows two results, or leading zeros leave too few bits.
  bool Round() {
    const int zeros = std::countl_zero(fraction.back());
    if (zeros > -kLeastOfSine) return false;
    if (zeros > 0) mpn_lshift(fraction.data(), fraction.data(), kLimbs, static_cast<unsigned>(zeros));
    exponent -= zeros;
    constexpr int kSpareBits = kFractionBits - kFunctionBits;
    constexpr mp_limb_t kHalf = mp_limb_t{1} << (kSpareBits - 1), kSpare = 2 * kHalf - 1;
    const mp_limb_t spare = fraction[0] & kSpare;
    const mp_limb_t from_tie = spare < kHalf ? kHalf - spare : spare - kHalf;
    if (from_tie >> (kErrorBits + zeros) == 0) return false;
    if (mpn_add_1(fraction.data(), fraction.data(), kLimbs, kHalf) != 0) {
      fraction.back() = mp_limb_t{1} << 63;
      ++exponent;
    }
    fraction[0] &= ~kSpare;
    return true;
  }

  void Store(mpfr_ptr result) const {
    auto* limbs = static_cast<mp_limb_t*>(mpfr_custom_get_significand(result));
    std::copy(fraction.begin(), fraction.end(), limbs);
    mpfr_custom_init_set(result, negative ? -MPFR_REGULAR_KIND : MPFR_REGULAR_KIND, exponent, kFunctionBits,
                         limbs);
  }
};

bool IsInReach(mpfr_srcptr x, mpfr_exp_t least_exponent) {
  return mpfr_regular_p(x) != 0 && mpfr_custom_get_exp(x) >= least_exponent &&
         mpfr_custom_get_exp(x) <= kLargestExponent;
}

// exp(t) - 1.
Fraction ExpMinusOne(const Tables& tables, const Fraction& t) {
  Fraction p = {};
  for (std::size_t k = kTerms - 1; k >= 2; --k) {
    const int limbs = LimbsOfTerm(k), skipped = kLimbs - limbs;
    Multiply(p, t, p, limbs);
    mpn_add_n(p.data() + skipped, p.data() + skipped, tables.inverse_factorial[k].data() + skipped, limbs);
  }
  Multiply(p, t, p);
  Multiply(p, t, p);
  mpn_add_n(p.data(), p.data(), t.data(), kLimbs);
  return p;
}

// u (1/last! - u/(last+2)! + ...) with u = t²: 1 - cos t from last = 2, 1 - sin(t)/t from last = 3.
Fraction AlternatingSeries(const Tables& tables, const Fraction& u, std::size_t last) {
  Fraction p = {};
  for (std::size_t k = kTerms - 4 + last; k >= last; k -= 2) {
    const int limbs = LimbsOfTerm(k), skipped = kLimbs - limbs;
    Multiply(p, u, p, limbs);
    mpn_sub_n(p.data() + skipped, tables.inverse_factorial[k].data() + skipped, p.data() + skipped, limbs);
  }
  Multiply(p, u, p);
  return p;
}

bool FastExp(mpfr_ptr result, mpfr_srcptr x) {
  const Tables& tables = TheTables();
  Reduced r;
  auto k = static_cast<mpfr_exp_t>(Reduce(x, tables.ln2, 0.6931471805599453, r));
  if (mpfr_signbit(x) != 0) {
    mpn_sub_n(r.data(), tables.ln2.data(), r.data(), kLimbs + 2);
    k = -k - 1;
  }
  Fraction t;
  const std::size_t index = SplitForTable(r, t);
  const Fraction& half_exp = tables.half_exp[index];
  Candidate value = {ExpMinusOne(tables, t), k + 1};
  Multiply(value.fraction, value.fraction, half_exp);
  if (mpn_add_n(value.fraction.data(), value.fraction.data(), half_exp.data(), kLimbs) != 0) return false;
  if (!value.Round()) return false;
  value.Store(result);
  return true;
}

// Sine and cosine of a reduced angle 0 <= r < π/2. False where an error of the last bit leaves 0 .. 1.
bool SinCosOfFirstQuadrant(const Tables& tables, const Reduced& r, Fraction& sine, Fraction& cosine) {
  Fraction t, u, product;
  const std::size_t index = SplitForTable(r, t);
  const Fraction& sine_a = tables.sine[index];
  const Fraction& cosine_a = tables.cosine[index];
  Multiply(u, t, t);
  const Fraction versine_t = AlternatingSeries(tables, u, 2);  // 1 - cos t
  Fraction sine_t = AlternatingSeries(tables, u, 3);
  Multiply(sine_t, sine_t, t);
  mpn_sub_n(sine_t.data(), t.data(), sine_t.data(), kLimbs);

  Multiply(product, sine_a, versine_t);
  mpn_sub_n(sine.data(), sine_a.data(), product.data(), kLimbs);
  Multiply(product, cosine_a, sine_t);
  const mp_limb_t carry = mpn_add_n(sine.data(), sine.data(), product.data(), kLimbs);

  Multiply(product, cosine_a, versine_t);
  mpn_sub_n(cosine.data(), cosine_a.data(), product.data(), kLimbs);
  Multiply(product, sine_a, sine_t);
  const mp_limb_t borrow = mpn_sub_n(cosine.data(), cosine.data(), product.data(), kLimbs);
  return carry == 0 && borrow == 0;
}

bool FastSinCos(mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr x) {
  const Tables& tables = TheTables();
  Reduced r;
  const std::uint64_t quadrant = Reduce(x, tables.half_pi, 1.5707963267948966, r) % 4;
  Candidate s = {{}, 0}, c = {{}, 0};
  if (!SinCosOfFirstQuadrant(tables, r, s.fraction, c.fraction)) return false;
  if (quadrant % 2 != 0) std::swap(s.fraction, c.fraction);
  s.negative = (quadrant >= 2) != (mpfr_signbit(x) != 0);
  c.negative = quadrant == 1 || quadrant == 2;
  if (!s.Round() || !c.Round()) return false;
  s.Store(sine);
  c.Store(cosine);
  return true;
}

}  // namespace

void ExpOf(mpfr_ptr result, mpfr_srcptr x) {
  if (!IsInReach(x, kLeastExponent) || !FastExp(result, x)) mpfr_exp(result, x, MPFR_RNDN);
}

void SinCosOf(mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr x) {
  if (!IsInReach(x, kLeastOfSine) || !FastSinCos(sine, cosine, x)) {
    mpfr_sin_cos(sine, cosine, x, MPFR_RNDN);
  }
}

}  // namespace tolvik::engine
