// SPDX-License-Identifier: GPL-2.0-or-later
// A block of angles: numbers in rows of registers, one row for each part of a complex quantity. The kernels
// run over them in small loops, one for each step of the physics, which needs few registers and keeps the
// processor's pipelines full.
#pragma once

#include <cstdint>

#include "engine/simd/complexes.h"

namespace tolvik::engine::lanes {

/// Registers in a row, unless a kernel chooses another width.
inline constexpr int kBlockRegisters = 8;

template <class V, int registers = kBlockRegisters>
struct Row {
  using Scalar = typename Lanes<V>::Scalar;
  static constexpr int size = registers * Lanes<V>::size;

  TOLVIK_INLINE Lanes<V> operator[](int i) const { return Lanes<V>::Load(value + i * Lanes<V>::size); }
  TOLVIK_INLINE void Set(int i, Lanes<V> x) { x.Store(value + i * Lanes<V>::size); }

  alignas(64) Scalar value[size];
};

template <class V, int registers = kBlockRegisters>
struct ComplexRow {
  TOLVIK_INLINE Complexes<V> operator[](int i) const { return {real[i], imag[i]}; }
  TOLVIK_INLINE void Set(int i, Complexes<V> x) {
    real.Set(i, x.real());
    imag.Set(i, x.imag());
  }

  Row<V, registers> real, imag;
};

/// store(i, calculate(i)) for i below count. Two are calculated before the first of them is stored, so that
/// the compiler may interleave them.
template <class Calculate, class Store>
TOLVIK_INLINE void ForTwoAtOnce(int count, const Calculate& calculate, const Store& store) {
  int i = 0;
  for (; i + 1 < count; i += 2) {
    const auto one = calculate(i), other = calculate(i + 1);
    store(i, one);
    store(i + 1, other);
  }
  if (i < count) store(i, calculate(i));
}

}  // namespace tolvik::engine::lanes
