// SPDX-License-Identifier: GPL-2.0-or-later
// The magnetic depth profile: gaussians and Catmull-Rom splines (Catmull and Rom, in: Computer Aided
// Geometric Design, 317 (1974)) over the height, free or bound to the share of one layer.
#pragma once

#include <algorithm>

#include "engine/profile/gauss_functions.h"
#include "engine/profile/segmented_values.tpp"

namespace tolvik::engine {
namespace gauss {

inline constexpr std::int32_t kUnbound = -1;

// Share of the layer to which a function is bound, counted from the ambient; false when there is no such
// layer.
template <class T>
bool CalcShare(const Profile<T>& stack, std::int32_t binding, const T& z, T& share) {
  share = T(1.0);
  if (binding == kUnbound) return true;
  if (binding < 0 || binding >= stack.size) return false;
  share = LayerWeight(stack, stack.size - 1 - binding, z);
  return true;
}

inline std::int32_t SplinePoints(const CGaussFunction& function) {
  return std::min(function.gauss_splinex.size, function.gauss_spliney.size);
}

// The spline at height z; it vanishes outside of its second and its last but one point. Needs four points.
template <class T>
T Spline(const CGaussFunction& function, const T& z) {
  const double* x = function.gauss_splinex.data;
  const std::int32_t points = SplinePoints(function);
  if (!(T(x[1]) <= z && z <= T(x[points - 2]))) return T(0.0);
  std::int32_t k = 0;
  while (!(z <= T(x[k + 1]))) ++k;

  // At the second point exactly k is 0 and t is 1, where the value does not depend on the point before.
  const double* y = function.gauss_spliney.data;
  const T before = T(y[std::max(k - 1, 0)]), left = T(y[k]), right = T(y[k + 1]), after = T(y[k + 2]);
  const T t = (z - T(x[k])) / (T(x[k + 1]) - T(x[k]));
  const T c1 = T(0.5) * (right - before);
  const T c2 = before - T(2.5) * left + T(2.0) * right - T(0.5) * after;
  const T c3 = T(1.5) * left - T(1.5) * right - T(0.5) * before + T(0.5) * after;
  return left + t * (c1 + t * (c2 + t * c3));
}

template <class T>
T Gaussian(const CGaussFunction& function, const T& z) {
  const T distance = z - T(function.gauss_z);
  const T width = T(function.gauss_variance);  // a standard deviation in spite of its name
  return exp(T(-0.5) * (distance * distance) / (width * width));
}

// Whether the function has a shape.
inline bool HasShape(const CGaussFunction& function) {
  return function.gauss_usespline ? SplinePoints(function) >= 4 : function.gauss_variance != 0;
}

}  // namespace gauss

template <class T>
void ApplyGaussFunctions(const Profile<T>& stack, const CArray<CGaussFunction>& gaussfunctions,
                         Profile<T>& slices) {
  for (std::int32_t i = 1; i < slices.size; ++i) {
    CLayer<T>& slice = slices[i];
    const T z = (slices[i - 1].layer_z + slice.layer_z) / T(2.0);
    for (const CGaussFunction& function : gaussfunctions) {
      T share;
      if (function.gauss_delta == 0 && function.gauss_beta == 0) continue;
      if (!gauss::HasShape(function) || !gauss::CalcShare(stack, function.gauss_bindtolayer, z, share))
        continue;
      const T shape = function.gauss_usespline ? gauss::Spline(function, z) : gauss::Gaussian(function, z);
      slice.layer_ddelta += share * slice.layer_ddelta * T(function.gauss_delta) * shape;
      slice.layer_dbeta += share * slice.layer_dbeta * T(function.gauss_beta) * shape;
    }
  }
}

}  // namespace tolvik::engine
