// SPDX-License-Identifier: GPL-2.0-or-later
// The waves of a magnetic entry to first order in its magnetic strength.
#pragma once

#include "engine/number/matrix4.h"
#include "engine/number/number.h"

namespace tolvik::engine {

/// Direction cosines of a magnetisation along x, y and z.
template <class T>
struct Direction {
  T transverse, longitudinal, polar;
};

/// The direction of the angles gamma and phi, rad; phi against z, gamma the azimuth from x.
template <class T>
Direction<T> DirectionOf(const T& gamma, const T& phi);

/// The parts of the first-order waves of an entry that depend on its matter only: the index n, and the
/// contributions of the magnetic strength Q to the fields, named as in FirstOrderWaves, without the cosine c
/// of the grazing angle and the angle of refraction.
template <class C>
struct FirstOrderMatter {
  C n, inverse_n, inverse_n2;
  C ey_sum, ey_pi, hx_sum, hy_pi, hy_difference;
};

/// The matter of an entry with index n and magnetic strength Q.
template <class T>
FirstOrderMatter<Cplx<T>> FirstOrderMatterOf(const Direction<T>& direction, const Cplx<T>& n,
                                             const Cplx<T>& Q);

/// The waves of an entry to first order in its magnetic strength (J. Zak, E. R. Moog, C. Liu and S. D. Bader,
/// J. Magn. Magn. Mater. 89, 107 (1990)).
///
/// With the sum σ⁺ and the difference σ⁻ of the sigma amplitudes down and up, and π⁺ and π⁻ alike, the fields
/// are
///   ex = σ⁺
///   ey = c² ey_sum σ⁺ + ey_difference σ⁻ + c ey_pi π⁺ + q π⁻
///   hx = c hx_sum σ⁺ + hx_difference σ⁻ - n π⁺
///   hy = kappa σ⁻ + hy_pi π⁺ + hy_difference π⁻
/// with q the cosine of the refracted angle against the normal and kappa = n q; n, ey_sum, ey_pi and hx_sum
/// are those of FirstOrderMatter.
template <class T>
struct FirstOrderWaves {
  Cplx<T> kappa, q;
  Cplx<T> ey_difference, hx_difference;
  Cplx<T> hy_pi, hy_difference;

  /// A slab of thickness d rotates the waves down by TurnDown() k0 d, those up by TurnUp() k0 d.
  Cplx<T> TurnDown() const { return MinusI(hy_difference + hy_pi); }
  Cplx<T> TurnUp() const { return MinusI(hy_difference - hy_pi); }

 private:
  static Cplx<T> MinusI(const Cplx<T>& z) { return {z.imag(), -z.real()}; }
};

/// The waves at one angle. c: cosine of the grazing angle. q: cosine of the refracted angle against the
/// normal. kappa = n q.
template <class T>
void CalcFirstOrderWaves(FirstOrderWaves<T>& waves, const T& c, const Cplx<T>& q, const Cplx<T>& kappa,
                         const FirstOrderMatter<Cplx<T>>& matter);

/// Field matrix D and propagation matrix P of an entry with index n, magnetic strength Q and thickness d, Å,
/// for a magnetisation along the angles gamma and phi, rad. kappa[0] becomes the normal wavevector in units
/// of k0; the rest of kappa does not change. Angles theta below 1e-4 rad count as 1e-4; a thickness of
/// exactly 0 does not change P.
template <class T>
void CalcMagneticMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T gamma, T phi, T k0,
                          T d, const Cplx<T>& n, const Cplx<T>& Q);

}  // namespace tolvik::engine
