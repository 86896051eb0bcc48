// SPDX-License-Identifier: GPL-2.0-or-later
// Complex functions of lanes beyond those of complexes.h: the exponential near 1, and cube roots.
#pragma once

#include <cstdint>

#include "engine/simd/complexes.h"

namespace tolvik::engine::lanes {

/// exp(z) for |z| < kShortStep within an ulp of 1, by the series of its parts.
inline constexpr double kShortStep = 0.01;
template <class V>
TOLVIK_INLINE Complexes<V> ShortExponential(Complexes<V> z) {
  using L = Lanes<V>;
  static constexpr double kExp[] = {1.0, 1.0, 1.0 / 2.0, 1.0 / 6.0, 1.0 / 24.0, 1.0 / 120.0, 1.0 / 720.0};
  static constexpr double kCosine[] = {1.0, -1.0 / 2.0, 1.0 / 24.0, -1.0 / 720.0};
  static constexpr double kSine[] = {1.0, -1.0 / 6.0, 1.0 / 120.0};
  const L modulus = Polynomial<V>(kExp, z.real());
  const L y2 = z.imag() * z.imag();
  return {modulus * Polynomial<V>(kCosine, y2), (modulus * z.imag()) * Polynomial<V>(kSine, y2)};
}

/// exp(z), the short way where |z| < kShortStep. Each angle takes its own way, independent of its neighbours.
template <class V>
TOLVIK_INLINE Complexes<V> ExponentialNearOne(Complexes<V> z) {
  const Mask<V> is_short = norm(z) < Lanes<V>(kShortStep * kShortStep);
  if (AllOf(is_short)) return ShortExponential(z);
  return Select(is_short, ShortExponential(z), exp(z));
}

/// The cube root of a normal x > 0 within 1e-13. The bits of a number, read as an integer, are its logarithm
/// to within 6 percent; a third of that is a start for two steps of Halley.
template <class V>
TOLVIK_INLINE Lanes<V> CubeRootOfNormal(Lanes<V> x) {
  using L = Lanes<V>;
  static_assert(sizeof(typename L::Scalar) == 8);
  using Unsigned = xsimd::batch<std::uint64_t, typename L::Batch::arch_type>;
  // An integer v below 2^52 and the number 2^52 + v differ by the bits of 2^52 only.
  const Unsigned integer_bits(0x4330000000000000u);
  const auto number_of = [](Unsigned bits) { return L(xsimd::bitwise_cast<typename L::Batch>(bits)); };
  const Unsigned logarithm = xsimd::bitwise_cast<Unsigned>(x.Register()) >> 12;
  const L scaled = number_of(logarithm | integer_bits) - L(0x1p52);
  const L third = MulAdd(scaled, L(1.0 / 3.0), L(0x1p52 + 681.967 * 0x1p40));
  L y = number_of((xsimd::bitwise_cast<Unsigned>(third.Register()) ^ integer_bits) << 12);
  for (int step = 0; step < 2; ++step) {
    const L cube = y * y * y;
    y = y * (cube + x + x) / (cube + cube + x);
  }
  return y;
}

/// A cube root of z, any of the three, within a few units of rounding; z is not 0.
template <class V>
TOLVIK_INLINE Complexes<V> CubeRoot(const Complexes<V>& z) {
  using L = Lanes<V>;
  // In powers of t² with t = tan(φ/2): cos(φ/3) and sin(φ/3)/t for |φ| <= π/4 within 7e-7, by interpolation
  // at the Chebyshev nodes.
  static constexpr double kCosine[] = {0.9999994584052913, -0.2221209401897241, 0.15335852470799452,
                                       -0.09476016158389973};
  static constexpr double kSine[] = {0.6666660525572842, -0.2714901020821979, 0.18039024451027674,
                                     -0.10928546584595067};
  const L modulus = sqrt(norm(z));
  // Quarter turns rotate z near the positive axis; the cube roots of i and -1 rotate the result back.
  const Mask<V> steep = abs(z.imag()) > abs(z.real());
  const L x = Select(steep, z.imag(), z.real());
  const L y = Select(steep, -z.real(), z.imag());
  const L t = copysign(L(1.0), x) * y / (modulus + abs(x));
  const L t2 = t * t;
  const L size = copysign(CubeRootOfNormal(modulus), x);
  const L a = size * Polynomial<V>(kCosine, t2);
  const L b = size * (t * Polynomial<V>(kSine, t2));
  const Complexes<V> start(Select(steep, b, a), Select(steep, -a, b));
  const Complexes<V> cube = start * start * start;
  return start * ((cube + z + z) / (cube + cube + z));
}

}  // namespace tolvik::engine::lanes
