// SPDX-License-Identifier: GPL-2.0-or-later
// Choices that depend on the angle, in a form for numbers that hold several angles: a comparison of such
// numbers is a mask, and only Select and the functions below evaluate it. For a number of one angle the mask
// is a plain bool and the choice a plain branch.
#pragma once

#include "engine/number/number.h"

namespace tolvik::engine {

/// The result of yes() where mask is true, of no() elsewhere; with several angles both may be calculated.
template <class Yes, class No>
auto Either(bool mask, const Yes& yes, const No& no) {
  return mask ? yes() : no();
}

/// True when the mask is true for each angle.
inline bool AllOf(bool mask) {
  return mask;
}

/// Whether the complex number a has the larger modulus.
template <class C>
auto IsLonger(const C& a, const C& b) {
  return abs(a) > abs(b);
}

/// Whether the modulus of the complex number a is below length.
template <class C, class T>
auto IsShorterThan(const C& a, const T& length) {
  return abs(a) < length;
}

/// Exchanges a and b where mask is true.
template <class Mask, class V>
inline void SwapIf(const Mask& mask, V& a, V& b) {
  const V old = a;
  a = Select(mask, b, a);
  b = Select(mask, old, b);
}

}  // namespace tolvik::engine
