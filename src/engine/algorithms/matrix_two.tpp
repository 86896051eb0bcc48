// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/algorithms/amplitudes.tpp"
#include "engine/algorithms/first_order_modes.tpp"
#include "engine/algorithms/matrix_two.h"
#include "engine/algorithms/transfer.tpp"
#include "optics/angles.h"

namespace tolvik::engine {

// The first-order algorithm in the form for CalcTransferMatrix.
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
  const T radians_per_degree = T(kRadiansPerDegree);
  const FirstOrderAlgorithm<T> algorithm{theta, maggamma * radians_per_degree, magphi * radians_per_degree,
                                         k0, magnetic};
  const Matrix4<T> M = CalcTransferMatrix<T>(context.profile, algorithm);
  out1 = CalcRayIntensity<T>(M, context.transmission, polarisation);
  out2 = CalcRayIntensity<T>(M, context.transmission, polarisation + 4);
}

}  // namespace tolvik::engine
