// SPDX-License-Identifier: GPL-2.0-or-later
// Several angles as one number.
//
// V names a vector register: V::Batch is the register of xsimd; V::fused is true if V::MulAdd and its
// relatives exist, which round a·b + c once; V::estimates is true if V::EstimateInverseRoot and
// V::EstimateInverse do. V::Divide and V::SquareRoot are optional: for sets where those of xsimd do not round
// as the scalar ones do. Each source of an instruction set defines its V in an unnamed namespace, so that
// everything instantiated here stays inside that object.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>
#include <xsimd/xsimd.hpp>

#define TOLVIK_INLINE [[gnu::always_inline]] inline
// For a lambda, after its parameters.
#define TOLVIK_INLINE_LAMBDA __attribute__((always_inline))

namespace tolvik::engine::lanes {

/// Outcome of a comparison, angle by angle.
template <class V>
class Mask {
 public:
  using Batch = typename V::Batch;
  using Bools = typename Batch::batch_bool_type;

  TOLVIK_INLINE Mask(Bools bits) : bits_(bits) {}  // NOLINT: the register itself
  TOLVIK_INLINE Bools Bits() const { return bits_; }

  TOLVIK_INLINE friend Mask operator&&(Mask a, Mask b) { return a.bits_ & b.bits_; }
  TOLVIK_INLINE friend Mask operator||(Mask a, Mask b) { return a.bits_ | b.bits_; }
  TOLVIK_INLINE friend Mask operator!(Mask a) { return ~a.bits_; }
  TOLVIK_INLINE friend bool AllOf(Mask a) { return xsimd::all(a.bits_); }
  TOLVIK_INLINE friend bool AnyOf(Mask a) { return xsimd::any(a.bits_); }

 private:
  Bools bits_;
};

/// A number type with one number for each of `size` angles. Every operation acts angle by angle and
/// rounds as the scalar one does.
template <class V>
class Lanes {
 public:
  using Batch = typename V::Batch;
  using Scalar = typename Batch::value_type;
  using Bits = std::conditional_t<sizeof(Scalar) == 8, std::int64_t, std::int32_t>;
  using Integers = xsimd::batch<Bits, typename Batch::arch_type>;
  static constexpr int size = static_cast<int>(Batch::size);

  Lanes() = default;
  TOLVIK_INLINE Lanes(Scalar x) : x_(x) {}  // NOLINT: one number for all angles
  TOLVIK_INLINE Lanes(Batch x) : x_(x) {}   // NOLINT: the register itself
  TOLVIK_INLINE Batch Register() const { return x_; }

  /// p: `size` numbers, aligned to the register.
  TOLVIK_INLINE static Lanes Load(const Scalar* p) { return Batch::load_aligned(p); }
  TOLVIK_INLINE void Store(Scalar* p) const { x_.store_aligned(p); }
  /// The same at any address.
  TOLVIK_INLINE static Lanes LoadAnywhere(const Scalar* p) { return Batch::load_unaligned(p); }
  TOLVIK_INLINE void StoreAnywhere(Scalar* p) const { x_.store_unaligned(p); }
  TOLVIK_INLINE static Lanes FromBits(Integers bits) { return xsimd::bitwise_cast<Batch>(bits); }
  TOLVIK_INLINE Integers ToBits() const { return xsimd::bitwise_cast<Integers>(x_); }

  TOLVIK_INLINE friend Lanes operator+(Lanes a, Lanes b) { return a.x_ + b.x_; }
  TOLVIK_INLINE friend Lanes operator-(Lanes a, Lanes b) { return a.x_ - b.x_; }
  TOLVIK_INLINE friend Lanes operator*(Lanes a, Lanes b) { return a.x_ * b.x_; }
  TOLVIK_INLINE friend Lanes operator/(Lanes a, Lanes b) {
    if constexpr (requires { V::Divide(a.x_, b.x_); }) return V::Divide(a.x_, b.x_);
    return a.x_ / b.x_;
  }
  TOLVIK_INLINE friend Lanes operator-(Lanes a) { return a.x_ ^ Batch(Scalar(-0.0)); }
  TOLVIK_INLINE Lanes& operator+=(Lanes b) { return *this = *this + b; }
  TOLVIK_INLINE Lanes& operator-=(Lanes b) { return *this = *this - b; }
  TOLVIK_INLINE Lanes& operator*=(Lanes b) { return *this = *this * b; }
  TOLVIK_INLINE Lanes& operator/=(Lanes b) { return *this = *this / b; }

