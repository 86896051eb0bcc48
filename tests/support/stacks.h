// SPDX-License-Identifier: GPL-2.0-or-later
// Profiles for the tests of the algorithms, built the way a state builds them.
#pragma once

#include <initializer_list>

#include "engine/profile/profile.tpp"
#include "optics/tensor.h"
#include "support/slab.h"
#include "tolvik/choices.h"

namespace tolvik::testing {

struct Magnetisation {
  double gamma = 0, phi = 0;  // degrees
  bool on = false;
};

/// Entries from the substrate up, with the tensors of a magnetisation.
template <class T>
engine::Profile<T> MakeProfile(std::initializer_list<Slab> slabs, const Magnetisation& magnetisation = {}) {
  engine::Profile<T> profile;
  for (const Slab& slab : slabs) {
    tolvik::CLayer layer = MakeLayer(slab);
    BuildEpsilonTensor(layer, magnetisation.gamma, magnetisation.phi,
                       magnetisation.on ? MagnetizationMode::kLayers : MagnetizationMode::kNone);
    engine::CLayer<T> entry;
    engine::profile_detail::ConvertLayer<T>(layer, entry);
    if (profile.size > 0) entry.layer_z = profile.Last().layer_z + entry.layer_d;
    profile.Append(entry);
  }
  return profile;
}

}  // namespace tolvik::testing
