// SPDX-License-Identifier: GPL-2.0-or-later
// The vocabulary of fit variables: what each fit_id changes.
#pragma once

#include <array>
#include <cstdint>

namespace tolvik {

/// Kinds of fit variables by fit_id, in order; any other id is passed over.
enum class FitKind : std::int32_t {
  kThickness,
  kDelta,
  kBeta,
  kSigma,
  kDeltaM,
  kBetaM,
  kResolution,
  kMultiplicator,
  kQzMovement,
  kGaussDelta,
  kGaussBeta,
  kGaussVariance,
  kGaussZ,
  kScript,
  kElementDensity,
  kElementThickness,
  kElementSigma,
  kBetaKK,
  kDeltaKK,
  kElementF1,
  kElementF2,
};

/// Name of each kind, by fit_id. State files carry those of 0 to 13 as comments.
inline constexpr std::array<const char*, 21> kFitKindNames = {
    "thickness",   "delta",       "beta",        "sigma",      "deltam",     "betam",   "resolution",
    "meas. mult.", "qz movement", "gauss delta", "gauss beta", "gauss var.", "gauss z", "script",
    "el density",  "el th.",      "el sigma",    "beta KK",    "delta KK",   "el f1",   "el f2",
};

}  // namespace tolvik
