// SPDX-License-Identifier: GPL-2.0-or-later
// Interfaces of the matrix kernels: the roughness of all pairs of waves, and the matrix of first-order waves.
#pragma once

#include "engine/algorithms/first_order_modes.tpp"
#include "engine/lanes/matrix_stack.h"
#include "engine/simd/complex_functions.h"
#include "engine/simd/traits.h"

namespace tolvik::engine::lanes {

template <class V>
TOLVIK_INLINE Complexes<V> Broadcast(const Pair& z) {
  return {Lanes<V>(z.real), Lanes<V>(z.imag)};
}

/// The angles of one register.
template <class V>
struct GrazingAngles {
  using L = Lanes<V>;

  TOLVIK_INLINE explicit GrazingAngles(L s) : s2(s * s), cosine(sqrt(L(1.0) - s * s)) {}

  L s2, cosine;
};

/// The factors exp(-½ σ² k0² (upper - lower)²) of ApplyRoughness.
///
/// Waves that run the same way have nearly the same wavevector on both sides: their exponents are near 0, and
/// those of opposite waves near the one of the first pair. From there a short step suffices.
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
    // Written so that NaN takes the long way.
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

  // Each angle takes its own way, short or long, independent of its neighbours.
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

/// An interface between first-order waves in closed form, derived in
/// docs/derivations/first_order_crossing.md. For one unit of σ⁺, σ⁻, π⁺ or π⁻ below (FirstOrderWaves) the
/// amplitudes above follow: ex keeps σ⁺, hx gives π⁺ from the others, ey and hy are two equations for σ⁻ and
/// π⁻.
template <class V>
class FirstOrderCrossing {
 public:
  using L = Lanes<V>;
  using Z = Complexes<V>;

  TOLVIK_INLINE FirstOrderCrossing(const FirstOrderJoint& joint, const GrazingAngles<V>& angles,
                                   const FirstOrderWaves<L>& lower, const FirstOrderWaves<L>& upper) {
    const L c = angles.cosine, c2 = c * c;
    const Z loss = Broadcast<V>(joint.minus_half_inverse_n);
    const Z ey_of_hx = c * Broadcast<V>(joint.ey_of_hx), hy_of_hx = Broadcast<V>(joint.hy_of_hx);
    const Equations above(MulAdd(ey_of_hx, upper.hx_difference, upper.ey_difference), upper.q,
                          MulAdd(hy_of_hx, upper.hx_difference, upper.kappa), upper.hy_difference,
                          (loss + loss) * upper.hx_difference);
    const Image sum = above.Solve(c2 * Broadcast<V>(joint.ey_of_sigma), c * Broadcast<V>(joint.hy_of_sigma),
                                  c * Broadcast<V>(joint.hx_of_sigma));
    const Image difference =
        above.Solve(MulAdd(ey_of_hx, lower.hx_difference, lower.ey_difference),
                    MulAdd(hy_of_hx, lower.hx_difference, lower.kappa), loss * lower.hx_difference);
    SetSigmaRow(0, sum + difference);
    SetSigmaRow(2, sum - difference);
    const Image pi_sum = above.Solve(c * Broadcast<V>(joint.ey_of_pi), Broadcast<V>(joint.hy_of_pi),
                                     Broadcast<V>(joint.hx_of_pi));
    const Image pi_difference = above.Solve(lower.q, lower.hy_difference, Z());
    SetRow(1, pi_sum + pi_difference);
    SetRow(3, pi_sum - pi_difference);
  }

  /// Carries a row of amplitudes, sigma and pi down, sigma and pi up, from below the interface to above it.
  /// opposite: the roughness factor of opposite waves over that of waves that run the same way; not read
  /// if the interface is not rough.
  template <bool rough>
  TOLVIK_INLINE void CarryRow(const Z& opposite, Z (&row)[4]) const {
    // Waves down and up are split here. Both sides share ex; the waves up have the part that those down
    // leave.
    const Z sigma_of_down = Down(sigma_down_, row), sigma_of_up = Up(sigma_down_, row);
    const Z up_of_down = row[0] - sigma_of_down, up_of_up = row[2] - sigma_of_up;
    const Z pi_down = Join<rough>(opposite, Up(pi_down_, row), Down(pi_down_, row));
    const Z pi_up = Join<rough>(opposite, Down(pi_up_, row), Up(pi_up_, row));
    row[0] = Join<rough>(opposite, sigma_of_up, sigma_of_down);
    row[1] = pi_down;
    row[2] = Join<rough>(opposite, up_of_down, up_of_up);
    row[3] = pi_up;
  }

 private:
  // Half of σ⁻, π⁺ and π⁻ above.
  struct Image {
    Z sigma, pi_sum, pi_difference;

    TOLVIK_INLINE friend Image operator+(const Image& a, const Image& b) {
      return {a.sigma + b.sigma, a.pi_sum + b.pi_sum, a.pi_difference + b.pi_difference};
    }
    TOLVIK_INLINE friend Image operator-(const Image& a, const Image& b) {
      return {a.sigma - b.sigma, a.pi_sum - b.pi_sum, a.pi_difference - b.pi_difference};
    }
  };

  // ey = a σ⁻ + b π⁻ and hy = c σ⁻ + d π⁻, solved for halves; loss: the part of π⁺ that goes to σ⁻.
  struct Equations {
    Z sigma_ey, minus_sigma_hy, minus_pi_ey, pi_hy, loss;

    TOLVIK_INLINE Equations(const Z& a, const Z& b, const Z& c, const Z& d, const Z& loss_) : loss(loss_) {
      const Z determinant = NegMulAdd(b, c, a * d);
      const L scale = Quotient(L(0.5), norm(determinant));
      const Z half_inverse(scale * determinant.real(), -(scale * determinant.imag()));
      sigma_ey = d * half_inverse;
      minus_sigma_hy = b * half_inverse;
      minus_pi_ey = c * half_inverse;
      pi_hy = a * half_inverse;
    }
    TOLVIK_INLINE Image Solve(const Z& ey, const Z& hy, const Z& hx) const {
      const Z sigma = NegMulAdd(minus_sigma_hy, hy, sigma_ey * ey);
      return {sigma, NegMulAdd(loss, sigma, hx), NegMulAdd(minus_pi_ey, ey, pi_hy * hy)};
    }
  };

  // Rows from their images. A sigma wave has ex = 1, a pi wave ex = 0.
  TOLVIK_INLINE void SetSigmaRow(int r, const Image& image) {
    SetRow(r, image);
    sigma_down_[r] = L(0.5) + image.sigma;
  }
  TOLVIK_INLINE void SetRow(int r, const Image& image) {
    sigma_down_[r] = image.sigma;
    pi_down_[r] = image.pi_sum + image.pi_difference;
    pi_up_[r] = image.pi_sum - image.pi_difference;
  }

  template <bool rough>
  TOLVIK_INLINE static Z Join(const Z& opposite, const Z& across, const Z& along) {
    if constexpr (rough) return MulAdd(opposite, across, along);
    return across + along;
  }
  TOLVIK_INLINE static Z Down(const Z (&part)[4], const Z (&row)[4]) {
    return MulAdd(row[1], part[1], row[0] * part[0]);
  }
  TOLVIK_INLINE static Z Up(const Z (&part)[4], const Z (&row)[4]) {
    return MulAdd(row[3], part[3], row[2] * part[2]);
  }

  // The amplitudes above from each wave below, without roughness.
  Z sigma_down_[4], pi_down_[4], pi_up_[4];
};

}  // namespace tolvik::engine::lanes
