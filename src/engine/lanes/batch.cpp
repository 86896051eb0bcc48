// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/batch.h"

#include <cmath>

#include "engine/algorithms/options.h"

namespace tolvik::engine::lanes {

namespace {

// Squared moduli as the plain path takes them. ray: sigma and pi part, real and imaginary.
template <class T>
RayShares<T> SharesOf(const double* ray) {
  const auto square = [](double x) { return static_cast<T>(x) * static_cast<T>(x); };
  return {square(ray[0]) + square(ray[1]), square(ray[2]) + square(ray[3])};
}

// One batch as CalcByLanes receives it.
template <class T>
struct Batch {
  const Kernels& kernels;
  const Profile<T>& profile;
  T k0;
  const IntensityOptions<T>& options;
  std::int32_t count;
  const T* s;
  T* first;
  T* second;

  RayShares<T> One() const { return SharesOf<T>(options.polarisation); }
  RayShares<T> Two() const { return SharesOf<T>(options.polarisation + 4); }

  // Both rays, or the first.
  LanesLeave CalculateRays(ParrattLanes<T>& parratt) const {
    const bool all = second != nullptr ? parratt.CalculateBoth(kernels, s, count, One(), first, Two(), second)
                                       : parratt.Calculate(kernels, s, count, One(), first);
    return all ? LanesLeave::kNothing : LanesLeave::kNotFinite;
  }
};

template <class T>
LanesLeave CalcParratt(const Batch<T>& batch, ParrattLanes<T>& parratt) {
  if (!parratt.Prepare(batch.profile, batch.k0, batch.options.magnetic)) return LanesLeave::kAll;
  return batch.CalculateRays(parratt);
}

// What a stack of scalar entries reflects follows from the recursion, which is faster.
template <class T>
LanesLeave CalcScalarMatrix(const Batch<T>& batch, ParrattLanes<T>& parratt) {
  const IntensityOptions<T>& options = batch.options;
  const bool tensors = options.algorithm == kMatrixOne;
  if (options.transmission || (!tensors && options.magnetic)) return LanesLeave::kAll;
  if (!parratt.PrepareMatrix(batch.profile, batch.k0, tensors, options.tolerance)) return LanesLeave::kAll;
  return batch.CalculateRays(parratt);
}

template <class T>
LanesLeave CalcMatrix(const Batch<T>& batch, BatchWork<T>& work) {
  // A direction that is not a number spoils the waves of matrix two even where nothing is magnetic.
  const T direction = batch.options.maggamma + batch.options.magphi;
  if (batch.options.algorithm == kMatrixTwo && !std::isfinite(direction)) return LanesLeave::kAll;
  const LanesLeave left = CalcScalarMatrix(batch, work.parratt);
  if constexpr (std::same_as<T, double>) {
    if (left == LanesLeave::kAll && work.matrix.Prepare(batch.profile, batch.k0, batch.options)) {
      work.matrix.Calculate(batch.kernels, batch.s, batch.count, batch.first, batch.second);
      return LanesLeave::kNotFinite;
    }
  }
  return left;
}

}  // namespace

template <HasLanes T>
LanesLeave CalcByLanes(const Profile<T>& profile, T k0, const IntensityOptions<T>& options,
                       std::int32_t count, const T* s, T* first, T* second, BatchWork<T>& work) {
  const Kernels* kernels = ChosenKernels();
  if (kernels == nullptr || count <= 0) return LanesLeave::kAll;
  const Batch<T> batch{*kernels, profile, k0, options, count, s, first, second};
  switch (options.algorithm) {
    case kParratt:
      return CalcParratt(batch, work.parratt);
    case kMatrixOne:
    case kMatrixTwo:
      return CalcMatrix(batch, work);
    default:
      return LanesLeave::kAll;
  }
}

template LanesLeave CalcByLanes(const Profile<float>&, float, const IntensityOptions<float>&, std::int32_t,
                                const float*, float*, float*, BatchWork<float>&);
template LanesLeave CalcByLanes(const Profile<double>&, double, const IntensityOptions<double>&, std::int32_t,
                                const double*, double*, double*, BatchWork<double>&);

}  // namespace tolvik::engine::lanes
