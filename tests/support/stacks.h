// SPDX-License-Identifier: GPL-2.0-or-later
// Profiles for the tests of the algorithms, built the way a state builds them.
#pragma once

#include <initializer_list>

#include "engine/number/number.h"
#include "engine/profile/layer.h"
#include "optics/tensor.h"
#include "tolvik/layer.h"

namespace tolvik::test {

struct Slab {
  double d = 0;
  double delta = 0, beta = 0;
  double sigma = 0;
  double ddelta = 0, dbeta = 0;
};

struct Magnetisation {
  double gamma = 0, phi = 0;  // degrees
  bool on = false;
};

/// Entries from the substrate up, with the tensors of a magnetisation.
template <class T>
engine::Profile<T> MakeProfile(std::initializer_list<Slab> slabs, const Magnetisation& magnetisation = {}) {
  engine::Profile<T> profile;
  for (const Slab& slab : slabs) {
    tolvik::CLayer layer;
    layer.layer_delta = slab.delta;
    layer.layer_beta = slab.beta;
    layer.layer_ddelta = slab.ddelta;
    layer.layer_dbeta = slab.dbeta;
    BuildEpsilonTensor(layer, magnetisation.gamma, magnetisation.phi, magnetisation.on ? 1 : 0);
    engine::CLayer<T> entry;
    entry.layer_d = T(slab.d);
    entry.layer_delta = T(slab.delta);
    entry.layer_beta = T(slab.beta);
    entry.layer_ddelta = T(slab.ddelta);
    entry.layer_dbeta = T(slab.dbeta);
    entry.layer_sigma = T(slab.sigma);
    entry.magnetic = layer.magnetic;
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) entry.Epsilon(r, c) = engine::FromDouble<T>(layer.Epsilon(r, c));
    }
    if (profile.size > 0) entry.layer_z = profile.Last().layer_z + entry.layer_d;
    profile.Append(entry);
  }
  return profile;
}

}  // namespace tolvik::test
