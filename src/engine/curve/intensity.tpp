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
T ParrattRay(const AngleBatch<T>& batch, const T& theta, int ray, ParrattVectors<T>& work) {
  const IntensityOptions<T>& options = batch.options;
  // For the second ray the magnetisation is reversed.
  const T sense(ray == 1 ? 1.0 : -1.0);
  CalcWavevectors<T>(batch.profile, work.kz, batch.k0, theta, options.magnetic ? sense : T(0.0));
  CalcFresnelCoefficients<T>(batch.profile, work.kz, work.rpi, work.rsigma);
  return CalcParrattIntensity<T>(batch.profile, work.kz, work.rpi, work.rsigma, options.polarisation, ray);
}

/// The intensities of angle i by the plain path.
template <Number T>
void CalcAngle(const AngleBatch<T>& batch, std::int32_t i, ParrattVectors<T>& work) {
  const IntensityOptions<T>& options = batch.options;
  const T theta = GrazingAngle(batch.s[static_cast<std::size_t>(i)]);
  const bool both = batch.second != nullptr;
  T unused;
  T& first = batch.first[i];
  T& second = both ? batch.second[i] : unused;
  switch (options.algorithm) {
    case Algorithm::kParratt:
      first = ParrattRay<T>(batch, theta, 1, work);
      if (both) second = ParrattRay<T>(batch, theta, 2, work);
      return;
    case Algorithm::kMatrixOne:
      CalcMatrixOne<T>({batch.profile, options.transmission}, theta, options.maggamma, options.magphi,
                       batch.k0, options.magnetic, second, first, options.polarisation, options.tolerance);
      return;
    case Algorithm::kMatrixTwo:
      CalcMatrixTwo<T>({batch.profile, options.transmission}, theta, options.maggamma, options.magphi,
                       batch.k0, options.magnetic, second, first, options.polarisation);
      return;
    default:
      first = second = T(0.0);
  }
}

template <Number T>
lanes::LanesLeave TryLanes(const AngleBatch<T>& batch, IntensityWork<T>& work) {
  if constexpr (lanes::HasLanes<T>) {
    return lanes::CalcByLanes<T>(batch, work.lanes);
  } else {
    return lanes::LanesLeave::kAll;
  }
}

}  // namespace intensity_detail

template <Number T>
BatchOutcome CalcIntensities(const AngleBatch<T>& batch, IntensityWork<T>& work) {
  const auto count = static_cast<std::int32_t>(batch.s.size());
  BatchOutcome outcome;
  try {
    const lanes::LanesLeave left = intensity_detail::TryLanes<T>(batch, work);
    if (left == lanes::LanesLeave::kNothing) outcome.done = count;
    const bool by_lanes = left != lanes::LanesLeave::kAll;
    const auto is_done = [&](std::int32_t i) {
      return by_lanes && isfinite(batch.first[i]) && (batch.second == nullptr || isfinite(batch.second[i]));
    };
    for (; outcome.done < count; ++outcome.done) {
      if (!is_done(outcome.done)) intensity_detail::CalcAngle<T>(batch, outcome.done, work.parratt);
    }
  } catch (...) {
    outcome.error = std::current_exception();
  }
  return outcome;
}

}  // namespace tolvik::engine
