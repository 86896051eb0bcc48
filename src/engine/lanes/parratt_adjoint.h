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

#include "engine/lanes/parratt_sweep.h"
#include "engine/lanes/parratt_tape.h"

namespace tolvik::engine::lanes {

template <class V>
class ParrattAdjoint : private ParrattTape<V> {
  using Base = ParrattTape<V>;
  using typename Base::Complex, typename Base::Entry, typename Base::Interface, typename Base::L,
      typename Base::Level, typename Base::Ratio, typename Base::Real, typename Base::Z;

 public:
  static constexpr ParrattSweepKernel Kernel() {
    return {L::size, static_cast<std::int32_t>(sizeof(Level)), Run};
  }

 private:
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
      : Base(*sweep.stack, sweep.s + first * L::size, registers * L::size, sweep.tape),
        sweep_(sweep),
        first_(first) {
    Base::BeginSense(sweep.sense);
    if (sweep.magnetic) Base::CalcCosines();
  }

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

  // One polarisation at an interface; E is null where there is no slab below.
  struct Crossing {
    const Interface& at;
    const Ratio& ratio;
    const Complex* E;
  };
  struct Adjoints {
    Z Y, t, psi;  // psi as a sum over the polarisations
  };

  template <Coefficient kind>
  TOLVIK_INLINE void StepDown(const typename Base::template Coefficients<kind>& coefficients,
                              const Crossing& crossing, int i, Complex& mu, Adjoints& out) {
    const Interface& at = crossing.at;
    Z q;
    coefficients.Set(at, twice_s2_[i], i, out.t, q);
    const Z tF = at.rough ? out.t * at.face.F[i] : out.t;
    const Z m = mu[i];
    out.Y = m * q;
    if (crossing.E != nullptr) {
      const Z n = crossing.ratio.n[i], d = crossing.ratio.d[i];
      const Z kappa = m * ((q - tF) * (q + tF));
      out.psi += kappa * (n * d);
      mu.Set(i, kappa * (*crossing.E)[i]);
      out.Y = out.Y * ((d - n) * (d + n));
    }
    if (at.rough) out.Y = out.Y * at.face.F[i];
  }

  template <bool sigma, bool pi, bool shifted>
  [[gnu::noinline]] void Down(std::int32_t j) {
    constexpr Coefficient kSigma = shifted ? Coefficient::kSigmaOfShifted : Coefficient::kSigma;
    constexpr Coefficient kPi = shifted ? Coefficient::kPiOfShifted : Coefficient::kPi;
    const Entry &lower = stack_.entry[j], &upper = stack_.entry[j + 1];
    const Level& here = level_[j];
    const Interface at = Base::InterfaceAt(j);
    const typename Base::template Coefficients<kSigma> of_sigma(at);
    const typename Base::template Coefficients<kPi> of_pi(at);
    const PiSide pi_above(upper), pi_below(lower);
    const L roughness(0.25 * lower.roughness), half_phase(0.5 * lower.phase);
    const Complex* E = j > 0 ? &here.passage : nullptr;
    const Crossing by_sigma{at, here.sigma, E}, by_pi{at, here.pi, E};
    Sums sums;
    for (int i = 0; i < used_; ++i) {
      Z A, B, phi;
      Adjoints adjoints;
      const Z &Y = adjoints.Y, &t = adjoints.t, &psi = adjoints.psi;
      const Z a = at.above.v[i], b = at.below.v[i], product = at.face.product[i];
      if constexpr (sigma) {
        StepDown<kSigma>(of_sigma, by_sigma, i, mu_sigma_, adjoints);
        A = B = Y + Y;
        phi = Y * t;
      }
      if constexpr (pi) {
        StepDown<kPi>(of_pi, by_pi, i, mu_pi_, adjoints);
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
      if (Base::IsRescaled(j)) {
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

  using Base::cosine_, Base::level_, Base::lost_, Base::s_, Base::sign_, Base::stack_, Base::twice_s2_,
      Base::used_, Base::wants_pi_, Base::wants_sigma_;
  using Base::Of;

  const ParrattSweep& sweep_;
  std::int32_t first_;              // register of the sweep
  Complex mu_sigma_, mu_pi_, bar_;  // bar: of the wave below the interface in work
  Real slope_;
};

}  // namespace tolvik::engine::lanes
