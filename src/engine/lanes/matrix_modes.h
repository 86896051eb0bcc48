// SPDX-License-Identifier: GPL-2.0-or-later
// The four waves of one entry at several angles, from the templates of the plain path, and what carries
// amplitudes into that entry from below.
#pragma once

#include "engine/lanes/matrix_interface.h"
#include "engine/lanes/matrix_stack.h"

namespace tolvik::engine::lanes {

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

  [[gnu::noinline]] void Calculate(const MatrixStack& stack, const MatrixEntry& entry,
                                   const GrazingAngles<V>& angles) {
    switch (entry.kind) {
      case ModeKind::kScalar:
        return CalcScalar(entry, angles, stack.first_order);
      case ModeKind::kFirstOrder:
        return CalcFirstOrder(entry, angles);
      default:
        return CalcTensor(entry, angles);
    }
  }

  /// The first-order waves of two entries.
  [[gnu::noinline]] static void CalcTwoFirstOrder(const MatrixEntry& one, MatrixModes& modes_of_one,
                                                  const MatrixEntry& two, MatrixModes& modes_of_two,
                                                  const GrazingAngles<V>& angles) {
    modes_of_one.SetRoot(one, angles);
    modes_of_two.SetRoot(two, angles);
    modes_of_one.SetFirstOrder(one, angles);
    modes_of_two.SetFirstOrder(two, angles);
  }

  /// What the upper side of an interface needs besides.
  [[gnu::noinline]] void Invert(const MatrixEntry& entry) {
    if (entry.kind == ModeKind::kScalar) {
      inverse_w = Inverse(w);
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
    waves = FirstOrderWaves<L>();
    waves.kappa = w;
    waves.q = q;
  }

  [[gnu::noinline]] void CalcTensor(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    Z tensor[9];
    for (int i = 0; i < 9; ++i) tensor[i] = Broadcast<V>(entry.tensor[i]);
    if (entry.kind == ModeKind::kTetragonal) {
      modes::FillTetragonal<L>(D, kappa, angles.cosine, tensor);
    } else if (entry.normalised) {
      modes::FillGeneral<true, L>(D, kappa, angles.cosine, tensor);
    } else {
      modes::FillGeneral<false, L>(D, kappa, angles.cosine, tensor);
    }
  }

  [[gnu::noinline]] void CalcFirstOrder(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    SetRoot(entry, angles);
    SetFirstOrder(entry, angles);
  }

  TOLVIK_INLINE void SetRoot(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    w = sqrt(Z(angles.s2 + L(entry.chi.real), L(entry.chi.imag)));
  }

  TOLVIK_INLINE void SetFirstOrder(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    const FirstOrderMatter<Pair>& m = entry.matter;
    const FirstOrderMatter<Z> matter = {Broadcast<V>(m.n),          Broadcast<V>(m.inverse_n),
                                        Broadcast<V>(m.inverse_n2), Broadcast<V>(m.ey_sum),
                                        Broadcast<V>(m.ey_pi),      Broadcast<V>(m.hx_sum),
                                        Broadcast<V>(m.hy_pi),      Broadcast<V>(m.hy_difference)};
    CalcFirstOrderWaves<L>(waves, angles.cosine, w * matter.inverse_n, w, matter);
    kappa[0] = w;
  }
};

}  // namespace tolvik::engine::lanes
