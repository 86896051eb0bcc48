// SPDX-License-Identifier: GPL-2.0-or-later
// Two rows of the matrix of a stack, and their passage through an entry and over an interface.
//
// Amplitudes in the ambient are those in the substrate times M = T0 P1 T1 P2 ..., and the rays need two rows
// of M only. These are carried from the substrate to the ambient; interfaces with scalar matter or
// first-order waves have closed forms.
#pragma once

#include "engine/lanes/matrix_modes.h"

namespace tolvik::engine::lanes {

template <class V>
class MatrixRows {
 protected:
  using L = Lanes<V>;
  using Z = Complexes<V>;
  using Modes = MatrixModes<V>;

  MatrixRows(const MatrixStack& stack, L s) : stack_(stack), angles_(s), growth_(0.0) {
    rows_(0, 0) = rows_(1, 1) = Z(L(1.0));
  }

  TOLVIK_INLINE static bool IsScalar(const MatrixEntry& entry) { return entry.kind == ModeKind::kScalar; }
  TOLVIK_INLINE static bool IsTensor(const MatrixEntry& entry) {
    return entry.kind == ModeKind::kGeneral || entry.kind == ModeKind::kTetragonal;
  }

  // Over the interface between an entry and the one above it.
  TOLVIK_INLINE void Cross(const MatrixEntry& entry, const MatrixEntry& above, const Modes& lower,
                           const Modes& upper) {
    if (IsScalar(entry) && IsScalar(above)) return CrossScalar(entry, lower, upper);
    if (IsScalar(above)) return CrossTensors<IntoScalar, false>(entry, above, lower, upper);
    if (IsScalar(entry)) return CrossTensors<IntoTensor, true>(entry, above, lower, upper);
    CrossTensors<IntoTensor, false>(entry, above, lower, upper);
  }

  // Row by row, so that the amplitudes of one row stay in registers.
  [[gnu::noinline]] void PassFirstOrder(const MatrixEntry& entry, const Modes& lower, const Modes& upper) {
    const L length(stack_.k0 * entry.d);
    const FirstOrderTurn turn{length * lower.waves.TurnDown(), length * lower.waves.TurnUp()};
    const Z up = PropagateDown(entry.d, lower.waves.kappa);
    AddGrowth(length, abs(lower.waves.kappa.imag()));
    const FirstOrderCrossing<V> crossing(entry.joint, angles_, lower.waves, upper.waves);
    if (entry.sigma == 0.0) return PassRows<false>(turn, up, crossing, Z());
    PassRows<true>(turn, up, crossing, OppositeRoughness(entry, lower.waves.kappa, upper.waves.kappa));
  }

  [[gnu::noinline]] void Propagate(const MatrixEntry& entry, const Modes& modes) {
    L steepest = abs(modes.kappa[0].imag());
    if (IsTensor(entry)) {
      for (int c = 1; c < 4; ++c) steepest = Max(steepest, abs(modes.kappa[c].imag()));
      PropagateEach(entry.d, modes.kappa);
    } else {
      const Z up = PropagateDown(entry.d, modes.kappa[0]);
      for (int c = 2; c < 4; ++c) ScaleColumn(c, up);
    }
    AddGrowth(L(stack_.k0 * entry.d), steepest);
  }

  const MatrixStack& stack_;
  const GrazingAngles<V> angles_;
  L growth_;         // sum of 2 k0 d |Im kappa|
  Matrix4<L> rows_;  // the first two

 private:
  // The rows of T = D_lower D_upper⁻¹, each from the fields of one lower wave.
  struct IntoScalar {
    Z half_inverse_w, half_inverse_q, half_inverse_n;

