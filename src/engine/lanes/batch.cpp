// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/batch.h"

#include "engine/intensity.h"

namespace tolvik::engine::lanes {

namespace {

// |part|² as the plain path takes it.
template <class T>
T Share(const double* part) {
  const T real(static_cast<T>(part[0])), imag(static_cast<T>(part[1]));
  return real * real + imag * imag;
}

template <class T>
bool CalcParratt(const Kernels& kernels, const Profile<T>& profile, T k0, const IntensityOptions<T>& options,
                 std::int32_t count, const T* s, T* first, T* second, ParrattLanes<T>& parratt) {
  const double* rays = options.polarisation;
  if (!parratt.Prepare(profile, k0, options.magnetic ? T(1.0) : T(0.0))) return false;
  parratt.Calculate(kernels, s, count, Share<T>(rays), Share<T>(rays + 2), first);
  if (second == nullptr) return true;
  if (options.magnetic && !parratt.Prepare(profile, k0, T(-1.0))) return false;
  parratt.Calculate(kernels, s, count, Share<T>(rays + 4), Share<T>(rays + 6), second);
  return true;
}

}  // namespace

template <HasLanes T>
bool CalcByLanes(const Profile<T>& profile, T k0, const IntensityOptions<T>& options, std::int32_t count,
                 const T* s, T* first, T* second, BatchWork<T>& work) {
  const Kernels* kernels = ChosenKernels();
  if (kernels == nullptr || count <= 0) return false;
  if (options.algorithm == kParratt) {
    return CalcParratt(*kernels, profile, k0, options, count, s, first, second, work.parratt);
  }
  return false;
}

template bool CalcByLanes(const Profile<float>&, float, const IntensityOptions<float>&, std::int32_t,
                          const float*, float*, float*, BatchWork<float>&);
template bool CalcByLanes(const Profile<double>&, double, const IntensityOptions<double>&, std::int32_t,
                          const double*, double*, double*, BatchWork<double>&);

}  // namespace tolvik::engine::lanes
