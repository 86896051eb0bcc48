// SPDX-License-Identifier: GPL-2.0-or-later
// A layer of a test.
#pragma once

#include "tolvik/layer.h"

namespace tolvik::testing {

/// The numbers of a layer that a test gives; lengths in Å.
struct Slab {
  double thickness = 0;
  double delta = 0, beta = 0;
  double sigma = 0;
  double ddelta = 0, dbeta = 0;
};

inline CLayer MakeLayer(const Slab& slab) {
  CLayer layer;
  layer.layer_d = slab.thickness;
  layer.layer_delta = slab.delta;
  layer.layer_beta = slab.beta;
  layer.layer_sigma = slab.sigma;
  layer.layer_ddelta = slab.ddelta;
  layer.layer_dbeta = slab.dbeta;
  return layer;
}

}  // namespace tolvik::testing
