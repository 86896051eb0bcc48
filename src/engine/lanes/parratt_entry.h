// SPDX-License-Identifier: GPL-2.0-or-later
// From a layer to an entry of the Parratt kernels.
#pragma once

#include <cmath>
#include <complex>
#include <type_traits>

#include "engine/lanes/limits.h"
#include "engine/lanes/ordinary_matter.h"
#include "engine/lanes/parratt_stack.h"
#include "engine/profile/layer.h"

namespace tolvik::engine::lanes {

/// The index of a layer without its magnetic shift. False if it is not ordinary matter.
template <class T>
bool SetIndex(const CLayer<T>& layer, ParrattEntry<T>& entry) {
  const T n = entry.index_real = T(1.0) - layer.layer_delta;
  const T k = entry.index_imag = layer.layer_beta;
  if (!IsRefraction(n) || !IsAbsorption(k)) return false;
  entry.chi_real = (n - T(1.0)) * (n + T(1.0)) - k * k;
  entry.chi_imag = T(2.0) * n * k;
  return true;
}

/// The same from the first element of a scalar tensor.
template <class T>
bool SetTensorIndex(const std::complex<T>& exx, ParrattEntry<T>& entry) {
  const T real = entry.index_real = exx.real();
  const T imag = entry.index_imag = exx.imag();
  if (!IsRefraction(real) || !IsAbsorption(imag)) return false;
  entry.chi_real = real - T(1.0);
  entry.chi_imag = imag;
  return true;
}

/// The magnetic shift of a layer. False if it is too large for ordinary matter.
template <class T>
bool SetShift(const CLayer<T>& layer, ParrattEntry<T>& entry) {
  entry.ddelta = layer.layer_ddelta;
  entry.dbeta = layer.layer_dbeta;
  entry.shifted = entry.ddelta != T(0.0) || entry.dbeta != T(0.0);
  return IsWithin(entry.ddelta, -kLargestShift<T>, kLargestShift<T>) &&
         IsWithin(entry.dbeta, -kLargestShift<T>, kLargestShift<T>);
}

/// Largest |n² - 1| of an entry at any angle.
template <class T>
T LargestContrast(const ParrattEntry<T>& entry) {
  const T shift = std::abs(entry.ddelta) + std::abs(entry.dbeta);
  return std::hypot(entry.chi_real, entry.chi_imag) + T(4.0) * shift;
}

/// Whether no absorption keeps w away from 0 at all angles: Im w² = 2 Re n Im n.
template <class T>
bool MayVanish(const ParrattEntry<T>& entry) {
  T imag = entry.chi_imag;
  if (entry.shifted) {
    imag = T(2.0) * (entry.index_real - std::abs(entry.ddelta)) * (entry.index_imag - std::abs(entry.dbeta));
  }
  return imag <= T(0.0) || imag * imag < T(2.0) * kSmallestModulus2<T>;
}

/// MayVanish of the ambient, with the entry below it. In float the wave of vacuum in the plain form is
/// rounding error already at 0.03 degrees. The surface reflects nearly all there for any w, provided that the
/// next wave does not vanish with it and the roughness factor stays near 1.
template <class T>
bool MayVanishOnTop(const ParrattEntry<T>& below, const ParrattEntry<T>& ambient) {
  if (!std::is_same_v<T, float> || below.shifted || ambient.shifted) return true;
  const T step = std::hypot(ambient.chi_real - below.chi_real, ambient.chi_imag - below.chi_imag);
  // With |w²| at its limit of 2.4e-7 in the ambient, the next |w²| is four times that or more, and the
  // exponent of the roughness factor, roughness |w w'| / 2, stays below 0.0025.
  const T smallest_step2 = T(16.0) * kSmallestModulus2<T>, largest_exponent2 = T(100.0);
  return step * step < smallest_step2 || below.roughness * below.roughness * step > largest_exponent2;
}

}  // namespace tolvik::engine::lanes
