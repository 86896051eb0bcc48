// SPDX-License-Identifier: GPL-2.0-or-later
// The complex number over duals. The functions of the physics are holomorphic, so each derivative costs one
// complex product, for any function.
#pragma once

#include "engine/number/dual.h"

namespace tolvik::engine {

/// A complex number with its derivatives by W real parameters; the values have the bits of std::complex.
template <int W, std::floating_point S = double>
class DualComplex {
 public:
  using Z = std::complex<S>;
  using Real = Dual<W, S>;
  using value_type = Real;

  DualComplex() = default;
  explicit DualComplex(const Z& value) : value_(value) {}
  DualComplex(const Real& x) : value_(x.value), real_(x.tangent) {}  // NOLINT: a real number is a complex one
  DualComplex(const Real& x, const Real& y) : value_(x.value, y.value), real_(x.tangent), imag_(y.tangent) {}

  Real real() const { return {value_.real(), real_}; }
  Real imag() const { return {value_.imag(), imag_}; }
  void real(const Real& x) { *this = DualComplex(x, imag()); }
  void imag(const Real& y) { *this = DualComplex(real(), y); }

  DualComplex& operator+=(const DualComplex& b) { return *this = *this + b; }
  DualComplex& operator-=(const DualComplex& b) { return *this = *this - b; }
  DualComplex& operator*=(const DualComplex& b) { return *this = *this * b; }
  DualComplex& operator/=(const DualComplex& b) { return *this = *this / b; }

  friend DualComplex operator+(const DualComplex& a) { return a; }
  friend DualComplex operator-(const DualComplex& a) { return Of(-a.value_, S(-1), a); }
  friend DualComplex operator+(const DualComplex& a, const DualComplex& b) {
    return Of(a.value_ + b.value_, S(1), a, S(1), b);
  }
  friend DualComplex operator-(const DualComplex& a, const DualComplex& b) {
    return Of(a.value_ - b.value_, S(1), a, S(-1), b);
  }
  friend DualComplex operator*(const DualComplex& a, const DualComplex& b) {
    return Of(a.value_ * b.value_, b.value_, a, a.value_, b);
  }
  friend DualComplex operator/(const DualComplex& a, const DualComplex& b) {
    const Z quotient = a.value_ / b.value_;
    return Of(quotient, S(1) / b.value_, a, -quotient / b.value_, b);
  }

  // A real operand does not change the other part of the value, as in std::complex.
  friend DualComplex operator+(const DualComplex& a, const Real& b) {
    return Of(a.value_ + b.value, S(1), a, S(1), b);
  }
  friend DualComplex operator-(const DualComplex& a, const Real& b) {
    return Of(a.value_ - b.value, S(1), a, S(-1), b);
  }
  friend DualComplex operator*(const DualComplex& a, const Real& b) {
    return Of(a.value_ * b.value, b.value, a, a.value_, b);
  }
  friend DualComplex operator/(const DualComplex& a, const Real& b) {
    const Z quotient = a.value_ / b.value;
    return Of(quotient, S(1) / b.value, a, -quotient / b.value, b);
  }
  friend DualComplex operator+(const Real& a, const DualComplex& b) {
    return Of(a.value + b.value_, S(1), a, S(1), b);
  }
  friend DualComplex operator-(const Real& a, const DualComplex& b) {
    return Of(a.value - b.value_, S(1), a, S(-1), b);
  }
  friend DualComplex operator*(const Real& a, const DualComplex& b) {
    return Of(a.value * b.value_, b.value_, a, a.value, b);
  }
  friend DualComplex operator/(const Real& a, const DualComplex& b) {
    const Z quotient = a.value / b.value_;
    return Of(quotient, S(1) / b.value_, a, -quotient / b.value_, b);
  }

  friend bool operator==(const DualComplex& a, const DualComplex& b) {
    return a.value_ == b.value_ && a.real_ == b.real_ && a.imag_ == b.imag_;
  }
  friend bool operator!=(const DualComplex& a, const DualComplex& b) { return !(a == b); }

  friend Real real(const DualComplex& z) { return z.real(); }
  friend Real imag(const DualComplex& z) { return z.imag(); }
  friend DualComplex conj(const DualComplex& z) { return {z.real(), -z.imag()}; }
  friend Real norm(const DualComplex& z) {
    Real result(std::norm(z.value_));
    const S x = 2 * z.value_.real(), y = 2 * z.value_.imag();
    for (int i = 0; i < W; ++i) result.tangent[i] = x * z.real_[i] + y * z.imag_[i];
    return result;
  }
  friend Real abs(const DualComplex& z) { return hypot(z.real(), z.imag()); }
  friend Real arg(const DualComplex& z) { return atan2(z.imag(), z.real()); }
  friend DualComplex sqrt(const DualComplex& z) {
    const Z root = std::sqrt(z.value_);
    if (root == S(0) && z.IsConstant()) return DualComplex(root);  // not infinity times 0
    return Of(root, S(0.5) / root, z);
  }
  friend DualComplex exp(const DualComplex& z) {
    const Z e = std::exp(z.value_);
    return Of(e, e, z);
  }
  friend DualComplex log(const DualComplex& z) { return Of(std::log(z.value_), S(1) / z.value_, z); }

 private:
  // Adds slope times the derivatives of x.
  void Add(S slope, const DualComplex& x) {
    for (int i = 0; i < W; ++i) {
      real_[i] += slope * x.real_[i];
      imag_[i] += slope * x.imag_[i];
    }
  }
  void Add(const Z& slope, const DualComplex& x) {
    const S a = slope.real(), b = slope.imag();
    for (int i = 0; i < W; ++i) {
      real_[i] += a * x.real_[i] - b * x.imag_[i];
      imag_[i] += a * x.imag_[i] + b * x.real_[i];
    }
  }
  void Add(S slope, const Real& x) {
    for (int i = 0; i < W; ++i) real_[i] += slope * x.tangent[i];
  }
  void Add(const Z& slope, const Real& x) {
    for (int i = 0; i < W; ++i) {
      real_[i] += slope.real() * x.tangent[i];
      imag_[i] += slope.imag() * x.tangent[i];
    }
  }

  template <class Slope, class X>
  static DualComplex Of(const Z& f, const Slope& slope, const X& x) {
    DualComplex result(f);
    result.Add(slope, x);
    return result;
  }
  template <class SlopeX, class X, class SlopeY, class Y>
  static DualComplex Of(const Z& f, const SlopeX& slope_x, const X& x, const SlopeY& slope_y, const Y& y) {
    DualComplex result(f);
    result.Add(slope_x, x);
    result.Add(slope_y, y);
    return result;
  }

  bool IsConstant() const { return real_ == typename Real::Tangent{} && imag_ == typename Real::Tangent{}; }

  Z value_{};
  typename Real::Tangent real_{}, imag_{};  // of the derivatives
};

template <int W, class S>
struct ComplexOf<Dual<W, S>> {
  using type = DualComplex<W, S>;
};

}  // namespace tolvik::engine
