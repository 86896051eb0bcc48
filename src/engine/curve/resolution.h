// SPDX-License-Identifier: GPL-2.0-or-later
// The qz resolution of a measurement: nine samples of a Gaussian with standard deviation r/2, cut at ±r.
#pragma once

#include <cstdint>

#include "engine/number/number.h"
#include "tolvik/dataset.h"

namespace tolvik::engine {

inline constexpr int kResolutionSamples = 9;

/// One sample of the rule: at qz + r offset, with the resolution r in the unit of qz.
struct ResolutionSample {
  double offset;
  double weight;
};

/// Ordinates 0.135, 0.325, 0.605, 0.88, 1 over their sum 4.89. The six-digit weights add up to 0.999999; they
/// are not renormalised, not even where samples are left out.
inline constexpr ResolutionSample kResolutionRule[kResolutionSamples] = {
    {1.0, 0.027607},  {-1.0, 0.027607}, {0.75, 0.066462},  {-0.75, 0.066462}, {0.5, 0.123722},
    {-0.5, 0.123722}, {0.25, 0.179959}, {-0.25, 0.179959}, {0.0, 0.204499},
};

/// The rule of one curve in the number type T: positions and weights of the samples of a point.
template <class T>
struct ResolutionRule {
  int samples = 0;
  T shift[kResolutionSamples] = {};  ///< Å⁻¹
  T weight[kResolutionSamples] = {};
};

/// All nine samples.
template <Number T>
ResolutionRule<T> FullRule(double resolution);

/// Nine samples if resolution >= 1e-10, else the first alone with weight 1: a smaller resolution, a negative
/// one too, moves the single sample by itself.
template <Number T>
ResolutionRule<T> RuleOfResolution(double resolution);

/// The result of InterpolateSolution; a curve that is empty (or shorter than the grid) does not set its
/// field.
template <class T>
struct InterpolatedPoint {
  T R0{}, Rp{}, Rm{};
};

/// Reads the curves of a solution at q by linear interpolation. The search starts at point i of the grid and
/// moves towards q. A q beyond the grid, or in its last interval above i, gives the value of point i itself.
/// Repeated grid values are harmless.
template <Number T>
void InterpolateSolution(InterpolatedPoint<T>& out, const CSolution& solution, const T& q, std::int32_t i,
                         const CArray<double>& grid);

/// The curves at point i after the resolution: the weighted sum of nine reads of the curves as they were
/// calculated. Reads below qz = 0 are left out.
template <Number T>
InterpolatedPoint<T> FoldResolution(const CSolution& solution, std::int32_t i,
                                    const ResolutionRule<T>& full_rule);

}  // namespace tolvik::engine
