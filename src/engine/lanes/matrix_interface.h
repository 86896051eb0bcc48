// SPDX-License-Identifier: GPL-2.0-or-later
// What the matrix kernels need at an interface: the roughness of all pairs of waves, and the amplitudes of
// the first-order waves from the fields.
#pragma once

#include "engine/first_order_modes.tpp"
#include "engine/lanes/physics.h"

namespace tolvik::engine::lanes {

/// The factors exp(-½ σ² k0² (upper - lower)²) of ApplyRoughness.
///
/// Waves that run the same way have nearly the same wavevector on both sides: their exponents lie near 0, and
/// those of opposite waves near the one of the first pair. From there a short step does.
template <class V>
class InterfaceRoughness {
 public:
  using L = Lanes<V>;
  using Z = Complexes<V>;

  TOLVIK_INLINE InterfaceRoughness(double sigma_k0, const Z (&lower)[4], const Z (&upper)[4])
      : rough_(sigma_k0 != 0.0), scale_(-0.5 * sigma_k0 * sigma_k0) {
    if (!rough_) return;
    SetOpposite(0, upper[2] - lower[0]);
    SetOpposite(1, upper[0] - lower[2]);
  }

  /// Row r of the interface matrix, in place.
  TOLVIK_INLINE void Apply(int r, const Z& lower, const Z (&upper)[4], Z (&t)[4]) const {
    if (!rough_) return;
    const int pair = r < 2 ? 0 : 1;
    Z step[4];
    L longest(0.0);
    for (int c = 0; c < 4; ++c) {
      const Z difference = upper[c] - lower;
      step[c] = scale_ * (difference * difference);
      if (AreOpposite(r, c)) step[c] -= exponent_[pair];
      longest = Max(longest, norm(step[c]));
    }
    // Worded so that what is not a number takes the long way.
    if (!AllOf(longest < L(kShortStep * kShortStep))) return ApplyLong(r, pair, step, t);
    for (int c = 0; c < 4; ++c) {
      t[c] *= ShortExponential(step[c]);
      if (AreOpposite(r, c)) t[c] *= factor_[pair];
    }
  }

 private:
  TOLVIK_INLINE static bool AreOpposite(int r, int c) { return (r < 2) != (c < 2); }

  TOLVIK_INLINE void SetOpposite(int pair, const Z& difference) {
    exponent_[pair] = scale_ * (difference * difference);
    factor_[pair] = exp(exponent_[pair]);
  }

  // Each angle goes its own way, short or long, whatever its neighbours do.
  [[gnu::noinline]] void ApplyLong(int r, int pair, const Z (&step)[4], Z (&t)[4]) const {
    for (int c = 0; c < 4; ++c) {
      const Mask<V> is_short = norm(step[c]) < L(kShortStep * kShortStep);
      Z by_step = t[c] * ShortExponential(step[c]);
      if (AreOpposite(r, c)) by_step *= factor_[pair];
      const Z exponent = AreOpposite(r, c) ? step[c] + exponent_[pair] : step[c];
      t[c] = Select(is_short, by_step, t[c] * exp(exponent));
    }
  }

  bool rough_;
  L scale_;
  Z exponent_[2], factor_[2];
};

/// The amplitudes of the four first-order waves from their fields, without the inverse of the field matrix:
/// with p = a1 + a3, m = a1 - a3 and l = a0 - a2 the fields (FirstOrderWaves) leave two equations for l and
/// m.
template <class V>
class FirstOrderSolution {
 public:
  using L = Lanes<V>;
  using Z = Complexes<V>;

  FirstOrderSolution() = default;
  TOLVIK_INLINE FirstOrderSolution(const FirstOrderWaves<L>& waves, const Z& inverse_n)
      : inverse_n_(inverse_n) {
    const L half(0.5);
    const Z hx_mean = half * (waves.hx[0] + waves.hx[1]), hx_lean = half * (waves.hx[0] - waves.hx[1]);
    ey_hx_ = half * (waves.ey[1] + waves.ey[3]) * inverse_n;
    hy_hx_ = half * (waves.hy[0] + waves.hy[1]) * inverse_n;
    ey_ex_ = MulAdd(hx_mean, ey_hx_, half * (waves.ey[0] + waves.ey[2]));
    hy_ex_ = hx_mean * hy_hx_;
    p_ex_ = hx_mean * inverse_n;
    p_l_ = hx_lean * inverse_n;
    const Z ey_l = MulAdd(hx_lean, ey_hx_, half * (waves.ey[0] - waves.ey[2]));
    const Z hy_l = MulAdd(hx_lean, hy_hx_, waves.kappa);
    const Z ey_m = half * (waves.ey[1] - waves.ey[3]), hy_m = half * (waves.hy[0] - waves.hy[1]);
    const Z scale = Inverse(NegMulAdd(ey_m, hy_l, ey_l * hy_m));
    l_ey_ = hy_m * scale;
    l_hy_ = -(ey_m * scale);
    m_ey_ = -(hy_l * scale);
    m_hy_ = ey_l * scale;
  }

  /// The amplitudes of sigma and pi, of the waves down with sign 1, up with sign -1. fields: ex, ey, hx, hy.
  TOLVIK_INLINE void Solve(const Z (&fields)[4], int sign, Z& sigma, Z& pi) const {
    const L half(0.5);
    const Z ex = fields[0], hx = fields[2];
    const Z ey = NegMulAdd(ex, ey_ex_, MulAdd(hx, ey_hx_, fields[1]));
    const Z hy = NegMulAdd(ex, hy_ex_, MulAdd(hx, hy_hx_, fields[3]));
    const Z l = MulAdd(l_ey_, ey, l_hy_ * hy);
    const Z m = MulAdd(m_ey_, ey, m_hy_ * hy);
    const Z p = NegMulAdd(hx, inverse_n_, MulAdd(ex, p_ex_, p_l_ * l));
    sigma = half * (sign > 0 ? ex + l : ex - l);
    pi = half * (sign > 0 ? p + m : p - m);
  }

 private:
  Z inverse_n_;
  Z ey_hx_, hy_hx_, ey_ex_, hy_ex_;  // what hx and ex add to the equations of ey and hy
  Z p_ex_, p_l_;                     // p from ex and l
  Z l_ey_, l_hy_, m_ey_, m_hy_;      // l and m from the equations
};

}  // namespace tolvik::engine::lanes
