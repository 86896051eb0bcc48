// SPDX-License-Identifier: GPL-2.0-or-later
// From the wavelength and qz to the grazing angle.
#pragma once

#include "engine/number/number.h"
#include "optics/angles.h"

namespace tolvik::engine {

/// k0 = 2π/λ, Å⁻¹, of a wavelength in Å. Not guarded: 0 gives infinity.
template <Number T>
T WavevectorFromLambda(const T& lambda) {
  return T(kTwoPi) / lambda;
}

/// s = sin θ = q / (2 k0).
template <Number T>
T GrazingSine(const T& q, const T& k0) {
  return q / (T(2.0) * k0);
}

/// |s| >= 1: no angle has this qz at this wavelength. Angles by asin are refused at s >= 1 only; a NaN is not
/// refused here, it has no angle (HasAngle).
template <Number T>
bool IsOutOfReach(const T& s) {
  if constexpr (NumberTraits<T>::angle_by_asin) {
    return s >= T(1.0);
  } else {
    return abs(s) >= T(1.0);
  }
}

/// The grazing angle of sin θ = s, radians; NaN outside -1 .. 1.
template <Number T>
T GrazingAngle(const T& s) {
  if constexpr (NumberTraits<T>::angle_by_asin) {
    return asin(s);
  } else {
    return atan2(s, sqrt(T(1.0) - s * s));
  }
}

/// Whether the angle of s, which is not above 1, is a number and not negative. Samples without such an angle
/// add nothing to a curve. -0 has the angle -0, which is not negative.
template <Number T>
bool HasAngle(const T& s) {
  return s >= T(0.0);
}

}  // namespace tolvik::engine
