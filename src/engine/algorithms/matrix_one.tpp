// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/algorithms/amplitudes.tpp"
#include "engine/algorithms/matrix_one.h"
#include "engine/algorithms/modes.tpp"
#include "engine/algorithms/transfer.tpp"

namespace tolvik::engine {

// The tensor algorithm in the form for CalcTransferMatrix.
template <class T>
struct TensorAlgorithm {
  T theta;
  T k0;
  T tolerance;

  void CalcModes(EntryModes<T>& modes, const CLayer<T>& layer, const T& d) const {
    const Cplx<T> n = RefractiveIndex(layer);
    if (layer.magnetic != 0) {
      CalcLayerMatrices<T>(modes.P, modes.D, modes.kappa, theta, k0, d, n, layer.epsilon, tolerance);
    } else {
      CalcIsotropicMatrices<T>(modes.P, modes.D, modes.kappa, theta, k0, d, n);
    }
  }

  void Roughen(Matrix4<T>& interface, const T& sigma, const Cplx<T> (&upper)[4],
               const Cplx<T> (&lower)[4]) const {
    ApplyRoughness<T>(interface, sigma, k0, upper, lower);
  }

  // P is diagonal in every class.
  static void Propagate(const Matrix4<T>& P, Matrix4<T>& M) {
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) M(r, c) = P(r, r) * M(r, c);
    }
  }
};

template <class T>
void ApplyRoughness(Matrix4<T>& interface, const T& sigma, const T& k0, const Cplx<T> (&upper)[4],
                    const Cplx<T> (&lower)[4]) {
  if (sigma == T(0.0)) return;
  const T scale = T(-0.5) * sigma * sigma * k0 * k0;
  Cplx<T> factor[4][4];
  for (int r = 0; r < 4; ++r) {
    const bool same_row = r > 0 && lower[r] == lower[r - 1];
    for (int c = 0; c < 4; ++c) {
      if (same_row) {
        factor[r][c] = factor[r - 1][c];
      } else if (c > 0 && upper[c] == upper[c - 1]) {
        factor[r][c] = factor[r][c - 1];
      } else {
        const Cplx<T> difference = upper[c] - lower[r];
        factor[r][c] = exp(scale * (difference * difference));
      }
      interface(r, c) *= factor[r][c];
    }
  }
}

template <class T>
void CalcMatrixOne(const MatrixContext<T>& context, T theta, T, T, T k0, bool, T& out2, T& out1,
                   const double* polarisation, T tolerance) {
  const TensorAlgorithm<T> algorithm{theta, k0, tolerance};
  const Matrix4<T> M = CalcTransferMatrix<T>(context.profile, algorithm);
  out1 = CalcRayIntensity<T>(M, context.transmission, polarisation);
  out2 = CalcRayIntensity<T>(M, context.transmission, polarisation + 4);
}

}  // namespace tolvik::engine
