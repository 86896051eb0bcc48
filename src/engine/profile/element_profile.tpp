// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "engine/profile/element_profile.h"
#include "engine/profile/segmentation.tpp"
#include "optics/energy.h"

namespace tolvik::engine {
namespace elements {

// An interface of an element's distribution.
template <class T>
struct Edge {
  T z;
  T sigma;
};

template <class T>
T Side(const Edge<T>& edge, const T& z) {
  return segmented::StepFunction<T>((z - edge.z) / edge.sigma);
}

// Mean density of an element at height z, each slice weighted by its share; NaN without slices.
template <class T>
T Density(const CElementLayer& element, const T& z) {
  const auto& slices = element.slices;
  T sum(0.0), total(0.0), position(0.0);
  Edge<T> below = {T(-1e10), T(1e-5)};
  for (std::int32_t i = 0; i < slices.size; ++i) {
    position = i == 0 ? T(slices[0].z) : position + T(slices[i].el_d);
    const T sigma = slices[i].el_sigma == 0 ? T(1e-6) : T(slices[i].el_sigma);
    const Edge<T> above = i == slices.size - 1 ? Edge<T>{T(1e10), T(1e-5)} : Edge<T>{position, sigma};
    const T weight = T(0.25) * (T(1.0) + Side(below, z)) * (T(1.0) - Side(above, z));
    sum += T(slices[i].el_density) * weight;
    total += weight;
    below = above;
  }
  return sum / total;
}

// Thickness between the lowest and the highest slice of the first element.
template <class T>
T InnerThickness(const CState& state) {
  T length(0.0);
  if (state.elementlayers.size == 0) return length;
  const auto& slices = state.elementlayers[0].slices;
  for (std::int32_t i = 1; i + 1 < slices.size; ++i) length += T(slices[i].el_d);
  return length;
}

// The number of entries, at most that of CheckProfileSize.
template <class T>
std::int32_t CountEntries(const CState& state) {
  const double entries = static_cast<double>((InnerThickness<T>(state) + T(60.0)) * T(2.0));
  if (!(entries >= 1)) return 0;
  CheckProfileSize<T>(entries);
  return static_cast<std::int32_t>(entries);
}

}  // namespace elements

template <class T>
void CalcElementProfile(const CState& state, Profile<T>& profile) {
  // r_e (hc)² / 2π in Å eV², for densities in mol/cm³.
  const T strength = T(415.1761541);
  const T energy = T(kEnergyTimesLambda) / T(state.lambda);
  const T energy2 = energy * energy;
  profile.Assign(elements::CountEntries<T>(state), CLayer<T>());
  for (std::int32_t i = 0; i < profile.size; ++i) {
    CLayer<T>& entry = profile[i];
    entry.layer_z = T(-30.0) + T(0.5) * T(static_cast<double>(i));
    for (const CElementLayer& element : state.elementlayers) {
      const T density = elements::Density<T>(element, entry.layer_z);
      entry.layer_delta += strength * density * T(element.el_f1) / energy2;
      entry.layer_beta += strength * density * T(element.el_f2) / energy2;
    }
    if (i > 0) entry.layer_d = entry.layer_z - profile[i - 1].layer_z;
  }
}

}  // namespace tolvik::engine
