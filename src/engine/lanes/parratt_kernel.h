// SPDX-License-Identifier: GPL-2.0-or-later
// The recursion of Parratt, Phys. Rev. 95, 359 (1954), for a block of angles at once.
//
// w      normal wavevector in units of k0, w² = s² + (n - 1)(n + 1) with s = sin θ: no cancellation at
// grazing
//        angles, where n² - cos²θ loses up to ten digits
// v      2 w, which saves the halves of a complex root; coefficients don't notice
// u      v / n²; the pi coefficient is (u_upper - u_lower) / (u_upper + u_lower)
// F, E   Névot-Croce factor of an interface; factor of the double passage of a slab
// N, D   numerator and denominator of an amplitude ratio. With the coefficient t / q the recursion is
//        N <- t D + q E N,  D <- q D + t E N,  and one division at the end serves the whole stack
//
// The plain recursion stays the judge: where a wavevector is so small that n² - cos²θ is mere rounding error,
// where a roughness factor explodes, or where the result is not finite, the angle is given back to it.
#pragma once

#include "engine/lanes/block.h"
#include "engine/lanes/parratt_stack.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattBlock {
 public:
  using L = Lanes<V>;
  using Z = Complexes<V>;
  using Scalar = typename L::Scalar;
  using Stack = ParrattStack<Scalar>;
  using Entry = ParrattEntry<Scalar>;
  using Ray = ParrattRay<Scalar>;

  static bool Run(const Stack& stack, const Scalar* s, std::int32_t count, const Ray* rays,
                  std::int32_t ray_count) {
    bool finite = true;
    for (std::int32_t first = 0; first < count; first += Row<V>::size) {
      const int size = count - first < Row<V>::size ? count - first : Row<V>::size;
      ParrattBlock block(stack, s + first, size);
      if (stack.shared) {
        block.WalkShared();
      } else {
        block.Walk();
      }
      block.RescaleAll();
      block.CalcIntensities();
      for (std::int32_t r = 0; r < ray_count; ++r) finite &= block.Finish(rays[r], first, size);
    }
    return finite;
  }

 private:
  struct Wave {
    ComplexRow<V> v, u;
  };
  struct Ratio {
    ComplexRow<V> n, d;
  };
  struct Reflection {
    ComplexRow<V> sigma, pi;
  };

  // Largest exponent of a roughness factor that is sure not to overflow on the way.
  static constexpr Scalar kLargestExponent = sizeof(Scalar) == 8 ? Scalar(80) : Scalar(10);
  static_assert(Scalar(kShortRoughnessPhase) <= FunctionConstants<Scalar>::short_phase);
  static constexpr int kRescaleEvery = sizeof(Scalar) == 8 ? 16 : 4;

  // Places past the last angle repeat it: they cost little and can't disturb.
  ParrattBlock(const Stack& stack, const Scalar* s, int size)
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

  TOLVIK_INLINE void Doubt(int i, Mask<V> mask) {
    doubtful_.Set(i, Select(mask, L(Scalar(-0.0)), doubtful_[i]));
  }

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

  TOLVIK_INLINE void SetWave(Wave& wave, int i, L twice_x, L twice_y, Z inverse, bool guarded) {
    L modulus2;
    const Z v = TwiceRoot(twice_x, twice_y, modulus2);
    wave.v.Set(i, v);
    if (stack_.wants_pi) wave.u.Set(i, v * inverse);
    if (guarded) smallest2_.Set(i, Min(smallest2_[i], modulus2));
  }

  [[gnu::noinline]] void CalcWave(const Entry& entry, Wave& wave) {
    if (entry.shifted) return CalcShiftedWave(entry, wave);
    const Z inverse{L(entry.inverse_real), L(entry.inverse_imag)};
    const L chi_real(Scalar(2) * entry.chi_real), chi_imag(Scalar(2) * entry.chi_imag);
    for (int i = 0; i < used_; ++i) {
      SetWave(wave, i, twice_s2_[i] + chi_real, chi_imag, inverse, entry.guarded);
    }
  }

  void CalcCosines() {
    if (has_cosines_) return;
    for (int i = 0; i < used_; ++i) cosine_.Set(i, sqrt(NegMulAdd(s_[i], s_[i], L(Scalar(1)))));
    has_cosines_ = true;
  }

  // The magnetic shift goes with the cosine of the angle.
  void CalcShiftedWave(const Entry& entry, Wave& wave) {
    const L one(Scalar(1)), two(Scalar(2));
    CalcCosines();
    for (int i = 0; i < used_; ++i) {
      const L c = cosine_[i];
      const L n = L(entry.index_real) + L(entry.ddelta) * c, k = L(entry.index_imag) - L(entry.dbeta) * c;
      const L n_less = n - one, twice_k = k + k;
      const Z chi{NegMulAdd(twice_k, k, (n_less + n_less) * (n + one)), (n + n) * twice_k};  // doubled
      Z inverse{one, one};  // 1 / n², of no use to sigma
      if (stack_.wants_pi) {
        const L n2 = chi.real() + two;
        const L scale = two / MulAdd(n2, n2, chi.imag() * chi.imag());
        inverse = {n2 * scale, -(chi.imag() * scale)};
      }
      SetWave(wave, i, twice_s2_[i] + chi.real(), chi.imag(), inverse, entry.guarded);
      // A negative absorption, -0 included, turns the wave about.
      if (entry.guarded) doubtful_.Set(i, doubtful_[i].Register() | k.Register());
    }
  }

  [[gnu::noinline]] void CalcRoughness(const Entry& lower, const Wave& below, const Wave& above,
                                       ComplexRow<V>& F) {
    const L quarter(Scalar(-0.25) * lower.roughness);
    if (lower.short_phase) {
      for (int i = 0; i < used_; ++i) F.Set(i, ExpOfShortPhase(quarter * (below.v[i] * above.v[i])));
    } else {
      for (int i = 0; i < used_; ++i) F.Set(i, exp(quarter * (below.v[i] * above.v[i])));
    }
    if (!stack_.tame) WatchRoughness(quarter, below, above);
  }

  void WatchRoughness(L quarter, const Wave& below, const Wave& above) {
    using C = FunctionConstants<Scalar>;
    for (int i = 0; i < used_; ++i) {
      const Z exponent = quarter * (below.v[i] * above.v[i]);
      const Mask<V> vanishes = exponent.real() < L(Scalar(1.1) * C::exp_lowest);
      Doubt(i, !(exponent.real() < L(kLargestExponent)));
      Doubt(i, !(abs(exponent.imag()) < L(C::max_phase)) && !vanishes);
    }
  }

  [[gnu::noinline]] void CalcPassage(Scalar phase, const Wave& wave, ComplexRow<V>& E) {
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

  template <bool rough, bool first>
  [[gnu::noinline]] void Step(const ComplexRow<V>& lower, const ComplexRow<V>& upper, const ComplexRow<V>& F,
                              const ComplexRow<V>& E, Ratio& ratio) {
    for (int i = 0; i < used_; ++i) {
      const Z q = upper[i] + lower[i];
      Z t = upper[i] - lower[i];
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

  void AddInterface(bool rough, bool first, const ComplexRow<V>& lower, const ComplexRow<V>& upper,
                    Ratio& ratio) {
    if (first) {
      rough ? Step<true, true>(lower, upper, roughness_, passage_[0], ratio)
            : Step<false, true>(lower, upper, roughness_, passage_[0], ratio);
    } else {
      rough ? Step<true, false>(lower, upper, roughness_, passage_[0], ratio)
            : Step<false, false>(lower, upper, roughness_, passage_[0], ratio);
    }
  }

  void Walk() {
    CalcWave(stack_.entry[0], wave_[0]);
    for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
      const Entry& lower = stack_.entry[j];
      const Wave& below = wave_[j & 1];
      Wave& above = wave_[~j & 1];
      CalcWave(stack_.entry[j + 1], above);
      if (j > 0) {
        CalcPassage(lower.phase, below, passage_[0]);
        AddGrowth(lower.phase, below);
      }
      if (lower.rough) CalcRoughness(lower, below, above, roughness_);
      if (stack_.wants_sigma) AddInterface(lower.rough, j == 0, below.v, above.v, sigma_);
      if (stack_.wants_pi) AddInterface(lower.rough, j == 0, below.u, above.u, pi_);
      if (j % kRescaleEvery == kRescaleEvery - 1) RescaleAll();
    }
  }

  // (upper - lower) / (upper + lower) F
  [[gnu::noinline]] void CalcReflection(const ComplexRow<V>& lower, const ComplexRow<V>& upper, bool rough,
                                        ComplexRow<V>& r) {
    for (int i = 0; i < used_; ++i) {
      const Z q = upper[i] + lower[i];
      const L scale = L(Scalar(1)) / norm(q);
      Z t = upper[i] - lower[i];
      if (rough) t = t * roughness_[i];
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
      if (lower.rough) CalcRoughness(lower, below, above, roughness_);
      if (stack_.wants_sigma) CalcReflection(below.v, above.v, lower.rough, r.sigma);
      if (stack_.wants_pi) CalcReflection(below.u, above.u, lower.rough, r.pi);
    }
  }

  void WalkShared() {
    CalcShared();
    if (stack_.wants_sigma) StartShared(reflection_[stack_.entry[0].interface].sigma, sigma_);
    if (stack_.wants_pi) StartShared(reflection_[stack_.entry[0].interface].pi, pi_);
    for (std::int32_t j = 1; j + 1 < stack_.entries; ++j) {
      const Reflection& r = reflection_[stack_.entry[j].interface];
      const ComplexRow<V>& E = passage_[stack_.entry[j].passage];
      AddGrowth(stack_.entry[j].phase, wave_[stack_.entry[j].wave]);
      if (stack_.wants_sigma) SharedStep(r.sigma, E, sigma_);
      if (stack_.wants_pi) SharedStep(r.pi, E, pi_);
      if (j % kRescaleEvery == kRescaleEvery - 1) RescaleAll();
    }
  }

  void RescaleAll() {
    if (stack_.wants_sigma) Rescale(sigma_);
    if (stack_.wants_pi) Rescale(pi_);
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
      if (stack_.wants_sigma) sigma_.n.real.Set(i, norm(sigma_.n[i]) / norm(sigma_.d[i]));
      if (stack_.wants_pi) pi_.n.real.Set(i, norm(pi_.n[i]) / norm(pi_.d[i]));
    }
  }

  TOLVIK_INLINE L IntensityOf(const Ray& ray, int i) const {
    if (!stack_.wants_pi) return sigma_.n.real[i] * L(ray.sigma);
    if (!stack_.wants_sigma) return pi_.n.real[i] * L(ray.pi);
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

  const Stack& stack_;
  int used_;  // registers of the block that hold an angle
  bool has_cosines_ = false;
  Row<V> s_, twice_s2_, cosine_;
  Row<V> smallest2_, growth_;
  Row<V> doubtful_;       // negative, -0 included, where the plain recursion has to judge
  Row<V> lost_, result_;  // a NaN there, else 0; intensities of a ray
  Ratio sigma_, pi_;
  ComplexRow<V> roughness_;
  Wave wave_[kMaxShared];
  ComplexRow<V> passage_[kMaxShared];
  Reflection reflection_[kMaxShared];
};

}  // namespace tolvik::engine::lanes
