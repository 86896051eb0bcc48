// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers of four limbs and the constants of cnumber_functions.cpp.
#pragma once

#include <gmp.h>

#include <array>
#include <cstddef>

namespace tolvik::engine::cnumber_functions {

inline constexpr int kLimbs = 4;
inline constexpr int kFractionBits = 64 * kLimbs;
inline constexpr int kStepBits = 6;        // distance of the tables' arguments: 1/64
inline constexpr std::size_t kTerms = 28;  // t^28 / 28! < 2^-256 for t < 1/64

/// 0 <= value < 1 in units of 2^-256, least limb first.
using Fraction = std::array<mp_limb_t, kLimbs>;
/// Five limbs below the point, one above.
using Reduced = std::array<mp_limb_t, kLimbs + 2>;

/// All cut, not rounded; 1 is stored as 1 - 2^-256.
struct Tables {
  Reduced ln2, half_pi;
  std::array<Fraction, kTerms> inverse_factorial;  ///< 1/k! from k = 2
  std::array<Fraction, 45> half_exp;               ///< exp(i/64) / 2 up to ln 2
  std::array<Fraction, 101> sine, cosine;          ///< of i/64 up to π/2

  Tables();
};

/// Filled by MPFR at the first call, which takes less than a millisecond. Any thread may call.
const Tables& TheTables();

}  // namespace tolvik::engine::cnumber_functions
