// SPDX-License-Identifier: GPL-2.0-or-later
// A block of angles: numbers in rows of registers, one row for each part of a complex quantity. The kernels
// walk them in small loops, one for each step of the physics, which keeps the registers few and the
// processor's pipelines full.
#pragma once

#include <cstdint>

#include "engine/lanes/complexes.h"

namespace tolvik::engine::lanes {

/// Registers in a row.
inline constexpr int kBlockVectors = 8;

template <class V>
struct Row {
  using Scalar = typename Lanes<V>::Scalar;
  static constexpr int size = kBlockVectors * Lanes<V>::size;

  TOLVIK_INLINE Lanes<V> operator[](int i) const { return Lanes<V>::Load(value + i * Lanes<V>::size); }
  TOLVIK_INLINE void Set(int i, Lanes<V> x) { x.Store(value + i * Lanes<V>::size); }

  alignas(64) Scalar value[size];
};

template <class V>
struct ComplexRow {
  TOLVIK_INLINE Complexes<V> operator[](int i) const { return {real[i], imag[i]}; }
  TOLVIK_INLINE void Set(int i, Complexes<V> x) {
    real.Set(i, x.real());
    imag.Set(i, x.imag());
  }

  Row<V> real, imag;
};

}  // namespace tolvik::engine::lanes
