// SPDX-License-Identifier: GPL-2.0-or-later
// The walk through a stack that repeats itself: equal quantities are calculated once. Symbols as in
// parratt_kernel.h.
#pragma once

#include "engine/lanes/parratt_ratios.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattShared : protected ParrattRatios<V> {
  using Base = ParrattRatios<V>;
  using typename Base::Complex, typename Base::Entry, typename Base::Face, typename Base::Interface,
      typename Base::L, typename Base::Ratio, typename Base::Wave, typename Base::Z;

 protected:
  using Base::Base;
  using typename Base::Scalar;

  // From the substrate to the ambient; leaves the amplitude ratios in sigma_ and pi_.
  void WalkThrough() {
    CalcDifferent();
    if (wants_sigma_) Start(reflection_[stack_.entry[0].interface].sigma, sigma_);
    if (wants_pi_) Start(reflection_[stack_.entry[0].interface].pi, pi_);
    for (std::int32_t j = 1; j + 1 < stack_.entries; ++j) {
      const Reflection& r = reflection_[stack_.entry[j].interface];
      const Complex& E = passage_[stack_.entry[j].passage];
      AddGrowth(stack_.entry[j].phase, wave_[stack_.entry[j].wave]);
      if (wants_sigma_) Step(r.sigma, E, sigma_);
      if (wants_pi_) Step(r.pi, E, pi_);
      RescaleAfter(j);
    }
  }

 private:
  using Base::AddGrowth, Base::CalcPassage, Base::CalcFace, Base::CalcWave, Base::RescaleAfter;
  using Base::pi_, Base::sigma_, Base::stack_, Base::twice_s2_, Base::used_, Base::wants_pi_,
      Base::wants_sigma_;

  struct Reflection {
    Complex sigma, pi;
  };

  // t / q
  template <Coefficient kind>
  [[gnu::noinline]] void CalcReflection(const Interface& at, Complex& r) {
    const typename Base::template Coefficients<kind> coefficients(at);
    for (int i = 0; i < used_; ++i) {
      Z t, q;
      coefficients.Set(at, twice_s2_[i], i, t, q);
      if (at.rough) t = t * at.face.F[i];
      const L scale = L(Scalar(1)) / norm(q);
      r.Set(i, Z{scale * q.real(), -(scale * q.imag())} * t);
    }
  }

  [[gnu::noinline]] void Step(const Complex& r, const Complex& E, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      const Z n = ratio.n[i] * E[i];
      const Z d = ratio.d[i];
      ratio.n.Set(i, MulAdd(r[i], d, n));
      ratio.d.Set(i, MulAdd(r[i], n, d));
    }
  }

  void Start(const Complex& r, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      ratio.n.Set(i, r[i]);
      ratio.d.Set(i, {L(Scalar(1)), L(Scalar(0))});
    }
  }

  // Waves, passages and interfaces, one of each kind: the first of a kind has the highest number so far.
  void CalcDifferent() {
    int waves = 0, passages = 0, interfaces = 0;
    for (std::int32_t j = 0; j < stack_.entries; ++j) {
      const Entry& entry = stack_.entry[j];
      if (entry.wave == waves) CalcWave(entry, wave_[waves++]);
      if (j == 0 || j + 1 == stack_.entries) continue;
      if (entry.passage == passages) CalcPassage(entry.phase, wave_[entry.wave], passage_[passages++]);
    }
    for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
      const Entry& lower = stack_.entry[j];
      if (lower.interface != interfaces) continue;
      const Wave& below = wave_[lower.wave];
      const Wave& above = wave_[stack_.entry[j + 1].wave];
      Reflection& r = reflection_[interfaces++];
      CalcFace(lower, below, above, face_);
      const bool shifted = lower.shifted || stack_.entry[j + 1].shifted;
      const Interface at = {stack_.joint[j], below, above, face_, lower.rough, shifted};
      if (wants_sigma_) {
        shifted ? CalcReflection<Coefficient::kSigmaOfShifted>(at, r.sigma)
                : CalcReflection<Coefficient::kSigma>(at, r.sigma);
      }
      if (wants_pi_) {
        shifted ? CalcReflection<Coefficient::kPiOfShifted>(at, r.pi)
                : CalcReflection<Coefficient::kPi>(at, r.pi);
      }
    }
  }

  Wave wave_[kMaxShared];
  Complex passage_[kMaxShared];  // E
  Face face_;                    // of the present interface
  Reflection reflection_[kMaxShared];
};

}  // namespace tolvik::engine::lanes
