// SPDX-License-Identifier: GPL-2.0-or-later
// The straightforward MPFR number: 200 bits, the limbs in a heap block, mpfr_init2 and mpfr_clear around
// every temporary, the functions of MPFR. The reference of engine/number/cnumber.h, whose results it gives
// bit for bit.
#pragma once

#include <mpfr.h>

#include "engine/number/number.h"

namespace tolvik::bench {

class HeapNumber {
 public:
  HeapNumber() : HeapNumber(0.0) {}
  explicit HeapNumber(double x) {
    mpfr_init2(value_, kBits);
    mpfr_set_d(value_, x, MPFR_RNDN);
  }
  HeapNumber(const HeapNumber& other) noexcept {  // MPFR ends the process when memory is short
    mpfr_init2(value_, kBits);
    mpfr_set(value_, other.value_, MPFR_RNDN);
  }
  HeapNumber& operator=(const HeapNumber& other) {
    mpfr_set(value_, other.value_, MPFR_RNDN);
    return *this;
  }
  ~HeapNumber() { mpfr_clear(value_); }

  explicit operator double() const { return mpfr_get_d(value_, MPFR_RNDN); }

  using Number = HeapNumber;  // short lines below
  friend Number operator+(const Number& a, const Number& b) { return Number(mpfr_add, a, b); }
  friend Number operator-(const Number& a, const Number& b) { return Number(mpfr_sub, a, b); }
  friend Number operator*(const Number& a, const Number& b) { return Number(mpfr_mul, a, b); }
  friend Number operator/(const Number& a, const Number& b) { return Number(mpfr_div, a, b); }
  friend Number operator-(const Number& a) { return Number(mpfr_neg, a); }
  Number& operator+=(const Number& b) { return Change(mpfr_add, b); }
  Number& operator-=(const Number& b) { return Change(mpfr_sub, b); }
  Number& operator*=(const Number& b) { return Change(mpfr_mul, b); }
  Number& operator/=(const Number& b) { return Change(mpfr_div, b); }

  friend bool operator==(const Number& a, const Number& b) { return mpfr_equal_p(a.value_, b.value_) != 0; }
  friend bool operator!=(const Number& a, const Number& b) { return !(a == b); }
  friend bool operator<(const Number& a, const Number& b) { return mpfr_less_p(a.value_, b.value_) != 0; }
  friend bool operator>(const Number& a, const Number& b) { return b < a; }
  friend bool operator<=(const Number& a, const Number& b) {
    return mpfr_lessequal_p(a.value_, b.value_) != 0;
  }
  friend bool operator>=(const Number& a, const Number& b) { return b <= a; }

  friend Number sqrt(const Number& x) { return Number(mpfr_sqrt, x); }
  friend Number sin(const Number& x) { return Number(mpfr_sin, x); }
  friend Number cos(const Number& x) { return Number(mpfr_cos, x); }
  friend Number exp(const Number& x) { return Number(mpfr_exp, x); }
  friend Number log(const Number& x) { return Number(mpfr_log, x); }
  friend Number asin(const Number& x) { return Number(mpfr_asin, x); }
  friend Number abs(const Number& x) { return Number(mpfr_abs, x); }
  friend Number pow(const Number& x, const Number& y) { return Number(mpfr_pow, x, y); }
  friend Number atan2(const Number& y, const Number& x) { return Number(mpfr_atan2, y, x); }
  friend Number hypot(const Number& x, const Number& y) { return Number(mpfr_hypot, x, y); }
  friend Number copysign(const Number& x, const Number& sign) { return Number(mpfr_copysign, x, sign); }
  friend void SinCos(const Number& x, Number& sine, Number& cosine) {
    mpfr_sin_cos(sine.value_, cosine.value_, x.value_, MPFR_RNDN);
  }

  friend bool isnan(const Number& x) { return mpfr_nan_p(x.value_) != 0; }
  friend bool isinf(const Number& x) { return mpfr_inf_p(x.value_) != 0; }
  friend bool isfinite(const Number& x) { return mpfr_number_p(x.value_) != 0; }
  friend bool signbit(const Number& x) { return mpfr_signbit(x.value_) != 0; }

 private:
  using Unary = int(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  using Binary = int(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

  // The result of one operation.
  HeapNumber(Unary* operation, const HeapNumber& x) {
    mpfr_init2(value_, kBits);
    operation(value_, x.value_, MPFR_RNDN);
  }
  HeapNumber(Binary* operation, const HeapNumber& a, const HeapNumber& b) {
    mpfr_init2(value_, kBits);
    operation(value_, a.value_, b.value_, MPFR_RNDN);
  }
  HeapNumber& Change(Binary* operation, const HeapNumber& b) {
    operation(value_, value_, b.value_, MPFR_RNDN);
    return *this;
  }

  static constexpr mpfr_prec_t kBits = 200;
  mpfr_t value_;
};

}  // namespace tolvik::bench

template <>
struct tolvik::engine::NumberTraits<tolvik::bench::HeapNumber> {
  static constexpr bool lifts_zero_kz = NumberTraits<CNumber>::lifts_zero_kz;
  static constexpr bool angle_by_asin = NumberTraits<CNumber>::angle_by_asin;
};
