// SPDX-License-Identifier: GPL-2.0-or-later
// The complex number over a number type of our own.
//
// It behaves as std::complex over a built-in type: the same branch cuts (square root with a real part that is
// not negative and the sign of the imaginary part; logarithm with the angle of atan2), the same use of signed
// zeros, and the rules of C99, Annex G, by which an infinity meets a NaN.
#pragma once

#include "engine/number/number.h"

namespace tolvik::engine {

template <class T>
class Complex {
 public:
  using value_type = T;

  Complex() = default;
  Complex(const T& real) : real_(real) {}  // NOLINT: a real number is a complex one
  Complex(const T& real, const T& imag) : real_(real), imag_(imag) {}

  const T& real() const { return real_; }
  const T& imag() const { return imag_; }
  void real(const T& x) { real_ = x; }
  void imag(const T& x) { imag_ = x; }

  Complex& operator+=(const Complex& b) {
    real_ += b.real_;
    imag_ += b.imag_;
    return *this;
  }
  Complex& operator-=(const Complex& b) {
    real_ -= b.real_;
    imag_ -= b.imag_;
    return *this;
  }
  Complex& operator*=(const Complex& b) { return *this = *this * b; }
  Complex& operator/=(const Complex& b) { return *this = *this / b; }
  Complex& operator*=(const T& b) {
    real_ *= b;
    imag_ *= b;
    return *this;
  }
  Complex& operator/=(const T& b) {
    real_ /= b;
    imag_ /= b;
    return *this;
  }

  friend Complex operator+(Complex a, const Complex& b) { return a += b; }
  friend Complex operator-(Complex a, const Complex& b) { return a -= b; }
  friend Complex operator*(const Complex& a, const Complex& b) { return Multiply(a, b); }
  friend Complex operator/(const Complex& a, const Complex& b) { return Divide(a, b); }
  friend Complex operator+(const Complex& a) { return a; }
  friend Complex operator-(const Complex& a) { return {-a.real_, -a.imag_}; }

  // A real operand does not change the other part, as in std::complex.
  friend Complex operator+(const Complex& a, const T& b) { return {a.real_ + b, a.imag_}; }
  friend Complex operator-(const Complex& a, const T& b) { return {a.real_ - b, a.imag_}; }
  friend Complex operator*(Complex a, const T& b) { return a *= b; }
  friend Complex operator/(Complex a, const T& b) { return a /= b; }
  friend Complex operator+(const T& a, const Complex& b) { return {a + b.real_, b.imag_}; }
  friend Complex operator-(const T& a, const Complex& b) { return {a - b.real_, -b.imag_}; }
  friend Complex operator*(const T& a, Complex b) { return b *= a; }
  friend Complex operator/(const T& a, const Complex& b) { return Divide(Complex(a), b); }

  friend bool operator==(const Complex& a, const Complex& b) {
    return a.real_ == b.real_ && a.imag_ == b.imag_;
  }
  friend bool operator!=(const Complex& a, const Complex& b) { return !(a == b); }

  friend T real(const Complex& z) { return z.real_; }
  friend T imag(const Complex& z) { return z.imag_; }
  friend Complex conj(const Complex& z) { return {z.real_, -z.imag_}; }
  friend T norm(const Complex& z) { return z.real_ * z.real_ + z.imag_ * z.imag_; }
  friend T abs(const Complex& z) { return hypot(z.real_, z.imag_); }
  friend T arg(const Complex& z) { return atan2(z.imag_, z.real_); }
  friend Complex sqrt(const Complex& z) { return SquareRoot(z); }
  friend Complex exp(const Complex& z) { return Exponential(z); }
  friend Complex log(const Complex& z) { return {log(abs(z)), arg(z)}; }

 private:
  static Complex Multiply(const Complex& a, const Complex& b);
  static Complex Divide(const Complex& a, const Complex& b);
  static Complex SquareRoot(const Complex& z);
  static Complex Exponential(const Complex& z);

