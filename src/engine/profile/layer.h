// SPDX-License-Identifier: GPL-2.0-or-later
// The working record of one entry of the depth profile, in the number type of the calculation.
#pragma once

#include <cstdint>

#include "engine/number/number.h"
#include "tolvik/array.h"

namespace tolvik::engine {

/// One entry of the profile on which the algorithms run; the fields are those of tolvik::CLayer in T.
/// Index 0 of a profile is the substrate, the last index the ambient; z runs upwards, Å.
/// For T = CNumber include engine/number/cnumber.h and engine/number/complex.h before this is instantiated.
template <class T>
struct CLayer {
  T layer_z{};      ///< height of the upper interface, Å
  T layer_d{};      ///< thickness, Å
  T layer_delta{};  ///< n = 1 - layer_delta + i layer_beta
  T layer_beta{};
  T layer_ddelta{};             ///< magnetic part of delta
  T layer_dbeta{};              ///< magnetic part of beta
  std::int32_t magnetic = 0;    ///< non-zero: algorithm one uses epsilon instead of the scalar index
  Cplx<T> epsilon[9] = {};      ///< tensor, row major 3×3, order x, y, z
  T layer_sigma{};              ///< roughness of the interface above, Å
  Cplx<T> scalarindex{T(1.0)};  ///< index used at the present angle

  /// Tensor element by row and column, 0 = x (sigma field), 1 = y (along the beam), 2 = z.
  Cplx<T>& Epsilon(int row, int column) { return epsilon[3 * row + column]; }
  const Cplx<T>& Epsilon(int row, int column) const { return epsilon[3 * row + column]; }
};

template <class T>
using Profile = CArray<CLayer<T>>;

/// n = 1 - layer_delta + i layer_beta of an entry, without its magnetic part.
template <class T>
Cplx<T> RefractiveIndex(const CLayer<T>& layer) {
  return Cplx<T>(T(1.0) - layer.layer_delta, layer.layer_beta);
}

}  // namespace tolvik::engine
