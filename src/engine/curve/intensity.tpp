// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/algorithms/matrix_one.tpp"
#include "engine/algorithms/matrix_two.tpp"
#include "engine/algorithms/options.tpp"
#include "engine/algorithms/parratt.tpp"
#include "engine/curve/grazing.h"
#include "engine/curve/intensity.h"

namespace tolvik::engine {

namespace intensity_detail {

template <Number T>
T ParrattRay(Profile<T>& profile, const T& k0, const T& theta, const IntensityOptions<T>& options, int ray,
             ParrattVectors<T>& work) {
  // The second ray sees the magnetisation the other way round.
  const T sense(ray == 1 ? 1.0 : -1.0);
  CalcWavevectors<T>(profile, work.kz, k0, theta, options.magnetic ? sense : T(0.0));
  CalcFresnelCoefficients<T>(profile, work.kz, work.rpi, work.rsigma);
  return CalcParrattIntensity<T>(profile, work.kz, work.rpi, work.rsigma, options.polarisation, ray);
}

/// Both rays at one angle; second may be null.
template <Number T>
void CalcSample(Profile<T>& profile, const T& k0, const IntensityOptions<T>& options, const T& theta,
                T& first, T* second, IntensityWork<T>& work) {
  T unused;
  T& other = second != nullptr ? *second : unused;
  switch (options.algorithm) {
    case kParratt:
      first = ParrattRay<T>(profile, k0, theta, options, 1, work.parratt);
      if (second != nullptr) *second = ParrattRay<T>(profile, k0, theta, options, 2, work.parratt);
      return;
    case kMatrixOne:
      CalcMatrixOne<T>({profile, options.transmission}, theta, options.maggamma, options.magphi, k0,
                       options.magnetic, other, first, options.polarisation, options.tolerance);
      return;
    case kMatrixTwo:
      CalcMatrixTwo<T>({profile, options.transmission}, theta, options.maggamma, options.magphi, k0,
                       options.magnetic, other, first, options.polarisation);
      return;
    default:
      first = T(0.0);
      if (second != nullptr) *second = T(0.0);
  }
}

template <Number T>
lanes::LanesLeave TryLanes(const Profile<T>& profile, const T& k0, const IntensityOptions<T>& options,
                           std::int32_t count, const T* s, T* first, T* second, IntensityWork<T>& work) {
  if constexpr (lanes::HasLanes<T>) {
    return lanes::CalcByLanes<T>(profile, k0, options, count, s, first, second, work.lanes);
  } else {
    return lanes::LanesLeave::kAll;
  }
}

}  // namespace intensity_detail

template <Number T>
BatchOutcome CalcIntensities(Profile<T>& profile, const T& k0, const IntensityOptions<T>& options,
                             std::int32_t count, const T* s, T* first, T* second, IntensityWork<T>& work) {
  BatchOutcome outcome;
  try {
    const auto left = intensity_detail::TryLanes<T>(profile, k0, options, count, s, first, second, work);
    if (left == lanes::LanesLeave::kNothing) outcome.done = count;
    const bool by_lanes = left != lanes::LanesLeave::kAll;
    while (outcome.done < count) {
      const std::int32_t i = outcome.done;
      if (by_lanes && isfinite(first[i]) && (second == nullptr || isfinite(second[i]))) {
        ++outcome.done;
        continue;
      }
      intensity_detail::CalcSample<T>(profile, k0, options, GrazingAngle(s[i]), first[i],
                                      second != nullptr ? second + i : nullptr, work);
      ++outcome.done;
    }
  } catch (...) {
    outcome.error = std::current_exception();
  }
  return outcome;
}

}  // namespace tolvik::engine
