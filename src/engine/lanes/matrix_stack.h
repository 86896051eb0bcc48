// SPDX-License-Identifier: GPL-2.0-or-later
// The data of a stack for the matrix kernels: plain numbers and pointers.
#pragma once

#include <cstdint>

#include "engine/algorithms/first_order_modes.h"

namespace tolvik::engine::lanes {

/// The method for the four waves of an entry.
enum class ModeKind : std::uint8_t { kScalar, kTetragonal, kGeneral, kFirstOrder };

/// A complex number in memory.
struct Pair {
  double real, imag;
};

/// The fields that one unit of σ⁺ and of π⁺ below an interface (FirstOrderWaves) leave for the waves above
/// it, once ex and hx are continuous; per power of the cosine c of the grazing angle. n, ey_pi and hy_pi are
/// those above. Derived in docs/derivations/first_order_joint.md.
struct FirstOrderJoint {
  Pair ey_of_sigma;  ///< c² ey_of_sigma
  Pair hy_of_sigma;  ///< c hy_of_sigma
  Pair hx_of_sigma;  ///< c hx_of_sigma: half of the part of σ⁺ in π⁺ above
  Pair ey_of_pi;     ///< c ey_of_pi
  Pair hy_of_pi;
  Pair hx_of_pi;              ///< half of the part of π⁺ in π⁺ above
  Pair minus_half_inverse_n;  ///< -1 / (2 n)
  Pair ey_of_hx;              ///< c ey_of_hx = ey_pi / n
  Pair hy_of_hx;              ///< hy_pi / n
};

/// One entry of the profile for the kernels.
struct MatrixEntry {
  ModeKind kind;
  bool guarded;       ///< absorption alone does not keep the normal wavevector away from 0
  bool normalised;    ///< amplitudes matter, so the fields of a general tensor must be those of unit waves
  double d;           ///< thickness, Å
  double sigma;       ///< roughness of the interface above, Å
  Pair index;         ///< n
  Pair inverse;       ///< 1 / n
  Pair chi;           ///< n² - 1
  Pair along_index;   ///< n_upper / (2 n) and
  Pair across_index;  ///< n / (2 n_upper) at the interface above
  Pair tensor[9];     ///< row major
  FirstOrderMatter<Pair> matter;  ///< of the first-order algorithm
  FirstOrderJoint joint;          ///< likewise, at the interface above
};

/// A stack at one k0. Interface j lies above entry j; entry 0 is the substrate.
struct MatrixStack {
  const MatrixEntry* entry;
  std::int32_t entries;        ///< at least 2
  bool first_order;            ///< the first-order algorithm
  bool transmission;           ///< the transmitted instead of the reflected intensity
  double k0;                   ///< Å⁻¹
  double largest_growth;       ///< largest sum of 2 k0 d |Im kappa| that lanes may calculate
  const double* polarisation;  ///< eight numbers, per ray sigma and pi as complex numbers
};

/// Intensities of both rays at count angles, given as s = sin θ, 0 <= s <= 1; second may be null. An angle
/// that the plain algorithm has to calculate gets a NaN.
using MatrixKernel = void (*)(const MatrixStack& stack, const double* s, std::int32_t count, double* first,
                              double* second);

}  // namespace tolvik::engine::lanes
