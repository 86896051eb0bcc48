// SPDX-License-Identifier: GPL-2.0-or-later
// The recursion of Parratt, Phys. Rev. 95, 359 (1954), for a block of angles at once.
//
// w      normal wavevector in units of k0, w² = s² + (n - 1)(n + 1) with s = sin θ: no cancellation at
//        grazing angles, where n² - cos²θ loses up to ten digits
// v      2 w, which saves the halves of a complex root; coefficients don't notice
// u      v / n²; the pi coefficient is (u_upper - u_lower) / (u_upper + u_lower).
//        Where the magnetic shift makes n² a matter of the angle, u = v conj(n²) with m = |n²|² beside it,
//        and the coefficient takes m_lower u_upper and m_upper u_lower, which divides nothing
// F, E   Névot-Croce factor of an interface; factor of the double passage of a slab
// N, D   numerator and denominator of an amplitude ratio. With the coefficient t / q the recursion is
//        N <- t D + q E N,  D <- q D + t E N,  and one division at the end serves the whole stack
//
// The plain recursion stays the judge: where a wavevector is so small that n² - cos²θ is mere rounding error,
// where a roughness factor explodes, or where the result is not finite, the angle is given back to it.
#pragma once

#include "engine/lanes/parratt_waves.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattBlock : private ParrattWaves<V> {
  using Base = ParrattWaves<V>;
  using typename Base::L, typename Base::Z, typename Base::Wave, typename Base::Entry;

 public:
  using typename Base::Scalar, typename Base::Stack;
  using Ray = ParrattRay<Scalar>;

  static bool Run(const Stack& stack, const Scalar* s, std::int32_t count, const Ray* rays,
                  std::int32_t ray_count) {
    bool finite = true;
    for (std::int32_t first = 0; first < count; first += Row<V>::size) {
      const int size = count - first < Row<V>::size ? count - first : Row<V>::size;
      ParrattBlock block(stack, s + first, size);
      for (int sense = 0; sense < stack.senses; ++sense) {
        block.WalkSense(sense);
        for (std::int32_t r = 0; r < ray_count; ++r) {
          if (stack.senses == 1 || r == sense) finite &= block.Finish(rays[r], first, size);
        }
      }
    }
    return finite;
  }

 private:
  struct Ratio {
    ComplexRow<V> n, d;
  };
  struct Reflection {
    ComplexRow<V> sigma, pi;
  };
  // A pi coefficient from u = v / n², or from u = v conj(n²) and m = |n²|².
  enum Kind { kSigma, kPi, kPiOfShifted };

  using Base::Base;
  using Base::CalcWave, Base::CalcRoughness, Base::CalcPassage, Base::AddGrowth, Base::Doubt;
  using Base::stack_, Base::used_, Base::sign_, Base::s_, Base::smallest2_, Base::growth_, Base::doubtful_;

  static constexpr int kRescaleEvery = sizeof(Scalar) == 8 ? 16 : 4;

  // What a polarisation compares at an interface.
  template <Kind kind>
  TOLVIK_INLINE static void Sides(const Wave& below, const Wave& above, int i, Z& lower, Z& upper) {
    lower = kind == kSigma ? below.v[i] : below.u[i];
    upper = kind == kSigma ? above.v[i] : above.u[i];
    if constexpr (kind == kPiOfShifted) {
      lower = above.m[i] * lower;
      upper = below.m[i] * upper;
    }
  }

  template <Kind kind, bool rough, bool first>
  [[gnu::noinline]] void Step(const Wave& below, const Wave& above, const ComplexRow<V>& F,
                              const ComplexRow<V>& E, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      Z lower, upper;
      Sides<kind>(below, above, i, lower, upper);
      const Z q = upper + lower;
      Z t = upper - lower;
      if constexpr (rough) t = t * F[i];
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

  template <Kind kind>
  void AddInterface(bool rough, bool first, const Wave& below, const Wave& above, const ComplexRow<V>& F,
                    const ComplexRow<V>& E, Ratio& ratio) {
    if (first) {
      rough ? Step<kind, true, true>(below, above, F, E, ratio)
            : Step<kind, false, true>(below, above, F, E, ratio);
    } else {
      rough ? Step<kind, true, false>(below, above, F, E, ratio)
            : Step<kind, false, false>(below, above, F, E, ratio);
    }
  }

  // Where the results of a walk are laid down. What no magnetic shift changes serves both senses, as long as
  // there is room for it.
  struct Places {
    int waves = 2, passages = 1, factors = 1;  // the next free ones; those before are used again and again
  };
  struct Place {
    int index;
    bool is_known;  // from the walk in the first sense
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

  const ComplexRow<V>& PassageOf(const Entry& entry, const Wave& wave, Places& places) {
    const Place place = PlaceOf(entry.shifted, 0, places.passages);
    if (!place.is_known) CalcPassage(entry.phase, wave, passage_[place.index]);
    return passage_[place.index];
  }

  const ComplexRow<V>& FactorOf(const Entry& lower, const Entry& upper, const Wave& below, const Wave& above,
                                Places& places) {
    const Place place = PlaceOf(lower.shifted || upper.shifted, 0, places.factors);
    if (!place.is_known) CalcRoughness(lower, below, above, factor_[place.index]);
    return factor_[place.index];
  }

  void Walk() {
    Places places;
    const Wave* below = &WaveOf(0, places);
    for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
      const Entry& lower = stack_.entry[j];
      const Entry& upper = stack_.entry[j + 1];
      const Wave* above = &WaveOf(j + 1, places);
      const ComplexRow<V>& E = j > 0 ? PassageOf(lower, *below, places) : passage_[0];
      if (j > 0) AddGrowth(lower.phase, *below);
      const ComplexRow<V>& F = lower.rough ? FactorOf(lower, upper, *below, *above, places) : factor_[0];
      if (wants_sigma_) AddInterface<kSigma>(lower.rough, j == 0, *below, *above, F, E, sigma_);
      if (wants_pi_) {
        stack_.shifted ? AddInterface<kPiOfShifted>(lower.rough, j == 0, *below, *above, F, E, pi_)
                       : AddInterface<kPi>(lower.rough, j == 0, *below, *above, F, E, pi_);
      }
      if (j % kRescaleEvery == kRescaleEvery - 1) RescaleAll();
      below = above;
    }
  }

  // (upper - lower) / (upper + lower) F
  template <Kind kind>
  [[gnu::noinline]] void CalcReflection(const Wave& below, const Wave& above, bool rough, ComplexRow<V>& r) {
    for (int i = 0; i < used_; ++i) {
      Z lower, upper;
      Sides<kind>(below, above, i, lower, upper);
      const Z q = upper + lower;
      const L scale = L(Scalar(1)) / norm(q);
      Z t = upper - lower;
      if (rough) t = t * factor_[0][i];
      r.Set(i, Z{scale * q.real(), -(scale * q.imag())} * t);
    }
  }

  [[gnu::noinline]] void SharedStep(const ComplexRow<V>& r, const ComplexRow<V>& E, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      const Z n = ratio.n[i] * E[i];
      const Z d = ratio.d[i];
      ratio.n.Set(i, MulAdd(r[i], d, n));
      ratio.d.Set(i, MulAdd(r[i], n, d));
    }
  }

  void StartShared(const ComplexRow<V>& r, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      ratio.n.Set(i, r[i]);
      ratio.d.Set(i, {L(Scalar(1)), L(Scalar(0))});
    }
  }

  // The first of its kind brings the highest number so far.
  void CalcShared() {
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
      if (lower.rough) CalcRoughness(lower, below, above, factor_[0]);
      if (wants_sigma_) CalcReflection<kSigma>(below, above, lower.rough, r.sigma);
      if (wants_pi_) {
        stack_.shifted ? CalcReflection<kPiOfShifted>(below, above, lower.rough, r.pi)
                       : CalcReflection<kPi>(below, above, lower.rough, r.pi);
      }
    }
  }

  void WalkShared() {
    CalcShared();
    if (wants_sigma_) StartShared(reflection_[stack_.entry[0].interface].sigma, sigma_);
    if (wants_pi_) StartShared(reflection_[stack_.entry[0].interface].pi, pi_);
    for (std::int32_t j = 1; j + 1 < stack_.entries; ++j) {
      const Reflection& r = reflection_[stack_.entry[j].interface];
      const ComplexRow<V>& E = passage_[stack_.entry[j].passage];
      AddGrowth(stack_.entry[j].phase, wave_[stack_.entry[j].wave]);
      if (wants_sigma_) SharedStep(r.sigma, E, sigma_);
      if (wants_pi_) SharedStep(r.pi, E, pi_);
      if (j % kRescaleEvery == kRescaleEvery - 1) RescaleAll();
    }
  }

  // The magnetic shift in one of its two senses. What is in doubt in the first stays so in the second: the
  // plain path does both.
  void WalkSense(int sense) {
    sign_ = Scalar(sense == 0 ? 1 : -1);
    wants_sigma_ = stack_.wants_sigma[sense];
    wants_pi_ = stack_.wants_pi[sense];
    stack_.shared ? WalkShared() : Walk();
    CalcIntensities();
  }

  void RescaleAll() {
    if (wants_sigma_) Rescale(sigma_);
    if (wants_pi_) Rescale(pi_);
  }

  // Brings |D| near 1 by a power of two, which rounds nothing.
  [[gnu::noinline]] void Rescale(Ratio& ratio) {
    using Integers = typename L::Integers;
    using Bits = typename L::Bits;
    constexpr int mantissa_bits = FunctionConstants<Scalar>::mantissa_bits;
    constexpr Bits exponent = Bits(sizeof(Scalar) == 8 ? 0x7ff : 0xff) << mantissa_bits;
    constexpr Bits twice_bias = Bits(sizeof(Scalar) == 8 ? 0x7fe : 0xfe) << mantissa_bits;
    for (int i = 0; i < used_; ++i) {
      const L size = abs(ratio.d.real[i]) + abs(ratio.d.imag[i]);
      const L scale = L::FromBits(Integers(twice_bias) - (size.ToBits() & Integers(exponent)));
      Doubt(i, !(size > L(Scalar(0))));
      ratio.n.Set(i, scale * ratio.n[i]);
      ratio.d.Set(i, scale * ratio.d[i]);
    }
  }

  // |N / D|² of both polarisations, and a NaN where the plain recursion has to judge.
  void CalcIntensities() {
    for (int i = 0; i < used_; ++i) {
      const L none(std::numeric_limits<Scalar>::quiet_NaN());
      const Mask<V> sure = smallest2_[i] > L(Scalar(4) * kSmallestModulus2<Scalar>) &&
                           growth_[i] <= L(stack_.largest_growth) && s_[i] >= L(stack_.smallest_sine);
      lost_.Set(i, SelectNegative(doubtful_[i], none, Select(sure, L(Scalar(0)), none)));
      if (wants_sigma_) sigma_.n.real.Set(i, norm(sigma_.n[i]) / norm(sigma_.d[i]));
      if (wants_pi_) pi_.n.real.Set(i, norm(pi_.n[i]) / norm(pi_.d[i]));
    }
  }

  TOLVIK_INLINE L IntensityOf(const Ray& ray, int i) const {
    if (!wants_pi_) return sigma_.n.real[i] * L(ray.sigma);
    if (!wants_sigma_) return pi_.n.real[i] * L(ray.pi);
    return sigma_.n.real[i] * L(ray.sigma) + pi_.n.real[i] * L(ray.pi);
  }

  // Whether all intensities are finite.
  bool Finish(const Ray& ray, std::int32_t first, int size) {
    L zeros(Scalar(0));
    for (int i = 0; i < used_; ++i) {
      const L intensity = IntensityOf(ray, i) + lost_[i];
      result_.Set(i, intensity);
      zeros += intensity - intensity;
    }
    Scalar* out = ray.intensity + first;
    const int full = size / L::size;
    for (int i = 0; i < full; ++i) result_[i].StoreAnywhere(out + i * L::size);
    for (int i = full * L::size; i < size; ++i) out[i] = result_.value[i];
    return AllOf(zeros == L(Scalar(0)));
  }

  bool wants_sigma_ = false, wants_pi_ = false;  // in the present sense of the magnetic shift
  Row<V> lost_, result_;  // a NaN where the angle is lost, else 0; intensities of a ray
  Ratio sigma_, pi_;
  Wave wave_[kMaxShared];
  ComplexRow<V> passage_[kMaxShared], factor_[kMaxShared];  // E and F
  Reflection reflection_[kMaxShared];
};

}  // namespace tolvik::engine::lanes
