// SPDX-License-Identifier: GPL-2.0-or-later
// The four waves of one entry at several angles, from the templates of the plain path, and what carries
// amplitudes into that entry from below.
#pragma once

#include "engine/lanes/matrix_interface.h"
#include "engine/lanes/matrix_stack.h"

namespace tolvik::engine::lanes {

template <class V>
TOLVIK_INLINE Complexes<V> Broadcast(const Pair& z) {
  return {Lanes<V>(z.real), Lanes<V>(z.imag)};
}

/// The angles of one register.
template <class V>
struct GrazingAngles {
  using L = Lanes<V>;

  TOLVIK_INLINE explicit GrazingAngles(L s) : s2(s * s), cosine(sqrt(L(1.0) - s * s)) {}

  L s2, cosine;
};

/// Waves of an entry. Scalar matter has w, the normal wavevector in units of k0 with w² = s² + (n² - 1), and
/// q = w / n in place of D.
template <class V>
struct MatrixModes {
  using L = Lanes<V>;
  using Z = Complexes<V>;

  Z kappa[4];
  Z w, q, n, inverse_w;
  Matrix4<L> D, inverse;
  FirstOrderWaves<L> waves;
  FirstOrderSolution<V> solution;

  [[gnu::noinline]] void Calculate(const MatrixStack& stack, const MatrixEntry& entry,
                                   const GrazingAngles<V>& angles) {
    switch (entry.kind) {
      case ModeKind::kScalar:
        return CalcScalar(entry, angles, stack.first_order);
      case ModeKind::kFirstOrder:
        return CalcFirstOrder(stack, entry, angles);
      default:
        return CalcTensor(entry, angles);
    }
  }

  /// What the upper side of an interface needs. beside_scalar: the lower side is scalar matter.
  [[gnu::noinline]] void PrepareUpper(const MatrixStack& stack, const MatrixEntry& entry,
                                      bool beside_scalar) {
    const bool scalar = entry.kind == ModeKind::kScalar;
    if (scalar && (beside_scalar || !stack.first_order)) {
      inverse_w = Inverse(w);
    } else if (stack.first_order) {
      solution = FirstOrderSolution<V>(waves, Broadcast<V>(entry.inverse));
    } else {
      InvertInto<L>(D, inverse);
    }
  }

 private:
  TOLVIK_INLINE void CalcScalar(const MatrixEntry& entry, const GrazingAngles<V>& angles, bool first_order) {
    w = sqrt(Z(angles.s2 + L(entry.chi.real), L(entry.chi.imag)));
    n = Broadcast<V>(entry.index);
    q = w * Broadcast<V>(entry.inverse);
    kappa[0] = kappa[1] = w;
    kappa[2] = kappa[3] = -w;
    if (!first_order) return;
    const Z zero;
    waves = {w, n, {zero, q, zero, -q}, {zero, zero}, {zero, zero}, {zero, zero}};
  }

  [[gnu::noinline]] void CalcTensor(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    Z tensor[9];
    for (int i = 0; i < 9; ++i) tensor[i] = Broadcast<V>(entry.tensor[i]);
    if (entry.kind == ModeKind::kGeneral) {
      modes::FillGeneral<L>(D, kappa, angles.cosine, tensor);
    } else {
      modes::FillTetragonal<L>(D, kappa, angles.cosine, tensor);
    }
  }

  [[gnu::noinline]] void CalcFirstOrder(const MatrixStack& stack, const MatrixEntry& entry,
                                        const GrazingAngles<V>& angles) {
    const Direction<L> direction{L(stack.direction[0]), L(stack.direction[1]), L(stack.direction[2])};
    CalcFirstOrderWaves<L>(waves, angles.cosine, direction, Broadcast<V>(entry.index),
                           Broadcast<V>(entry.strength));
    kappa[0] = waves.kappa;
  }
};

}  // namespace tolvik::engine::lanes
