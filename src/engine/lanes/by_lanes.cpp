// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/by_lanes.h"

#include <cmath>

namespace tolvik::engine::lanes {

namespace {

// Squared moduli as in the plain path. ray: sigma and pi part, real and imaginary.
template <class T>
ParrattRay<T> RayOf(const double* ray, T* intensity) {
  const auto square = [](double x) { return static_cast<T>(x) * static_cast<T>(x); };
  return {square(ray[0]) + square(ray[1]), square(ray[2]) + square(ray[3]), intensity};
}

// Both rays, or the first.
template <class T>
LanesLeave CalcRays(const AngleBatch<T>& batch, const Kernels& kernels, ParrattLanes<T>& parratt) {
  const double* polarisation = batch.options.polarisation;
  const ParrattRay<T> rays[] = {RayOf(polarisation, batch.first), RayOf(polarisation + 4, batch.second)};
  const bool all = parratt.Calculate(kernels, batch.s, {rays, batch.second != nullptr ? 2u : 1u});
  return all ? LanesLeave::kNothing : LanesLeave::kNotFinite;
}

template <class T>
LanesLeave CalcParratt(const AngleBatch<T>& batch, const Kernels& kernels, ParrattLanes<T>& parratt) {
  if (!parratt.Prepare(batch.profile, batch.k0, batch.options.magnetic)) return LanesLeave::kAll;
  return CalcRays(batch, kernels, parratt);
}

// The reflection of a stack of scalar entries follows from the recursion, which is faster.
template <class T>
LanesLeave CalcScalarMatrix(const AngleBatch<T>& batch, const Kernels& kernels, ParrattLanes<T>& parratt) {
  const IntensityOptions<T>& options = batch.options;
  const bool tensors = options.algorithm == Algorithm::kMatrixOne;
  if (options.transmission || (!tensors && options.magnetic)) return LanesLeave::kAll;
  if (!parratt.PrepareMatrix(batch.profile, batch.k0, tensors, options.tolerance)) return LanesLeave::kAll;
  return CalcRays(batch, kernels, parratt);
}

template <class T>
LanesLeave CalcMatrix(const AngleBatch<T>& batch, const Kernels& kernels, LanesWork<T>& work) {
  // A NaN direction makes the waves of matrix two NaN even without magnetism.
  const T direction = batch.options.maggamma + batch.options.magphi;
  if (batch.options.algorithm == Algorithm::kMatrixTwo && !std::isfinite(direction)) return LanesLeave::kAll;
  const LanesLeave left = CalcScalarMatrix(batch, kernels, work.parratt);
  if constexpr (std::same_as<T, double>) {
    if (left == LanesLeave::kAll && work.matrix.Prepare(batch.profile, batch.k0, batch.options)) {
      work.matrix.Calculate(kernels, batch.s, batch.first, batch.second);
      return LanesLeave::kNotFinite;
    }
  }
  return left;
}

}  // namespace

template <HasLanes T>
LanesLeave CalcByLanes(const AngleBatch<T>& batch, LanesWork<T>& work) {
  const Kernels* kernels = ChosenKernels();
  if (kernels == nullptr || batch.s.empty()) return LanesLeave::kAll;
  switch (batch.options.algorithm) {
    case Algorithm::kParratt:
      return CalcParratt(batch, *kernels, work.parratt);
    case Algorithm::kMatrixOne:
    case Algorithm::kMatrixTwo:
      return CalcMatrix(batch, *kernels, work);
    default:
      return LanesLeave::kAll;
  }
}

template LanesLeave CalcByLanes(const AngleBatch<float>&, LanesWork<float>&);
template LanesLeave CalcByLanes(const AngleBatch<double>&, LanesWork<double>&);

}  // namespace tolvik::engine::lanes
