// SPDX-License-Identifier: GPL-2.0-or-later
// Two registers as one number: the templates of the physics, calculated with twins, are two interleaved
// calculations. Where one alone would wait for the result of each step, as in the closed form of a quartic,
// the other fills the gaps.
//
// Measured on stacks of general tensors, AVX2 and AVX-512: without twins such a stack takes 1.05 to 1.11
// times as long with 2 or 3 layers and 1.12 to 1.23 times with 10 or 60. ForTwoAtOnce (lanes/block.h) in
// their place saves little of that, 1.04 to 1.17 times: the closed form has branches, over which the compiler
// interleaves nothing.
#pragma once

#include "engine/simd/complex_functions.h"
#include "engine/simd/traits.h"

namespace tolvik::engine::lanes {

/// The register of twins, whose halves are those of V.
template <class V>
struct Twins {
  using Half = Lanes<V>;
  using Whole = Lanes<Twins>;
  static constexpr bool fused = V::fused;
  static constexpr bool estimates = V::estimates;

  TOLVIK_INLINE static Whole EstimateInverseRoot(const Whole& x) {
    return {Half(V::EstimateInverseRoot(x.First().Register())),
            Half(V::EstimateInverseRoot(x.Second().Register()))};
  }
  TOLVIK_INLINE static Whole EstimateInverse(const Whole& x) {
    return {Half(V::EstimateInverse(x.First().Register())), Half(V::EstimateInverse(x.Second().Register()))};
  }
};

/// Outcome of a comparison of twins.
template <class V>
class Mask<Twins<V>> {
 public:
  using Half = Mask<V>;

  TOLVIK_INLINE Mask(Half first, Half second) : first_(first), second_(second) {}
  TOLVIK_INLINE Half First() const { return first_; }
  TOLVIK_INLINE Half Second() const { return second_; }

  TOLVIK_INLINE friend Mask operator&&(Mask a, Mask b) {
    return {a.first_ && b.first_, a.second_ && b.second_};
  }
  TOLVIK_INLINE friend Mask operator||(Mask a, Mask b) {
    return {a.first_ || b.first_, a.second_ || b.second_};
  }
  TOLVIK_INLINE friend bool AllOf(Mask a) { return AllOf(a.first_ && a.second_); }
  TOLVIK_INLINE friend bool AnyOf(Mask a) { return AnyOf(a.first_ || a.second_); }

 private:
  Half first_, second_;
};

/// Twins as a number type: the operations of Lanes that the closed form of a quartic needs, half by half.
template <class V>
class Lanes<Twins<V>> {
 public:
  using Half = Lanes<V>;
  using Scalar = typename Half::Scalar;
  using Truth = Mask<Twins<V>>;

  Lanes() = default;
  TOLVIK_INLINE Lanes(Scalar x) : first_(x), second_(x) {}  // NOLINT: one number for all
  TOLVIK_INLINE Lanes(Half first, Half second) : first_(first), second_(second) {}
  // Half by half, for the same reason as in Complexes.
  TOLVIK_INLINE Lanes(const Lanes& other) : first_(other.first_), second_(other.second_) {}
  TOLVIK_INLINE Lanes& operator=(const Lanes& other) {
    first_ = other.first_;
    second_ = other.second_;
    return *this;
  }
  TOLVIK_INLINE Half First() const { return first_; }
  TOLVIK_INLINE Half Second() const { return second_; }
  TOLVIK_INLINE const Lanes& Register() const { return *this; }

  TOLVIK_INLINE friend Lanes operator+(Lanes a, Lanes b) {
    return {a.first_ + b.first_, a.second_ + b.second_};
  }
  TOLVIK_INLINE friend Lanes operator-(Lanes a, Lanes b) {
    return {a.first_ - b.first_, a.second_ - b.second_};
  }
  TOLVIK_INLINE friend Lanes operator*(Lanes a, Lanes b) {
    return {a.first_ * b.first_, a.second_ * b.second_};
  }
  TOLVIK_INLINE friend Lanes operator/(Lanes a, Lanes b) {
    return {a.first_ / b.first_, a.second_ / b.second_};
  }
  TOLVIK_INLINE friend Lanes operator-(Lanes a) { return {-a.first_, -a.second_}; }

  TOLVIK_INLINE friend Truth operator<(Lanes a, Lanes b) {
    return {a.first_ < b.first_, a.second_ < b.second_};
  }
  TOLVIK_INLINE friend Truth operator>(Lanes a, Lanes b) {
    return {a.first_ > b.first_, a.second_ > b.second_};
  }
  TOLVIK_INLINE friend Truth operator>=(Lanes a, Lanes b) {
    return {a.first_ >= b.first_, a.second_ >= b.second_};
  }
  TOLVIK_INLINE friend Truth operator==(Lanes a, Lanes b) {
    return {a.first_ == b.first_, a.second_ == b.second_};
  }

  TOLVIK_INLINE friend Lanes sqrt(Lanes a) { return {sqrt(a.first_), sqrt(a.second_)}; }
  TOLVIK_INLINE friend Lanes abs(Lanes a) { return {abs(a.first_), abs(a.second_)}; }
  TOLVIK_INLINE friend Lanes copysign(Lanes a, Lanes b) {
    return {copysign(a.first_, b.first_), copysign(a.second_, b.second_)};
  }
  TOLVIK_INLINE friend Lanes Select(Truth m, Lanes a, Lanes b) {
    return {Select(m.First(), a.first_, b.first_), Select(m.Second(), a.second_, b.second_)};
  }
  TOLVIK_INLINE friend Lanes MulAdd(Lanes a, Lanes b, Lanes c) {
    return {MulAdd(a.first_, b.first_, c.first_), MulAdd(a.second_, b.second_, c.second_)};
  }
  TOLVIK_INLINE friend Lanes NegMulAdd(Lanes a, Lanes b, Lanes c) {
    return {NegMulAdd(a.first_, b.first_, c.first_), NegMulAdd(a.second_, b.second_, c.second_)};
  }

 private:
  Half first_, second_;
};

/// Two complex numbers as one, and the halves of it.
template <class V>
TOLVIK_INLINE Complexes<Twins<V>> Twin(const Complexes<V>& first, const Complexes<V>& second) {
  return {{first.real(), second.real()}, {first.imag(), second.imag()}};
}

template <class V>
TOLVIK_INLINE Complexes<V> FirstOf(const Complexes<Twins<V>>& z) {
  return {z.real().First(), z.imag().First()};
}

template <class V>
TOLVIK_INLINE Complexes<V> SecondOf(const Complexes<Twins<V>>& z) {
  return {z.real().Second(), z.imag().Second()};
}

template <class V>
TOLVIK_INLINE Lanes<Twins<V>> CubeRootOfNormal(Lanes<Twins<V>> x) {
  return {CubeRootOfNormal(x.First()), CubeRootOfNormal(x.Second())};
}

}  // namespace tolvik::engine::lanes
