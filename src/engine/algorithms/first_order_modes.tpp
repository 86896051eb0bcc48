// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/algorithms/first_order_modes.h"
#include "engine/algorithms/modes.tpp"

namespace tolvik::engine {

template <class T>
Direction<T> DirectionOf(const T& gamma, const T& phi) {
  return {cos(gamma) * sin(phi), sin(phi) * sin(gamma), cos(phi)};
}

template <class T>
FirstOrderMatter<Cplx<T>> FirstOrderMatterOf(const Direction<T>& direction, const Cplx<T>& n,
                                             const Cplx<T>& Q) {
  const Cplx<T> inverse_n = Cplx<T>(T(1.0)) / n;
  const Cplx<T> inverse_n2 = inverse_n * inverse_n;
  const Cplx<T> iQ(-Q.imag(), Q.real());
  const Cplx<T> half_iQ = T(0.5) * iQ;
  const Cplx<T> half_inQ = n * half_iQ;
  return {n,
          inverse_n,
          inverse_n2,
          direction.polar * (half_iQ * inverse_n2),
          direction.transverse * (iQ * inverse_n),
          direction.longitudinal * half_iQ,
          direction.polar * half_inQ,
          direction.longitudinal * half_inQ};
}

template <class T>
void CalcFirstOrderWaves(FirstOrderWaves<T>& waves, const T& c, const Cplx<T>& q, const Cplx<T>& kappa,
                         const FirstOrderMatter<Cplx<T>>& matter) {
  const Cplx<T> tangent = c / kappa;
  const Cplx<T> s2 = (c * c) * matter.inverse_n2;
  waves.kappa = kappa;
  waves.q = q;
  waves.ey_difference = (matter.hx_sum * tangent) * (s2 - T(2.0));
  waves.hx_difference = matter.hy_pi * q;
  waves.hy_pi = matter.hy_pi;
  waves.hy_difference = matter.hy_difference * tangent;
}

template <class T>
void CalcMagneticMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T gamma, T phi, T k0,
                          T d, const Cplx<T>& n, const Cplx<T>& Q) {
  const Cplx<T> zero, one(T(1.0));
  const T c = modes::BoundedCosine<T>(theta);
  const Cplx<T> s = c / n;
  const Cplx<T> q = sqrt(one - s * s);
  const FirstOrderMatter<Cplx<T>> matter = FirstOrderMatterOf<T>(DirectionOf<T>(gamma, phi), n, Q);
  FirstOrderWaves<T> w;
  CalcFirstOrderWaves<T>(w, c, q, n * q, matter);
  kappa[0] = w.kappa;
  const Cplx<T> ey_sum = (c * c) * matter.ey_sum, ey_pi = c * matter.ey_pi, hx_sum = c * matter.hx_sum;
  modes::SetRow<T>(D, 0, {one, ey_sum + w.ey_difference, hx_sum + w.hx_difference, w.kappa});
  modes::SetRow<T>(D, 1, {zero, ey_pi + q, -n, w.hy_pi + w.hy_difference});
  modes::SetRow<T>(D, 2, {one, ey_sum - w.ey_difference, hx_sum - w.hx_difference, -w.kappa});
  modes::SetRow<T>(D, 3, {zero, ey_pi - q, -n, w.hy_pi - w.hy_difference});

  if (d == T(0.0)) return;
  const T length = k0 * d;
  const Cplx<T> a = length * w.TurnDown(), b = length * w.TurnUp();
  const Cplx<T> e = modes::PropagationFactor<T>(k0, d, w.kappa);
  const Cplx<T> f = T(1.0) / e;
  modes::SetRow<T>(P, 0, {e, -(a * e), zero, zero});
  modes::SetRow<T>(P, 1, {a * e, e, zero, zero});
  modes::SetRow<T>(P, 2, {zero, zero, f, b * f});
  modes::SetRow<T>(P, 3, {zero, zero, -(b * f), f});
}

}  // namespace tolvik::engine
