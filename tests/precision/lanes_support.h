// SPDX-License-Identifier: GPL-2.0-or-later
// Intensities of a random case in any number type and by any lane set.
#pragma once

#include <vector>

#include "engine/curve/intensity.h"
#include "engine/lanes/kernels.h"
#include "engine/number/cnumber.h"
#include "engine/number/complex.h"
#include "support/random_stacks.h"

namespace tolvik::testing {

/// Selects a lane set for its lifetime; afterwards the widest one is selected again.
class LanesForNow {
 public:
  explicit LanesForNow(engine::lanes::LaneSet set) { engine::lanes::ChooseLanes(set); }
  ~LanesForNow() {
    for (const engine::lanes::LaneSet set : engine::lanes::kAllLaneSets) {
      if (engine::lanes::IsSupported(set)) engine::lanes::ChooseLanes(set);
    }
  }
  LanesForNow(const LanesForNow&) = delete;
  LanesForNow& operator=(const LanesForNow&) = delete;
};

/// The lane sets of this processor, without the plain path.
inline std::vector<engine::lanes::LaneSet> LaneSetsHere() {
  std::vector<engine::lanes::LaneSet> sets;
  for (const engine::lanes::LaneSet set : engine::lanes::kAllLaneSets) {
    if (set != engine::lanes::LaneSet::kPlain && engine::lanes::IsSupported(set)) sets.push_back(set);
  }
  return sets;
}

/// Intensities of both rays.
template <class T>
struct Intensities {
  std::vector<T> first, second;
};

template <class T>
engine::Cplx<T> Convert(const std::complex<double>& z) {
  return {T(z.real()), T(z.imag())};
}

template <class T>
engine::Profile<T> ConvertProfile(const std::vector<engine::CLayer<double>>& layers) {
  engine::Profile<T> profile;
  for (const engine::CLayer<double>& layer : layers) {
    engine::CLayer<T> entry;
    entry.layer_z = T(layer.layer_z);
    entry.layer_d = T(layer.layer_d);
    entry.layer_delta = T(layer.layer_delta);
    entry.layer_beta = T(layer.layer_beta);
    entry.layer_ddelta = T(layer.layer_ddelta);
    entry.layer_dbeta = T(layer.layer_dbeta);
    entry.layer_sigma = T(layer.layer_sigma);
    entry.magnetic = layer.magnetic;
    for (int i = 0; i < 9; ++i) entry.epsilon[i] = Convert<T>(layer.epsilon[i]);
    profile.Append(entry);
  }
  return profile;
}

template <class T>
engine::IntensityOptions<T> ConvertOptions(const engine::IntensityOptions<double>& options) {
  engine::IntensityOptions<T> result;
  result.algorithm = options.algorithm;
  result.transmission = options.transmission;
  result.magnetic = options.magnetic;
  result.maggamma = T(options.maggamma);
  result.magphi = T(options.magphi);
  std::copy_n(options.polarisation, 8, result.polarisation);
  result.tolerance = T(options.tolerance);
  return result;
}

/// The case in T, both rays, with the lane set chosen at present.
template <class T>
Intensities<T> Calculate(const RandomCase& test) {
  engine::Profile<T> profile = ConvertProfile<T>(test.layers);
  std::vector<T> sines;
  for (const double s : test.sines) sines.push_back(T(s));
  Intensities<T> result;
  result.first.assign(sines.size(), T(-1.0));
  result.second.assign(sines.size(), T(-1.0));
  engine::IntensityWork<T> work;
  engine::CalcIntensities<T>({profile, T(test.k0), ConvertOptions<T>(test.options), sines,
                              result.first.data(), result.second.data()},
                             work);
  return result;
}

template <class T>
Intensities<T> Calculate(const RandomCase& test, engine::lanes::LaneSet set) {
  const LanesForNow lanes(set);
  return Calculate<T>(test);
}

}  // namespace tolvik::testing
