// SPDX-License-Identifier: GPL-2.0-or-later
// Methods of comparison, and counts of used and omitted points.
#pragma once

#include <cstdint>
#include <string>

namespace tolvik::analysis {

/// Weights of the residuals.
enum class Weights : std::uint8_t {
  kErrors,   ///< (y - model) / dR; counts without dR: the deviance of Poisson statistics
  kLog,      ///< log10 y - log10 model, all points alike
  kProgram,  ///< the error functions and the window of the fits of the program
};

/// Source of the width of q.
enum class Resolution : std::uint8_t {
  kState,   ///< the nine samples of the program with the resolution of the measurement
  kPoints,  ///< dq of each point
};

/// Number of points in use; each other point is counted once, for the first reason that applies.
struct PointCount {
  std::int32_t used = 0;
  std::int32_t masked = 0;          ///< by the caller
  std::int32_t not_finite = 0;      ///< q, R, dR, dq or energy
  std::int32_t outside_window = 0;  ///< of fitqzmin and fitqzmax
  std::int32_t out_of_reach = 0;    ///< q < 0, or q with its resolution not below 2 k0
  std::int32_t zero_error = 0;      ///< dR = 0 or below, dq below 0
  std::int32_t zero_value = 0;      ///< R = 0; with counts: below 0; on a logarithmic scale: not above 0

  /// "71 of 79 points used (5 with R = 0, 3 with dR = 0)".
  std::string Text() const;
};

/// Number and accuracy of the nodes of a measurement.
struct ResolutionReport {
  std::int32_t nodes = 0;       ///< of all points together
  std::int32_t most = 0;        ///< of one point
  double worst = 0;             ///< largest relative deviation from a dense quadrature
  std::int32_t unresolved = 0;  ///< points whose deviation is above the tolerance with the most nodes allowed
};

}  // namespace tolvik::analysis
