// SPDX-License-Identifier: GPL-2.0-or-later
// The amplitude ratios of a block of angles: numerators and denominators of both polarisations during the
// walk through a stack, and the intensities that follow from them. Symbols as in parratt_kernel.h.
#pragma once

#include "engine/lanes/parratt_waves.h"

namespace tolvik::engine::lanes {

/// The coefficient of an interface; of one with a shifted side n² depends on the angle.
enum class Coefficient { kSigma, kPi, kSigmaOfShifted, kPiOfShifted };

template <class V, int registers = kBlockRegisters>
class ParrattRatios : protected ParrattWaves<V, registers> {
  using Base = ParrattWaves<V, registers>;

 protected:
  using typename Base::Complex, typename Base::Face, typename Base::L, typename Base::Real,
      typename Base::Scalar, typename Base::Wave, typename Base::Z;
  using Ray = ParrattRay<Scalar>;

  struct Ratio {
    Complex n, d;
  };
  // An interface: its constants, the waves on both sides, and what its coefficients share.
  struct Interface {
    const ParrattJoint<Scalar>& joint;
    const Wave &below, &above;
    const Face& face;
    bool rough, shifted;  // shifted: either side
  };
  using Base::Base;
  using Base::Of;
  using Base::s_, Base::sign_, Base::stack_, Base::twice_s2_, Base::used_;

  // The magnetic shift in one of its two senses.
  void BeginSense(int sense) {
    sign_ = Scalar(sense == 0 ? 1 : -1);
    wants_sigma_ = stack_.wants_sigma[sense];
    wants_pi_ = stack_.wants_pi[sense];
  }

  // t and q of a coefficient (parratt_joint.h), t without the factor F. The constants stand here, where no
  // store of a loop can touch them.
  template <Coefficient kind>
  struct Coefficients {
    TOLVIK_INLINE explicit Coefficients(const Interface& at)
        : step(Of(kIsPi ? at.joint.pi_step : at.joint.step)),
          sum(Of(kIsPi ? at.joint.pi_sum : at.joint.sum)),
          step_slope(Of(at.joint.pi_step_slope)),
          sum_slope(Of(at.joint.pi_sum_slope)) {}

    TOLVIK_INLINE void Set(const Interface& at, L twice_s2, int i, Z& t, Z& q) const {
      const L two(Scalar(2));
      const Z product = at.face.product[i];
      if constexpr (kIsPi) {
        t = MulAdd(twice_s2, step_slope, step);
        q = MulAdd(two, product, MulAdd(twice_s2, sum_slope, sum));
      } else {
        t = step;
        q = MulAdd(two, product, Z{MulAdd(L(Scalar(4)), twice_s2, sum.real()), sum.imag()});
      }
    }

    static constexpr bool kIsPi = kind == Coefficient::kPi;
    Z step, sum, step_slope, sum_slope;
  };

  template <Coefficient kind>
  requires(kind == Coefficient::kSigmaOfShifted ||
           kind == Coefficient::kPiOfShifted) struct Coefficients<kind> {
    TOLVIK_INLINE explicit Coefficients(const Interface&) {}

    // Of pi times N_a N_b.
    TOLVIK_INLINE void Set(const Interface& at, L twice_s2, int i, Z& t, Z& q) const {
      const L one(Scalar(1));
      Z a = at.above.v[i], b = at.below.v[i];
      const Z chi_a = at.above.chi[i], chi_b = at.below.chi[i];
      t = L(Scalar(4)) * (chi_a - chi_b);
      if constexpr (kind == Coefficient::kPiOfShifted) {
        const Z sum_of_n2 = chi_a + chi_b + L(Scalar(2));
        t = t * (one - MulAdd(L(Scalar(0.5)) * twice_s2, sum_of_n2, chi_a * chi_b));
        a = a * (chi_b + one);
        b = b * (chi_a + one);
      }
      q = (a + b) * (a + b);
    }
  };

  // Scales the ratios at some interfaces, after the interface above entry j.
  void RescaleAfter(std::int32_t j) {
    constexpr int every = kRescaleEvery<Scalar>;
    if (j % every == every - 1) RescaleAll();
  }

  // After the last of some interfaces: what follows takes squares.
  void RescaleForSquares(std::int32_t interfaces) {
    constexpr int every = kRescaleEvery<Scalar>;
    if (interfaces % every > every / 2) RescaleAll();
  }

  // A NaN where the plain recursion has to calculate the angle, else 0.
  void CalcLost() {
    for (int i = 0; i < used_; ++i) {
      const L none(std::numeric_limits<Scalar>::quiet_NaN());
      const Mask<V> sure = smallest2_[i] > L(Scalar(4) * kSmallestModulus2<Scalar>) &&
                           growth_[i] <= L(stack_.largest_growth) && s_[i] >= L(stack_.smallest_sine);
      lost_.Set(i, SelectNegative(doubtful_[i], none, Select(sure, L(Scalar(0)), none)));
    }
  }

  // |N / D|² of both polarisations.
  void CalcReflectivities() {
    CalcLost();
    for (int i = 0; i < used_; ++i) {
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

  // Scales |D| near 1 by a power of two, which is exact and is stored in scales if given.
  [[gnu::noinline]] void Rescale(Ratio& ratio, Real* scales = nullptr) {
    using Integers = typename L::Integers;
    using Bits = typename L::Bits;
    constexpr int mantissa_bits = FunctionConstants<Scalar>::mantissa_bits;
    constexpr Bits exponent = Bits(sizeof(Scalar) == 8 ? 0x7ff : 0xff) << mantissa_bits;
    constexpr Bits twice_bias = Bits(sizeof(Scalar) == 8 ? 0x7fe : 0xfe) << mantissa_bits;
    for (int i = 0; i < used_; ++i) {
      const L size = abs(ratio.d.real[i]) + abs(ratio.d.imag[i]);
      const L scale = L::FromBits(Integers(twice_bias) - (size.ToBits() & Integers(exponent)));
      if (scales != nullptr) scales->Set(i, scale);
      Doubt(i, !(size > L(Scalar(0))));
      ratio.n.Set(i, scale * ratio.n[i]);
      ratio.d.Set(i, scale * ratio.d[i]);
    }
  }

  bool wants_sigma_ = false, wants_pi_ = false;  // in the present sense of the magnetic shift
  Ratio sigma_, pi_;
  Real lost_;

 private:
  using Base::Doubt;
  using Base::doubtful_, Base::growth_, Base::smallest2_;

  void RescaleAll() {
    if (wants_sigma_) Rescale(sigma_);
    if (wants_pi_) Rescale(pi_);
  }

  TOLVIK_INLINE L IntensityOf(const Ray& ray, int i) const {
    if (!wants_pi_) return sigma_.n.real[i] * L(ray.sigma);
    if (!wants_sigma_) return pi_.n.real[i] * L(ray.pi);
    return sigma_.n.real[i] * L(ray.sigma) + pi_.n.real[i] * L(ray.pi);
  }

  Real result_;  // intensities of a ray
};

}  // namespace tolvik::engine::lanes
