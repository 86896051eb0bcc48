// SPDX-License-Identifier: GPL-2.0-or-later
// The reflection and transmission formulas are those of Yeh, Surf. Sci. 96, 41 (1980), for a 4×4 transfer
// matrix, with one departure: the sign of the term M11 s in the transmission.
#pragma once

#include "engine/algorithms/amplitudes.h"

namespace tolvik::engine {

template <class T>
T CalcRayIntensity(const Matrix4<T>& M, bool transmission, const double* ray) {
  const Cplx<T> s{T(ray[0]), T(ray[1])};
  const Cplx<T> p{T(ray[2]), T(ray[3])};
  const Cplx<T> delta = M(0, 0) * M(1, 1) - M(0, 1) * M(1, 0);
  Cplx<T> a, b;
  if (transmission) {
    a = (M(0, 0) * p - M(0, 1) * s) / delta;
    // The plain inverse has +M11 s. The sign matters only for a ray with both parts, and results rely on it.
    b = (-M(1, 1) * s - M(1, 0) * p) / delta;
  } else {
    a = ((M(1, 1) * M(0, 2) - M(0, 1) * M(1, 2)) * s + (M(0, 0) * M(1, 2) - M(1, 0) * M(0, 2)) * p) / delta;
    b = ((M(1, 1) * M(0, 3) - M(0, 1) * M(1, 3)) * s + (M(0, 0) * M(1, 3) - M(1, 0) * M(0, 3)) * p) / delta;
  }
  return norm(a) + norm(b);
}

}  // namespace tolvik::engine
