// SPDX-License-Identifier: GPL-2.0-or-later
// The multi-precision number of the engine: an MPFR number of 200 bits, rounded to nearest in every
// operation.
//
// The limbs are inside the object, so a temporary needs no heap block and no clearing. MPFR gets their
// address by its interface for memory that the caller manages.
#pragma once

#include <mpfr.h>

#include <cstring>

#include "engine/number/cnumber_functions.h"
#include "engine/number/number.h"

namespace tolvik::engine {

/// A real number of 200 bits with the range of MPFR. NaN and infinities behave as in IEEE 754, signed zeros
/// included. Conversion to double rounds to nearest; numbers out of its range become 0 or infinity.
class CNumber {
 public:
  static constexpr mpfr_prec_t kBits = kFunctionBits;

  CNumber() noexcept { mpfr_custom_init_set(value_, MPFR_ZERO_KIND, 0, kBits, limbs_); }
  explicit CNumber(double x) {
    mpfr_custom_init_set(value_, MPFR_NAN_KIND, 0, kBits, limbs_);
    mpfr_set_d(value_, x, MPFR_RNDN);
  }
  CNumber(const CNumber& other) noexcept { CopyFrom(other); }
  CNumber& operator=(const CNumber& other) noexcept {
    if (this != &other) CopyFrom(other);
    return *this;
  }
  ~CNumber() = default;

  explicit operator double() const { return mpfr_get_d(value_, MPFR_RNDN); }

  friend CNumber operator+(const CNumber& a, const CNumber& b) { return Apply(mpfr_add, a, b); }
  friend CNumber operator-(const CNumber& a, const CNumber& b) { return Apply(mpfr_sub, a, b); }
  friend CNumber operator*(const CNumber& a, const CNumber& b) {
    CNumber result((Uninitialised()));
    ProductOf(result.value_, a.value_, b.value_);
    return result;
  }
  friend CNumber operator/(const CNumber& a, const CNumber& b) { return Apply(mpfr_div, a, b); }
  friend CNumber operator-(const CNumber& a) { return Apply(mpfr_neg, a); }

  friend CNumber operator+(const CNumber& a, double b) { return ApplyDouble(mpfr_add_d, a, b); }
  friend CNumber operator-(const CNumber& a, double b) { return ApplyDouble(mpfr_sub_d, a, b); }
  friend CNumber operator*(const CNumber& a, double b) { return ApplyDouble(mpfr_mul_d, a, b); }
  friend CNumber operator/(const CNumber& a, double b) { return ApplyDouble(mpfr_div_d, a, b); }
  friend CNumber operator+(double a, const CNumber& b) { return b + a; }
  friend CNumber operator*(double a, const CNumber& b) { return b * a; }
  friend CNumber operator-(double a, const CNumber& b) {
    CNumber result((Uninitialised()));
    mpfr_d_sub(result.value_, a, b.value_, MPFR_RNDN);
    return result;
  }
  friend CNumber operator/(double a, const CNumber& b) {
    CNumber result((Uninitialised()));
    mpfr_d_div(result.value_, a, b.value_, MPFR_RNDN);
    return result;
  }

  CNumber& operator+=(const CNumber& b) { return Change(mpfr_add, b); }
  CNumber& operator-=(const CNumber& b) { return Change(mpfr_sub, b); }
  CNumber& operator*=(const CNumber& b) {
    ProductOf(value_, value_, b.value_);
    return *this;
  }
  CNumber& operator/=(const CNumber& b) { return Change(mpfr_div, b); }

  friend bool operator==(const CNumber& a, const CNumber& b) { return mpfr_equal_p(a.value_, b.value_) != 0; }
  friend bool operator!=(const CNumber& a, const CNumber& b) { return !(a == b); }
  friend bool operator<(const CNumber& a, const CNumber& b) { return mpfr_less_p(a.value_, b.value_) != 0; }
  friend bool operator>(const CNumber& a, const CNumber& b) { return b < a; }
  friend bool operator<=(const CNumber& a, const CNumber& b) {
    return mpfr_lessequal_p(a.value_, b.value_) != 0;
  }
  friend bool operator>=(const CNumber& a, const CNumber& b) { return b <= a; }

