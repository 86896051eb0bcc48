// SPDX-License-Identifier: GPL-2.0-or-later
// The walk through a stack whose entries differ: waves and factors are calculated entry by entry. Symbols as
// in parratt_kernel.h.
#pragma once

#include "engine/lanes/parratt_ratios.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattStepwise : protected ParrattRatios<V> {
  using Base = ParrattRatios<V>;
  using typename Base::Complex, typename Base::Entry, typename Base::Face, typename Base::Interface,
      typename Base::Ratio, typename Base::Wave, typename Base::Z;

 protected:
  using Base::Base;
  using typename Base::Scalar;

  // From the substrate to the ambient; leaves the amplitude ratios in sigma_ and pi_.
  void WalkThrough() {
    Places places;
    const Wave* below = &WaveOf(0, places);
    for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
      const Entry& lower = stack_.entry[j];
      const Entry& upper = stack_.entry[j + 1];
      const Wave* above = &WaveOf(j + 1, places);
      const Complex& E = j > 0 ? PassageOf(lower, *below, places) : passage_[0];
      if (j > 0) AddGrowth(lower.phase, *below);
      const Face& face = FaceOf(lower, upper, *below, *above, places);
      const Interface at = {
          stack_.joint[j], *below, *above, face, lower.rough, lower.shifted || upper.shifted};
      if (wants_sigma_) {
        at.shifted ? AddInterface<Coefficient::kSigmaOfShifted>(j == 0, at, E, sigma_)
                   : AddInterface<Coefficient::kSigma>(j == 0, at, E, sigma_);
      }
      if (wants_pi_) {
        at.shifted ? AddInterface<Coefficient::kPiOfShifted>(j == 0, at, E, pi_)
                   : AddInterface<Coefficient::kPi>(j == 0, at, E, pi_);
      }
      RescaleAfter(j);
      below = above;
    }
    RescaleForSquares(stack_.entries - 1);
  }

 private:
  using Base::AddGrowth, Base::CalcPassage, Base::CalcFace, Base::CalcWave, Base::RescaleAfter,
      Base::RescaleForSquares;
  using Base::pi_, Base::sigma_, Base::sign_, Base::stack_, Base::twice_s2_, Base::used_, Base::wants_pi_,
      Base::wants_sigma_;

  template <Coefficient kind, bool rough, bool first>
  [[gnu::noinline]] void Step(const Interface& at, const Complex& E, Ratio& ratio) {
    const typename Base::template Coefficients<kind> coefficients(at);
    for (int i = 0; i < used_; ++i) {
      Z t, q;
      coefficients.Set(at, twice_s2_[i], i, t, q);
      if constexpr (rough) t = t * at.face.F[i];
      if constexpr (first) {
        ratio.n.Set(i, t);
        ratio.d.Set(i, q);
      } else {
        const Z n = ratio.n[i] * E[i];
        const Z d = ratio.d[i];
        ratio.n.Set(i, MulAdd(q, n, t * d));
        ratio.d.Set(i, MulAdd(t, n, q * d));
      }
    }
  }

  template <Coefficient kind>
  void AddInterface(bool first, const Interface& at, const Complex& E, Ratio& ratio) {
    if (first) {
      at.rough ? Step<kind, true, true>(at, E, ratio) : Step<kind, false, true>(at, E, ratio);
    } else {
      at.rough ? Step<kind, true, false>(at, E, ratio) : Step<kind, false, false>(at, E, ratio);
    }
  }

  // Stored waves and factors. Those without a magnetic shift serve both senses, as long as there is room for
  // them.
  struct Places {
    int waves = 2, passages = 1, faces = 1;  // the next free ones; those before are reused
  };
  struct Place {
    int index;
    bool is_known;  // from the first sense
  };
  Place PlaceOf(bool shifted, int passing, int& next) const {
    if (stack_.senses == 1 || shifted || next == kMaxShared) return {passing, false};
    return {next++, sign_ < Scalar(0)};
  }

  const Wave& WaveOf(std::int32_t j, Places& places) {
    const Place place = PlaceOf(stack_.entry[j].shifted, j & 1, places.waves);
    if (!place.is_known) CalcWave(stack_.entry[j], wave_[place.index]);
    return wave_[place.index];
  }

  const Complex& PassageOf(const Entry& entry, const Wave& wave, Places& places) {
    const Place place = PlaceOf(entry.shifted, 0, places.passages);
    if (!place.is_known) CalcPassage(entry.phase, wave, passage_[place.index]);
    return passage_[place.index];
  }

  const Face& FaceOf(const Entry& lower, const Entry& upper, const Wave& below, const Wave& above,
                     Places& places) {
    const Place place = PlaceOf(lower.shifted || upper.shifted, 0, places.faces);
    if (!place.is_known) CalcFace(lower, below, above, face_[place.index]);
    return face_[place.index];
  }

  Wave wave_[kMaxShared];
  Complex passage_[kMaxShared];  // E
  Face face_[kMaxShared];
};

}  // namespace tolvik::engine::lanes