  T real_{};
  T imag_{};
};

namespace complex_detail {

// An infinite part becomes ±1, any other a zero of its sign: the direction of an infinite number.
template <class T>
T Direction(const T& x) {
  return copysign(isinf(x) ? T(1.0) : T(0.0), x);
}
template <class T>
T ZeroForNan(const T& x) {
  return isnan(x) ? copysign(T(0.0), x) : x;
}
template <class T>
bool IsInfinite(const Complex<T>& z) {
  return isinf(z.real()) || isinf(z.imag());
}
template <class T>
bool IsFinite(const Complex<T>& z) {
  return isfinite(z.real()) && isfinite(z.imag());
}
template <class T>
Complex<T> Directions(const Complex<T>& z) {
  return {Direction(z.real()), Direction(z.imag())};
}
template <class T>
Complex<T> ZerosForNans(const Complex<T>& z) {
  return {ZeroForNan(z.real()), ZeroForNan(z.imag())};
}

// (NaN, NaN) from operands of which one is infinite is corrected to an infinity (C99, G.5.1).
template <class T>
Complex<T> RecoverProduct(Complex<T> a, Complex<T> b, const Complex<T>& product) {
  const bool overflowed = isinf(a.real() * b.real()) || isinf(a.imag() * b.imag()) ||
                          isinf(a.real() * b.imag()) || isinf(a.imag() * b.real());
  const bool a_infinite = IsInfinite(a);
  if (a_infinite) {
    a = Directions(a);
    b = ZerosForNans(b);
  }
  const bool b_infinite = IsInfinite(b);
  if (b_infinite) {
    b = Directions(b);
    a = ZerosForNans(a);
  }
  if (!a_infinite && !b_infinite) {
    if (!overflowed) return product;
    a = ZerosForNans(a);
    b = ZerosForNans(b);
  }
  const T infinity = T(1.0) / T(0.0);
  return {infinity * (a.real() * b.real() - a.imag() * b.imag()),
          infinity * (a.real() * b.imag() + a.imag() * b.real())};
}

template <class T>
Complex<T> RecoverQuotient(Complex<T> a, Complex<T> b, const Complex<T>& quotient) {
  const T infinity = T(1.0) / T(0.0);
  if (b == Complex<T>() && (!isnan(a.real()) || !isnan(a.imag()))) {
    const T signed_infinity = copysign(infinity, b.real());
    return {signed_infinity * a.real(), signed_infinity * a.imag()};
  }
  if (IsInfinite(a) && IsFinite(b)) {
    a = Directions(a);
    return {infinity * (a.real() * b.real() + a.imag() * b.imag()),
            infinity * (a.imag() * b.real() - a.real() * b.imag())};
  }
  if (IsInfinite(b) && IsFinite(a)) {
    b = Directions(b);
    return {T(0.0) * (a.real() * b.real() + a.imag() * b.imag()),
            T(0.0) * (a.imag() * b.real() - a.real() * b.imag())};
  }
  return quotient;
}

}  // namespace complex_detail

template <class T>
Complex<T> Complex<T>::Multiply(const Complex& a, const Complex& b) {
  const Complex product(a.real_ * b.real_ - a.imag_ * b.imag_, a.real_ * b.imag_ + a.imag_ * b.real_);
  if (isnan(product.real_) && isnan(product.imag_)) return complex_detail::RecoverProduct(a, b, product);
  return product;
}

// By the method of Smith, Commun. ACM 5, 435 (1962), as the built-in types divide: then zero parts of
// quotients have the same signs.
template <class T>
Complex<T> Complex<T>::Divide(const Complex& a, const Complex& b) {
  Complex quotient;
  if (abs(b.real_) < abs(b.imag_)) {
    const T ratio = b.real_ / b.imag_;
    const T denominator = b.real_ * ratio + b.imag_;
    quotient = {(a.real_ * ratio + a.imag_) / denominator, (a.imag_ * ratio - a.real_) / denominator};
  } else {
    const T ratio = b.imag_ / b.real_;
    const T denominator = b.imag_ * ratio + b.real_;
    quotient = {(a.imag_ * ratio + a.real_) / denominator, (a.imag_ - a.real_ * ratio) / denominator};
  }
  if (isnan(quotient.real_) && isnan(quotient.imag_)) return complex_detail::RecoverQuotient(a, b, quotient);
  return quotient;
}

// The larger part by a root, the smaller by division, so that neither cancels. The sign of the imaginary part
// comes from its sign bit: below the cut (imaginary part -0) the root is the conjugate.
template <class T>
Complex<T> Complex<T>::SquareRoot(const Complex& z) {
  const T& x = z.real_;
  const T& y = z.imag_;
  const T zero(0.0), half(0.5);
  if (isinf(y)) return {abs(y), y};
  if (isnan(x)) return {x, x};
  if (isinf(x)) {
    const T other = isnan(y) ? y : zero;
    return signbit(x) ? Complex(other, copysign(abs(x), y)) : Complex(x, copysign(other, y));
  }
  if (x == zero && y == zero) return {zero, y};
  if (y == zero) {
    return signbit(x) ? Complex(zero, copysign(sqrt(-x), y)) : Complex(sqrt(x), y);
  }
  const T larger = sqrt((abs(x) + abs(z)) * half);
  const T smaller = abs(y) * half / larger;
  return signbit(x) ? Complex(smaller, copysign(larger, y)) : Complex(larger, copysign(smaller, y));
}

template <class T>
Complex<T> Complex<T>::Exponential(const Complex& z) {
  const T& x = z.real_;
  const T& y = z.imag_;
  const T zero(0.0);
  if (y == zero) return {exp(x), y};
  if (isinf(x) && !isfinite(y)) {  // no direction: 0 times anything, or an infinity of unknown sign
    if (signbit(x)) return {zero, copysign(zero, y)};
    return {x, y - y};
  }
  const T modulus = exp(x);
  T sine, cosine;
  SinCos(y, sine, cosine);
  return {modulus * cosine, modulus * sine};
}

}  // namespace tolvik::engine
