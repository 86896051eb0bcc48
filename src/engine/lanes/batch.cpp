// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/batch.h"

#include "engine/intensity.h"

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

  // Both rays, or the first, on one stack.
  void CalculateRays(ParrattLanes<T>& parratt) const {
    if (second != nullptr) {
      parratt.CalculateBoth(kernels, s, count, One(), first, Two(), second);
    } else {
      parratt.Calculate(kernels, s, count, One(), first);
    }
  }
};

template <class T>
bool CalcParratt(const Batch<T>& batch, ParrattLanes<T>& parratt) {
  if (!batch.options.magnetic) {
    if (!parratt.Prepare(batch.profile, batch.k0, T(0.0))) return false;
    batch.CalculateRays(parratt);
    return true;
  }
  // The second ray sees the magnetisation the other way round.
  if (!parratt.Prepare(batch.profile, batch.k0, T(1.0))) return false;
  parratt.Calculate(batch.kernels, batch.s, batch.count, batch.One(), batch.first);
  if (batch.second == nullptr) return true;
  if (!parratt.Prepare(batch.profile, batch.k0, T(-1.0))) return false;
  parratt.Calculate(batch.kernels, batch.s, batch.count, batch.Two(), batch.second);
  return true;
}

// What a stack of scalar entries reflects follows from the recursion, which is faster.
template <class T>
bool CalcScalarMatrix(const Batch<T>& batch, ParrattLanes<T>& parratt) {
  const IntensityOptions<T>& options = batch.options;
  const bool tensors = options.algorithm == kMatrixOne;
  if (options.transmission || (!tensors && options.magnetic)) return false;
  if (!parratt.PrepareMatrix(batch.profile, batch.k0, tensors, options.tolerance)) return false;
  batch.CalculateRays(parratt);
  return true;
}

template <class T>
bool CalcMatrix(const Batch<T>& batch, BatchWork<T>& work) {
  if (CalcScalarMatrix(batch, work.parratt)) return true;
  if constexpr (std::same_as<T, double>) {
    if (!work.matrix.Prepare(batch.profile, batch.k0, batch.options)) return false;
    work.matrix.Calculate(batch.kernels, batch.s, batch.count, batch.first, batch.second);
    return true;
  }
  return false;
}

}  // namespace

template <HasLanes T>
bool CalcByLanes(const Profile<T>& profile, T k0, const IntensityOptions<T>& options, std::int32_t count,
                 const T* s, T* first, T* second, BatchWork<T>& work) {
  const Kernels* kernels = ChosenKernels();
  if (kernels == nullptr || count <= 0) return false;
  const Batch<T> batch{*kernels, profile, k0, options, count, s, first, second};
  switch (options.algorithm) {
    case kParratt:
      return CalcParratt(batch, work.parratt);
    case kMatrixOne:
    case kMatrixTwo:
      return CalcMatrix(batch, work);
    default:
      return false;
  }
}

template bool CalcByLanes(const Profile<float>&, float, const IntensityOptions<float>&, std::int32_t,
                          const float*, float*, float*, BatchWork<float>&);
template bool CalcByLanes(const Profile<double>&, double, const IntensityOptions<double>&, std::int32_t,
                          const double*, double*, double*, BatchWork<double>&);

}  // namespace tolvik::engine::lanes
