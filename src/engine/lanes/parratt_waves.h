// SPDX-License-Identifier: GPL-2.0-or-later
// The waves of a block of angles: normal wavevectors in the entries of a stack, roughness factors between
// them and passages through them. Symbols as in parratt_kernel.h.
#pragma once

#include "engine/lanes/block.h"
#include "engine/lanes/limits.h"
#include "engine/lanes/parratt_stack.h"

namespace tolvik::engine::lanes {

/// registers: width of the block, in registers per row.
template <class V, int registers = kBlockRegisters>
class ParrattWaves {
  struct WaveLanes;

 protected:
  using L = Lanes<V>;
  using Z = Complexes<V>;
  using Scalar = typename L::Scalar;
  using Real = Row<V, registers>;
  using Complex = ComplexRow<V, registers>;
  using Stack = ParrattStack<Scalar>;
  using Entry = ParrattEntry<Scalar>;

  struct Wave {
    Complex v;
    Complex chi;  // n² - 1; only in a stack with shifted entries
  };

  // Places past the last angle repeat it: that costs little and does no harm.
  ParrattWaves(const Stack& stack, const Scalar* s, int size)
      : stack_(stack), used_((size + L::size - 1) / L::size) {
    const int full = size / L::size;
    for (int i = 0; i < full; ++i) s_.Set(i, L::LoadAnywhere(s + i * L::size));
    for (int i = full * L::size; i < used_ * L::size; ++i) s_.value[i] = s[i < size ? i : size - 1];
    for (int i = 0; i < used_; ++i) {
      twice_s2_.Set(i, (s_[i] + s_[i]) * s_[i]);
      smallest2_.Set(i, L(Scalar(1)));
      doubtful_.Set(i, L(Scalar(0)));
      growth_.Set(i, L(Scalar(0)));
    }
  }

  TOLVIK_INLINE static Z Of(const ComplexPair<Scalar>& z) { return {L(z.real), L(z.imag)}; }

  TOLVIK_INLINE void Doubt(int i, Mask<V> mask) {
    doubtful_.Set(i, Select(mask, L(Scalar(-0.0)), doubtful_[i]));
  }

  // A root is a long chain of dependent steps, so two registers are calculated side by side.
  [[gnu::noinline]] void CalcWave(const Entry& entry, Wave& wave) {
    if (entry.shifted) return CalcShiftedWave(entry, wave);
    if (entry.chi_real == Scalar(0) && entry.chi_imag == Scalar(0)) return CalcVacuumWave(entry, wave);
    const Z chi{L(Scalar(2) * entry.chi_real), L(Scalar(2) * entry.chi_imag)};
    const auto wave_at = [&](int i) TOLVIK_INLINE_LAMBDA { return WaveOf(chi, i); };
    const auto set = [&](int i, const WaveLanes& w)
                         TOLVIK_INLINE_LAMBDA { SetWave(wave, i, w, entry.guarded); };
    ForTwoAtOnce(used_, wave_at, set);
  }

  // Here w is s.
  void CalcVacuumWave(const Entry& entry, Wave& wave) {
    const L zero(Scalar(0));
    for (int i = 0; i < used_; ++i) {
      SetWave(wave, i, {{s_[i] + s_[i], zero}, {}, twice_s2_[i] * twice_s2_[i], zero}, entry.guarded);
    }
  }

  void CalcShiftedWave(const Entry& entry, Wave& wave) {
    CalcCosines();
    const auto shifted = [&](int i) TOLVIK_INLINE_LAMBDA { return ShiftedWave(entry, i); };
    const auto set = [&](int i, const WaveLanes& w) TOLVIK_INLINE_LAMBDA {
      SetWave(wave, i, w, entry.guarded);
      // A negative absorption, -0 included, reverses the wave.
      if (entry.guarded) doubtful_.Set(i, doubtful_[i].Register() | w.k.Register());
    };
    ForTwoAtOnce(used_, shifted, set);
  }

  void CalcCosines() {
    if (has_cosines_) return;
    for (int i = 0; i < used_; ++i) cosine_.Set(i, sqrt(NegMulAdd(s_[i], s_[i], L(Scalar(1)))));
    has_cosines_ = true;
  }

  // What both coefficients of an interface need: the product of its waves, and F if it is rough.
  struct Face {
    Complex product, F;
  };

