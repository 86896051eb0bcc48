// SPDX-License-Identifier: GPL-2.0-or-later
// A real number with its derivatives in W directions at once: forward differentiation of the templates.
//
// A function of duals returns its value, the same bits as without derivatives, and the derivatives by the
// chain rule. S is a built-in number type. W. K. Clifford, Proc. London Math. Soc. 4, 381 (1873); R. E.
// Wengert, Commun. ACM 7, 463 (1964).
#pragma once

#include <array>

#include "engine/number/number.h"

namespace tolvik::engine {

/// value + tangent[i] ε_i with ε_i ε_j = 0.
///
/// Order compares values only. Equality also compares the derivatives: a test for zero is true only for a
/// constant zero, so that the replacement of the zero loses no derivative.
template <int W, std::floating_point S = double>
struct Dual {
  using Tangent = std::array<S, W>;

  S value = 0;
  Tangent tangent{};

  Dual() = default;
  explicit Dual(S x) : value(x) {}
  Dual(S x, const Tangent& t) : value(x), tangent(t) {}
  explicit operator double() const { return static_cast<double>(value); }

  /// f(x) with the derivative slope = f'(x).
  static Dual Of(S f, S slope, const Dual& x) {
    Dual result(f);
    for (int i = 0; i < W; ++i) result.tangent[i] = slope * x.tangent[i];
    return result;
  }
  /// f(x, y) with both its slopes.
  static Dual Of(S f, S slope_x, const Dual& x, S slope_y, const Dual& y) {
    Dual result(f);
    for (int i = 0; i < W; ++i) result.tangent[i] = slope_x * x.tangent[i] + slope_y * y.tangent[i];
    return result;
  }

  friend Dual operator+(const Dual& a, const Dual& b) { return Of(a.value + b.value, 1, a, 1, b); }
  friend Dual operator-(const Dual& a, const Dual& b) { return Of(a.value - b.value, 1, a, -1, b); }
  friend Dual operator*(const Dual& a, const Dual& b) {
    return Of(a.value * b.value, b.value, a, a.value, b);
  }
  friend Dual operator/(const Dual& a, const Dual& b) {
    const S quotient = a.value / b.value;
    return Of(quotient, 1 / b.value, a, -quotient / b.value, b);
  }
  friend Dual operator-(const Dual& a) { return Of(-a.value, -1, a); }
  Dual& operator+=(const Dual& b) { return *this = *this + b; }
  Dual& operator-=(const Dual& b) { return *this = *this - b; }
  Dual& operator*=(const Dual& b) { return *this = *this * b; }
  Dual& operator/=(const Dual& b) { return *this = *this / b; }

  friend bool operator==(const Dual& a, const Dual& b) {
    return a.value == b.value && a.tangent == b.tangent;
  }
  friend bool operator!=(const Dual& a, const Dual& b) { return !(a == b); }
  friend bool operator<(const Dual& a, const Dual& b) { return a.value < b.value; }
  friend bool operator<=(const Dual& a, const Dual& b) { return a.value <= b.value; }
  friend bool operator>(const Dual& a, const Dual& b) { return a.value > b.value; }
  friend bool operator>=(const Dual& a, const Dual& b) { return a.value >= b.value; }

  friend Dual sqrt(const Dual& x) {
    const S root = std::sqrt(x.value);
    return Of(root, S(0.5) / root, x);
  }
  friend Dual sin(const Dual& x) { return Of(std::sin(x.value), std::cos(x.value), x); }
  friend Dual cos(const Dual& x) { return Of(std::cos(x.value), -std::sin(x.value), x); }
  friend Dual exp(const Dual& x) {
    const S e = std::exp(x.value);
    return Of(e, e, x);
  }
  friend Dual log(const Dual& x) { return Of(std::log(x.value), 1 / x.value, x); }
  /// At 0 the derivative of the right-hand side, of the left-hand side at -0.
  friend Dual abs(const Dual& x) { return std::signbit(x.value) ? -x : x; }
  friend Dual asin(const Dual& x) {
    return Of(std::asin(x.value), 1 / std::sqrt((1 - x.value) * (1 + x.value)), x);
  }
  /// Of a base above 0, or with an exponent that has no derivative.
  friend Dual pow(const Dual& x, const Dual& y) {
    const S power = std::pow(x.value, y.value);
    const S slope = y.value * std::pow(x.value, y.value - 1);
    const bool constant = y.tangent == Tangent{};
    return Of(power, slope, x, constant ? S(0) : power * std::log(x.value), y);
  }
  friend Dual atan2(const Dual& y, const Dual& x) {
    const S r2 = x.value * x.value + y.value * y.value;
    return Of(std::atan2(y.value, x.value), x.value / r2, y, -y.value / r2, x);
  }
  friend Dual hypot(const Dual& x, const Dual& y) {
    const S r = std::hypot(x.value, y.value);
    return Of(r, x.value / r, x, y.value / r, y);
  }
  friend Dual copysign(const Dual& x, const Dual& sign) {
    return std::signbit(x.value) == std::signbit(sign.value) ? x : -x;
  }

  friend bool isnan(const Dual& x) { return std::isnan(x.value); }
  friend bool isinf(const Dual& x) { return std::isinf(x.value); }
  friend bool isfinite(const Dual& x) { return std::isfinite(x.value); }
  friend bool signbit(const Dual& x) { return std::signbit(x.value); }
};

template <int W, class S>
struct NumberTraits<Dual<W, S>> : NumberTraits<S> {};

}  // namespace tolvik::engine