  TOLVIK_INLINE friend Mask<V> operator<(Lanes a, Lanes b) { return a.x_ < b.x_; }
  TOLVIK_INLINE friend Mask<V> operator<=(Lanes a, Lanes b) { return a.x_ <= b.x_; }
  TOLVIK_INLINE friend Mask<V> operator>(Lanes a, Lanes b) { return a.x_ > b.x_; }
  TOLVIK_INLINE friend Mask<V> operator>=(Lanes a, Lanes b) { return a.x_ >= b.x_; }
  TOLVIK_INLINE friend Mask<V> operator==(Lanes a, Lanes b) { return a.x_ == b.x_; }
  TOLVIK_INLINE friend Mask<V> operator!=(Lanes a, Lanes b) { return a.x_ != b.x_; }

  TOLVIK_INLINE friend Lanes sqrt(Lanes a) {
    if constexpr (requires { V::SquareRoot(a.x_); }) return V::SquareRoot(a.x_);
    return xsimd::sqrt(a.x_);
  }
  TOLVIK_INLINE friend Lanes abs(Lanes a) { return a.x_ & MagnitudeBits(); }
  TOLVIK_INLINE friend Lanes copysign(Lanes a, Lanes sign) {
    return (a.x_ & MagnitudeBits()) | (sign.x_ & Batch(Scalar(-0.0)));
  }
  /// The smaller and the larger of two numbers; where one is NaN the result is either of them.
  TOLVIK_INLINE friend Lanes Min(Lanes a, Lanes b) { return xsimd::min(a.x_, b.x_); }
  TOLVIK_INLINE friend Lanes Max(Lanes a, Lanes b) { return xsimd::max(a.x_, b.x_); }
  /// a where the mask holds, b elsewhere.
  TOLVIK_INLINE friend Lanes Select(Mask<V> mask, Lanes a, Lanes b) {
    return xsimd::select(mask.Bits(), a.x_, b.x_);
  }
  /// a where x has the sign bit, b elsewhere.
  TOLVIK_INLINE friend Lanes SelectNegative(Lanes x, Lanes a, Lanes b) {
    if constexpr (kMaskIsRegister) {
      return xsimd::select(Bools(x.x_), a.x_, b.x_);
    } else {
      return xsimd::select(Bools((x.ToBits() < Integers(0)).data), a.x_, b.x_);
    }
  }
  /// a where the mask holds, 0 elsewhere.
  TOLVIK_INLINE friend Lanes KeepWhere(Mask<V> mask, Lanes a) {
    if constexpr (kMaskIsRegister) {
      return a.x_ & Batch(typename Batch::register_type(mask.Bits()));
    } else {
      return xsimd::select(mask.Bits(), a.x_, Batch(Scalar(0)));
    }
  }
  /// a·b + c, -(a·b) + c and a·b - c, rounded once where the processor can.
  TOLVIK_INLINE friend Lanes MulAdd(Lanes a, Lanes b, Lanes c) {
    if constexpr (V::fused) return V::MulAdd(a.x_, b.x_, c.x_);
    return a * b + c;
  }
  TOLVIK_INLINE friend Lanes NegMulAdd(Lanes a, Lanes b, Lanes c) {
    if constexpr (V::fused) return V::NegMulAdd(a.x_, b.x_, c.x_);
    return c - a * b;
  }
  TOLVIK_INLINE friend Lanes MulSub(Lanes a, Lanes b, Lanes c) {
    if constexpr (V::fused) return V::MulSub(a.x_, b.x_, c.x_);
    return a * b - c;
  }

 private:
  using Bools = typename Batch::batch_bool_type;
  // Before AVX-512 a mask is a register of the same width, of which a choice reads the sign bits only.
  static constexpr bool kMaskIsRegister =
      std::is_same_v<typename Bools::register_type, typename Batch::register_type>;

  TOLVIK_INLINE static Batch MagnitudeBits() {
    return xsimd::bitwise_cast<Batch>(Integers(std::numeric_limits<Bits>::max()));
  }

  Batch x_;
};

}  // namespace tolvik::engine::lanes