  [[gnu::noinline]] void CalcFace(const Entry& lower, const Wave& below, const Wave& above, Face& face) {
    for (int i = 0; i < used_; ++i) face.product.Set(i, below.v[i] * above.v[i]);
    if (!lower.rough) return;
    const L quarter(Scalar(-0.25) * lower.roughness);
    if (lower.short_phase) {
      for (int i = 0; i < used_; ++i) face.F.Set(i, ExpOfShortPhase(quarter * face.product[i]));
    } else {
      for (int i = 0; i < used_; ++i) face.F.Set(i, exp(quarter * face.product[i]));
    }
    if (!stack_.tame) WatchRoughness(quarter, face.product);
  }

  void WatchRoughness(L quarter, const Complex& product) {
    using C = FunctionConstants<Scalar>;
    for (int i = 0; i < used_; ++i) {
      const Z exponent = quarter * product[i];
      const Mask<V> vanishes = exponent.real() < L(Scalar(1.1) * C::exp_lowest);
      Doubt(i, !(exponent.real() < L(kLargestExponent<Scalar>)));
      Doubt(i, !(abs(exponent.imag()) < L(C::max_phase)) && !vanishes);
    }
  }

  [[gnu::noinline]] void CalcPassage(Scalar phase, const Wave& wave, Complex& E) {
    const L half(Scalar(0.5) * phase), minus(Scalar(-0.5) * phase);
    for (int i = 0; i < used_; ++i) {
      const Z v = wave.v[i];
      E.Set(i, exp(Z{v.imag() * minus, v.real() * half}));
    }
  }

  void AddGrowth(Scalar phase, const Wave& wave) {
    if (stack_.largest_growth == std::numeric_limits<Scalar>::infinity()) return;
    for (int i = 0; i < used_; ++i) {
      growth_.Set(i, MulAdd(L(Scalar(0.5) * phase), wave.v.imag[i], growth_[i]));
    }
  }

 private:
  static_assert(Scalar(2) * kMaxPhase<Scalar> <= FunctionConstants<Scalar>::max_phase);
  static_assert(Scalar(kShortRoughnessPhase) <= FunctionConstants<Scalar>::short_phase);

  // 2 sqrt(z) and |2 z|² of a z in the upper half of the plane, given as 2 z = x + i y.
  TOLVIK_INLINE static Z TwiceRoot(L x, L y, L& modulus2) {
    modulus2 = MulAdd(x, x, y * y);
    const L larger2 = SquareRootOfNormal(modulus2) + abs(x);
    L larger, smaller;
    if constexpr (V::estimates) {
      L inverse;
      larger = SquareRootAndInverse(larger2, inverse);
      smaller = y * inverse;
    } else {
      larger = sqrt(larger2);
      smaller = y / larger;
    }
    return {SelectNegative(x, smaller, larger), SelectNegative(x, larger, smaller)};
  }

  // A wave at the angles of one register, n² - 1 doubled; the absorption k only of shifted entries.
  struct WaveLanes {
    Z v, chi;
    L modulus2, k;
  };

  // chi doubled.
  TOLVIK_INLINE WaveLanes WaveOf(Z chi, int i) const {
    WaveLanes w;
    w.v = TwiceRoot(twice_s2_[i] + chi.real(), chi.imag(), w.modulus2);
    w.chi = chi;
    return w;
  }

  // The magnetic shift is proportional to the cosine of the angle.
  TOLVIK_INLINE WaveLanes ShiftedWave(const Entry& entry, int i) const {
    const L one(Scalar(1));
    const L ddelta(sign_ * entry.ddelta), dbeta(sign_ * entry.dbeta);
    const L c = cosine_[i];
    const L n = L(entry.index_real) + ddelta * c, k = L(entry.index_imag) - dbeta * c;
    const L n_less = n - one, twice_k = k + k;
    const Z chi{NegMulAdd(twice_k, k, (n_less + n_less) * (n + one)), (n + n) * twice_k};  // doubled
    WaveLanes w = WaveOf(chi, i);
    w.k = k;
    return w;
  }

  TOLVIK_INLINE void SetWave(Wave& wave, int i, const WaveLanes& w, bool guarded) {
    wave.v.Set(i, w.v);
    if (stack_.shifted) wave.chi.Set(i, L(Scalar(0.5)) * w.chi);
    if (guarded) smallest2_.Set(i, Min(smallest2_[i], w.modulus2));
  }

 protected:
  const Stack& stack_;
  int used_;         // registers of the block that hold an angle
  Scalar sign_ = 1;  // of the magnetic shift, in its present sense
  Real s_, twice_s2_;
  Real cosine_;  // after CalcCosines
  Real smallest2_, growth_;
  Real doubtful_;  // negative, -0 included, where the plain recursion has to calculate

 private:
  bool has_cosines_ = false;
};

}  // namespace tolvik::engine::lanes
