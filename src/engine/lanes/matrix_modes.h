// SPDX-License-Identifier: GPL-2.0-or-later
// The four waves of one entry at several angles, from the templates of the plain path, and the matrix that
// carries amplitudes into that entry from below.
#pragma once

#include "engine/lanes/matrix_interface.h"
#include "engine/lanes/matrix_stack.h"
#include "engine/simd/twins.h"

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

  /// An entry, and the place for its modes.
  struct Task {
    const MatrixEntry& entry;
    MatrixModes& modes;

    bool IsOf(ModeKind kind) const { return entry.kind == kind; }
  };

  /// The modes of two entries, interleaved where both are of a kind whose roots and quotients stall the
  /// processor.
  static void CalculateTwo(const MatrixStack& stack, const Task& one, const Task& two,
                           const GrazingAngles<V>& angles) {
    if (one.IsOf(ModeKind::kFirstOrder) && two.IsOf(ModeKind::kFirstOrder)) {
      return CalcTwoFirstOrder(one, two, angles);
    }
    if (one.IsOf(ModeKind::kGeneral) && two.IsOf(ModeKind::kGeneral)) {
      return CalcTwoGeneral(one, two, angles);
    }
    one.modes.Calculate(stack, one.entry, angles);
    two.modes.Calculate(stack, two.entry, angles);
  }

  /// Further quantities for the upper side of an interface.
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

  // A tensor in registers.
  struct TensorOf {
    Z element[9];

    TOLVIK_INLINE explicit TensorOf(const MatrixEntry& entry) {
      for (int i = 0; i < 9; ++i) element[i] = Broadcast<V>(entry.tensor[i]);
    }
  };

  [[gnu::noinline]] void CalcTensor(const MatrixEntry& entry, const GrazingAngles<V>& angles) {
    const TensorOf tensor(entry);
    if (entry.kind == ModeKind::kTetragonal) {
      return modes::FillTetragonal<L>(D, kappa, angles.cosine, tensor.element);
    }
    const auto monic = modes::GeneralQuartic<L>(angles.cosine, tensor.element);
    FinishGeneral(entry, angles, tensor, monic, quartic::StartOf<L>(monic));
  }

  [[gnu::noinline]] static void CalcTwoGeneral(const Task& one, const Task& two,
                                               const GrazingAngles<V>& angles) {
    const TensorOf tensor_of_one(one.entry), tensor_of_two(two.entry);
    const auto a = modes::GeneralQuartic<L>(angles.cosine, tensor_of_one.element);
    const auto b = modes::GeneralQuartic<L>(angles.cosine, tensor_of_two.element);
    const quartic::MonicQuartic<Lanes<Twins<V>>> both = {Twin(a.A, b.A), Twin(a.B, b.B), Twin(a.C, b.C),
                                                         Twin(a.E, b.E)};
    const auto start = quartic::StartOf<Lanes<Twins<V>>>(both);
    const auto& z = start.z;
    one.modes.FinishGeneral(one.entry, angles, tensor_of_one, a,
                            {{FirstOf(z[0]), FirstOf(z[1]), FirstOf(z[2]), FirstOf(z[3])}});
    two.modes.FinishGeneral(two.entry, angles, tensor_of_two, b,
                            {{SecondOf(z[0]), SecondOf(z[1]), SecondOf(z[2]), SecondOf(z[3])}});
  }

  [[gnu::noinline]] void FinishGeneral(const MatrixEntry& entry, const GrazingAngles<V>& angles,
                                       const TensorOf& tensor, const quartic::MonicQuartic<L>& monic,
                                       const quartic::FourRoots<L>& start) {
    quartic::Refine<L>(monic, start, kappa);
    if (entry.normalised) {
      modes::SetGeneralFields<true, L>(D, kappa, angles.cosine, tensor.element);
    } else {
      modes::SetGeneralFields<false, L>(D, kappa, angles.cosine, tensor.element);
    }
  }

  [[gnu::noinline]] static void CalcTwoFirstOrder(const Task& one, const Task& two,
                                                  const GrazingAngles<V>& angles) {
    one.modes.SetRoot(one.entry, angles);
    two.modes.SetRoot(two.entry, angles);
    one.modes.SetFirstOrder(one.entry, angles);
    two.modes.SetFirstOrder(two.entry, angles);
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
