// SPDX-License-Identifier: GPL-2.0-or-later
// What the physics of the engine may ask of a number type, and every difference between number types that is
// not rounding.
#pragma once

#include <cmath>
#include <complex>
#include <concepts>

namespace tolvik::engine {

class CNumber;
template <class T>
class Complex;

/// Differences between the number types that are not rounding.
template <class T>
struct NumberTraits {
  /// A normal wavevector whose real part is exactly 0 gets 1e-100 there, so that no division meets 0.
  static constexpr bool lifts_zero_kz = false;
  /// The grazing angle is asin(s), refused by s >= 1 without the modulus, instead of atan2(s, sqrt(1 - s²)).
  static constexpr bool angle_by_asin = false;
};
template <>
struct NumberTraits<double> {
  static constexpr bool lifts_zero_kz = true;
  static constexpr bool angle_by_asin = false;
};
template <>
struct NumberTraits<long double> {
  static constexpr bool lifts_zero_kz = true;
  static constexpr bool angle_by_asin = false;
};
template <>
struct NumberTraits<CNumber> {
  static constexpr bool lifts_zero_kz = false;
  static constexpr bool angle_by_asin = true;
};

template <class T>
struct ComplexOf {
  using type = Complex<T>;
};
template <std::floating_point T>
struct ComplexOf<T> {
  using type = std::complex<T>;
};

/// The complex number over T: the platform's for the built-in types, our own pair with the same branch cuts
/// otherwise.
template <class T>
using Cplx = typename ComplexOf<T>::type;

}  // namespace tolvik::engine
