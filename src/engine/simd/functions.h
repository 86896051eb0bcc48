// SPDX-License-Identifier: GPL-2.0-or-later
// Exponential, sine and cosine of lanes, without branches.
//
// The argument is reduced by multiples of ln 2 or π/2 held in two or three parts (W. J. Cody, W. Waite,
// Software Manual for the Elementary Functions, 1980); the polynomials interpolate the remainder at the
// Chebyshev nodes, relative error below 2e-17 (double) and 2e-10 (float) before rounding. Unlike the general
// functions of a library these omit the cases that a reflectivity never needs: huge arguments and results
// below the smallest normal number (0 here). On AVX2 in double they take 0.23 to 0.40 (exponential) and 0.49
// to 0.59 (sine and cosine) of the time of xsimd 8.1, with largest errors of 1.0 and 1.6 units of the last
// place instead of 0.9 and 2.3 (bench/functions).
#pragma once

#include "engine/simd/register.h"

namespace tolvik::engine::lanes {

/// Constants of the functions for a scalar type.
template <class Scalar>
struct FunctionConstants;

template <>
struct FunctionConstants<double> {
  static constexpr double round_shift = 0x1.8p52;  ///< added and subtracted, rounds to an integer
  static constexpr int mantissa_bits = 52;
  static constexpr double exp_lowest = -708.0;
  static constexpr double exp_highest = 709.0;
  static constexpr double exp_unreduced = 0.34;    ///< below ln 2 / 2
  static constexpr double max_phase = 1e6;         ///< largest argument of SinCos
  static constexpr double phase_unreduced = 0.78;  ///< below π/4
  static constexpr double log2_e = 0x1.71547652b82fep+0;
  static constexpr double ln2_part[2] = {0x1.62e42fee00000p-1, 0x1.a39ef35793c76p-33};
  static constexpr double two_over_pi = 0x1.45f306dc9c883p-1;
  static constexpr double half_pi_part[3] = {0x1.921fb54400000p+0, 0x1.0b4611a600000p-34,
                                             0x1.3198a2e037073p-69};
  static constexpr double half_pi_fused[2] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
  // (exp r - 1 - r) / r², |r| <= ln 2 / 2
  static constexpr double exp_terms[] = {0x1.0000000000001p-1,  0x1.5555555555556p-3,  0x1.5555555553d63p-5,
                                         0x1.11111111109b3p-7,  0x1.6c16c1788bd90p-10, 0x1.a01a01a7c41d5p-13,
                                         0x1.a019b90d2ae7ap-16, 0x1.71de0dae63bb3p-19, 0x1.289185613a3d6p-22,
                                         0x1.af38a9b0ec855p-26};
  // (sin r - r) / r³ and (cos r - 1 + r²/2) / r⁴ in powers of r², |r| <= π/4
  static constexpr double sin_terms[] = {-0x1.5555555555555p-3,  0x1.1111111110bb1p-7,
                                         -0x1.a01a019e8357dp-13, 0x1.71de37961e4c6p-19,
                                         -0x1.ae600a926c899p-26, 0x1.5e0af186af6e1p-33};
  static constexpr double cos_terms[] = {0x1.5555555555555p-5,  -0x1.6c16c16c16966p-10,
                                         0x1.a01a019f4e867p-16, -0x1.27e4fa17a41b4p-22,
                                         0x1.1eeb68b109172p-29, -0x1.907d7aebd5de5p-37};
  // The same for |r| <= short_phase.
  static constexpr double short_phase = 0.125;
  static constexpr double short_sin_terms[] = {-0x1.5555555555555p-3, 0x1.111111110d9a6p-7,
                                               -0x1.a01a008dbff1ep-13, 0x1.71c3102ace823p-19};
  static constexpr double short_cos_terms[] = {0x1.5555555554248p-5, -0x1.6c16c0c255058p-10,
                                               0x1.9ffdfe1bb5e93p-16};
};

template <>
struct FunctionConstants<float> {
  static constexpr float round_shift = 0x1.8p23f;
  static constexpr int mantissa_bits = 23;
  static constexpr float exp_lowest = -87.0f;
  static constexpr float exp_highest = 88.0f;
  static constexpr float exp_unreduced = 0.34f;
  static constexpr float max_phase = 1e4f;
  static constexpr float phase_unreduced = 0.78f;
  static constexpr float log2_e = 0x1.715476p+0f;
  static constexpr float ln2_part[2] = {0x1.62e400p-1f, 0x1.7f7d1cp-20f};
  static constexpr float two_over_pi = 0x1.45f306p-1f;
  static constexpr float half_pi_part[3] = {0x1.920000p+0f, 0x1.fb4000p-12f, 0x1.4442d2p-24f};
  static constexpr float half_pi_fused[2] = {0x1.921fb6p+0f, -0x1.777a5cp-25f};
  static constexpr float exp_terms[] = {0x1.000000p-1f, 0x1.555556p-3f,  0x1.5554eap-5f,
                                        0x1.1110e0p-7f, 0x1.6d4324p-10f, 0x1.a124f2p-13f};
  static constexpr float sin_terms[] = {-0x1.555552p-3f, 0x1.110c28p-7f, -0x1.9ac96cp-13f};
  static constexpr float cos_terms[] = {0x1.555554p-5f, -0x1.6c12d2p-10f, 0x1.9bd864p-16f};
  static constexpr float short_phase = 0.125f;
  static constexpr float short_sin_terms[] = {-0x1.555554p-3f, 0x1.10f6cep-7f};
  static constexpr float short_cos_terms[] = {0x1.553e5ap-5f};
};

/// terms[0] + terms[1] x + ... by Horner's scheme.
template <class V, class Scalar, int N>
TOLVIK_INLINE Lanes<V> Polynomial(const Scalar (&terms)[N], Lanes<V> x) {
  Lanes<V> sum(terms[N - 1]);
  for (int i = N - 2; i >= 0; --i) sum = MulAdd(sum, x, Lanes<V>(terms[i]));
  return sum;
}

/// sqrt(x) within 1 ulp and 1/sqrt(x) within 2, for normal x above 0. On a processor with an estimate of the
/// inverse root that is refined, which does not occupy its one divider: with the estimate e, m = x e and h =
/// e/2 tend to the root and half its inverse when each gets (1/2 - m h) times itself (R. E. Goldschmidt, MIT,
/// 1964), and in double a last step of Newton removes the rounding.
template <class V>
TOLVIK_INLINE Lanes<V> SquareRootAndInverse(Lanes<V> x, Lanes<V>& inverse) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  const L half(Scalar(0.5)), one(Scalar(1));
  if constexpr (V::estimates) {
    const L e = V::EstimateInverseRoot(x.Register());  // within 2^-14
    const L m = x * e;
    const L h = half * e;
    const L error = NegMulAdd(m, h, half);
    const L root = MulAdd(m, error, m);
    if constexpr (sizeof(Scalar) == 4) {
      inverse = MulAdd(e, error, e);
      return root;
    } else {
      const L y = MulAdd(e, error, e);
      const L better = MulAdd(NegMulAdd(root, root, x), half * y, root);
      inverse = MulAdd(NegMulAdd(better, y, one), y, y);
      return better;
    }
  } else {
    const L root = sqrt(x);
    inverse = one / root;
    return root;
  }
}

