// SPDX-License-Identifier: GPL-2.0-or-later
// A block of angles: numbers in rows of registers, one row for each part of a complex quantity. The kernels
// walk them in small loops, one for each step of the physics, which keeps the registers few and the
// processor's pipelines full.
#pragma once

#include <cstdint>

#include "engine/lanes/functions.h"

namespace tolvik::engine::lanes {

/// Registers in a row.
inline constexpr int kBlockVectors = 8;

template <class V>
struct Row {
  using Scalar = typename Lanes<V>::Scalar;
  static constexpr int size = kBlockVectors * Lanes<V>::size;

  TOLVIK_INLINE Lanes<V> operator[](int i) const { return Lanes<V>::Load(value + i * Lanes<V>::size); }
  TOLVIK_INLINE void Set(int i, Lanes<V> x) { x.Store(value + i * Lanes<V>::size); }

  alignas(64) Scalar value[size];
};

/// A complex number in registers.
template <class V>
struct Complexes {
  Lanes<V> real, imag;

  TOLVIK_INLINE friend Complexes operator+(Complexes a, Complexes b) {
    return {a.real + b.real, a.imag + b.imag};
  }
  TOLVIK_INLINE friend Complexes operator-(Complexes a, Complexes b) {
    return {a.real - b.real, a.imag - b.imag};
  }
  TOLVIK_INLINE friend Complexes operator*(Complexes a, Complexes b) {
    return {NegMulAdd(a.imag, b.imag, a.real * b.real), MulAdd(a.real, b.imag, a.imag * b.real)};
  }
  TOLVIK_INLINE friend Complexes operator*(Lanes<V> a, Complexes b) { return {a * b.real, a * b.imag}; }
  /// a·b + c
  TOLVIK_INLINE friend Complexes MulAdd(Complexes a, Complexes b, Complexes c) {
    return {NegMulAdd(a.imag, b.imag, MulAdd(a.real, b.real, c.real)),
            MulAdd(a.real, b.imag, MulAdd(a.imag, b.real, c.imag))};
  }
  TOLVIK_INLINE friend Lanes<V> Norm(Complexes a) { return MulAdd(a.real, a.real, a.imag * a.imag); }
  TOLVIK_INLINE friend Complexes Exp(Complexes a) {
    const Lanes<V> modulus = Exp(a.real);
    Lanes<V> sine, cosine;
    SinCos(a.imag, sine, cosine);
    return {modulus * cosine, modulus * sine};
  }
};

template <class V>
struct ComplexRow {
  TOLVIK_INLINE Complexes<V> operator[](int i) const { return {real[i], imag[i]}; }
  TOLVIK_INLINE void Set(int i, Complexes<V> x) {
    real.Set(i, x.real);
    imag.Set(i, x.imag);
  }

  Row<V> real, imag;
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
