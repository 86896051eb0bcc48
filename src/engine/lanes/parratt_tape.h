// SPDX-License-Identifier: GPL-2.0-or-later
// The Parratt recursion on a tape: waves, factors and amplitudes of every entry are kept for the way down.
// Symbols as in parratt_kernel.h; n is E N, the numerator as it arrives at an interface.
#pragma once

#include "engine/lanes/parratt_ratios.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattTape : protected ParrattRatios<V> {
  using Base = ParrattRatios<V>;
  static_assert(sizeof(typename Base::Scalar) == 8);

 protected:
  using typename Base::Complex, typename Base::Entry, typename Base::Face, typename Base::Interface,
      typename Base::L, typename Base::Ratio, typename Base::Real, typename Base::Stack, typename Base::Wave,
      typename Base::Z;

  using Base::stack_, Base::twice_s2_, Base::used_, Base::wants_pi_, Base::wants_sigma_;

  // The tape of an entry and the interface above it, written on the way up and read on the way down.
  struct Level {
    Wave wave;
    Complex passage;  // E
    Face face;
    Ratio sigma, pi;             // n and D below the interface
    Real sigma_scale, pi_scale;  // where they were brought to scale
  };

  // tape: a Level for each entry.
  ParrattTape(const Stack& stack, const double* s, int size, void* tape)
      : Base(stack, s, size), level_(static_cast<Level*>(tape)) {}

  Interface InterfaceAt(std::int32_t j) const {
    const Entry& lower = stack_.entry[j];
    return {stack_.joint[j], level_[j].wave, level_[j + 1].wave,
            level_[j].face,  lower.rough,    lower.shifted || stack_.entry[j + 1].shifted};
  }

  void WalkUp() {
    Base::CalcWave(stack_.entry[0], level_[0].wave);
    for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
      Level &here = level_[j], &next = level_[j + 1];
      Base::CalcWave(stack_.entry[j + 1], next.wave);
      if (j > 0) Base::CalcPassage(stack_.entry[j].phase, here.wave, here.passage);
      Base::CalcFace(stack_.entry[j], here.wave, next.wave, here.face);
      const Interface at = InterfaceAt(j);
      const Complex* E = j > 0 ? &here.passage : nullptr;
      if (wants_sigma_) {
        at.shifted ? StepUp<Coefficient::kSigmaOfShifted>(at, E, here.sigma, next.sigma)
                   : StepUp<Coefficient::kSigma>(at, E, here.sigma, next.sigma);
      }
      if (wants_pi_) {
        at.shifted ? StepUp<Coefficient::kPiOfShifted>(at, E, here.pi, next.pi)
                   : StepUp<Coefficient::kPi>(at, E, here.pi, next.pi);
      }
      if (!IsRescaled(j)) continue;
      if (wants_sigma_) Base::Rescale(next.sigma, &next.sigma_scale);
      if (wants_pi_) Base::Rescale(next.pi, &next.pi_scale);
    }
  }

  static bool IsRescaled(std::int32_t j) { return j % kRescaleEvery == kRescaleEvery - 1; }

  Level* level_;

 private:
  static constexpr int kRescaleEvery = 8;  // squares of D stay in range

  // One polarisation over an interface, from its level to the next one.
  template <Coefficient kind>
  [[gnu::noinline]] void StepUp(const Interface& at, const Complex* E, Ratio& from, Ratio& to) {
    const typename Base::template Coefficients<kind> coefficients(at);
    for (int i = 0; i < used_; ++i) {
      Z t, q;
      coefficients.Set(at, twice_s2_[i], i, t, q);
      if (at.rough) t = t * at.face.F[i];
      if (E == nullptr) {
        to.n.Set(i, t);
        to.d.Set(i, q);
        continue;
      }
      const Z n = from.n[i] * (*E)[i];
      const Z d = from.d[i];
      from.n.Set(i, n);
      to.n.Set(i, MulAdd(q, n, t * d));
      to.d.Set(i, MulAdd(t, n, q * d));
    }
  }
};

}  // namespace tolvik::engine::lanes
