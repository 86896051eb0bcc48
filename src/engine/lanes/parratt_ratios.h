// SPDX-License-Identifier: GPL-2.0-or-later
// The amplitude ratios of a block of angles: numerators and denominators of both polarisations during the
// walk through a stack, and the intensities that follow from them. Symbols as in parratt_kernel.h.
#pragma once

#include "engine/lanes/parratt_waves.h"

namespace tolvik::engine::lanes {

/// The coefficient of an interface: of sigma from v, of pi from u = v / n², or of pi from u = v conj(n²) and
/// m = |n²|².
enum class Coefficient { kSigma, kPi, kPiOfShifted };

template <class V, int registers = kBlockRegisters>
class ParrattRatios : protected ParrattWaves<V, registers> {
  using Base = ParrattWaves<V, registers>;

 protected:
  using typename Base::Complex, typename Base::L, typename Base::Real, typename Base::Scalar,
      typename Base::Wave, typename Base::Z;
  using Ray = ParrattRay<Scalar>;

  struct Ratio {
    Complex n, d;
  };
  using Base::Base;
  using Base::sign_, Base::stack_, Base::used_;

  // The magnetic shift in one of its two senses.
  void BeginSense(int sense) {
    sign_ = Scalar(sense == 0 ? 1 : -1);
    wants_sigma_ = stack_.wants_sigma[sense];
    wants_pi_ = stack_.wants_pi[sense];
  }

  // Lower and upper side of a coefficient, (upper - lower) / (upper + lower).
  template <Coefficient kind>
  TOLVIK_INLINE static void Sides(const Wave& below, const Wave& above, int i, Z& lower, Z& upper) {
    lower = kind == Coefficient::kSigma ? below.v[i] : below.u[i];
    upper = kind == Coefficient::kSigma ? above.v[i] : above.u[i];
    if constexpr (kind == Coefficient::kPiOfShifted) {
      lower = above.m[i] * lower;
      upper = below.m[i] * upper;
    }
  }

  // Scales the ratios at some interfaces, after the interface above entry j.
  void RescaleAfter(std::int32_t j) {
    if (j % kRescaleEvery<Scalar> != kRescaleEvery<Scalar> - 1) return;
    if (wants_sigma_) Rescale(sigma_);
    if (wants_pi_) Rescale(pi_);
  }

  // |N / D|² of both polarisations, and a NaN where the plain recursion has to calculate the angle.
  void CalcReflectivities() {
    for (int i = 0; i < used_; ++i) {
      const L none(std::numeric_limits<Scalar>::quiet_NaN());
      const Mask<V> sure = smallest2_[i] > L(Scalar(4) * kSmallestModulus2<Scalar>) &&
                           growth_[i] <= L(stack_.largest_growth) && s_[i] >= L(stack_.smallest_sine);
      lost_.Set(i, SelectNegative(doubtful_[i], none, Select(sure, L(Scalar(0)), none)));
      if (wants_sigma_) sigma_.n.real.Set(i, norm(sigma_.n[i]) / norm(sigma_.d[i]));
      if (wants_pi_) pi_.n.real.Set(i, norm(pi_.n[i]) / norm(pi_.d[i]));
    }
  }

  // Stores the intensities of a ray. Returns whether all are finite.
  bool StoreRay(const Ray& ray, std::int32_t first, int size) {
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
  Ratio sigma_, pi_;

 private:
  using Base::Doubt;
  using Base::doubtful_, Base::growth_, Base::s_, Base::smallest2_;

  // Scales |D| near 1 by a power of two, which is exact.
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

  TOLVIK_INLINE L IntensityOf(const Ray& ray, int i) const {
    if (!wants_pi_) return sigma_.n.real[i] * L(ray.sigma);
    if (!wants_sigma_) return pi_.n.real[i] * L(ray.pi);
    return sigma_.n.real[i] * L(ray.sigma) + pi_.n.real[i] * L(ray.pi);
  }

  Real lost_, result_;  // a NaN where the angle is lost, else 0; intensities of a ray
};

}  // namespace tolvik::engine::lanes
