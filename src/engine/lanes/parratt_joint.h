// SPDX-License-Identifier: GPL-2.0-or-later
// The constants of the interfaces of a stack, for coefficients without a difference of waves.
//
// With v = 2 w on both sides of an interface, a above and b below, with N = n², c = N - 1 and the factor F,
// both the numerator and the denominator of a coefficient are multiplied by the denominator, and divided by
// N_a N_b for pi:
//
//   sigma   t = (a² - b²) F                             q = (a + b)² = a² + b² + 2 a b
//   pi      t = (N_b/N_a a² - N_a/N_b b²) F             q = N_b/N_a a² + N_a/N_b b² + 2 a b
//
// By v² = 4 (s² + c) all but the product a b is a constant of the matter, or linear in s²; above all the
// numerators, in which the difference of two waves would lose the digits that they share:
//
//   a² - b² = 4 (c_a - c_b)        N_b² a² - N_a² b² = 4 (c_a - c_b) (1 - c_a c_b - (N_a + N_b) s²)
#pragma once

#include <complex>

#include "engine/lanes/parratt_stack.h"

namespace tolvik::engine::lanes {

/// The constants of the interface between two entries; not for those with a magnetic shift.
template <class T>
ParrattJoint<T> JointOf(const ParrattEntry<T>& below, const ParrattEntry<T>& above) {
  using Z = std::complex<T>;
  const auto pair = [](const Z& z) { return ComplexPair<T>{z.real(), z.imag()}; };
  const Z a(above.chi_real, above.chi_imag), b(below.chi_real, below.chi_imag);
  const Z na = T(1.0) + a, nb = T(1.0) + b;
  const Z ratio = nb / na, inverse = na / nb, product = na * nb;
  const Z step = T(4.0) * (a - b);
  ParrattJoint<T> joint;
  joint.step = pair(step);
  joint.sum = pair(T(4.0) * (a + b));
  joint.pi_step = pair(step * (T(1.0) - a * b) / product);
  joint.pi_step_slope = pair(T(-0.5) * step * (na + nb) / product);
  joint.pi_sum = pair(T(4.0) * (ratio * a + inverse * b));
  joint.pi_sum_slope = pair(T(2.0) * (ratio + inverse));
  return joint;
}

}  // namespace tolvik::engine::lanes
