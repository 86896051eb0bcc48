// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <new>
#include <thread>

#include "engine/profile/gauss_functions.tpp"
#include "engine/profile/heights.h"
#include "engine/profile/segmentation.h"
#include "engine/profile/segmented_values.tpp"

namespace tolvik::engine {
namespace segmentation {

// Beyond 10 Å the range ends three roughnesses away from the outermost interface, else 30 Å away.
template <class T>
T Margin(const T& sigma) {
  return sigma > T(10.0) ? T(3.0) * sigma : T(30.0);
}

// Thickness of a slice at height z: the inverse of the steepest gradient, within the bounds.
template <class T>
T CalcStep(ProfileSampler<T>& sampler, const T& z, const T& min, const T& max, const T& gradient) {
  T here[4], above[4];
  sampler.CalcConstants(z, here);
  sampler.CalcConstants(z + T(0.0001), above);
  T steepest = abs((above[0] - here[0]) * T(10000.0));
  for (int k = 1; k < 4; ++k) {
    const T slope = abs((above[k] - here[k]) * T(10000.0));
    if (slope > steepest) steepest = slope;
  }
  if (steepest == T(0.0)) steepest = T(1e-50);
  const T m = steepest * gradient * T(100000.0);
  T step = m == T(0.0) ? min : T(1.0) / m;
  if (step > max) step = max;
  if (step < min || isnan(step)) step = min;  // the lower bound wins where the bounds cross
  return step;
}

template <class T>
std::int32_t MagneticFlag(const Profile<T>& profile) {
  for (std::int32_t i = 0; i + 1 < profile.size; ++i) {
    if (profile[i].magnetic == 1) return 1;
  }
  return 0;  // the ambient does not count
}

// Each slice gets the values in the middle between its lower neighbour's height and its own.
template <class T>
void CentreValues(ProfileSampler<T>& sampler, Profile<T>& slices) {
  for (std::int32_t i = 1; i < slices.size; ++i) {
    const T height = slices[i].layer_z;
    sampler.Fill((slices[i - 1].layer_z + height) / T(2.0), slices[i]);
    slices[i].layer_z = height;
  }
}

}  // namespace segmentation

template <class T>
void CheckProfileSize(double entries) {
  constexpr double kMostBytes = 2147483648.0;
  if (entries * static_cast<double>(sizeof(CLayer<T>)) > kMostBytes) throw std::bad_alloc();
}

template <class T>
void CalcSliceGrid(Profile<T>& profile, std::int32_t model, const T& min, const T& max, const T& gradient,
                   Profile<T>& slices) {
  const std::int32_t n = profile.size;
  CLayer<T> slice;
  slice.magnetic = segmentation::MagneticFlag(profile);
  profile[n - 1].layer_z = T(1e100);
  profile[n - 1].layer_sigma = T(1e-10);
  const CLayer<T>& top = profile[n - 2];
  const T zmax = top.layer_z + segmentation::Margin(top.layer_sigma);
  T z = -segmentation::Margin(profile[0].layer_sigma);

  ProfileSampler<T> sampler(profile, model);
  while (z <= zmax) {
    const T first = segmentation::CalcStep(sampler, z, min, max, gradient);
    const T middle = z + first / T(2.0);
    const T step = segmentation::CalcStep(sampler, middle, min, max, gradient);
    if (z + step <= z) {
      // This never ends; the list does not grow meanwhile.
      std::this_thread::yield();
      continue;
    }
    sampler.Fill(middle, slice);
    slice.layer_z = z + step / T(2.0);
    CheckProfileSize<T>(slices.size + 1.0);
    slices.Append(slice);
    z = z + step;
  }
  segmentation::CentreValues(sampler, slices);
}

template <class T>
void SegmentProfile(Profile<T>& profile, const CArray<CGaussFunction>& gaussfunctions,
                    std::int32_t layersegmentationmode, std::int32_t magnetizationmode,
                    const SliceRule& rule) {
  if (layersegmentationmode == LayerSegmentationMode::kRoughInterfaces || profile.size < 2) return;
  StackHeights(profile);
  Profile<T> slices;
  CalcSliceGrid<T>(profile, rule.model, T(rule.minlayerthickness), T(rule.maxlayerthickness),
                   T(rule.gradientscale), slices);
  for (std::int32_t i = 1; i < slices.size; ++i)
    slices[i].layer_d = slices[i].layer_z - slices[i - 1].layer_z;
  if (magnetizationmode == MagnetizationMode::kGaussFunctions)
    ApplyGaussFunctions(profile, gaussfunctions, slices);
  profile.Swap(slices);
}

}  // namespace tolvik::engine
