// SPDX-License-Identifier: GPL-2.0-or-later
// first_order_modes.tpp is included by matrix_two.tpp and lanes/*.cpp only.
//
// s, q    sine and cosine of the refracted angle against the normal
// g       longitudinal (y) direction cosine sin φ sin γ of the magnetisation
// U±      g s ± q cos φ, the part that turns the field
#pragma once

#include "engine/modes.tpp"

namespace tolvik::engine {

/// Direction cosines of a magnetisation along x, y and z.
template <class T>
struct Direction {
  T transverse, longitudinal, polar;
};

/// Of the angles gamma and phi, rad; phi against z, gamma the azimuth from x.
template <class T>
Direction<T> DirectionOf(const T& gamma, const T& phi) {
  return {cos(gamma) * sin(phi), sin(phi) * sin(gamma), cos(phi)};
}

/// The waves of an entry to first order in its magnetic strength. Their fields (ex, ey, hx, hy):
///   sigma down  1, ey[0], hx[0], kappa     sigma up  1, ey[2], hx[1], -kappa
///   pi down     0, ey[1], -n, hy[0]        pi up     0, ey[3], -n, hy[1]
/// Down and up a slab of thickness d, a wave turns by turn[0] k0 d and turn[1] k0 d.
template <class T>
struct FirstOrderWaves {
  Cplx<T> kappa, n;
  Cplx<T> ey[4], hx[2], hy[2];
  Cplx<T> turn[2];
};

/// c: cosine of the grazing angle. n: index, Q: magnetic strength.
template <class T>
void CalcFirstOrderWaves(FirstOrderWaves<T>& waves, const T& c, const Direction<T>& direction,
                         const Cplx<T>& n, const Cplx<T>& Q) {
  const T half(0.5);
  const Cplx<T> one(T(1.0));
  const Cplx<T> s = c / n;
  const Cplx<T> q = sqrt(one - s * s);
  const Cplx<T> inverse_q = one / q;
  const Cplx<T> iQ(-Q.imag(), Q.real());

  const T& g = direction.longitudinal;
  const Cplx<T> polar = q * direction.polar;
  const Cplx<T> up = g * s + polar;  // U⁺
  const Cplx<T> um = g * s - polar;  // U⁻
  const Cplx<T> G = half * (n * Q) * inverse_q;
  const Cplx<T> W = (iQ * s) * direction.transverse;
  const Cplx<T> Z = half * (iQ * s * inverse_q);
  const Cplx<T> yp = up * s - T(2.0) * g;  // Y⁺
  const Cplx<T> ym = um * s - T(2.0) * g;  // Y⁻
  const Cplx<T> half_inq = half * (n * iQ);
  const Cplx<T> vp = half_inq * up;  // V⁺
  const Cplx<T> vm = half_inq * um;  // -V⁻

  waves.kappa = n * q;
  waves.n = n;
  waves.ey[0] = yp * Z;
  waves.ey[1] = q + W;
  waves.ey[2] = -(ym * Z);
  waves.ey[3] = W - q;
  waves.hx[0] = vp;
  waves.hx[1] = vm;
  waves.hy[0] = vp * inverse_q;
  waves.hy[1] = -(vm * inverse_q);
  waves.turn[0] = up * G;
  waves.turn[1] = um * G;
}

template <class T>
void CalcMagneticMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T gamma, T phi, T k0,
                          T d, const Cplx<T>& n, const Cplx<T>& Q) {
  const Cplx<T> zero, one(T(1.0));
  FirstOrderWaves<T> waves;
  CalcFirstOrderWaves<T>(waves, modes::BoundedCosine<T>(theta), DirectionOf<T>(gamma, phi), n, Q);
  kappa[0] = waves.kappa;
  modes::SetRow<T>(D, 0, one, waves.ey[0], waves.hx[0], waves.kappa);
  modes::SetRow<T>(D, 1, zero, waves.ey[1], -n, waves.hy[0]);
  modes::SetRow<T>(D, 2, one, waves.ey[2], waves.hx[1], -waves.kappa);
  modes::SetRow<T>(D, 3, zero, waves.ey[3], -n, waves.hy[1]);

  if (d == T(0.0)) return;
  const T length = k0 * d;
  const Cplx<T> a = length * waves.turn[0], b = length * waves.turn[1];
  const Cplx<T> e = modes::PropagationFactor<T>(k0, d, waves.kappa);
  const Cplx<T> f = T(1.0) / e;
  modes::SetRow<T>(P, 0, e, -(a * e), zero, zero);
  modes::SetRow<T>(P, 1, a * e, e, zero, zero);
  modes::SetRow<T>(P, 2, zero, zero, f, b * f);
  modes::SetRow<T>(P, 3, zero, zero, -(b * f), f);
}

}  // namespace tolvik::engine
