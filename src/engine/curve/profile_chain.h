// SPDX-License-Identifier: GPL-2.0-or-later
// The effect of parameters on a profile: the sparse matrix d(profile) / d(parameter).
#pragma once

#include <cstdint>
#include <vector>

namespace tolvik::engine {

/// The fields of a profile entry by which a curve can be differentiated.
enum class ProfileField : std::uint8_t {
  kDelta,             ///< layer_delta
  kBeta,              ///< layer_beta
  kThickness,         ///< layer_d, Å
  kRoughness,         ///< layer_sigma of the interface above the entry, Å; the derivative at sigma = 0 is 0
  kRoughnessSquared,  ///< its square, Å²: a derivative that does not vanish at sigma = 0
  kMagneticDelta,     ///< layer_ddelta
  kMagneticBeta       ///< layer_dbeta
};
inline constexpr int kProfileFields = 7;

/// A parameter that moves a field of an entry, by factor per unit of the parameter.
struct ChainTerm {
  std::int32_t parameter;  ///< 0 .. parameters - 1
  std::int32_t entry;      ///< index in the profile, 0 = substrate
  ProfileField field;
  double factor;
};

/// The matrix as its terms, in any order; terms of one place are summed, and a parameter without a term has
/// the derivative 0.
struct ProfileChain {
  std::int32_t parameters = 0;
  std::vector<ChainTerm> terms;
};

}  // namespace tolvik::engine