  // mpfr_cmp_d returns 0 for a NaN, which must not mean equality.
  friend bool operator==(const CNumber& a, double b) { return !Unordered(a, b) && Compare(a, b) == 0; }
  friend bool operator!=(const CNumber& a, double b) { return !(a == b); }
  friend bool operator<(const CNumber& a, double b) { return !Unordered(a, b) && Compare(a, b) < 0; }
  friend bool operator>(const CNumber& a, double b) { return !Unordered(a, b) && Compare(a, b) > 0; }
  friend bool operator<=(const CNumber& a, double b) { return !Unordered(a, b) && Compare(a, b) <= 0; }
  friend bool operator>=(const CNumber& a, double b) { return !Unordered(a, b) && Compare(a, b) >= 0; }

  friend CNumber sqrt(const CNumber& x) { return Apply(mpfr_sqrt, x); }
  friend CNumber sin(const CNumber& x) { return Apply(mpfr_sin, x); }
  friend CNumber cos(const CNumber& x) { return Apply(mpfr_cos, x); }
  friend CNumber exp(const CNumber& x) {
    CNumber result((Uninitialised()));
    ExpOf(result.value_, x.value_);
    return result;
  }
  friend CNumber log(const CNumber& x) { return Apply(mpfr_log, x); }
  friend CNumber asin(const CNumber& x) { return Apply(mpfr_asin, x); }
  friend CNumber abs(const CNumber& x) { return Apply(mpfr_abs, x); }
  friend CNumber pow(const CNumber& x, const CNumber& y) { return Apply(mpfr_pow, x, y); }
  friend CNumber atan2(const CNumber& y, const CNumber& x) { return Apply(mpfr_atan2, y, x); }
  friend CNumber hypot(const CNumber& x, const CNumber& y) { return Apply(mpfr_hypot, x, y); }
  friend CNumber copysign(const CNumber& x, const CNumber& sign) { return Apply(mpfr_copysign, x, sign); }

  /// Sine and cosine of one angle in one call.
  friend void SinCos(const CNumber& x, CNumber& sine, CNumber& cosine) {
    SinCosOf(sine.value_, cosine.value_, x.value_);
  }

  friend bool isnan(const CNumber& x) { return mpfr_nan_p(x.value_) != 0; }
  friend bool isinf(const CNumber& x) { return mpfr_inf_p(x.value_) != 0; }
  friend bool isfinite(const CNumber& x) { return mpfr_number_p(x.value_) != 0; }
  friend bool signbit(const CNumber& x) { return mpfr_signbit(x.value_) != 0; }

 private:
  struct Uninitialised {};
  // Only for a number that an operation of MPFR writes next.
  explicit CNumber(Uninitialised) noexcept { mpfr_custom_init_set(value_, MPFR_NAN_KIND, 0, kBits, limbs_); }

  using Unary = int(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  using Binary = int(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
  using WithDouble = int(mpfr_ptr, mpfr_srcptr, double, mpfr_rnd_t);

  static CNumber Apply(Unary* operation, const CNumber& x) {
    CNumber result((Uninitialised()));
    operation(result.value_, x.value_, MPFR_RNDN);
    return result;
  }
  static CNumber Apply(Binary* operation, const CNumber& a, const CNumber& b) {
    CNumber result((Uninitialised()));
    operation(result.value_, a.value_, b.value_, MPFR_RNDN);
    return result;
  }
  static CNumber ApplyDouble(WithDouble* operation, const CNumber& a, double b) {
    CNumber result((Uninitialised()));
    operation(result.value_, a.value_, b, MPFR_RNDN);
    return result;
  }
  CNumber& Change(Binary* operation, const CNumber& b) {
    operation(value_, value_, b.value_, MPFR_RNDN);
    return *this;
  }
  static bool Unordered(const CNumber& a, double b) { return isnan(a) || std::isnan(b); }
  static int Compare(const CNumber& a, double b) { return mpfr_cmp_d(a.value_, b); }

  void CopyFrom(const CNumber& other) noexcept {
    value_[0] = other.value_[0];
    std::memcpy(limbs_, other.limbs_, sizeof limbs_);
    mpfr_custom_move(value_, limbs_);
  }

  static constexpr int kLimbs = (kBits + GMP_NUMB_BITS - 1) / GMP_NUMB_BITS;
  mpfr_t value_;
  mp_limb_t limbs_[kLimbs] = {};
};

}  // namespace tolvik::engine