template <class V>
TOLVIK_INLINE Lanes<V> SquareRootOfNormal(Lanes<V> x) {
  if constexpr (V::estimates) {
    Lanes<V> inverse;
    return SquareRootAndInverse(x, inverse);
  } else {
    return sqrt(x);
  }
}

/// a / b within 1 ulp for normal b whose inverse is normal; for other b perhaps NaN where a / b is a number.
/// On a processor with an estimate of the inverse that is refined, which does not occupy its one divider.
template <class V>
TOLVIK_INLINE Lanes<V> Quotient(Lanes<V> a, Lanes<V> b) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  if constexpr (V::estimates) {
    const L one(Scalar(1));
    L inverse = V::EstimateInverse(b.Register());  // within 2^-14
    inverse = MulAdd(inverse, NegMulAdd(b, inverse, one), inverse);
    if constexpr (sizeof(Scalar) == 8) inverse = MulAdd(inverse, NegMulAdd(b, inverse, one), inverse);
    const L quotient = a * inverse;
    return MulAdd(inverse, NegMulAdd(b, quotient, a), quotient);
  } else {
    return a / b;
  }
}

/// exp(x) within 1.5 ulp; 0 below the lowest normal result, unspecified above exp_highest.
template <class V>
TOLVIK_INLINE Lanes<V> Exp(Lanes<V> x) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  using C = FunctionConstants<Scalar>;
  // Where no reduction is needed the short way gives the same bits as the long one.
  if (AllOf(abs(x) < L(C::exp_unreduced))) {
    return MulAdd(x * x, Polynomial<V>(C::exp_terms, x), x) + L(Scalar(1));
  }
  const L bounded = Max(x, L(C::exp_lowest));
  const L shifted = MulAdd(bounded, L(C::log2_e), L(C::round_shift));
  const L k = shifted - L(C::round_shift);
  const L r = NegMulAdd(k, L(C::ln2_part[1]), NegMulAdd(k, L(C::ln2_part[0]), bounded));
  const L mantissa = MulAdd(r * r, Polynomial<V>(C::exp_terms, r), r) + L(Scalar(1));
  const L power = L::FromBits(mantissa.ToBits() + (shifted.ToBits() << C::mantissa_bits));
  return KeepWhere(x >= L(C::exp_lowest), power);
}

