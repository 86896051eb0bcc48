// SPDX-License-Identifier: GPL-2.0-or-later
// The operations that the physics of the engine requires of a number type, and every difference between
// number types that is not rounding.
//
// A number type is float, double, long double or CNumber (MPFR, 200 bits). Physics calls sqrt(x), exp(x) and
// so on without a namespace: the using-declarations below serve the built-in types, argument-dependent lookup
// the others. Constants are written T(0.5): 0.5 * x would calculate in double for a float x.
#pragma once

#include <cmath>
#include <complex>
#include <concepts>

namespace tolvik::engine {

using std::abs;
using std::asin;
using std::atan2;
using std::cos;
using std::exp;
using std::hypot;
using std::log;
using std::pow;
using std::sin;
using std::sqrt;

using std::copysign;
using std::isfinite;
using std::isinf;
using std::isnan;
using std::signbit;

class CNumber;
template <class T>
class Complex;

/// Differences between the number types that are not rounding.
template <class T>
struct NumberTraits {
  /// A normal wavevector whose real part is exactly 0 gets 1e-100 there, so that no divisor is 0. A float
  /// cannot hold 1e-100.
  static constexpr bool lifts_zero_kz = false;
  /// The grazing angle is asin(s), refused for s >= 1 (not |s|), instead of atan2(s, sqrt(1 - s²)).
  static constexpr bool angle_by_asin = false;
  /// Where the value of a polynomial is below this share of its terms it counts as rounding error, and its
  /// root as found. 0: a root gets all Newton steps.
  static constexpr double rounding_of_quartic = 0;
};
template <>
struct NumberTraits<double> {
  static constexpr bool lifts_zero_kz = true;
  static constexpr bool angle_by_asin = false;
  static constexpr double rounding_of_quartic = 0;
};
template <>
struct NumberTraits<long double> {
  static constexpr bool lifts_zero_kz = true;
  static constexpr bool angle_by_asin = false;
  static constexpr double rounding_of_quartic = 0;
};
template <>
struct NumberTraits<CNumber> {
  static constexpr bool lifts_zero_kz = false;
  static constexpr bool angle_by_asin = true;
  static constexpr double rounding_of_quartic = 0;
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

/// Requirements of the physics on T: conversion from and to double, field arithmetic, ordering in which every
/// comparison with a NaN except != is false, and the functions of the formulas.
template <class T>
concept Number = std::constructible_from<T, double> && std::default_initializable<T> && std::copyable<T> &&
    requires(const T a, const T b, T c) {
  { static_cast<double>(a) } -> std::same_as<double>;
  { a + b } -> std::same_as<T>;
  { a - b } -> std::same_as<T>;
  { a* b } -> std::same_as<T>;
  { a / b } -> std::same_as<T>;
  { -a } -> std::same_as<T>;
  c += a;
  c -= a;
  c *= a;
  c /= a;
  a < b;
  a <= b;
  a > b;
  a >= b;
  a == b;
  a != b;
  { sqrt(a) } -> std::same_as<T>;
  { sin(a) } -> std::same_as<T>;
  { cos(a) } -> std::same_as<T>;
  { exp(a) } -> std::same_as<T>;
  { log(a) } -> std::same_as<T>;
  { abs(a) } -> std::same_as<T>;
  { asin(a) } -> std::same_as<T>;
  { pow(a, b) } -> std::same_as<T>;
  { atan2(a, b) } -> std::same_as<T>;
  { hypot(a, b) } -> std::same_as<T>;
  { copysign(a, b) } -> std::same_as<T>;
  isnan(a);
  isinf(a);
  signbit(a);
};

/// a where condition holds, else b; a mask chooses lane by lane.
template <class T>
T Select(bool condition, const T& a, const T& b) {
  return condition ? a : b;
}

/// a·b + c and c - a·b. A number type that can round them only once overloads them.
template <class C>
C MulAdd(const C& a, const C& b, const C& c) {
  return a * b + c;
}
template <class C>
C NegMulAdd(const C& a, const C& b, const C& c) {
  return c - a * b;
}

/// The complex number of a double one, as the records of the state hold them.
template <class T>
Cplx<T> FromDouble(const std::complex<double>& z) {
  return Cplx<T>(T(z.real()), T(z.imag()));
}

}  // namespace tolvik::engine