    TOLVIK_INLINE IntoScalar(const MatrixEntry& above, const Modes& upper)
        : half_inverse_w(L(0.5) * upper.inverse_w),
          half_inverse_q(half_inverse_w * upper.n),
          half_inverse_n(L(0.5) * Broadcast<V>(above.inverse)) {}
    TOLVIK_INLINE void operator()(const Z (&fields)[4], Z (&t)[4]) const {
      const Z x = L(0.5) * fields[0];
      const Z y = fields[1] * half_inverse_q;
      const Z hx = fields[2] * half_inverse_n;
      const Z hy = fields[3] * half_inverse_w;
      t[0] = x + hy;
      t[1] = y - hx;
      t[2] = x - hy;
      t[3] = -(y + hx);
    }
  };
  struct IntoTensor {
    const Matrix4<L>& A;

    TOLVIK_INLINE IntoTensor(const MatrixEntry&, const Modes& upper) : A(upper.inverse) {}
    TOLVIK_INLINE void operator()(const Z (&f)[4], Z (&t)[4]) const {
      for (int c = 0; c < 4; ++c) {
        t[c] = MulAdd(f[3], A(3, c), MulAdd(f[2], A(2, c), MulAdd(f[1], A(1, c), f[0] * A(0, c))));
      }
    }
  };

  // Fields (ex, ey, hx, hy) of wave r below the interface; of scalar matter in the order sigma and pi down,
  // sigma and pi up.
  TOLVIK_INLINE static void GetFields(const Modes& lower, bool scalar, int r, Z (&fields)[4]) {
    if (!scalar) {
      for (int k = 0; k < 4; ++k) fields[k] = lower.D(r, k);
    } else if (r % 2 == 0) {
      fields[0] = Z(L(1.0));
      fields[1] = fields[2] = Z();
      fields[3] = r == 0 ? lower.w : -lower.w;
    } else {
      fields[0] = fields[3] = Z();
      fields[1] = r == 1 ? lower.q : -lower.q;
      fields[2] = -lower.n;
    }
  }

  // Row by row of T.
  template <class Into, bool scalar_below>
  [[gnu::noinline]] void CrossTensors(const MatrixEntry& entry, const MatrixEntry& above, const Modes& lower,
                                      const Modes& upper) {
    const Into into(above, upper);
    const InterfaceRoughness<V> roughness(entry.sigma * stack_.k0, lower.kappa, upper.kappa);
    Z T[4][4];
#pragma GCC unroll 4
    for (int r = 0; r < 4; ++r) {
      Z fields[4];
      GetFields(lower, scalar_below, r, fields);
      into(fields, T[r]);
      roughness.Apply(r, lower.kappa[r], upper.kappa, T[r]);
    }
    MultiplyRows(T);
  }

  // Row by row, so that the old amplitudes of one row stay in registers.
  TOLVIK_INLINE void MultiplyRows(const Z (&T)[4][4]) {
    for (int row = 0; row < 2; ++row) {
      const Z old[4] = {rows_(row, 0), rows_(row, 1), rows_(row, 2), rows_(row, 3)};
#pragma GCC unroll 4
      for (int c = 0; c < 4; ++c) {
        rows_(row, c) =
            MulAdd(old[3], T[3][c], MulAdd(old[2], T[2][c], MulAdd(old[1], T[1][c], old[0] * T[0][c])));
      }
    }
  }

  // The two roughness factors, of opposite waves and of waves that run the same way, as one ratio: a common
  // factor of all amplitudes does not change the reflection.
  TOLVIK_INLINE Z OppositeRoughness(const MatrixEntry& entry, const Z& lower, const Z& upper) {
    const double sigma_k0 = entry.sigma * stack_.k0;
    const L scale(-0.5 * sigma_k0 * sigma_k0);
    if (stack_.transmission) {
      const Z difference = upper - lower;
      const Z along = exp(scale * (difference * difference));
      for (int row = 0; row < 2; ++row) {
        for (int c = 0; c < 4; ++c) rows_(row, c) *= along;
      }
    }
    return exp((L(4.0) * scale) * (upper * lower));
  }

