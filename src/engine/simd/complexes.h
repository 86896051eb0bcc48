// SPDX-License-Identifier: GPL-2.0-or-later
// The complex number over lanes.
//
// It is for finite numbers whose squares neither overflow nor vanish: products and quotients use the short
// formulas, without the rules for infinities with NaN. Outside that range the result is not finite, and the
// plain path calculates that angle.
#pragma once

#include "engine/simd/functions.h"

namespace tolvik::engine::lanes {

/// A complex number for each angle, in registers.
template <class V>
class Complexes {
 public:
  using value_type = Lanes<V>;
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;

  TOLVIK_INLINE Complexes() : real_(Scalar(0)), imag_(Scalar(0)) {}
  TOLVIK_INLINE Complexes(L real)
      : real_(real), imag_(Scalar(0)) {}  // NOLINT: a real number is a complex one
  TOLVIK_INLINE Complexes(L real, L imag) : real_(real), imag_(imag) {}

  // Part by part: GCC copies a pair of registers as a block of bytes, through the stack in halves.
  TOLVIK_INLINE Complexes(const Complexes& other) : real_(other.real_), imag_(other.imag_) {}
  TOLVIK_INLINE Complexes& operator=(const Complexes& other) {
    real_ = other.real_;
    imag_ = other.imag_;
    return *this;
  }

  TOLVIK_INLINE L real() const { return real_; }
  TOLVIK_INLINE L imag() const { return imag_; }

  TOLVIK_INLINE friend Complexes operator+(Complexes a, Complexes b) {
    return {a.real_ + b.real_, a.imag_ + b.imag_};
  }
  TOLVIK_INLINE friend Complexes operator-(Complexes a, Complexes b) {
    return {a.real_ - b.real_, a.imag_ - b.imag_};
  }
  TOLVIK_INLINE friend Complexes operator-(Complexes a) { return {-a.real_, -a.imag_}; }
  TOLVIK_INLINE friend Complexes operator*(Complexes a, Complexes b) {
    return {NegMulAdd(a.imag_, b.imag_, a.real_ * b.real_), MulAdd(a.real_, b.imag_, a.imag_ * b.real_)};
  }
  TOLVIK_INLINE friend Complexes operator/(Complexes a, Complexes b) { return a * Inverse(b); }

  TOLVIK_INLINE friend Complexes operator+(Complexes a, L b) { return {a.real_ + b, a.imag_}; }
  TOLVIK_INLINE friend Complexes operator+(L a, Complexes b) { return {a + b.real_, b.imag_}; }
  TOLVIK_INLINE friend Complexes operator-(Complexes a, L b) { return {a.real_ - b, a.imag_}; }
  TOLVIK_INLINE friend Complexes operator-(L a, Complexes b) { return {a - b.real_, -b.imag_}; }
  TOLVIK_INLINE friend Complexes operator*(L a, Complexes b) { return {a * b.real_, a * b.imag_}; }
  TOLVIK_INLINE friend Complexes operator*(Complexes a, L b) { return {a.real_ * b, a.imag_ * b}; }
  TOLVIK_INLINE friend Complexes operator/(Complexes a, L b) { return {a.real_ / b, a.imag_ / b}; }
  TOLVIK_INLINE friend Complexes operator/(L a, Complexes b) { return a * Inverse(b); }

  TOLVIK_INLINE Complexes& operator+=(Complexes b) { return *this = *this + b; }
  TOLVIK_INLINE Complexes& operator-=(Complexes b) { return *this = *this - b; }
  TOLVIK_INLINE Complexes& operator*=(Complexes b) { return *this = *this * b; }

  TOLVIK_INLINE friend Mask<V> operator==(Complexes a, Complexes b) {
    return a.real_ == b.real_ && a.imag_ == b.imag_;
  }

  /// a·b + c
  TOLVIK_INLINE friend Complexes MulAdd(Complexes a, Complexes b, Complexes c) {
    return {NegMulAdd(a.imag_, b.imag_, MulAdd(a.real_, b.real_, c.real_)),
            MulAdd(a.real_, b.imag_, MulAdd(a.imag_, b.real_, c.imag_))};
  }
  TOLVIK_INLINE friend Complexes MulAdd(L a, Complexes b, Complexes c) {
    return {MulAdd(a, b.real_, c.real_), MulAdd(a, b.imag_, c.imag_)};
  }
  /// c - a·b
  TOLVIK_INLINE friend Complexes NegMulAdd(Complexes a, Complexes b, Complexes c) {
    return {MulAdd(a.imag_, b.imag_, NegMulAdd(a.real_, b.real_, c.real_)),
            NegMulAdd(a.real_, b.imag_, NegMulAdd(a.imag_, b.real_, c.imag_))};
  }
  /// a where the mask holds, b elsewhere.
  TOLVIK_INLINE friend Complexes Select(Mask<V> mask, Complexes a, Complexes b) {
    return {Select(mask, a.real_, b.real_), Select(mask, a.imag_, b.imag_)};
  }

  /// The squared modulus.
  TOLVIK_INLINE friend L norm(Complexes a) { return MulAdd(a.real_, a.real_, a.imag_ * a.imag_); }
  TOLVIK_INLINE friend Complexes Inverse(Complexes a) {
    const L scale = Quotient(L(Scalar(1)), norm(a));
    return {scale * a.real_, -(scale * a.imag_)};
  }
  TOLVIK_INLINE friend Complexes exp(Complexes a) {
    const L modulus = Exp(a.real_);
    L sine, cosine;
    SinCos(a.imag_, sine, cosine);
    return {modulus * cosine, modulus * sine};
  }
  /// The same for an imaginary part up to short_phase (functions.h).
  TOLVIK_INLINE friend Complexes ExpOfShortPhase(Complexes a) {
    const L modulus = Exp(a.real_);
    L sine, cosine;
    ShortSinCos(a.imag_, sine, cosine);
    return {modulus * cosine, modulus * sine};
  }
  /// With the sign of the imaginary part, -0 included; NaN where the square of a modulus vanishes.
  TOLVIK_INLINE friend Complexes sqrt(Complexes a) {
    L modulus2;
    const Complexes root = SquareRoot(a.real_, a.imag_, modulus2);
    const L nan(std::numeric_limits<Scalar>::quiet_NaN());
    return Select(modulus2 >= L(std::numeric_limits<Scalar>::min()), root, Complexes(nan, nan));
  }

 private:
  L real_, imag_;
};

/// The square root of x + i y with a real part that is not negative and the sign of y, -0 included, and the
/// squared modulus of x + i y. For moduli whose squares neither overflow nor underflow, and not for 0.
template <class V>
TOLVIK_INLINE Complexes<V> SquareRoot(Lanes<V> x, Lanes<V> y, Lanes<V>& modulus2) {
  using L = Lanes<V>;
  using Scalar = typename L::Scalar;
  const L half(Scalar(0.5));
  modulus2 = MulAdd(x, x, y * y);
  const L larger2 = half * (SquareRootOfNormal(modulus2) + abs(x));
  L inverse;
  const L larger = SquareRootAndInverse(larger2, inverse);
  const L smaller = half * y * inverse;
  const Mask<V> right = x >= L(Scalar(0));
  return {Select(right, larger, abs(smaller)), Select(right, smaller, copysign(larger, y))};
}

}  // namespace tolvik::engine::lanes
