// SPDX-License-Identifier: GPL-2.0-or-later
// Ordinary matter, which lanes accept; the plain path does the rest. NaN is rejected.
#pragma once

#include <cmath>

#include "engine/lanes/limits.h"

namespace tolvik::engine::lanes {

/// Whether x lies between the bounds, both included; false for a NaN.
template <class T>
bool IsWithin(T x, T low, T high) {
  return x >= low && x <= high;
}

/// Real part of an index or of its square.
template <class T>
bool IsRefraction(T x) {
  return IsWithin(x, kSmallestRefraction<T>, kLargestRefraction<T>);
}

/// Imaginary part of an index or of its square: not negative, and not -0.
template <class T>
bool IsAbsorption(T x) {
  return IsWithin(x, T(0.0), kLargestAbsorption<T>) && !std::signbit(x);
}

}  // namespace tolvik::engine::lanes
