// SPDX-License-Identifier: GPL-2.0-or-later
// matrix_two.tpp is included by precision/*.cpp and tests only.
//
// s, q    sine and cosine of the refracted angle against the normal
// g       longitudinal (y) direction cosine sin φ sin γ of the magnetisation
// U±      g s ± q cos φ, the part that turns the field
#pragma once

#include "engine/amplitudes.tpp"
#include "engine/matrix_two.h"
#include "engine/modes.tpp"
#include "engine/transfer.tpp"

namespace tolvik::engine {

template <class T>
void CalcMagneticMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T gamma, T phi, T k0,
                          T d, const Cplx<T>& n, const Cplx<T>& Q) {
  const Cplx<T> zero, one(T(1.0)), i(T(0.0), T(1.0));
  const Cplx<T> s = modes::BoundedCosine<T>(theta) / n;
  const Cplx<T> q = sqrt(one - s * s);
  kappa[0] = n * q;

  const T g = sin(phi) * sin(gamma);
  const Cplx<T> polar = q * cos(phi);
  const Cplx<T> up = g * s + polar;  // U⁺
  const Cplx<T> um = g * s - polar;  // U⁻

  if (d != T(0.0)) {
    const Cplx<T> G = k0 * d / T(2.0) * n * Q / q;
    const Cplx<T> a = up * G;
    const Cplx<T> b = um * G;
    const Cplx<T> e = modes::PropagationFactor<T>(k0, d, kappa[0]);
    const Cplx<T> f = T(1.0) / e;
    modes::SetRow<T>(P, 0, e, -(a * e), zero, zero);
    modes::SetRow<T>(P, 1, a * e, e, zero, zero);
    modes::SetRow<T>(P, 2, zero, zero, f, b * f);
    modes::SetRow<T>(P, 3, zero, zero, -(b * f), f);
  }

  const Cplx<T> W = i * Q * s * (cos(gamma) * sin(phi));
  const Cplx<T> Z = i * s * Q / (T(2.0) * q);
  const Cplx<T> yp = up * s - T(2.0) * g;  // Y⁺
  const Cplx<T> ym = um * s - T(2.0) * g;  // Y⁻
  const Cplx<T> half_inq = T(0.5) * i * n * Q;
  const Cplx<T> vp = half_inq * up;  // V⁺
  const Cplx<T> vm = half_inq * um;  // -V⁻
  modes::SetRow<T>(D, 0, one, yp * Z, vp, kappa[0]);
  modes::SetRow<T>(D, 1, zero, q + W, -n, vp / q);
  modes::SetRow<T>(D, 2, one, -(ym * Z), vm, -kappa[0]);
  modes::SetRow<T>(D, 3, zero, W - q, -n, -(vm / q));
}

// The first-order algorithm as CalcTransferMatrix asks for it.
template <class T>
struct FirstOrderAlgorithm {
  T theta;
  T gamma;
  T phi;
  T k0;
  bool magnetic;

  void CalcModes(EntryModes<T>& modes, const CLayer<T>& layer, const T& d) const {
    const Cplx<T> Q =
        magnetic ? Cplx<T>(T(-2.0) * layer.layer_ddelta, T(2.0) * layer.layer_dbeta) : Cplx<T>();
    CalcMagneticMatrices<T>(modes.P, modes.D, modes.kappa, theta, gamma, phi, k0, d, RefractiveIndex(layer),
                            Q);
  }

  // Two factors only: waves that run the same way, and opposite ones.
  void Roughen(Matrix4<T>& interface, const T& sigma, const Cplx<T> (&upper)[4],
               const Cplx<T> (&lower)[4]) const {
    if (sigma == T(0.0)) return;
    const T scale = T(-0.5) * sigma * sigma * k0 * k0;
    const Cplx<T> sum = upper[0] + lower[0];
    const Cplx<T> difference = upper[0] - lower[0];
    const Cplx<T> opposite = exp(scale * (sum * sum));
    const Cplx<T> along = exp(scale * (difference * difference));
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) interface(r, c) *= (r < 2) == (c < 2) ? along : opposite;
    }
  }

  // P joins only waves that run the same way.
  static void Propagate(const Matrix4<T>& P, Matrix4<T>& M) {
    for (int pair : {0, 2}) {
      for (int c = 0; c < 4; ++c) {
        const Cplx<T> first = M(pair, c), second = M(pair + 1, c);
        M(pair, c) = P(pair, pair) * first + P(pair, pair + 1) * second;
        M(pair + 1, c) = P(pair + 1, pair) * first + P(pair + 1, pair + 1) * second;
      }
    }
  }
};

template <class T>
void CalcMatrixTwo(const MatrixContext<T>& context, T theta, T maggamma, T magphi, T k0, bool magnetic,
                   T& out2, T& out1, const double* polarisation) {
  const T radians_per_degree = T(0.017453292519943295);
  const FirstOrderAlgorithm<T> algorithm{theta, maggamma * radians_per_degree, magphi * radians_per_degree,
                                         k0, magnetic};
  const Matrix4<T> M = CalcTransferMatrix<T>(context.profile, algorithm);
  out1 = CalcRayIntensity<T>(M, context.transmission, polarisation);
  out2 = CalcRayIntensity<T>(M, context.transmission, polarisation + 4);
}

}  // namespace tolvik::engine
