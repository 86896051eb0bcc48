// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of a block of angles and their derivatives by all entries of the stack: the recursion upwards
// on a tape, then its adjoint downwards. docs/derivations/adjoint.md derives the formulas; symbols as in
// parratt_kernel.h, and
//
// n      E N, the numerator as it arrives at an interface
// mu     the adjoint of the amplitude ratio N / D over D²: one complex number per polarisation
// Y      mu (D² - n²) F q; the waves above and below get b A and -a B with A, B made from it
// phi    F dR/dF of an interface, without its factor: Y t / F
// psi    E dR/dE of the slab below it
#pragma once

#include "engine/lanes/parratt_ratios.h"
#include "engine/lanes/parratt_sweep.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattAdjoint : private ParrattRatios<V> {
  using Base = ParrattRatios<V>;
  using typename Base::Complex, typename Base::Entry, typename Base::Face, typename Base::Interface,
      typename Base::L, typename Base::Ratio, typename Base::Real, typename Base::Stack, typename Base::Wave,
      typename Base::Z;
  static_assert(sizeof(typename Base::Scalar) == 8);

  // The tape of an entry and the interface above it, written on the way up and read on the way down.
  struct Level {
    Wave wave;
    Complex passage;  // E
    Face face;
    Ratio sigma, pi;             // n and D below the interface
    Real sigma_scale, pi_scale;  // where they were brought to scale
  };

 public:
  static constexpr ParrattSweepKernel Kernel() {
    return {L::size, static_cast<std::int32_t>(sizeof(Level)), Run};
  }

 private:
  static constexpr int kRescaleEvery = 8;  // squares of D stay in range

  static void Run(const ParrattSweep& sweep) {
    for (std::int32_t first = 0; first < sweep.registers; first += kBlockRegisters) {
      const int left = sweep.registers - first;
      const int registers = left < kBlockRegisters ? left : kBlockRegisters;
      ParrattAdjoint block(sweep, first, registers);
      block.WalkUp();
      block.TurnAround();
      block.WalkDown();
    }
  }

  ParrattAdjoint(const ParrattSweep& sweep, std::int32_t first, int registers)
      : Base(*sweep.stack, sweep.s + first * L::size, registers * L::size),
        sweep_(sweep),
        first_(first),
        level_(static_cast<Level*>(sweep.tape)) {
    Base::BeginSense(sweep.sense);
    if (sweep.magnetic) Base::CalcCosines();
  }

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

  // The intensities, and from weight 2 Re(conj(r) dr) the adjoints of the ratios r = N / D.
  void TurnAround() {
    const Level& top = level_[stack_.entries - 1];
    Base::CalcLost();
    for (int i = 0; i < used_; ++i) {
      const int node = (first_ + i) * L::size;
      const L weight = L::LoadAnywhere(sweep_.weight + node);
      L intensity = lost_[i];
      if (wants_sigma_) intensity += Turn(top.sigma, i, L(sweep_.sigma), weight, mu_sigma_);
      if (wants_pi_) intensity += Turn(top.pi, i, L(sweep_.pi), weight, mu_pi_);
      intensity.StoreAnywhere(sweep_.intensity + node);
      lost_.Set(i, intensity);  // an intensity that is not finite has no derivatives here either
      bar_.Set(i, Z());
      slope_.Set(i, L(0.0));
    }
  }

  TOLVIK_INLINE static L Turn(const Ratio& ratio, int i, L share, L weight, Complex& mu) {
    const Z n = ratio.n[i], d = ratio.d[i];
    const L size = norm(d);
    const L inverse = L(1.0) / size;
    const Z product = n * d;
    const L scale = (weight + weight) * share * inverse * inverse;
    mu.Set(i, Z{scale * product.real(), -(scale * product.imag())});
    return norm(n) / size * share;
  }

  // Adds up over the registers of a strip.
  struct Sums {
    L real{0.0}, imag{0.0}, magnetic_real{0.0}, magnetic_imag{0.0}, phase{0.0}, roughness{0.0};
  };

  double* RowsOf(int i, std::int32_t entry) const {
    const std::int64_t place = std::int64_t{sweep_.strip[first_ + i]} * stack_.entries + entry;
    return sweep_.rows + place * (kSweepRows * L::size);
  }
  bool EndsStrip(int i) const {
    return i + 1 == used_ || sweep_.strip[first_ + i] != sweep_.strip[first_ + i + 1];
  }
  TOLVIK_INLINE static void AddTo(double* rows, SweepRow row, L sum) {
    double* place = rows + row * L::size;
    (L::LoadAnywhere(place) + sum).StoreAnywhere(place);
  }

  TOLVIK_INLINE Mask<V> IsKept(int i) const { return lost_[i] - lost_[i] == L(0.0); }

  // The derivative by the index of an entry whose wave v has the adjoint bar.
  TOLVIK_INLINE void AddIndex(const Entry& entry, Z v, Z bar, int i, Sums& sums) {
    const Mask<V> kept = IsKept(i);
    const Z g = L(2.0) * (bar * Inverse(v));
    Z n{L(entry.index_real), L(entry.index_imag)};
    L shift(0.0);
    if (entry.shifted || sweep_.magnetic) shift = L(sign_) * cosine_[i];
    if (entry.shifted) {
      n = {MulAdd(L(entry.ddelta), shift, n.real()), NegMulAdd(L(entry.dbeta), shift, n.imag())};
    }
    const Z h = g * n;
    const L real = KeepWhere(kept, h.real()), imag = KeepWhere(kept, h.imag());
    sums.real += real;
    sums.imag += imag;
    if (sweep_.magnetic) {
      sums.magnetic_real = MulAdd(shift, real, sums.magnetic_real);
      sums.magnetic_imag = MulAdd(shift, imag, sums.magnetic_imag);
    }
    if (!sweep_.slopes) return;
    L slope = g.real();
    if (entry.shifted) {  // the cosine falls as the sine rises
      const L turn = L(entry.ddelta) * h.real() + L(entry.dbeta) * h.imag();
      slope -= L(sign_) * turn / cosine_[i];
    }
    slope_.Set(i, MulAdd(s_[i] + s_[i], KeepWhere(kept, slope), slope_[i]));
  }

  void StoreIndex(std::int32_t entry, int i, Sums& sums) {
    double* rows = RowsOf(i, entry);
    AddTo(rows, kIndexReal, sums.real);
    AddTo(rows, kIndexImag, sums.imag);
    if (!sweep_.magnetic) return;
    AddTo(rows, kMagneticReal, sums.magnetic_real);
    AddTo(rows, kMagneticImag, sums.magnetic_imag);
  }

  // The constants of A and B of pi beside an interface without a shift: 2 - v²/n² = -2 + 4 cos²θ / n², linear
  // in 2 s².
  struct PiSide {
    TOLVIK_INLINE explicit PiSide(const Entry& entry) {
      const double real = 1.0 + entry.chi_real, imag = entry.chi_imag;
      const double scale = 1.0 / (real * real + imag * imag);
      inverse = {L(scale * real), L(-scale * imag)};
    }
    TOLVIK_INLINE Z At(L twice_s2) const {
      const L cosine2 = NegMulAdd(L(2.0), twice_s2, L(4.0));  // four times cos²
      return cosine2 * inverse - L(2.0);
    }
    Z inverse;
  };

  template <Coefficient kind>
  TOLVIK_INLINE void StepDown(const typename Base::template Coefficients<kind>& coefficients,
                              const Interface& at, const Level& here, Ratio const& ratio, bool is_first,
                              int i, Complex& mu, Z& Y, Z& t, Z& psi) {
    Z q;
    coefficients.Set(at, twice_s2_[i], i, t, q);
    const Z tF = at.rough ? t * at.face.F[i] : t;
    const Z m = mu[i];
    if (is_first) {
      Y = m * q;
    } else {
      const Z n = ratio.n[i], d = ratio.d[i];
      const Z kappa = m * ((q - tF) * (q + tF));
      psi += kappa * (n * d);
      mu.Set(i, kappa * here.passage[i]);
      Y = m * q * ((d - n) * (d + n));
    }
    if (at.rough) Y = Y * at.face.F[i];
  }

  template <bool sigma, bool pi, bool shifted>
  [[gnu::noinline]] void Down(std::int32_t j) {
    constexpr Coefficient kSigma = shifted ? Coefficient::kSigmaOfShifted : Coefficient::kSigma;
    constexpr Coefficient kPi = shifted ? Coefficient::kPiOfShifted : Coefficient::kPi;
    const Entry &lower = stack_.entry[j], &upper = stack_.entry[j + 1];
    const Level& here = level_[j];
    const Interface at = InterfaceAt(j);
    const typename Base::template Coefficients<kSigma> of_sigma(at);
    const typename Base::template Coefficients<kPi> of_pi(at);
    const PiSide pi_above(upper), pi_below(lower);
    const L roughness(0.25 * lower.roughness), half_phase(0.5 * lower.phase);
    Sums sums;
    for (int i = 0; i < used_; ++i) {
      Z A, B, phi, psi, Y, t;
      const Z a = at.above.v[i], b = at.below.v[i], product = at.face.product[i];
      if constexpr (sigma) {
        StepDown<kSigma>(of_sigma, at, here, here.sigma, j == 0, i, mu_sigma_, Y, t, psi);
        A = B = Y + Y;
        phi = Y * t;
      }
      if constexpr (pi) {
        StepDown<kPi>(of_pi, at, here, here.pi, j == 0, i, mu_pi_, Y, t, psi);
        phi += Y * t;
        if constexpr (shifted) {
          const L one(1.0), cosine2 = NegMulAdd(L(2.0), twice_s2_[i], L(4.0));
          const Z na = at.above.chi[i] + one, nb = at.below.chi[i] + one;
          const Z X = L(2.0) * (Y * na * nb);
          A += cosine2 * (Y * nb) - X;
          B += cosine2 * (Y * na) - X;
        } else {
          A += Y * pi_above.At(twice_s2_[i]);
          B += Y * pi_below.At(twice_s2_[i]);
        }
        if (sweep_.slopes) SubtractPure<shifted>(at, pi_above, pi_below, i, Y * product);
      }
      A = A - roughness * phi;
      B = MulAdd(roughness, phi, B);
      AddIndex(upper, a, MulAdd(b, A, bar_[i]), i, sums);
      const Mask<V> kept = IsKept(i);
      sums.roughness += KeepWhere(kept, (product * phi).real());
      sums.phase += KeepWhere(kept, (b * psi).imag());
      const Z turned{-(half_phase * psi.imag()), half_phase * psi.real()};
      bar_.Set(i, NegMulAdd(a, B, turned));
      if (!EndsStrip(i)) continue;
      StoreIndex(j + 1, i, sums);
      double* rows = RowsOf(i, j);
      AddTo(rows, kRoughness, sums.roughness);
      if (j > 0) AddTo(rows, kPhase, sums.phase);
      sums = Sums();
    }
  }

  // The index enters pi beside its wave; that part of A and B has no share in the derivative by the sine.
  template <bool shifted>
  TOLVIK_INLINE void SubtractPure(const Interface& at, const PiSide& above, const PiSide& below, int i,
                                  Z product) {
    Z step = Of(at.joint.step) * above.inverse * below.inverse;
    if constexpr (shifted) step = L(4.0) * (at.above.chi[i] - at.below.chi[i]);
    const L pure = KeepWhere(IsKept(i), (product * step).real());
    slope_.Set(i, NegMulAdd(s_[i], pure, slope_[i]));
  }

  // Undoes the scaling of a ratio, for its adjoint over D².
  void Unscale(const Real& scale, Complex& mu) {
    for (int i = 0; i < used_; ++i) mu.Set(i, (scale[i] * scale[i]) * mu[i]);
  }

  void WalkDown() {
    for (std::int32_t j = stack_.entries - 2; j >= 0; --j) {
      const Level& next = level_[j + 1];
      if (IsRescaled(j)) {
        if (wants_sigma_) Unscale(next.sigma_scale, mu_sigma_);
        if (wants_pi_) Unscale(next.pi_scale, mu_pi_);
      }
      const bool shifted = stack_.entry[j].shifted || stack_.entry[j + 1].shifted;
      shifted ? DownWith<true>(j) : DownWith<false>(j);
    }
    Sums sums;
    for (int i = 0; i < used_; ++i) {
      AddIndex(stack_.entry[0], level_[0].wave.v[i], bar_[i], i, sums);
      if (sweep_.slopes) slope_[i].StoreAnywhere(sweep_.slope + (first_ + i) * L::size);
      if (!EndsStrip(i)) continue;
      StoreIndex(0, i, sums);
      sums = Sums();
    }
  }

  template <bool shifted>
  void DownWith(std::int32_t j) {
    if (wants_sigma_ && wants_pi_) return Down<true, true, shifted>(j);
    wants_sigma_ ? Down<true, false, shifted>(j) : Down<false, true, shifted>(j);
  }

  using Base::cosine_, Base::lost_, Base::s_, Base::sign_, Base::stack_, Base::twice_s2_, Base::used_,
      Base::wants_pi_, Base::wants_sigma_;
  using Base::Of;

  const ParrattSweep& sweep_;
  std::int32_t first_;  // register of the sweep
  Level* level_;
  Complex mu_sigma_, mu_pi_, bar_;  // bar: of the wave below the interface in work
  Real slope_;
};

}  // namespace tolvik::engine::lanes
