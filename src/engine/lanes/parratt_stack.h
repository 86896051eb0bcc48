// SPDX-License-Identifier: GPL-2.0-or-later
// The data of a stack for the kernels of the Parratt recursion: plain numbers and pointers.
#pragma once

#include <cstdint>

namespace tolvik::engine::lanes {

/// One entry of the profile for the kernels; its index n = 1 - delta + i beta was rounded to the number
/// type first.
template <class Scalar>
struct ParrattEntry {
  Scalar index_real, index_imag;  ///< n without the magnetic shift
  Scalar chi_real, chi_imag;      ///< n² - 1, calculated as (n - 1)(n + 1)
  Scalar ddelta, dbeta;           ///< magnetic shift of the index at cos θ = 1, in the first sense
  Scalar phase;                   ///< 2 k0 d: phase of the double passage of a wave with w = 1; of slabs
  Scalar roughness;               ///< 2 σ² k0² of the interface above
  bool shifted;                   ///< the magnetic shift is not 0
  bool rough;                     ///< σ is not 0; of all entries but the ambient
  bool guarded;                   ///< w may come near 0, or Im n: those angles go to the plain recursion
  bool short_phase;               ///< of the roughness factor at all angles: kShortRoughnessPhase
  std::int8_t wave;               ///< in a shared stack only: entries of one index have one number,
  std::int8_t passage;            ///< slabs of one index and one thickness likewise,
  std::int8_t interface;          ///< and interfaces of equal sides and roughness
};

template <class Scalar>
struct ComplexPair {
  Scalar real, imag;
};

/// Constants of an interface (parratt_joint.h); a "slope" is the factor of 2 s².
template <class Scalar>
struct ParrattJoint {
  using Pair = ComplexPair<Scalar>;
  Pair step;                    ///< a² - b²
  Pair sum;                     ///< a² + b², less 8 s²
  Pair pi_step, pi_step_slope;  ///< N_b/N_a a² - N_a/N_b b²
  Pair pi_sum, pi_sum_slope;    ///< N_b/N_a a² + N_a/N_b b²
};

/// Most different waves, passages or interfaces of a shared stack.
inline constexpr int kMaxShared = 16;

/// A stack at one k0. Interface j lies above entry j; entry 0 is the substrate.
///
/// Three steps of ParrattLanes fill it. Members of a step are valid from then on; a kernel needs all three.
template <class Scalar>
struct ParrattStack {
  // From the profile; the same after Prepare and PrepareMatrix.
  const ParrattEntry<Scalar>* entry;  ///< belongs to ParrattLanes, and is valid until its next preparation
  const ParrattJoint<Scalar>* joint;  ///< of each interface; unspecified where a side is shifted
  std::int32_t entries;               ///< at least 2
  bool shared;  ///< the stack repeats itself: equal entries have equal numbers and are calculated once

  // From the algorithm. Prepare (the recursion itself) accepts all cases:
  //   tame either, shifted either, largest_growth infinite, smallest_sine near 0.
  // PrepareMatrix (scalar stacks of the matrix algorithms) accepts only:
  //   tame true, shifted false, largest_growth finite, smallest_sine that of the matrix algorithms.
  bool tame;     ///< no roughness factor can leave the range of the functions
  bool shifted;  ///< some entry is
  /// Largest sum of 2 k0 d Im w over the slabs that lanes may calculate: the matrix algorithms carry the
  /// growing waves themselves and overflow where the recursion does not.
  Scalar largest_growth;
  Scalar smallest_sine;  ///< angles below go to the plain path

  // From the rays, by Calculate, again at each call.
  std::int32_t senses;  ///< 2 if shifted and two rays: the second one has the reversed shift
  bool wants_sigma[2];  ///< in each of the senses; at least one polarisation is needed in each
  bool wants_pi[2];
};

/// The shares of a ray, squared moduli of its sigma and pi parts, and the place for its intensities.
template <class Scalar>
struct ParrattRay {
  Scalar sigma, pi;
  Scalar* intensity;
};

/// Intensities |Y|² sigma + |X|² pi, with the amplitude ratios Y of sigma and X of pi, of each ray at count
/// angles, given as s = sin θ, 0 <= s <= 1. An angle that the plain recursion has to calculate gets a NaN.
/// Returns whether all intensities are finite.
template <class Scalar>
using ParrattKernel = bool (*)(const ParrattStack<Scalar>& stack, const Scalar* s, std::int32_t count,
                               const ParrattRay<Scalar>* rays, std::int32_t ray_count);

}  // namespace tolvik::engine::lanes