/// sine and cosine within 1.5 ulp, near their zeros of 0.001, for |x| up to max_phase; unspecified above.
template <class V>
TOLVIK_INLINE void SinCos(Lanes<V> x, Lanes<V>& sine, Lanes<V>& cosine) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  using C = FunctionConstants<Scalar>;
  using Integers = typename L::Integers;
  constexpr int sign_shift = int(8 * sizeof(Scalar)) - 2;
  const auto short_sine = [](L r, L r2) { return MulAdd(r2 * r, Polynomial<V>(C::sin_terms, r2), r); };
  const auto short_cosine = [](L r2, L s) {
    // Without fused multiplication a polynomial costs five times as much as the root.
    if constexpr (!V::fused) return sqrt(NegMulAdd(s, s, L(Scalar(1))));
    return MulAdd(r2 * r2, Polynomial<V>(C::cos_terms, r2), NegMulAdd(L(Scalar(0.5)), r2, L(Scalar(1))));
  };
  if (AllOf(abs(x) < L(C::phase_unreduced))) {
    sine = short_sine(x, x * x);
    cosine = short_cosine(x * x, sine);
    return;
  }
  const L shifted = MulAdd(x, L(C::two_over_pi), L(C::round_shift));
  const L k = shifted - L(C::round_shift);
  L r;
  if constexpr (V::fused) {
    r = NegMulAdd(k, L(C::half_pi_fused[1]), NegMulAdd(k, L(C::half_pi_fused[0]), x));
  } else {
    r = ((x - k * L(C::half_pi_part[0])) - k * L(C::half_pi_part[1])) - k * L(C::half_pi_part[2]);
  }
  const L r2 = r * r;
  const L s = short_sine(r, r2);
  const L c = short_cosine(r2, s);

  // The two lowest bits of the quadrant, moved up to the sign: odd ones exchange the two, the higher bit
  // changes the sign of the sine, and that of the cosine where the bits differ.
  const Integers quadrant = shifted.ToBits() << sign_shift;
  const L higher = L::FromBits(quadrant);
  const L odd = L::FromBits(quadrant + quadrant);
  const L sign_bit(Scalar(-0.0));
  sine = SelectNegative(odd, c, s).Register() ^ (higher.Register() & sign_bit.Register());
  cosine =
      SelectNegative(odd, s, c).Register() ^ ((higher.Register() ^ odd.Register()) & sign_bit.Register());
}

/// The same for |x| up to short_phase, within 0.6 ulp.
template <class V>
TOLVIK_INLINE void ShortSinCos(Lanes<V> x, Lanes<V>& sine, Lanes<V>& cosine) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  using C = FunctionConstants<Scalar>;
  const L x2 = x * x;
  sine = MulAdd(x2 * x, Polynomial<V>(C::short_sin_terms, x2), x);
  // 1 - x²/2 rounds after the rest has been added to the small term.
  cosine = MulAdd(x2, MulSub(x2, Polynomial<V>(C::short_cos_terms, x2), L(Scalar(0.5))), L(Scalar(1)));
}

}  // namespace tolvik::engine::lanes