  // The magnetisation mixes sigma and pi on the way.
  struct FirstOrderTurn {
    Z down, up;
  };

  template <bool rough>
  TOLVIK_INLINE void PassRows(const FirstOrderTurn& turn, const Z& up, const FirstOrderCrossing<V>& crossing,
                              const Z& opposite) {
    for (int r = 0; r < 2; ++r) {
      Z row[4] = {MulAdd(rows_(r, 1), turn.down, rows_(r, 0)), NegMulAdd(rows_(r, 0), turn.down, rows_(r, 1)),
                  up * NegMulAdd(rows_(r, 3), turn.up, rows_(r, 2)),
                  up * MulAdd(rows_(r, 2), turn.up, rows_(r, 3))};
      crossing.template CarryRow<rough>(opposite, row);
      for (int c = 0; c < 4; ++c) rows_(r, c) = row[c];
    }
  }

  // Both sides scalar: T joins sigma with sigma, pi with pi only.
  [[gnu::noinline]] void CrossScalar(const MatrixEntry& entry, const Modes& lower, const Modes& upper) {
    const L half(0.5);
    const Z ratio = lower.w * upper.inverse_w;
    const Z field = Broadcast<V>(entry.across_index);
    const Z pi_ratio = ratio * Broadcast<V>(entry.along_index);
    const Z along[2] = {half + half * ratio, field + pi_ratio};
    Z opposite[2] = {half - half * ratio, field - pi_ratio};
    if (entry.sigma != 0.0) {
      const Z factor = OppositeRoughness(entry, lower.w, upper.w);
      for (int c = 0; c < 2; ++c) opposite[c] *= factor;
    }
    for (int row = 0; row < 2; ++row) {
      for (int c = 0; c < 2; ++c) {
        const Z down = rows_(row, c), up = rows_(row, c + 2);
        rows_(row, c) = MulAdd(down, along[c], up * opposite[c]);
        rows_(row, c + 2) = MulAdd(down, opposite[c], up * along[c]);
      }
    }
  }

  TOLVIK_INLINE void AddGrowth(L length, L steepest) {
    growth_ = MulAdd(length + length, steepest, growth_);
  }

  TOLVIK_INLINE Z PropagationFactor(double d, const Z& kappa) const {
    return modes::PropagationFactor<L>(L(stack_.k0), L(d), kappa);
  }

  // For reflection only the ratios of the four factors matter, and those of a pair are near 1.
  TOLVIK_INLINE void PropagateEach(double d, const Z (&kappa)[4]) {
    if (stack_.transmission) {
      for (int c = 0; c < 4; ++c) ScaleColumn(c, PropagationFactor(d, kappa[c]));
      return;
    }
    const Z up = PropagationFactor(d, kappa[2] - kappa[0]);
    ScaleColumn(1, PropagationStep(d, kappa[1] - kappa[0]));
    ScaleColumn(2, up);
    ScaleColumn(3, up * PropagationStep(d, kappa[3] - kappa[2]));
  }

  TOLVIK_INLINE Z PropagationStep(double d, const Z& kappa) const {
    const L length(stack_.k0 * d);
    return ExponentialNearOne(Z(length * kappa.imag(), -(length * kappa.real())));
  }

  // Waves down have the factor exp(-i k0 d kappa), waves up its inverse; for reflection only the ratio
  // matters. Returns the factor of waves up.
  TOLVIK_INLINE Z PropagateDown(double d, const Z& kappa) {
    if (!stack_.transmission) return PropagationFactor(-2.0 * d, kappa);
    const Z down = PropagationFactor(d, kappa);
    for (int c = 0; c < 2; ++c) ScaleColumn(c, down);
    return PropagationFactor(-d, kappa);
  }

  TOLVIK_INLINE void ScaleColumn(int c, const Z& factor) {
    for (int row = 0; row < 2; ++row) rows_(row, c) *= factor;
  }
};

}  // namespace tolvik::engine::lanes
