// SPDX-License-Identifier: GPL-2.0-or-later
// Traits by which the templates of the physics accept lanes as a number type.
#pragma once

#include <limits>

#include "engine/number/number.h"
#include "engine/number/select.h"
#include "engine/simd/complexes.h"

namespace tolvik::engine {

template <class V>
struct ComplexOf<lanes::Lanes<V>> {
  using type = lanes::Complexes<V>;
};

template <class V>
struct NumberTraits<lanes::Lanes<V>> : NumberTraits<typename lanes::Lanes<V>::Scalar> {
  static constexpr double rounding_of_quartic =
      2.0 * std::numeric_limits<typename lanes::Lanes<V>::Scalar>::epsilon();
};

namespace lanes {

/// yes() where the mask holds, no() elsewhere; one that no angle needs is not calculated.
template <class V, class Yes, class No>
TOLVIK_INLINE auto Either(Mask<V> mask, const Yes& yes, const No& no) {
  if (!AnyOf(mask)) return no();
  if (AllOf(mask)) return yes();
  return Select(mask, yes(), no());
}

template <class V>
TOLVIK_INLINE Mask<V> IsLonger(const Complexes<V>& a, const Complexes<V>& b) {
  return norm(a) > norm(b);
}

template <class V>
TOLVIK_INLINE Mask<V> IsShorterThan(const Complexes<V>& a, const Lanes<V>& length) {
  return norm(a) < length * length;
}

}  // namespace lanes
}  // namespace tolvik::engine
